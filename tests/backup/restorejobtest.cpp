#include "component/components.h"
#include "core/modbase.h"
#include "screens/backup/restorecandidates.h"
#include "screens/backup/restorejob.h"
#include "support/rawarchive.h"
#include "support/testlog.h"
#include "support/testmain.h"
#include "restoretestsupport.h"

#include <QtTest>
#include <sys/stat.h>

using namespace corvane;
using namespace corvane::backup;
using namespace corvane::test;

namespace {

const QDate kToday(2026, 3, 5);
const QString kKept = "Restore_05-Mar-26#";
const QString kIgnored = "Some Errors Ignored during Restoration. Please Retry or Contact your Vendor.";

QString rowText(const RestoreJob::Row& row, const QString& base)
{
    const QDir dir(base);
    return kindMark(row.item.kind) + " " + dir.relativeFilePath(row.item.source) + " > "
        + dir.relativeFilePath(row.item.destination);
}

} // namespace

// The restore job on real folders and archives, without a database server:
// the MySQL directory is a folder that looks like one.
class RestoreJobTest : public QObject {
    Q_OBJECT

    std::unique_ptr<RestoreArea> area_;
    std::shared_ptr<HookedPrompter> prompter_;
    NullProgress progress_;
    QString mysql_, app_, tmp_, archive_;

    QString at(const QString& relative) const { return area_->at(relative); }

    RestoreJob::Choice zipChoice() const
    {
        RestoreJob::Choice c;
        c.archive = archive_;
        c.mysqlDirectory = mysql_ + '/';
        c.dataDirectory = app_ + '/';
        return c;
    }
    RestoreJob::Choice manualChoice(const QString& databases, const QString& data) const
    {
        RestoreJob::Choice c = zipChoice();
        c.mode = RestoreJob::Mode::Manual;
        c.archive.clear();
        c.databasesFolder = databases;
        c.dataFolder = data;
        return c;
    }
    // The extraction folder of the archive.
    QString extraction() const { return tmp_ + "/FBT05-Mar-26"; }

private slots:
    void initTestCase()
    {
        registerDefaultComponents();
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    }

    void init()
    {
        area_ = std::make_unique<RestoreArea>();
        mysql_ = area_->mysql;
        app_ = area_->app;
        tmp_ = area_->tmp;
        archive_ = area_->archive;
        writeFile(mysql_ + "/fbt/old.MYI", "old index");
        writeFile(app_ + "/Confg.ini", "[Settings]\nmark=old\n");
        writeFile(app_ + "/Data/BillNew.doc", "old bill");

        resetModbase();
        modbase().AppPath = app_;
        modbase().vTmpPath = tmp_ + '/';
        modbase().clock = [] { return QDateTime(kToday, QTime(11, 0)); };
        prompter_ = std::make_shared<HookedPrompter>();
        modbase().prompter = prompter_;
    }

    void zipRestoreReplacesAndKeeps()
    {
        RestoreJob job(nullptr, *prompter_, progress_);
        QVERIFY(job.proceed(zipChoice()));
        QStringList rows;
        for (const auto& row : job.rows())
            rows << rowText(row, area_->dir->path());
        rows.sort();
        const QString root = "tmp/FBT05-Mar-26/FBT05-Mar-26";
        QCOMPARE(rows, (QStringList{"DB " + root + "/SQLDATA/fbt > mysql-data/fbt",
                                    "FL " + root + "/BillNew.doc > app/Data/BillNew.doc",
                                    "FL " + root + "/Confg.ini > app/Confg.ini",
                                    "FLD " + root + "/Tables > app/Tables"}));

        QCOMPARE(job.restore(), RestoreJob::Outcome::Restored);
        const QString kept = app_ + "/" + kKept + "1";
        QCOMPARE(job.keepingFolder(), kept);
        QCOMPARE(prompter_->texts(),
                 QStringList{QString("Data Restored.\nExisting Data has been Kept as Backup in [%1].").arg(kept)});
        for (const auto& row : job.rows())
            QCOMPARE(row.status, QString("Restored."));
        // The backup is in place, nothing of the old is left beside it ...
        QCOMPARE(treeOf(mysql_ + "/fbt"), (QStringList{"a.MYD", "a.frm"}));
        QCOMPARE(readFile(mysql_ + "/fbt/a.MYD"), QByteArray("new a"));
        QCOMPARE(readFile(app_ + "/Data/BillNew.doc"), QByteArray("new bill"));
        QCOMPARE(readFile(app_ + "/Tables/FBT_Info"), QByteArray("new rows"));
        QVERIFY(readFile(app_ + "/Confg.ini").contains("mark=new"));
        // ... and everything replaced can be found in the keeping folder
        QCOMPARE(treeOf(kept), (QStringList{"BillNew.doc", "Confg.ini", "SQLDATA", "SQLDATA/fbt", "SQLDATA/fbt/a.MYD",
                                            "SQLDATA/fbt/old.MYI"}));
        QCOMPARE(readFile(kept + "/SQLDATA/fbt/a.MYD"), QByteArray("old a"));
        QCOMPARE(readFile(kept + "/BillNew.doc"), QByteArray("old bill"));
        QVERIFY(readFile(kept + "/Confg.ini").contains("mark=old"));
        // The server's own database and the program are untouched; the extraction is gone.
        QVERIFY(QFileInfo(mysql_ + "/mysql").isDir());
        QCOMPARE(readFile(app_ + "/FBT"), QByteArray("program"));
        QVERIFY(!QFileInfo::exists(extraction()));
        QVERIFY(job.completed());
        QVERIFY(!job.aborted());
    }

    void keepingFolderName_data()
    {
        QTest::addColumn<int>("existing");
        QTest::addColumn<QString>("expected");
        QTest::newRow("none yet") << 0 << "#1";
        QTest::newRow("one") << 1 << "#2";
        QTest::newRow("nine") << 9 << "#10";
        QTest::newRow("all ten") << 10 << "#11";
        QTest::newRow("eleven") << 11 << "#11";
    }
    void keepingFolderName()
    {
        QFETCH(int, existing);
        QFETCH(QString, expected);
        for (int n = 1; n <= existing; ++n)
            QDir().mkpath(app_ + "/" + kKept + QString::number(n));
        QCOMPARE(RestoreJob::keepingFolderFor(app_, kToday), app_ + "/Restore_05-Mar-26" + expected);
        QCOMPARE(RestoreJob::keepingFolderFor(app_ + "/", kToday), app_ + "/Restore_05-Mar-26" + expected);
    }

    void refusedChoices_data()
    {
        QTest::addColumn<QString>("what");
        QTest::addColumn<QString>("message");
        QTest::addColumn<int>("field");
        using F = RestoreJob::Field;
        QTest::newRow("no backup file") << "archive=" << "Please Select a Backup File." << int(F::BackupFile);
        QTest::newRow("missing backup file") << "archive=missing.zip" << "Backup File does not Exists." << int(F::BackupFile);
        QTest::newRow("backup file is a folder") << "archive=tmp" << "Backup File does not Exists." << int(F::BackupFile);
        QTest::newRow("no MySQL directory") << "mysql=" << "Please Specify MySql Directory." << int(F::MysqlDirectory);
        QTest::newRow("MySQL directory without mysql") << "mysql=app" << "[%1] not a Valid MySql Directory."
                                                       << int(F::MysqlDirectory);
        QTest::newRow("MySQL directory missing") << "mysql=nowhere" << "[%1] not a Valid MySql Directory."
                                                 << int(F::MysqlDirectory);
        QTest::newRow("no data directory") << "data=" << "Please Specify Data Directory." << int(F::DataDirectory);
        QTest::newRow("data directory without FBT") << "data=mysql-data" << "[%1] not a Valid Data Directory."
                                                    << int(F::DataDirectory);
        QTest::newRow("FBT is a folder") << "data=fake" << "[%1] not a Valid Data Directory." << int(F::DataDirectory);
    }
    void refusedChoices()
    {
        QFETCH(QString, what);
        QFETCH(QString, message);
        QFETCH(int, field);
        QDir().mkpath(at("fake/FBT"));
        writeFile(at("fake/Confg.ini"), "data but no program");
        RestoreJob::Choice choice = zipChoice();
        const QString key = what.section('=', 0, 0);
        const QString value = what.section('=', 1);
        const QString path = value.isEmpty() ? QString() : at(value);
        if (key == "archive")
            choice.archive = path;
        else if (key == "mysql")
            choice.mysqlDirectory = path;
        else
            choice.dataDirectory = path;
        RestoreJob job(nullptr, *prompter_, progress_);
        QVERIFY(!job.proceed(choice));
        QCOMPARE(prompter_->texts(), QStringList{message.contains("%1") ? message.arg(path) : message});
        QCOMPARE(int(job.failedField()), field);
        QVERIFY(job.rows().isEmpty());
        QCOMPARE(treeOf(tmp_), QStringList());
    }

    void mysqlDirectoryInOtherCaseIsAccepted()
    {
        QDir(mysql_ + "/mysql").removeRecursively();
        QDir().mkpath(mysql_ + "/MySQL");
        RestoreJob job(nullptr, *prompter_, progress_);
        QVERIFY(job.proceed(zipChoice()));
        QCOMPARE(job.rows().size(), 4);
    }

    void manualFolderRules_data()
    {
        QTest::addColumn<QStringList>("folders");
        QTest::addColumn<QString>("databases");
        QTest::addColumn<QString>("data");
        QTest::addColumn<QStringList>("rows");
        QTest::newRow("databases folder named FBT is one database")
            << QStringList{"b/FBT/x", "b/FBT/mysql"} << "b/FBT" << "" << QStringList{"DB b/FBT > mysql-data/FBT"};
        QTest::newRow("fbt in lower case too") << QStringList{"b/fbt"} << "b/fbt" << ""
                                               << QStringList{"DB b/fbt > mysql-data/fbt"};
        QTest::newRow("DATA lists its folders but mysql and test")
            << QStringList{"b/data/fbt", "b/data/fbt2008", "b/data/mysql", "b/data/Test", "b/data/MYSQL2"} << "b/data" << ""
            << QStringList{"DB b/data/MYSQL2 > mysql-data/MYSQL2", "DB b/data/fbt > mysql-data/fbt",
                           "DB b/data/fbt2008 > mysql-data/fbt2008"};
        QTest::newRow("MYSQL lists the folders of its Data")
            << QStringList{"b/MySql/Data/fbt", "b/MySql/Data/mysql", "b/MySql/bin"} << "b/MySql" << ""
            << QStringList{"DB b/MySql/Data/fbt > mysql-data/fbt"};
        QTest::newRow("MYSQL without Data lists nothing") << QStringList{"b/mysql/fbt"} << "b/mysql" << "" << QStringList{};
        QTest::newRow("any other name lists nothing") << QStringList{"b/dbs/fbt"} << "b/dbs" << "" << QStringList{};
        QTest::newRow("ORVSOFTWORKS lists the folders of its FBT")
            << QStringList{"d/OrvSoftworks/FBT/Tables", "d/OrvSoftworks/FBT/Data", "d/OrvSoftworks/Other"} << ""
            << "d/OrvSoftworks" << QStringList{"FLD d/OrvSoftworks/FBT/Data > app/Data", "FLD d/OrvSoftworks/FBT/Tables > app/Tables"};
        QTest::newRow("ORVSOFTWORKS without FBT lists nothing") << QStringList{"d/ORVSOFTWORKS/Tables"} << ""
                                                               << "d/ORVSOFTWORKS" << QStringList{};
        QTest::newRow("other data folder lists its folders")
            << QStringList{"d/old/Tables", "d/old/Data"} << "" << "d/old"
            << QStringList{"FLD d/old/Data > app/Data", "FLD d/old/Tables > app/Tables"};
    }
    void manualFolderRules()
    {
        QFETCH(QStringList, folders);
        QFETCH(QString, databases);
        QFETCH(QString, data);
        QFETCH(QStringList, rows);
        for (const QString& f : folders)
            QVERIFY(QDir().mkpath(at(f)));
        writeFile(at("d/old/loose.txt"), "files of the data folder are not listed");
        prompter_->then(Prompter::Answer::Yes);
        RestoreJob job(nullptr, *prompter_, progress_);
        QVERIFY(job.proceed(manualChoice(databases.isEmpty() ? QString() : at(databases),
                                         data.isEmpty() ? QString() : at(data))));
        QStringList listed;
        for (const auto& row : job.rows())
            listed << rowText(row, area_->dir->path());
        listed.sort();
        QCOMPARE(listed, rows);
        // The one empty folder was asked about, nothing else.
        QCOMPARE(prompter_->texts().size(), 1);
    }

    void manualQuestions_data()
    {
        QTest::addColumn<QString>("databases");
        QTest::addColumn<QString>("data");
        QTest::addColumn<QList<Prompter::Answer>>("answers");
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<bool>("proceeds");
        const QString noDb = "Do you want to Continue without Selecting MySql Database Directory? Database will not be Restored.";
        const QString noData = "Do you want to Continue without Selecting Data Directory? Data Folders will not be Restored.";
        using A = Prompter::Answer;
        QTest::newRow("no databases folder, No") << "" << "d" << QList<A>{A::No} << QStringList{noDb} << false;
        QTest::newRow("no databases folder, Yes") << "" << "d" << QList<A>{A::Yes} << QStringList{noDb} << true;
        QTest::newRow("databases folder missing") << "nowhere" << "d" << QList<A>{}
                                                  << QStringList{"MySql Database Directory does not Exists."} << false;
        QTest::newRow("no data folder, No") << "b/FBT" << "" << QList<A>{A::No} << QStringList{noData} << false;
        QTest::newRow("data folder missing") << "b/FBT" << "nowhere" << QList<A>{}
                                             << QStringList{"Data Directory does not Exists."} << false;
        QTest::newRow("neither, Yes twice") << "" << "" << QList<A>{A::Yes, A::Yes} << QStringList{noDb, noData} << true;
    }
    void manualQuestions()
    {
        QFETCH(QString, databases);
        QFETCH(QString, data);
        QFETCH(QList<Prompter::Answer>, answers);
        QFETCH(QStringList, texts);
        QFETCH(bool, proceeds);
        QDir().mkpath(at("b/FBT"));
        QDir().mkpath(at("d/Tables"));
        for (const auto a : answers)
            prompter_->then(a);
        RestoreJob job(nullptr, *prompter_, progress_);
        QCOMPARE(job.proceed(manualChoice(databases.isEmpty() ? QString() : at(databases), data.isEmpty() ? QString() : at(data))),
                 proceeds);
        QCOMPARE(prompter_->texts(), texts);
        if (!texts.first().endsWith("Exists."))
            QCOMPARE(prompter_->asked().front().buttons, Prompter::Buttons::YesNo);
    }

    void sourceEqualToDestinationIsRefused()
    {
        QDir().mkpath(app_ + "/Tables");
        RestoreJob job(nullptr, *prompter_, progress_);
        prompter_->then(Prompter::Answer::Yes);
        QVERIFY(job.proceed(manualChoice(QString(), app_ + "/")));
        prompter_->clear();
        QCOMPARE(job.restore(), RestoreJob::Outcome::Refused);
        QCOMPARE(prompter_->texts(), QStringList{"Source Path and Destination Path can not be Same."});
        QVERIFY(!job.completed());
        QVERIFY(QDir(app_).entryList({"Restore_*"}, QDir::Dirs).isEmpty());
        QCOMPARE(readFile(app_ + "/Data/BillNew.doc"), QByteArray("old bill"));
    }

    // Past ten keeping folders the eleventh is used again, whatever is in the way there.
    void theEleventhKeepingFolderIsReplaced_data()
    {
        QTest::addColumn<bool>("asFile");
        QTest::newRow("a read-only folder of read-only files") << false;
        QTest::newRow("a read-only file") << true;
    }
    void theEleventhKeepingFolderIsReplaced()
    {
        QFETCH(bool, asFile);
        for (int n = 1; n <= 10; ++n)
            QDir().mkpath(app_ + "/" + kKept + QString::number(n));
        const QString eleventh = app_ + "/" + kKept + "11";
        if (asFile) {
            writeFile(eleventh, "a file in the way");
            QVERIFY(::chmod(QFile::encodeName(eleventh).constData(), 0444) == 0);
        } else {
            writeFile(eleventh + "/SQLDATA/fbt/a.MYD", "kept before");
            QVERIFY(::chmod(QFile::encodeName(eleventh + "/SQLDATA/fbt/a.MYD").constData(), 0444) == 0);
            QVERIFY(::chmod(QFile::encodeName(eleventh + "/SQLDATA/fbt").constData(), 0555) == 0);
        }
        RestoreJob job(nullptr, *prompter_, progress_);
        QVERIFY(job.proceed(zipChoice()));
        QCOMPARE(job.restore(), RestoreJob::Outcome::Restored);
        QCOMPARE(job.keepingFolder(), eleventh);
        QCOMPARE(readFile(eleventh + "/SQLDATA/fbt/a.MYD"), QByteArray("old a"));
        QVERIFY(!QFileInfo::exists(app_ + "/" + kKept + "12"));
    }

    void failingStep_data()
    {
        QTest::addColumn<Prompter::Answer>("answer");
        QTest::newRow("Ignore") << Prompter::Answer::Ignore;
        QTest::newRow("Retry after the cause is gone") << Prompter::Answer::Retry;
        QTest::newRow("Abort") << Prompter::Answer::Abort;
    }
    void failingStep()
    {
        QFETCH(Prompter::Answer, answer);
        // The document's destination cannot be written: a file stands where its folder must be.
        QDir(app_ + "/Data").removeRecursively();
        writeFile(app_ + "/Data", "in the way");
        RestoreJob job(nullptr, *prompter_, progress_);
        QVERIFY(job.proceed(zipChoice()));
        int failing = -1;
        for (int i = 0; i < job.rows().size(); ++i)
            if (job.rows().at(i).item.destination.endsWith("Data/BillNew.doc"))
                failing = i;
        QVERIFY(failing >= 0);
        const QString source = job.rows().at(failing).item.source;

        prompter_->then(answer);
        prompter_->onAsk = [&](const Prompter::Question& q) {
            if (q.buttons == Prompter::Buttons::AbortRetryIgnore && answer == Prompter::Answer::Retry)
                QFile::remove(app_ + "/Data");
        };
        const auto outcome = job.restore();

        const QString question = QString("Error While Restoring File [ %1 ]. It is advised to Contact Your Vendor before Proceeding.").arg(source);
        QCOMPARE(prompter_->asked().front().text, question);
        QCOMPARE(prompter_->asked().front().buttons, Prompter::Buttons::AbortRetryIgnore);
        QCOMPARE(prompter_->asked().front().icon, Prompter::Icon::Question);
        const QString restored = QString("Data Restored.\nExisting Data has been Kept as Backup in [%1].").arg(job.keepingFolder());
        if (answer == Prompter::Answer::Ignore) {
            QCOMPARE(outcome, RestoreJob::Outcome::ErrorsIgnored);
            QCOMPARE(prompter_->texts(), (QStringList{question, kIgnored}));
            for (int i = 0; i < job.rows().size(); ++i)
                QCOMPARE(job.rows().at(i).status,
                         QString(i == failing ? "Restroing File Error Ignored by User." : "Restored."));
            QVERIFY(readFile(app_ + "/Confg.ini").contains("mark=new"));
            QCOMPARE(readFile(app_ + "/Data"), QByteArray("in the way"));
            // Left for another try until the screen closes.
            QVERIFY(QFileInfo(source).isFile());
            job.removeExtraction();
            QVERIFY(!QFileInfo::exists(extraction()));
        } else if (answer == Prompter::Answer::Retry) {
            QCOMPARE(outcome, RestoreJob::Outcome::Restored);
            QCOMPARE(prompter_->texts(), (QStringList{question, restored}));
            QCOMPARE(readFile(app_ + "/Data/BillNew.doc"), QByteArray("new bill"));
            QCOMPARE(job.rows().at(failing).status, QString("Restored."));
            QVERIFY(!QFileInfo::exists(extraction()));
        } else {
            // Abort ends the list at once; the closing message does not tell (a known weakness).
            QCOMPARE(outcome, RestoreJob::Outcome::Restored);
            QVERIFY(job.aborted());
            QCOMPARE(prompter_->texts(), (QStringList{question, restored}));
            QCOMPARE(job.rows().at(failing).status, QString("Aborted by User."));
            for (int i = failing + 1; i < job.rows().size(); ++i)
                QCOMPARE(job.rows().at(i).status, QString());
            for (int i = 0; i < failing; ++i)
                QCOMPARE(job.rows().at(i).status, QString("Restored."));
        }
        QVERIFY(test::logContexts().contains("frmrestoration\tCMDRESTORE_CLICK"));
    }

    void eachStepAsksWithItsOwnText_data()
    {
        QTest::addColumn<QString>("block");
        QTest::addColumn<QString>("leadIn");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("path");
        QTest::newRow("keep folder") << "keep Tables" << "Error While Backing Up Existing Folder [ "
                                     << "Backing Up Folder Error Ignored by User." << "destination";
        QTest::newRow("keep file") << "keep Confg.ini" << "Error While Backing Up Existing File [ "
                                   << "Backing Up File Error Ignored by User." << "destination";
        QTest::newRow("restore folder") << "restore Tables" << "Error While Restoring Folder [ "
                                        << "Restroing Folder Error Ignored by User." << "source";
        QTest::newRow("restore file") << "restore Confg.ini" << "Error While Restoring File [ "
                                      << "Restroing File Error Ignored by User." << "source";
    }
    void eachStepAsksWithItsOwnText()
    {
        QFETCH(QString, block);
        QFETCH(QString, leadIn);
        QFETCH(QString, status);
        QFETCH(QString, path);
        const QString name = block.section(' ', 1);
        writeFile(app_ + "/Tables/old", "old table");
        HookProgress progress;
        RestoreJob job(nullptr, *prompter_, progress);
        QVERIFY(job.proceed(zipChoice()));
        int row = -1;
        for (int i = 0; i < job.rows().size(); ++i)
            if (QFileInfo(job.rows().at(i).item.destination).fileName() == name)
                row = i;
        QVERIFY(row >= 0);
        const RestoreItem item = job.rows().at(row).item;
        progress.onText = [&](const QString& text) {
            if (!text.contains(item.source))
                return;
            if (block.startsWith("keep"))
                // Where the old copy should go there is a folder that is not empty.
                writeFile(job.keepingFolder() + "/" + name + "/x/in-the-way", "");
            else
                // The source vanished from the extraction folder.
                QDir(item.source).exists() ? void(QDir(item.source).removeRecursively()) : void(QFile::remove(item.source));
        };
        prompter_->then(Prompter::Answer::Ignore);
        QCOMPARE(job.restore(), RestoreJob::Outcome::ErrorsIgnored);
        QCOMPARE(prompter_->texts(),
                 (QStringList{leadIn + (path == "source" ? item.source : item.destination)
                                  + " ]. It is advised to Contact Your Vendor before Proceeding.",
                              kIgnored}));
        QCOMPARE(job.rows().at(row).status, status);
        if (block.startsWith("keep")) {
            // Ignoring the keeping step is the one way to lose the old copy; the new one is in place.
            QVERIFY(QFileInfo::exists(item.destination));
            QVERIFY(!QFileInfo::exists(app_ + "/Tables/old"));
        }
    }

    void archiveTwoFoldersDeepIsAccepted()
    {
        writeBackupTree(at("deep/FBT05-Mar-26/FBT05-Mar-26"), "deep");
        QFile::remove(archive_);
        packArchive(at("deep"), archive_);
        RestoreJob job(nullptr, *prompter_, progress_);
        QVERIFY(job.proceed(zipChoice()));
        QCOMPARE(job.rows().size(), 4);
        for (const auto& row : job.rows())
            QVERIFY2(row.item.source.startsWith(extraction() + "/deep/FBT05-Mar-26/FBT05-Mar-26/"),
                     qPrintable(row.item.source));
        QCOMPARE(job.restore(), RestoreJob::Outcome::Restored);
        QCOMPARE(readFile(mysql_ + "/fbt/a.MYD"), QByteArray("deep a"));
    }

    void archiveWithoutBackupRoot()
    {
        writeFile(at("plain/SQLDATA/fbt/a.MYD"), "no Tables beside it");
        QFile::remove(archive_);
        packArchive(at("plain"), archive_);
        RestoreJob job(nullptr, *prompter_, progress_);
        QVERIFY(!job.proceed(zipChoice()));
        QCOMPARE(prompter_->texts(), QStringList{"No Folder Found."});
        QCOMPARE(readFile(mysql_ + "/fbt/a.MYD"), QByteArray("old a"));
    }

    void hostileArchiveIsRejected_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<quint32>("mode");
        QTest::newRow("climbs out") << QByteArray("FBT05-Mar-26/../../../app/Confg.ini") << quint32(0);
        QTest::newRow("absolute") << QByteArray("/tmp/corvane-restore-hostile") << quint32(0);
        QTest::newRow("link out") << QByteArray("FBT05-Mar-26/Tables") << quint32(S_IFLNK | 0777);
    }
    void hostileArchiveIsRejected()
    {
        QFETCH(QByteArray, name);
        QFETCH(quint32, mode);
        // A real backup with one entry that would land outside the extraction folder.
        writeRawArchive(archive_, {{"FBT05-Mar-26/SQLDATA/fbt/a.MYD", "evil a"},
                                   {"FBT05-Mar-26/Tables/t", "rows"},
                                   {name, mode ? QByteArray("../../app") : QByteArray("evil"), mode}});
        const QStringList before = treeOf(area_->dir->path());

        RestoreJob job(nullptr, *prompter_, progress_);
        QVERIFY(!job.proceed(zipChoice()));
        QCOMPARE(prompter_->texts(), QStringList{"Could not Extract the Backup File."});
        QVERIFY(job.rows().isEmpty());
        // Only the log line about the refused entry is new.
        QStringList expected = before + QStringList{"app/FBTLogger.log"};
        expected.sort();
        QCOMPARE(treeOf(area_->dir->path()), expected);
        QVERIFY(!QFileInfo::exists("/tmp/corvane-restore-hostile"));
        QVERIFY(readFile(app_ + "/Confg.ini").contains("mark=old"));
        QVERIFY(test::logContexts().contains("ORVZipLib\tUNZIPME"));
    }

    void missingUnzipComponent()
    {
        ObjectRegistry::instance().unregisterClass(kZipLibClass);
        RestoreJob job(nullptr, *prompter_, progress_);
        const bool proceeded = job.proceed(zipChoice());
        registerDefaultComponents();
        QVERIFY(!proceeded);
        QCOMPARE(prompter_->texts(),
                 (QStringList{"Can't Create Object of ORV Unzip Library.", "Could not Extract the Backup File."}));
        QVERIFY(test::logContexts().contains("frmrestoration\tUNZIPME"));
    }

    void candidateDirectories()
    {
        CandidateRoots roots;
        roots.systemMysql = mysql_ + "/";
        writeFile(at("second/FBT"), "program");
        QDir().mkpath(at("third"));
        roots.applicationFolders = {at("missing"), app_, at("third"), at("second")};
        // The server's own directory is offered once, after the system one.
        QCOMPARE(mysqlCandidates(roots, mysql_), QStringList{mysql_ + "/"});
        QDir().mkpath(at("server/mysql"));
        QCOMPARE(mysqlCandidates(roots, at("server")), (QStringList{mysql_ + "/", at("server") + "/"}));
        roots.systemMysql = app_;
        QCOMPARE(mysqlCandidates(roots, QString()), QStringList{});
        QCOMPARE(dataCandidates(roots), (QStringList{app_ + "/", at("second") + "/"}));
        // A link named FBT (the per-user folder's) counts.
        QVERIFY(QFile::link("/nonexistent/FBT", at("third/FBT")));
        QCOMPARE(dataCandidates(roots).size(), 3);
    }
};

CORVANE_TEST_CLASS(RestoreJobTest)
#include "restorejobtest.moc"
