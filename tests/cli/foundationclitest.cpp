#include "support/clirunner.h"
#include "db/privateserver.h"
#include "db/sqltext.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QTemporaryDir>
#include <QtTest>
#include <csignal>
#include <unistd.h>

using namespace corvane;
using test::runCli;

// The corvane command's skeleton: usage, db init, sql, and the private server.
class FoundationCliTest : public QObject {
    Q_OBJECT

    QStringList serverArgs(const QString& database) const
    {
        return {QStringLiteral("--socket"), qEnvironmentVariable("CORVANE_TEST_SOCKET"), QStringLiteral("--user"),
                QStringLiteral("root"), QStringLiteral("--database"), database};
    }

private slots:
    void usageAndExitStatus_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("status");
        QTest::newRow("help") << QStringList{"--help"} << 0;
        QTest::newRow("no command") << QStringList{} << 2;
        QTest::newRow("unknown command") << QStringList{"bogus"} << 2;
        QTest::newRow("unknown option") << QStringList{"--bogus", "sql", "select 1"} << 2;
        QTest::newRow("server help") << QStringList{"server", "--help"} << 0;
        QTest::newRow("db help") << QStringList{"db", "--help"} << 0;
        QTest::newRow("sql help") << QStringList{"sql", "--help"} << 0;
        QTest::newRow("sql without statement") << QStringList{"sql"} << 2;
        QTest::newRow("server without action") << QStringList{"server"} << 2;
        QTest::newRow("server bad action") << QStringList{"server", "restart"} << 2;
        QTest::newRow("db bad option") << QStringList{"db", "init", "--demos"} << 2;
        QTest::newRow("option without value") << QStringList{"sql", "select 1", "--database"} << 2;
        QTest::newRow("bad port") << QStringList{"--port", "x", "sql", "select 1"} << 2;
        QTest::newRow("words after -- are not options") << QStringList{"server", "--", "--help"} << 2;
    }

    void usageAndExitStatus()
    {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        const auto r = runCli(args);
        QCOMPARE(r.status, status);
        if (status == 2)
            QVERIFY(!r.err.isEmpty());
        if (status == 0)
            QVERIFY(r.out.startsWith(QStringLiteral("Usage: corvane")));
    }

    void dbInitIsIdempotentAndLoadsDemoOnce()
    {
        const QString database = QStringLiteral("t_cli_init_%1").arg(::getpid());
        auto first = runCli(serverArgs(database) + QStringList{"db", "init", "--demo"});
        QCOMPARE(first.status, 0);
        QVERIFY(first.out.contains(QStringLiteral("created Bank_Master")));
        QVERIFY(first.out.contains(QStringLiteral("demo rows added")));
        auto second = runCli(serverArgs(database) + QStringList{"db", "init", "--demo"});
        QCOMPARE(second.status, 0);
        QVERIFY(second.out.contains(QStringLiteral("all tables present")));
        QVERIFY(second.out.contains(QStringLiteral("no demo rows added")));

        auto rows = runCli(serverArgs(database) + QStringList{"sql", "select Code_No, Name, EMail from FBT_Info where Code_No in ('A001','B002') order by Code_No"});
        QCOMPARE(rows.status, 0);
        const QStringList lines = rows.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines.at(0), QStringLiteral("Code_No\tName\tEMail"));
        QVERIFY(lines.at(1).startsWith(QStringLiteral("A001\tANAND TEXTILE MILLS PVT LTD\t")));
        QCOMPARE(lines.at(2), QStringLiteral("B002\tBHARAT LOGISTICS\t"));
        QCOMPARE(runCli(serverArgs(database) + QStringList{"sql", "select NULL as x, '' as y"}).out, QStringLiteral("x\ty\nNULL\t\n"));
        // A result larger than any buffer comes whole and in order, a tab or line break inside a value as a blank.
        const auto large = runCli(serverArgs(database) + QStringList{"sql", "select seq as n, concat('a\\tb\\nc', seq) as t,"
                                                                            " if(seq mod 2, null, seq / 4) as q from seq_1_to_30000"});
        QString expected = QStringLiteral("n\tt\tq\n");
        for (int i = 1; i <= 30000; ++i)
            expected += QStringLiteral("%1\ta b c%1\t%2\n").arg(i).arg(i % 2 ? QStringLiteral("NULL") : QString::number(i / 4.0, 'g', QLocale::FloatingPointShortest));
        QCOMPARE(large.status, 0);
        QCOMPARE(large.out, expected);

        QCOMPARE(runCli(serverArgs(database) + QStringList{"sql", "DROP DATABASE " + sqlName(database)}).status, 0);
    }

    void failingStatementGivesOneLineAndStatusOne()
    {
        test::TestDatabase db(QStringLiteral("clisql"));
        const auto r = runCli(serverArgs(db.name()) + QStringList{"sql", "select * from nowhere"});
        QCOMPARE(r.status, 1);
        QVERIFY(r.out.isEmpty());
        QVERIFY(r.err.contains(QStringLiteral("nowhere")));
        QCOMPARE(r.err.trimmed().count(QLatin1Char('\n')), 0);
    }

    void unreachableServerFailsClearly()
    {
        const auto r = runCli({"--socket", "/nonexistent/x.sock", "sql", "select 1"});
        QCOMPARE(r.status, 1);
        QVERIFY(r.err.contains(QStringLiteral("/nonexistent/x.sock")));
    }

    void privateServerStartsStopsAndRecovers_data()
    {
        QTest::addColumn<QString>("subfolder");
        QTest::newRow("blank in path") << QStringLiteral("ORV Softworks/FBT");
        QTest::newRow("path too long for a socket") << QStringLiteral("a-rather-long-folder-name-for-the-application/") + QString(60, QLatin1Char('x'));
    }

    void privateServerStartsStopsAndRecovers()
    {
        QFETCH(QString, subfolder);
        QTemporaryDir dir;
        const QString app = dir.path() + QLatin1Char('/') + subfolder;
        QVERIFY(QDir().mkpath(app));
        PrivateServer server(app);
        QVERIFY(QFile::encodeName(server.socketPath()).size() <= 107);

        // GIVEN a started server with the schema
        auto start = runCli({"--app-path", app, "db", "init"});
        QVERIFY2(start.status == 0, qPrintable(start.err));
        QVERIFY(runCli({"--app-path", app, "server", "status"}).out.startsWith(QStringLiteral("running")));

        // WHEN it dies without cleaning up
        const qint64 pid = server.runningPid();
        QVERIFY(pid > 0);
        ::kill(pid_t(pid), SIGKILL);
        QTRY_VERIFY(server.runningPid() == 0);
        QVERIFY(runCli({"--app-path", app, "server", "status"}).out.startsWith(QStringLiteral("stopped")));

        // THEN the next use recovers from the stale pid file and socket and finds the data
        auto query = runCli({"--app-path", app, "sql", "select count(*) as n from FBT_Nature"});
        QVERIFY2(query.status == 0, qPrintable(query.err));
        QVERIFY(query.out.startsWith(QStringLiteral("n\n")));

        QCOMPARE(runCli({"--app-path", app, "server", "stop"}).status, 0);
        QCOMPARE(server.runningPid(), 0);
        QVERIFY(!QFile::exists(server.socketPath()));
        QCOMPARE(runCli({"--app-path", app, "server", "stop"}).status, 0);
    }

    void unwritableAppPathFailsClearly()
    {
        const auto r = runCli({"--app-path", "/proc/corvane-no-such-place", "server", "start"});
        QCOMPARE(r.status, 1);
        QVERIFY(r.err.contains(QStringLiteral("/proc/corvane-no-such-place")));
    }
};

CORVANE_TEST_CLASS(FoundationCliTest)
#include "foundationclitest.moc"
