#include "screens/backup/archivelayout.h"
#include "support/clirunner.h"
#include "support/files.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QDateTime>
#include <QtTest>

using namespace corvane;

// `corvane backup` from a shell, against the run's server.
class BackupCliTest : public QObject {
    Q_OBJECT

    std::unique_ptr<test::TestDatabase> db_;
    QTemporaryDir dest_;

    QString archive() const
    {
        return backup::archiveFilePath(dest_.path(), backup::archiveBaseName(QDate::currentDate()));
    }
    test::CliResult backUp(const QStringList& args)
    {
        return test::runCli(test::databaseArgs(*db_) + QStringList{"--app-path", db_->appPath(), "backup"} + args);
    }

private slots:
    void initTestCase() { db_ = std::make_unique<test::TestDatabase>(QStringLiteral("backupcli")); }
    void cleanupTestCase() { db_.reset(); }

    void backsUpThenAsksBeforeReplacing()
    {
        test::CliResult r = backUp({dest_.path()});
        QVERIFY2(r.status == 0, qPrintable(r.err));
        QCOMPARE(r.out.trimmed(), archive());
        QVERIFY(r.err.contains("Backup Completed."));
        const QByteArray before = test::readFile(archive());
        QVERIFY(before.startsWith("PK"));

        // No terminal and no --yes: the question is refused, the archive kept.
        r = backUp({dest_.path()});
        QCOMPARE(r.status, 1);
        QVERIFY2(r.err.contains(QString("File [%1] already Exists. Do you want to delete it? [no]").arg(archive())),
                 qPrintable(r.err));
        QVERIFY(r.out.isEmpty());
        QVERIFY(test::readFile(archive()) == before);

        r = backUp({dest_.path(), "--yes"});
        QVERIFY2(r.status == 0, qPrintable(r.err));
        QCOMPARE(r.out.trimmed(), archive());
    }

    void keepDeletesAllButTheNewest()
    {
        const QDateTime now = QDateTime::currentDateTime();
        const QStringList older{"FBT01-Jan-20.ZIP", "FBT02-Jan-20.ZIP", "FBT03-Jan-20.ZIP"};
        for (int i = 0; i < older.size(); ++i) {
            QFile f(dest_.filePath(older.at(i)));
            QVERIFY(f.open(QIODevice::WriteOnly));
            QVERIFY(f.setFileTime(now.addDays(-10 + i), QFileDevice::FileModificationTime));
        }
        test::writeFile(dest_.filePath("notes.ZIP"), "");

        const test::CliResult r = backUp({dest_.path(), "--yes", "--keep", "2"});
        QVERIFY2(r.status == 0, qPrintable(r.err));
        const QStringList left = QDir(dest_.path()).entryList({"*.ZIP"}, QDir::Files); // by name
        QStringList expected{QFileInfo(archive()).fileName(), "FBT03-Jan-20.ZIP", "notes.ZIP"};
        expected.sort();
        QCOMPARE(left, expected);
    }

    void failuresAndWrongUsage_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("message");
        QTest::newRow("missing folder") << QStringList{"/nonexistent/corvane"} << 1 << "Directory does not Exists.";
        QTest::newRow("keep zero") << QStringList{"/tmp", "--keep", "0"} << 2 << "--keep takes a number";
        QTest::newRow("keep not a number") << QStringList{"/tmp", "--keep", "x"} << 2 << "--keep takes a number";
        QTest::newRow("two folders") << QStringList{"/tmp", "/var"} << 2 << "unexpected argument /var";
    }
    void failuresAndWrongUsage()
    {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, message);
        const test::CliResult r = backUp(args);
        QCOMPARE(r.status, status);
        QVERIFY2(r.err.contains(message), qPrintable(r.err));
        QVERIFY(r.out.isEmpty());
    }
};

CORVANE_TEST_CLASS(BackupCliTest)
#include "backupclitest.moc"
