#include "faults.h"
#include "support/clirunner.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QTemporaryDir>
#include <QtTest>
#include <sys/stat.h>

using namespace corvane;
using namespace corvane::test;

// Settings and imports on a failing machine: a full disk, a file that cannot be read.
class FullDiskTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FullDisk> disk_;

private slots:
    void initTestCase() { disk_ = std::make_unique<FullDisk>(); }
    void cleanupTestCase() { disk_.reset(); }
    void init() { disk_->clear(); }

    void aFullDiskNeverEmptiesASettingsFile_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QStringList>("setting");
        QTest::newRow("Confg.ini") << "Confg.ini" << QStringList{"Paths", "Backup", "/srv/backup"};
        QTest::newRow("ORVCONFIG.INI") << "ORVCONFIG.INI" << QStringList{"MySql", "Server", "db2.example"};
        QTest::newRow("new key in a new section") << "Confg.ini" << QStringList{"Other", "Key", "v"};
    }

    void aFullDiskNeverEmptiesASettingsFile()
    {
        QFETCH(QString, file);
        QFETCH(QStringList, setting);
        // GIVEN a settings file on a full disk (the application and the system folder both there)
        const QString path = disk_->path() + QLatin1Char('/') + file;
        const QByteArray old("[MySql]\nServer=db1.example\nUser=fbt\nPassword=secret\n[Paths]\nBackup=/old\n");
        {
            QFile f(path);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write(old);
        }
        // WHEN a setting is written
        const Run r = cli(QStringList{"--app-path", disk_->path(), "ini", "set"} + setting,
                          {{"CORVANE_SYSTEM_DIR", disk_->path()}}, disk_.get());
        // THEN the command fails naming the file and the reason, and the file is as it was
        QCOMPARE(r.status, 1);
        QVERIFY2(r.err.contains(path), qPrintable(r.err));
        QVERIFY2(r.err.contains(disk_->reason()), qPrintable(r.err));
        // The log is on the same full disk: the message says so instead of pointing at it.
        QVERIFY2(r.err.contains(QStringLiteral("could not be logged")), qPrintable(r.err));
        QCOMPARE(contents(path), old);
        QStringList files = filesIn(disk_->path());
        files.removeAll(QStringLiteral("FBTLogger.log"));
        QCOMPARE(files, QStringList{file});
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
        {
            QFile f(path);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write("[MySql]\nDatabase=fbt\n");
        }
        QVERIFY(::chmod(QFile::encodeName(path).constData(), 0644) == 0);
        const Run r = cli({"ini", "set", "MySql", key, value}, {{"CORVANE_SYSTEM_DIR", system.path()}});
        QCOMPARE(r.status, 0);
        struct stat st{};
        QCOMPARE(::stat(QFile::encodeName(path).constData(), &st), 0);
        QCOMPARE(int(st.st_mode & 0777), mode);
    }

    void anExportOnAFullDiskLeavesTheOldFile()
    {
        // GIVEN a client list exported before, on a disk that is now full
        TestDatabase db(QStringLiteral("fullexport"));
        db->execute(QStringLiteral("INSERT INTO FBT_Info (Code_No, Name) VALUES ('A001', 'ANAND TEXTILE MILLS PVT LTD')"));
        const QString path = disk_->path() + QStringLiteral("/clients.csv");
        const QByteArray old("Code,Name\r\nA000,AN OLDER LIST OF CLIENTS\r\n");
        {
            QFile f(path);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write(old);
        }
        // WHEN it is exported again THEN the command fails naming the file and why, and the old list is whole
        const Run r = cli(databaseArgs(db) + QStringList{"--app-path", db.appPath(), "clients", "--output", path}, {}, disk_.get());
        QCOMPARE(r.status, 1);
        QVERIFY2(r.err.contains(path) && r.err.contains(disk_->reason()), qPrintable(r.err));
        QCOMPARE(contents(path), old);
        QCOMPARE(filesIn(disk_->path()), QStringList{QStringLiteral("clients.csv")});
    }

    void anImportOnAFullDiskIsRefusedAtOnce()
    {
        if (!disk_->isTmpfs())
            QSKIP("needs a full file system: a file-size limit leaves the free space as it is");
        // GIVEN an application folder on a full disk and a list to import
        QTemporaryDir files;
        const QString list = files.filePath(QStringLiteral("branches.csv"));
        {
            QFile f(list);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write("BANK,IFSC,BRANCH\n");
            for (int i = 0; i < 2000; ++i)
                f.write(QStringLiteral("BANK %1,ABCD0%2,BRANCH %1\n").arg(i).arg(i, 6, 10, QLatin1Char('0')).toLatin1());
        }
        // WHEN it is imported THEN the command refuses at once, naming the folder, and starts no server
        const Run r = cli({"--app-path", disk_->path(), "lookup", "import", "banks", list, "--replace"},
                          {{"CORVANE_SYSTEM_DIR", files.path()}}, disk_.get());
        QCOMPARE(r.status, 1);
        QVERIFY2(r.err.contains(QStringLiteral("Not enough free space")) && r.err.contains(disk_->path() + QStringLiteral("/MySQL/data")),
                 qPrintable(r.err));
        QVERIFY(!QFileInfo::exists(disk_->path() + QStringLiteral("/MySQL")));
    }

    void unreadableSettingsAreAnError()
    {
        // GIVEN an ORVCONFIG.INI that cannot be read (a folder in its place: root reads any file)
        QTemporaryDir system;
        QTemporaryDir app;
        const QString path = system.filePath(QStringLiteral("ORVCONFIG.INI"));
        QVERIFY(QDir().mkdir(path));
        // WHEN a command needs the database
        const Run r = cli({"--app-path", app.path(), "sql", "select 1"}, {{"CORVANE_SYSTEM_DIR", system.path()}});
        // THEN it says that the file cannot be read, and no private server was made instead
        QCOMPARE(r.status, 1);
        QVERIFY2(r.err.contains(QStringLiteral("Cannot read ") + path), qPrintable(r.err));
        QVERIFY(!QFileInfo::exists(app.filePath(QStringLiteral("MySQL"))));
    }
};

CORVANE_TEST_CLASS(FullDiskTest)
#include "fulldisktest.moc"
