#include "component/components.h"
#include "core/modbase.h"
#include "screens/backup/restorecandidates.h"
#include "screens/backup/restorejob.h"
#include "support/rawarchive.h"
#include "support/testlog.h"
#include "support/testmain.h"
#include "restoretestsupport.h"

#include <QRegularExpression>
#include <QtTest>
#include <sys/stat.h>

using namespace corvane;
using namespace corvane::backup;
using namespace corvane::test;

namespace {

const QString kKept = "Restore_05-Mar-26#";
const QString kIgnored = "Some Errors Ignored during Restoration. Please Retry or Contact your Vendor.";
const QString kNotExtracted = "Could not Extract the Backup File.";

QString restoredText(const RestoreJob& job)
{
    return QString("Data Restored.\nExisting Data has been Kept as Backup in [%1].").arg(job.keepingFolder());
}

// The job's rows as "KIND source > destination", relative to base and sorted.
QStringList rowsOf(const RestoreJob& job, const QString& base)
{
    const QDir dir(base);
    QStringList rows;
    for (const auto& row : job.rows())
        rows << kindMark(row.item.kind) + " " + dir.relativeFilePath(row.item.source) + " > "
                + dir.relativeFilePath(row.item.destination);
    rows.sort();
    return rows;
}

} // namespace

// The restore job on real folders and archives, without a database server:
// the MySQL directory is a folder that looks like one.
class RestoreJobTest : public QObject {
    Q_OBJECT

    std::unique_ptr<RestoreArea> area_;
    std::shared_ptr<HookedPrompter> prompter_;
    NullProgress progress_;

    QString at(const QString& relative) const { return area_->at(relative); }
    QString app() const { return area_->app; }
    QString mysql() const { return area_->mysql; }

    RestoreJob::Choice zipChoice() const
    {
        RestoreJob::Choice c;
        c.archive = area_->archive;
        c.mysqlDirectory = mysql() + '/';
        c.dataDirectory = app() + '/';
        return c;
    }
    RestoreJob::Choice manualChoice(const QString& databases, const QString& data) const
    {
        RestoreJob::Choice c = zipChoice();
        c.mode = RestoreJob::Mode::Manual;
        c.archive.clear();
        c.databasesFolder = databases.isEmpty() ? QString() : at(databases);
        c.dataFolder = data.isEmpty() ? QString() : at(data);
        return c;
    }
    // The extraction folder of the archive.
    QString extraction() const { return at("tmp/FBT05-Mar-26"); }

private slots:
    void initTestCase()
    {
        registerDefaultComponents();
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    }

    void init()
    {
        area_ = std::make_unique<RestoreArea>();
        writeFile(mysql() + "/fbt/old.MYI", "old index");
        writeFile(app() + "/Confg.ini", "[Settings]\nmark=old\n");
        writeFile(app() + "/Data/BillNew.doc", "old bill");

        resetModbase();
        modbase().AppPath = app();
        modbase().vTmpPath = area_->tmp + '/';
        modbase().clock = [] { return QDateTime(kToday, QTime(11, 0)); };
        prompter_ = std::make_shared<HookedPrompter>();
        modbase().prompter = prompter_;
    }

    void zipRestoreReplacesAndKeeps()
    {
        // GIVEN a MySQL directory whose server database folder is named in other case
        QVERIFY(QDir(mysql()).rename("mysql", "MySQL"));
        RestoreJob job(nullptr, *prompter_, progress_);
        QVERIFY(job.proceed(zipChoice()));
        const QString root = "tmp/FBT05-Mar-26/FBT05-Mar-26";
        QCOMPARE(rowsOf(job, area_->dir->path()),
                 (QStringList{"DB " + root + "/SQLDATA/fbt > mysql-data/fbt", "FL " + root + "/BillNew.doc > app/Data/BillNew.doc",
                              "FL " + root + "/Confg.ini > app/Confg.ini", "FL " + root + "/RECPNEW.DOC > app/Data/RECPNEW.DOC",
                              "FLD " + root + "/Tables > app/Tables"}));

        QCOMPARE(job.restore(), RestoreJob::Outcome::Restored);
        const QString kept = app() + "/" + kKept + "1";
        QCOMPARE(job.keepingFolder(), kept);
        QCOMPARE(prompter_->texts(), QStringList{restoredText(job)});
        for (const auto& row : job.rows())
            QCOMPARE(row.status, QString("Restored."));
        // The backup is in place, nothing of the old is left beside it ...
        QCOMPARE(treeOf(mysql() + "/fbt"), (QStringList{"a.MYD", "a.frm"}));
        QCOMPARE(readFile(mysql() + "/fbt/a.MYD"), QByteArray("new a"));
        QCOMPARE(readFile(app() + "/Data/BillNew.doc"), QByteArray("new bill"));
        QCOMPARE(readFile(app() + "/Tables/FBT_Info"), QByteArray("new rows"));
        QVERIFY(readFile(app() + "/Confg.ini").contains("mark=new"));
        // ... and everything replaced can be found in the keeping folder
        QCOMPARE(treeOf(kept), (QStringList{"BillNew.doc", "Confg.ini", "SQLDATA", "SQLDATA/fbt", "SQLDATA/fbt/a.MYD",
                                            "SQLDATA/fbt/old.MYI"}));
        QCOMPARE(readFile(kept + "/SQLDATA/fbt/a.MYD"), QByteArray("old a"));
        QCOMPARE(readFile(kept + "/BillNew.doc"), QByteArray("old bill"));
        QVERIFY(readFile(kept + "/Confg.ini").contains("mark=old"));
        // The server's own database and the program are untouched; the extraction is gone.
        QVERIFY(QFileInfo(mysql() + "/MySQL").isDir());
        QCOMPARE(readFile(app() + "/FBT"), QByteArray("program"));
        QVERIFY(!QFileInfo::exists(extraction()));
        QVERIFY(job.completed());
    }

    void refusedChoices_data()
    {
        QTest::addColumn<QString>("what"); // the path given to the field
        QTest::addColumn<QString>("message");
        QTest::addColumn<int>("field");
        using F = RestoreJob::Field;
        const QString noFile = "Backup File does not Exists.";
        const QString notMysql = "[%1] not a Valid MySql Directory.";
        const QString notData = "[%1] not a Valid Data Directory.";
        QTest::newRow("no backup file") << "" << "Please Select a Backup File." << int(F::BackupFile);
        QTest::newRow("missing backup file") << "missing.zip" << noFile << int(F::BackupFile);
        QTest::newRow("backup file is a folder") << "tmp" << noFile << int(F::BackupFile);
        QTest::newRow("no MySQL directory") << "" << "Please Specify MySql Directory." << int(F::MysqlDirectory);
        QTest::newRow("MySQL directory without mysql") << "app" << notMysql << int(F::MysqlDirectory);
        QTest::newRow("no data directory") << "" << "Please Specify Data Directory." << int(F::DataDirectory);
        QTest::newRow("data directory without FBT") << "mysql-data" << notData << int(F::DataDirectory);
        QTest::newRow("FBT is a folder") << "fake" << notData << int(F::DataDirectory);
    }
    void refusedChoices()
    {
        QFETCH(QString, what);
        QFETCH(QString, message);
        QFETCH(int, field);
        QDir().mkpath(at("fake/FBT"));
        writeFile(at("fake/Confg.ini"), "data but no program");
        RestoreJob::Choice choice = zipChoice();
        const QString path = what.isEmpty() ? QString() : at(what);
        using F = RestoreJob::Field;
        QString& box = field == int(F::BackupFile) ? choice.archive
            : field == int(F::MysqlDirectory)      ? choice.mysqlDirectory
                                                   : choice.dataDirectory;
        box = path;
        RestoreJob job(nullptr, *prompter_, progress_);
        QVERIFY(!job.proceed(choice));
        QCOMPARE(prompter_->texts(), QStringList{message.contains("%1") ? message.arg(path) : message});
        QCOMPARE(int(job.failedField()), field);
        QVERIFY(job.rows().isEmpty());
        QCOMPARE(treeOf(area_->tmp), QStringList());
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
        QVERIFY(job.proceed(manualChoice(databases, data)));
        QCOMPARE(rowsOf(job, area_->dir->path()), rows);
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
        QCOMPARE(job.proceed(manualChoice(databases, data)), proceeds);
        QCOMPARE(prompter_->texts(), texts);
        if (!texts.first().endsWith("Exists."))
            QCOMPARE(prompter_->asked().front().buttons, Prompter::Buttons::YesNo);
    }

    void sourceEqualToDestinationIsRefused()
    {
        QDir().mkpath(app() + "/Tables");
        RestoreJob job(nullptr, *prompter_, progress_);
        prompter_->then(Prompter::Answer::Yes);
        QVERIFY(job.proceed(manualChoice(QString(), "app/")));
        prompter_->clear();
        QCOMPARE(job.restore(), RestoreJob::Outcome::Refused);
        QCOMPARE(prompter_->texts(), QStringList{"Source Path and Destination Path can not be Same."});
        QVERIFY(!job.completed());
        QVERIFY(QDir(app()).entryList({"Restore_*"}, QDir::Dirs).isEmpty());
        QCOMPARE(readFile(app() + "/Data/BillNew.doc"), QByteArray("old bill"));
    }

    // The first free of ten keeping folders; past ten the eleventh is used again, whatever is in the way there.
    void keepingFolder_data()
    {
        QTest::addColumn<int>("existing");
        QTest::addColumn<QString>("inTheWay");
        QTest::addColumn<int>("expected");
        QTest::newRow("none yet") << 0 << "" << 1;
        QTest::newRow("nine") << 9 << "" << 10;
        QTest::newRow("ten, a read-only folder of read-only files") << 10 << "folder" << 11;
        QTest::newRow("ten, a read-only file") << 10 << "file" << 11;
    }
    void keepingFolder()
    {
        QFETCH(int, existing);
        QFETCH(QString, inTheWay);
        QFETCH(int, expected);
        for (int n = 1; n <= existing; ++n)
            QDir().mkpath(app() + "/" + kKept + QString::number(n));
        const QString eleventh = app() + "/" + kKept + "11";
        if (inTheWay == "file") {
            writeFile(eleventh, "a file in the way");
            QVERIFY(::chmod(QFile::encodeName(eleventh).constData(), 0444) == 0);
        } else if (inTheWay == "folder") {
            writeFile(eleventh + "/SQLDATA/fbt/a.MYD", "kept before");
            QVERIFY(::chmod(QFile::encodeName(eleventh + "/SQLDATA/fbt/a.MYD").constData(), 0444) == 0);
            QVERIFY(::chmod(QFile::encodeName(eleventh + "/SQLDATA/fbt").constData(), 0555) == 0);
        }
        const QString kept = app() + "/" + kKept + QString::number(expected);
        RestoreJob job(nullptr, *prompter_, progress_);
        QVERIFY(job.proceed(zipChoice()));
        QCOMPARE(job.restore(), RestoreJob::Outcome::Restored);
        QCOMPARE(job.keepingFolder(), kept);
        QCOMPARE(readFile(kept + "/SQLDATA/fbt/a.MYD"), QByteArray("old a"));
        QVERIFY(!QFileInfo::exists(app() + "/" + kKept + "12"));
    }

    // One step of one row fails; the question names the step, the answer decides the rest.
    void failingStep_data()
    {
        QTest::addColumn<QString>("step");
        QTest::addColumn<Prompter::Answer>("answer");
        QTest::addColumn<QString>("leadIn");
        QTest::addColumn<QString>("status");
        using A = Prompter::Answer;
        QTest::newRow("keep folder, Ignore") << "keep Tables" << A::Ignore << "Error While Backing Up Existing Folder [ "
                                             << "Backing Up Folder Error Ignored by User.";
        QTest::newRow("keep file, Ignore") << "keep Confg.ini" << A::Ignore << "Error While Backing Up Existing File [ "
                                           << "Backing Up File Error Ignored by User.";
        QTest::newRow("restore folder, Ignore") << "restore Tables" << A::Ignore << "Error While Restoring Folder [ "
                                                << "Restroing Folder Error Ignored by User.";
        QTest::newRow("restore file, Ignore") << "restore BillNew.doc" << A::Ignore << "Error While Restoring File [ "
                                              << "Restroing File Error Ignored by User.";
        QTest::newRow("restore file, Retry after the cause is gone") << "restore BillNew.doc" << A::Retry
                                                                     << "Error While Restoring File [ " << "Restored.";
        QTest::newRow("restore file, Abort") << "restore BillNew.doc" << A::Abort << "Error While Restoring File [ "
                                             << "Aborted by User.";
    }
    void failingStep()
    {
        QFETCH(QString, step);
        QFETCH(Prompter::Answer, answer);
        QFETCH(QString, leadIn);
        QFETCH(QString, status);
        const bool keep = step.startsWith("keep");
        const QString name = step.section(' ', 1);
        writeFile(app() + "/Tables/old", "old table");
        HookProgress progress;
        RestoreJob job(nullptr, *prompter_, progress);
        QVERIFY(job.proceed(zipChoice()));
        int failing = -1;
        for (int i = 0; i < job.rows().size(); ++i)
            if (QFileInfo(job.rows().at(i).item.destination).fileName() == name)
                failing = i;
        QVERIFY(failing >= 0);
        const RestoreItem item = job.rows().at(failing).item;
        const QString aside = item.source + ".aside";
        progress.onText = [&](const QString& text) {
            if (!text.contains(item.source))
                return;
            if (keep) // where the old copy should go there is a folder that is not empty
                writeFile(job.keepingFolder() + "/" + name + "/x/in-the-way", "");
            else // the source left the extraction folder
                QVERIFY(QDir().rename(item.source, aside));
        };
        prompter_->onAsk = [&](const Prompter::Question& q) {
            if (q.buttons == Prompter::Buttons::AbortRetryIgnore && answer == Prompter::Answer::Retry)
                QVERIFY(QDir().rename(aside, item.source));
        };
        prompter_->then(answer);
        const auto outcome = job.restore();

        const QString question = leadIn + (keep ? item.destination : item.source)
            + " ]. It is advised to Contact Your Vendor before Proceeding.";
        QCOMPARE(prompter_->asked().front().buttons, Prompter::Buttons::AbortRetryIgnore);
        const bool ignored = answer == Prompter::Answer::Ignore;
        QCOMPARE(prompter_->texts(), (QStringList{question, ignored ? kIgnored : restoredText(job)}));
        QCOMPARE(outcome, ignored ? RestoreJob::Outcome::ErrorsIgnored : RestoreJob::Outcome::Restored);
        // Abort ends the list at once; the closing message does not tell (a known weakness).
        QCOMPARE(job.aborted(), answer == Prompter::Answer::Abort);
        QCOMPARE(job.rows().at(failing).status, status);
        for (int i = 0; i < job.rows().size(); ++i)
            if (i != failing)
                QCOMPARE(job.rows().at(i).status, QString(job.aborted() && i > failing ? "" : "Restored."));
        if (keep) {
            // Ignoring the keeping step is the one way to lose the old copy; the new one is in place.
            QVERIFY(QFileInfo::exists(item.destination));
            QVERIFY(!QFileInfo::exists(app() + "/Tables/old"));
        }
        if (answer == Prompter::Answer::Retry)
            QCOMPARE(readFile(app() + "/Data/BillNew.doc"), QByteArray("new bill"));
        // An ignored error leaves the extraction for another try until the screen closes.
        QCOMPARE(QFileInfo::exists(extraction()), ignored);
        job.removeExtraction();
        QVERIFY(!QFileInfo::exists(extraction()));
        QVERIFY(test::logContexts().contains("frmrestoration\tCMDRESTORE_CLICK"));
    }

    // Archives that cannot be restored (which entries the unpacking refuses is the zip component's test);
    // nothing outside the extraction folder changes but the log.
    void unusableArchiveIsRefused_data()
    {
        QTest::addColumn<QByteArray>("name"); // an entry beside the database's; "" for no unpacking component
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<QString>("logged");
        QTest::newRow("climbs out") << QByteArray("FBT05-Mar-26/../../../app/Confg.ini") << QStringList{kNotExtracted}
                                    << "ORVZipLib\tUNZIPME";
        QTest::newRow("no Tables beside SQLDATA") << QByteArray("FBT05-Mar-26/Other/t") << QStringList{"No Folder Found."} << "";
        QTest::newRow("no unzip component") << QByteArray() << QStringList{"Can't Create Object of ORV Unzip Library.", kNotExtracted}
                                            << "frmrestoration\tUNZIPME";
    }
    void unusableArchiveIsRefused()
    {
        QFETCH(QByteArray, name);
        QFETCH(QStringList, messages);
        QFETCH(QString, logged);
        if (name.isEmpty())
            ObjectRegistry::instance().unregisterClass(kZipLibClass);
        else
            writeRawArchive(area_->archive, {{"FBT05-Mar-26/SQLDATA/fbt/a.MYD", "evil a"}, {name, "evil"}});
        const auto outside = [&] {
            return treeOf(area_->dir->path()).filter(QRegularExpression("^(?!tmp/FBT05-Mar-26|app/FBTLogger.log)"));
        };
        const QStringList before = outside();

        RestoreJob job(nullptr, *prompter_, progress_);
        const bool proceeded = job.proceed(zipChoice());
        registerDefaultComponents();
        QVERIFY(!proceeded);
        QCOMPARE(prompter_->texts(), messages);
        QVERIFY(job.rows().isEmpty());
        QCOMPARE(outside(), before);
        QVERIFY(readFile(app() + "/Confg.ini").contains("mark=old"));
        QCOMPARE(readFile(mysql() + "/fbt/a.MYD"), QByteArray("old a"));
        if (!logged.isEmpty())
            QVERIFY(test::logContexts().contains(logged));
    }

    void candidateDirectories()
    {
        CandidateRoots roots;
        roots.systemMysql = mysql() + "/";
        writeFile(at("second/FBT"), "program");
        QDir().mkpath(at("third"));
        roots.applicationFolders = {at("missing"), app(), at("third"), at("second")};
        // The server's own directory is offered once, after the system one.
        QCOMPARE(mysqlCandidates(roots, mysql()), QStringList{mysql() + "/"});
        QDir().mkpath(at("server/mysql"));
        QCOMPARE(mysqlCandidates(roots, at("server")), (QStringList{mysql() + "/", at("server") + "/"}));
        roots.systemMysql = app();
        QCOMPARE(mysqlCandidates(roots, QString()), QStringList{});
        QCOMPARE(dataCandidates(roots), (QStringList{app() + "/", at("second") + "/"}));
        // A link named FBT (the per-user folder's) counts.
        QVERIFY(QFile::link("/nonexistent/FBT", at("third/FBT")));
        QCOMPARE(dataCandidates(roots).size(), 3);
    }
};

CORVANE_TEST_CLASS(RestoreJobTest)
#include "restorejobtest.moc"
