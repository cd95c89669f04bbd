#include "core/statelist.h"

#include "core/failure.h"
#include "core/modbase.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

namespace corvane {

namespace {
constexpr long kPermissionDenied = 70;

bool isLineEnd(QChar c) { return c == QLatin1Char('\n') || c == QLatin1Char('\r'); }
bool isSeparator(QChar c) { return c == QLatin1Char(',') || isLineEnd(c); }
} // namespace

QString stateListPath()
{
    return modbase().AppPath + QStringLiteral("/Data/StateCodes.txt");
}

QStringList delimitedItems(const QString& text)
{
    QStringList items;
    qsizetype i = 0;
    const qsizetype n = text.size();
    while (i < n) {
        while (i < n && (text.at(i) == QLatin1Char(' ') || text.at(i) == QLatin1Char('\t')))
            ++i;
        QString item;
        if (i < n && text.at(i) == QLatin1Char('"')) {
            // A quote left open ends with its line, so one stray quote cannot swallow the file.
            const qsizetype start = ++i;
            while (i < n && text.at(i) != QLatin1Char('"') && !isLineEnd(text.at(i)))
                ++i;
            item = text.mid(start, i - start);
            while (i < n && !isSeparator(text.at(i)))
                ++i;
        } else {
            const qsizetype start = i;
            while (i < n && !isSeparator(text.at(i)))
                ++i;
            item = text.mid(start, i - start);
        }
        if (i < n) {
            const bool crlf = text.at(i) == QLatin1Char('\r') && i + 1 < n && text.at(i + 1) == QLatin1Char('\n');
            i += crlf ? 2 : 1;
        }
        item = item.trimmed().toUpper();
        if (!item.isEmpty())
            items << item;
    }
    return items;
}

QStringList readStateList()
{
    const QString path = stateListPath();
    if (!QFileInfo(path).isFile())
        return {};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Failure(kPermissionDenied, kSource, QStringLiteral("Cannot read %1: %2").arg(path, file.errorString()));
    QByteArray bytes = file.readAll();
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes.remove(0, 3);
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8(bytes);
    if (utf8.hasError())
        text = QString::fromLatin1(bytes);
    return delimitedItems(text);
}

} // namespace corvane
