#include "core/statelist.h"

namespace corvane {

QStringList readStateList() { return {}; }

} // namespace corvane
