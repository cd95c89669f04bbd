#include "core/screenscaling.h"

namespace corvane {

void GetScreenReso() {}
void Resize_For_Resolution(QWidget*, bool) {}
void Resize_For_ResolutionUC(const QList<QWidget*>&) {}
void SetPBBackColor(QProgressBar*, qint32) {}
void SetPBBarColor(QProgressBar*, qint32) {}

} // namespace corvane
