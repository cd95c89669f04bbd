#include "screens/addinfo/bankdetails.h"

namespace corvane {

// wired once the bank screens exist
void ShowBankDetails(QWidget*) {}

} // namespace corvane
