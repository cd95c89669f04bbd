#include "component/components.h"
#include "core/modbase.h"
#include "support/clirunner.h"
#include "support/testdatabase.h"
#include "support/testmain.h"
#include "restoretestsupport.h"

#include <QRegularExpression>
#include <QtTest>

using namespace corvane;
using namespace corvane::test;

// `corvane restore` from a shell; the MySQL directory is a folder that looks like one.
class RestoreCliTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db_;
    std::unique_ptr<RestoreArea> area_;

    QString at(const QString& relative) const { return area_->at(relative); }
    CliResult restore(const QStringList& args)
    {
        return runCli(databaseArgs(*db_) + QStringList{"--app-path", area_->app, "restore"} + args,
                      {{"TMPDIR", at("tmp")}});
    }
    // Each run extracts into a folder of its own under TMPDIR and leaves nothing there.
    bool tmpIsEmpty() const { return QDir(at("tmp")).isEmpty(); }
    QStringList kept() const { return QDir(area_->app).entryList({"Restore_*"}, QDir::Dirs); }

private slots:
    void initTestCase()
    {
        registerDefaultComponents();
        db_ = std::make_unique<TestDatabase>("restorecli");
    }
    void cleanupTestCase() { db_.reset(); }

    void init()
    {
        area_ = std::make_unique<RestoreArea>("backup");
        writeFile(area_->app + "/Confg.ini", "[Settings]\nmark=old\n");
    }

    void listsThenRestoresPrintingEveryRow()
    {
        // WHEN the rows are only listed THEN nothing is restored
        CliResult r = restore({area_->archive, "--mysql-dir", area_->mysql, "--list"});
        QVERIFY2(r.status == 0, qPrintable(r.err));
        QStringList lines = r.out.trimmed().replace(QRegularExpression("/corvane-[^/]+/"), "/run/").split('\n');
        lines.sort();
        const QString root = at("tmp/run/backup/backup");
        QCOMPARE(lines, (QStringList{root + "/BillNew.doc\t" + area_->app + "/Data/BillNew.doc\tFL",
                                     root + "/Confg.ini\t" + area_->app + "/Confg.ini\tFL",
                                     root + "/RECPNEW.DOC\t" + area_->app + "/Data/RECPNEW.DOC\tFL",
                                     root + "/SQLDATA/fbt\t" + area_->mysql + "/fbt\tDB",
                                     root + "/Tables\t" + area_->app + "/Tables\tFLD"}));
        QCOMPARE(readFile(area_->mysql + "/fbt/a.MYD"), QByteArray("old a"));
        QVERIFY(kept().isEmpty());
        QVERIFY(tmpIsEmpty());

        // WHEN they are restored THEN each row and the closing message are printed
        r = restore({area_->archive, "--mysql-dir", area_->mysql + "/", "--data-dir", area_->app});
        QVERIFY2(r.status == 0, qPrintable(r.err));
        lines = r.out.trimmed().split('\n');
        QCOMPARE(lines.size(), 5 + 2);
        QCOMPARE(lines.mid(0, 5).filter(QRegularExpression("\tRestored\\.$")).size(), 5);
        QCOMPARE(lines.at(5), QString("Data Restored."));
        QCOMPARE(kept().size(), 1);
        QCOMPARE(lines.at(6), QString("Existing Data has been Kept as Backup in [%1/%2].").arg(area_->app, kept().first()));
        QVERIFY2(!r.err.contains("Data Restored."), qPrintable(r.err));
        QCOMPARE(readFile(area_->mysql + "/fbt/a.MYD"), QByteArray("new a"));
        QVERIFY(tmpIsEmpty());
    }

    void failingStep_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("closing");
        QTest::addColumn<QString>("answer");
        QTest::newRow("--on-error ignore") << QStringList{"--on-error", "ignore"} << "Restroing File Error Ignored by User."
                                           << "Some Errors Ignored during Restoration. Please Retry or Contact your Vendor."
                                           << "[ignore]";
        QTest::newRow("no terminal aborts") << QStringList{} << "Aborted by User." << "Data Restored." << "[abort]";
    }
    void failingStep()
    {
        QFETCH(QStringList, options);
        QFETCH(QString, status);
        QFETCH(QString, closing);
        QFETCH(QString, answer);
        writeFile(area_->app + "/Data", "a file where the folder must be");
        const CliResult r = restore(QStringList{area_->archive, "--mysql-dir", area_->mysql} + options);
        QCOMPARE(r.status, 1);
        // Both documents fail; the first one tried gets the answer.
        QVERIFY2(r.out.contains("\tFL\t" + status + "\n"), qPrintable(r.out));
        QVERIFY2(r.out.contains("\n" + closing), qPrintable(r.out));
        QVERIFY2(r.err.contains("Error While Restoring File [ "), qPrintable(r.err));
        QVERIFY2(r.err.contains("before Proceeding. " + answer), qPrintable(r.err));
    }

    void refusedAndWrongUsage_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("message");
        QTest::newRow("no archive") << QStringList{} << 2 << "missing arguments";
        QTest::newRow("archive and folders") << QStringList{"ARCHIVE", "--db-folder", "x"} << 2 << "either";
        QTest::newRow("manual without databases, no terminal") << QStringList{"--data-folder", "APP", "--mysql-dir", "MYSQL"}
                                                               << 1 << "Database will not be Restored. [no]";
    }
    void refusedAndWrongUsage()
    {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, message);
        for (QString& a : args)
            a.replace("ARCHIVE", area_->archive).replace("MYSQL", area_->mysql).replace("APP", area_->app);
        const CliResult r = restore(args);
        QCOMPARE(r.status, status);
        QVERIFY2(r.err.contains(message), qPrintable(r.err));
        QVERIFY(kept().isEmpty());
    }

    void manualModeRestoresFolders()
    {
        writeFile(at("old/Data/RecpNew.doc"), "recp");
        writeFile(at("dbs/FBT/a.MYD"), "manual a");
        const CliResult r = restore({"--db-folder", at("dbs/FBT"), "--data-folder", at("old"), "--mysql-dir", area_->mysql});
        QVERIFY2(r.status == 0, qPrintable(r.err));
        QCOMPARE(readFile(area_->mysql + "/FBT/a.MYD"), QByteArray("manual a"));
        QCOMPARE(readFile(area_->app + "/Data/RecpNew.doc"), QByteArray("recp"));
        // The backed-up folders were copied, not moved.
        QCOMPARE(readFile(at("dbs/FBT/a.MYD")), QByteArray("manual a"));
    }
};

CORVANE_TEST_CLASS(RestoreCliTest)
#include "restoreclitest.moc"
