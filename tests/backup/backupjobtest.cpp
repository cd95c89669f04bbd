#include "components/zip/ziplib.h"
#include "component/components.h"
#include "core/modbase.h"
#include "core/progress.h"
#include "core/prompter.h"
#include "core/settings.h"
#include "db/sqltext.h"
#include "screens/backup/archivelayout.h"
#include "screens/backup/backupjob.h"
#include "screens/backup/destination.h"
#include "support/prompts.h"
#include "support/statementrecorder.h"
#include "support/testdatabase.h"
#include "support/testlog.h"
#include "support/testmain.h"
#include "restoretestsupport.h"

#include <QProcess>
#include <QSemaphore>
#include <QStandardPaths>
#include <QThread>
#include <QtTest>
#include <atomic>
#include <unistd.h>

using namespace corvane;
using namespace corvane::backup;
using namespace corvane::test;

namespace {

const QDate kToday(2026, 3, 5);

// The export of a table.
QString exportOf(const QString& root, const QString& table)
{
    return test::fileNamedAnyCase(root + "/Tables", table);
}

QStringList filesOf(const QString& folder)
{
    QStringList out = QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System);
    out.sort();
    return out;
}

// Inserts rows on a connection of its own until told to stop.
class Writer : public QThread {
public:
    Writer(ConnectionSettings settings, QString table) : settings_(std::move(settings)), table_(std::move(table)) {}
    std::atomic_bool stop{false};
    std::atomic_int inserted{0};
    QSemaphore firstRow;
    QString failure;

protected:
    void run() override
    {
        try {
            Connection c;
            c.open(settings_);
            while (!stop) {
                c.execute(QStringLiteral("INSERT INTO %1 (note) VALUES ('row %2')").arg(sqlName(table_)).arg(inserted + 1));
                if (++inserted == 1)
                    firstRow.release();
            }
        } catch (const Failure& f) {
            failure = f.description();
            firstRow.release();
        }
    }

private:
    ConnectionSettings settings_;
    QString table_;
};

} // namespace

// The backup job against the run's server and real files.
class BackupJobTest : public QObject {
    Q_OBJECT

    std::unique_ptr<test::TestDatabase> db_;
    QTemporaryDir dest_;
    QTemporaryDir temp_;
    QString dataDir_;
    QString fbtDb_;   // a second database picked by its name
    QString otherDb_; // one that is left out
    std::shared_ptr<ScriptedPrompter> prompter_;
    NullProgress progress_;

    QString archive() const { return archiveFilePath(dest_.path(), archiveBaseName(kToday)); }
    QString dbFolder(const QString& db) const { return dataDir_ + QLatin1Char('/') + db; }

    BackupJob::Outcome backUp(const QString& destination)
    {
        BackupJob job(*db_->connection(), *prompter_, progress_);
        return job.run(destination);
    }

    // Unpacks the archive and returns the backup root inside it.
    QString unpack(const QString& into)
    {
        auto zip = CreateObject<ZipLib>(kZipLibClass);
        if (zip->UnZipMyFolder("UNZIPME", logFilePath(), archive(), into) != 0)
            return QString();
        return findBackupRoot(into);
    }

private slots:
    void initTestCase()
    {
        registerDefaultComponents();
        db_ = std::make_unique<test::TestDatabase>(QStringLiteral("backup"));
        const auto pid = QString::number(::getpid());
        fbtDb_ = QStringLiteral("t_fbt2008_") + pid;
        otherDb_ = QStringLiteral("t_other_") + pid;
        for (const QString& db : {fbtDb_, otherDb_}) {
            (*db_)->execute(QStringLiteral("CREATE DATABASE IF NOT EXISTS ") + sqlName(db));
            (*db_)->execute(QStringLiteral("CREATE TABLE IF NOT EXISTS %1.t (a int) ENGINE=MyISAM").arg(sqlName(db)));
        }
        for (const char* t : {"TMPCL_MASTER", "CL_MASTER", "TMPBILL"})
            (*db_)->execute(QStringLiteral("CREATE TABLE %1 (a int) ENGINE=MyISAM").arg(sqlName(QLatin1String(t))));
        (*db_)->execute(QStringLiteral(
            "CREATE TABLE valuesdemo (id int PRIMARY KEY, d date, ts datetime, n int, x double, t varchar(40)) ENGINE=MyISAM"));
        (*db_)->execute(QStringLiteral(
            "INSERT INTO valuesdemo VALUES (1, '2008-03-31', '2008-04-01 15:04:05', NULL, NULL, NULL),"
            " (2, NULL, '2008-04-01 00:00:09', 7, 2.5, 'tab\\there')"));
        (*db_)->execute(QStringLiteral("CREATE TABLE writes (id int AUTO_INCREMENT PRIMARY KEY, note varchar(40)) ENGINE=MyISAM"));
        dataDir_ = db_->scalar(QStringLiteral("SELECT @@datadir"));
        if (dataDir_.endsWith(QLatin1Char('/')))
            dataDir_.chop(1);
        QVERIFY(QFileInfo(dbFolder(db_->name())).isDir());
    }

    void cleanupTestCase()
    {
        for (const QString& db : {fbtDb_, otherDb_})
            (*db_)->execute(QStringLiteral("DROP DATABASE IF EXISTS ") + sqlName(db));
        db_.reset();
    }

    void init()
    {
        db_->startAfresh({});
        modbase().clock = [] { return QDateTime(kToday, QTime(10, 0)); };
        modbase().vTmpPath = temp_.path() + QLatin1Char('/');
        prompter_ = installPrompter();
        for (const QString& f : QDir(dest_.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden)) {
            QDir(dest_.filePath(f)).removeRecursively();
            QFile::remove(dest_.filePath(f));
        }
    }

    void archiveName_data()
    {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QString>("expected");
        QTest::newRow("English") << QLocale(QLocale::English, QLocale::UnitedKingdom) << "FBT05-Mar-26";
        QTest::newRow("German") << QLocale(QLocale::German, QLocale::Germany) << "FBT05-März-26";
        // Dutch abbreviates with a full stop, which turns into a dash.
        QTest::newRow("Dutch") << QLocale(QLocale::Dutch, QLocale::Netherlands) << QString();
    }
    void archiveName()
    {
        QFETCH(QLocale, locale);
        QFETCH(QString, expected);
        const QString name = archiveBaseName(kToday, locale);
        if (!expected.isEmpty())
            QCOMPARE(name, expected);
        QVERIFY(name.startsWith("FBT05-"));
        QVERIFY(name.endsWith("-26"));
        for (const char* c : {"\\", "/", ":", "."})
            QVERIFY2(!name.contains(QLatin1String(c)), qPrintable(name));
        QCOMPARE(archiveFilePath("/a/b", "N"), QString("/a/b/N.ZIP"));
        QCOMPARE(archiveFilePath("/a/b/", "N"), QString("/a/b/N.ZIP"));
    }

    void selectionRules_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("folder");
        QTest::addColumn<bool>("taken");
        QTest::newRow("lower-case fbt2008") << "fbt2008" << true << true;
        QTest::newRow("FBT inside") << "myFbtData" << true << true;
        QTest::newRow("mysql") << "mysql" << true << false;
        QTest::newRow("default database") << "clients" << true << true;
        QTest::newRow("default database in other case") << "CLIENTS" << true << true;
        QTest::newRow("TMPCL_MASTER.MYD") << "TMPCL_MASTER.MYD" << false << false;
        QTest::newRow("tmpcl_master.frm") << "tmpcl_master.frm" << false << false;
        QTest::newRow("TMP_MASTER") << "TMP_MASTER.MYD" << false << false;
        QTest::newRow("CL_MASTER.MYD") << "CL_MASTER.MYD" << false << true;
        QTest::newRow("TMPBILL.MYD") << "TMPBILL.MYD" << false << true;
        QTest::newRow("MASTER without TMP") << "XTMP_MASTER.MYD" << false << true;
        QTest::newRow("db.opt") << "db.opt" << false << true;
    }
    void selectionRules()
    {
        QFETCH(QString, name);
        QFETCH(bool, folder);
        QFETCH(bool, taken);
        if (folder)
            QCOMPARE(isBackedUpDatabase(name, "clients"), taken);
        else
            QCOMPARE(!isTemporaryMasterFile(name), taken);
    }

    void destinationChecks_data()
    {
        QTest::addColumn<QString>("destination");
        QTest::addColumn<QString>("message");
        QTest::newRow("empty") << "" << "Please select a path.";
        QTest::newRow("missing") << "/nonexistent/corvane" << "Directory does not Exists.";
        QTest::newRow("network path that exists") << "//tmp" << "Backup can not be Stored Directly on Network Path.";
    }
    void destinationChecks()
    {
        QFETCH(QString, destination);
        QFETCH(QString, message);
        QCOMPARE(backUp(destination), BackupJob::Outcome::Refused);
        QCOMPARE(prompter_->texts(), QStringList{message});
        QVERIFY(!QFileInfo::exists(archive()));
    }

    void placeOfAFolder_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("mounts");
        QTest::addColumn<int>("kind");
        const QString local = "/dev/sda1 / ext4 rw 0 0\n";
        QTest::newRow("local disk") << "/srv/backups" << local << int(PlaceKind::Local);
        QTest::newRow("backslash share") << "\\\\server\\share" << local << int(PlaceKind::Network);
        QTest::newRow("nfs") << "/mnt/nas/b" << local + "nas:/vol /mnt/nas nfs4 rw 0 0\n" << int(PlaceKind::Network);
        QTest::newRow("cifs with a blank") << "/mnt/my share/b" << local + "//srv/s /mnt/my\\040share cifs rw 0 0\n"
                                           << int(PlaceKind::Network);
        QTest::newRow("sshfs") << "/home/u/remote" << local + "u@h: /home/u/remote fuse.sshfs rw 0 0\n"
                               << int(PlaceKind::Network);
        QTest::newRow("mount point only a prefix") << "/mnt/nasty" << local + "nas:/vol /mnt/nas nfs rw 0 0\n"
                                                   << int(PlaceKind::Local);
        QTest::newRow("under /media") << "/media/usb/b" << local << int(PlaceKind::Removable);
        QTest::newRow("under /run/media") << "/run/media/u/stick" << local << int(PlaceKind::Removable);
    }
    void placeOfAFolder()
    {
        QFETCH(QString, folder);
        QFETCH(QString, mounts);
        QFETCH(int, kind);
        QCOMPARE(int(classifyPlace(folder, mounts)), kind);
    }

    void roundTripGivesIdenticalTableFilesAndReadableExports()
    {
        test::StatementRecorder recorder;
        QCOMPARE(backUp(dest_.path()), BackupJob::Outcome::Completed);
        recorder.stop();
        // The files are copied from flushed tables held still, and let go after; the job itself writes nothing.
        QStringList locking;
        for (const auto& s : recorder.statements())
            if (s.sql.contains(QStringLiteral("tables"), Qt::CaseInsensitive) && !s.sql.startsWith(QStringLiteral("show"), Qt::CaseInsensitive))
                locking << s.sql.toUpper();
        QCOMPARE(locking, (QStringList{"FLUSH TABLES WITH READ LOCK", "UNLOCK TABLES"}));
        QCOMPARE(recorder.writes(), QStringList());
        QCOMPARE(prompter_->texts(), QStringList{"Backup Completed."});
        QVERIFY(QFileInfo(archive()).isFile());
        QVERIFY(!QFileInfo::exists(dest_.filePath(archiveBaseName(kToday))));
        QCOMPARE(GetSettingINI("Settings", "BKDir", QString()), dest_.path());

        if (!QStandardPaths::findExecutable("unzip").isEmpty()) {
            QProcess unzip;
            unzip.start("unzip", {"-tq", archive()});
            QVERIFY(unzip.waitForFinished());
            QCOMPARE(unzip.exitCode(), 0);
        }

        QTemporaryDir out;
        const QString root = unpack(out.path());
        QVERIFY(!root.isEmpty());
        const QString own = root + "/SQLDATA/" + db_->name();
        QVERIFY(QFileInfo(root + "/SQLDATA/" + fbtDb_).isDir());
        QVERIFY(!QFileInfo::exists(root + "/SQLDATA/" + otherDb_));
        QVERIFY(!QFileInfo::exists(root + "/SQLDATA/mysql"));

        (*db_)->execute("FLUSH TABLES");
        QStringList expected = filesOf(dbFolder(db_->name()));
        expected.removeIf([](const QString& f) { return f.startsWith("TMPCL_MASTER.", Qt::CaseInsensitive); });
        QCOMPARE(filesOf(own), expected);
        QVERIFY(expected.contains("CL_MASTER.MYD", Qt::CaseInsensitive));
        QVERIFY(expected.contains("TMPBILL.MYD", Qt::CaseInsensitive));
        for (const QString& f : expected)
            QVERIFY2(readFile(own + '/' + f) == readFile(dbFolder(db_->name()) + '/' + f), qPrintable(f));

        QVERIFY(!exportOf(root, "FBT_Info").isEmpty());
        QVERIFY(exportOf(root, "TMPCL_MASTER").isEmpty());
        QCOMPARE(QString::fromUtf8(readFile(root + "/Tables/valuesdemo")),
                 QString("id\td\tts\tn\tx\tt\n"
                         "1\t2008-03-31\t2008-04-01 03:04:05 PM\t0\t0\t\n"
                         "2\t\t2008-04-01 12:00:09 AM\t7\t2.5\ttab\\there\n"));
        QCOMPARE(QString::fromUtf8(readFile(exportOf(root, "TMPBILL"))), QString("a\n"));
    }

    void documentsAreCopiedWhenPresent()
    {
        const QString bill = db_->appPath() + "/Data/BillNew.doc";
        test::writeFile(bill, "bill");
        QCOMPARE(backUp(dest_.path()), BackupJob::Outcome::Completed);
        QTemporaryDir out;
        const QString root = unpack(out.path());
        QCOMPARE(readFile(root + "/BillNew.doc"), QByteArray("bill"));
        QVERIFY(!QFileInfo::exists(root + "/RecpNew.doc"));
        QVERIFY(QFileInfo(root + "/Confg.ini").isFile()); // BKDir was saved into it
        QFile::remove(bill);
    }

    void writerDuringBackupLeavesClosedTables()
    {
        Writer writer(db_->settings(), "writes");
        writer.start();
        writer.firstRow.acquire();
        QVERIFY2(writer.failure.isEmpty(), qPrintable(writer.failure));
        const BackupJob::Outcome outcome = backUp(dest_.path());
        writer.stop = true;
        writer.wait();
        QCOMPARE(outcome, BackupJob::Outcome::Completed);

        QTemporaryDir out;
        const QString root = unpack(out.path());
        const QString restored = QStringLiteral("t_restored_%1").arg(::getpid());
        QDir().mkpath(dbFolder(restored));
        const QString own = root + "/SQLDATA/" + db_->name();
        for (const QString& f : filesOf(own))
            if (f.startsWith("writes."))
                QVERIFY(QFile::copy(own + '/' + f, dbFolder(restored) + '/' + f));
        const auto check = (*db_)->query(QStringLiteral("CHECK TABLE %1.writes").arg(sqlName(restored)));
        (*db_)->execute("DROP DATABASE " + sqlName(restored));
        QVERIFY(!check.rows.isEmpty());
        for (const auto& row : check.rows)
            QVERIFY2(!row.value(3).toString().contains("properly") && !row.value(3).toString().contains("crashed"),
                     qPrintable(row.value(3).toString()));
        QCOMPARE(check.rows.last().value(3).toString(), QString("OK"));
    }

    void decliningOverwriteKeepsOldArchive()
    {
        test::writeFile(archive(), "old archive");
        prompter_->then(Prompter::Answer::No);
        QCOMPARE(backUp(dest_.path()), BackupJob::Outcome::Refused);
        QCOMPARE(prompter_->texts(),
                 QStringList{QString("File [%1] already Exists. Do you want to delete it?").arg(archive())});
        QCOMPARE(prompter_->asked().front().defaultAnswer, Prompter::Answer::No);
        QCOMPARE(readFile(archive()), QByteArray("old archive"));
        QVERIFY(!QFileInfo::exists(dest_.filePath(archiveBaseName(kToday))));
        QVERIFY(!QFileInfo::exists(temp_.filePath(archiveBaseName(kToday))));

        prompter_->clear();
        prompter_->then(Prompter::Answer::Yes);
        QCOMPARE(backUp(dest_.path()), BackupJob::Outcome::Completed);
        QVERIFY(readFile(archive()).startsWith("PK"));
    }

    void stagingGoesToTempPathWhenTakenInDestination()
    {
        const QString taken = dest_.filePath(archiveBaseName(kToday));
        QVERIFY(QDir().mkpath(taken + "/mine"));
        const QString leftover = temp_.filePath(archiveBaseName(kToday));
        QVERIFY(QDir().mkpath(leftover + "/old"));
        BackupJob job(*db_->connection(), *prompter_, progress_);
        QVERIFY(job.prepareNames(dest_.path()));
        QCOMPARE(job.stagingPath(), leftover);
        QVERIFY(!QFileInfo::exists(leftover + "/old"));
        QVERIFY(QFileInfo::exists(taken + "/mine"));
        QDir(leftover).removeRecursively();
    }

    void missingZipComponentKeepsStagingFolder()
    {
        ObjectRegistry::instance().unregisterClass(kZipLibClass);
        const BackupJob::Outcome outcome = backUp(dest_.path());
        registerDefaultComponents();
        QCOMPARE(outcome, BackupJob::Outcome::NotCompressed);
        const QString staging = dest_.filePath(archiveBaseName(kToday));
        QCOMPARE(prompter_->texts(),
                 (QStringList{"Can't Create Object of ORV Zip Library.",
                              QString("Backup could not be Compressed in Zip File Format. You can Keep Folder [%1] as Backup.")
                                  .arg(staging)}));
        QVERIFY(!QFileInfo::exists(archive()));
        QVERIFY(QFileInfo(staging + "/SQLDATA/" + db_->name()).isDir());
        QVERIFY(QFileInfo(staging + "/Tables/valuesdemo").isFile());
        QVERIFY(test::logContexts().contains("frmbackup\tZIPME"));
    }

    void copyFailureCleansUp()
    {
        // A file that cannot be read, even by the superuser: a link to nothing.
        const QString broken = dbFolder(db_->name()) + "/broken.MYD";
        QVERIFY(QFile::link("/nonexistent/corvane-backup-test", broken));
        const BackupJob::Outcome outcome = backUp(dest_.path());
        QFile::remove(broken);
        QCOMPARE(outcome, BackupJob::Outcome::Failed);
        const QStringList texts = prompter_->texts();
        QCOMPARE(texts.size(), 2);
        QVERIFY2(texts.at(0).startsWith("Error Occured : "), qPrintable(texts.at(0)));
        QVERIFY(texts.at(0).endsWith(QString("\n\nwhile copying File [%1/broken.MYD].").arg(dbFolder(db_->name()))));
        QCOMPARE(texts.at(1), QString("Close the Software on All the Machines and Retry !"));
        QVERIFY(!QFileInfo::exists(dest_.filePath(archiveBaseName(kToday))));
        QVERIFY(!QFileInfo::exists(archive()));
        // The lock is gone: this connection can write again.
        (*db_)->execute("INSERT INTO writes (note) VALUES ('after')");
    }

    // A table whose index file is gone to nothing: the repair cannot mend it,
    // so the reading fails into the BackUpData handler.
    void unreadableTableGoesToTheHandler_data()
    {
        QTest::addColumn<QList<int>>("answers");
        QTest::addColumn<int>("outcome");
        using A = Prompter::Answer;
        QTest::newRow("Ignore goes on") << QList<int>{int(A::Ignore)} << int(BackupJob::Outcome::Completed);
        QTest::newRow("Retry asks again") << QList<int>{int(A::Retry), int(A::Ignore)} << int(BackupJob::Outcome::Completed);
        QTest::newRow("Abort cleans up") << QList<int>{int(A::Abort)} << int(BackupJob::Outcome::Failed);
    }
    void unreadableTableGoesToTheHandler()
    {
        QFETCH(QList<int>, answers);
        QFETCH(int, outcome);
        (*db_)->execute("DROP TABLE IF EXISTS crashy");
        (*db_)->execute("CREATE TABLE crashy (id int PRIMARY KEY, t varchar(10)) ENGINE=MyISAM");
        (*db_)->execute("INSERT INTO crashy VALUES (1, 'a'), (2, 'b')");
        (*db_)->execute("FLUSH TABLES");
        const QString index = test::fileNamedAnyCase(dbFolder(db_->name()), "crashy.MYI");
        QVERIFY(!index.isEmpty());
        QVERIFY(QFile::resize(index, 0));
        for (int a : answers)
            prompter_->then(Prompter::Answer(a));

        test::StatementRecorder recorder;
        const BackupJob::Outcome result = backUp(dest_.path());
        recorder.stop();
        (*db_)->execute("DROP TABLE crashy");
        // The one repair it tries is flushed on both sides, the lock given up for it
        QCOMPARE(recorder.writes().filter(QStringLiteral("repair")), QStringList{"repair crashy"});
        QCOMPARE(recorder.unflushedWrites(), QStringList());

        QCOMPARE(int(result), outcome);
        QCOMPARE(prompter_->pending(), 0);
        const auto& asked = prompter_->asked();
        for (qsizetype i = 0; i < answers.size(); ++i) {
            QVERIFY2(asked.at(i).text.startsWith("Error occured: "), qPrintable(asked.at(i).text));
            QCOMPARE(asked.at(i).title, QString("BackUpData"));
            QCOMPARE(asked.at(i).buttons, Prompter::Buttons::AbortRetryIgnore);
            QCOMPARE(asked.at(i).icon, Prompter::Icon::Critical);
        }
        QVERIFY(test::logContexts().contains("frmbackup\tBACKUPDATA"));
        if (result == BackupJob::Outcome::Completed) {
            QCOMPARE(prompter_->texts().last(), QString("Backup Completed."));
            QTemporaryDir out;
            const QString root = unpack(out.path());
            QVERIFY(exportOf(root, "crashy").isEmpty());
            QVERIFY(!exportOf(root, "valuesdemo").isEmpty());
        } else {
            QCOMPARE(prompter_->texts().last(), QString("Close the Software on All the Machines and Retry !"));
            QVERIFY(!QFileInfo::exists(archive()));
            QVERIFY(!QFileInfo::exists(dest_.filePath(archiveBaseName(kToday))));
        }
        // The read lock is gone on every path.
        (*db_)->execute("INSERT INTO writes (note) VALUES ('after')");
    }

    void backupRootIsFoundAtAnyDepth_data()
    {
        QTest::addColumn<QStringList>("folders");
        QTest::addColumn<QString>("root");
        QTest::newRow("at the top") << QStringList{"SQLDATA", "Tables"} << "";
        QTest::newRow("two deep") << QStringList{"A/A/SQLDATA", "A/A/Tables"} << "A/A";
        QTest::newRow("names in other case") << QStringList{"x/sqldata", "x/TABLES"} << "x";
        QTest::newRow("only SQLDATA") << QStringList{"x/SQLDATA"} << QString();
        QTest::newRow("parts in two folders") << QStringList{"x/SQLDATA", "y/Tables"} << QString();
    }
    void backupRootIsFoundAtAnyDepth()
    {
        QFETCH(QStringList, folders);
        QFETCH(QString, root);
        QTemporaryDir dir;
        for (const QString& f : folders)
            QVERIFY(QDir().mkpath(dir.filePath(f)));
        const QString expected = root.isNull() ? QString() : (root.isEmpty() ? dir.path() : dir.filePath(root));
        QCOMPARE(findBackupRoot(dir.path() + "/"), expected);
    }

    void classificationOfTheRoot()
    {
        QTemporaryDir dir;
        QDir().mkpath(dir.filePath("SQLDATA/fbt"));
        QDir().mkpath(dir.filePath("Tables"));
        for (const char* f : {"BillNew.doc", "RECPNEW.DOC", "Confg.ini"}) {
            QFile file(dir.filePath(f));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        QStringList rows;
        for (const RestoreItem& item : classifyBackupRoot(dir.path(), "/my", "/app/"))
            rows << QDir(dir.path()).relativeFilePath(item.source) + " " + item.destination + " " + kindMark(item.kind);
        rows.sort();
        QCOMPARE(rows, (QStringList{"BillNew.doc /app/Data/BillNew.doc FL", "Confg.ini /app/Confg.ini FL",
                                    "RECPNEW.DOC /app/Data/RECPNEW.DOC FL", "SQLDATA/fbt /my/fbt DB",
                                    "Tables /app/Tables FLD"}));
    }
};

CORVANE_TEST_CLASS(BackupJobTest)
#include "backupjobtest.moc"
