#include "core/conversions.h"

#include "core/modbase.h"
#include "core/resumenext.h"
#include "core/textnumbers.h"

#include <cmath>

namespace corvane {

namespace {

constexpr long kOverflow = 6;

bool isDigit(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }

// A run of digits from pos; pos ends on the first character that is no digit.
QString digitRun(const QString& s, qsizetype& pos)
{
    const qsizetype start = pos;
    while (pos < s.size() && isDigit(s.at(pos)))
        ++pos;
    return s.mid(start, pos - start);
}

// The character at position (from 1) replaced; a position past the end fails.
void replaceCharAt(QString& text, qsizetype position, const QString& replacement)
{
    if (position > text.size())
        throw Failure(err::InvalidCall, kSource, QStringLiteral("Invalid procedure call or argument"));
    if (!replacement.isEmpty())
        text[position - 1] = replacement.at(0);
}

long long toInteger(double value)
{
    if (!std::isfinite(value) || std::fabs(value) > 32767.5)
        throw Failure(kOverflow, kSource, QStringLiteral("Overflow"));
    return static_cast<long long>(std::nearbyint(value));
}

int currentYear()
{
    return modbase().clock().date().year();
}

QString twoDigits(int n)
{
    return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0'));
}

} // namespace

bool isDayFirstDate(const QString& text, int currentYear)
{
    const QString s = text.trimmed();
    QStringList fields(QString{});
    for (const QChar c : s) {
        if (isDigit(c))
            fields.last() += c;
        else if (c == QLatin1Char('/') || c == QLatin1Char('-'))
            fields << QString();
        else
            return false;
    }
    if (fields.size() < 2 || fields.size() > 3)
        return false;
    for (const QString& f : fields)
        if (f.isEmpty() || f.size() > 4)
            return false;
    int year = currentYear;
    if (fields.size() == 3) {
        year = fields.at(2).toInt();
        if (fields.at(2).size() <= 2)
            year += year < 30 ? 2000 : 1900;
        else if (year < 100)
            return false;
    }
    return QDate::isValid(year, fields.at(1).toInt(), fields.at(0).toInt());
}

QDate dateSerial(double year, double month, double day)
{
    long long y = toInteger(year);
    const long long m = toInteger(month);
    const long long d = toInteger(day);
    if (y >= 0 && y <= 29)
        y += 2000;
    else if (y >= 30 && y <= 99)
        y += 1900;
    const long long months = y * 12 + (m - 1);
    const long long builtYear = months >= 0 ? months / 12 : -((-months + 11) / 12);
    const int builtMonth = int(months - builtYear * 12) + 1;
    const QDate date = (builtYear >= 100 && builtYear <= 9999) ? QDate(int(builtYear), builtMonth, 1).addDays(d - 1) : QDate();
    if (!date.isValid() || date.year() < 100 || date.year() > 9999)
        throw Failure(err::InvalidCall, kSource, QStringLiteral("Invalid procedure call or argument"));
    return date;
}

QString formatDate(const QDate& date, const QString& format)
{
    static const char* const dayNames[] = {"Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday"};
    static const char* const monthNames[] = {"January", "February", "March",     "April",   "May",      "June",
                                             "July",    "August",   "September", "October", "November", "December"};
    const QString dayName = QString::fromLatin1(dayNames[date.dayOfWeek() - 1]);
    const QString monthName = QString::fromLatin1(monthNames[date.month() - 1]);
    const int sundayFirst = date.dayOfWeek() % 7 + 1; // Sunday 1 … Saturday 7

    QString out;
    qsizetype i = 0;
    auto runOf = [&](QChar letter, qsizetype most) {
        qsizetype n = 0;
        while (i + n < format.size() && n < most && format.at(i + n).toLower() == letter)
            ++n;
        return n;
    };
    while (i < format.size()) {
        const QChar c = format.at(i);
        const QChar lc = c.toLower();
        qsizetype n = 1;
        if (c == QLatin1Char('\\')) {
            if (i + 1 < format.size())
                out += format.at(i + 1);
            n = 2;
        } else if (c == QLatin1Char('"')) {
            qsizetype end = format.indexOf(QLatin1Char('"'), i + 1);
            if (end < 0)
                end = format.size();
            out += format.mid(i + 1, end - i - 1);
            n = end - i + 1;
        } else if (lc == QLatin1Char('d')) {
            n = runOf(lc, 6);
            switch (n) {
            case 1: out += QString::number(date.day()); break;
            case 2: out += twoDigits(date.day()); break;
            case 3: out += dayName.left(3); break;
            case 4: out += dayName; break;
            case 5: out += formatDate(date, QStringLiteral("dd/mm/yyyy")); break;
            default: out += formatDate(date, QStringLiteral("d mmmm yyyy")); break;
            }
        } else if (lc == QLatin1Char('m')) {
            n = runOf(lc, 4);
            switch (n) {
            case 1: out += QString::number(date.month()); break;
            case 2: out += twoDigits(date.month()); break;
            case 3: out += monthName.left(3); break;
            default: out += monthName; break;
            }
        } else if (lc == QLatin1Char('y')) {
            n = runOf(lc, 4);
            if (n == 3)
                n = 2; // "yy", then a "y" of its own
            if (n == 4)
                out += QStringLiteral("%1").arg(date.year(), 4, 10, QLatin1Char('0'));
            else if (n == 2)
                out += twoDigits(date.year() % 100);
            else
                out += QString::number(date.dayOfYear());
        } else if (lc == QLatin1Char('q')) {
            out += QString::number((date.month() - 1) / 3 + 1);
        } else if (lc == QLatin1Char('w')) {
            n = runOf(lc, 2);
            if (n == 2) {
                const int janFirst = QDate(date.year(), 1, 1).dayOfWeek() % 7; // Sunday 0
                out += QString::number((date.dayOfYear() - 1 + janFirst) / 7 + 1);
            } else {
                out += QString::number(sundayFirst);
            }
        } else if (lc == QLatin1Char('h') || lc == QLatin1Char('n') || lc == QLatin1Char('s')) {
            n = runOf(lc, 2); // a date alone is at midnight
            out += n == 2 ? QStringLiteral("00") : QStringLiteral("0");
        } else {
            out += c;
        }
        i += n;
    }
    return out;
}

QString ConvertDate(const QString& dt, const QString& dtFrm, QString& yr)
{
    ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("CONVERTDATE"));
    QString s = dt;
    s.replace(QLatin1Char('.'), QLatin1Char('/'));
    if (!isDayFirstDate(s, currentYear()))
        return QString();

    qsizetype pos = 0;
    const QString d = digitRun(s, pos);
    ++pos;
    const QString m = digitRun(s, pos);
    ++pos;
    QString y = digitRun(s, pos);

    if (y.size() < 4) {
        if (yr.isEmpty())
            yr = QString::number(modbase().TYear != 0 ? int(modbase().TYear) : currentYear());
        // yr is the year of January to March of the financial year: April on
        // belongs to the year before. The caller's variable changes, on purpose.
        if (valueOf(m) >= 4)
            yr = numberText(valueOf(yr) - 1);
        if (y.size() == 1 && valueOf(yr.right(2)) >= 10)
            y.prepend(QLatin1Char('0'));
        y = yr.left(4 - y.size()) + y;
        if (valueOf(y) > 2029)
            y = numberText(valueOf(y) - 100);
    }

    QDate built;
    if (!guard([&] { built = dateSerial(valueOf(y), valueOf(m), valueOf(d)); }))
        return QString();
    if (built.month() != valueOf(m))
        return QString();

    QString r = formatDate(built, dtFrm);
    if (!r.isEmpty()) {
        // The separators are the format's, whatever the regional ones are.
        guard([&] { replaceCharAt(r, 3, dtFrm.mid(2, 1)); });
        guard([&] { replaceCharAt(r, 6, dtFrm.mid(5, 1)); });
    }
    return isDayFirstDate(r, currentYear()) ? r : QString();
}

} // namespace corvane
