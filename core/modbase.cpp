#include "core/modbase.h"

namespace corvane {

Modbase& modbase()
{
    static Modbase instance;
    return instance;
}

void resetModbase()
{
    modbase() = Modbase{};
}

} // namespace corvane
