#include "core/failure.h"
#include "db/connection.h"
#include "db/rowstream.h"
#include "db/schema.h"
#include "db/sqltext.h"
#include "support/statementrecorder.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QtTest>

using namespace corvane;

// The connection, the quoting helper and the schema on the real server.
class ConnectionTest : public QObject {
    Q_OBJECT

    std::unique_ptr<test::TestDatabase> db_;

private slots:
    void initTestCase() { db_ = std::make_unique<test::TestDatabase>(QStringLiteral("connection")); }
    void cleanupTestCase() { db_.reset(); }

    void hostileTextsSurviveTheRoundTrip_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("quote injection") << QStringLiteral("x'); DROP TABLE FBT_Info; --");
        QTest::newRow("backslash") << QStringLiteral("C:\\FBT\\DATA\\");
        QTest::newRow("double quote") << QStringLiteral("say \"hi\"");
        QTest::newRow("nul") << QString::fromUtf16(u"a\0b", 3);
        QTest::newRow("line ends and ctrl-z") << QStringLiteral("a\r\nb\x1a" "c");
        QTest::newRow("percent and underscore") << QStringLiteral("100%_done");
        QTest::newRow("emoji") << QStringLiteral("bank 🏦");
        QTest::newRow("back quote") << QStringLiteral("`x`");
    }

    void hostileTextsSurviveTheRoundTrip()
    {
        QFETCH(QString, text);
        Connection& c = *db_->connection();
        c.execute(QStringLiteral("DELETE FROM Bank_Master"));
        c.execute(QStringLiteral("Insert into Bank_Master Values(1,") + sqlQuote(text) + QStringLiteral(",'','')"));
        const auto result = c.query(QStringLiteral("select bank_name from Bank_Master where bank_name=") + sqlQuote(text));
        QCOMPARE(result.rows.size(), 1);
        QCOMPARE(result.rows.first().first().toString(), text);
        QCOMPARE(db_->count(QStringLiteral("FBT_Info")), 0); // nothing was dropped
    }

    void tableNamesAreBackQuoted()
    {
        Connection& c = *db_->connection();
        const QString odd = QStringLiteral("odd`name table");
        c.execute(QStringLiteral("CREATE TABLE ") + sqlName(odd) + QStringLiteral(" (code_no VARCHAR(5)) ENGINE=MyISAM"));
        c.execute(QStringLiteral("INSERT INTO ") + sqlName(odd) + QStringLiteral(" VALUES ('A')"));
        QCOMPARE(db_->count(odd), 1);
        c.execute(QStringLiteral("DROP TABLE ") + sqlName(odd));
    }

    void literalsKeepTheirKind()
    {
        QCOMPARE(sqlLiteral(QVariant()), QStringLiteral("NULL"));
        QCOMPARE(sqlLiteral(42), QStringLiteral("42"));
        QCOMPARE(sqlLiteral(QStringLiteral("42")), QStringLiteral("'42'"));
        const double value = 0.1 + 0.2;
        QCOMPARE(db_->scalar(QStringLiteral("select ") + sqlLiteral(value) + QStringLiteral(" = ") + sqlLiteral(value)), QStringLiteral("1"));
    }

    void failuresCarryTheServerNumberAndText_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<long>("number");
        QTest::addColumn<QString>("fragment");
        QTest::newRow("syntax") << "selec 1" << 1064L << "syntax";
        QTest::newRow("no table") << "select * from nowhere" << 1146L << "nowhere";
        QTest::newRow("duplicate key") << "insert into FBT_Nature values (1,'a'),(1,'b')" << 1062L << "Duplicate";
    }

    void failuresCarryTheServerNumberAndText()
    {
        QFETCH(QString, sql);
        QFETCH(long, number);
        QFETCH(QString, fragment);
        db_->connection()->execute(QStringLiteral("DELETE FROM FBT_Nature"));
        try {
            db_->connection()->execute(sql);
            QFAIL("the statement should have failed");
        } catch (const Failure& f) {
            QCOMPARE(f.number(), number);
            QCOMPARE(f.source(), QStringLiteral("MySQL"));
            QVERIFY2(f.description().contains(fragment, Qt::CaseInsensitive), qPrintable(f.description()));
        }
        try {
            RowStream rows(*db_->connection(), sql);
            QFAIL("the streamed statement should have failed");
        } catch (const Failure& f) {
            QCOMPARE(f.number(), number);
            QCOMPARE(f.source(), QStringLiteral("MySQL"));
        }
    }

    // A streamed value reads as the same value read whole prints.
    void streamedValuesReadAsQueriedOnes_data()
    {
        QTest::addColumn<QString>("column");
        QTest::addColumn<QString>("value");
        const QString text = QStringLiteral("VARCHAR(40) CHARACTER SET utf8mb4");
        QTest::newRow("null") << text << "NULL";
        QTest::newRow("empty") << text << "''";
        QTest::newRow("unicode and breaks") << text << "'Ünïcödé ₹ 中文\\t\\r\\n\\\\'";
        QTest::newRow("int") << "INT" << "-2147483648";
        QTest::newRow("bigint unsigned") << "BIGINT UNSIGNED" << "18446744073709551615";
        QTest::newRow("zerofill") << "INT(6) ZEROFILL" << "42";
        QTest::newRow("tinyint") << "TINYINT(1)" << "1";
        QTest::newRow("decimal") << "DECIMAL(14,2)" << "1234.50";
        QTest::newRow("double") << "DOUBLE" << "0.1";
        QTest::newRow("double large") << "DOUBLE" << "1e300";
        QTest::newRow("float") << "FLOAT" << "0.1";
        QTest::newRow("date") << "DATE" << "'2026-03-31'";
        QTest::newRow("zero date") << "DATE" << "'0000-00-00'";
        QTest::newRow("long time") << "TIME" << "'-838:59:59'";
        QTest::newRow("datetime") << "DATETIME" << "'2026-03-31 10:11:12'";
        QTest::newRow("zero datetime") << "DATETIME" << "'0000-00-00 00:00:00'";
        QTest::newRow("year") << "YEAR" << "2026";
        QTest::newRow("blob") << "BLOB" << "'bytes\\0'";
        QTest::newRow("enum") << "ENUM('Y','N')" << "'N'";
        QTest::newRow("bit") << "BIT(8)" << "b'1000001'";
    }

    void streamedValuesReadAsQueriedOnes()
    {
        QFETCH(QString, column);
        QFETCH(QString, value);
        Connection& c = *db_->connection();
        c.execute(QStringLiteral("DROP TABLE IF EXISTS stream_probe"));
        c.execute(QStringLiteral("CREATE TABLE stream_probe (n INT, v %1) ENGINE=MyISAM").arg(column));
        c.execute(QStringLiteral("INSERT INTO stream_probe VALUES (1, %1), (2, NULL)").arg(value));
        const QString select = QStringLiteral("SELECT v, n FROM stream_probe ORDER BY n");
        const Connection::Result whole = c.query(select);
        RowStream rows(c, select);
        QVERIFY(rows.hasResult());
        QCOMPARE(rows.columnNames(), QStringList({QStringLiteral("v"), QStringLiteral("n")}));
        for (const QVector<QVariant>& expected : whole.rows) {
            QVERIFY(rows.next());
            QCOMPARE(rows.isNull(0), expected.at(0).isNull());
            if (!expected.at(0).isNull())
                QCOMPARE(QString::fromUtf8(rows.text(0)), expected.at(0).toString());
            QCOMPARE(QString::fromUtf8(rows.text(1)), expected.at(1).toString());
        }
        QVERIFY(!rows.next());
    }

    // A stream left before its end, and a statement without rows, leave the connection usable.
    void streamsLeaveTheConnectionUsable()
    {
        Connection& c = *db_->connection();
        {
            RowStream rows(c, QStringLiteral("SELECT seq FROM seq_1_to_100000"));
            QVERIFY(rows.next());
            QCOMPARE(QString::fromUtf8(rows.text(0)), QStringLiteral("1"));
        }
        {
            RowStream none(c, QStringLiteral("DO 1"));
            QVERIFY(!none.hasResult());
            QVERIFY(!none.next());
        }
        QCOMPARE(db_->scalar(QStringLiteral("SELECT 6*7")), QStringLiteral("42"));
    }

    void openingFailsWithTheServersNumber_data()
    {
        QTest::addColumn<QString>("socket"); // empty: the test server's
        QTest::addColumn<QString>("database");
        QTest::addColumn<long>("number");
        QTest::newRow("no server on the socket") << "/nonexistent/mysqld.sock" << "" << 2002L;
        QTest::newRow("no such database") << "" << "no_such_database_here" << 1049L;
    }

    void openingFailsWithTheServersNumber()
    {
        QFETCH(QString, socket);
        QFETCH(QString, database);
        QFETCH(long, number);
        ConnectionSettings s = test::serverSettings();
        if (!socket.isEmpty())
            s.socket = socket;
        s.database = database;
        Connection c;
        try {
            c.open(s);
            QFAIL("opened a connection that should have failed");
        } catch (const Failure& f) {
            QCOMPARE(f.number(), number);
            QVERIFY2(f.description().contains(socket.isEmpty() ? database : socket), qPrintable(f.description()));
        }
        // and a connection that did not open refuses statements
        QVERIFY(!c.isOpen());
        try {
            c.execute(QStringLiteral("select 1"));
            QFAIL("a statement ran without a connection");
        } catch (const Failure& f) {
            QCOMPARE(f.number(), long(err::ObjectNotSet));
        }
    }

    void tablesHaveTheirColumnsInOrder_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<int>("columns");
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("last");
        QTest::newRow("FBT_MiscInf") << "FBT_MiscInf" << 28 << "Code_No" << "Var2_1";
        QTest::newRow("FBT_BankDet") << "FBT_BankDet" << 10 << "code_no" << "DefAcc";
        QTest::newRow("Bank_Master") << "Bank_Master" << 4 << "bank_code_no" << "branch_code";
        QTest::newRow("FBT_Info") << "FBT_Info" << 16 << "Code_No" << "EMail";
    }

    void tablesHaveTheirColumnsInOrder()
    {
        QFETCH(QString, table);
        QFETCH(int, columns);
        QFETCH(QString, first);
        QFETCH(QString, last);
        const auto result = db_->connection()->query(QStringLiteral("Show columns from ") + sqlName(table));
        QCOMPARE(result.rows.size(), columns);
        QCOMPARE(result.rows.first().first().toString(), first);
        QCOMPARE(result.rows.last().first().toString(), last);
        QCOMPARE(db_->scalar(QStringLiteral("select engine from information_schema.tables where table_schema=") + sqlQuote(db_->name())
                             + QStringLiteral(" and table_name=") + sqlQuote(table)),
                 QStringLiteral("MyISAM"));
    }

    void addInfoColumnsFollowTheStoredOrder()
    {
        const QStringList expected = QStringLiteral(
            "Code_No TYear ChAdd Ward OldWard Section RevRet RevRecNo RevRecDt NOB Ac44AA Ac44AB Dt44AB Ac44ABC Dt44ABC "
            "PEIndia DtRel1 DtRel2 PEOut EmpBoth SepBooks IndiaEmp TotalEmp RetDt RetAckNo AreaCd AoTyp AoRng AoNo "
            "Calc115WJ Amt115WJ Calc115WK Amt115WK Calc115WJ5 Amt115WJ5 IntDt").split(QLatin1Char(' '));
        QCOMPARE(schema::find(QStringLiteral("fbt_addinfo"))->columnNames(), expected);
    }

    void creatingTablesTwiceChangesNothing()
    {
        Connection& c = *db_->connection();
        c.execute(QStringLiteral("INSERT INTO FBT_Info (Code_No, Name) VALUES ('KEEP', 'KEPT')"));
        QVERIFY(schema::createMissingTables(c).isEmpty());
        c.execute(QStringLiteral("DROP TABLE recp_det"));
        QCOMPARE(schema::createMissingTables(c), QStringList{QStringLiteral("recp_det")});
        QCOMPARE(db_->count(QStringLiteral("FBT_Info"), QStringLiteral("Code_No='KEEP'")), 1);
        QVERIFY(schema::fillNatures(c) >= 0);
        const int natures = db_->count(QStringLiteral("FBT_Nature"));
        QCOMPARE(schema::fillNatures(c), 0);
        QCOMPARE(db_->count(QStringLiteral("FBT_Nature")), natures);
        c.execute(QStringLiteral("DELETE FROM FBT_Info"));
    }

    void demoDataIsLoadedOnceAndHangsTogether()
    {
        Connection& c = *db_->connection();
        c.execute(QStringLiteral("DELETE FROM FBT_Info"));
        QVERIFY(schema::loadDemoData(c) > 0);
        QCOMPARE(schema::loadDemoData(c), 0);
        QVERIFY(db_->count(QStringLiteral("FBT_Info")) >= 5);
        // Every detail row hangs on a bill or receipt of a client that exists.
        QCOMPARE(db_->count(QStringLiteral("bill_det"), QStringLiteral("billid not in (select billid from bill_main)")), 0);
        QCOMPARE(db_->count(QStringLiteral("recp_det"), QStringLiteral("recpid not in (select recpid from recp_main)")), 0);
        QCOMPARE(db_->count(QStringLiteral("bill_main"), QStringLiteral("code_no not in (select Code_No from FBT_Info)")), 0);
        QCOMPARE(db_->count(QStringLiteral("FBT_BankDet"), QStringLiteral("code_no not in (select Code_No from FBT_Info)")), 0);
    }

    // A statement sent ends before anything else runs on the connection, and its failure is the next one's.
    void aSentStatementEndsBeforeTheNext_data()
    {
        QTest::addColumn<QString>("sent");
        QTest::addColumn<QString>("next");
        QTest::addColumn<long>("number"); // of the failure, 0 for none
        for (const QString next : {"collect", "query", "stream"}) {
            QTest::newRow(qPrintable(QStringLiteral("a write, then %1").arg(next))) << "INSERT INTO FBT_Nature VALUES (901,'SENT')" << next << 0L;
            QTest::newRow(qPrintable(QStringLiteral("a failing write, then %1").arg(next))) << "INSERT INTO nowhere VALUES (1)" << next << 1146L;
        }
    }
    void aSentStatementEndsBeforeTheNext()
    {
        QFETCH(QString, sent);
        QFETCH(QString, next);
        QFETCH(long, number);
        Connection& c = *db_->connection();
        c.execute(QStringLiteral("DELETE FROM FBT_Nature"));
        const QString count = QStringLiteral("SELECT COUNT(*) FROM FBT_Nature");
        // WHEN a statement is sent and the connection is used next
        test::StatementRecorder recorder;
        long thrown = 0;
        QString seen;
        try {
            c.send(sent);
            if (next == QStringLiteral("collect"))
                QCOMPARE(c.collect(), 1);
            if (next == QStringLiteral("stream")) {
                RowStream rows(c, count);
                QVERIFY(rows.next());
                seen = QString::fromUtf8(rows.text(0));
                QVERIFY(!rows.next());
            } else {
                seen = c.query(count).rows.first().first().toString();
            }
        } catch (const Failure& f) {
            thrown = f.number();
        }
        recorder.stop();
        // THEN the sent statement ended first, with its own failure, and the connection goes on
        QCOMPARE(thrown, number);
        QCOMPARE(recorder.statements().size(), number ? 1 : 2);
        QCOMPARE(recorder.statements().first().sql, sent);
        QCOMPARE(recorder.statements().first().ok, number == 0);
        if (!number)
            QCOMPARE(seen, QStringLiteral("1"));
        QCOMPARE(db_->scalar(QStringLiteral("SELECT 6*7")), QStringLiteral("42"));
    }
};

CORVANE_TEST_CLASS(ConnectionTest)
#include "connectiontest.moc"
