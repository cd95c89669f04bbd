#include "cldettestsupport.h"

#include "component/components.h"
#include "core/inifile.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "screens/cldet/frmcldet.h"
#include "support/clirunner.h"
#include "support/formdriver.h"
#include "support/pdftext.h"
#include "support/prompts.h"
#include "support/testdatabase.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QCheckBox>
#include <QFile>
#include <QGroupBox>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>

using namespace corvane;
using namespace corvane::test;

class ClientDetailsScreenTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db;
    std::shared_ptr<ScriptedPrompter> prompts;

    QString confg() const { return modbase().AppPath + "/Confg.ini"; }

    static QString ticks(frmcldet& form)
    {
        QString text;
        for (const QCheckBox* box : form.chkfield())
            text += box->isChecked() ? '1' : '0';
        return text;
    }

private slots:
    void initTestCase() { db = std::make_unique<TestDatabase>(QStringLiteral("frmcldet")); }
    void cleanupTestCase() { db.reset(); }
    void init()
    {
        db->startAfresh({QStringLiteral("FBT_Info"), QStringLiteral("FBT_Nature")});
        QFile::remove(confg());
        prompts = installPrompter();
        registerDefaultComponents();
        seedNatures(**db);
        insertClient(**db, {"B2", "Bose", "AAAPB1234B", 0, {"", "", "", "", "Pune", "", ""}, "", "", "", "3,1", ""});
        insertClient(**db, {"A1", "Apte", "AAAPA1234A", 1, {}, "", "", "", "", ""});
    }

    void nothingTickedIsRefused()
    {
        // GIVEN a stored choice shorter than the boxes: the boxes follow it, the setup shows, the grid waits
        IniFile::write(confg(), "Settings", "ClDet", "11");
        frmcldet form;
        form.show();
        QCOMPARE(ticks(form), QStringLiteral("110000000"));
        QVERIFY(!child<QTableWidget>(form, "vsf")->isVisible());
        // WHEN every box is ticked, then every box unticked, and Proceed clicked
        click(form, "cmdselall");
        QCOMPARE(ticks(form), QStringLiteral("111111111"));
        click(form, "cmddselall");
        QCOMPARE(ticks(form), QStringLiteral("000000000"));
        click(form, "cmdProceed");
        // THEN the message says so, the setup stays, Preview waits and the saved choice is kept
        QCOMPARE(prompts->texts(), QStringList{"Please select a Item"});
        QVERIFY(child<QGroupBox>(form, "Frame1")->isVisible());
        QVERIFY(!form.mnupreview()->isEnabled());
        QCOMPARE(IniFile::read(confg(), "Settings", "ClDet", "?"), QStringLiteral("11"));
    }

    void proceedSavesTheChoiceAndListsTheClients()
    {
        // GIVEN the screen with code, name and natures ticked
        frmcldet form;
        form.show();
        click(form, "cmddselall");
        for (int i : {0, 1, 7})
            form.chkfield().at(i)->setChecked(true);
        // WHEN Proceed is clicked
        click(form, "cmdProceed");
        // THEN the choice is saved, the grid replaces the setup and lists the clients by name
        QCOMPARE(IniFile::read(confg(), "Settings", "ClDet", "?"), QStringLiteral("110000010"));
        auto* grid = child<QTableWidget>(form, "vsf");
        QVERIFY(grid->isVisible());
        QVERIFY(!child<QGroupBox>(form, "Frame1")->isVisible());
        QVERIFY(form.mnupreview()->isEnabled());
        QCOMPARE(grid->columnCount(), 3);
        QCOMPARE(grid->rowCount(), 2);
        QCOMPARE(grid->item(0, 1)->text(), QStringLiteral("Apte"));
        QCOMPARE(grid->item(1, 2)->text(), QStringLiteral("Agriculture\nTrading"));
        QCOMPARE(logLines(), QStringList());
    }

    void commandLineListsWithoutChangingTheChoice_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("out");
        QTest::newRow("saved choice")
            << QStringList{} << 0 << "Code No.,Tel. Nos.\r\nA1,\r\nB2,\r\n";
        QTest::newRow("fields given, natures in one quoted cell")
            << QStringList{"--fields", "100000010"} << 0
            << "Code No.,Nature of Business(es)\r\nA1,\r\nB2,\"Agriculture\r\nTrading\"\r\n";
        QTest::newRow("text table")
            << QStringList{"--fields", "110000000", "--format", "text"} << 0
            << "Code No.  Name\n--------  ----\nA1        Apte\nB2        Bose\n";
        QTest::newRow("nothing ticked") << QStringList{"--fields", "000000000"} << 1 << "";
        QTest::newRow("eight fields") << QStringList{"--fields", "10000001"} << 2 << "";
        QTest::newRow("a two") << QStringList{"--fields", "200000000"} << 2 << "";
        QTest::newRow("unknown format") << QStringList{"--format", "xml"} << 2 << "";
    }
    void commandLineListsWithoutChangingTheChoice()
    {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, out);
        // GIVEN a saved choice of code and telephone
        IniFile::write(confg(), "Settings", "ClDet", "100001000");
        // WHEN the command runs
        const CliResult r = runCli(QStringList{"--app-path", modbase().AppPath} + databaseArgs(*db)
                                   + QStringList{"clients"} + args);
        // THEN it prints the rows as asked, and the saved choice is untouched
        QCOMPARE(r.status, status);
        QCOMPARE(r.out, out);
        if (status == 1)
            QVERIFY(r.err.contains("Please select a Item"));
        QCOMPARE(IniFile::read(confg(), "Settings", "ClDet", "?"), QStringLiteral("100001000"));
    }

    void commandLinePrintsTheReport()
    {
        // GIVEN clients, one with two natures of business
        QTemporaryDir out;
        const QString pdf = out.filePath("clients.pdf");
        // WHEN the report is written as PDF with code, name and natures
        const CliResult r = runCli(QStringList{"--app-path", modbase().AppPath} + databaseArgs(*db)
                                   + QStringList{"clients", "--fields", "110000010", "--output", pdf});
        QCOMPARE(r.status, 0);
        // THEN it carries the title, the headings and every client with its natures, and no other field
        const QString text = pdfText(pdf);
        for (const char* expected : {"Clients Details", "Code No.", "Nature of Business(es)", "Apte", "Bose",
                                        "Agriculture", "Trading"})
            QVERIFY2(text.contains(expected), qPrintable(expected));
        QVERIFY(!text.contains("PAN"));
        QVERIFY(!text.contains("AAAPB1234B"));
    }
};

CORVANE_TEST_CLASS(ClientDetailsScreenTest)
#include "frmcldettest.moc"
