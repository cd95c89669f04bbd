// Times the replacing import of a generated bank branch list against
// LOAD DATA LOCAL INFILE of the same file by the mariadb client, checks that
// both leave the same rows (CHECKSUM TABLE), and times the chooser's queries.
//   bench_lookup_import [ROWS]          a private server in the benchmarks' work folder
//   CORVANE_BENCH_SOCKET=PATH bench_lookup_import [ROWS]   a running server (user root)
#include "benchsupport.h"
#include "components/bankinfo/lookupimport.h"
#include "core/failure.h"
#include "core/progress.h"
#include "db/connection.h"
#include "db/sqltext.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>

using namespace corvane;

namespace {

const QString kBench = QStringLiteral("bench");

void writeList(const QString& path, int rows)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw Failure(1, kBench, QStringLiteral("cannot write ") + path);
    file.write("BANK,IFSC,MICR,BRANCH,ADDRESS,CITY,DISTRICT,STATE\r\n");
    for (int i = 0; i < rows; ++i)
        file.write(QStringLiteral("BANK %1 LTD,ABCD0%2,%3,BRANCH %4,\"%4 MAIN ROAD, WARD %5\",CITY %5,DISTRICT %5,STATE %6\r\n")
                       .arg(i % 120)
                       .arg(i, 6, 10, QLatin1Char('0'))
                       .arg(100000000 + i)
                       .arg(i)
                       .arg(i % 900)
                       .arg(i % 36)
                       .toLatin1());
}

// The same file loaded by the server itself, as the list's import would store it.
void loadData(const ConnectionSettings& settings, const QString& path, const QString& table)
{
    const QString statement =
        QStringLiteral("LOAD DATA LOCAL INFILE %1 INTO TABLE %2 CHARACTER SET utf8mb4"
                       " FIELDS TERMINATED BY ',' OPTIONALLY ENCLOSED BY '\"' LINES TERMINATED BY '\\r\\n' IGNORE 1 LINES"
                       " (Bank, IFSC, MICR, Branch, Address, City, District, State) SET BranchCode = RIGHT(IFSC, 6)")
            .arg(sqlQuote(path), sqlName(table));
    QProcess client;
    client.start(QStringLiteral("mariadb"), {QStringLiteral("--local-infile=1"), QStringLiteral("--socket=") + settings.socket,
                                             QStringLiteral("--user=root"), settings.database, QStringLiteral("-e"), statement});
    if (!client.waitForFinished(-1) || client.exitStatus() != QProcess::NormalExit || client.exitCode() != 0)
        throw Failure(1, kBench, QStringLiteral("mariadb failed: ") + QString::fromLocal8Bit(client.readAllStandardError()));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    const int rows = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : (bench::quick() ? 30000 : 150000);
    const int repetitions = bench::repetitions(); // three rounds even when quick: one round is mostly noise

    QTemporaryDir dir;
    bench::BenchServer benchServer(QStringLiteral("bench_lookup"));
    const ConnectionSettings& settings = benchServer.settings();

    int status = 0;
    try {
        const std::shared_ptr<Connection> opened = benchServer.connect();
        Connection& connection = *opened;
        const QString table = bankinfo::tableDef(bankinfo::Kind::Banks).name;
        const QString path = dir.filePath(QStringLiteral("banks.csv"));
        writeList(path, rows);
        out << QStringLiteral("%1 rows, %2 MB").arg(rows).arg(QFile(path).size() / 1e6, 0, 'f', 1) << Qt::endl;

        // Before each run: the checksum of what the previous run left, then an empty list.
        QStringList checksums;
        bool loaded = false;
        auto checksum = [&] {
            const auto r = connection.query(QStringLiteral("SELECT COUNT(*) FROM %1").arg(sqlName(table)));
            const auto c = connection.query(QStringLiteral("CHECKSUM TABLE %1").arg(sqlName(table)));
            return r.rows.value(0).value(0).toString() + QStringLiteral(" rows, checksum ") + c.rows.value(0).value(1).toString();
        };
        auto reset = [&] {
            if (loaded)
                checksums << checksum();
            connection.execute(QStringLiteral("DROP TABLE IF EXISTS %1").arg(sqlName(table)));
            bankinfo::BankInfoStore(connection).ensureTables();
            connection.execute(QStringLiteral("FLUSH TABLES"));
            loaded = true;
        };
        NullProgress quiet;
        bankinfo::ImportOptions replace;
        replace.replace = true;
        int imported = 0;
        const auto [ours, anchor] = bench::alternate(
            repetitions,
            [&] { imported = bankinfo::importFile(connection, bankinfo::Kind::Banks, path, quiet, replace).loaded; },
            [&] { loadData(settings, path, table); }, reset);
        checksums << checksum();
        out << QStringLiteral("left by each run (ours, anchor, ...): ") << checksums.join(QStringLiteral("; ")) << Qt::endl;
        checksums.removeDuplicates();
        if (imported != rows || checksums.size() != 1)
            throw Failure(1, kBench, QStringLiteral("the import and LOAD DATA left different tables"));

        // The same file into a list that holds it already (every row replaces its own).
        const double merge = bench::seconds([&] { bankinfo::importFile(connection, bankinfo::Kind::Banks, path, quiet); });
        out << QStringLiteral("import without --replace over the same rows: %1 s").arg(merge, 0, 'f', 3) << Qt::endl;

        bench::report(QStringLiteral("import"), QStringLiteral("lookup import banks --replace, %1 rows").arg(rows), ours, anchor,
                      bench::peakMemoryMb(), QStringLiteral("ratio <= 1.5"));

        // What a chooser does on each pause in typing.
        bankinfo::BankInfoStore store(connection);
        for (const QString& filter : {QString(), QStringLiteral("bank 7"), QStringLiteral("branch 99999"),
                                      QStringLiteral("city 12 state 3"), QStringLiteral("nothing matches")}) {
            QElapsedTimer clock;
            clock.start();
            const int repeats = 5;
            int found = 0;
            for (int i = 0; i < repeats; ++i)
                found = int(store.find(bankinfo::Kind::Banks, filter).rows.size());
            out << QStringLiteral("find banks '%1': %2 rows shown, %3 ms a query")
                       .arg(filter)
                       .arg(found)
                       .arg(double(clock.elapsed()) / repeats, 0, 'f', 1)
                << Qt::endl;
        }
        connection.execute(QStringLiteral("DROP DATABASE ") + sqlName(settings.database));
    } catch (const std::exception& e) {
        out << "failed: " << e.what() << Qt::endl;
        status = 1;
    }
    return status;
}
