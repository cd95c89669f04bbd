#pragma once

#include <QProcess>
#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <QVector>

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

// Each word of a PDF file with its box in points, as pdftotext -bbox reads it.
struct PdfWord {
    QString text;
    double left = 0, top = 0, right = 0;
};
inline QVector<PdfWord> pdfWords(const QString& path)
{
    QProcess process;
    process.start(QStringLiteral("pdftotext"), {QStringLiteral("-bbox"), path, QStringLiteral("-")});
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        return {};
    static const QRegularExpression word(QString::fromLatin1(
        R"re(<word xMin="([\d.]+)" yMin="([\d.]+)" xMax="([\d.]+)" yMax="[\d.]+">([^<]*)</word>)re"));
    QVector<PdfWord> words;
    const QString xml = QString::fromUtf8(process.readAllStandardOutput());
    for (auto it = word.globalMatch(xml); it.hasNext();) {
        const auto m = it.next();
        words.push_back({m.captured(4), m.captured(1).toDouble(), m.captured(2).toDouble(), m.captured(3).toDouble()});
    }
    return words;
}

} // namespace corvane::test
