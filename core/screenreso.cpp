#include "core/screenreso.h"

#include "core/modbase.h"
#include "core/settings.h"
#include "core/textnumbers.h"

#include <cmath>

namespace corvane {

namespace {

constexpr double kDesignWidth = 800.0;
constexpr double kDesignHeight = 600.0;
constexpr int kDesignDpi = 96;

// A setting as a number; a value that is no number counts as 0.
long settingNumber(const QString& text)
{
    const double value = valueOf(text);
    return std::fabs(value) < 2147483647.0 ? long(std::nearbyint(value)) : 0;
}

} // namespace

ScreenReso computeScreenReso(const ScreenMeasure& measured, const ScrResoSettings& settings)
{
    ScreenReso r;
    r.vDefScreenX = measured.width;
    r.vDefScreenY = measured.height;
    r.vDefScreenFS = qint16(qBound(0, measured.dpi, 32767));
    if (r.vDefScreenX < 1)
        r.vDefScreenX = measured.fallbackWidth;
    if (r.vDefScreenX < 1)
        r.vDefScreenX = 800;
    if (r.vDefScreenY < 1)
        r.vDefScreenY = measured.fallbackHeight;
    if (r.vDefScreenY < 1)
        r.vDefScreenY = 600;
    if (r.vDefScreenFS < 1)
        r.vDefScreenFS = kDesignDpi;

    // An Opt that is no 16-bit number leaves the mode at 0.
    const qint16 opt = toInt16(settings.opt).value_or(0);
    double width = r.vDefScreenX;
    double height = r.vDefScreenY;
    double dpi = r.vDefScreenFS;
    if (opt == 1) {
        const long x = settingNumber(settings.x);
        const long y = settingNumber(settings.y);
        const long d = settingNumber(settings.dpi);
        if (x >= 1)
            width = double(x);
        if (y >= 1)
            height = double(y);
        if (d >= 1)
            dpi = double(d);
    } else if (opt != 0) {
        return r;
    }

    r.vScreenRatX = float(width / kDesignWidth);
    r.vScreenRatY = float(height / kDesignHeight);
    r.vScreenRatFS = float((double(r.vScreenRatX) + double(r.vScreenRatY)) / 2.0);
    if (dpi != kDesignDpi) {
        r.vScreenRatX = float(double(r.vScreenRatX) * (kDesignDpi / dpi));
        r.vScreenRatY = float(double(r.vScreenRatY) * (kDesignDpi / dpi));
        r.vScreenRatFS = float((double(r.vScreenRatX) + double(r.vScreenRatY)) / 2.0);
    }
    return r;
}

ScrResoSettings readScrResoSettings()
{
    const QString section = QStringLiteral("ScrReso");
    const QString zero = QStringLiteral("0");
    ScrResoSettings s;
    s.opt = GetSettingINI(section, QStringLiteral("Opt"), zero);
    s.x = GetSettingINI(section, QStringLiteral("X"), zero);
    s.y = GetSettingINI(section, QStringLiteral("Y"), zero);
    s.dpi = GetSettingINI(section, QStringLiteral("DPI"), zero);
    return s;
}

void applyScreenReso(const ScreenMeasure& measured)
{
    Modbase& m = modbase();
    m.vDefScreenX = 0;
    m.vDefScreenY = 0;
    m.vDefScreenFS = 0;
    m.vScreenRatX = m.vScreenRatY = m.vScreenRatFS = 1.0f;
    const ScreenReso r = computeScreenReso(measured, readScrResoSettings());
    m.vDefScreenX = r.vDefScreenX;
    m.vDefScreenY = r.vDefScreenY;
    m.vDefScreenFS = r.vDefScreenFS;
    m.vScreenRatX = r.vScreenRatX;
    m.vScreenRatY = r.vScreenRatY;
    m.vScreenRatFS = r.vScreenRatFS;
}

} // namespace corvane
