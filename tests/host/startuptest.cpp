#include "hostfixture.h"
#include "widgets.h"

#include "components/bankinfo/bankinfostore.h"
#include "core/inifile.h"
#include "db/connection.h"
#include "host/assessmentyears.h"
#include "host/connectiondialog.h"
#include "support/testmain.h"

#include <QCheckBox>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QRadioButton>
#include <QScopeGuard>
#include <sys/stat.h>

using namespace corvane;
using namespace corvane::host;
using namespace corvane::test;

namespace {

int fileMode(const QString& path)
{
    struct stat st {};
    if (::stat(QFile::encodeName(path).constData(), &st) != 0)
        return -1;
    return int(st.st_mode & 0777);
}

ConnectionSettings unreachable()
{
    ConnectionSettings s;
    s.privateServer = false;
    s.socket = QStringLiteral("/nonexistent/fbt/mysqld.sock");
    s.user = QStringLiteral("root");
    s.database = QStringLiteral("fbt");
    return s;
}

} // namespace

// What the host does before its window opens, and the connection settings.
class StartupTest : public QObject {
    Q_OBJECT

private slots:
    void firstStartCreatesTablesAndOffersDemo_data()
    {
        QTest::addColumn<bool>("accept");
        QTest::addColumn<int>("clients");
        QTest::addColumn<QString>("code");
        QTest::addColumn<int>("year");
        QTest::newRow("demo loaded") << true << 6 << "A001" << 2008;
        QTest::newRow("demo declined") << false << 0 << "" << 2010;
    }

    void firstStartCreatesTablesAndOffersDemo()
    {
        QFETCH(bool, accept);
        QFETCH(int, clients);
        QFETCH(QString, code);
        QFETCH(int, year);
        // GIVEN a configured database without tables, and the demo lists in the application folder
        HostFixture f(QStringLiteral("st_first"), false);
        const QDir shipped(qEnvironmentVariable("CORVANE_SOURCE_DIR") + "/data/demo");
        QDir().mkpath(f.db.appPath() + "/demo");
        for (const QString& file : shipped.entryList({"*.csv"}, QDir::Files))
            QVERIFY(QFile::copy(shipped.filePath(file), f.db.appPath() + "/demo/" + file));
        f.answers->then(accept ? Prompter::Answer::Yes : Prompter::Answer::No);
        // WHEN the host starts
        QVERIFY(f.session->start());
        // THEN every table exists, the natures are there, and the demo data was offered once
        QStringList tables;
        for (const auto& row : f.db->query("SHOW Tables").rows)
            tables << row.value(0).toString().toLower();
        for (const schema::Table& t : schema::hostTables())
            QVERIFY2(tables.contains(t.name.toLower()), qPrintable(t.name));
        QVERIFY(f.db.count("FBT_Nature") > 0);
        QCOMPARE(f.answers->asked().size(), size_t(1));
        QCOMPARE(f.answers->asked().front().buttons, Prompter::Buttons::YesNo);
        QVERIFY(f.answers->texts().first().contains("demo"));
        QCOMPARE(f.db.count("FBT_Info"), clients);
        bankinfo::BankInfoStore lookups(*f.db);
        QCOMPARE(lookups.count(bankinfo::Kind::Banks) > 0, accept);
        QCOMPARE(lookups.count(bankinfo::Kind::Ao) > 0, accept);
        // AND the component context is filled in: connection, folders, client, year, screen
        QVERIFY(f.cls.CnnObj() && f.cls.CnnObj()->isOpen());
        QCOMPARE(f.cls.CnnObj()->databaseName(), f.db.name());
        QCOMPARE(f.cls.AppPath(), f.db.appPath());
        QCOMPARE(f.cls.Code(), code);
        QCOMPARE(int(f.cls.TYear()), year);
        QVERIFY(f.cls.vTmpPath().endsWith('/'));
        QVERIFY(!f.cls.vTmpPath().endsWith("//"));
        QVERIFY(QFileInfo(f.cls.vTmpPath()).isDir());
        QVERIFY(f.cls.vDefScreenX() > 0);
        QVERIFY(f.cls.vDefScreenY() > 0);
        // WHEN it starts again
        f.answers->clear();
        HostSession again(f.cls, f.db.appPath());
        QVERIFY(again.start());
        // THEN nothing is asked
        QCOMPARE(f.answers->texts(), QStringList());
        QVERIFY(!again.demoOffered());
    }

    void failedConnectionSaysWhyAndLetsTheUserFixIt_data()
    {
        QTest::addColumn<bool>("fixed");
        QTest::newRow("user corrects the settings") << true;
        QTest::newRow("user gives up") << false;
    }

    void failedConnectionSaysWhyAndLetsTheUserFixIt()
    {
        QFETCH(bool, fixed);
        // GIVEN settings that name a server that is not there
        HostFixture f(QStringLiteral("st_fail"));
        connectionconfig::save(unreachable());
        QStringList reasons;
        HostSession::Hooks hooks;
        hooks.editSettings = [&](const QString& reason) {
            reasons << reason;
            if (fixed)
                connectionconfig::save(f.db.settings());
            return fixed;
        };
        HostSession session(f.cls, f.db.appPath(), hooks);
        f.cls.setCnnObj({});
        // WHEN the host starts
        const bool started = session.start();
        // THEN the user is told why, and is offered the settings once
        QCOMPARE(reasons.size(), 1);
        QVERIFY2(reasons.first().contains("mysqld.sock") || reasons.first().contains("connect", Qt::CaseInsensitive),
                 qPrintable(reasons.first()));
        QCOMPARE(f.answers->texts().size(), 1);
        const QString message = f.answers->texts().first();
        QVERIFY(message.startsWith("FBT cannot open its database (database fbt on socket /nonexistent/fbt/mysqld.sock as root)"));
        QVERIFY(message.contains(reasons.first()));
        QCOMPARE(f.answers->asked().front().icon, Prompter::Icon::Critical);
        // AND with the corrected settings it goes on; without them it stops cleanly
        QCOMPARE(started, fixed);
        QCOMPARE(bool(f.cls.CnnObj()), fixed);
    }

    void connectionDialogKeepsOnlyWorkingSettings()
    {
        // GIVEN the connection settings dialog, and a user of the database with a password
        HostFixture f(QStringLiteral("st_dialog"));
        QFile::remove(connectionconfig::file());
        const QString user = f.db.name();
        f.db->execute(QStringLiteral("Create user '%1'@'localhost' identified by 'se cret'").arg(user));
        f.db->execute(QStringLiteral("Grant all on %1.* to '%1'@'localhost'").arg(user));
        const auto dropUser = qScopeGuard([&] { f.db->execute(QStringLiteral("Drop user '%1'@'localhost'").arg(user)); });
        ConnectionDialog dialog(ConnectionSettings::fromConfig(f.db.appPath()),
                                [&](const ConnectionSettings& s) { return f.session->tryConnect(s); }, QString());
        dialog.show();
        child<QRadioButton>(dialog, "optserver")->setChecked(true);
        typeInto(dialog, "txtsocket", "/nonexistent/fbt/mysqld.sock");
        typeInto(dialog, "txtuser", user);
        typeInto(dialog, "txtpassword", "se cret");
        typeInto(dialog, "txtdatabase", f.db.name());
        // WHEN a server that is not there is entered
        click(dialog, "cmdok");
        // THEN the message says why, the dialog stays, and nothing is written
        QCOMPARE(f.answers->texts().size(), 1);
        QVERIFY(f.answers->texts().first().startsWith("Cannot connect to database " + f.db.name() + " on socket /nonexistent/fbt/mysqld.sock as " + user + ":"));
        QVERIFY(f.answers->texts().first().endsWith("Correct the settings and try again."));
        QVERIFY(dialog.isVisible());
        QVERIFY(!QFile::exists(connectionconfig::file()));
        // WHEN the socket is corrected
        typeInto(dialog, "txtsocket", f.db.settings().socket);
        click(dialog, "cmdok");
        // THEN the settings are kept in ORVCONFIG.INI [MySql], readable by their owner only
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        const QString file = connectionconfig::file();
        QCOMPARE(QFileInfo(file).fileName(), QStringLiteral("ORVCONFIG.INI"));
        QCOMPARE(fileMode(file), 0600);
        QCOMPARE(IniFile::read(file, "MySql", "Socket", "?"), f.db.settings().socket);
        QCOMPARE(IniFile::read(file, "MySql", "Password", "?"), QStringLiteral("se cret"));
        QCOMPARE(IniFile::read(file, "MySql", "User", "?"), user);
        const ConnectionSettings read = ConnectionSettings::fromConfig(f.db.appPath());
        QVERIFY(!read.privateServer);
        QCOMPARE(read.database, f.db.name());
    }

    void settingsForEveryUserOfTheMachine_data()
    {
        QTest::addColumn<bool>("machineWritable");
        QTest::addColumn<bool>("ticked");
        QTest::newRow("may write, ticked") << true << true;
        QTest::newRow("may write, not ticked") << true << false;
        QTest::newRow("may not write") << false << true;
    }

    void settingsForEveryUserOfTheMachine()
    {
        // GIVEN the dialog, with a machine folder this user may or may not make
        HostFixture f(QStringLiteral("st_machine"));
        QFETCH(bool, machineWritable);
        QFETCH(bool, ticked);
        QFile::remove(connectionconfig::file());
        QTemporaryDir machine;
        const QString folder = machineWritable ? machine.path() + "/orv-softworks" : "/nonexistent/etc/orv-softworks";
        ConnectionDialog dialog(ConnectionSettings::fromConfig(f.db.appPath()),
                                [&](const ConnectionSettings& s) { return f.session->tryConnect(s); }, QString(), nullptr,
                                folder);
        dialog.show();
        // THEN the choice is offered only to who may write there
        auto* box = child<QCheckBox>(dialog, "chkeveryuser");
        QCOMPARE(box->isVisible(), machineWritable);
        // WHEN the server is entered and kept, the box ticked or not
        box->setChecked(ticked);
        child<QRadioButton>(dialog, "optserver")->setChecked(true);
        typeInto(dialog, "txtsocket", f.db.settings().socket);
        typeInto(dialog, "txtdatabase", f.db.name());
        click(dialog, "cmdok");
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        // THEN a ticked box writes the machine's file, readable by every user, and not the user's own
        const QString machineFile = folder + "/ORVCONFIG.INI";
        const bool everyUser = machineWritable && ticked;
        QCOMPARE(QFile::exists(machineFile), everyUser);
        QCOMPARE(QFile::exists(connectionconfig::file()), !everyUser);
        const QString written = everyUser ? machineFile : connectionconfig::file();
        QCOMPARE(fileMode(written), everyUser ? 0644 : 0600);
        QCOMPARE(IniFile::read(written, "MySql", "Socket", "?"), f.db.settings().socket);
    }

    void privateServerChoiceForgetsTheServer()
    {
        // GIVEN a file that names a server, readable by everybody
        HostFixture f(QStringLiteral("st_private"));
        QFile(connectionconfig::file()).setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther);
        ConnectionSettings s;
        s.privateServer = true;
        s.database = QStringLiteral("practice");
        // WHEN the private server is chosen
        connectionconfig::save(s);
        // THEN the file names no server, keeps the database, and is the owner's only
        const ConnectionSettings read = ConnectionSettings::fromConfig(f.db.appPath());
        QVERIFY(read.privateServer);
        QCOMPARE(read.database, QStringLiteral("practice"));
        QCOMPARE(IniFile::read(connectionconfig::file(), "MySql", "Password", "?"), QString());
        QCOMPARE(fileMode(connectionconfig::file()), 0600);
    }

    void yearsAndTheirLabels_data()
    {
        QTest::addColumn<QDate>("today");
        QTest::addColumn<int>("year");
        QTest::addColumn<QString>("label");
        QTest::newRow("last day of March") << QDate(2009, 3, 31) << 2009 << "2009-10";
        QTest::newRow("first day of April") << QDate(2009, 4, 1) << 2010 << "2010-11";
        QTest::newRow("turn of the century") << QDate(2099, 6, 1) << 2100 << "2100-01";
    }

    void yearsAndTheirLabels()
    {
        QFETCH(QDate, today);
        QFETCH(int, year);
        QFETCH(QString, label);
        QCOMPARE(currentAssessmentYear(today), year);
        QCOMPARE(assessmentYearLabel(year), label);
        QCOMPARE(assessmentYears(year).first(), 2006);
        QCOMPARE(assessmentYears(year).last(), year);
    }
};

CORVANE_TEST_CLASS(StartupTest)
#include "startuptest.moc"
