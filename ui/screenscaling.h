#pragma once

#include "gui/screenmeasure.h"

#include <QList>
#include <QMargins>
#include <QRect>
#include <QString>
#include <functional>

class QProgressBar;
class QWidget;

namespace corvane {

// Scales a form and its controls by the ratios of the context: sizes (of
// controls outside layouts also positions), minimum and maximum sizes, fonts,
// grid column widths and row heights, tab bars; the form itself is moved too
// when rePosForm. Logged under CLSMAIN, one failing control at a time.
void Resize_For_Resolution(QWidget* form, bool rePosForm);
// The same for the controls of a user control, each as given (tab widgets
// are treated as plain controls here).
void Resize_For_ResolutionUC(const QList<QWidget*>& controls);

// Where a window may lie: the free area of its screen (without panels) and
// the frame the window manager draws around it.
struct ScreenRoom {
    QRect available;
    QMargins frame;
};
using ScreenRoomSource = std::function<ScreenRoom(const QWidget* window)>;
// Tests put a screen of their choice here; an empty source restores the real one.
void setScreenRoomSource(ScreenRoomSource source);
ScreenRoom screenRoom(const QWidget* window);
// The largest size the window itself may take: the free area less the frame.
QSize roomInsideFrame(const QWidget* window);

// Makes a window, frame included, fit its screen: never larger than the room,
// and placed (over its parent when it has one) wholly inside it.
void keepOnScreen(QWidget* window);
// The same each time the window is shown; Resize_For_Resolution asks for it.
void keepOnScreenWhenShown(QWidget* window);

// The type name a control goes by when it is scaled ("VSFLEXGRID", "SSTAB" …).
QString controlTypeName(const QWidget* control);

// Colours from a value in BGR order (0x00BBGGRR); 0xFF000000 restores the
// default and 0x800000nn takes system colour nn. Silent on failure.
void SetPBBackColor(QProgressBar* bar, qint32 bgr);
void SetPBBarColor(QProgressBar* bar, qint32 bgr);

} // namespace corvane
