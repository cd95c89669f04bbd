// Times the check of every table of a generated database by the check and
// repair job against the same statements sent by the mariadb client.
//   bench_check [MEGABYTES] [ROUNDS]          a private server in a temporary folder
//   CORVANE_BENCH_SOCKET=PATH bench_check …   a running server (user root)
#include "core/progress.h"
#include "core/resumenext.h"
#include "db/connection.h"
#include "db/privateserver.h"
#include "db/sqltext.h"
#include "screens/repair/checkrepairjob.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>

using namespace corvane;

namespace {

constexpr int kTables = 8;
constexpr int kRowBytes = 750; // a row of the tables below with its index entries, about

void generate(Connection& connection, int megabytes)
{
    const qint64 rows = qint64(megabytes) * 1000 * 1000 / kRowBytes / kTables;
    for (int t = 1; t <= kTables; ++t) {
        const QString table = sqlName(QStringLiteral("bench_%1").arg(t));
        connection.execute(QStringLiteral("DROP TABLE IF EXISTS ") + table);
        connection.execute(QStringLiteral("CREATE TABLE ") + table
                           + QStringLiteral(" (code_no CHAR(12) NOT NULL, yr SMALLINT NOT NULL, srno INT NOT NULL,"
                                            " name CHAR(100) NOT NULL, city CHAR(60) NOT NULL, amount DECIMAL(14,2) NOT NULL,"
                                            " PRIMARY KEY (code_no, yr, srno), KEY (name), KEY (city))"
                                            " ENGINE=MyISAM ROW_FORMAT=FIXED"));
        connection.execute(QStringLiteral("INSERT INTO ") + table
                           + QStringLiteral(" SELECT CONCAT('C', seq DIV 50), 2000 + seq MOD 9, seq, CONCAT('CLIENT NAME ', seq),"
                                            " CONCAT('CITY ', seq MOD 700), seq * 1.25 FROM seq_1_to_%1")
                                 .arg(rows));
    }
    connection.execute(QStringLiteral("FLUSH TABLES"));
}

// The same statements the job sends, through the mariadb client.
double clientSeconds(const QString& socket, const QString& database, const QStringList& tables)
{
    QString script;
    for (const QString& table : tables)
        script += QStringLiteral("Check Table ") + sqlName(table) + QStringLiteral(" Extended;\n");
    script += QStringLiteral("Flush Tables;\n");
    QProcess client;
    client.setProgram(QStringLiteral("mariadb"));
    client.setArguments({QStringLiteral("--socket=") + socket, QStringLiteral("--user=root"), QStringLiteral("--batch"), database});
    QElapsedTimer clock;
    clock.start();
    client.start();
    client.write(script.toUtf8());
    client.closeWriteChannel();
    if (!client.waitForFinished(-1) || client.exitCode() != 0)
        throw Failure(1, QStringLiteral("bench"), QStringLiteral("mariadb failed: ") + QString::fromLocal8Bit(client.readAllStandardError()));
    const double seconds = clock.elapsed() / 1000.0;
    const QString output = QString::fromUtf8(client.readAllStandardOutput());
    if (output.count(QStringLiteral("\tOK")) != tables.size())
        throw Failure(1, QStringLiteral("bench"), QStringLiteral("the client's check found problems:\n") + output);
    return seconds;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    const int megabytes = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 20;
    const int rounds = argc > 2 ? QString::fromLocal8Bit(argv[2]).toInt() : 3;
    if (megabytes <= 0 || rounds <= 0) {
        out << "usage: bench_check [MEGABYTES] [ROUNDS]" << Qt::endl;
        return 2;
    }

    QTemporaryDir dir;
    ConnectionSettings settings;
    settings.privateServer = false;
    settings.user = QStringLiteral("root");
    settings.database = QStringLiteral("bench_check");
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
        QElapsedTimer clock;
        clock.start();
        generate(connection, megabytes);
        const auto size = connection.query(QStringLiteral("SELECT SUM(data_length + index_length) FROM information_schema.tables"
                                                          " WHERE table_schema = ") + sqlQuote(settings.database));
        out << QStringLiteral("generated %1 tables, %2 MB of data and index files, in %3 s")
                   .arg(kTables)
                   .arg(size.rows.value(0).value(0).toDouble() / 1e6, 0, 'f', 1)
                   .arg(clock.elapsed() / 1000.0, 0, 'f', 1)
                << Qt::endl;

        NullProgress quiet;
        CheckRepairJob job(&connection, quiet);
        ResumeNext guard(QStringLiteral("BENCH"), QStringLiteral("TABLES"));
        const QStringList tables = job.tables(guard);
        // Once each beforehand, so that both find the files in the page cache.
        job.check(tables);
        clientSeconds(settings.socket, settings.database, tables);

        double jobTotal = 0, clientTotal = 0;
        for (int round = 1; round <= rounds; ++round) {
            clock.restart();
            const auto problems = job.check(tables);
            const double jobSeconds = clock.elapsed() / 1000.0;
            if (!problems.isEmpty())
                throw Failure(1, QStringLiteral("bench"), QStringLiteral("the job found problems in ") + problems.first().table);
            const double clientSec = clientSeconds(settings.socket, settings.database, tables);
            jobTotal += jobSeconds;
            clientTotal += clientSec;
            out << QStringLiteral("round %1: job %2 s, mariadb client %3 s").arg(round).arg(jobSeconds, 0, 'f', 3).arg(clientSec, 0, 'f', 3)
                << Qt::endl;
        }
        out << QStringLiteral("check of %1 tables: job %2 s, mariadb client %3 s, ratio %4 (at most 1.10 wanted)")
                   .arg(tables.size())
                   .arg(jobTotal / rounds, 0, 'f', 3)
                   .arg(clientTotal / rounds, 0, 'f', 3)
                   .arg(jobTotal / clientTotal, 0, 'f', 2)
            << Qt::endl;
        connection.execute(QStringLiteral("DROP DATABASE ") + sqlName(settings.database));
    } catch (const std::exception& e) {
        out << "failed: " << e.what() << Qt::endl;
        status = 1;
    }
    if (server)
        server->stop();
    return status;
}
