#include "db/connection.h"
#include "db/privateserver.h"
#include "faults.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QTemporaryDir>
#include <QtTest>
#include <array>

using namespace corvane;
using namespace corvane::test;

namespace {

// Stops the server of a test folder however the test ends, before the folder goes.
struct StopAtEnd {
    QString app;
    ~StopAtEnd() { PrivateServer(app).stop(); }
};

} // namespace

// Several commands that start the private server of one folder at once.
class ServerConcurrencyTest : public QObject {
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

    void stopEndsAServerThatLostItsPidFile()
    {
        // GIVEN a running server whose pid file is gone
        QTemporaryDir app;
        const StopAtEnd stopAtEnd{app.path()};
        PrivateServer server(app.path());
        QCOMPARE(cli({"--app-path", app.path(), "server", "start"}).status, 0);
        QVERIFY(QFile::remove(server.pidFile()));
        QCOMPARE(server.serverPids().size(), 1);
        // WHEN it is stopped THEN none runs
        QCOMPARE(cli({"--app-path", app.path(), "server", "stop"}).status, 0);
        QCOMPARE(server.serverPids().size(), 0);
    }
};

CORVANE_TEST_CLASS(ServerConcurrencyTest)
#include "serverconcurrencytest.moc"
