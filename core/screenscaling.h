#pragma once

#include <QList>

class QProgressBar;
class QWidget;

namespace corvane {

// Measures the screen and fills the six screen values of the context.
void GetScreenReso();
// Scales a form and its controls by the ratios of the context.
void Resize_For_Resolution(QWidget* form, bool rePosForm);
void Resize_For_ResolutionUC(const QList<QWidget*>& controls);
// Colours from a BGR-ordered value.
void SetPBBackColor(QProgressBar* bar, qint32 bgr);
void SetPBBarColor(QProgressBar* bar, qint32 bgr);

} // namespace corvane
