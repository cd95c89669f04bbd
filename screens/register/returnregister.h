#pragma once

#include <QDate>
#include <QString>
#include <QStringList>
#include <QVector>
#include <array>
#include <functional>

namespace corvane {

class Connection;

// The register of returns of one assessment year: every client of FBT_Info in
// table order with the filing details of its FBT_AddInfo row for the year.
namespace returnregister {

// The cells of a register row, in the grid's column order.
enum Column { Code, Name, Pan, Status, FilingDate, AckNo, HasRow, IntDate, ColumnCount };
using Row = std::array<QString, ColumnCount>;

// The six headings of the columns shown (the last two columns have none).
const QStringList& headings();

// The shown name of a stored status (the client status list); a code not in
// the list, or no number, shows as itself.
QString statusName(const QString& code);

constexpr int kFirstYear = 2006;
// "2006-07" … up to the context year; empty before 2006.
QStringList yearItems(int contextYear);
// The numeric value of an item ("2008-09" gives 2008).
int yearOf(const QString& item);

enum class Returns { All = 0, Pending = 1, Filed = 2 };

// The period of filing dates, as the two date boxes hold them.
struct Period {
    bool on = false;
    QString begin;
    QString end;
};

// Whether a date box holds all eight digits.
bool holdsEightDigits(const QString& boxText);

// The date of a "dd/mm/yyyy" text read by position (day 1-2, month 4-5, year 7-10).
QDate datePositional(const QString& text);

// Whether a row stays in the register under the filter.
bool keep(const Row& row, Returns returns, const Period& period);

// "List of Filed Returns for the Assessment Year 2008-09 (Period from … to …)";
// the period is named only where it filters, on filed returns.
QString heading(Returns returns, const QString& yearItem, const Period& period);

// The check of the period boxes before the register is rebuilt.
enum class PeriodCheck { Ok, BadBegin, BadEnd, NotBefore };
PeriodCheck checkPeriod(const QString& begin, const QString& end);
QString periodMessage(PeriodCheck check); // empty for Ok

// Reads the register of a year with one query and hands each row that the
// filter keeps to sink, in FBT_Info's table order. Throws Failure.
void read(Connection& connection, int year, const std::function<void(Row&&)>& sink);
QVector<Row> load(Connection& connection, int year, Returns returns = Returns::All, const Period& period = {});

// The entry list of the year (code, name, date, number, has-a-row flag, interest date).
enum EntryColumn { EntryCode, EntryName, EntryDate, EntryNumber, EntryHasRow, EntryIntDate, EntryColumnCount };
using Entry = std::array<QString, EntryColumnCount>;
QVector<Entry> loadEntries(Connection& connection, int year);
Entry entryOf(const Row& row);

// The first row from 0 whose code begins with text (column 0) or whose name
// does (column 1), without regard to case; -1 when none.
int findPrefix(const QVector<Entry>& entries, int column, const QString& text);
// The row whose code equals code, case-sensitive (exact) or not; -1 when none.
int findCode(const QVector<Entry>& entries, const QString& code, bool caseSensitive);

} // namespace returnregister
} // namespace corvane
