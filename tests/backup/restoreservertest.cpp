#include "component/components.h"
#include "core/modbase.h"
#include "db/privateserver.h"
#include "db/schema.h"
#include "screens/backup/backupjob.h"
#include "screens/backup/restorejob.h"
#include "support/prompts.h"
#include "support/testdatabase.h"
#include "support/testmain.h"
#include "restoretestsupport.h"

#include <QtTest>

using namespace corvane;
using namespace corvane::backup;
using namespace corvane::test;

namespace {

QStringList clientRows(Connection& c)
{
    QStringList rows;
    for (const auto& row : c.query("Select Code_No, Name from FBT_Info order by Code_No").rows)
        rows << row.value(0).toString() + "|" + row.value(1).toString();
    return rows;
}

} // namespace

// A backup of the run's database restored into a fresh application folder
// whose own private server is running, as FBT does it.
class RestoreServerTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> source_;
    QTemporaryDir app_;
    QTemporaryDir work_;
    std::unique_ptr<PrivateServer> server_;
    std::shared_ptr<Connection> target_;
    std::shared_ptr<ScriptedPrompter> prompter_;
    QString archive_;

    RestoreJob::Choice choice() const
    {
        RestoreJob::Choice c;
        c.archive = archive_;
        c.mysqlDirectory = server_->dataDir() + "/";
        c.dataDirectory = app_.path();
        return c;
    }

private slots:
    void initTestCase()
    {
        registerDefaultComponents();
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
        source_ = std::make_unique<TestDatabase>("restoresrc");
        (*source_)->execute("Insert into FBT_Info (Code_No, Name) values ('A001', 'ASHOKA EXPORTS'),"
                            " ('B002', 'BHARAT \\'N\\' SONS'), ('C003', 'CHANDRA & CO')");
        modbase().clock = [] { return QDateTime(kToday, QTime(9, 0)); };
        modbase().vTmpPath = work_.path() + "/";
        prompter_ = std::make_shared<ScriptedPrompter>();
        NullProgress progress;
        QDir().mkpath(work_.filePath("dest"));
        BackupJob backup(*source_->connection(), *prompter_, progress);
        QCOMPARE(backup.run(work_.filePath("dest")), BackupJob::Outcome::Completed);
        archive_ = backup.archivePath();

        // The fresh application folder with its own running server and its own data.
        writeFile(app_.filePath("FBT"), "program");
        server_ = std::make_unique<PrivateServer>(app_.path());
        server_->start();
        target_ = std::make_shared<Connection>();
        ConnectionSettings s;
        s.privateServer = false;
        s.socket = server_->socketPath();
        s.user = "root";
        s.database = source_->name();
        target_->open(s, true);
        schema::createMissingTables(*target_);
        target_->execute("Insert into FBT_Info (Code_No, Name) values ('Z999', 'LOCAL ONLY')");
    }

    void cleanupTestCase()
    {
        target_.reset();
        if (server_)
            server_->stop();
        source_.reset();
    }

    void init()
    {
        modbase().AppPath = app_.path();
        modbase().CnnObj = target_;
        modbase().vTmpPath = work_.path() + "/";
        prompter_ = installPrompter();
    }

    void abortWhileStoppedStartsTheServerAgain()
    {
        const qint64 before = server_->runningPid();
        HookProgress progress;
        RestoreJob job(target_.get(), *prompter_, progress);
        QVERIFY(job.proceed(choice()));
        progress.onText = [&](const QString& text) {
            // The old copy of the database cannot be put aside.
            if (text.contains("/SQLDATA/" + source_->name() + "]")) {
                QVERIFY(!server_->answers());
                writeFile(job.keepingFolder() + "/SQLDATA/" + source_->name() + "/x/in-the-way", "");
            }
        };
        prompter_->then(Prompter::Answer::Abort);
        QCOMPARE(job.restore(), RestoreJob::Outcome::Restored);
        QVERIFY(job.aborted());
        QVERIFY2(job.serverProblems().isEmpty(), qPrintable(job.serverProblems().join('\n')));
        QVERIFY(server_->answers());
        QVERIFY(server_->runningPid() != before);
        QVERIFY(target_->isOpen());
        QCOMPARE(clientRows(*target_), QStringList{"Z999|LOCAL ONLY"});
    }

    void backupRestoredIntoAFreshApplicationFolderGivesTheSameRows()
    {
        const qint64 before = server_->runningPid();
        NullProgress progress;
        RestoreJob job(target_.get(), *prompter_, progress);
        QVERIFY(job.proceed(choice()));
        QCOMPARE(job.restore(), RestoreJob::Outcome::Restored);
        QVERIFY2(job.serverProblems().isEmpty(), qPrintable(job.serverProblems().join('\n')));
        // The server was stopped for the copy and runs again; the host's connection works.
        QVERIFY(server_->runningPid() != before);
        QVERIFY(target_->isOpen());
        QCOMPARE(clientRows(*target_), clientRows(*source_->connection()));
        QCOMPARE(clientRows(*target_).size(), 3);
        // What was there before is kept.
        const QString kept = fileNamedAnyCase(job.keepingFolder() + "/SQLDATA/" + source_->name(), "FBT_Info.MYD");
        QVERIFY(readFile(kept).contains("LOCAL ONLY"));
    }
};

CORVANE_TEST_CLASS(RestoreServerTest)
#include "restoreservertest.moc"
