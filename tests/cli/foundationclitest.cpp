#include "support/clirunner.h"
#include "db/privateserver.h"
#include "db/sqltext.h"
#include "support/files.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>
#include <csignal>
#include <unistd.h>

using namespace corvane;
using namespace corvane::test;

using Run = CliResult;

// The corvane command: usage, db init, sql, the private server, and the commands over the services.
class FoundationCliTest : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> dir_;
    QString appPath() const { return dir_->path() + QStringLiteral("/app"); }
    QString systemPath() const { return dir_->path() + QStringLiteral("/system"); }

    Run corvane(const QStringList& args, QMap<QString, QString> env = {}) const
    {
        env.insert(QStringLiteral("CORVANE_SYSTEM_DIR"), systemPath());
        return test::runCli(QStringList{QStringLiteral("--app-path"), appPath()} + args, env);
    }

    Run corvaneOn(const test::TestDatabase& db, const QStringList& args) const
    {
        return corvane(test::databaseArgs(db) + args);
    }

    QStringList logLines() const
    {
        return QString::fromUtf8(test::readFile(appPath() + QStringLiteral("/FBTLogger.log")))
            .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    QStringList serverArgs(const QString& database) const
    {
        return {QStringLiteral("--socket"), qEnvironmentVariable("CORVANE_TEST_SOCKET"), QStringLiteral("--user"),
                QStringLiteral("root"), QStringLiteral("--database"), database};
    }

private slots:
    void init()
    {
        dir_ = std::make_unique<QTemporaryDir>();
        QDir().mkpath(appPath());
    }

    void commands_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("out");

        QTest::newRow("words") << QStringList{"words", "1234567.5"} << 0
                               << "Twelve Lac Thirty Four Thousand Five Hundred Sixty Seven And Fifty Paisa Only\n";
        QTest::newRow("words, hundred crore") << QStringList{"words", "1000000001"} << 1 << "One Rupee Only\n";
        QTest::newRow("words, not an amount") << QStringList{"words", "12.3.4"} << 2 << "";
        QTest::newRow("words, nothing") << QStringList{"words"} << 2 << "";
        QTest::newRow("date") << QStringList{"date", "15/4/8", "--year", "2009"} << 0 << "15/04/2008\n2008\n";
        QTest::newRow("date, format") << QStringList{"date", "5/1/2008", "--format", "dd-MM-yyyy"} << 0 << "05-01-2008\n\n";
        QTest::newRow("date, none") << QStringList{"date", "31/02/2008", "--year", "2009"} << 1 << "\n2009\n";
        QTest::newRow("pan") << QStringList{"pan", "ABCDE1234F"} << 0 << "valid\n";
        QTest::newRow("pan, small letters") << QStringList{"pan", "abcde1234f"} << 1 << "invalid\n";
        QTest::newRow("unknown action") << QStringList{"ini", "list"} << 2 << "";
        // Usage errors
        QTest::newRow("no command") << QStringList{} << 2 << "";
        QTest::newRow("unknown command") << QStringList{"bogus"} << 2 << "";
        QTest::newRow("unknown option") << QStringList{"--bogus", "sql", "select 1"} << 2 << "";
        QTest::newRow("sql without statement") << QStringList{"sql"} << 2 << "";
        QTest::newRow("server without action") << QStringList{"server"} << 2 << "";
        QTest::newRow("server bad action") << QStringList{"server", "restart"} << 2 << "";
        QTest::newRow("db bad option") << QStringList{"db", "init", "--demos"} << 2 << "";
        QTest::newRow("option without value") << QStringList{"sql", "select 1", "--database"} << 2 << "";
        QTest::newRow("bad port") << QStringList{"--port", "x", "sql", "select 1"} << 2 << "";
        QTest::newRow("words after -- are not options") << QStringList{"server", "--", "--help"} << 2 << "";
    }

    void commands()
    {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, out);
        const Run r = corvane(args);
        QCOMPARE(r.status, status);
        QCOMPARE(r.out, out);
        if (status == 2 || args.value(0) == QLatin1String("date"))
            QCOMPARE(r.err.isEmpty(), status == 0);
    }

    void everyCommandHasHelp_data()
    {
        QTest::addColumn<QString>("command");
        for (const char* c : {"", "server", "db", "sql", "words", "date", "pan", "ini", "states", "client", "screen"})
            QTest::newRow(*c ? c : "corvane") << c;
    }

    void everyCommandHasHelp()
    {
        QFETCH(QString, command);
        QStringList args{QStringLiteral("--help")};
        if (!command.isEmpty())
            args.prepend(command);
        const Run r = corvane(args);
        QCOMPARE(r.status, 0);
        QVERIFY(r.out.startsWith(QStringLiteral("Usage: corvane")));
    }

    void settingsRoundTrip()
    {
        // GIVEN a server setting written in one spelling
        QCOMPARE(corvane({"ini", "set", "MySql", "Server", "db.example"}).status, 0);

        // THEN it is read in any other, from the system folder's file
        QCOMPARE(corvane({"ini", "get", "MYSQL", "server"}).out, QStringLiteral("db.example\n"));
        QCOMPARE(corvane({"ini", "path", "mysql", "Server"}).out, systemPath() + QStringLiteral("/ORVCONFIG.INI\n"));
        QCOMPARE(corvane({"ini", "path", "Settings", "LastClient"}).out, appPath() + QStringLiteral("/Confg.ini\n"));
        QCOMPARE(corvane({"ini", "get", "MySql", "Port", "--default", "3306"}).out, QStringLiteral("3306\n"));

        // a named file is used as named
        const QString own = dir_->path() + QStringLiteral("/own.ini");
        QCOMPARE(corvane({"ini", "set", "A", "k", "v", "--file", own}).status, 0);
        QCOMPARE(corvane({"ini", "get", "a", "K", "--file", own}).out, QStringLiteral("v\n"));

        // a key that cannot be stored is refused before anything is written
        const Run bad = corvane({"ini", "set", "A", "a=b", "v", "--file", own});
        QCOMPARE(bad.status, 2);
        QVERIFY(bad.err.contains(QStringLiteral("key")));
    }

    void states()
    {
        writeFile(appPath() + QStringLiteral("/Data/StateCodes.txt"), "Andhra Pradesh, Assam\r\n\r\n\"Tamil Nadu\"\r\n");
        const Run r = corvane({QStringLiteral("states")});
        QCOMPARE(r.status, 0);
        QCOMPARE(r.out, QStringLiteral("ANDHRA PRADESH\nASSAM\nTAMIL NADU\n"));
    }

    // What each client command changes is the client maintenance's own test and the client code
    // test's; here the hint the command adds.
    void clientRenameInSmallLettersSaysWhy()
    {
        test::TestDatabase db(QStringLiteral("cli_client"));
        db->execute(QStringLiteral("INSERT INTO FBT_Info (Code_No, Name) VALUES ('C001', 'One')"));
        const Run r = corvaneOn(db, {QStringLiteral("client"), QStringLiteral("rename"), QStringLiteral("c001"), QStringLiteral("C009")});
        QCOMPARE(r.status, 0);
        QCOMPARE(r.out, QString());
        QVERIFY(r.err.contains(QStringLiteral("capitals")));
        QCOMPARE(db.count(QStringLiteral("FBT_Info"), QStringLiteral("Code_No='C001'")), 1);
    }

    void clientFailuresGiveStatusOne()
    {
        // GIVEN a database without the bill and receipt tables
        test::TestDatabase db(QStringLiteral("cli_client_bare"), false);
        const Run r = corvaneOn(db, {QStringLiteral("client"), QStringLiteral("delete"), QStringLiteral("C001")});
        QCOMPARE(r.status, 1);
        QCOMPARE(r.out, QString());
        QCOMPARE(logLines().size(), 2);
    }

    void screen_data()
    {
        QTest::addColumn<QByteArray>("config");
        QTest::addColumn<QString>("ratios");
        QTest::newRow("assumed 1024x768") << QByteArray("[ScrReso]\nOpt=1\nX=1024\nY=768\n")
                                          << "vScreenRatX=1.28\nvScreenRatY=1.28\nvScreenRatFS=1.28\n";
        QTest::newRow("no scaling") << QByteArray("[ScrReso]\nOpt=2\n") << "vScreenRatX=1\nvScreenRatY=1\nvScreenRatFS=1\n";
    }

    void screen()
    {
        QFETCH(QByteArray, config);
        QFETCH(QString, ratios);
        writeFile(systemPath() + QStringLiteral("/ORVCONFIG.INI"), config);

        // Without a display and without a chosen platform, the offscreen screen (800 x 800 at 96) is measured.
        const Run r = corvane({QStringLiteral("screen")},
                              {{QStringLiteral("QT_QPA_PLATFORM"), QString()}, {QStringLiteral("DISPLAY"), QString()},
                               {QStringLiteral("WAYLAND_DISPLAY"), QString()}});
        QCOMPARE(r.status, 0);
        QCOMPARE(r.out, QStringLiteral("vDefScreenX=800\nvDefScreenY=800\nvDefScreenFS=96\n") + ratios);
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

    void failuresGiveOneLineAndStatusOne_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("named"); // in the message
        QTest::newRow("failing statement") << serverArgs(QStringLiteral("mysql")) + QStringList{"sql", "select * from nowhere"} << "nowhere";
        QTest::newRow("unreachable server") << QStringList{"--socket", "/nonexistent/x.sock", "sql", "select 1"} << "/nonexistent/x.sock";
        QTest::newRow("unwritable application folder") << QStringList{"--app-path", "/proc/corvane-no-such-place", "server", "start"}
                                                       << "/proc/corvane-no-such-place";
    }

    void failuresGiveOneLineAndStatusOne()
    {
        QFETCH(QStringList, args);
        QFETCH(QString, named);
        const auto r = runCli(args);
        QCOMPARE(r.status, 1);
        QVERIFY(r.out.isEmpty());
        QVERIFY2(r.err.contains(named), qPrintable(r.err));
        QCOMPARE(r.err.trimmed().count(QLatin1Char('\n')), 0);
    }

    void privateServerStartsStopsAndRecovers()
    {
        // An application folder whose path is too long for a socket; odd names are the reliability tests'.
        QTemporaryDir dir;
        const QString app = dir.path() + QStringLiteral("/a-rather-long-folder-name-for-the-application/") + QString(60, QLatin1Char('x'));
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
};

CORVANE_TEST_CLASS(FoundationCliTest)
#include "foundationclitest.moc"
