#include "cldettestsupport.h"

#include "core/errorlog.h"
#include "core/inifile.h"
#include "core/modbase.h"
#include "core/resumenext.h"
#include "db/schema.h"
#include "screens/cldet/clientdetails.h"
#include "support/testdatabase.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QFile>
#include <QTest>

using namespace corvane;
using namespace corvane::test;
namespace cd = corvane::clientdetails;

class ClientDetailsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db;

    // The table, and how many failures the guard logged while loading it.
    std::pair<cd::Table, int> load(const QString& choice)
    {
        ResumeNext guard(QStringLiteral("frmcldet"), QStringLiteral("LOADGRID"));
        cd::Table table = cd::load(**db, cd::choiceFromText(choice), guard);
        return {table, guard.failures()};
    }

private slots:
    void initTestCase() { db = std::make_unique<TestDatabase>(QStringLiteral("cldet")); }
    void cleanupTestCase() { db.reset(); }
    void init() { db->startAfresh({QStringLiteral("FBT_Info"), QStringLiteral("FBT_Nature")}); }

    void address_data()
    {
        QTest::addColumn<QStringList>("parts");
        QTest::addColumn<QString>("joined");
        QTest::newRow("all seven") << QStringList{"12", "Shanti", "MG Road", "Fort", "Mumbai", "400001", "Maharashtra"}
                                   << "12, Shanti, MG Road, Fort, Mumbai-400001, Maharashtra";
        QTest::newRow("none") << QStringList{"", "", "", "", "", "", ""} << "";
        QTest::newRow("only the flat") << QStringList{"12", "", "", "", "", "", ""} << "12";
        QTest::newRow("only the state") << QStringList{"", "", "", "", "", "", "Goa"} << "Goa";
        QTest::newRow("pin first gets no dash") << QStringList{"", "", "", "", "", "400001", "Goa"} << "400001, Goa";
        QTest::newRow("pin without city") << QStringList{"12", "", "", "", "", "400001", ""} << "12-400001";
        QTest::newRow("gaps leave no trace") << QStringList{"", "Shanti", "", "Fort", "", "", "Goa"} << "Shanti, Fort, Goa";
        QTest::newRow("city without pin") << QStringList{"", "", "", "", "Pune", "", "Maharashtra"} << "Pune, Maharashtra";
    }
    void address()
    {
        QFETCH(QStringList, parts);
        QFETCH(QString, joined);
        QCOMPARE(cd::joinAddress(parts), joined);
    }

    void telephone_data()
    {
        QTest::addColumn<QString>("std");
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("joined");
        QTest::newRow("both") << "022" << "2345678" << "022 2345678";
        QTest::newRow("code only") << "022" << "" << "022";
        QTest::newRow("number only") << "" << "2345678" << "2345678";
        QTest::newRow("neither") << "" << "" << "";
    }
    void telephone()
    {
        QFETCH(QString, std);
        QFETCH(QString, number);
        QFETCH(QString, joined);
        QCOMPARE(cd::joinTelephone(std, number), joined);
    }

    void choiceText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("normalised");
        QTest::newRow("empty leaves all unticked") << "" << "000000000";
        QTest::newRow("shorter leaves the rest unticked") << "1101" << "110100000";
        QTest::newRow("longer is cut at nine") << "0000000011" << "000000001";
        QTest::newRow("other digits tick") << "200000000" << "100000000";
        QTest::newRow("letters do not") << "x1y000000" << "010000000";
    }
    void choiceText()
    {
        QFETCH(QString, text);
        QFETCH(QString, normalised);
        QCOMPARE(cd::choiceToText(cd::choiceFromText(text)), normalised);
    }

    void savedChoiceRoundTrip()
    {
        // GIVEN no saved choice, THEN every field is ticked
        QFile::remove(modbase().AppPath + "/Confg.ini");
        QCOMPARE(cd::choiceToText(cd::savedChoice()), QStringLiteral("111111111"));
        // WHEN a choice is saved, THEN it is read back from [Settings] ClDet of Confg.ini
        cd::saveChoice(cd::choiceFromText(QStringLiteral("010000001")));
        QCOMPARE(IniFile::read(modbase().AppPath + "/Confg.ini", "Settings", "ClDet", "?"), QStringLiteral("010000001"));
        QCOMPARE(cd::choiceToText(cd::savedChoice()), QStringLiteral("010000001"));
    }

    void onlyTickedColumnsInIndexOrder_data()
    {
        QTest::addColumn<QString>("choice");
        QTest::addColumn<QStringList>("headings");
        QTest::addColumn<QStringList>("first");
        QTest::newRow("first and last") << "100000001" << QStringList{"Code No.", "Email"} << QStringList{"A1", "a@x.in"};
        QTest::newRow("middle three") << "000111000" << QStringList{"Status", "Address", "Tel. Nos."}
                                      << QStringList{"HUF", "Fort, Mumbai-400001", "022 2345678"};
        QTest::newRow("nothing") << "000000000" << QStringList{} << QStringList{};
        QTest::newRow("everything")
            << "111111111"
            << QStringList{"Code No.", "Name", "PAN", "Status", "Address", "Tel. Nos.",
                           "Date of Birth/Incorporation/Formation", "Nature of Business(es)", "Email"}
            << QStringList{"A1", "Apte", "AAAPA1234A", "HUF", "Fort, Mumbai-400001", "022 2345678", "01/04/1970",
                           "Agriculture\r\nTrading", "a@x.in"};
    }
    void onlyTickedColumnsInIndexOrder()
    {
        QFETCH(QString, choice);
        QFETCH(QStringList, headings);
        QFETCH(QStringList, first);
        // GIVEN one client with every field
        seedNatures(**db);
        insertClient(**db, {"A1", "Apte", "AAAPA1234A", 1, {"", "", "", "Fort", "Mumbai", "400001", ""},
                            "022", "2345678", "01/04/1970", "1,3", "a@x.in"});
        // WHEN the report is loaded with the choice
        const auto [table, failures] = load(choice);
        QCOMPARE(failures, 0);
        // THEN the columns are the ticked fields in index order
        QCOMPARE(table.headings, headings);
        QCOMPARE(table.rows.size(), 1);
        QCOMPARE(table.rows.first(), first);
    }

    void rowsByNameWithNullsEmpty()
    {
        // GIVEN clients entered out of name order, one with nulls and a status not in the list
        insertClient(**db, {"Z9", "zeta", "", 17, {}, "", "", "", "", ""});
        insertClient(**db, {"A1", "Mehta", "", 7, {}, "", "", "", "", ""});
        (*db)->execute("insert into FBT_Info (Code_No, Name) values ('B2', 'Bose')");
        // WHEN loaded
        const auto [table, failures] = load(QStringLiteral("110100001"));
        QCOMPARE(failures, 0);
        // THEN they come by name (the server's order, case aside), nulls empty, an unknown status as its number
        QCOMPARE(table.rows.size(), 3);
        QCOMPARE(table.rows.at(0), (QStringList{"B2", "Bose", "", ""}));
        QCOMPARE(table.rows.at(1), (QStringList{"A1", "Mehta", "7", ""}));
        QCOMPARE(table.rows.at(2), (QStringList{"Z9", "zeta", "Co-operative Society", ""}));
    }

    void naturesOfBusiness_data()
    {
        QTest::addColumn<QString>("busNat");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<int>("failures");
        QTest::newRow("empty") << "" << "" << 0;
        QTest::newRow("by description, case aside") << "10,2,1,3" << "Agriculture\r\nbanking\r\nManufacturing\r\nTrading" << 0;
        QTest::newRow("blanks around numbers") << " 1 , 3 " << "Agriculture\r\nTrading" << 0;
        QTest::newRow("twice listed, once shown") << "1,1" << "Trading" << 0;
        QTest::newRow("unknown number skipped") << "99,1" << "Trading" << 0;
        QTest::newRow("leading zero is the number") << "010" << "Manufacturing" << 0;
        QTest::newRow("not a list: logged, nothing shown") << "1) or (1=1" << "" << 1;
        QTest::newRow("trailing comma: logged") << "1," << "" << 1;
    }
    void naturesOfBusiness()
    {
        QFETCH(QString, busNat);
        QFETCH(QString, shown);
        QFETCH(int, failures);
        // GIVEN the natures and a client listing some, beside a client listing one
        seedNatures(**db);
        insertClient(**db, {"A1", "Apte", "", 0, {}, "", "", "", busNat, ""});
        insertClient(**db, {"B2", "Bose", "", 0, {}, "", "", "", "3", ""});
        // WHEN only the natures are loaded
        const auto [table, logged] = load(QStringLiteral("000000010"));
        QCOMPARE(logged, failures);
        // THEN the client shows them one per line; a bad list costs only its own cell
        QCOMPARE(table.rows.at(0).first(), shown);
        QCOMPARE(table.rows.at(1).first(), QStringLiteral("Agriculture"));
        QCOMPARE(logContexts().size(), failures);
        if (failures)
            QCOMPARE(logContexts().first(), QStringLiteral("frmcldet\tLOADGRID"));
    }

    void missingNatureTableIsLoggedNotFatal()
    {
        // GIVEN a database whose nature table is gone
        insertClient(**db, {"A1", "Apte", "", 0, {}, "", "", "", "1", ""});
        (*db)->execute(QStringLiteral("drop table FBT_Nature"));
        // WHEN loaded with the natures, THEN the failure is logged and the clients are still listed
        const auto [table, failures] = load(QStringLiteral("100000010"));
        schema::createMissingTables(**db);
        QCOMPARE(failures, 1);
        QCOMPARE(table.rows, (QVector<QStringList>{{"A1", ""}}));
    }
};

CORVANE_TEST_CLASS(ClientDetailsTest)
#include "clientdetailstest.moc"
