#include "gui/screenmeasure.h"

#include "core/resumenext.h"

#include <QGuiApplication>
#include <QScreen>

namespace corvane {

ScreenMeasure measurePrimaryScreen()
{
    ScreenMeasure m;
    // Without a GUI application there are no screens.
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return m;
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen)
        return m;
    // Device-independent pixels: the widgets are laid out in them.
    m.width = screen->geometry().width();
    m.height = screen->geometry().height();
    m.dpi = qRound(screen->logicalDotsPerInch());
    m.fallbackWidth = screen->virtualGeometry().width();
    m.fallbackHeight = screen->virtualGeometry().height();
    return m;
}

void GetScreenReso()
{
    auto guard = silentGuard();
    ScreenMeasure measured;
    guard([&] { measured = measurePrimaryScreen(); });
    guard([&] { applyScreenReso(measured); });
}

} // namespace corvane
