#include "screens/backup/barprogress.h"

#include <QCoreApplication>
#include <QLabel>
#include <QProgressBar>

namespace corvane {

BarProgress::BarProgress(QProgressBar* bar, QLabel* label) : bar_(bar), label_(label)
{
    sinceYield_.start();
}

void BarProgress::setRange(int minimum, int maximum)
{
    if (bar_)
        bar_->setRange(minimum, maximum);
}

void BarProgress::setValue(int value)
{
    if (bar_)
        bar_->setValue(value);
    yield(false);
}

void BarProgress::setText(const QString& text)
{
    if (label_)
        label_->setText(text);
    yield(true);
}

void BarProgress::yield(bool now)
{
    if (!now && sinceYield_.elapsed() < 40)
        return;
    QCoreApplication::processEvents();
    sinceYield_.restart();
}

} // namespace corvane
