#include "core/modbase.h"
#include "core/prompter.h"
#include "core/resumenext.h"
#include "db/sqltext.h"
#include "screens/addinfo/addinforecord.h"
#include "screens/bank/bankaccounts.h"
#include "support/clirunner.h"
#include "support/prompts.h"
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

// Client codes and values as a hostile or careless user gives them: only the
// code given is touched, and a value is stored whole or not at all.
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
        QTest::newRow("one emoji for another") << QString::fromUtf8("😀") << QString::fromUtf8("😀");
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

    void renameRefusesACodeLongerThanTheColumn()
    {
        // GIVEN a new code one longer than code_no holds, in characters that take four bytes each
        const QString newCode = QString::fromUtf8("😀").repeated(21);
        const CliResult r = runCli(databaseArgs(*db_) + QStringList{"client", "rename", "B002", newCode});
        // THEN the command fails naming the column and its width, and nothing changed
        QCOMPARE(r.status, 1);
        QVERIFY2(r.err.contains(QStringLiteral("code_no")) && r.err.contains(QStringLiteral("at most 20")), qPrintable(r.err));
        QCOMPARE(rowsOf(newCode), 0);
        QCOMPARE(rowsOf(QStringLiteral("B002")), 6);
    }

    void valuesLongerThanTheirColumnAreRefused_data()
    {
        QTest::addColumn<QString>("writer");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("field"); // named in the refusal; empty when the value is stored
        const QString emoji = QString::fromUtf8("😀");
        QTest::newRow("account no. of 31") << "bank account" << QString(31, '7') << "Account No.";
        QTest::newRow("account no. of 30 emoji") << "bank account" << emoji.repeated(30) << "";
        QTest::newRow("ward of 61") << "additional information" << QString(61, 'W') << "Ward";
        QTest::newRow("auditor of 101") << "second edition" << QString(101, 'A') << "Auditor, entry 4";
        QTest::newRow("acknowledgement of 31") << "filing" << QString(31, '9') << "Acknowledgement No.";
        QTest::newRow("acknowledgement of 30 emoji") << "filing" << emoji.repeated(30) << "";
    }

    void valuesLongerThanTheirColumnAreRefused()
    {
        QFETCH(QString, writer);
        QFETCH(QString, value);
        QFETCH(QString, field);
        // GIVEN client A001 with a bank account and its additional information, each stored before
        Connection& c = **db_;
        c.execute(QStringLiteral("UPDATE FBT_BankDet SET BankName='OLD BANK', AccNo='OLD', DefAcc='Y' WHERE code_no='A001'"));
        c.execute(QStringLiteral("UPDATE FBT_AddInfo SET Ward='OLD', RetAckNo='OLD' WHERE Code_No='A001'"));
        c.execute(QStringLiteral("UPDATE FBT_MiscInf SET Var1_3='OLD' WHERE Code_No='A001'"));
        modbase().Code = QStringLiteral("A001");
        modbase().TYear = 2008;
        auto answers = installPrompter();
        ResumeNext guard(QStringLiteral("TEST"), QStringLiteral("SAVE"));
        const QString stored = QStringLiteral("binary ") + sqlQuote(value);

        // WHEN the value is saved as its screen or command saves it
        QString refusal;
        int rows = -1; // rows holding the value afterwards
        if (writer == QLatin1String("bank account")) {
            BankAccounts accounts;
            accounts.load(guard);
            BankAccountEntry entry;
            entry.bankName = QStringLiteral("NEW BANK");
            entry.accountNo = value;
            accounts.put(0, entry);
            refusal = accounts.save(guard);
            rows = db_->count(QStringLiteral("FBT_BankDet"), QStringLiteral("AccNo=") + stored);
        } else if (writer == QLatin1String("additional information") || writer == QLatin1String("second edition")) {
            const bool first = writer == QLatin1String("additional information");
            AddInfoRecord record(first ? AddInfoEdition::First : AddInfoEdition::Second, QStringLiteral("frmaddinfo"));
            record.READDATA(false);
            record.values.nob[0] = true;
            (first ? record.values.ward : record.misc.auditor[3]) = value;
            if (record.SAVEDATA() == AddInfoRecord::SaveResult::TooLong)
                refusal = record.tooLong();
            rows = first ? db_->count(QStringLiteral("FBT_AddInfo"), QStringLiteral("Ward=") + stored)
                         : db_->count(QStringLiteral("FBT_MiscInf"), QStringLiteral("Var1_3=") + stored);
        } else {
            const CliResult r = runCli(databaseArgs(*db_) + QStringList{"filing", "A001", "--year", "2008", "--ack", value});
            QCOMPARE(r.status, field.isEmpty() ? 0 : 1);
            refusal = r.err.contains(QStringLiteral("too long")) ? r.err : QString();
            rows = db_->count(QStringLiteral("FBT_AddInfo"), QStringLiteral("RetAckNo=") + stored);
        }

        // THEN a value that fits is stored whole; one that does not is refused naming
        // its field, and what was stored before is still there
        QCOMPARE(answers->texts(), QStringList());
        if (field.isEmpty()) {
            QVERIFY2(refusal.isEmpty(), qPrintable(refusal));
            QCOMPARE(rows, 1);
            return;
        }
        QVERIFY2(refusal.contains(field + QStringLiteral(" is too long")), qPrintable(refusal));
        QCOMPARE(rows, 0);
        QCOMPARE(db_->count(QStringLiteral("FBT_BankDet"), QStringLiteral("AccNo='OLD'")), 1);
        QCOMPARE(db_->count(QStringLiteral("FBT_AddInfo"), QStringLiteral("Ward='OLD' AND RetAckNo='OLD'")), 1);
        QCOMPARE(db_->count(QStringLiteral("FBT_MiscInf"), QStringLiteral("Var1_3='OLD'")), 1);
    }
};

CORVANE_TEST_CLASS(ClientCodeTest)
#include "clientcodetest.moc"
