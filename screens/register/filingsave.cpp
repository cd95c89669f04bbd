#include "screens/register/filingsave.h"

#include "core/conversions.h"
#include "core/prompter.h"
#include "core/resumenext.h"
#include "db/connection.h"
#include "db/schema.h"
#include "db/sqltext.h"

#include <QDate>

namespace corvane::filing {

using namespace returnregister;

namespace {

const QString kTodate = QStringLiteral("todate");

int checkYearOf(const QString& yearItem)
{
    return yearOf(yearItem.left(4));
}

} // namespace

QString insertStatement(const QString& code, int year, const QString& date, const QString& number)
{
    return QStringLiteral("Insert into FBT_AddInfo Values (") + sqlQuote(code) + QLatin1Char(',') + QString::number(year)
        + QStringLiteral(",'0','','','0','0','','','0','0','0','','0','','0','0','0','0','0','0',0,0") + QLatin1Char(',')
        + sqlQuote(date) + QLatin1Char(',') + sqlQuote(number) + QStringLiteral(",'','','','','1',0,'1',0,'1',0,'')");
}

QString updateStatement(const QString& code, int year, const QString& date, const QString& number,
                        const QString& interestPart)
{
    return QStringLiteral("Update FBT_AddInfo Set RetDt=") + sqlQuote(date) + QStringLiteral(", RetAckNo=")
        + sqlQuote(number) + interestPart + QStringLiteral(" where code_no=") + sqlQuote(code)
        + QStringLiteral(" and TYear=") + QString::number(year);
}

bool asksAboutInterest(const QString& stored, const QString& filed)
{
    return !stored.isEmpty() && stored != kTodate && !filed.isEmpty() && stored != filed;
}

QString interestPart(QString& stored, const QString& filed, Prompter& prompter)
{
    if (stored.isEmpty() || stored == kTodate)
        return QString();
    if (filed.isEmpty()) {
        stored.clear();
        return QStringLiteral(", IntDt=''");
    }
    if (stored == filed)
        return QString();
    const auto answer = prompter.ask(QStringLiteral("Do you want to change Date of Interest Calculation ") + stored
                                         + QStringLiteral(" with ") + filed,
                                     Prompter::Buttons::YesNo, Prompter::Icon::Question, Prompter::Answer::Yes,
                                     QStringLiteral("Confirmation"));
    if (answer != Prompter::Answer::Yes)
        return QString();
    stored = filed;
    return QStringLiteral(", IntDt=") + sqlQuote(filed);
}

bool tooEarly(const QString& date, int checkYear)
{
    return datePositional(date) < QDate(checkYear, 4, 1);
}

QString tooEarlyMessage(int checkYear)
{
    return QStringLiteral("Date Should be on or after 01/04/") + QString::number(checkYear);
}

int checkGrid(const QVector<Row>& rows, const QString& yearItem)
{
    const int y = checkYearOf(yearItem);
    for (int i = 0; i < rows.size(); ++i) {
        const QString& date = rows.at(i)[FilingDate];
        if (!date.isEmpty() && tooEarly(date, y))
            return i;
    }
    return -1;
}

QString tooLong(const QString& date, const QString& number)
{
    return schema::LengthCheck(QStringLiteral("FBT_AddInfo"))(QStringLiteral("RetDt"), date, headings().at(FilingDate))(
               QStringLiteral("RetAckNo"), number, headings().at(AckNo))
        .problem();
}

int tooLongRow(const QVector<Row>& rows)
{
    for (int i = 0; i < rows.size(); ++i)
        if (!tooLong(rows.at(i)[FilingDate], rows.at(i)[AckNo]).isEmpty())
            return i;
    return -1;
}

int writeGrid(Connection& connection, QVector<Row>& rows, const QString& yearItem, Prompter& prompter, ResumeNext& guard)
{
    const int year = yearOf(yearItem);
    int written = 0;
    for (Row& row : rows) {
        const QString& code = row[Code];
        const QString& date = row[FilingDate];
        const QString& number = row[AckNo];
        QString sql;
        if (row[HasRow] != QLatin1String("1")) {
            if (!date.isEmpty() || !number.isEmpty())
                sql = insertStatement(code, year, date, number);
        } else {
            sql = updateStatement(code, year, date, number, interestPart(row[IntDate], date, prompter));
        }
        if (sql.isEmpty())
            continue;
        if (!guard([&] { connection.execute(sql); }))
            break;
        row[HasRow] = QStringLiteral("1");
        ++written;
        if (!guard([&] { connection.execute(QStringLiteral("flush tables")); }))
            break;
    }
    return written;
}

QString message(Outcome outcome, const QString& yearItem, const ClientSave& save)
{
    switch (outcome) {
    case Outcome::TooLong: return tooLong(holdsEightDigits(save.dateBox) ? save.dateBox : QString(), save.number.trimmed());
    case Outcome::NoClient: return QStringLiteral("Please Select a Client.");
    case Outcome::UnknownCode: return QStringLiteral("Client Code does not Exists.");
    case Outcome::TooEarly: return tooEarlyMessage(checkYearOf(yearItem));
    case Outcome::Saved:
    case Outcome::Failed: break;
    }
    return QString();
}

Outcome saveClient(Connection& connection, QVector<Entry>& entries, const ClientSave& save, const QString& yearItem,
                   Prompter& prompter, ResumeNext& guard)
{
    if (save.code.isEmpty())
        return Outcome::NoClient;
    if (findCode(entries, save.code, true) < 0)
        return Outcome::UnknownCode;
    const bool dateEntered = holdsEightDigits(save.dateBox);
    if (!tooLong(dateEntered ? save.dateBox : QString(), save.number.trimmed()).isEmpty())
        return Outcome::TooLong;
    if (dateEntered && tooEarly(save.dateBox, checkYearOf(yearItem)))
        return Outcome::TooEarly;

    const int index = findCode(entries, save.code, false);
    const bool hasRow = index >= 0 && entries.at(index)[EntryHasRow] == QLatin1String("1");
    const QString date = dateEntered ? save.dateBox : QString();
    const QString number = save.number.trimmed();
    const int year = yearOf(yearItem);

    QString sql;
    if (!hasRow) {
        if (!date.isEmpty() || !number.isEmpty())
            sql = insertStatement(save.code, year, date, number);
    } else {
        sql = updateStatement(save.code, year, date, number, interestPart(entries[index][EntryIntDate], date, prompter));
    }
    bool ok = true;
    if (!sql.isEmpty()) {
        ok = guard([&] { connection.execute(sql); });
        ok = guard([&] { connection.execute(QStringLiteral("Flush Tables")); }) && ok;
    }
    if (index >= 0) {
        Entry& entry = entries[index];
        entry[EntryDate] = date;
        entry[EntryNumber] = number;
        // Only a row that exists is updated next time; nothing written leaves none.
        if (!sql.isEmpty() && ok)
            entry[EntryHasRow] = QStringLiteral("1");
    }
    return ok ? Outcome::Saved : Outcome::Failed;
}

} // namespace corvane::filing
