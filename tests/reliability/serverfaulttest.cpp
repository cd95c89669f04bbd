#include "db/connection.h"
#include "db/privateserver.h"
#include "db/sqltext.h"
#include "faults.h"
#include "support/files.h"
#include "support/testmain.h"

#include <QTemporaryDir>
#include <QtTest>
#include <csignal>
#include <sys/wait.h>

using namespace corvane;
using namespace corvane::test;

namespace {

struct StopAtEnd {
    QString app;
    ~StopAtEnd() { PrivateServer(app).stop(); }
};

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

// The private server on a failing machine: killed, in an odd or read-only folder.
class ServerFaultTest : public QObject {
    Q_OBJECT

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
        const QByteArray log = contents(app.filePath(QStringLiteral("FBTLogger.log")));
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
    }

    void anyFolderNameWorks()
    {
        QFETCH(QString, name);
        QTemporaryDir base;
        const QString app = base.filePath(name);
        QVERIFY(QDir().mkpath(app));
        const StopAtEnd stopAtEnd{app};
        const CliResult start = cli({"--app-path", app, "server", "start"});
        QVERIFY2(start.status == 0, qPrintable(start.err));
        const CliResult r = cli({"--app-path", app, "--database", "mysql", "sql", "select 41+1 as n"});
        QVERIFY2(r.status == 0, qPrintable(r.err));
        QCOMPARE(r.out, QStringLiteral("n\n42\n"));
        QCOMPARE(cli({"--app-path", app, "server", "stop"}).status, 0);
        QVERIFY(PrivateServer(app).serverPids().isEmpty());
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
};

CORVANE_TEST_CLASS(ServerFaultTest)
#include "serverfaulttest.moc"
