#include "components/bankinfo/csvreader.h"

namespace corvane::bankinfo {

QString CsvReader::decode(const QByteArray& bytes)
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
        QByteArray record = bytes;
        while (record.endsWith('\n') || record.endsWith('\r'))
            record.chop(1);
        text = decode(record);
        blank_ = text.trimmed().isEmpty();
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
    QString value;
    bool quoted = false;    // inside quotes
    bool wasQuoted = false; // the value was quoted: kept as it is, blanks and all
    bool atStart = true;    // no character of the value read yet (blanks aside)
    auto endValue = [&] {
        out << (wasQuoted ? value : value.trimmed());
        value.clear();
        atStart = true;
        wasQuoted = false;
    };
    const int n = int(line.size());
    for (int i = 0; i < n; ++i) {
        const QChar c = line.at(i);
        if (quoted) {
            if (c == QLatin1Char('"')) {
                if (i + 1 < n && line.at(i + 1) == QLatin1Char('"')) {
                    value += c;
                    ++i;
                } else {
                    quoted = false;
                }
            } else {
                value += c;
            }
            continue;
        }
        if (c == QLatin1Char(',')) {
            endValue();
            continue;
        }
        if (c == QLatin1Char('"') && atStart) {
            quoted = true;
            wasQuoted = true;
            atStart = false;
            value.clear(); // blanks before the opening quote
            continue;
        }
        if (wasQuoted) {
            if (!c.isSpace()) // text after the closing quote, blanks aside
                value += c;
            continue;
        }
        if (!c.isSpace())
            atStart = false;
        value += c;
    }
    endValue();
    if (unclosedQuote)
        *unclosedQuote = quoted;
    return out;
}

} // namespace corvane::bankinfo
