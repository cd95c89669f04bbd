#include "cli/command.h"
#include "cli/texttable.h"

#include "core/csvwriter.h"
#include "components/repview/reportdocument.h"
#include "components/repview/reportlayout.h"
#include "core/errorlog.h"
#include "core/modbase.h"
#include "core/resumenext.h"
#include "core/safefile.h"
#include "db/connection.h"
#include "screens/cldet/clientdetails.h"

#include <QFileInfo>
#include <QRegularExpression>

namespace corvane::cli {

namespace {

using namespace clientdetails;

QString csvText(const Table& table)
{
    QString text = csvRecord(table.headings);
    for (const QStringList& row : table.rows)
        text += csvRecord(row);
    return text;
}

int runClients(Invocation& inv)
{
    inv.expectWords(0, 0);
    Choice choice = savedChoice();
    if (inv.has(QStringLiteral("--fields"))) {
        const QString fields = inv.option(QStringLiteral("--fields"));
        static const QRegularExpression nine(QStringLiteral("^[01]{9}$"));
        if (!nine.match(fields).hasMatch())
            throw UsageError("--fields takes nine 0 or 1, one per field: code, name, PAN, status, address, "
                             "telephone, date of birth, natures of business, e-mail");
        choice = choiceFromText(fields);
    }
    if (nothingTicked(choice)) {
        inv.err << "corvane: Please select a Item" << Qt::endl;
        return 1;
    }
    const QString format = inv.option(QStringLiteral("--format"), QStringLiteral("csv"));
    if (format != QStringLiteral("csv") && format != QStringLiteral("text"))
        throw UsageError("--format takes csv or text");
    const QString output = inv.option(QStringLiteral("--output"));
    const QString suffix = QFileInfo(output).suffix().toLower();

    auto connection = inv.connect();
    ResumeNext guard(QStringLiteral("frmcldet"), QStringLiteral("LOADGRID"));
    const Table table = load(*connection, choice, guard);
    if (guard.failures() > 0)
        inv.err << "corvane: " << guard.failures() << " failure(s) while reading the clients (logged in "
                << logFilePath() << ")" << Qt::endl;

    if (suffix == QStringLiteral("pdf")) {
        auto recorder = std::make_shared<ReportRecorder>();
        modbase().reportViewer = recorder;
        ResumeNext building(QStringLiteral("frmcldet"), QStringLiteral("VIEWREPORT"));
        if (!showReport(table, textWidths(table), building))
            throw Failure(err::InvalidCall, kSource, QStringLiteral("the report could not be built (see the error log)"));
        QString error;
        if (!ReportLayout::writePdf(recorder->document(), output, &error))
            throw Failure(err::PathNotFound, kSource, error);
        inv.out << output << Qt::endl;
        return guard.failures() > 0 ? 1 : 0;
    }
    const bool csv = suffix == QStringLiteral("csv") || (suffix != QStringLiteral("txt") && format == QStringLiteral("csv"));
    const QString text = csv ? csvText(table) : textTable(table.headings, table.rows);
    if (output.isEmpty()) {
        inv.out << text;
        inv.out.flush();
    } else {
        replaceFile(output, text.toUtf8());
        inv.out << output << Qt::endl;
    }
    return guard.failures() > 0 ? 1 : 0;
}

const CommandRegistration registration({
    QStringLiteral("clients"),
    QStringLiteral("list the clients with the chosen details (the client details report)"),
    QStringLiteral("Usage: corvane [global options] clients [--fields NNNNNNNNN] [--format csv|text] [--output FILE]\n"
                   "\n"
                   "Lists every client by name with the details of the client details report.\n"
                   "\n"
                   "  --fields NNNNNNNNN  nine 0 or 1, one per field in this order: Code No., Name, PAN,\n"
                   "                      Status, Address, Tel. Nos., Date of Birth/Incorporation/Formation,\n"
                   "                      Nature of Business(es), Email. Default: the choice saved by the\n"
                   "                      screen ([Settings] ClDet), which this command never changes.\n"
                   "  --format csv|text   CSV (RFC 4180, the captions as header row; the natures of business\n"
                   "                      in one quoted cell, one per line) or an aligned table. Default csv.\n"
                   "  --output FILE       write to FILE instead of standard output; FILE.csv is CSV,\n"
                   "                      FILE.txt the table, FILE.pdf the printed report, whatever\n"
                   "                      --format says.\n"
                   "\n"
                   "Exit status: 0 listed, 1 nothing chosen (\"Please select a Item\") or a failure\n"
                   "while reading (logged), 2 wrong usage.\n"),
    {QStringLiteral("--fields"), QStringLiteral("--format"), QStringLiteral("--output")},
    {},
    runClients,
    makeOffscreenApplication,
});

} // namespace
} // namespace corvane::cli
