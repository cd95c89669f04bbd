#include "screens/addinfo/bankdetails.h"

#include "screens/bank/frmbankdet.h"

namespace corvane {

void ShowBankDetails(QWidget* owner)
{
    frmbankdet form(owner);
    form.exec();
}

} // namespace corvane
