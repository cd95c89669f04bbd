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

#include <QtTest>
#include <unistd.h>

using namespace corvane;
using namespace corvane::backup;
using namespace corvane::test;

namespace {

// The statements that take or give up the read lock, in order.
QStringList lockingOf(const test::StatementRecorder& recorder)
{
    QStringList locking;
    for (const auto& s : recorder.statements())
        if (s.sql.contains("lock", Qt::CaseInsensitive) && s.sql.contains("tables", Qt::CaseInsensitive))
            locking << s.sql.toUpper();
    return locking;
}

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
    HookProgress progress_;

    QString archive() const { return archiveFilePath(dest_.path(), archiveBaseName(kToday)); }
    QString staging() const { return dest_.filePath(archiveBaseName(kToday)); }
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

    // Whether this connection may write: not while it holds the read lock.
    bool canWrite()
    {
        try {
            (*db_)->execute(QStringLiteral("INSERT INTO %1.t VALUES (1)").arg(sqlName(otherDb_)));
            return true;
        } catch (const Failure&) {
            return false;
        }
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
        progress_.onText = nullptr;
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

    // The edges of the selection; the backup of the run's server shows the common cases.
    void selectionRules_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("folder");
        QTest::addColumn<bool>("taken");
        QTest::newRow("FBT inside") << "myFbtData" << true << true;
        QTest::newRow("default database in other case") << "CLIENTS" << true << true;
        QTest::newRow("tmpcl_master.frm") << "tmpcl_master.frm" << false << false;
        QTest::newRow("TMP_MASTER") << "TMP_MASTER.MYD" << false << false;
        QTest::newRow("MASTER without TMP") << "XTMP_MASTER.MYD" << false << true;
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
        // GIVEN a document beside the tables
        const QString bill = db_->appPath() + "/Data/BillNew.doc";
        test::writeFile(bill, "bill");
        QStringList steps; // marked when this connection could write during them
        progress_.onText = [&](const QString& text) { steps << (canWrite() ? "unlocked " : "") + text; };
        test::StatementRecorder recorder;
        QCOMPARE(backUp(dest_.path()), BackupJob::Outcome::Completed);
        recorder.stop();
        QFile::remove(bill);
        // The files are copied from flushed tables held still, and let go after; the job itself writes nothing.
        QCOMPARE(lockingOf(recorder), (QStringList{"FLUSH TABLES WITH READ LOCK", "UNLOCK TABLES"}));
        QVERIFY(steps.contains("Copying Databases"));
        QCOMPARE(steps.filter(QRegularExpression("^unlocked Copying")), QStringList());
        QVERIFY(steps.contains("unlocked Compressing Backup....."));
        QCOMPARE(recorder.writes().filter(QRegularExpression("^(?!insert t_other_)")), QStringList()); // but the probes
        QCOMPARE(prompter_->texts(), QStringList{"Backup Completed."});
        QVERIFY(!QFileInfo::exists(staging()));
        QCOMPARE(GetSettingINI("Settings", "BKDir", QString()), dest_.path());

        QTemporaryDir out;
        const QString root = unpack(out.path());
        QVERIFY(!root.isEmpty());
        const QString own = root + "/SQLDATA/" + db_->name();
        QVERIFY(QFileInfo(root + "/SQLDATA/" + fbtDb_).isDir());
        QVERIFY(!QFileInfo::exists(root + "/SQLDATA/" + otherDb_));
        QVERIFY(!QFileInfo::exists(root + "/SQLDATA/mysql"));
        QCOMPARE(readFile(root + "/BillNew.doc"), QByteArray("bill"));
        QVERIFY(!QFileInfo::exists(root + "/RecpNew.doc"));
        QVERIFY(QFileInfo(root + "/Confg.ini").isFile()); // BKDir was saved into it

        (*db_)->execute("FLUSH TABLES");
        QStringList expected = treeOf(dbFolder(db_->name()));
        expected.removeIf([](const QString& f) { return f.startsWith("TMPCL_MASTER.", Qt::CaseInsensitive); });
        QCOMPARE(treeOf(own), expected);
        QVERIFY(expected.contains("CL_MASTER.MYD", Qt::CaseInsensitive));
        QVERIFY(expected.contains("TMPBILL.MYD", Qt::CaseInsensitive));
        for (const QString& f : expected)
            QVERIFY2(readFile(own + '/' + f) == readFile(dbFolder(db_->name()) + '/' + f), qPrintable(f));

        // Every table is exported but the temporary master.
        QStringList tables;
        for (const auto& row : (*db_)->query("SHOW TABLES").rows)
            tables << row.value(0).toString();
        tables.removeIf([](const QString& t) { return t.compare("TMPCL_MASTER", Qt::CaseInsensitive) == 0; });
        tables.sort();
        QCOMPARE(treeOf(root + "/Tables"), tables);
        QCOMPARE(QString::fromUtf8(readFile(root + "/Tables/valuesdemo")),
                 QString("id\td\tts\tn\tx\tt\n"
                         "1\t2008-03-31\t2008-04-01 03:04:05 PM\t0\t0\t\n"
                         "2\t\t2008-04-01 12:00:09 AM\t7\t2.5\ttab\\there\n"));
        QCOMPARE(QString::fromUtf8(readFile(fileNamedAnyCase(root + "/Tables", "TMPBILL"))), QString("a\n"));
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
        QVERIFY(!QFileInfo::exists(staging()));
        QVERIFY(!QFileInfo::exists(temp_.filePath(archiveBaseName(kToday))));
    }

    void stagingGoesToTempPathWhenTakenInDestination()
    {
        QVERIFY(QDir().mkpath(staging() + "/mine"));
        const QString leftover = temp_.filePath(archiveBaseName(kToday));
        QVERIFY(QDir().mkpath(leftover + "/old"));
        BackupJob job(*db_->connection(), *prompter_, progress_);
        QVERIFY(job.prepareNames(dest_.path()));
        QCOMPARE(job.stagingPath(), leftover);
        QVERIFY(!QFileInfo::exists(leftover + "/old"));
        QVERIFY(QFileInfo::exists(staging() + "/mine"));
        QDir(leftover).removeRecursively();
    }

    void missingZipComponentKeepsStagingFolder()
    {
        ObjectRegistry::instance().unregisterClass(kZipLibClass);
        const BackupJob::Outcome outcome = backUp(dest_.path());
        registerDefaultComponents();
        QCOMPARE(outcome, BackupJob::Outcome::NotCompressed);
        QCOMPARE(prompter_->texts(),
                 (QStringList{"Can't Create Object of ORV Zip Library.",
                              QString("Backup could not be Compressed in Zip File Format. You can Keep Folder [%1] as Backup.")
                                  .arg(staging())}));
        QVERIFY(!QFileInfo::exists(archive()));
        QVERIFY(QFileInfo(staging() + "/SQLDATA/" + db_->name()).isDir());
        QVERIFY(QFileInfo(staging() + "/Tables/valuesdemo").isFile());
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
        QVERIFY(!QFileInfo::exists(staging()));
        QVERIFY(!QFileInfo::exists(archive()));
        QVERIFY(canWrite()); // the lock is gone
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
        // The one repair it tries is flushed on both sides, the lock given up for it and taken again after.
        QCOMPARE(recorder.writes().filter(QStringLiteral("repair")), QStringList{"repair crashy"});
        QCOMPARE(recorder.unflushedWrites(), QStringList());
        QCOMPARE(lockingOf(recorder), (QStringList{"FLUSH TABLES WITH READ LOCK", "UNLOCK TABLES",
                                                   "FLUSH TABLES WITH READ LOCK", "UNLOCK TABLES"}));

        QCOMPARE(int(result), outcome);
        QCOMPARE(prompter_->pending(), 0);
        for (qsizetype i = 0; i < answers.size(); ++i) {
            const auto& asked = prompter_->asked().at(i);
            QVERIFY2(asked.text.startsWith("Error occured: "), qPrintable(asked.text));
            QCOMPARE(asked.buttons, Prompter::Buttons::AbortRetryIgnore);
        }
        QVERIFY(test::logContexts().contains("frmbackup\tBACKUPDATA"));
        if (result == BackupJob::Outcome::Completed) {
            QCOMPARE(prompter_->texts().last(), QString("Backup Completed."));
            QTemporaryDir out;
            const QString root = unpack(out.path());
            QVERIFY(fileNamedAnyCase(root + "/Tables", "crashy").isEmpty());
            QVERIFY(QFileInfo(root + "/Tables/valuesdemo").isFile());
        } else {
            QCOMPARE(prompter_->texts().last(), QString("Close the Software on All the Machines and Retry !"));
            QVERIFY(!QFileInfo::exists(archive()));
            QVERIFY(!QFileInfo::exists(staging()));
        }
        QVERIFY(canWrite()); // the read lock is gone on every path
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
};

CORVANE_TEST_CLASS(BackupJobTest)
#include "backupjobtest.moc"
