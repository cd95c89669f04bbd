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

    void browsing_data()
    {
        QTest::addColumn<QString>("buttons");
        QTest::addColumn<QString>("code");
        QTest::newRow("loading shows the first") << "" << "1";
        QTest::newRow("next") << "cmdnext" << "2";
        QTest::newRow("last, previous") << "cmdlast,cmdprev" << "2";
        QTest::newRow("first after moving") << "cmdnext,cmdnext,cmdfirst" << "1";
    }
    void browsing()
    {
        QFETCH(QString, buttons);
        QFETCH(QString, code);
        // GIVEN three records; WHEN the navigation buttons are clicked
        seedBanks(**db, 3);
        auto form = open();
        clicks(*form, buttons);
        // THEN the record in that place shows in all four fields, and nothing was logged
        QCOMPARE(shown(*form), (QStringList{code, "BANK " + code, "BRANCH " + code, "BC" + code}));
        QVERIFY(browsing(*form));
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

    void update_data()
    {
        QTest::addColumn<QString>("buttons"); // before Add or Modify
        QTest::addColumn<QString>("code");    // proposed or shown, and stored
        QTest::addColumn<QString>("last");    // Update or Cancel
        QTest::newRow("add: the typed record is stored and shown") << "cmdadd" << "4" << "cmdupdate";
        QTest::newRow("modify a middle record: stored, shown again") << "cmdnext,cmdmodify" << "2" << "cmdupdate";
        QTest::newRow("add, Cancel: nothing written, the shown record back") << "cmdnext,cmdadd" << "4" << "cmdcancel";
    }
    void update()
    {
        QFETCH(QString, buttons);
        QFETCH(QString, code);
        QFETCH(QString, last);
        // GIVEN three records, and a record typed after Add or Modify
        seedBanks(**db, 3);
        auto form = open();
        clicks(*form, buttons);
        QVERIFY(editing(*form));
        QCOMPARE(form->adding(), buttons.endsWith(QLatin1String("cmdadd")));
        QCOMPARE(form->txtfields().at(0)->text(), code);
        form->txtfields().at(1)->setText(QStringLiteral("TYPED BANK"));
        form->txtfields().at(2)->setText(QStringLiteral("NEW BRANCH"));
        form->txtfields().at(3)->setText(QStringLiteral("NB001"));
        click(*form, last.toLatin1().constData());
        // THEN the four fields are stored under the code and the screen browses on that record;
        // after Cancel nothing is written and the record shown before is back
        const bool saved = last == QLatin1String("cmdupdate");
        QCOMPARE(db->count(QStringLiteral("Bank_Master"), QStringLiteral("bank_name = 'TYPED BANK'")), saved ? 1 : 0);
        QCOMPARE(db->count(QStringLiteral("Bank_Master")), saved && code == QLatin1String("4") ? 4 : 3);
        if (saved)
            QCOMPARE(db->scalar("select concat_ws('|', bank_code_no, bank_name, branch, branch_code) from Bank_Master where bank_code_no = " + code),
                     code + QStringLiteral("|TYPED BANK|NEW BRANCH|NB001"));
        QCOMPARE(shown(*form), (saved ? QStringList{code, "TYPED BANK", "NEW BRANCH", "NB001"} : QStringList{"2", "BANK 2", "BRANCH 2", "BC2"}));
        QVERIFY(browsing(*form) && !form->adding());
        QCOMPARE(prompts->texts(), QStringList());
        QCOMPARE(logLines(), QStringList());
    }

    void deletion_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QString>("shownCode");
        QTest::newRow("Yes deletes it, the next shows") << true << "3";
        QTest::newRow("No keeps it") << false << "2";
    }
    void deletion()
    {
        QFETCH(bool, yes);
        QFETCH(QString, shownCode);
        // GIVEN the second of three records shown
        seedBanks(**db, 3);
        auto form = open();
        click(*form, "cmdnext");
        // WHEN Delete is clicked and the question answered
        prompts->then(yes ? Prompter::Answer::Yes : Prompter::Answer::No);
        click(*form, "cmddelete");
        // THEN the question was asked with the stop icon, and the record is gone or kept
        QCOMPARE(prompts->texts(), QStringList{QStringLiteral("Do you want to delete this record ?")});
        QCOMPARE(prompts->asked().front().icon, Prompter::Icon::Critical);
        QCOMPARE(prompts->asked().front().buttons, Prompter::Buttons::YesNo);
        QCOMPARE(db->count(QStringLiteral("Bank_Master"), QStringLiteral("bank_code_no = 2")), yes ? 0 : 1);
        QCOMPARE(db->count(QStringLiteral("Bank_Master")), yes ? 2 : 3);
        QCOMPARE(form->txtfields().at(0)->text(), shownCode);
        QCOMPARE(logLines(), QStringList());
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
        QCOMPARE(prompts->asked().front().icon, Prompter::Icon::Exclamation);
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
