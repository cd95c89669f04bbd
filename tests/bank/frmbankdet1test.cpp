#include "banktestsupport.h"

#include "component/clsmain.h"
#include "screens/bank/frmbankdet1.h"

#include <QFrame>
#include <QGroupBox>

using namespace corvane;
using namespace corvane::test;

class BankMasterScreenTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db;
    std::shared_ptr<ScriptedPrompter> prompts;

    std::unique_ptr<frmbankdet1> open() { return openActive<frmbankdet1>(); }
    static void clicks(frmbankdet1& form, const QString& buttons)
    {
        for (const QString& b : buttons.split(QLatin1Char(','), Qt::SkipEmptyParts))
            click(form, b.toLatin1().constData());
    }
    static QStringList shown(const frmbankdet1& form)
    {
        QStringList texts;
        for (const QLineEdit* box : form.txtfields())
            texts << box->text();
        return texts;
    }
    static bool editing(frmbankdet1& form)
    {
        return child<QGroupBox>(form, "Frame1")->isEnabled() && child<QFrame>(form, "picedit")->isEnabled()
            && !child<QFrame>(form, "picactions")->isEnabled() && !child<QPushButton>(form, "cmdnext")->isEnabled();
    }
    static bool browsing(frmbankdet1& form)
    {
        return !child<QGroupBox>(form, "Frame1")->isEnabled() && !child<QFrame>(form, "picedit")->isEnabled()
            && child<QFrame>(form, "picactions")->isEnabled() && child<QPushButton>(form, "cmdfirst")->isEnabled();
    }

private slots:
    void initTestCase() { db = std::make_unique<TestDatabase>(QStringLiteral("bankmas")); }
    void cleanupTestCase() { db.reset(); }

    void init() { prompts = startAfresh(*db, {QStringLiteral("Bank_Master")}); }

    void buttons_data()
    {
        QTest::addColumn<QString>("buttons"); // "type" fills the bank, branch and branch code
        QTest::addColumn<int>("answer");      // to Delete's question; -1: not asked
        QTest::addColumn<QString>("code");    // shown afterwards
        QTest::addColumn<QString>("names");   // stored, in code order
        const QString three = QStringLiteral("BANK 1,BANK 2,BANK 3");
        const int yes = int(Prompter::Answer::Yes), no = int(Prompter::Answer::No);
        QTest::newRow("last, previous") << "cmdlast,cmdprev" << -1 << "2" << three;
        QTest::newRow("next, next, first") << "cmdnext,cmdnext,cmdfirst" << -1 << "1" << three;
        QTest::newRow("add: stored under the proposed code and shown")
            << "cmdadd,type,cmdupdate" << -1 << "4" << three + ",TYPED BANK";
        QTest::newRow("modify a middle record: stored, shown again")
            << "cmdnext,cmdmodify,type,cmdupdate" << -1 << "2" << "BANK 1,TYPED BANK,BANK 3";
        QTest::newRow("add, Cancel: nothing written, the shown record back") << "cmdnext,cmdadd,type,cmdcancel" << -1 << "2" << three;
        QTest::newRow("delete, Yes: the next shows") << "cmdnext,cmddelete" << yes << "3" << "BANK 1,BANK 3";
        QTest::newRow("delete, No: kept") << "cmdnext,cmddelete" << no << "2" << three;
    }
    void buttons()
    {
        QFETCH(QString, buttons);
        QFETCH(int, answer);
        QFETCH(QString, code);
        QFETCH(QString, names);
        // GIVEN three records; WHEN the buttons are clicked, a record typed after Add or Modify
        seedBanks(**db, 3);
        auto form = open();
        if (answer >= 0)
            prompts->then(Prompter::Answer(answer));
        for (const QString& b : buttons.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            if (b != QLatin1String("type")) {
                click(*form, b.toLatin1().constData());
                continue;
            }
            QVERIFY(editing(*form));
            QCOMPARE(form->adding(), buttons.contains(QLatin1String("cmdadd")));
            form->txtfields().at(1)->setText(QStringLiteral("TYPED BANK"));
            form->txtfields().at(2)->setText(QStringLiteral("NEW BRANCH"));
            form->txtfields().at(3)->setText(QStringLiteral("NB001"));
        }
        // THEN the register holds what it should, and the screen browses on the record of that code,
        // a typed one with each field where it was typed
        QCOMPARE(values(**db, QStringLiteral("select bank_name from Bank_Master order by bank_code_no")).join(QLatin1Char(',')), names);
        const QStringList record = values(**db, "select concat_ws('|', bank_code_no, bank_name, branch, branch_code) from Bank_Master where bank_code_no = " + code);
        QCOMPARE(shown(*form), record.value(0).split(QLatin1Char('|')));
        if (shown(*form).at(1) == QLatin1String("TYPED BANK"))
            QCOMPARE(shown(*form).mid(2), (QStringList{"NEW BRANCH", "NB001"}));
        QVERIFY(browsing(*form) && !form->adding());
        QCOMPARE(prompts->texts(), answer < 0 ? QStringList() : QStringList{QStringLiteral("Do you want to delete this record ?")});
        QCOMPARE(logLines(), QStringList());
    }

    void emptyRegisterNeitherModifiesNorDeletes()
    {
        auto form = open();
        click(*form, "cmdmodify");
        click(*form, "cmddelete");
        QVERIFY(browsing(*form));
        QCOMPARE(prompts->texts(), QStringList());
    }

    void search_data()
    {
        QTest::addColumn<QStringList>("answer");
        QTest::addColumn<QStringList>("fields");
        QTest::newRow("a choice fills bank, branch and branch code")
            << QStringList{"HDFC BANK LTD", "LOWER PAREL", "090060"}
            << QStringList{"1", "HDFC BANK LTD", "LOWER PAREL", "090060"};
        QTest::newRow("a lookup closed without a choice changes nothing")
            << QStringList{"", "", ""} << QStringList{"1", "TYPED", "", ""};
        QTest::newRow("a choice without branch code changes nothing")
            << QStringList{"SOME BANK", "SOME BRANCH", ""} << QStringList{"1", "TYPED", "", ""};
    }
    void search()
    {
        QFETCH(QStringList, answer);
        QFETCH(QStringList, fields);
        // GIVEN a bank information component that answers so, and a record being added
        FakeBankInfo::install(answer);
        modbase().vScreenRatX = 1.25f;
        auto form = open();
        click(*form, "cmdadd");
        form->txtfields().at(1)->setText(QStringLiteral("TYPED"));
        click(*form, "cmdsearch");
        // THEN the component was set up with the context and asked once with an empty text
        QCOMPARE(FakeBankInfo::script().calls,
                 (QStringList{"InitMe(" + db->appPath() + ", FBTLogger.log, connection, 1.25)", "GetBSRCode()"}));
        QCOMPARE(modbase().CnnObj, db->connection());
        // AND the fields show its answer, or stay as typed
        QCOMPARE(shown(*form), fields);
        QVERIFY(editing(*form));
    }

    void failuresAreLoggedUnderTheirProcedures_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QString>("buttons");
        QTest::addColumn<QStringList>("procedures"); // one per failing statement
        QTest::addColumn<QString>("number");         // of the first failure
        QTest::addColumn<QString>("code");           // in the code box afterwards
        QTest::newRow("search without the component: the entry goes on")
            << "no component" << "cmdadd,cmdsearch" << QStringList{"CMDSEARCH_CLICK", "CMDSEARCH_CLICK"} << "429" << "1";
        QTest::newRow("add past the largest 16-bit code: the box keeps it")
            << "largest code" << "cmdadd" << QStringList{"CMDADD_CLICK"} << "6" << "32767";
        QTest::newRow("no table: browsing again, nothing shown") << "no table" << "cmdadd,cmdupdate"
            << QStringList{"FORM_LOAD", "CMDADD_CLICK", "CMDUPDATE_CLICK", "CMDUPDATE_CLICK"} << "1146" << ""; // insert, requery
    }
    void failuresAreLoggedUnderTheirProcedures()
    {
        QFETCH(QString, fault);
        QFETCH(QString, buttons);
        QFETCH(QStringList, procedures);
        QFETCH(QString, number);
        QFETCH(QString, code);
        if (fault == QLatin1String("no component"))
            ObjectRegistry::instance().unregisterClass(kBankInfoClass);
        else if (fault == QLatin1String("no table"))
            (*db)->execute(QStringLiteral("drop table Bank_Master"));
        else
            insertBank(**db, 32767, QStringLiteral("LAST BANK"), QString(), QString());
        auto form = open();
        clicks(*form, buttons);
        QStringList contexts;
        for (const QString& procedure : procedures)
            contexts << QStringLiteral("frmbankdet1\t") + procedure;
        QCOMPARE(logContexts(), contexts);
        QVERIFY2(logLines().first().contains(QLatin1Char('\t') + number + QLatin1Char('\t')), qPrintable(logLines().first()));
        QCOMPARE(form->txtfields().at(0)->text(), code);
        QCOMPARE(browsing(*form), buttons.endsWith(QLatin1String("cmdupdate")));
    }

    void leaving_data()
    {
        QTest::addColumn<bool>("whileAdding");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QString>("question");
        QTest::newRow("browsing, Yes closes") << false << true << "Do you want to exit ?";
        QTest::newRow("browsing, No stays") << false << false << "Do you want to exit ?";
        QTest::newRow("editing, Yes cancels and closes")
            << true << true << "You are currently editing a record. Do you want to exit now ?";
        QTest::newRow("editing, No stays editing")
            << true << false << "You are currently editing a record. Do you want to exit now ?";
    }
    void leaving()
    {
        QFETCH(bool, whileAdding);
        QFETCH(bool, yes);
        QFETCH(QString, question);
        // GIVEN the screen browsing or adding a record
        seedBanks(**db, 1);
        auto form = open();
        if (whileAdding) {
            click(*form, "cmdadd");
            form->txtfields().at(1)->setText(QStringLiteral("HALF TYPED"));
        }
        // WHEN Escape is pressed (Exit while browsing) and the question answered
        prompts->then(yes ? Prompter::Answer::Yes : Prompter::Answer::No);
        if (whileAdding)
            QTest::keyClick(form->txtfields().at(1), Qt::Key_Escape);
        else
            click(*form, "cmdexit");
        // THEN the screen closes on Yes and stays (in its state) on No; nothing is written
        QCOMPARE(prompts->texts(), QStringList{question});
        QCOMPARE(form->isVisible(), !yes);
        QCOMPARE(editing(*form), whileAdding && !yes);
        QCOMPARE(db->count(QStringLiteral("Bank_Master")), 1);
    }

    void keyboard()
    {
        // GIVEN a record being added, the focus in the bank name
        auto form = open();
        click(*form, "cmdadd");
        QLineEdit* name = form->txtfields().at(1);
        name->setFocus();
        // WHEN a name with a quote is typed and Enter pressed
        QTest::keyClicks(name, QStringLiteral("AB'C"));
        QTest::keyClick(name, Qt::Key_Return);
        // THEN the quote was kept out, the focus moved to the branch, and the dialog stayed open
        QCOMPARE(name->text(), QStringLiteral("ABC"));
        QCOMPARE(QApplication::focusWidget(), form->txtfields().at(2));
        QVERIFY(form->isVisible());
        // WHEN a box with text is entered
        form->txtfields().at(3)->setText(QStringLiteral("BC9"));
        QTest::keyClick(form->txtfields().at(2), Qt::Key_Return);
        QCoreApplication::processEvents();
        // THEN its whole text is selected
        QCOMPARE(QApplication::focusWidget(), form->txtfields().at(3));
        QCOMPARE(form->txtfields().at(3)->selectedText(), QStringLiteral("BC9"));
    }

    void showBankMasIsModalAndLoadsAfresh()
    {
        // GIVEN one record, and a user who reads the code and leaves with Escape and Yes
        seedBanks(**db, 1);
        QStringList seen;
        auto leave = [&] {
            QWidget* modal = QApplication::activeModalWidget();
            QVERIFY(modal);
            seen << modal->objectName() + QLatin1Char(':') + child<QLineEdit>(*modal, "txtfields_0")->text();
            QTest::keyClick(modal, Qt::Key_Escape);
        };
        ClsMain cls;
        // WHEN the host shows the register twice, with a record added in between
        prompts->then(Prompter::Answer::Yes).then(Prompter::Answer::Yes);
        QTimer::singleShot(0, this, leave);
        cls.ShowBankMas();
        insertBank(**db, 0, QStringLiteral("FIRST NOW"), QString(), QString());
        QTimer::singleShot(0, this, leave);
        cls.ShowBankMas();
        // THEN each call showed frmbankdet1 modally and returned once it was closed; the second loaded afresh
        QCOMPARE(seen, (QStringList{"frmbankdet1:1", "frmbankdet1:0"}));
        QCOMPARE(prompts->texts(), (QStringList{"Do you want to exit ?", "Do you want to exit ?"}));
        QCOMPARE(logLines(), QStringList());
    }
};

CORVANE_TEST_CLASS(BankMasterScreenTest)
#include "frmbankdet1test.moc"
