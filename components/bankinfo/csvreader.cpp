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
    ++line_;
    if (line_ == 1 && bytes.startsWith("\xEF\xBB\xBF"))
        bytes.remove(0, 3);
    while (bytes.endsWith('\n') || bytes.endsWith('\r'))
        bytes.chop(1);
    const QString text = decode(bytes);
    blank_ = text.trimmed().isEmpty();
    fields_ = blank_ ? QStringList() : split(text, &unclosedQuote_);
    if (blank_)
        unclosedQuote_ = false;
    return true;
}

QStringList CsvReader::split(const QString& line, bool* unclosedQuote)
{
    QStringList out;
    QString value;
    bool quoted = false;   // inside quotes
    bool atStart = true;   // no character of the value read yet (blanks aside)
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
            out << value.trimmed();
            value.clear();
            atStart = true;
            continue;
        }
        if (c == QLatin1Char('"') && atStart) {
            quoted = true;
            atStart = false;
            value.clear(); // blanks before the opening quote
            continue;
        }
        if (!c.isSpace())
            atStart = false;
        value += c;
    }
    out << value.trimmed();
    if (unclosedQuote)
        *unclosedQuote = quoted;
    return out;
}

} // namespace corvane::bankinfo
