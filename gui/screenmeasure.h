#pragma once

#include "core/screenreso.h"

namespace corvane {

// The primary screen as the running GUI application sees it (zeros without one).
ScreenMeasure measurePrimaryScreen();

// Measures the screen and fills the six screen values of the context.
// Silent: a failure leaves the defaults and logs nothing.
void GetScreenReso();

} // namespace corvane
