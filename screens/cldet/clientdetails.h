#pragma once

#include <QString>
#include <QStringList>
#include <QVector>
#include <array>

namespace corvane {

class Connection;
class ResumeNext;

// The client details report behind frmcldet: which fields to show, kept as a
// text of nine "0"/"1" under [Settings] ClDet, and the rows of every client.
namespace clientdetails {

constexpr int kFieldCount = 9;
enum Field { Code, Name, Pan, Status, Address, Telephone, Birth, Natures, Email };
using Choice = std::array<bool, kFieldCount>;

// The check box captions, which are also the column headings.
const QStringList& captions();

// Box i is ticked when character i is a non-zero digit; missing characters leave boxes unticked.
Choice choiceFromText(const QString& text);
QString choiceToText(const Choice& choice);
bool nothingTicked(const Choice& choice);

// The saved choice (all nine by default), and saving it.
Choice savedChoice();
void saveChoice(const Choice& choice);

// The address parts joined: ", " between parts, "-" before the pin, empty parts leave no trace.
QString joinAddress(const QStringList& parts); // flat, building, street, area, city, pin, state
// STD and number, a blank between them when both are there.
QString joinTelephone(const QString& std, const QString& number);

struct Table {
    QStringList headings;       // the captions of the ticked fields, in index order
    QVector<int> fields;        // which field each column shows
    QVector<QStringList> rows;  // one per client, by name
};

// Every client of FBT_Info by name, one column per ticked field. The natures of
// business of all clients come from one reading of FBT_Nature; a BusNat that
// is not a list of numbers is logged and shows no natures.
Table load(Connection& connection, const Choice& choice, ResumeNext& guard);

inline const QString kReportTitle = QStringLiteral("Clients Details");

// Hands the table to the context's report viewer as a wide report and shows
// it ("VIEWREPORT"); widths are the grid's column widths. False when a step failed.
bool showReport(const Table& table, const QVector<int>& widths, ResumeNext& guard);

// Widths for a table that has no grid: the longest line of each column.
QVector<int> textWidths(const Table& table);

} // namespace clientdetails
} // namespace corvane
