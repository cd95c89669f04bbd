#include "faults.h"
#include "core/errorlog.h"
#include "core/failure.h"
#include "core/modbase.h"
#include "core/progress.h"
#include "core/prompter.h"
#include "core/resumenext.h"
#include "screens/backup/restorejob.h"
#include "db/sqltext.h"
#include "support/clirunner.h"
#include "support/files.h"
#include "support/prompts.h"
#include "support/testlog.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QTemporaryDir>
#include <QtTest>
#include <cerrno>
#include <chrono>
#include <sys/stat.h>

using namespace corvane;
using namespace corvane::test;
using namespace corvane::backup;

// Settings, imports and the error log on a failing machine: a full disk, a file that cannot be read, hostile texts.
class FullDiskTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FullDisk> disk_;
    QTemporaryDir app_;

private slots:
    void initTestCase() { disk_ = std::make_unique<FullDisk>(); }
    void cleanupTestCase() { disk_.reset(); }
    void init()
    {
        disk_->clear();
        resetModbase();
        modbase().AppPath = app_.path();
        QFile::remove(logFilePath());
    }

    void aFullDiskNeverEmptiesASettingsFile()
    {
        // GIVEN a settings file on a full disk (the application and the system folder both there)
        const QString path = disk_->path() + QStringLiteral("/ORVCONFIG.INI");
        const QByteArray old("[MySql]\nServer=db1.example\nUser=fbt\nPassword=secret\n[Paths]\nBackup=/old\n");
        writeFile(path, old);
        // WHEN a setting is written
        const CliResult r = cli({"--app-path", disk_->path(), "ini", "set", "MySql", "Server", "db2.example"},
                          {{"CORVANE_SYSTEM_DIR", disk_->path()}}, disk_.get());
        // THEN the command fails naming the file and the reason, and the file is as it was
        QCOMPARE(r.status, 1);
        QVERIFY2(r.err.contains(path), qPrintable(r.err));
        QVERIFY2(r.err.contains(disk_->reason()), qPrintable(r.err));
        // The log is on the same full disk: the message says so instead of pointing at it.
        QVERIFY2(r.err.contains(QStringLiteral("could not be logged")), qPrintable(r.err));
        QCOMPARE(readFile(path), old);
        QStringList files = filesIn(disk_->path());
        files.removeAll(QStringLiteral("FBTLogger.log"));
        QCOMPARE(files, QStringList{QStringLiteral("ORVCONFIG.INI")});
    }

    void aPasswordIsKeptFromOtherUsers_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::addColumn<int>("mode");
        QTest::newRow("password") << "Password" << "s3cret" << 0600;
        QTest::newRow("password in other case") << "PASSWORD" << "x" << 0600;
        QTest::newRow("empty password") << "Password" << "" << 0644;
        QTest::newRow("server only") << "Server" << "db.example" << 0644;
    }

    void aPasswordIsKeptFromOtherUsers()
    {
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(int, mode);
        QTemporaryDir system;
        const QString path = system.filePath(QStringLiteral("ORVCONFIG.INI"));
        writeFile(path, "[MySql]\nDatabase=fbt\n");
        QVERIFY(::chmod(QFile::encodeName(path).constData(), 0644) == 0);
        const CliResult r = cli({"ini", "set", "MySql", key, value}, {{"CORVANE_SYSTEM_DIR", system.path()}});
        QCOMPARE(r.status, 0);
        QCOMPARE(modeOf(path), mode);
    }

    void anExportOnAFullDiskLeavesTheOldFile()
    {
        // GIVEN a client list exported before, on a disk that is now full
        TestDatabase db(QStringLiteral("fullexport"));
        db->execute(QStringLiteral("INSERT INTO FBT_Info (Code_No, Name) VALUES ('A001', 'ANAND TEXTILE MILLS PVT LTD')"));
        const QString path = disk_->path() + QStringLiteral("/clients.csv");
        const QByteArray old("Code,Name\r\nA000,AN OLDER LIST OF CLIENTS\r\n");
        writeFile(path, old);
        // WHEN it is exported again THEN the command fails naming the file and why, and the old list is whole
        const CliResult r = cli(databaseArgs(db) + QStringList{"--app-path", db.appPath(), "clients", "--output", path}, {}, disk_.get());
        QCOMPARE(r.status, 1);
        QVERIFY2(r.err.contains(path) && r.err.contains(disk_->reason()), qPrintable(r.err));
        QCOMPARE(readFile(path), old);
        QCOMPARE(filesIn(disk_->path()), QStringList{QStringLiteral("clients.csv")});
    }

    void anImportOnAFullDiskIsRefusedAtOnce()
    {
        if (!disk_->isTmpfs())
            QSKIP("needs a full file system: a file-size limit leaves the free space as it is");
        // GIVEN an application folder on a full disk and a list to import
        QTemporaryDir files;
        const QString list = files.filePath(QStringLiteral("branches.csv"));
        QByteArray csv("BANK,IFSC,BRANCH\n");
        for (int i = 0; i < 2000; ++i)
            csv += QStringLiteral("BANK %1,ABCD0%2,BRANCH %1\n").arg(i).arg(i, 6, 10, QLatin1Char('0')).toLatin1();
        writeFile(list, csv);
        // WHEN it is imported THEN the command refuses at once, naming the folder, and starts no server
        const CliResult r = cli({"--app-path", disk_->path(), "lookup", "import", "banks", list, "--replace"},
                          {{"CORVANE_SYSTEM_DIR", files.path()}}, disk_.get());
        QCOMPARE(r.status, 1);
        QVERIFY2(r.err.contains(QStringLiteral("Not enough free space")) && r.err.contains(disk_->path() + QStringLiteral("/MySQL/data")),
                 qPrintable(r.err));
        QVERIFY(!QFileInfo::exists(disk_->path() + QStringLiteral("/MySQL")));
    }

    void aStatementStuckOnAFullDiskGivesUp_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::addColumn<bool>("stuck");
        QTest::newRow("an insert waiting for space") << "INSERT INTO stuck SELECT REPEAT('x', 100) FROM seq_1_to_100000" << true;
        QTest::newRow("a long statement that works") << "DO SLEEP(0.3)" << false;
    }

    void aStatementStuckOnAFullDiskGivesUp()
    {
        QFETCH(QString, statement);
        QFETCH(bool, stuck);
        if (!disk_->isTmpfs())
            QSKIP("needs a full file system the server writes to");
        // GIVEN a table whose files lie on a disk that is now full, and a watch that looks at once
        TestDatabase db(QStringLiteral("stall"));
        db->execute(QStringLiteral("CREATE TABLE stuck (x VARCHAR(100)) ENGINE=MyISAM DATA DIRECTORY=%1 INDEX DIRECTORY=%1")
                        .arg(sqlQuote(disk_->path())));
        db->execute(QStringLiteral("INSERT INTO stuck VALUES ('old')"));
        db->execute(QStringLiteral("FLUSH TABLES"));
        disk_->fill();
        Connection c;
        c.setStallTiming({std::chrono::milliseconds(0), std::chrono::milliseconds(10)});
        c.open(db.settings());
        // WHEN the statement runs
        QString message;
        try {
            c.execute(statement);
        } catch (const Failure& failure) {
            QCOMPARE(failure.number(), long(ENOSPC));
            message = failure.description();
        }
        // THEN only a statement the server holds waiting for space is stopped, with a message
        // that names the disk; the connection goes on and the old row is still there
        QCOMPARE(message.contains(QStringLiteral("The disk holding the database is full")), stuck);
        QCOMPARE(c.query(QStringLiteral("SELECT 1")).rows.size(), 1);
        QVERIFY(QFile::remove(disk_->path() + QStringLiteral("/.filler")));
        c.execute(QStringLiteral("REPAIR TABLE stuck"));
        QCOMPARE(c.query(QStringLiteral("SELECT x FROM stuck WHERE x='old'")).rows.size(), 1);
    }

    void aRestorationOntoAFullDiskIsRefusedAtOnce()
    {
        if (!disk_->isTmpfs())
            QSKIP("needs a full file system: a file-size limit leaves the free space as it is");
        // GIVEN a MySQL directory and an application folder on a full disk, and backed-up folders elsewhere
        const QString mysql = disk_->path() + QStringLiteral("/mysql-data");
        const QString app = disk_->path() + QStringLiteral("/app");
        QVERIFY(QDir().mkpath(mysql + QStringLiteral("/mysql")));
        const QByteArray old("old table");
        writeFile(mysql + QStringLiteral("/fbt/a.MYD"), old);
        writeFile(app + QStringLiteral("/FBT"), old);
        QTemporaryDir backup;
        QVERIFY(QDir().mkpath(backup.filePath(QStringLiteral("data/Data"))));
        writeFile(backup.filePath(QStringLiteral("FBT/a.MYD")), QByteArray(512 * 1024, 'n'));
        disk_->fill();
        resetModbase();
        modbase().AppPath = app;
        modbase().vTmpPath = backup.path() + QLatin1Char('/');
        auto answers = installPrompter();
        NullProgress progress;
        // WHEN they are restored
        RestoreJob job(nullptr, *answers, progress);
        RestoreJob::Choice choice;
        choice.mode = RestoreJob::Mode::Manual;
        choice.databasesFolder = backup.filePath(QStringLiteral("FBT"));
        choice.dataFolder = backup.filePath(QStringLiteral("data"));
        choice.mysqlDirectory = mysql + QLatin1Char('/');
        choice.dataDirectory = app + QLatin1Char('/');
        QVERIFY(job.proceed(choice));
        // THEN the restoration is refused before it touches anything, saying why
        QCOMPARE(job.restore(), RestoreJob::Outcome::Refused);
        QCOMPARE(answers->texts().size(), 1);
        QVERIFY2(answers->texts().first().startsWith(QStringLiteral("Not enough free space for the restoration")),
                 qPrintable(answers->texts().first()));
        QCOMPARE(readFile(mysql + QStringLiteral("/fbt/a.MYD")), old);
        QCOMPARE(QDir(app).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{QStringLiteral("FBT")});
    }

    void unreadableSettingsAreAnError()
    {
        // GIVEN an ORVCONFIG.INI that cannot be read (a folder in its place: root reads any file)
        QTemporaryDir system;
        QTemporaryDir app;
        const QString path = system.filePath(QStringLiteral("ORVCONFIG.INI"));
        QVERIFY(QDir().mkdir(path));
        // WHEN a command needs the database
        const CliResult r = cli({"--app-path", app.path(), "sql", "select 1"}, {{"CORVANE_SYSTEM_DIR", system.path()}});
        // THEN it says that the file cannot be read, and no private server was made instead
        QCOMPARE(r.status, 1);
        QVERIFY2(r.err.contains(QStringLiteral("Cannot read ") + path), qPrintable(r.err));
        QVERIFY(!QFileInfo::exists(app.filePath(QStringLiteral("MySQL"))));
    }

    void aLogThatCannotBeWrittenIsSaidSo()
    {
        // GIVEN an application folder on a full disk
        modbase().AppPath = disk_->path();
        // WHEN a failure is logged
        disk_->run([] {
            ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("SAVESETTININI"));
            guard([] { throw Failure(28, QStringLiteral("Corvane"), QStringLiteral("Cannot write Confg.ini")); });
        });
        // THEN the note for the user says that it could not be logged, and why
        QCOMPARE(lastLoggedDescription(), QStringLiteral("Cannot write Confg.ini"));
        QVERIFY2(logNote().startsWith(QStringLiteral("it could not be logged: cannot write ") + disk_->path()), qPrintable(logNote()));
        QVERIFY2(logNote().endsWith(disk_->reason()), qPrintable(logNote()));
        QCOMPARE(readFile(logFilePath()), QByteArray());
    }
};

CORVANE_TEST_CLASS(FullDiskTest)
#include "fulldisktest.moc"
