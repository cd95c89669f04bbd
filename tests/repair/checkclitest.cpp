#include "tabledamage.h"

#include "support/clirunner.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

using namespace corvane;
using namespace corvane::test;

// `corvane check [--repair] [--yes]` against really damaged tables.
class CheckCliTest : public QObject, DamageBench {
    Q_OBJECT

    CliResult corvane(const QStringList& args)
    {
        return runCli(QStringList{QStringLiteral("--app-path"), db->appPath()} + databaseArgs(*db) + args,
                      {{QStringLiteral("CORVANE_SYSTEM_DIR"), db->systemPath()}});
    }

private slots:
    void initTestCase() { openBench(QStringLiteral("checkcli")); }
    void cleanupTestCase() { closeBench(); }
    void init()
    {
        files->dropAll();
        files->create(QStringLiteral("accounts"), 10);
        files->create(QStringLiteral("clients"));
    }

    void check_data()
    {
        QTest::addColumn<Damage>("damage");
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("out");      // a regular expression over standard output
        QTest::addColumn<QString>("err");      // a text standard error must contain
        QTest::addColumn<int>("rowsAfter");

        const QString noError = QStringLiteral("^No Error\\.\\n$");
        QTest::newRow("all OK") << Damage::None << QStringList{"check"} << 0 << noError << "" << TableFiles::kRows;
        QTest::newRow("all OK, repair") << Damage::None << QStringList{"check", "--repair"} << 0 << noError
                                        << "Nothing to Repair." << TableFiles::kRows;
        QTest::newRow("lost index found, not repaired")
            << Damage::IndexDeleted << QStringList{"check"} << 1
            << "^clients\\tCan't find file: '\\./[^/]+/clients\\.MYI'[^\\n]*\\nclients\\tOperation failed\\n$"
            << "2 problems found; corvane check --repair repairs them" << -1;
        QTest::newRow("cut data file repaired, the lost rows said")
            << Damage::DataTruncated << QStringList{"check", "--repair"} << 0
            << "^clients\\tSize of datafile is: [^\\n]+\\nclients\\tCorrupt\\nNo Error\\.\\n$"
            << "clients: Number of rows changed from 1000 to 400" << TableFiles::kRowsBeforeCut;
        QTest::newRow("lost data file stays broken")
            << Damage::DataDeleted << QStringList{"check", "--yes", "--repair"} << 1
            << "^clients\\tFile '[^\\n]+clients\\.MYD' not found[^\\n]*\\nclients\\tCorrupt\\n"
               "clients\\tFile '[^\\n]+clients\\.MYD' not found[^\\n]*\\nclients\\tCorrupt\\n$"
            << "Data can not be repaired." << -1;
        QTest::newRow("answer no to the advice: nothing repaired")
            << Damage::MarkedCrashed << QStringList{"--no", "check", "--repair"} << 1
            << "^clients\\tTable is marked as crashed\\n$" << "corvane: nothing repaired" << -1;
    }
    void check()
    {
        QFETCH(Damage, damage);
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, out);
        QFETCH(QString, err);
        QFETCH(int, rowsAfter);
        // GIVEN a table with that damage beside a healthy one
        files->damage(QStringLiteral("clients"), damage);
        // WHEN the command runs
        const CliResult r = corvane(args);
        // THEN its output, its status and the table are as expected
        QVERIFY2(QRegularExpression(out).match(r.out).hasMatch(), qPrintable(r.out + QStringLiteral("---\n") + r.err));
        QVERIFY2(r.err.contains(err), qPrintable(r.err));
        QCOMPARE(r.status, status);
        if (rowsAfter >= 0)
            QCOMPARE(files->count(QStringLiteral("clients")), rowsAfter);
        QCOMPARE(files->count(QStringLiteral("accounts")), 10);
    }

    void wrongUsage_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::newRow("a word") << QStringList{"check", "clients"};
        QTest::newRow("repair with a value") << QStringList{"check", "--repair=yes"};
    }
    void wrongUsage()
    {
        QFETCH(QStringList, args);
        const CliResult r = corvane(args);
        QCOMPARE(r.status, 2);
        QCOMPARE(r.out, QString());
        QVERIFY(!r.err.isEmpty());
    }
};

CORVANE_TEST_CLASS(CheckCliTest)

#include "checkclitest.moc"
