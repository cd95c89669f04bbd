#include "db/sqltext.h"
#include "support/clirunner.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QtTest>

using namespace corvane;
using namespace corvane::test;

namespace {

const QStringList kClientTables{QStringLiteral("FBT_Info"), QStringLiteral("FBT_AddInfo"), QStringLiteral("FBT_MiscInf"),
                                QStringLiteral("FBT_BankDet"), QStringLiteral("bill_main"), QStringLiteral("recp_main")};

// A bill with two lines and its receipt, and with `full` three rows more in
// the tables whose keys hold the code (where the collation would take one
// emoji for another).
int seedClient(Connection& c, const QString& code, int id, bool full)
{
    const QString q = sqlQuote(code);
    if (full) {
        c.execute(QStringLiteral("INSERT INTO FBT_Info (Code_No, Name) VALUES (%1, 'Client %2')").arg(q).arg(id));
        c.execute(QStringLiteral("INSERT INTO FBT_AddInfo (Code_No, TYear) VALUES (%1, 2008)").arg(q));
        c.execute(QStringLiteral("INSERT INTO FBT_MiscInf (Code_No, TYear) VALUES (%1, 2008)").arg(q));
        c.execute(QStringLiteral("INSERT INTO FBT_BankDet (code_no, Yr, SrNo) VALUES (%1, 2008, 1)").arg(q));
    }
    c.execute(QStringLiteral("INSERT INTO bill_main (billid, code_no, amount) VALUES (%1, %2, 100)").arg(id).arg(q));
    c.execute(QStringLiteral("INSERT INTO bill_det (billid, srno, amount) VALUES (%1, 1, 50), (%1, 2, 50)").arg(id));
    c.execute(QStringLiteral("INSERT INTO recp_main (recpid, code_no, amount) VALUES (%1, %2, 100)").arg(id).arg(q));
    c.execute(QStringLiteral("INSERT INTO recp_det (recpid, billid, amount) VALUES (%1, %1, 100)").arg(id));
    return full ? 6 : 2;
}

const QStringList kSeeded{QStringLiteral("A001"), QStringLiteral("B002"), QString::fromUtf8("😀"), QString::fromUtf8("😎"),
                          QStringLiteral("a003")};
const QString kBillsOnly = QString::fromUtf8("😎");

} // namespace

// Client codes as a hostile or careless user gives them: only the code given is touched.
class ClientCodeTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db_;
    QMap<QString, int> seededRows_;

    int rowsOf(const QString& code) const
    {
        int n = 0;
        for (const QString& table : kClientTables)
            n += db_->count(table, QStringLiteral("code_no = binary ") + sqlQuote(code));
        return n;
    }

    int detailRows() const { return db_->count(QStringLiteral("bill_det")) + db_->count(QStringLiteral("recp_det")); }

private slots:
    void init()
    {
        db_ = std::make_unique<TestDatabase>(QStringLiteral("clientcode"));
        int id = 1;
        for (const QString& code : kSeeded)
            seededRows_[code] = seedClient(**db_, code, id++, code != kBillsOnly);
    }
    void cleanup() { db_.reset(); }

    void deleteTouchesOnlyTheCodeGiven_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("deleted"); // the seeded client that goes, or empty
        QTest::newRow("exact") << "A001" << "A001";
        QTest::newRow("accented letter") << QString::fromUtf8("Ä001") << "";
        QTest::newRow("trailing blank") << "B002 " << "";
        QTest::newRow("leading blank") << " B002" << "";
        QTest::newRow("one emoji for another") << QString::fromUtf8("😀") << QString::fromUtf8("😀");
        QTest::newRow("other emoji") << QString::fromUtf8("😺") << "";
        QTest::newRow("lower case given") << "a001" << "";
        QTest::newRow("stored in lower case") << "A003" << "a003";
        QTest::newRow("wildcard") << "%" << "";
        QTest::newRow("injection") << "' or '1'='1" << "";
        QTest::newRow("backslash") << "A001\\" << "";
    }

    void deleteTouchesOnlyTheCodeGiven()
    {
        QFETCH(QString, code);
        QFETCH(QString, deleted);
        const CliResult r = runCli(databaseArgs(*db_) + QStringList{"client", "delete", "--", code});
        QCOMPARE(r.status, 0);
        for (const QString& seeded : kSeeded)
            QCOMPARE(rowsOf(seeded), seeded == deleted ? 0 : seededRows_.value(seeded));
        QCOMPARE(detailRows(), (kSeeded.size() - (deleted.isEmpty() ? 0 : 1)) * 3);
    }

    void renameRefusesACodeLongerThanTheColumn_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("status");
        QTest::newRow("20 characters fit") << 20 << 0;
        QTest::newRow("21 characters do not") << 21 << 1;
        QTest::newRow("20 emoji fit") << -20 << 0;
        QTest::newRow("21 emoji do not") << -21 << 1;
    }

    void renameRefusesACodeLongerThanTheColumn()
    {
        QFETCH(int, length);
        QFETCH(int, status);
        const QString newCode = length > 0 ? QString(length, QLatin1Char('N')) : QString::fromUtf8("😀").repeated(-length);
        const CliResult r = runCli(databaseArgs(*db_) + QStringList{"client", "rename", "B002", newCode});
        QCOMPARE(r.status, status);
        QCOMPARE(rowsOf(newCode), status == 0 ? 6 : 0);
        QCOMPARE(rowsOf(QStringLiteral("B002")), status == 0 ? 0 : 6);
        if (status != 0) {
            QVERIFY2(r.err.contains(QStringLiteral("code_no")), qPrintable(r.err));
            QVERIFY2(r.err.contains(QStringLiteral("at most 20")), qPrintable(r.err));
        }
    }
};

CORVANE_TEST_CLASS(ClientCodeTest)
#include "clientcodetest.moc"
