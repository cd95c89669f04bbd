#pragma once

#include "core/errorlog.h"

#include <QFile>
#include <QStringList>

namespace corvane::test {

// The lines of the context's error log.
inline QStringList logLines()
{
    QFile file(logFilePath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

// The "module TAB procedure" items of the log lines.
inline QStringList logContexts()
{
    QStringList contexts;
    for (const QString& line : logLines())
        contexts << line.section(QLatin1Char('\t'), 4, 5);
    return contexts;
}

} // namespace corvane::test
