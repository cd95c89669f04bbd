#pragma once

#include "core/progress.h"

#include <QElapsedTimer>
#include <QPointer>

class QLabel;
class QProgressBar;

namespace corvane {

// Progress on a screen: a bar and a label. Long work runs on the screen's
// thread, so each report lets the window repaint and answer (a few times a
// second at most, to keep the work itself fast).
class BarProgress : public Progress {
public:
    BarProgress(QProgressBar* bar, QLabel* label);
    void setRange(int minimum, int maximum) override;
    void setValue(int value) override;
    void setText(const QString& text) override;

private:
    void yield(bool now);
    QPointer<QProgressBar> bar_;
    QPointer<QLabel> label_;
    QElapsedTimer sinceYield_;
};

} // namespace corvane
