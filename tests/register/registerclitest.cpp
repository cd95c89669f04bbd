#include "registertestsupport.h"

#include "support/clirunner.h"
#include "support/files.h"
#include "support/pdftext.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QTemporaryDir>

using namespace corvane;
using namespace corvane::test;

class RegisterCliTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db;
    QTemporaryDir dir;

    CliResult corvane(const QStringList& args)
    {
        QMap<QString, QString> env{{QStringLiteral("CORVANE_SYSTEM_DIR"), db->systemPath()}};
        return runCli(QStringList{QStringLiteral("--app-path"), db->appPath()} + databaseArgs(*db) + args, env);
    }

private slots:
    void initTestCase() { db = std::make_unique<TestDatabase>(QStringLiteral("regcli")); }
    void cleanupTestCase() { db.reset(); }
    void init()
    {
        db->startAfresh({QStringLiteral("FBT_Info"), QStringLiteral("FBT_AddInfo")});
        Connection& c = **db;
        insertClient(c, QStringLiteral("A1"), QStringLiteral("Alpha, Sons"), QStringLiteral("ABCDE1234F"), QStringLiteral("1"));
        insertClient(c, QStringLiteral("B2"), QStringLiteral("Beta \"Best\""), QString(), QStringLiteral("2"));
        insertClient(c, QStringLiteral("C3"), QStringLiteral("Gamma"), QStringLiteral("PQRST9876Z"), QStringLiteral("0"));
        insertFiling(c, QStringLiteral("A1"), 2008, QStringLiteral("01/04/2008"), QStringLiteral("K-1"), QStringLiteral("30/06/2008"));
        insertFiling(c, QStringLiteral("C3"), 2008, QStringLiteral("15/05/2008"), QStringLiteral("K-3"), QStringLiteral("todate"));
    }

    void registerCsv_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("out");
        QTest::addColumn<QString>("err"); // a text standard error must contain
        const QString header = QStringLiteral("Code No,Name,PAN No.,Status,Date of Filing,Acknowledgement No.\r\n");
        const QString a1 = QStringLiteral("A1,\"Alpha, Sons\",ABCDE1234F,HUF,01/04/2008,K-1\r\n");
        const QString b2 = QStringLiteral("B2,\"Beta \"\"Best\"\"\",,2,,\r\n");
        const QString c3 = QStringLiteral("C3,Gamma,PQRST9876Z,Individual,15/05/2008,K-3\r\n");
        QTest::newRow("all") << QStringList{"register", "--year", "2008"} << 0 << header + a1 + b2 + c3 << "";
        QTest::newRow("pending") << QStringList{"register", "--year", "2008", "--returns", "pending"} << 0 << header + b2 << "";
        QTest::newRow("period from the first day")
            << QStringList{"register", "--year", "2008", "--from", "01/04/2008", "--to", "14/05/2008"} << 0 << header + a1 << "";
        QTest::newRow("another year: nobody filed")
            << QStringList{"register", "--year", "2007", "--returns", "filed"} << 0 << header << "";
        QTest::newRow("begin not a date")
            << QStringList{"register", "--year", "2008", "--from", "1/4/2008", "--to", "01/05/2008"} << 1 << ""
            << "Invalid date entry. (--from";
        QTest::newRow("period with pending") << QStringList{"register", "--year", "2008", "--returns", "pending", "--from",
                                                           "01/04/2008", "--to", "02/04/2008"}
                                             << 2 << "" << "";
        QTest::newRow("from without to") << QStringList{"register", "--year", "2008", "--from", "01/04/2008"} << 2 << "" << "";
        QTest::newRow("no year") << QStringList{"register"} << 2 << "" << "";
        QTest::newRow("year before 2006") << QStringList{"register", "--year", "2005"} << 2 << "" << "";
        QTest::newRow("bad format") << QStringList{"register", "--year", "2008", "--format", "xml"} << 2 << "" << "";
    }
    void registerCsv()
    {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, out);
        QFETCH(QString, err);
        const CliResult r = corvane(args);
        QVERIFY2(r.status == status, qPrintable(r.err));
        QCOMPARE(r.out, out);
        QVERIFY2(r.err.contains(err), qPrintable(r.err));
    }

    void registerText()
    {
        const CliResult r = corvane({"register", "--year", "2008", "--format", "text", "--returns", "filed"});
        QCOMPARE(r.status, 0);
        const QStringList lines = r.out.split(QLatin1Char('\n'));
        QCOMPARE(lines.at(0), QStringLiteral("List of Filed Returns for the Assessment Year 2008-09"));
        QVERIFY(lines.at(2).startsWith(QStringLiteral("Code No  Name ")));
        // the columns line up: every date starts where its heading does
        const int at = int(lines.at(2).indexOf(QStringLiteral("Date of Filing")));
        QCOMPARE(lines.at(4).indexOf(QStringLiteral("01/04/2008")), at);
        QCOMPARE(lines.at(5).indexOf(QStringLiteral("15/05/2008")), at);
    }

    void registerFiles()
    {
        const QString pdf = dir.filePath(QStringLiteral("register.pdf"));
        CliResult r = corvane({"register", "--year", "2008", "--output", pdf});
        QVERIFY2(r.status == 0, qPrintable(r.err));
        // the title, then each row's six shown columns (the interest date stays out)
        const QString text = pdfText(pdf);
        QVERIFY(text.contains(QStringLiteral("List of All Clients for the Assessment Year 2008-09")));
        QVERIFY(text.contains(QStringLiteral("Acknowledgement No.")));
        QStringList lines;
        for (const QString& l : text.split(QLatin1Char('\n')))
            lines << l.simplified();
        QVERIFY(lines.contains(QStringLiteral("A1 Alpha, Sons ABCDE1234F HUF 01/04/2008 K-1")));
        QVERIFY(lines.contains(QStringLiteral("B2 Beta \"Best\" 2")));
        QVERIFY(lines.contains(QStringLiteral("C3 Gamma PQRST9876Z Individual 15/05/2008 K-3")));
        const QString csv = dir.filePath(QStringLiteral("register.csv"));
        r = corvane({"register", "--year", "2008", "--format", "text", "--output", csv});
        QCOMPARE(r.status, 0);
        QVERIFY(test::readFile(csv).startsWith("Code No,Name,"));
        r = corvane({"register", "--year", "2008", "--output", QStringLiteral("/nonexistent-dir/r.pdf")});
        QCOMPARE(r.status, 1);
    }

    void filing_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("date");
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("interest");
        QTest::newRow("new row for B2, the date normalised")
            << QStringList{"filing", "B2", "--year", "2008", "--date", "02042008", "--ack", "N-2"} << 0 << ""
            << "02/04/2008" << "N-2" << "";
        QTest::newRow("incomplete date")
            << QStringList{"filing", "B2", "--year", "2008", "--date", "1/4/2008"} << 1 << "Please Specify a Valid Date."
            << "" << "" << "";
        QTest::newRow("new date, interest yes")
            << QStringList{"filing", "A1", "--year", "2008", "--date", "10/04/2008", "--interest", "yes"} << 0 << ""
            << "10/04/2008" << "K-1" << "10/04/2008";
        QTest::newRow("new date, no answer without a terminal")
            << QStringList{"filing", "A1", "--year", "2008", "--date", "10/04/2008"} << 1 << "--interest" << "01/04/2008"
            << "K-1" << "30/06/2008";
        QTest::newRow("number only, stored dates kept")
            << QStringList{"filing", "A1", "--year", "2008", "--ack", "K-9", "--interest", "no"} << 0 << "" << "01/04/2008" << "K-9"
            << "30/06/2008";
        QTest::newRow("no code") << QStringList{"filing", "--year", "2008"} << 2 << "" << "" << "" << "";
        QTest::newRow("bad interest answer")
            << QStringList{"filing", "A1", "--year", "2008", "--interest", "maybe"} << 2 << "" << "01/04/2008" << "K-1"
            << "30/06/2008";
    }
    void filing()
    {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, message);
        QFETCH(QString, date);
        QFETCH(QString, number);
        QFETCH(QString, interest);
        const QString code = args.value(1);
        const CliResult r = corvane(args);
        QVERIFY2(r.status == status, qPrintable(r.err));
        if (!message.isEmpty())
            QVERIFY2(r.err.contains(message), qPrintable(r.err));
        if (status == 2 || (status == 1 && code == QStringLiteral("B2"))) {
            QCOMPARE(db->count(QStringLiteral("FBT_AddInfo")), 2); // nothing written
            return;
        }
        QCOMPARE(stored(*db, code, QStringLiteral("RetDt")), date);
        QCOMPARE(stored(*db, code, QStringLiteral("RetAckNo")), number);
        QCOMPARE(stored(*db, code, QStringLiteral("IntDt")), interest);
    }
};

CORVANE_TEST_CLASS(RegisterCliTest)
#include "registerclitest.moc"
