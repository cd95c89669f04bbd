#include "cli/command.h"
#include "cli/terminalprogress.h"

#include "components/bankinfo/lookupimport.h"
#include "core/freespace.h"
#include "db/connection.h"
#include "db/privateserver.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <cstdio>

namespace corvane::cli {

namespace {

bankinfo::Kind kindArgument(const Invocation& inv, int index)
{
    const QString name = inv.word(index, QStringLiteral("list (banks, micr or ao)"));
    const auto kind = bankinfo::kindFromName(name);
    if (!kind)
        throw UsageError(QStringLiteral("unknown list %1: use banks, micr or ao").arg(name).toStdString());
    return *kind;
}

int runImport(Invocation& inv)
{
    inv.expectWords(3, 3);
    const bankinfo::Kind kind = kindArgument(inv, 1);
    const QString path = inv.word(2, QStringLiteral("FILE"));
    if (!QFileInfo(path).isFile())
        throw UsageError(QStringLiteral("%1: no such file").arg(path).toStdString());

    bankinfo::ImportOptions options;
    options.replace = inv.has(QStringLiteral("--replace"));
    // The server would wait for space that never comes: refuse at once. The
    // rows take about the file's size again for their indexes, and a
    // replacement keeps the old list until the new one is complete.
    if (inv.connection.privateServer)
        requireFreeSpace(PrivateServer(inv.appPath).dataDir(), QFileInfo(path).size() * (options.replace ? 3 : 2),
                         QStringLiteral("the import of %1").arg(path));
    auto connection = inv.connect();
    QElapsedTimer clock;
    clock.start();
    bankinfo::ImportResult result;
    {
        TerminalProgress progress(inv.err, QFileInfo(path).fileName());
        result = bankinfo::importFile(*connection, kind, path, progress, options);
    }
    const int total = bankinfo::BankInfoStore(*connection).count(kind);
    inv.out << QStringLiteral("%1: %2 rows loaded into the %3 from %4 lines in %5 s; the list now holds %6 rows")
                   .arg(QFileInfo(path).fileName())
                   .arg(result.loaded)
                   .arg(bankinfo::kindDescription(kind))
                   .arg(result.lines)
                   .arg(double(clock.elapsed()) / 1000.0, 0, 'f', 1)
                   .arg(total)
            << Qt::endl;
    if (!result.refused.isEmpty()) {
        inv.out << QStringLiteral("%1 %2 refused:").arg(result.refusedCount()).arg(result.refusedCount() == 1 ? "line" : "lines")
                << Qt::endl;
        for (const QString& line : result.refused)
            inv.out << "  " << line << '\n';
        inv.out.flush();
    }
    // Some lines refused is not a failure of the command; nothing loaded from a file with data lines is.
    return result.loaded == 0 && result.lines > 0 ? 1 : 0;
}

int runFind(Invocation& inv)
{
    if (inv.words.size() < 2)
        throw UsageError("missing list (banks, micr or ao)");
    const bankinfo::Kind kind = kindArgument(inv, 1);
    const QString words = inv.words.mid(2).join(QLatin1Char(' '));
    bool ok = true;
    const int limit = inv.option(QStringLiteral("--limit"), QStringLiteral("50")).toInt(&ok);
    if (!ok || limit < 1)
        throw UsageError("--limit takes a number of rows");
    auto connection = inv.connect();
    const bankinfo::Lookup lookup = bankinfo::BankInfoStore(*connection).find(kind, words, limit);
    inv.out << lookup.headings.join(QLatin1Char('\t')) << '\n';
    for (const QStringList& row : lookup.rows)
        inv.out << row.join(QLatin1Char('\t')) << '\n';
    if (lookup.more)
        inv.err << QStringLiteral("(more rows match: give more words or --limit)") << '\n';
    inv.out.flush();
    inv.err.flush();
    return 0;
}

int runLookup(Invocation& inv)
{
    const QString action = inv.word(0, QStringLiteral("action (import or find)"));
    if (action == QStringLiteral("import"))
        return runImport(inv);
    if (action == QStringLiteral("find"))
        return runFind(inv);
    throw UsageError(QStringLiteral("unknown action %1: use import or find").arg(action).toStdString());
}

QString usage()
{
    using namespace bankinfo;
    return QStringLiteral(
               "Usage: corvane [global options] lookup import banks|micr|ao FILE [--replace]\n"
               "       corvane [global options] lookup find banks|micr|ao [WORDS...] [--limit N]\n"
               "\n"
               "The lists behind the bank and Assessing Officer lookups of the screens.\n"
               "\n"
               "import  loads a comma-separated file into a list. Its first line names the\n"
               "        columns, in any order (letters and digits count, case does not):\n"
               "          banks  bank branch list: %1\n"
               "          micr   MICR list: %2\n"
               "          ao     Assessing Officer list: %3\n"
               "        Both bank lists read the public bank list layout (bank, IFSC, MICR,\n"
               "        branch, address, city, district, state). A row whose key (IFSC, MICR,\n"
               "        or area code, AO type, range code and AO number) is present replaces it.\n"
               "        Lines that cannot be loaded are listed with their reason; the others load.\n"
               "        Progress shows on a terminal.\n"
               "  --replace  the file's rows take the list's place, all at once, when the file\n"
               "             has a row to load; an import that is interrupted leaves the old list\n"
               "find    prints the rows holding every word given, as the screens' lists do.\n"
               "  --limit N  at most N rows (default 50)\n"
               "\n"
               "Exit status: 0 done (also with some lines refused), 1 nothing could be\n"
               "loaded or the file is not such a list, 2 wrong usage.\n")
        .arg(requiredColumnsText(Kind::Banks), requiredColumnsText(Kind::Micr), requiredColumnsText(Kind::Ao));
}

const CommandRegistration registration({
    QStringLiteral("lookup"),
    QStringLiteral("load or search the bank, MICR and Assessing Officer lists"),
    usage(),
    {QStringLiteral("--limit")},
    {QStringLiteral("--replace")},
    runLookup,
});

} // namespace
} // namespace corvane::cli
