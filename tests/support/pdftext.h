#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

namespace corvane::test {

// The text of a PDF file as pdftotext reads it, in the page layout; the pages
// are separated by form feeds. A null string when it could not be read.
inline QString pdfText(const QString& path)
{
    QProcess process;
    process.start(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), path, QStringLiteral("-")});
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return QString();
    return QString::fromUtf8(process.readAllStandardOutput());
}

} // namespace corvane::test
