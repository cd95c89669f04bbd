#include "registertestsupport.h"

#include "screens/register/returnregister.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

using namespace corvane;
using namespace corvane::test;
using namespace corvane::returnregister;

namespace {

// Each row as "code|name|…", every column in order.
QStringList texts(const QVector<Row>& rows)
{
    QStringList list;
    for (const Row& r : rows)
        list << QStringList(r.begin(), r.end()).join(QLatin1Char('|'));
    return list;
}

// One column's values, row by row.
QStringList column(const QVector<Row>& rows, int c)
{
    QStringList list;
    for (const Row& r : rows)
        list << r[c];
    return list;
}

} // namespace

class ReturnRegisterTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db;

private slots:
    void initTestCase() { db = std::make_unique<TestDatabase>(QStringLiteral("register")); }
    void cleanupTestCase() { db.reset(); }
    void init()
    {
        db->startAfresh({QStringLiteral("FBT_Info"), QStringLiteral("FBT_AddInfo")});
        installPrompter();
    }

    void joinGivesEachClientWithItsRowOfTheYear()
    {
        // GIVEN clients inserted out of code order, with rows in other years, nulls and a deleted client's gap
        Connection& c = **db;
        insertClient(c, QStringLiteral("C3"), QStringLiteral("Gamma Traders"), QStringLiteral("ABCDE1234F"), QStringLiteral("3"));
        insertClient(c, QStringLiteral("A1"), QStringLiteral("Alpha & Sons"), QString(), QString());
        insertClient(c, QStringLiteral("X9"), QStringLiteral("Gone"));
        insertClient(c, QStringLiteral("b2"), QStringLiteral("beta"), QStringLiteral("PQRST9876Z"), QStringLiteral("8"));
        c.execute(QStringLiteral("delete from FBT_Info where Code_No='X9'"));
        insertClient(c, QStringLiteral("D4"), QStringLiteral("Delta"), QStringLiteral("AAAAA0000A"), QStringLiteral("16"));
        insertFiling(c, QStringLiteral("C3"), 2008, QStringLiteral("15/07/2008"), QStringLiteral("ACK-1"), QStringLiteral("31/07/2008"));
        insertFiling(c, QStringLiteral("C3"), 2007, QStringLiteral("01/06/2007"), QStringLiteral("OLD"));
        insertFiling(c, QStringLiteral("B2"), 2008, QString(), QStringLiteral("N-2"), QStringLiteral("todate"));
        insertFiling(c, QStringLiteral("D4"), 2009, QStringLiteral("01/05/2009"), QString());
        c.execute(QStringLiteral("update FBT_AddInfo set RetDt=null, RetAckNo=null, IntDt=null where Code_No='D4'"));
        insertFiling(c, QStringLiteral("D4"), 2008, QStringLiteral("x"), QString());
        c.execute(QStringLiteral("update FBT_AddInfo set RetDt=null, RetAckNo=null, IntDt=null where Code_No='D4' and TYear=2008"));

        // WHEN the register of a year is read THEN every client is there once in table order (D4 took the place
        // the deleted client left) with its row of that year, found without regard to case; a row of nulls counts
        QCOMPARE(texts(load(c, 2008)), (QStringList{"C3|Gamma Traders|ABCDE1234F|3|15/07/2008|ACK-1|1|31/07/2008",
                                                   "A1|Alpha & Sons||||||", "D4|Delta|AAAAA0000A|16|||1|",
                                                   "b2|beta|PQRST9876Z|8||N-2|1|todate"}));
        // AND the other years take their own rows only
        QCOMPARE(texts(load(c, 2007)).first(), QStringLiteral("C3|Gamma Traders|ABCDE1234F|3|01/06/2007|OLD|1|"));
        QCOMPARE(column(load(c, 2007), HasRow), (QStringList{"1", "", "", ""}));
        QCOMPARE(column(load(c, 2009), HasRow), (QStringList{"", "", "1", ""}));
        QCOMPARE(column(load(c, 2010), HasRow), (QStringList{"", "", "", ""}));
    }

    void filters_data()
    {
        QTest::addColumn<int>("returns");
        QTest::addColumn<QString>("begin");
        QTest::addColumn<QString>("end");
        QTest::addColumn<QStringList>("expected");
        // P1 pending (no row), P2 pending (row without date), F1 30/04/2008, F2 01/05/2008, F3 31/05/2008,
        // F4 "1/5/2008" (not 10 characters), F5 a year-end date 31/03/2009
        const QStringList all{"P1", "P2", "F1", "F2", "F3", "F4", "F5"};
        QTest::newRow("all") << 0 << QString() << QString() << all;
        QTest::newRow("pending: no row or no date") << 1 << QString() << QString() << QStringList{"P1", "P2"};
        QTest::newRow("filed") << 2 << QString() << QString() << QStringList{"F1", "F2", "F3", "F4", "F5"};
        QTest::newRow("period, both ends included")
            << 2 << "01/05/2008" << "31/05/2008" << QStringList{"F2", "F3", "F4"};
        QTest::newRow("period ending the day before")
            << 2 << "01/05/2008" << "30/05/2008" << QStringList{"F2", "F4"};
        QTest::newRow("period starting the day after")
            << 2 << "02/05/2008" << "31/03/2009" << QStringList{"F3", "F4", "F5"};
        QTest::newRow("period box not complete: no period filter")
            << 2 << "01/05/2008" << "31/05/" << QStringList{"F1", "F2", "F3", "F4", "F5"};
        QTest::newRow("pending ignores the period") << 1 << "01/05/2008" << "31/05/2008" << QStringList{"P1", "P2"};
    }
    void filters()
    {
        QFETCH(int, returns);
        QFETCH(QString, begin);
        QFETCH(QString, end);
        QFETCH(QStringList, expected);
        Connection& c = **db;
        for (const char* code : {"P1", "P2", "F1", "F2", "F3", "F4", "F5"})
            insertClient(c, QString::fromLatin1(code), QString::fromLatin1(code));
        insertFiling(c, QStringLiteral("P2"), 2008, QString(), QStringLiteral("ACK"));
        insertFiling(c, QStringLiteral("F1"), 2008, QStringLiteral("30/04/2008"), QString());
        insertFiling(c, QStringLiteral("F2"), 2008, QStringLiteral("01/05/2008"), QString());
        insertFiling(c, QStringLiteral("F3"), 2008, QStringLiteral("31/05/2008"), QString());
        insertFiling(c, QStringLiteral("F4"), 2008, QStringLiteral("1/5/2008"), QString());
        insertFiling(c, QStringLiteral("F5"), 2008, QStringLiteral("31/03/2009"), QString());
        const Period period{!begin.isEmpty(), begin, end};
        QCOMPARE(column(load(c, 2008, Returns(returns), period), Code), expected);
    }

    void periodCheck_data()
    {
        QTest::addColumn<QString>("begin");
        QTest::addColumn<QString>("end");
        QTest::addColumn<int>("check");
        QTest::newRow("one day apart") << "01/04/2008" << "02/04/2008" << int(PeriodCheck::Ok);
        QTest::newRow("equal dates refused") << "01/04/2008" << "01/04/2008" << int(PeriodCheck::NotBefore);
        QTest::newRow("begin after end") << "02/04/2008" << "01/04/2008" << int(PeriodCheck::NotBefore);
        QTest::newRow("begin not a date") << "31/02/2008" << "01/04/2008" << int(PeriodCheck::BadBegin);
        QTest::newRow("begin incomplete") << "01/04/08" << "01/04/2008" << int(PeriodCheck::BadBegin);
        QTest::newRow("both bad: begin first") << "" << "99/99/9999" << int(PeriodCheck::BadBegin);
        QTest::newRow("end not a date") << "01/04/2008" << "32/12/2008" << int(PeriodCheck::BadEnd);
        QTest::newRow("across years") << "31/12/2008" << "01/01/2009" << int(PeriodCheck::Ok);
    }
    void periodCheck()
    {
        QFETCH(QString, begin);
        QFETCH(QString, end);
        QFETCH(int, check);
        QCOMPARE(int(checkPeriod(begin, end)), check);
    }

    void headingText_data()
    {
        QTest::addColumn<int>("returns");
        QTest::addColumn<bool>("period");
        QTest::addColumn<QString>("text");
        QTest::newRow("all") << 0 << false << "List of All Clients for the Assessment Year 2008-09";
        QTest::newRow("pending") << 1 << false << "List of Pending Returns for the Assessment Year 2008-09";
        QTest::newRow("all: no period to name") << 0 << true << "List of All Clients for the Assessment Year 2008-09";
        QTest::newRow("filed, period")
            << 2 << true << "List of Filed Returns for the Assessment Year 2008-09 (Period from 01/04/2008 to 31/03/2009)";
    }
    void headingText()
    {
        QFETCH(int, returns);
        QFETCH(bool, period);
        QFETCH(QString, text);
        QCOMPARE(heading(Returns(returns), QStringLiteral("2008-09"),
                         Period{period, QStringLiteral("01/04/2008"), QStringLiteral("31/03/2009")}),
                 text);
    }

    void yearsAndStatus()
    {
        QCOMPARE(yearItems(2008), (QStringList{"2006-07", "2007-08", "2008-09"}));
        QCOMPARE(yearItems(2006), QStringList{"2006-07"});
        QCOMPARE(yearItems(2005), QStringList());
        QCOMPARE(yearItems(2099).last(), QStringLiteral("2099-00"));
        QCOMPARE(yearOf(QStringLiteral("2008-09")), 2008);
        QCOMPARE(statusName(QStringLiteral("0")), QStringLiteral("Individual"));
        QCOMPARE(statusName(QStringLiteral("17")), QStringLiteral("Co-operative Society"));
        QCOMPARE(statusName(QStringLiteral("2")), QStringLiteral("2")); // gaps in the list show the number
        QCOMPARE(statusName(QStringLiteral("18")), QStringLiteral("18"));
        QCOMPARE(statusName(QString()), QString());
    }

    void entrySearch()
    {
        const QVector<Entry> entries{{"A10", "Zeta", "", "", "", ""}, {"a1", "alpha", "", "", "", ""},
                                     {"B1", "Alpine", "", "", "", ""}};
        QCOMPARE(findPrefix(entries, EntryCode, QStringLiteral("a1")), 0); // first from the top, any case
        QCOMPARE(findPrefix(entries, EntryName, QStringLiteral("ALP")), 1);
        QCOMPARE(findPrefix(entries, EntryName, QStringLiteral("alpi")), 2);
        QCOMPARE(findPrefix(entries, EntryName, QStringLiteral("q")), -1);
        QCOMPARE(findPrefix(entries, EntryCode, QString()), 0);
        QCOMPARE(findCode(entries, QStringLiteral("A1"), true), -1);
        QCOMPARE(findCode(entries, QStringLiteral("A1"), false), 1);
        QCOMPARE(findCode(entries, QStringLiteral("a1"), true), 1);
    }
};

CORVANE_TEST_CLASS(ReturnRegisterTest)
#include "returnregistertest.moc"
