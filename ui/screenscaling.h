#pragma once

#include "gui/screenmeasure.h"

#include <QList>
#include <QString>

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

// The type name a control goes by when it is scaled ("VSFLEXGRID", "SSTAB" …).
QString controlTypeName(const QWidget* control);

// Colours from a value in BGR order (0x00BBGGRR); 0xFF000000 restores the
// default and 0x800000nn takes system colour nn. Silent on failure.
void SetPBBackColor(QProgressBar* bar, qint32 bgr);
void SetPBBarColor(QProgressBar* bar, qint32 bgr);

} // namespace corvane
