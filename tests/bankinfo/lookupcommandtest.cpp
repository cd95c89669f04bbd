#include "support/clirunner.h"
#include "support/files.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QTemporaryDir>

using namespace corvane;
using namespace corvane::test;

using Run = corvane::test::CliResult;

// The corvane command as a user runs it, against the test database.
class LookupCommandTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db;
    QTemporaryDir files;

    Run corvane(const QStringList& args)
    {
        return runCli(QStringList{"--app-path", db->appPath()} + databaseArgs(*db) + args);
    }
    QString write(const QString& name, const QByteArray& bytes)
    {
        const QString path = files.filePath(name);
        writeFile(path, bytes);
        return path;
    }

private slots:
    void initTestCase() { db = std::make_unique<TestDatabase>(QStringLiteral("lookupcli")); }
    void cleanupTestCase() { db.reset(); }

    void importReportsRowsAndRefusedLines()
    {
        // GIVEN an AO list with a bad line
        const QString path = write(QStringLiteral("ao.csv"),
                                   "CITY,AREA CODE,AO TYPE,RANGE CODE,AO NUMBER,JURISDICTION\r\n"
                                   "PUNE,PNE,C,1,2,CIRCLE 1(2)\r\n"
                                   "PUNE,PN,C,1,3,\r\n"
                                   "PUNE,PNE,W,4,1,WARD 4(1)\r\n");
        // WHEN it is imported
        const Run run = corvane({"lookup", "import", "ao", path});
        // THEN the rows loaded and the refused line are reported, and the command succeeds
        QCOMPARE(run.status, 0);
        QVERIFY2(run.out.contains(QStringLiteral("ao.csv: 2 rows loaded into the Assessing Officer list from 3 lines")), qPrintable(run.out));
        QVERIFY(run.out.contains(QStringLiteral("the list now holds 2 rows")));
        QVERIFY(run.out.contains(QStringLiteral("1 line refused:\n  line 3: AREA CODE 'PN' is not three letters\n")));
        QCOMPARE(db->count(QStringLiteral("MiscInf_AO")), 2);
        // AND find shows them as the chooser would
        const Run find = corvane({"lookup", "find", "ao", "pune", "ward"});
        QCOMPARE(find.status, 0);
        QCOMPARE(find.out, QStringLiteral("City\tArea Code\tAO Type\tRange Code\tAO No.\tJurisdiction\nPUNE\tPNE\tW\t4\t1\tWARD 4(1)\n"));
    }

    void badUsesAreRefused_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("message");
        QTest::newRow("wrong columns") << QStringList{"lookup", "import", "micr", "@ao"} << 1
                                       << "ao.csv cannot be read as the MICR list: its first line (line 1) lacks the columns MICR, BANK, BRANCH";
        QTest::newRow("unknown list") << QStringList{"lookup", "import", "ifsc", "@ao"} << 2 << "unknown list ifsc: use banks, micr or ao";
        QTest::newRow("missing file") << QStringList{"lookup", "import", "banks", "/nonexistent.csv"} << 2 << "/nonexistent.csv: no such file";
        QTest::newRow("no file named") << QStringList{"lookup", "import", "banks"} << 2 << "missing arguments";
        QTest::newRow("unknown action") << QStringList{"lookup", "load", "banks"} << 2 << "unknown action load: use import or find";
        QTest::newRow("every line refused") << QStringList{"lookup", "import", "banks", "@bad"} << 1 << "";
    }
    void badUsesAreRefused()
    {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, message);
        write(QStringLiteral("ao.csv"), "CITY,AREA CODE,AO TYPE,RANGE CODE,AO NUMBER\nPUNE,PNE,C,1,2\n");
        write(QStringLiteral("bad.csv"), "BANK,IFSC,BRANCH\nSBI,NOT-IFSC,FORT\n");
        for (QString& a : args)
            if (a.startsWith(QLatin1Char('@')))
                a = files.filePath(a.mid(1) + QStringLiteral(".csv"));
        const Run run = corvane(args);
        QCOMPARE(run.status, status);
        QVERIFY2(run.err.contains(message), qPrintable(run.err));
    }

    void dbInitDemoLoadsTheDemoListsOnce()
    {
        // GIVEN empty bank lists and an Assessing Officer list of one row
        for (const char* table : {"MiscInf_Branch", "MiscInf_MICR", "MiscInf_AO"})
            (*db)->execute(QStringLiteral("drop table if exists ") + QLatin1String(table));
        const QString ao = write(QStringLiteral("one-ao.csv"), "CITY,AREA CODE,AO TYPE,RANGE CODE,AO NUMBER\nPUNE,PNE,C,1,2\n");
        QCOMPARE(corvane({"lookup", "import", "ao", ao}).status, 0);
        // WHEN the database is set up with demo data, twice
        const Run first = corvane({"db", "init", "--demo"});
        const Run second = corvane({"db", "init", "--demo"});
        // THEN the first run fills the empty lists from the shipped demo files, the second adds nothing
        QCOMPARE(first.status, 0);
        QVERIFY2(first.out.contains(QStringLiteral("bank branch list: 30 demo rows loaded")), qPrintable(first.out + first.err));
        QVERIFY(first.out.contains(QStringLiteral("MICR list: 30 demo rows loaded")));
        QCOMPARE(second.status, 0);
        QVERIFY(second.out.contains(QStringLiteral("MICR list holds 30 rows: no demo rows added")));
        QCOMPARE(db->count(QStringLiteral("MiscInf_Branch")), 30);
        QCOMPARE(db->count(QStringLiteral("MiscInf_MICR")), 30);
        // AND a list that holds rows is left as it is
        QVERIFY(first.out.contains(QStringLiteral("Assessing Officer list holds 1 row: no demo rows added")));
        QCOMPARE(db->count(QStringLiteral("MiscInf_AO")), 1);
    }
};

CORVANE_TEST_CLASS(LookupCommandTest)
#include "lookupcommandtest.moc"
