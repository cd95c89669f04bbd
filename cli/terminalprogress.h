#pragma once

#include "core/progress.h"

#include <QString>
#include <QTextStream>
#include <unistd.h>

namespace corvane::cli {

// A progress line on standard error, redrawn in place; silent when standard
// error is not a terminal.
class TerminalProgress : public Progress {
public:
    TerminalProgress(QTextStream& err, QString title) : err_(err), title_(std::move(title)), tty_(::isatty(2) == 1) {}
    ~TerminalProgress() override { finish(); }

    void setRange(int minimum, int maximum) override
    {
        minimum_ = minimum;
        maximum_ = maximum;
    }
    void setValue(int value) override
    {
        value_ = value;
        draw();
    }
    void setText(const QString& text) override
    {
        text_ = text;
        draw();
    }
    void finish()
    {
        if (tty_ && drawn_)
            err_ << '\n' << Qt::flush;
        drawn_ = false;
    }

private:
    void draw()
    {
        if (!tty_)
            return;
        const int span = maximum_ - minimum_;
        const int percent = span > 0 ? (value_ - minimum_) * 100 / span : 0;
        err_ << QStringLiteral("\r%1: %2% %3\x1b[K").arg(title_).arg(percent, 3).arg(text_) << Qt::flush;
        drawn_ = true;
    }

    QTextStream& err_;
    QString title_;
    bool tty_;
    bool drawn_ = false;
    int minimum_ = 0, maximum_ = 100, value_ = 0;
    QString text_;
};

} // namespace corvane::cli
