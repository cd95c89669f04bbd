#include "cli/command.h"
#include "core/safefile.h"
#include "cli/texttable.h"

#include "components/repview/reportdocument.h"
#include "components/repview/reportlayout.h"
#include "core/csvwriter.h"
#include "core/failure.h"
#include "core/modbase.h"
#include "core/resumenext.h"
#include "db/connection.h"
#include "screens/register/registerreport.h"
#include "screens/register/returnregister.h"

#include <QFile>
#include <QGuiApplication>
#include <QSaveFile>

namespace corvane::cli {

namespace {

using namespace returnregister;

QStringList shownCells(const Row& row)
{
    return {row[Code], row[Name], row[Pan], statusName(row[Status]), row[FilingDate], row[AckNo]};
}

QString csvText(const QVector<Row>& rows)
{
    QString text = csvRecord(headings());
    for (const Row& row : rows)
        text += csvRecord(shownCells(row));
    return text;
}

QString plainText(const QString& title, const QVector<Row>& rows)
{
    QVector<QStringList> table;
    table.reserve(rows.size());
    for (const Row& row : rows)
        table << shownCells(row);
    return title + QStringLiteral("\n\n") + textTable(headings(), table);
}

void writeFile(const QString& path, const QString& text)
{
    replaceFile(path, text.toUtf8());
}

void writePdf(const QString& path, const QString& title, const QVector<Row>& rows)
{
    auto recorder = std::make_shared<ReportRecorder>();
    modbase().reportViewer = recorder;
    ResumeNext guard(QStringLiteral("Pending"), QStringLiteral("DOS_CLICK"));
    const bool built = registerreport::show(
        title, registerreport::registerColumns(), int(rows.size()) + 1,
        [&](int row, int column) { return row == 0 ? headings().value(column) : shownCells(rows.at(row - 1)).value(column); },
        guard);
    if (!built)
        throw Failure(err::InvalidCall, kSource, QStringLiteral("the report could not be built (see the error log)"));
    QString error;
    if (!ReportLayout::writePdf(recorder->document(), path, &error))
        throw Failure(err::PathNotFound, kSource, error);
}

int runRegister(Invocation& inv)
{
    inv.expectWords(0, 0);
    if (inv.year.isEmpty())
        throw UsageError("--year is required (the first year of the assessment year, e.g. 2008)");
    bool ok = false;
    const int year = inv.year.toInt(&ok);
    if (!ok || year < kFirstYear || year > 9998)
        throw UsageError(QStringLiteral("--year takes a year from %1, not %2").arg(kFirstYear).arg(inv.year).toStdString());

    const QString returnsText = inv.option(QStringLiteral("--returns"), QStringLiteral("all"));
    const QStringList names{QStringLiteral("all"), QStringLiteral("pending"), QStringLiteral("filed")};
    if (!names.contains(returnsText))
        throw UsageError("--returns takes all, pending or filed");
    Returns returns = Returns(names.indexOf(returnsText));

    Period period;
    const bool from = inv.has(QStringLiteral("--from")), to = inv.has(QStringLiteral("--to"));
    if (from != to)
        throw UsageError("--from and --to go together");
    if (from) {
        if (inv.has(QStringLiteral("--returns")) && returns != Returns::Filed)
            throw UsageError("a period of filing dates lists filed returns: leave out --returns or give filed");
        returns = Returns::Filed;
        period = {true, inv.option(QStringLiteral("--from")), inv.option(QStringLiteral("--to"))};
        const PeriodCheck check = checkPeriod(period.begin, period.end);
        if (check != PeriodCheck::Ok) {
            inv.err << "corvane: " << periodMessage(check) << " ("
                    << (check == PeriodCheck::BadEnd ? "--to" : "--from") << ", DD/MM/YYYY)" << Qt::endl;
            return 1;
        }
    }

    const QString format = inv.option(QStringLiteral("--format"), QStringLiteral("csv"));
    if (format != QStringLiteral("csv") && format != QStringLiteral("text"))
        throw UsageError("--format takes csv or text");
    const QString output = inv.option(QStringLiteral("--output"));
    if (inv.has(QStringLiteral("--output")) && output.isEmpty())
        throw UsageError("--output needs a file name");

    auto connection = inv.connect();
    const QString item = yearItems(year).last();
    const QVector<Row> rows = load(*connection, year, returns, period);
    const QString title = heading(returns, item, period);

    if (output.endsWith(QStringLiteral(".pdf"), Qt::CaseInsensitive)) {
        writePdf(output, title, rows);
    } else {
        const bool csv = output.endsWith(QStringLiteral(".csv"), Qt::CaseInsensitive) || (format == QStringLiteral("csv"));
        const QString text = csv ? csvText(rows) : plainText(title, rows);
        if (output.isEmpty())
            inv.out << text << Qt::flush;
        else
            writeFile(output, text);
    }
    if (!output.isEmpty())
        inv.err << title << ": " << rows.size() << " client" << (rows.size() == 1 ? "" : "s") << " written to "
                << output << Qt::endl;
    return 0;
}

const CommandRegistration registration({
    QStringLiteral("register"),
    QStringLiteral("list the pending and filed returns of a year (CSV, text or PDF)"),
    QStringLiteral(
        "Usage: corvane [global options] register --year YYYY [--returns all|pending|filed]\n"
        "           [--from DD/MM/YYYY --to DD/MM/YYYY] [--format csv|text] [--output FILE]\n"
        "\n"
        "Lists every client with the date of filing and acknowledgement number of its\n"
        "return for the assessment year starting in YYYY (from 2006), in the order of\n"
        "the client table.\n"
        "  --returns   all clients (default), pending returns (no date of filing) or\n"
        "              filed returns\n"
        "  --from/--to a period of filing dates, both ends included; implies filed. The\n"
        "              begin date must lie before the end date. A stored date of filing\n"
        "              that is not written DD/MM/YYYY is always listed.\n"
        "  --format    csv (default): RFC 4180, a heading row and a row per client with\n"
        "              code, name, PAN, status, date of filing, acknowledgement number;\n"
        "              text: the register's heading, then an aligned table\n"
        "  --output    write to FILE instead of standard output: FILE.pdf the printed\n"
        "              report (as the print preview lays it out), FILE.csv the CSV,\n"
        "              any other name the chosen format\n"
        "\n"
        "Exit status 1 with the message for a refused period (\"Invalid date entry.\",\n"
        "\"First date should be less than the second date.\") or a database failure.\n"),
    {QStringLiteral("--returns"), QStringLiteral("--from"), QStringLiteral("--to"), QStringLiteral("--format"),
     QStringLiteral("--output")},
    {},
    runRegister,
    makeOffscreenApplication,
});

} // namespace
} // namespace corvane::cli
