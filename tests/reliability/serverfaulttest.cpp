#include "db/connection.h"
#include "db/privateserver.h"
#include "db/sqltext.h"
#include "faults.h"
#include "support/files.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QTemporaryDir>
#include <QtTest>
#include <array>
#include <csignal>
#include <sys/wait.h>

using namespace corvane;
using namespace corvane::test;

namespace {

// Ends every server of the folder as a crash would, and waits until they are gone.
void killServer(const PrivateServer& server)
{
    const QList<qint64> pids = server.serverPids();
    for (const qint64 pid : pids)
        ::kill(pid_t(pid), SIGKILL);
    // Not our children: wait on the condition that none is left.
    QTRY_VERIFY_WITH_TIMEOUT(server.serverPids().isEmpty(), 60000);
}

ConnectionSettings privateSettings(const PrivateServer& server)
{
    ConnectionSettings s;
    s.privateServer = false;
    s.socket = server.socketPath();
    s.user = QStringLiteral("root");
    s.database = QStringLiteral("fbt");
    return s;
}

} // namespace

// The private server on a failing machine: killed, in an odd or read-only folder, started by several commands at once.
class ServerFaultTest : public QObject {
    Q_OBJECT

    // Tables of the mysql schema of a server that was initialised alone.
    int referenceSystemTables() const
    {
        Connection c;
        c.open(serverSettings());
        const auto result = c.query(QStringLiteral("select count(*) from information_schema.tables where table_schema='mysql'"));
        return result.rows.first().first().toInt();
    }

private slots:
    void aTableRepairedAfterACrashIsReported()
    {
        // GIVEN a database whose bill table was being changed when the server was killed
        QTemporaryDir app;
        const StopAtEnd stopAtEnd{app.path()};
        PrivateServer server(app.path());
        QCOMPARE(cli({"--app-path", app.path(), "db", "init"}).status, 0);
        {
            Connection c;
            c.open(privateSettings(server));
            c.execute(QStringLiteral("INSERT INTO bill_main (billid, code_no, amount) VALUES (1, 'C001', 100), (2, 'C001', 50)"));
            c.execute(QStringLiteral("UPDATE bill_main SET code_no='C002' WHERE billid=1"));
            killServer(server);
        }

        // WHEN the next command uses that table
        const CliResult r = cli({"--app-path", app.path(), "client", "rename", "C002", "C003"});

        // THEN it says what the server repaired, logs it, and the rows are there
        QCOMPARE(r.status, 0);
        QVERIFY2(r.err.contains(QStringLiteral("database server reports: Table './fbt/bill_main' is marked as crashed")), qPrintable(r.err));
        const QByteArray log = readFile(app.filePath(QStringLiteral("FBTLogger.log")));
        QVERIFY2(log.contains("bill_main") && log.contains("STARTSERVER"), log.constData());
        const CliResult rows = cli({"--app-path", app.path(), "sql", "select code_no from bill_main order by billid"});
        QCOMPARE(rows.out, QStringLiteral("code_no\nC003\nC001\n"));
    }

    void anyFolderNameWorks_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("semicolon") << "a;b";
        QTest::newRow("tab") << "a\tb";
        QTest::newRow("line break") << "a\nb";
        QTest::newRow("shell characters") << "$(x) 'q' \"d\" `b` *";
        QTest::newRow("blanks") << "ORV Softworks/FBT";
    }

    void anyFolderNameWorks()
    {
        QFETCH(QString, name);
        QTemporaryDir base;
        const QString app = base.filePath(name);
        QVERIFY(QDir().mkpath(app));
        const StopAtEnd stopAtEnd{app};
        PrivateServer server(app);
        const CliResult start = cli({"--app-path", app, "server", "start"});
        QVERIFY2(start.status == 0, qPrintable(start.err));
        const CliResult r = cli({"--app-path", app, "--database", "mysql", "sql", "select 41+1 as n"});
        QVERIFY2(r.status == 0, qPrintable(r.err));
        QCOMPARE(r.out, QStringLiteral("n\n42\n"));
        // A server whose pid file is gone is still found, and stopped.
        QVERIFY(QFile::remove(server.pidFile()));
        QCOMPARE(server.serverPids().size(), 1);
        QCOMPARE(cli({"--app-path", app, "server", "stop"}).status, 0);
        QVERIFY(server.serverPids().isEmpty());
    }

    void aReadOnlyFolderIsNamed()
    {
        // GIVEN an application folder on a read-only file system, with the log of an old server in it
        QTemporaryDir base;
        const QString app = base.filePath(QStringLiteral("ro"));
        QVERIFY(QDir().mkpath(app));
        if (!mountTmpfs(app, QStringLiteral("size=1m")))
            QSKIP("this machine does not allow mounting: no read-only folder to try (root writes anywhere)");
        QVERIFY(QDir().mkpath(app + QStringLiteral("/MySQL/data/mysql")));
        writeFile(app + QStringLiteral("/MySQL/mysqld.err"), "2020-01-01  0 [Note] mariadbd: Shutdown complete\n");
        const bool readOnly = remountReadOnly(app);
        if (!readOnly)
            unmount(app);
        QVERIFY(readOnly);
        // WHEN its server is started THEN the message names the folder and why, not the old log
        const CliResult r = cli({"--app-path", app, "server", "start"});
        unmount(app);
        QCOMPARE(r.status, 1);
        QVERIFY2(r.err.contains(app + QStringLiteral("/MySQL")) && r.err.contains(QStringLiteral("Read-only file system")),
                 qPrintable(r.err));
        QVERIFY2(!r.err.contains(QStringLiteral("Shutdown complete")), qPrintable(r.err));
    }

    void fourStartsMakeOneServer_data()
    {
        QTest::addColumn<QStringList>("commands");
        QTest::newRow("four server starts") << QStringList{"server|start", "server|start", "server|start", "server|start"};
        QTest::newRow("starts and statements") << QStringList{"--database|mysql|sql|select 1", "server|start", "--database|mysql|sql|select 2", "db|init"};
    }

    void fourStartsMakeOneServer()
    {
        QFETCH(QStringList, commands);
        // GIVEN a fresh application folder
        QTemporaryDir app;
        const StopAtEnd stopAtEnd{app.path()};
        PrivateServer server(app.path());

        // WHEN four commands that need its server start together
        std::array<QProcess, 4> processes;
        for (int i = 0; i < 4; ++i)
            startCli(processes[size_t(i)], QStringList{"--app-path", app.path()} + commands.at(i).split(QLatin1Char('|')));
        for (int i = 0; i < 4; ++i) {
            const CliResult r = finishCli(processes[size_t(i)]);
            QVERIFY2(r.status == 0, qPrintable(commands.at(i) + QStringLiteral(": ") + r.err));
        }

        // THEN one server runs on the folder, with a complete system schema
        QCOMPARE(server.serverPids().size(), 1);
        const CliResult tables = cli({"--app-path", app.path(), "--database", "mysql", "sql",
                                "select count(*) as n from information_schema.tables where table_schema='mysql'"});
        QCOMPARE(tables.status, 0);
        QCOMPARE(tables.out, QStringLiteral("n\n%1\n").arg(referenceSystemTables()));
        QVERIFY(QDir(app.filePath(QStringLiteral("MySQL"))).entryList({QStringLiteral("data.new-*")}, QDir::Dirs).isEmpty());

        // AND server stop leaves none
        const CliResult stop = cli({"--app-path", app.path(), "server", "stop"});
        QCOMPARE(stop.status, 0);
        QCOMPARE(server.serverPids().size(), 0);
        QVERIFY(!server.answers());
    }
};

CORVANE_TEST_CLASS(ServerFaultTest)
#include "serverfaulttest.moc"
