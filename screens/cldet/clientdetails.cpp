#include "screens/cldet/clientdetails.h"

#include "core/clientstatus.h"
#include "core/failure.h"
#include "core/resumenext.h"
#include "core/settings.h"
#include "core/modbase.h"
#include "core/reportviewer.h"
#include "db/recordset.h"
#include "screens/register/registerreport.h"

#include <QHash>
#include <QRegularExpression>
#include <QSet>

namespace corvane::clientdetails {

namespace {

const QString kSection = QStringLiteral("Settings");
const QString kKey = QStringLiteral("ClDet");

// "1,2, 10": numbers separated by commas, blanks allowed around them.
const QRegularExpression kNumberList(QStringLiteral("^\\s*\\d+\\s*(,\\s*\\d+\\s*)*$"));

// Nature numbers in the order of their descriptions, and the descriptions.
struct NatureOrder {
    QHash<qint64, int> rank;
    QStringList descriptions;
};

NatureOrder readNatures(Connection& connection)
{
    NatureOrder natures;
    Recordset rs;
    rs.open(QStringLiteral("Select SrNo, NatDesc from FBT_Nature order by NatDesc"), connection);
    while (!rs.eof()) {
        const qint64 number = rs.field(0).toLongLong();
        if (!natures.rank.contains(number)) {
            natures.rank.insert(number, int(natures.descriptions.size()));
            natures.descriptions << rs.text(1);
        }
        rs.moveNext();
    }
    return natures;
}

// The descriptions of the natures a client lists, in description order, one per line.
QString naturesText(const QString& busNat, const NatureOrder& natures)
{
    if (busNat.isEmpty())
        return QString();
    if (!kNumberList.match(busNat).hasMatch())
        throw Failure(err::TypeMismatch, QStringLiteral("frmcldet"),
                      QStringLiteral("The natures of business \"%1\" are not a list of numbers").arg(busNat));
    QSet<int> ranks;
    for (const QString& number : busNat.split(QLatin1Char(','))) {
        const auto it = natures.rank.constFind(number.trimmed().toLongLong());
        if (it != natures.rank.constEnd())
            ranks.insert(*it);
    }
    QList<int> ordered(ranks.begin(), ranks.end());
    std::sort(ordered.begin(), ordered.end());
    QStringList lines;
    for (int rank : ordered)
        lines << natures.descriptions.at(rank);
    return lines.join(QStringLiteral("\r\n"));
}

} // namespace

const QStringList& captions()
{
    static const QStringList list{
        QStringLiteral("Code No."), QStringLiteral("Name"), QStringLiteral("PAN"), QStringLiteral("Status"),
        QStringLiteral("Address"), QStringLiteral("Tel. Nos."), QStringLiteral("Date of Birth/Incorporation/Formation"),
        QStringLiteral("Nature of Business(es)"), QStringLiteral("Email")};
    return list;
}

Choice choiceFromText(const QString& text)
{
    Choice choice{};
    for (int i = 0; i < kFieldCount && i < text.size(); ++i)
        choice[i] = text.at(i).isDigit() && text.at(i) != QLatin1Char('0');
    return choice;
}

QString choiceToText(const Choice& choice)
{
    QString text;
    for (bool ticked : choice)
        text += ticked ? QLatin1Char('1') : QLatin1Char('0');
    return text;
}

bool nothingTicked(const Choice& choice)
{
    return std::none_of(choice.begin(), choice.end(), [](bool b) { return b; });
}

Choice savedChoice()
{
    return choiceFromText(GetSettingINI(kSection, kKey, QString(kFieldCount, QLatin1Char('1'))));
}

void saveChoice(const Choice& choice)
{
    SaveSettingINI(kSection, kKey, choiceToText(choice));
}

QString joinAddress(const QStringList& parts)
{
    QString address = parts.value(0);
    for (int i = 1; i < 7; ++i) {
        const QString part = parts.value(i);
        if (!address.isEmpty() && !part.isEmpty())
            address += i == 5 ? QStringLiteral("-") : QStringLiteral(", ");
        address += part;
    }
    return address;
}

QString joinTelephone(const QString& std, const QString& number)
{
    return std.isEmpty() || number.isEmpty() ? std + number : std + QLatin1Char(' ') + number;
}

Table load(Connection& connection, const Choice& choice, ResumeNext& guard)
{
    Table table;
    for (int i = 0; i < kFieldCount; ++i) {
        if (choice[i]) {
            table.headings << captions().at(i);
            table.fields << i;
        }
    }
    NatureOrder natures;
    if (choice[Natures])
        guard([&] { natures = readNatures(connection); });
    Recordset rs;
    if (!guard([&] { rs.open(QStringLiteral("Select * from FBT_Info Order by Name"), connection); }))
        return table;
    static const QStringList addressColumns{QStringLiteral("Flat"), QStringLiteral("Building"), QStringLiteral("Street"),
                                            QStringLiteral("Area"), QStringLiteral("City"), QStringLiteral("Pin"),
                                            QStringLiteral("State")};
    while (!rs.eof()) {
        QStringList row;
        for (int field : table.fields) {
            QString cell;
            guard([&] {
                switch (field) {
                case Code: cell = rs.text(QStringLiteral("Code_No")); break;
                case Name: cell = rs.text(QStringLiteral("Name")); break;
                case Pan: cell = rs.text(QStringLiteral("PAN")); break;
                case Status:
                    cell = rs.field(QStringLiteral("ClStatus")).isNull()
                        ? QString()
                        : clientStatusName(rs.field(QStringLiteral("ClStatus")).toInt());
                    break;
                case Address: {
                    QStringList parts;
                    for (const QString& column : addressColumns)
                        parts << rs.text(column);
                    cell = joinAddress(parts);
                    break;
                }
                case Telephone: cell = joinTelephone(rs.text(QStringLiteral("STD")), rs.text(QStringLiteral("TelNo"))); break;
                case Birth: cell = rs.text(QStringLiteral("DOI")); break;
                case Natures: cell = naturesText(rs.text(QStringLiteral("BusNat")), natures); break;
                case Email: cell = rs.text(QStringLiteral("EMail")); break;
                }
            });
            row << cell;
        }
        table.rows << row;
        rs.moveNext();
    }
    return table;
}

bool showReport(const Table& table, const QVector<int>& widths, ResumeNext& guard)
{
    registerreport::Columns columns;
    columns.widths = widths;
    columns.alignments = QVector<int>(widths.size(), registerreport::kGridLeft);
    columns.wrap = true;
    if (!guard([&] {
            if (!modbase().reportViewer)
                throw Failure(err::ObjectNotSet, kSource, QStringLiteral("Object variable or With block variable not set"));
            modbase().reportViewer->setsetcol130(true);
        }))
        return false;
    return registerreport::show(kReportTitle, columns, int(table.rows.size()) + 1,
                                [&](int row, int column) {
                                    return row == 0 ? table.headings.value(column)
                                                    : table.rows.at(row - 1).value(column);
                                },
                                guard);
}

QVector<int> textWidths(const Table& table)
{
    QVector<int> widths;
    for (int c = 0; c < table.headings.size(); ++c) {
        int longest = int(table.headings.at(c).size());
        for (const QStringList& row : table.rows)
            for (const QString& line : row.value(c).split(QLatin1Char('\n')))
                longest = std::max(longest, int(line.trimmed().size()));
        widths << std::min(longest, 60) * 8 + 16;
    }
    return widths;
}

} // namespace corvane::clientdetails
