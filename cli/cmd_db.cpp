#include "cli/command.h"

#include "components/bankinfo/lookupimport.h"
#include "db/connection.h"
#include "db/rowstream.h"
#include "db/schema.h"

#include <QByteArray>
#include <QIODevice>

#include <cstring>

namespace corvane::cli {

namespace {

// The bank and Assessing Officer lists of the lookups, from the demo files shipped with the program.
void loadDemoLookups(Invocation& inv, Connection& connection)
{
    const QString folder = bankinfo::findDemoFolder(inv.appPath);
    if (folder.isEmpty()) {
        inv.err << "no demo folder beside the program or in " << inv.appPath << ": the lookup lists stay as they are" << Qt::endl;
        return;
    }
    for (const QString& line : bankinfo::loadDemoLists(connection, folder))
        inv.out << line << Qt::endl;
}

int runDb(Invocation& inv)
{
    inv.expectWords(1, 1);
    const QString action = inv.word(0, QStringLiteral("init"));
    if (action != QStringLiteral("init"))
        throw UsageError(QStringLiteral("unknown action %1: use init").arg(action).toStdString());
    auto connection = inv.connect(true);
    const QStringList created = schema::createMissingTables(*connection);
    const int natures = schema::fillNatures(*connection);
    inv.out << "database " << connection->databaseName() << ": "
            << (created.isEmpty() ? QStringLiteral("all tables present") : QStringLiteral("created ") + created.join(QStringLiteral(", ")))
            << Qt::endl;
    if (natures)
        inv.out << natures << " natures of business added" << Qt::endl;
    if (inv.has(QStringLiteral("--demo"))) {
        const int rows = schema::loadDemoData(*connection);
        inv.out << (rows ? QStringLiteral("%1 demo rows added").arg(rows) : QStringLiteral("clients present: no demo rows added")) << Qt::endl;
        loadDemoLookups(inv, *connection);
    }
    return 0;
}

int runSql(Invocation& inv)
{
    inv.expectWords(1, 1);
    auto connection = inv.connect();
    RowStream rows(*connection, inv.word(0, QStringLiteral("STATEMENT")));
    if (!rows.hasResult())
        return 0;
    // Row by row as the server sends them, so that a result of any size takes little memory.
    inv.out << rows.columnNames().join(QLatin1Char('\t')) << '\n';
    inv.out.flush();
    QIODevice* device = inv.out.device();
    const int columns = int(rows.columnNames().size());
    // The rows go out in large writes, each value copied once into the buffer.
    QByteArray chunk(1 << 18, Qt::Uninitialized);
    qsizetype used = 0;
    auto write = [&] {
        if (device)
            device->write(chunk.constData(), used);
        else
            inv.out << QString::fromUtf8(chunk.constData(), used);
        used = 0;
    };
    auto room = [&](qsizetype bytes) {
        if (used + bytes > chunk.size())
            write();
        if (bytes > chunk.size())
            chunk.resize(bytes); // a value larger than the buffer
        return chunk.data() + used;
    };
    while (rows.next()) {
        for (int i = 0; i < columns; ++i) {
            if (rows.isNull(i)) {
                char* out = room(5);
                memcpy(out, i ? "\tNULL" : "NULL", i ? 5 : 4);
                used += i ? 5 : 4;
                continue;
            }
            const QByteArrayView text = rows.text(i);
            char* out = room(text.size() + 1);
            if (i)
                *out++ = '\t';
            // A tab or line break inside a value would break the layout.
            for (const char c : text)
                *out++ = c == '\t' || c == '\n' ? ' ' : c;
            used = out - chunk.data();
        }
        *room(1) = '\n';
        ++used;
    }
    write();
    inv.out.flush();
    return 0;
}

const CommandRegistration dbRegistration({
    QStringLiteral("db"),
    QStringLiteral("create the database and its tables, optionally with demo data"),
    QStringLiteral("Usage: corvane [global options] db init [--demo]\n"
                   "\n"
                   "Creates the configured database when it is missing and every missing table\n"
                   "(MyISAM), and fills the natures of business when there are none. Running it\n"
                   "again changes nothing.\n"
                   "  --demo   add demo clients, banks, accounts, bills and receipts when no client exists,\n"
                   "           and the demo bank and Assessing Officer lists to those lists that are empty\n"),
    {},
    {QStringLiteral("--demo")},
    runDb,
});

const CommandRegistration sqlRegistration({
    QStringLiteral("sql"),
    QStringLiteral("run one SQL statement on the configured database"),
    QStringLiteral("Usage: corvane [global options] sql STATEMENT\n"
                   "\n"
                   "Runs one statement. A result prints as tab-separated rows under a header line\n"
                   "of column names; NULL prints as NULL.\n"),
    {},
    {},
    runSql,
});

} // namespace
} // namespace corvane::cli
