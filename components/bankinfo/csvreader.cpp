#include "components/bankinfo/csvreader.h"

#include <algorithm>

namespace corvane::bankinfo {

QString CsvReader::decode(QByteArrayView bytes)
{
    utf8_.resetState();
    QString text = utf8_(bytes);
    if (utf8_.hasError()) {
        utf8_.resetState();
        return QString::fromLatin1(bytes);
    }
    return text;
}

bool CsvReader::next()
{
    if (device_.atEnd())
        return false;
    QByteArray bytes = device_.readLine();
    if (bytes.isEmpty() && device_.atEnd())
        return false;
    bytes_ += bytes.size();
    firstLine_ = ++line_;
    if (line_ == 1 && bytes.startsWith("\xEF\xBB\xBF"))
        bytes.remove(0, 3);
    QString text;
    for (;;) {
        QByteArrayView record = bytes;
        while (record.endsWith('\n') || record.endsWith('\r'))
            record.chop(1);
        text = decode(record);
        blank_ = std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.isSpace(); });
        fields_ = blank_ ? QStringList() : split(text, &unclosedQuote_);
        if (blank_)
            unclosedQuote_ = false;
        // A quoted value goes on over the line break.
        if (!unclosedQuote_ || device_.atEnd() || bytes.size() > kMaxRecordBytes)
            break;
        const QByteArray more = device_.readLine();
        bytes_ += more.size();
        ++line_;
        if (bytes.endsWith("\r\n")) {
            bytes.chop(2);
            bytes += '\n';
        }
        bytes += more;
    }
    return true;
}

QStringList CsvReader::split(const QString& line, bool* unclosedQuote)
{
    QStringList out;
    const QStringView text(line);
    const qsizetype n = text.size();
    bool open = false;
    for (qsizetype i = 0;;) {
        qsizetype j = i;
        while (j < n && text[j].isSpace())
            ++j;
        if (j < n && text[j] == u'"') {
            // Quoted: kept as it is; blanks before the opening quote and after the closing one go.
            QString value;
            for (++j;;) {
                const qsizetype quote = text.indexOf(u'"', j);
                if (quote < 0) {
                    value += text.mid(j);
                    j = n;
                    open = true;
                    break;
                }
                value += text.mid(j, quote - j);
                j = quote + 1;
                if (j < n && text[j] == u'"') {
                    value += u'"';
                    ++j;
                    continue;
                }
                break;
            }
            for (; j < n && text[j] != u','; ++j)
                if (!text[j].isSpace()) // text after the closing quote
                    value += text[j];
            out << value;
        } else {
            j = text.indexOf(u',', i);
            if (j < 0)
                j = n;
            out << text.mid(i, j - i).trimmed().toString();
        }
        if (j >= n)
            break;
        i = j + 1;
    }
    if (unclosedQuote)
        *unclosedQuote = open;
    return out;
}

} // namespace corvane::bankinfo
