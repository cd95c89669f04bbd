#include "core/modbase.h"
#include "screens/addinfo/addinforecord.h"
#include "db/schema.h"
#include "support/statementrecorder.h"
#include "support/testdatabase.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QtTest>

using namespace corvane;

namespace {

const QString kClient = QStringLiteral("C001");
constexpr qint16 kYear = 2007;

// A complete set of first-edition answers.
AddInfoValues sampleAnswers()
{
    AddInfoValues v;
    v.chAdd = true;
    v.ward = QStringLiteral("WARD 3(2)");
    v.oldWard = QStringLiteral("WARD 1");
    v.section = 2;
    v.revRet = true;
    v.revRecNo = QStringLiteral("RCPT 77");
    v.revRecDt = QStringLiteral("15/09/2007");
    v.nob = {false, true, false, true, false, false};
    v.ac44AA = true;
    v.ac44AB = true;
    v.dt44AB = QStringLiteral("30/10/2007");
    v.ac44ABC = false;
    v.dt44ABC = QStringLiteral("01/01/2007");
    v.peIndia = true;
    v.dtRel2 = true;
    v.empBoth = true;
    v.sepBooks = true;
    v.indiaEmp = QStringLiteral("40");
    v.totalEmp = QStringLiteral("55");
    v.areaCd = QStringLiteral("MUM");
    v.aoTyp = QStringLiteral("W");
    v.aoRng = QStringLiteral("12");
    v.aoNo = QStringLiteral("3");
    v.calc115WJ = true;
    v.amt115WJ = QStringLiteral("1250.5");
    v.calc115WK = true;
    v.amt115WK = QStringLiteral("300");
    v.calc115WJ5 = true; // the second edition's
    v.amt115WJ5 = QStringLiteral("77");
    v.intUpto = true;
    v.intDt = QStringLiteral("31/03/2008");
    return v;
}

} // namespace

// The additional information record of both editions on the real server.
class AddInfoRecordTest : public QObject {
    Q_OBJECT

    std::unique_ptr<test::TestDatabase> db_;

    Connection& c() { return *db_->connection(); }

    QString column(const QString& name)
    {
        return db_->scalar(QStringLiteral("select ") + name + QStringLiteral(" from FBT_AddInfo where code_no='C001' and tyear=2007"));
    }

    // Every row of a table, its fields joined by '|'.
    QString rowsOf(const QString& table)
    {
        QStringList fields;
        for (const auto& row : c().query(QStringLiteral("select * from ") + table).rows)
            for (const QVariant& v : row)
                fields << v.toString();
        return fields.join(QLatin1Char('|'));
    }

    // A row as the return register leaves it: filed, with a 115WJ(5) choice.
    void insertFiledRow()
    {
        c().execute(QStringLiteral("insert into FBT_AddInfo values('C001',2007,'0','OLD WARD','','1','0','','','5','0','0','','0','',"
                                   "'0','0','0','0','0','0',7,7,'10/10/2007','ACK-9','','','','','0',0,'0',0,'1',800,'')"));
    }

    static AddInfoRecord openRecord(AddInfoEdition edition)
    {
        AddInfoRecord r(edition, edition == AddInfoEdition::First ? QStringLiteral("frmaddinfo") : QStringLiteral("frmaddinfo1"));
        r.READDATA(false);
        return r;
    }

private slots:
    void init()
    {
        // One database per class; each test starts from empty tables and an empty log.
        db_->startAfresh({QStringLiteral("FBT_AddInfo"), QStringLiteral("FBT_MiscInf"), QStringLiteral("FBT_Info")});
        modbase().Code = kClient;
        modbase().TYear = kYear;
    }
    void initTestCase() { db_ = std::make_unique<test::TestDatabase>(QStringLiteral("addinfo")); }
    void cleanupTestCase() { db_.reset(); }

    void aYearWithoutARowInsertsACompleteRow_data()
    {
        QTest::addColumn<int>("edition");
        QTest::addColumn<QString>("addInfo");
        QTest::addColumn<QString>("miscInf");
        QTest::newRow("first edition, nothing filed yet")
            << int(AddInfoEdition::First)
            << "C001|2007|1|WARD 3(2)|WARD 1|2|1|RCPT 77|15/09/2007|24|1|1|30/10/2007|0||1|0|1|0|1|1|40|55|||MUM|W|12|3|1|1250.5|1|300|1|0|31/03/2008"
            << "";
        QTest::newRow("second edition: the first's questions blank, its own 115WJ(5), the representative kept unticked")
            << int(AddInfoEdition::Second)
            << "C001|2007|0|WARD 3(2)||2|1|RCPT 77|15/09/2007|||||||1||||1|1|40|55|||MUM|W|12|3|1|1250.5|1|300|1|77|31/03/2008"
            << "C001|2007|0|REP NAME|||||||GOA||0|1||||ABCDE1234F||||||||01/05/2007|1|OLD & CO";
    }

    void aYearWithoutARowInsertsACompleteRow()
    {
        QFETCH(int, edition);
        QFETCH(QString, addInfo);
        QFETCH(QString, miscInf);
        // GIVEN a client year without a row
        AddInfoRecord r = openRecord(AddInfoEdition(edition));
        QCOMPARE(r.marker, QString());
        // WHEN the answers are saved
        r.values = sampleAnswers();
        r.misc.rep[0] = QStringLiteral("REP NAME");
        r.misc.rep[7] = QStringLiteral("GOA");
        r.misc.opt44AB = true;
        r.misc.auditor[3] = QStringLiteral("ABCDE1234F");
        r.misc.auditor[11] = QStringLiteral("01/05/2007");
        r.misc.nameChanged = true;
        r.misc.oldName = QStringLiteral("OLD & CO");
        QCOMPARE(r.SAVEDATA(), AddInfoRecord::SaveResult::Saved);
        // THEN one row holds every answer in its encoding, and the second edition's pages their row
        QCOMPARE(rowsOf(QStringLiteral("FBT_AddInfo")), addInfo);
        QCOMPARE(rowsOf(QStringLiteral("FBT_MiscInf")), miscInf);
        QCOMPARE(test::logLines(), QStringList());
    }

    // Every tick box of an edition, one character each, and the section.
    static QString ticks(const AddInfoRecord& r, AddInfoEdition edition)
    {
        const AddInfoValues& v = r.values;
        QList<bool> boxes{v.revRet, v.peIndia, v.empBoth, v.sepBooks, v.calc115WJ, v.calc115WK, v.intUpto};
        if (edition == AddInfoEdition::First)
            boxes << v.chAdd << v.ac44AA << v.ac44AB << v.ac44ABC << v.dtRel1 << v.dtRel2 << v.peOut;
        else
            boxes << v.calc115WJ5 << r.misc.repAss << r.misc.opt44AA << r.misc.opt44AB << r.misc.nameChanged;
        QString out = QString::number(v.section);
        for (bool b : boxes)
            out += b ? QLatin1Char('1') : QLatin1Char('0');
        return out;
    }
    static void tickAll(AddInfoRecord& r, bool on)
    {
        AddInfoValues& v = r.values;
        for (bool* b : {&v.revRet, &v.peIndia, &v.empBoth, &v.sepBooks, &v.calc115WJ, &v.calc115WK, &v.intUpto, &v.chAdd,
                        &v.ac44AA, &v.ac44AB, &v.ac44ABC, &v.dtRel1, &v.dtRel2, &v.peOut, &v.calc115WJ5, &r.misc.repAss,
                        &r.misc.opt44AA, &r.misc.opt44AB, &r.misc.nameChanged})
            *b = on;
        v.intDt = on ? QStringLiteral("31/03/2008") : QString();
        v.section = on ? 4 : 1; // the last section and the first
    }

    void insertThenUpdateEveryBox_data()
    {
        QTest::addColumn<int>("edition");
        QTest::addColumn<bool>("firstTicked");
        QTest::newRow("first edition, ticked then unticked") << int(AddInfoEdition::First) << true;
        QTest::newRow("first edition, unticked then ticked") << int(AddInfoEdition::First) << false;
        QTest::newRow("second edition, ticked then unticked") << int(AddInfoEdition::Second) << true;
        QTest::newRow("second edition, unticked then ticked") << int(AddInfoEdition::Second) << false;
    }

    void insertThenUpdateEveryBox()
    {
        QFETCH(int, edition);
        QFETCH(bool, firstTicked);
        const auto e = AddInfoEdition(edition);
        const bool second = e == AddInfoEdition::Second;
        for (bool ticked : {firstTicked, !firstTicked}) {
            // GIVEN every box ticked (or none), saved as insert the first time and as update the second
            AddInfoRecord r = openRecord(e);
            const bool update = !r.marker.isEmpty();
            QCOMPARE(update, ticked != firstTicked);
            r.values = sampleAnswers();
            tickAll(r, ticked);
            const QString expected = ticks(r, e);
            test::StatementRecorder recorder;
            QCOMPARE(r.SAVEDATA(), AddInfoRecord::SaveResult::Saved);
            recorder.stop();
            // THEN the row is written its way, the second edition's page row afresh, each write flushed
            QStringList writes{update ? QStringLiteral("update fbt_addinfo") : QStringLiteral("insert fbt_addinfo")};
            if (second)
                writes << QStringLiteral("delete fbt_miscinf") << QStringLiteral("insert fbt_miscinf");
            QCOMPARE(recorder.writes(), writes);
            QCOMPARE(recorder.unflushedWrites(), QStringList());
            // AND a text or amount behind an unticked box is not kept
            const QString kept = !ticked ? QStringLiteral("||||0|0|0|")
                : second ? QStringLiteral("RCPT 77|15/09/2007|||1250.5|300|77|31/03/2008")
                         : QStringLiteral("RCPT 77|15/09/2007|30/10/2007|01/01/2007|1250.5|300|0|31/03/2008");
            QCOMPARE(column(QStringLiteral("concat_ws('|',RevRecNo,RevRecDt,Dt44AB,Dt44ABC,Amt115WJ,Amt115WK,Amt115WJ5,IntDt)")), kept);
            // AND a fresh load shows every box as it was saved
            QCOMPARE(ticks(openRecord(e), e), expected);
        }
        QCOMPARE(test::logLines(), QStringList());
    }

    void savingTwiceUpdatesTheRowItMade()
    {
        AddInfoRecord r = openRecord(AddInfoEdition::First);
        r.values = sampleAnswers();
        QCOMPARE(r.SAVEDATA(), AddInfoRecord::SaveResult::Saved);
        r.values.ward = QStringLiteral("WARD 9");
        QCOMPARE(r.SAVEDATA(), AddInfoRecord::SaveResult::Saved);
        QCOMPARE(column(QStringLiteral("concat(count(*), ' ', max(Ward))")), QStringLiteral("1 WARD 9"));
        QCOMPARE(test::logLines(), QStringList());
    }

    void loadFromPreviousYear_data()
    {
        QTest::addColumn<bool>("rowThisYear");
        QTest::addColumn<bool>("rowLastYear");
        QTest::newRow("new year, last year filled") << false << true;
        QTest::newRow("existing year, last year filled") << true << true;
        QTest::newRow("new year, nothing last year") << false << false;
        QTest::newRow("existing year, nothing last year") << true << false;
    }

    void loadFromPreviousYear()
    {
        QFETCH(bool, rowThisYear);
        QFETCH(bool, rowLastYear);
        // GIVEN last year's answers (or none) and this year's row (or none)
        if (rowLastYear) {
            modbase().TYear = kYear - 1;
            AddInfoRecord last(AddInfoEdition::First, QStringLiteral("frmaddinfo"));
            last.values = sampleAnswers();
            last.SAVEDATA();
            modbase().TYear = kYear;
        }
        if (rowThisYear)
            insertFiledRow();
        AddInfoRecord r = openRecord(AddInfoEdition::First);
        const AddInfoValues before = r.values;

        // WHEN the user loads last year's answers
        const bool found = r.READDATA(true);

        // THEN the marker is as the normal load left it and the screen has last year's answers, or is unchanged
        QCOMPARE(found, rowLastYear);
        QCOMPARE(r.marker, rowThisYear ? QStringLiteral("1") : QString());
        AddInfoValues lastYear = sampleAnswers();
        lastYear.dt44ABC.clear();                 // not kept: 44AB(c) was not ticked
        lastYear.amt115WJ5 = QStringLiteral("0"); // what the first edition writes for 115WJ(5)
        QCOMPARE(r.values, rowLastYear ? lastYear : before);
    }

    void natureOfBusinessDigits_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("ticked"); // one character per box
        QTest::newRow("none: the first edition refuses to save") << "" << "000000";
        QTest::newRow("all six") << "123456" << "111111";
        QTest::newRow("others only") << "6" << "000001";
        QTest::newRow("out of order") << "51" << "100010";
    }

    void natureOfBusinessDigits()
    {
        QFETCH(QString, stored);
        QFETCH(QString, ticked);
        // GIVEN a row whose nature of business is the stored text
        insertFiledRow();
        c().execute(QStringLiteral("update FBT_AddInfo set NOB=") + QStringLiteral("'%1'").arg(stored));
        // WHEN it is loaded
        AddInfoRecord r = openRecord(AddInfoEdition::First);
        // THEN exactly the matching boxes are ticked, and saving writes them in box order (none: nothing)
        QString got;
        for (bool b : r.values.nob)
            got += b ? QLatin1Char('1') : QLatin1Char('0');
        QCOMPARE(got, ticked);
        test::StatementRecorder recorder;
        QCOMPARE(r.SAVEDATA(), stored.isEmpty() ? AddInfoRecord::SaveResult::NoNatureOfBusiness : AddInfoRecord::SaveResult::Saved);
        QCOMPARE(recorder.writes().isEmpty(), stored.isEmpty());
        QString inOrder = stored;
        std::sort(inOrder.begin(), inOrder.end());
        QCOMPARE(column(QStringLiteral("NOB")), inOrder);
    }

    void valueRules_data()
    {
        QTest::addColumn<QString>("columnName");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<std::function<void(AddInfoValues&)>>("edit");
        using Edit = std::function<void(AddInfoValues&)>;
        QTest::newRow("interest upto ticked, no date") << "IntDt" << "todate"
                                                       << Edit([](AddInfoValues& v) { v.intDt.clear(); });
        QTest::newRow("employees only in India counted twice") << "concat(IndiaEmp,'/',TotalEmp)" << "40/40"
                                                               << Edit([](AddInfoValues& v) { v.empBoth = false; });
        QTest::newRow("non-numeric amount is 0") << "Amt115WK" << "0" << Edit([](AddInfoValues& v) { v.amt115WK = "ABC"; });
        QTest::newRow("leading number of an amount") << "Amt115WK" << "12.5" << Edit([](AddInfoValues& v) { v.amt115WK = "12.5.3"; });
        QTest::newRow("quote in a text") << "Ward" << "O'NEIL \\ 'X'" << Edit([](AddInfoValues& v) { v.ward = "O'NEIL \\ 'X'"; });
    }

    void valueRules()
    {
        QFETCH(QString, columnName);
        QFETCH(QString, stored);
        QFETCH(std::function<void(AddInfoValues&)>, edit);
        for (bool update : {false, true}) {
            // GIVEN the sample answers changed by one rule, saved as insert and again as update
            c().execute(QStringLiteral("delete from FBT_AddInfo"));
            AddInfoRecord r = openRecord(AddInfoEdition::First);
            r.values = sampleAnswers();
            edit(r.values);
            if (update) {
                r.SAVEDATA();
                r = openRecord(AddInfoEdition::First);
                QCOMPARE(r.marker, QStringLiteral("1"));
                r.values = sampleAnswers();
                edit(r.values);
            }
            r.SAVEDATA();
            // THEN the column holds the rule's value
            QCOMPARE(column(columnName), stored);
        }
    }

    void nullAmountsAndTodateLeaveTheirBoxes()
    {
        // GIVEN a row with null amounts, a null text and interest up to the date of calculation
        insertFiledRow();
        c().execute(QStringLiteral("update FBT_AddInfo set Amt115WK=NULL, IndiaEmp=NULL, Ward=NULL, IntDt='todate'"));
        AddInfoRecord r(AddInfoEdition::First, QStringLiteral("frmaddinfo"));
        r.values.amt115WK = QStringLiteral("99");
        r.values.indiaEmp = QStringLiteral("5");
        r.values.ward = QStringLiteral("TYPED");
        r.values.intDt = QStringLiteral("01/04/2007");
        // WHEN it is read THEN the amounts and the date box keep what they had; the text is emptied
        r.READDATA(false);
        QCOMPARE(r.values.amt115WK, QStringLiteral("99"));
        QCOMPARE(r.values.indiaEmp, QStringLiteral("5"));
        QCOMPARE(r.values.ward, QString());
        QCOMPARE(r.values.totalEmp, QStringLiteral("7"));
        QVERIFY(r.values.intUpto);
        QCOMPARE(r.values.intDt, QStringLiteral("01/04/2007"));
    }

    void eachEditionKeepsTheOthersColumns()
    {
        // GIVEN a filed row of the year, updated by the first edition
        insertFiledRow();
        AddInfoRecord first = openRecord(AddInfoEdition::First);
        first.values = sampleAnswers();
        first.values.ac44ABC = true;
        first.SAVEDATA();
        // THEN the register's columns and the second edition's 115WJ(5) stay
        QCOMPARE(db_->count(QStringLiteral("FBT_AddInfo")), 1);
        QCOMPARE(column(QStringLiteral("concat(NOB,'/',RetDt,'/',RetAckNo,'/',Calc115WJ5,'/',Amt115WJ5)")),
                 QStringLiteral("24/10/10/2007/ACK-9/1/800"));
        AddInfoRecord second = openRecord(AddInfoEdition::Second);
        QCOMPARE(second.values.nob, sampleAnswers().nob);
        second.values.ward = QStringLiteral("NEW WARD");
        second.values.amt115WJ5 = QStringLiteral("450");
        // WHEN the second edition saves it
        second.SAVEDATA();
        // THEN the first edition's answers and the register's stay
        QCOMPARE(column(QStringLiteral("concat(Ward,'/',ChAdd,'/',OldWard,'/',NOB,'/',Ac44ABC,'/',Dt44ABC,'/',DtRel2,'/',RetAckNo)")),
                 QStringLiteral("NEW WARD/1/WARD 1/24/1/01/01/2007/1/ACK-9"));
        QCOMPARE(column(QStringLiteral("concat(Calc115WJ5,'/',Amt115WJ5)")), QStringLiteral("1/450"));
        // WHEN the first edition saves it again
        AddInfoRecord firstAgain = openRecord(AddInfoEdition::First);
        firstAgain.values.oldWard = QStringLiteral("W9");
        firstAgain.SAVEDATA();
        // THEN the second edition's 115WJ(5) choice and its MiscInf row stay
        QCOMPARE(column(QStringLiteral("concat(Ward,'/',OldWard,'/',Calc115WJ5,'/',Amt115WJ5)")), QStringLiteral("NEW WARD/W9/1/450"));
        QCOMPARE(db_->count(QStringLiteral("FBT_MiscInf")), 1);
    }

    void eachFieldIsReadOnItsOwn_data()
    {
        QTest::addColumn<QString>("lost");
        QTest::newRow("the first answer") << "Ward";
        QTest::newRow("one in the middle") << "NOB";
        QTest::newRow("an amount") << "IndiaEmp";
        QTest::newRow("the last one") << "IntDt";
    }

    void eachFieldIsReadOnItsOwn()
    {
        QFETCH(QString, lost);
        // GIVEN the year's row in a table that has lost one column
        insertFiledRow();
        c().execute(QStringLiteral("alter table FBT_AddInfo drop column ") + lost);
        // WHEN the record is read
        AddInfoRecord r(AddInfoEdition::First, QStringLiteral("frmaddinfo"));
        QVERIFY(r.READDATA(false));
        // THEN only that field is missed and logged; every field after it is read
        QCOMPARE(test::logContexts(), QStringList{QStringLiteral("frmaddinfo\tREADDATA")});
        QCOMPARE(r.values.ward, lost == QLatin1String("Ward") ? QString() : QStringLiteral("OLD WARD"));
        QCOMPARE(r.values.nob[4], lost != QLatin1String("NOB"));
        QCOMPARE(r.values.indiaEmp, lost == QLatin1String("IndiaEmp") ? QString() : QStringLiteral("7"));
        QVERIFY(r.values.calc115WJ5);
        QCOMPARE(r.values.amt115WJ5, QStringLiteral("800"));
        QCOMPARE(r.marker, QStringLiteral("1"));
        c().execute(QStringLiteral("drop table FBT_AddInfo"));
        schema::createMissingTables(c());
    }

    void failuresAreLoggedUnderTheFormAndGoOn()
    {
        // GIVEN no connection in the context
        modbase().CnnObj.reset();
        AddInfoRecord r(AddInfoEdition::Second, QStringLiteral("frmaddinfo1"));
        // WHEN loading and saving
        QVERIFY(!r.READDATA(false));
        QCOMPARE(r.SAVEDATA(), AddInfoRecord::SaveResult::Saved);
        // THEN every failed statement is logged under the form and procedure
        const QStringList contexts = test::logContexts();
        QCOMPARE(contexts.count(QStringLiteral("frmaddinfo1\tREADDATA")), 2);
        QCOMPARE(contexts.count(QStringLiteral("frmaddinfo1\tSAVEDATA")), 6);
        modbase().CnnObj = db_->connection();
    }
};

CORVANE_TEST_CLASS(AddInfoRecordTest)

#include "addinforecordtest.moc"
