#include "core/textnumbers.h"

#include <cmath>
#include <cstdlib>
#include <string>

namespace corvane {

namespace {

bool isDigit(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }

// The longest prefix of s (from pos) that reads as a decimal number, in C form.
std::string numberPrefix(const QString& s, qsizetype pos)
{
    std::string out;
    qsizetype i = pos;
    if (i < s.size() && (s[i] == QLatin1Char('+') || s[i] == QLatin1Char('-')))
        out += char(s[i++].unicode());
    bool digits = false;
    while (i < s.size() && isDigit(s[i])) {
        out += char(s[i++].unicode());
        digits = true;
    }
    if (i < s.size() && s[i] == QLatin1Char('.')) {
        out += '.';
        ++i;
        while (i < s.size() && isDigit(s[i])) {
            out += char(s[i++].unicode());
            digits = true;
        }
    }
    if (!digits)
        return std::string();
    if (i < s.size() && QStringLiteral("EeDd").contains(s[i])) {
        qsizetype j = i + 1;
        std::string exponent = "e";
        if (j < s.size() && (s[j] == QLatin1Char('+') || s[j] == QLatin1Char('-')))
            exponent += char(s[j++].unicode());
        bool expDigits = false;
        while (j < s.size() && isDigit(s[j])) {
            exponent += char(s[j++].unicode());
            expDigits = true;
        }
        if (expDigits)
            out += exponent;
    }
    return out;
}

} // namespace

double valueOf(const QString& text)
{
    QString s;
    s.reserve(text.size());
    for (const QChar c : text)
        if (c != QLatin1Char(' ') && c != QLatin1Char('\t') && c != QLatin1Char('\n'))
            s += c;
    const std::string number = numberPrefix(s, 0);
    if (number.empty())
        return 0.0;
    const double value = std::strtod(number.c_str(), nullptr);
    return std::isfinite(value) ? value : 0.0;
}

QString trimSpaces(const QString& text)
{
    qsizetype start = 0;
    qsizetype end = text.size();
    while (start < end && text.at(start) == QLatin1Char(' '))
        ++start;
    while (end > start && text.at(end - 1) == QLatin1Char(' '))
        --end;
    return text.mid(start, end - start);
}

QString numberText(double value)
{
    if (std::isfinite(value) && std::floor(value) == value && std::fabs(value) < 1e15)
        return QString::number(qint64(value));
    return QString::number(value, 'g', 15);
}

std::optional<qint16> toInt16(const QString& text)
{
    const QString s = text.trimmed();
    const std::string number = numberPrefix(s, 0);
    if (number.empty() || qsizetype(number.size()) != s.size())
        return std::nullopt;
    const double value = std::nearbyint(std::strtod(number.c_str(), nullptr)); // half to even
    if (!std::isfinite(value) || value < -32768.0 || value > 32767.0)
        return std::nullopt;
    return qint16(value);
}

} // namespace corvane
