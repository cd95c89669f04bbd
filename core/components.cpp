#include "core/components.h"

namespace corvane {

void registerDefaultComponents()
{
}

} // namespace corvane
