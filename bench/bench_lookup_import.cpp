// Times the import of a large bank list and the chooser's queries over it.
//   bench_lookup_import [ROWS]          a private server in a temporary folder
//   CORVANE_BENCH_SOCKET=PATH bench_lookup_import [ROWS]   a running server (user root)
#include "components/bankinfo/lookupimport.h"
#include "core/progress.h"
#include "db/connection.h"
#include "db/privateserver.h"
#include "db/sqltext.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>
#include <cstdio>

using namespace corvane;

namespace {

void writeList(const QString& path, int rows)
{
    QFile file(path);
    file.open(QIODevice::WriteOnly);
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

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    const int rows = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 100000;

    QTemporaryDir dir;
    ConnectionSettings settings;
    settings.privateServer = false;
    settings.user = QStringLiteral("root");
    settings.database = QStringLiteral("bench_lookup");
    settings.socket = qEnvironmentVariable("CORVANE_BENCH_SOCKET");
    std::unique_ptr<PrivateServer> server;
    if (settings.socket.isEmpty()) {
        server = std::make_unique<PrivateServer>(dir.filePath(QStringLiteral("app")));
        server->start([&](const QString& text) { out << text << Qt::endl; });
        settings.socket = server->socketPath();
    }

    int status = 0;
    try {
        Connection connection;
        connection.open(settings, true);
        for (const char* table : {"MiscInf_Branch", "MiscInf_MICR"})
            connection.execute(QStringLiteral("DROP TABLE IF EXISTS ") + QLatin1String(table));

        const QString path = dir.filePath(QStringLiteral("banks.csv"));
        QElapsedTimer clock;
        clock.start();
        writeList(path, rows);
        out << QStringLiteral("wrote %1 rows (%2 MB) in %3 s").arg(rows).arg(QFile(path).size() / 1e6, 0, 'f', 1).arg(clock.elapsed() / 1000.0, 0, 'f', 2) << Qt::endl;

        for (bankinfo::Kind kind : {bankinfo::Kind::Banks, bankinfo::Kind::Micr}) {
            NullProgress quiet;
            clock.restart();
            const auto result = bankinfo::importFile(connection, kind, path, quiet);
            const double seconds = clock.elapsed() / 1000.0;
            out << QStringLiteral("import %1: %2 rows in %3 s (%4 rows/s), %5 refused")
                       .arg(bankinfo::kindName(kind))
                       .arg(result.loaded)
                       .arg(seconds, 0, 'f', 2)
                       .arg(int(result.loaded / std::max(seconds, 0.001)))
                       .arg(result.refusedCount())
                    << Qt::endl;
        }

        // What a chooser does on each pause in typing.
        bankinfo::BankInfoStore store(connection);
        for (const QString& filter : {QString(), QStringLiteral("bank 7"), QStringLiteral("branch 99999"),
                                      QStringLiteral("city 12 state 3"), QStringLiteral("nothing matches")}) {
            clock.restart();
            const int repeats = 5;
            int found = 0;
            for (int i = 0; i < repeats; ++i)
                found = int(store.find(bankinfo::Kind::Micr, filter).rows.size());
            out << QStringLiteral("find micr '%1': %2 rows shown, %3 ms a query")
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
    if (server)
        server->stop();
    return status;
}
