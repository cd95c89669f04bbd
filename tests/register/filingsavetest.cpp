#include "registertestsupport.h"

#include "core/resumenext.h"
#include "db/schema.h"
#include "screens/register/filingsave.h"
#include "support/statementrecorder.h"
#include "support/testdatabase.h"
#include "support/testlog.h"
#include "support/testmain.h"

using namespace corvane;
using namespace corvane::test;
using namespace corvane::returnregister;

class FilingSaveTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db;
    std::shared_ptr<ScriptedPrompter> prompts;

private slots:
    void initTestCase() { db = std::make_unique<TestDatabase>(QStringLiteral("filing")); }
    void cleanupTestCase() { db.reset(); }
    void init()
    {
        db->startAfresh({QStringLiteral("FBT_Info"), QStringLiteral("FBT_AddInfo")});
        prompts = installPrompter();
    }

    void interestRule_data()
    {
        QTest::addColumn<QString>("storedInterest");
        QTest::addColumn<QString>("filed");
        QTest::addColumn<int>("answer"); // -1: no question expected
        QTest::addColumn<QString>("written");
        QTest::newRow("no interest date: kept empty") << "" << "15/07/2008" << -1 << "";
        QTest::newRow("todate never changes") << "todate" << "15/07/2008" << -1 << "todate";
        QTest::newRow("todate kept on a cleared date") << "todate" << "" << -1 << "todate";
        QTest::newRow("cleared date clears it without asking") << "31/07/2008" << "" << -1 << "";
        QTest::newRow("same date: nothing asked") << "15/07/2008" << "15/07/2008" << -1 << "15/07/2008";
        QTest::newRow("other date, Yes") << "31/07/2008" << "15/07/2008" << int(Prompter::Answer::Yes) << "15/07/2008";
        QTest::newRow("other date, No") << "31/07/2008" << "15/07/2008" << int(Prompter::Answer::No) << "31/07/2008";
    }
    void interestRule()
    {
        QFETCH(QString, storedInterest);
        QFETCH(QString, filed);
        QFETCH(int, answer);
        QFETCH(QString, written);
        // GIVEN a client with a row whose interest date is storedInterest
        insertClient(**db, QStringLiteral("C1"), QStringLiteral("One"));
        insertFiling(**db, QStringLiteral("C1"), 2008, QStringLiteral("01/07/2008"), QStringLiteral("A1"), storedInterest);
        if (answer >= 0)
            prompts->then(Prompter::Answer(answer));
        // WHEN the grid saves a new filing date
        QVector<Row> rows = load(**db, 2008);
        rows[0][FilingDate] = filed;
        ResumeNext guard(QStringLiteral("Pending"), QStringLiteral("SAVEDATA"));
        QCOMPARE(filing::writeGrid(**db, rows, QStringLiteral("2008-09"), *prompts, guard), 1);
        // THEN the question came only when asked for, and the interest date is as the rule says
        if (answer >= 0) {
            QCOMPARE(prompts->texts(),
                     QStringList{"Do you want to change Date of Interest Calculation " + storedInterest + " with " + filed});
            QCOMPARE(prompts->asked().front().title, QStringLiteral("Confirmation"));
            QCOMPARE(prompts->asked().front().buttons, Prompter::Buttons::YesNo);
        } else {
            QVERIFY(prompts->texts().isEmpty());
        }
        QCOMPARE(stored(*db, QStringLiteral("C1"), QStringLiteral("IntDt")), written);
        QCOMPARE(stored(*db, QStringLiteral("C1"), QStringLiteral("RetDt")), filed);
        QCOMPARE(rows[0][IntDate], written);
    }

    void newRowsHaveTheirThirtySixValuesAndEmptyRowsNone()
    {
        // GIVEN a new row with a date and a number, one with a number only and one with nothing
        insertClient(**db, QStringLiteral("N1"), QStringLiteral("New"));
        insertClient(**db, QStringLiteral("E1"), QStringLiteral("Empty"));
        insertClient(**db, QStringLiteral("E2"), QStringLiteral("Only a number"));
        QVector<Row> rows = load(**db, 2008);
        rows[0][FilingDate] = QStringLiteral("10/10/2008");
        rows[0][AckNo] = QStringLiteral("ACK 77");
        rows[2][AckNo] = QStringLiteral("N-1");
        ResumeNext guard(QStringLiteral("Pending"), QStringLiteral("SAVEDATA"));
        QCOMPARE(filing::writeGrid(**db, rows, QStringLiteral("2008-09"), *prompts, guard), 2);
        // THEN the first is inserted whole, the second with its number, the empty one not at all
        const auto result = (*db)->query(QStringLiteral("select * from FBT_AddInfo where Code_No='N1'"));
        QCOMPARE(result.rows.size(), 1);
        QStringList values;
        for (const QVariant& v : result.rows.first())
            values << (v.isNull() ? QStringLiteral("NULL") : v.toString());
        const QStringList expected{"N1", "2008", "0", "", "", "0", "0", "", "", "0", "0", "0", "", "0", "", "0", "0",
                                   "0", "0", "0", "0", "0", "0", "10/10/2008", "ACK 77", "", "", "", "", "1", "0", "1",
                                   "0", "1", "0", ""};
        QCOMPARE(values, expected);
        QCOMPARE(rows[0][HasRow], QStringLiteral("1"));
        QCOMPARE(db->count(QStringLiteral("FBT_AddInfo")), 2);
        QCOMPARE(stored(*db, QStringLiteral("E2"), QStringLiteral("RetAckNo")), QStringLiteral("N-1"));
    }

    void failedStatementStopsTheWritePass()
    {
        // GIVEN a grid read before another user saved client B2's row
        for (const char* code : {"A1", "B2", "C3"})
            insertClient(**db, QString::fromLatin1(code), QString::fromLatin1(code));
        QVector<Row> rows = load(**db, 2008);
        insertFiling(**db, QStringLiteral("B2"), 2008, QStringLiteral("01/05/2008"), QStringLiteral("THEIRS"));
        for (Row& row : rows)
            row[FilingDate] = QStringLiteral("20/06/2008");
        // WHEN the grid is saved
        ResumeNext guard(QStringLiteral("Pending"), QStringLiteral("SAVEDATA"));
        StatementRecorder recorder;
        QCOMPARE(filing::writeGrid(**db, rows, QStringLiteral("2008-09"), *prompts, guard), 1);
        recorder.stop();
        // THEN A1 is written and flushed, B2's insert fails and is logged, and nothing is written after it
        QCOMPARE(recorder.writes(), QStringList{"insert fbt_addinfo"});
        QCOMPARE(recorder.unflushedWrites(), QStringList());
        QCOMPARE(recorder.writesAfterFailure(), QStringList());
        QCOMPARE(stored(*db, QStringLiteral("A1"), QStringLiteral("RetDt")), QStringLiteral("20/06/2008"));
        QCOMPARE(stored(*db, QStringLiteral("B2"), QStringLiteral("RetAckNo")), QStringLiteral("THEIRS"));
        QCOMPARE(db->count(QStringLiteral("FBT_AddInfo"), QStringLiteral("Code_No='C3'")), 0);
        QCOMPARE(logContexts(), QStringList{"Pending\tSAVEDATA"});
        QCOMPARE(guard.failures(), 1);
    }

    void checkPass_data()
    {
        QTest::addColumn<QStringList>("dates");
        QTest::addColumn<int>("refused");
        QTest::newRow("01/04/Y accepted") << QStringList{"01/04/2008"} << -1;
        QTest::newRow("31/03/Y refused") << QStringList{"31/03/2008"} << 0;
        QTest::newRow("empty dates pass") << QStringList{"", ""} << -1;
        QTest::newRow("first refused row from the top") << QStringList{"15/05/2008", "", "01/01/2008", "31/03/2007"} << 2;
        QTest::newRow("next year's March accepted") << QStringList{"31/03/2009"} << -1;
    }
    void checkPass()
    {
        QFETCH(QStringList, dates);
        QFETCH(int, refused);
        QVector<Row> rows;
        for (const QString& d : dates) {
            Row row;
            row[FilingDate] = d;
            rows << row;
        }
        QCOMPARE(filing::checkGrid(rows, QStringLiteral("2008-09")), refused);
    }

    void saveOneClient_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("dateBox");
        QTest::addColumn<QString>("number");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QString>("message");
        QTest::newRow("no client") << "" << "15/07/2008" << "" << int(filing::Outcome::NoClient) << "Please Select a Client.";
        QTest::newRow("code in other case is unknown")
            << "k1" << "15/07/2008" << "" << int(filing::Outcome::UnknownCode) << "Client Code does not Exists.";
        QTest::newRow("31/03/Y refused")
            << "K1" << "31/03/2008" << "" << int(filing::Outcome::TooEarly) << "Date Should be on or after 01/04/2008";
        QTest::newRow("01/04/Y saved, quoted") << "K1" << "01/04/2008" << " O'Brien\\1 " << int(filing::Outcome::Saved) << "";
        QTest::newRow("incomplete date counts as none") << "K1" << "01/04/20" << "R9" << int(filing::Outcome::Saved) << "";
        QTest::newRow("nothing to save writes no row") << "K1" << "__/__/____" << "  " << int(filing::Outcome::Saved) << "";
    }
    void saveOneClient()
    {
        QFETCH(QString, code);
        QFETCH(QString, dateBox);
        QFETCH(QString, number);
        QFETCH(int, outcome);
        QFETCH(QString, message);
        insertClient(**db, QStringLiteral("K1"), QStringLiteral("Kappa"));
        QVector<Entry> entries = loadEntries(**db, 2008);
        ResumeNext guard(QStringLiteral("Pending"), QStringLiteral("CMDSAVE_CLICK"));
        StatementRecorder recorder;
        const auto result = filing::saveClient(**db, entries, {code, dateBox, number}, QStringLiteral("2008-09"), *prompts, guard);
        recorder.stop();
        QCOMPARE(recorder.unflushedWrites(), QStringList());
        QCOMPARE(int(result), outcome);
        QCOMPARE(filing::message(result, QStringLiteral("2008-09")), message);
        if (result != filing::Outcome::Saved) {
            QCOMPARE(db->count(QStringLiteral("FBT_AddInfo")), 0);
            return;
        }
        const QString date = dateBox.size() == 10 && dateBox.at(0).isDigit() ? dateBox : QString();
        const bool written = !date.isEmpty() || !number.trimmed().isEmpty();
        QCOMPARE(db->count(QStringLiteral("FBT_AddInfo")), written ? 1 : 0);
        QCOMPARE(entries[0][EntryHasRow], written ? QStringLiteral("1") : QString());
        if (!written)
            return;
        QCOMPARE(stored(*db, QStringLiteral("K1"), QStringLiteral("RetDt")), date);
        QCOMPARE(stored(*db, QStringLiteral("K1"), QStringLiteral("RetAckNo")), number.trimmed());
        QCOMPARE(entries[0][EntryDate], date);
        QCOMPARE(entries[0][EntryNumber], number.trimmed());
    }
};

CORVANE_TEST_CLASS(FilingSaveTest)
#include "filingsavetest.moc"
