#include "db/clientdata.h"
#include "db/sqltext.h"
#include "support/statementrecorder.h"
#include "support/testdatabase.h"
#include "support/testlog.h"
#include "support/testmain.h"

using namespace corvane;

namespace {

// The host's tables that carry code_no.
const QStringList kClientTables{QStringLiteral("FBT_Info"), QStringLiteral("FBT_AddInfo"), QStringLiteral("FBT_MiscInf"),
                                QStringLiteral("FBT_BankDet"), QStringLiteral("bill_main"), QStringLiteral("recp_main")};

// A client with two years of records, two bills of two lines each and a receipt for both bills.
void seedClient(Connection& c, const QString& code, int firstId)
{
    const QString q = sqlQuote(code);
    c.execute(QStringLiteral("INSERT INTO FBT_Info (Code_No, Name) VALUES (%1, 'Client %2')").arg(q).arg(firstId));
    for (int year : {2007, 2008}) {
        c.execute(QStringLiteral("INSERT INTO FBT_AddInfo (Code_No, TYear) VALUES (%1, %2)").arg(q).arg(year));
        c.execute(QStringLiteral("INSERT INTO FBT_MiscInf (Code_No, TYear) VALUES (%1, %2)").arg(q).arg(year));
        c.execute(QStringLiteral("INSERT INTO FBT_BankDet (code_no, Yr, SrNo) VALUES (%1, %2, 1)").arg(q).arg(year));
    }
    for (int bill = firstId; bill < firstId + 2; ++bill) {
        c.execute(QStringLiteral("INSERT INTO bill_main (billid, code_no, amount) VALUES (%1, %2, 100)").arg(bill).arg(q));
        for (int line = 1; line <= 2; ++line)
            c.execute(QStringLiteral("INSERT INTO bill_det (billid, srno, amount) VALUES (%1, %2, 50)").arg(bill).arg(line));
        c.execute(QStringLiteral("INSERT INTO recp_det (recpid, billid, amount) VALUES (%1, %2, 100)").arg(firstId).arg(bill));
    }
    c.execute(QStringLiteral("INSERT INTO recp_main (recpid, code_no, amount) VALUES (%1, %2, 200)").arg(firstId).arg(q));
}

} // namespace

class ClientDataTest : public QObject {
    Q_OBJECT

    std::unique_ptr<test::TestDatabase> db_;

    // Rows of a client (compared exactly) in the given tables.
    int rowsOf(const QString& code, const QStringList& tables = kClientTables) const
    {
        int n = 0;
        for (const QString& table : tables)
            n += db_->count(table, QStringLiteral("code_no = binary ") + sqlQuote(code));
        return n;
    }

    int orphanDetails() const
    {
        return db_->count(QStringLiteral("bill_det"), QStringLiteral("billid NOT IN (SELECT billid FROM bill_main)"))
            + db_->count(QStringLiteral("recp_det"), QStringLiteral("recpid NOT IN (SELECT recpid FROM recp_main)"));
    }

private slots:
    void init()
    {
        db_ = std::make_unique<test::TestDatabase>(QStringLiteral("clientdata"));
        seedClient(**db_, QStringLiteral("C001"), 100);
        seedClient(**db_, QStringLiteral("C002"), 200);
    }

    void cleanup() { db_.reset(); }

    void deleteClientLeavesNoOrphans()
    {
        // GIVEN two clients with bills and receipts WHEN the first is deleted
        test::StatementRecorder recorder;
        const ClientDataResult result = DeleteClient(db_->connection().get(), QStringLiteral("C001"));
        recorder.stop();

        // THEN each delete was flushed before the next (the backup copies the table files), details first
        QCOMPARE(recorder.unflushedWrites(), QStringList());
        QCOMPARE(recorder.writes().mid(0, 2), (QStringList{"delete bill_det", "delete recp_det"}));
        QCOMPARE(recorder.writes().size(), 2 + kClientTables.size());

        // AND none of its rows remain, its bill and receipt lines went with them, the other client is whole
        QCOMPARE(rowsOf(QStringLiteral("C001")), 0);
        QCOMPARE(orphanDetails(), 0);
        QCOMPARE(rowsOf(QStringLiteral("C002")), 10);
        QCOMPARE(db_->count(QStringLiteral("bill_det")), 4);
        QCOMPARE(db_->count(QStringLiteral("recp_det")), 2);
        QCOMPARE(result.tables, kClientTables.size());
        QCOMPARE(result.rows, 10 + 4 + 2);
        QCOMPARE(result.failures, 0);
        QVERIFY(test::logLines().isEmpty());
    }

    void tablesAddedLaterAreIncluded_data()
    {
        QTest::addColumn<QString>("column");
        QTest::newRow("code_no") << "code_no";
        QTest::newRow("CODE_NO") << "CODE_NO";
    }

    void tablesAddedLaterAreIncluded()
    {
        QFETCH(QString, column);
        // GIVEN a table the host added later
        db_->connection()->execute(QStringLiteral("CREATE TABLE zz_notes (id INT, %1 VARCHAR(20), note VARCHAR(20)) ENGINE=MyISAM").arg(column));
        db_->connection()->execute(QStringLiteral("INSERT INTO zz_notes VALUES (1, 'C001', 'a'), (2, 'C002', 'b'), (3, 'C001', 'c')"));
        const QStringList tables{QStringLiteral("zz_notes")};

        // WHEN the first client is renamed, THEN its notes follow
        ChangeCode(db_->connection().get(), QStringLiteral("C001"), QStringLiteral("C009"));
        QCOMPARE(rowsOf(QStringLiteral("C009"), tables), 2);

        // WHEN it is deleted, THEN its notes go
        DeleteClient(db_->connection().get(), QStringLiteral("C009"));
        QCOMPARE(rowsOf(QStringLiteral("C009"), tables), 0);
        QCOMPARE(rowsOf(QStringLiteral("C002"), tables), 1);
        QVERIFY(test::logLines().isEmpty());
    }

    void aFailingTableIsLoggedAndSkipped()
    {
        // GIVEN a view with code_no that cannot be deleted from, listed before the host's tables
        db_->connection()->execute(
            QStringLiteral("CREATE VIEW a_totals AS SELECT code_no, COUNT(*) AS bills FROM bill_main GROUP BY code_no"));

        // WHEN the client is deleted
        const ClientDataResult result = DeleteClient(db_->connection().get(), QStringLiteral("C001"));

        // THEN the view's statement is logged once and every later table was still done
        const QStringList lines = test::logLines();
        QCOMPARE(lines.size(), 1);
        QCOMPARE(lines.first().section(QLatin1Char('\t'), 1, 1), QStringLiteral("1288"));
        QCOMPARE(test::logContexts(), QStringList{QStringLiteral("CLSDATA\tDELETECLIENT")});
        QCOMPARE(result.failures, 1);
        QCOMPARE(rowsOf(QStringLiteral("C001")), 0);
        QCOMPARE(orphanDetails(), 0);
    }

    void noClientTablesStillTriesBillsAndReceipts()
    {
        // GIVEN a database whose only table has no code_no
        db_.reset();
        db_ = std::make_unique<test::TestDatabase>(QStringLiteral("clientdata_bare"), false);
        db_->connection()->execute(QStringLiteral("CREATE TABLE plain (x INT) ENGINE=MyISAM"));
        db_->connection()->execute(QStringLiteral("INSERT INTO plain VALUES (1)"));

        const ClientDataResult result = DeleteClient(db_->connection().get(), QStringLiteral("C001"));

        // THEN the bill and receipt statements ran and failed (their tables are missing), nothing else happened
        const QStringList lines = test::logLines();
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines.at(0).contains(QStringLiteral("bill_")));
        QVERIFY(lines.at(1).contains(QStringLiteral("recp_")));
        QCOMPARE(result.tables, 0);
        QCOMPARE(db_->count(QStringLiteral("plain")), 1);
    }

    void changeCode_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("oldCd");
        QTest::addColumn<QString>("newCd");
        QTest::addColumn<int>("changed");

        const QString full(20, QLatin1Char('N')); // as long as code_no
        QTest::newRow("capitals") << "C001" << "C001" << "N100" << 10;
        QTest::newRow("old code in small letters changes nothing") << "C001" << "c001" << "N100" << 0;
        QTest::newRow("stored in small letters, asked in capitals") << "c003" << "C003" << "N100" << 10;
        QTest::newRow("stored in small letters, asked so") << "c003" << "c003" << "N100" << 0;
        QTest::newRow("new code fills the column") << "C001" << "C001" << full << 10;
        QTest::newRow("new code one longer is refused") << "C001" << "C001" << full + QLatin1Char('N') << -1;
        // Characters are counted, not bytes.
        QTest::newRow("new code of 20 emoji fills the column") << "C001" << "C001" << QString::fromUtf8("😀").repeated(20) << 10;
    }

    void changeCode()
    {
        QFETCH(QString, stored);
        QFETCH(QString, oldCd);
        QFETCH(QString, newCd);
        QFETCH(int, changed);
        if (stored != QLatin1String("C001"))
            seedClient(**db_, stored, 300);

        test::StatementRecorder recorder;
        const ClientDataResult result = ChangeCode(db_->connection().get(), oldCd, newCd);
        recorder.stop();

        const bool refused = changed < 0;
        changed = qMax(0, changed);
        QCOMPARE(result.rows, changed);
        QCOMPARE(result.refusal.isEmpty(), !refused);
        QCOMPARE(rowsOf(newCd), changed);
        QCOMPARE(rowsOf(stored), 10 - changed);
        QCOMPARE(rowsOf(QStringLiteral("C002")), 10);
        // Detail lines hang on their bills and receipts, whatever the code.
        QCOMPARE(orphanDetails(), 0);
        QCOMPARE(test::logLines().size(), refused ? 1 : 0);
        // Every table is updated and flushed, or none is touched after the refusal.
        QCOMPARE(recorder.writes().size(), refused ? 0 : int(kClientTables.size()));
        QCOMPARE(recorder.flushes(), refused ? 0 : int(kClientTables.size()));
        QCOMPARE(recorder.unflushedWrites(), QStringList());
    }

    void changeCodeToACodeInUseGoesOnAfterTheFailure()
    {
        // GIVEN the new code is taken in the client master (its key)
        db_->connection()->execute(QStringLiteral("INSERT INTO FBT_Info (Code_No, Name) VALUES ('C005', 'Taken')"));
        const ClientDataResult result = ChangeCode(db_->connection().get(), QStringLiteral("C001"), QStringLiteral("C005"));

        // THEN the master's statement failed and was logged, every other table was changed
        const QStringList lines = test::logLines();
        QVERIFY2(lines.size() == 1, qPrintable(lines.join(QLatin1Char('\n'))));
        QCOMPARE(lines.first().section(QLatin1Char('\t'), 1, 1), QStringLiteral("1062"));
        QCOMPARE(test::logContexts(), QStringList{QStringLiteral("CLSDATA\tCHANGECODE")});
        QCOMPARE(result.failures, 1);
        QCOMPARE(rowsOf(QStringLiteral("C001")), 1);
        QCOMPARE(rowsOf(QStringLiteral("C005")), 10);
    }

    void withoutAConnectionEveryStatementIsLogged()
    {
        const ClientDataResult deleted = DeleteClient(nullptr, QStringLiteral("C001"));
        const ClientDataResult changed = ChangeCode(nullptr, QStringLiteral("C001"), QStringLiteral("X"));
        QCOMPARE(deleted.failures, 5);
        QCOMPARE(changed.failures, 1);
        for (const QString& line : test::logLines())
            QCOMPARE(line.section(QLatin1Char('\t'), 1, 1), QStringLiteral("91"));
        QCOMPARE(rowsOf(QStringLiteral("C001")), 10);
    }
};

CORVANE_TEST_CLASS(ClientDataTest)
#include "clientdatatest.moc"
