#include "screens/register/returnregister.h"

#include "core/clientstatus.h"
#include "core/conversions.h"
#include "core/failure.h"
#include "core/modbase.h"
#include "core/textnumbers.h"
#include "db/connection.h"

#include <QSqlError>
#include <QSqlQuery>

namespace corvane::returnregister {

namespace {

const QString kDbSource = QStringLiteral("Corvane.Register");

QString textOf(const QVariant& value)
{
    return value.isNull() ? QString() : value.toString();
}

} // namespace

const QStringList& headings()
{
    static const QStringList list{QStringLiteral("Code No"),        QStringLiteral("Name"),
                                  QStringLiteral("PAN No."),        QStringLiteral("Status"),
                                  QStringLiteral("Date of Filing"), QStringLiteral("Acknowledgement No.")};
    return list;
}

QString statusName(const QString& code)
{
    bool number = false;
    const int value = code.toInt(&number);
    return number ? clientStatusName(value) : code;
}

QStringList yearItems(int contextYear)
{
    QStringList items;
    for (int y = kFirstYear; y <= contextYear; ++y)
        items << QStringLiteral("%1-%2").arg(y).arg((y + 1) % 100, 2, 10, QLatin1Char('0'));
    return items;
}

int yearOf(const QString& item)
{
    return int(valueOf(item));
}

bool holdsEightDigits(const QString& boxText)
{
    int digits = 0;
    for (const QChar c : boxText)
        if (c >= QLatin1Char('0') && c <= QLatin1Char('9'))
            ++digits;
    return digits == 8;
}

QDate datePositional(const QString& text)
{
    return dateSerial(valueOf(text.mid(6, 4)), valueOf(text.mid(3, 2)), valueOf(text.mid(0, 2)));
}

bool keep(const Row& row, Returns returns, const Period& period)
{
    const QString& filed = row[FilingDate];
    switch (returns) {
    case Returns::All:
        return true;
    case Returns::Pending:
        return filed.isEmpty();
    case Returns::Filed:
        if (filed.isEmpty())
            return false;
        if (period.on && filed.size() == 10 && holdsEightDigits(period.begin) && holdsEightDigits(period.end)) {
            const QDate date = datePositional(filed);
            return date >= datePositional(period.begin) && date <= datePositional(period.end);
        }
        return true;
    }
    return true;
}

QString heading(Returns returns, const QString& yearItem, const Period& period)
{
    static const char* const titles[] = {"List of All Clients", "List of Pending Returns", "List of Filed Returns"};
    QString text = QString::fromLatin1(titles[int(returns)]) + QStringLiteral(" for the Assessment Year ") + yearItem;
    // The period filters filed returns only, so only their heading names it.
    if (period.on && returns == Returns::Filed)
        text += QStringLiteral(" (Period from ") + period.begin + QStringLiteral(" to ") + period.end + QLatin1Char(')');
    return text;
}

PeriodCheck checkPeriod(const QString& begin, const QString& end)
{
    const int year = modbase().clock().date().year();
    if (begin.size() != 10 || !isDayFirstDate(begin, year))
        return PeriodCheck::BadBegin;
    if (end.size() != 10 || !isDayFirstDate(end, year))
        return PeriodCheck::BadEnd;
    if (datePositional(begin) >= datePositional(end))
        return PeriodCheck::NotBefore;
    return PeriodCheck::Ok;
}

QString periodMessage(PeriodCheck check)
{
    switch (check) {
    case PeriodCheck::Ok: return QString();
    case PeriodCheck::BadBegin:
    case PeriodCheck::BadEnd: return QStringLiteral("Invalid date entry.");
    case PeriodCheck::NotBefore: return QStringLiteral("First date should be less than the second date.");
    }
    return QString();
}

void read(Connection& connection, int year, const std::function<void(Row&&)>& sink)
{
    // One pass over FBT_Info in table order, each client with its row of the year.
    const QString sql = QStringLiteral(
                            "Select i.Code_No, i.Name, i.PAN, i.ClStatus, a.RetDt, a.RetAckNo, "
                            "a.Code_No is not null, a.IntDt from FBT_Info i left join FBT_AddInfo a "
                            "on a.Code_No = i.Code_No and a.TYear = %1")
                            .arg(year);
    QSqlQuery q(connection.database());
    q.setForwardOnly(true);
    if (!q.exec(sql))
        throw Connection::failureFrom(q.lastError(), kDbSource);
    while (q.next()) {
        Row row;
        for (int c = Code; c <= Status; ++c)
            row[c] = textOf(q.value(c));
        row[FilingDate] = textOf(q.value(4));
        row[AckNo] = textOf(q.value(5));
        row[HasRow] = q.value(6).toInt() ? QStringLiteral("1") : QString();
        row[IntDate] = textOf(q.value(7));
        sink(std::move(row));
    }
    if (q.lastError().isValid())
        throw Connection::failureFrom(q.lastError(), kDbSource);
}

QVector<Row> load(Connection& connection, int year, Returns returns, const Period& period)
{
    QVector<Row> rows;
    read(connection, year, [&](Row&& row) {
        if (keep(row, returns, period))
            rows.push_back(std::move(row));
    });
    return rows;
}

Entry entryOf(const Row& row)
{
    return {row[Code], row[Name], row[FilingDate], row[AckNo], row[HasRow], row[IntDate]};
}

QVector<Entry> loadEntries(Connection& connection, int year)
{
    QVector<Entry> entries;
    read(connection, year, [&](Row&& row) { entries.push_back(entryOf(row)); });
    return entries;
}

int findPrefix(const QVector<Entry>& entries, int column, const QString& text)
{
    for (int i = 0; i < entries.size(); ++i)
        if (entries.at(i)[column].startsWith(text, Qt::CaseInsensitive))
            return i;
    return -1;
}

int findCode(const QVector<Entry>& entries, const QString& code, bool caseSensitive)
{
    const Qt::CaseSensitivity cs = caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    for (int i = 0; i < entries.size(); ++i)
        if (entries.at(i)[EntryCode].compare(code, cs) == 0)
            return i;
    return -1;
}

} // namespace corvane::returnregister
