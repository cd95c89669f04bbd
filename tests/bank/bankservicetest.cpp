#include "banktestsupport.h"

#include "core/resumenext.h"
#include "screens/bank/bankaccounts.h"
#include "screens/bank/bankregister.h"
#include "support/statementrecorder.h"

using namespace corvane;
using namespace corvane::test;

// The bank master register and a client's bank accounts as their screens use
// them: what each write leaves in the tables and the order of writes and flushes.
class BankServiceTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db;
    std::shared_ptr<ScriptedPrompter> prompts;

    // "SrNo|bank|account|default" of the client's accounts of a year.
    QString accounts()
    {
        return values(**db, QStringLiteral("select concat_ws('|', SrNo, BankName, AccNo, DefAcc) from FBT_BankDet where code_no = '%1' and Yr = %2 order by SrNo")
                                .arg(kClient).arg(kYear))
            .join(QLatin1Char(','));
    }

private slots:
    void initTestCase() { db = std::make_unique<TestDatabase>(QStringLiteral("banksvc")); }
    void cleanupTestCase() { db.reset(); }
    void init() { prompts = startAfresh(*db, {QStringLiteral("Bank_Master"), QStringLiteral("FBT_BankDet")}); }

    void bankRegister_data()
    {
        QTest::addColumn<int>("records");   // codes 1…n named "BANK n"
        QTest::addColumn<QString>("moves"); // before the action
        QTest::addColumn<QString>("action"); // add, modify, delete or nothing
        QTest::addColumn<QStringList>("fields");
        QTest::addColumn<QString>("names"); // bank names afterwards, in code order
        QTest::addColumn<QString>("shown"); // the current code afterwards
        QTest::addColumn<QStringList>("writes");
        const QStringList insert{"insert bank_master", "flush"}, update{"update bank_master", "flush"}, none;
        const QStringList named{"2", "NAMED", "BR", "BC"};
        QTest::newRow("empty: every move shows nothing") << 0 << "next,last,prev,first" << "" << none << "" << "" << none;
        QTest::newRow("previous on the first stays") << 3 << "prev,prev" << "" << none << "BANK 1,BANK 2,BANK 3" << "1" << none;
        QTest::newRow("next on the last stays") << 3 << "last,next,next" << "" << none << "BANK 1,BANK 2,BANK 3" << "3" << none;
        QTest::newRow("previous from the last") << 3 << "last,prev" << "" << none << "BANK 1,BANK 2,BANK 3" << "2" << none;
        QTest::newRow("add the first") << 0 << "" << "add" << QStringList{"1", "NEW", "BR", "BC"} << "NEW" << "1" << insert;
        QTest::newRow("add a quote and backslash, shown last")
            << 3 << "" << "add" << QStringList{"4", "O'BRIEN \\ SONS", "BR", "BC"} << "BANK 1,BANK 2,BANK 3,O'BRIEN \\ SONS" << "4" << insert;
        QTest::newRow("add: a code without a number is 0") << 2 << "" << "add" << QStringList{"ABC", "NEW", "BR", "BC"} << "NEW,BANK 1,BANK 2" << "2" << insert;
        QTest::newRow("add: the number at the start") << 2 << "" << "add" << QStringList{"12X", "NEW", "BR", "BC"} << "BANK 1,BANK 2,NEW" << "12" << insert;
        QTest::newRow("add a name of 100") << 1 << "" << "add" << QStringList{"2", QString(100, 'N'), "", ""} << "BANK 1," + QString(100, 'N') << "2" << insert;
        QTest::newRow("add a name of 101: refused") << 1 << "" << "add" << QStringList{"2", QString(101, 'N'), "", ""} << "BANK 1" << "1" << none;
        QTest::newRow("modify the first") << 3 << "" << "modify" << QStringList{"1", "NAMED", "BR", "BC"} << "NAMED,BANK 2,BANK 3" << "1" << update;
        QTest::newRow("modify a middle one") << 3 << "next" << "modify" << named << "BANK 1,NAMED,BANK 3" << "2" << update;
        QTest::newRow("modify the last") << 3 << "last" << "modify" << QStringList{"3", "NAMED", "BR", "BC"} << "BANK 1,BANK 2,NAMED" << "3" << update;
        // The code box is also the key: a changed code matches no row, and nothing is reported.
        QTest::newRow("modify with a changed code") << 3 << "next" << "modify" << QStringList{"7", "NAMED", "BR", "BC"} << "BANK 1,BANK 2,BANK 3" << "2" << update;
        QTest::newRow("delete the first, the next shows") << 3 << "" << "delete" << none << "BANK 2,BANK 3" << "2" << QStringList{"delete bank_master"};
        QTest::newRow("delete a middle one, the next shows") << 3 << "next" << "delete" << none << "BANK 1,BANK 3" << "3" << QStringList{"delete bank_master"};
        QTest::newRow("delete the last, the new last shows") << 3 << "last" << "delete" << none << "BANK 1,BANK 2" << "2" << QStringList{"delete bank_master"};
        QTest::newRow("delete the only one") << 1 << "" << "delete" << none << "" << "" << QStringList{"delete bank_master"};
    }
    void bankRegister()
    {
        QFETCH(int, records);
        QFETCH(QString, moves);
        QFETCH(QString, action);
        QFETCH(QStringList, fields);
        QFETCH(QString, names);
        QFETCH(QString, shown);
        QFETCH(QStringList, writes);
        seedBanks(**db, records);
        ResumeNext guard(QStringLiteral("TEST"), QStringLiteral("REGISTER"));
        BankRegister bank;
        bank.open(guard);
        for (const QString& move : moves.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            const auto step = move == "first" ? &BankRegister::moveFirst : move == "prev" ? &BankRegister::movePrevious
                            : move == "next"  ? &BankRegister::moveNext  : &BankRegister::moveLast;
            (bank.*step)(guard);
        }
        StatementRecorder recorder;
        QString refusal;
        if (action == QLatin1String("delete"))
            bank.deleteCurrent(guard);
        else if (!action.isEmpty())
            refusal = bank.save(action == QLatin1String("add"), fields, guard);
        recorder.stop();

        QCOMPARE(recorder.sequence(), writes);
        QCOMPARE(refusal.contains(QStringLiteral("Bank Name is too long")), action == QLatin1String("add") && writes.isEmpty());
        QCOMPARE(values(**db, QStringLiteral("select bank_name from Bank_Master order by bank_code_no")).join(QLatin1Char(',')), names);
        QCOMPARE(bank.current(guard).value(0), shown);
        if (!writes.isEmpty() && action != QLatin1String("delete") && names.contains(fields.at(1)))
            QCOMPARE(db->scalar(QStringLiteral("select concat_ws('|', branch, branch_code) from Bank_Master where bank_name = ") + sqlQuote(fields.at(1))),
                     fields.mid(2).join(QLatin1Char('|')));
        QCOMPARE(logLines(), QStringList());
    }

    void nextCode_data()
    {
        QTest::addColumn<int>("largest"); // 0: an empty register
        QTest::addColumn<int>("next");    // 0: none, the overflow logged
        QTest::newRow("empty register") << 0 << 1;
        QTest::newRow("one below the largest 16-bit number") << 32766 << 32767;
        QTest::newRow("past the largest 16-bit number") << 32767 << 0;
    }
    void nextCode()
    {
        QFETCH(int, largest);
        QFETCH(int, next);
        if (largest)
            insertBank(**db, largest, QStringLiteral("LAST"), QString(), QString());
        ResumeNext guard(QStringLiteral("TEST"), QStringLiteral("NEXTCODE"));
        const std::optional<qint16> code = BankRegister().nextCode(guard);
        QCOMPARE(code.value_or(0), next);
        QCOMPARE(logLines().size(), next ? 0 : 1);
        if (!next)
            QVERIFY(logLines().first().contains(QStringLiteral("\t6\t")));
    }

    void accountsLoad_data()
    {
        QTest::addColumn<int>("thisYear");
        QTest::addColumn<int>("lastYear");
        QTest::addColumn<int>("answer"); // Prompter::Answer when asked
        QTest::addColumn<QString>("loaded"); // the bank names
        QTest::newRow("this year's, by SrNo") << 3 << 2 << -1 << "BANK 1,BANK 2,BANK 3";
        QTest::newRow("none: last year's on Yes") << 0 << 2 << int(Prompter::Answer::Yes) << "BANK 1,BANK 2";
        QTest::newRow("none: nothing on No") << 0 << 2 << int(Prompter::Answer::No) << "";
        QTest::newRow("none in either year: not asked") << 0 << 0 << -1 << "";
    }
    void accountsLoad()
    {
        QFETCH(int, thisYear);
        QFETCH(int, lastYear);
        QFETCH(int, answer);
        QFETCH(QString, loaded);
        insertAccount(**db, QStringLiteral("B002"), kYear, 1, {"OTHER", "", "", "", "", "N", "Y"});
        seedAccounts(**db, kYear, thisYear, 1);
        seedAccounts(**db, kYear - 1, lastYear, 1);
        if (answer >= 0)
            prompts->then(Prompter::Answer(answer));
        ResumeNext guard(QStringLiteral("TEST"), QStringLiteral("LOAD"));
        StatementRecorder recorder;
        BankAccounts list;
        list.load(guard);
        QStringList names;
        for (const QStringList& row : list.rows())
            names << row.value(BankAccounts::BankName);
        QCOMPARE(names.join(QLatin1Char(',')), loaded);
        QCOMPARE(list.importedFromPreviousYear(), answer == int(Prompter::Answer::Yes));
        QCOMPARE(prompts->texts(), answer >= 0 ? QStringList{QStringLiteral("Do you want to Import from Previous Year?")} : QStringList());
        QCOMPARE(recorder.writes(), QStringList());
    }

    void accountsSave_data()
    {
        QTest::addColumn<QString>("edit"); // put N (new row), put N! (as the default), remove N, or nothing
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QStringList>("writes");
        const QStringList three{"delete fbt_bankdet", "flush", "insert fbt_bankdet", "insert fbt_bankdet", "insert fbt_bankdet", "flush"};
        const QStringList two{"delete fbt_bankdet", "flush", "insert fbt_bankdet", "insert fbt_bankdet", "flush"};
        QTest::newRow("imported last year, one changed") << "import,put 1" << "1|BANK 1|ACC1|Y,2|BANK 2|NEW|N,3|BANK 3|ACC3|N" << three;
        QTest::newRow("the first one becomes the default") << "clear,put -1" << "1|NEW BANK|NEW|Y" << QStringList{"delete fbt_bankdet", "flush", "insert fbt_bankdet", "flush"};
        QTest::newRow("a default clears the others") << "put! 0" << "1|BANK 1|NEW|Y,2|BANK 2|ACC2|N,3|BANK 3|ACC3|N" << three;
        QTest::newRow("remove the first: renumbered") << "remove 0" << "1|BANK 2|ACC2|N,2|BANK 3|ACC3|Y" << two;
        QTest::newRow("remove a middle one") << "remove 1" << "1|BANK 1|ACC1|N,2|BANK 3|ACC3|Y" << two;
        QTest::newRow("remove the last, the default: the new last") << "remove 2" << "1|BANK 1|ACC1|N,2|BANK 2|ACC2|Y" << two;
        QTest::newRow("account no. of 30") << "put 0 " + QString(30, '7') << "1|BANK 1|" + QString(30, '7') + "|N,2|BANK 2|ACC2|N,3|BANK 3|ACC3|Y" << three;
        QTest::newRow("account no. of 31: refused, nothing written") << "put 0 " + QString(31, '7') << "1|BANK 1|ACC1|N,2|BANK 2|ACC2|N,3|BANK 3|ACC3|Y" << QStringList();
    }
    void accountsSave()
    {
        QFETCH(QString, edit);
        QFETCH(QString, stored);
        QFETCH(QStringList, writes);
        const bool import = edit.startsWith(QLatin1String("import"));
        seedAccounts(**db, import ? kYear - 1 : kYear, 3, import ? 1 : 3);
        if (import)
            prompts->then(Prompter::Answer::Yes);
        ResumeNext guard(QStringLiteral("TEST"), QStringLiteral("SAVE"));
        BankAccounts list;
        list.load(guard);
        for (const QString& step : edit.split(QLatin1Char(','))) {
            const QStringList words = step.split(QLatin1Char(' '));
            if (words.at(0) == QLatin1String("clear"))
                while (list.count())
                    list.remove(0);
            else if (words.at(0) == QLatin1String("remove"))
                list.remove(words.at(1).toInt());
            else if (words.at(0).startsWith(QLatin1String("put"))) {
                BankAccountEntry e = BankAccountEntry::fromCells(list.rows().value(words.at(1).toInt(), {QStringLiteral("NEW BANK")}));
                e.accountNo = words.value(2, QStringLiteral("NEW"));
                e.isDefault = words.at(0) == QLatin1String("put!");
                list.put(words.at(1).toInt(), e);
            }
        }
        StatementRecorder recorder;
        const QString refusal = list.save(guard);
        recorder.stop();
        QCOMPARE(recorder.sequence(), writes);
        QCOMPARE(refusal.isEmpty(), !writes.isEmpty());
        QCOMPARE(accounts(), stored);
        QCOMPARE(logLines(), QStringList());
    }
};

CORVANE_TEST_CLASS(BankServiceTest)
#include "bankservicetest.moc"
