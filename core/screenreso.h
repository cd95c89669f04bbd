#pragma once

#include <QString>

namespace corvane {

// What the platform says about the screen; 0 where it says nothing.
struct ScreenMeasure {
    int width = 0;          // the display mode, in pixels
    int height = 0;
    int dpi = 0;            // logical dots per inch
    int fallbackWidth = 0;  // the desktop's extent, when the display mode is unknown
    int fallbackHeight = 0;
};

// The six screen values of the context.
struct ScreenReso {
    qint32 vDefScreenX = 0;
    qint32 vDefScreenY = 0;
    qint16 vDefScreenFS = 0;
    float vScreenRatX = 1.0f;
    float vScreenRatY = 1.0f;
    float vScreenRatFS = 1.0f;
};

// The "ScrReso" settings as read: "Opt", "X", "Y", "DPI".
struct ScrResoSettings {
    QString opt = QStringLiteral("0");
    QString x = QStringLiteral("0");
    QString y = QStringLiteral("0");
    QString dpi = QStringLiteral("0");
};

// The screens were laid out for 800 x 600 at 96 dots per inch. Opt 0 scales
// for the measured screen, Opt 1 for X, Y and DPI (each below 1 taken from the
// measured screen), any other Opt not at all.
ScreenReso computeScreenReso(const ScreenMeasure& measured, const ScrResoSettings& settings);

// The "ScrReso" section of ORVCONFIG.INI.
ScrResoSettings readScrResoSettings();

// Computes the values for the measured screen and the settings and keeps
// them in the context.
void applyScreenReso(const ScreenMeasure& measured);

} // namespace corvane
