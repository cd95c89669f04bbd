#include "core/resumenext.h"

#include "core/errorlog.h"
#include "core/modbase.h"

namespace corvane {

void ResumeNext::handle(const Failure& failure)
{
    ++failures_;
    if (mode_ == Mode::Silent)
        return;
    Modbase& m = modbase();
    m.currentError = failure;
    m.ErrContext = module_ + QLatin1Char('\t') + procedure_;
    LogError();
    m.currentError.reset();
}

} // namespace corvane
