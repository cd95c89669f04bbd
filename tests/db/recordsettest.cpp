#include "core/failure.h"
#include "db/recordset.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QtTest>

using namespace corvane;

// The record set behaviours the screens rely on, on real tables.
class RecordsetTest : public QObject {
    Q_OBJECT

    std::unique_ptr<test::TestDatabase> db_;

    // Opens rs on a bank list of n rows, coded 10, 20, …
    void openBanks(Recordset& rs, int n)
    {
        db_->connection()->execute(QStringLiteral("DELETE FROM Bank_Master"));
        for (int i = 1; i <= n; ++i)
            db_->connection()->execute(QStringLiteral("INSERT INTO Bank_Master VALUES (%1, 'BANK %2', 'BRANCH %2', NULL)").arg(i * 10).arg(i));
        rs.open(QStringLiteral("Select * from Bank_Master order by bank_code_no"), *db_->connection());
    }

    static long failureNumber(const std::function<void()>& statement)
    {
        try {
            statement();
        } catch (const Failure& f) {
            return f.number();
        }
        return 0;
    }

private slots:
    void initTestCase() { db_ = std::make_unique<test::TestDatabase>(QStringLiteral("recordset")); }
    void cleanupTestCase() { db_.reset(); }

    void emptyRecordsetIsAtBothEnds()
    {
        Recordset rs;
        openBanks(rs, 0);
        QVERIFY(rs.bof());
        QVERIFY(rs.eof());
        QCOMPARE(rs.recordCount(), 0);
        QCOMPARE(rs.absolutePosition(), 0);
        rs.moveFirst();
        rs.moveLast();
        QVERIFY(rs.bof() && rs.eof());
        QCOMPARE(failureNumber([&] { rs.moveNext(); }), err::NoCurrentRecord);
        QCOMPARE(failureNumber([&] { rs.field(0); }), err::NoCurrentRecord);
        QCOMPARE(rs.fieldCount(), 4);
    }

    void movesPassTheEndsOneStepAtATime()
    {
        Recordset rs;
        openBanks(rs, 3);
        QVERIFY(!rs.bof() && !rs.eof());
        QCOMPARE(rs.absolutePosition(), 1);
        rs.movePrevious();
        QVERIFY(rs.bof());
        QVERIFY(!rs.eof());
        QCOMPARE(failureNumber([&] { rs.movePrevious(); }), err::NoCurrentRecord);
        rs.moveNext();
        QCOMPARE(rs.field(0).toInt(), 10);
        rs.moveLast();
        QCOMPARE(rs.text(QStringLiteral("BANK_NAME")), QStringLiteral("BANK 3"));
        rs.moveNext();
        QVERIFY(rs.eof());
        QVERIFY(!rs.bof());
        rs.movePrevious();
        QCOMPARE(rs.absolutePosition(), 3);
        rs.setAbsolutePosition(2);
        QCOMPARE(rs.field(QStringLiteral("bank_code_no")).toInt(), 20);
        QCOMPARE(failureNumber([&] { rs.setAbsolutePosition(4); }), 3001L);
    }

    void nullIsDistinctFromEmptyText()
    {
        db_->connection()->execute(QStringLiteral("DELETE FROM Bank_Master"));
        db_->connection()->execute(QStringLiteral("INSERT INTO Bank_Master VALUES (10, 'BANK 1', 'BRANCH 1', NULL), (99, '', 'X', '')"));
        Recordset rs;
        rs.open(QStringLiteral("Select * from Bank_Master order by bank_code_no"), *db_->connection());
        QVERIFY(rs.field(3).isNull());
        QCOMPARE(rs.text(3), QString());
        rs.moveNext();
        QVERIFY(!rs.field(3).isNull());
        QVERIFY(!rs.field(1).isNull());
        QCOMPARE(rs.fieldName(1), QStringLiteral("bank_name"));
        QCOMPARE(rs.fieldIndex(QStringLiteral("Branch_Code")), 3);
        QCOMPARE(failureNumber([&] { rs.field(QStringLiteral("nope")); }), 3265L);
    }

    void requerySeesNewRowsAndMovesFirst()
    {
        Recordset rs;
        openBanks(rs, 2);
        rs.moveLast();
        db_->connection()->execute(QStringLiteral("INSERT INTO Bank_Master VALUES (5, 'FIRST', '', '')"));
        QCOMPARE(rs.recordCount(), 2);
        rs.requery();
        QCOMPARE(rs.recordCount(), 3);
        QCOMPARE(rs.absolutePosition(), 1);
        QCOMPARE(rs.text(1), QStringLiteral("FIRST"));
    }

    void deleteCurrentRemovesTheRowAndKeepsThePlace_data()
    {
        QTest::addColumn<int>("position");
        QTest::addColumn<int>("nextCode");   // after moveNext; 0 = EOF
        QTest::newRow("first") << 1 << 20;
        QTest::newRow("middle") << 2 << 30;
        QTest::newRow("last") << 3 << 0;
    }

    void deleteCurrentRemovesTheRowAndKeepsThePlace()
    {
        QFETCH(int, position);
        QFETCH(int, nextCode);
        Recordset rs;
        openBanks(rs, 3);
        rs.setAbsolutePosition(position);
        const int deleted = rs.field(0).toInt();
        // WHEN the current row is deleted through the record set
        rs.deleteCurrent();
        // THEN it is gone from the table, has no fields, and the next move lands on what followed it
        QCOMPARE(db_->count(QStringLiteral("Bank_Master"), QStringLiteral("bank_code_no=%1").arg(deleted)), 0);
        QCOMPARE(db_->count(QStringLiteral("Bank_Master")), 2);
        QCOMPARE(failureNumber([&] { rs.field(0); }), err::NoCurrentRecord);
        rs.moveNext();
        if (nextCode == 0)
            QVERIFY(rs.eof());
        else
            QCOMPARE(rs.field(0).toInt(), nextCode);
    }

    void deleteWithoutPrimaryKeyUsesEveryColumn()
    {
        db_->connection()->execute(QStringLiteral("CREATE TABLE IF NOT EXISTS nokey (a INT, b VARCHAR(10), c DOUBLE) ENGINE=MyISAM"));
        db_->connection()->execute(QStringLiteral("DELETE FROM nokey"));
        db_->connection()->execute(QStringLiteral("INSERT INTO nokey VALUES (1,'x',0.1),(1,'x',0.2),(1,NULL,0.1)"));
        Recordset rs;
        rs.open(QStringLiteral("select * from nokey order by c desc, b"), *db_->connection());
        rs.deleteCurrent(); // (1,'x',0.2)
        rs.moveNext();
        rs.deleteCurrent(); // (1,NULL,0.1)
        QCOMPARE(db_->scalar(QStringLiteral("select concat(a,b,c) from nokey")), QStringLiteral("1x0.1"));
    }

    void findSearchesForwardFromTheCurrentRow_data()
    {
        QTest::addColumn<int>("start");
        QTest::addColumn<QString>("criterion");
        QTest::addColumn<int>("found"); // position, 0 = EOF
        QTest::newRow("text, any case") << 1 << "bank_name='bank 2'" << 2;
        QTest::newRow("number") << 1 << "bank_code_no=30" << 3;
        QTest::newRow("from current") << 2 << "bank_name='BANK 2'" << 2;
        QTest::newRow("not behind") << 3 << "bank_name='BANK 1'" << 0;
        QTest::newRow("absent") << 1 << "branch='NOWHERE'" << 0;
    }

    void findSearchesForwardFromTheCurrentRow()
    {
        QFETCH(int, start);
        QFETCH(QString, criterion);
        QFETCH(int, found);
        Recordset rs;
        openBanks(rs, 3);
        rs.setAbsolutePosition(start);
        QCOMPARE(rs.find(criterion), found != 0);
        if (found)
            QCOMPARE(rs.absolutePosition(), found);
        else
            QVERIFY(rs.eof());
    }

    void closedRecordsetRefusesWork()
    {
        Recordset rs;
        QCOMPARE(failureNumber([&] { rs.eof(); }), err::RecordsetClosed);
        QCOMPARE(failureNumber([&] { rs.open(QStringLiteral("select * from no_such_table"), *db_->connection()); }), 1146L);
        QVERIFY(!rs.isOpen());
    }
};

CORVANE_TEST_CLASS(RecordsetTest)
#include "recordsettest.moc"
