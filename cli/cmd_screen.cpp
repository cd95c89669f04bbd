#include "cli/command.h"

#include "core/modbase.h"
#include "gui/screenmeasure.h"

#include <QGuiApplication>

namespace corvane::cli {

namespace {

// Screens need the platform: the display when there is one, else an offscreen screen.
QCoreApplication* makeGuiApplication(int& argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        const bool wayland = !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
        const bool x11 = !qEnvironmentVariableIsEmpty("DISPLAY");
        const char* platforms = wayland ? "wayland;xcb;offscreen" : x11 ? "xcb;offscreen" : "offscreen";
        qputenv("QT_QPA_PLATFORM", platforms);
    }
    return new QGuiApplication(argc, argv);
}

QString ratio(float value)
{
    return QString::number(double(value), 'g', 6);
}

int runScreen(Invocation& inv)
{
    inv.expectWords(0, 0);
    GetScreenReso();
    const Modbase& m = modbase();
    inv.out << "vDefScreenX=" << m.vDefScreenX << '\n'
            << "vDefScreenY=" << m.vDefScreenY << '\n'
            << "vDefScreenFS=" << m.vDefScreenFS << '\n'
            << "vScreenRatX=" << ratio(m.vScreenRatX) << '\n'
            << "vScreenRatY=" << ratio(m.vScreenRatY) << '\n'
            << "vScreenRatFS=" << ratio(m.vScreenRatFS) << Qt::endl;
    return 0;
}

const CommandRegistration registration({
    QStringLiteral("screen"),
    QStringLiteral("measure the screen and show the scale ratios of the screens"),
    QStringLiteral("Usage: corvane [global options] screen\n"
                   "\n"
                   "Measures the primary screen (an offscreen one when there is no display) and\n"
                   "prints the measured width, height and dots per inch and the three ratios\n"
                   "by which the screens, laid out for 800 x 600 at 96 dots per inch, scale\n"
                   "themselves. Section ScrReso of ORVCONFIG.INI changes the screen scaled for:\n"
                   "Opt=0 the measured one, Opt=1 the one of X, Y and DPI (a value below 1 is\n"
                   "measured), any other Opt none (ratios 1).\n"),
    {},
    {},
    runScreen,
    makeGuiApplication,
});

} // namespace
} // namespace corvane::cli
