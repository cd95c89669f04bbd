#include "banktestsupport.h"

#include "component/clsmain.h"
#include "component/components.h"
#include "core/errorlog.h"
#include "db/schema.h"
#include "screens/bank/frmbankdet1.h"
#include "support/statementrecorder.h"
#include "support/testdatabase.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QFrame>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

using namespace corvane;
using namespace corvane::test;

class BankMasterScreenTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db;
    std::shared_ptr<ScriptedPrompter> prompts;

    void seed(int records)
    {
        for (int i = 1; i <= records; ++i)
            insertBank(**db, i, QStringLiteral("BANK %1").arg(i), QStringLiteral("BRANCH %1").arg(i),
                       QStringLiteral("BC%1").arg(i));
    }
    QStringList table()
    {
        QStringList rows;
        for (const auto& r : (*db)->query(QStringLiteral("select * from Bank_Master order by bank_code_no")).rows) {
            QStringList cells;
            for (const QVariant& v : r)
                cells << v.toString();
            rows << cells.join(QLatin1Char('|'));
        }
        return rows;
    }
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

    void init()
    {
        schema::createMissingTables(**db);
        (*db)->execute(QStringLiteral("delete from Bank_Master"));
        QFile::remove(logFilePath());
        prompts = installPrompter();
        registerDefaultComponents();
    }

    void browsing_data()
    {
        QTest::addColumn<int>("records");
        QTest::addColumn<QString>("buttons");
        QTest::addColumn<QString>("code");
        QTest::newRow("empty register shows nothing") << 0 << "cmdfirst,cmdnext,cmdlast,cmdprev" << "";
        QTest::newRow("loading shows the first") << 3 << "" << "1";
        QTest::newRow("next moves one on") << 3 << "cmdnext" << "2";
        QTest::newRow("previous on the first stays") << 3 << "cmdprev,cmdprev" << "1";
        QTest::newRow("next on the last stays") << 3 << "cmdlast,cmdnext,cmdnext" << "3";
        QTest::newRow("previous from the last") << 3 << "cmdlast,cmdprev" << "2";
        QTest::newRow("first after moving") << 3 << "cmdnext,cmdnext,cmdfirst" << "1";
    }
    void browsing()
    {
        QFETCH(int, records);
        QFETCH(QString, buttons);
        QFETCH(QString, code);
        // GIVEN a register of that many records
        seed(records);
        auto form = open();
        // WHEN the navigation buttons are clicked
        clicks(*form, buttons);
        // THEN the record in that place shows in all four fields, and nothing was logged
        const QStringList expected = code.isEmpty()
            ? QStringList{QString(), QString(), QString(), QString()}
            : QStringList{code, QStringLiteral("BANK ") + code, QStringLiteral("BRANCH ") + code, QStringLiteral("BC") + code};
        QCOMPARE(shown(*form), expected);
        QVERIFY(browsing(*form));
        QCOMPARE(logLines(), QStringList());
    }

    void emptyRegisterOffersOnlyAdd()
    {
        // GIVEN an empty register
        auto form = open();
        // WHEN Modify and Delete are clicked
        click(*form, "cmdmodify");
        click(*form, "cmddelete");
        // THEN neither edits nor asks
        QVERIFY(browsing(*form));
        QCOMPARE(prompts->texts(), QStringList());
        // WHEN Add is clicked
        click(*form, "cmdadd");
        // THEN code 1 is proposed with empty fields, and only the fields, Update and Cancel work
        QCOMPARE(shown(*form), (QStringList{QStringLiteral("1"), QString(), QString(), QString()}));
        QVERIFY(editing(*form));
        QVERIFY(form->adding());
    }

    void addAndUpdate_data()
    {
        QTest::addColumn<int>("records");
        QTest::addColumn<QString>("typedCode");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("storedCode");
        QTest::addColumn<QString>("shownCode");
        QTest::newRow("the first record") << 0 << QString() << "NEW BANK" << 1 << "1";
        QTest::newRow("the proposed code, a pasted quote and backslash") << 3 << QString() << "O'BRIEN \\ SONS" << 4 << "4";
        QTest::newRow("a code box without a number writes 0") << 3 << "ABC" << "NEW BANK" << 0 << "3";
        QTest::newRow("the number at the start of the box") << 3 << "12X" << "NEW BANK" << 12 << "12";
    }
    void addAndUpdate()
    {
        QFETCH(int, records);
        QFETCH(QString, typedCode);
        QFETCH(QString, name);
        QFETCH(int, storedCode);
        QFETCH(QString, shownCode);
        // GIVEN the records, and a new one typed after Add
        seed(records);
        auto form = open();
        click(*form, "cmdadd");
        QCOMPARE(form->txtfields().at(0)->text(), QString::number(records + 1));
        if (!typedCode.isNull())
            form->txtfields().at(0)->setText(typedCode);
        form->txtfields().at(1)->setText(name);
        form->txtfields().at(2)->setText(QStringLiteral("NEW BRANCH"));
        form->txtfields().at(3)->setText(QStringLiteral("NB001"));
        // WHEN Update is clicked
        StatementRecorder recorder;
        click(*form, "cmdupdate");
        recorder.stop();
        // THEN the row is inserted and flushed, the screen browses again and shows the last record in code order
        QCOMPARE(recorder.writes(), QStringList{"insert bank_master"});
        QCOMPARE(recorder.unflushedWrites(), QStringList());
        QCOMPARE(db->count(QStringLiteral("Bank_Master")), records + 1);
        QCOMPARE(db->scalar(QStringLiteral("select concat_ws('|', bank_name, branch, branch_code) from Bank_Master where bank_code_no = %1").arg(storedCode)),
                 name + QStringLiteral("|NEW BRANCH|NB001"));
        QCOMPARE(form->txtfields().at(0)->text(), shownCode);
        QVERIFY(browsing(*form));
        QVERIFY(!form->adding());
        QCOMPARE(logLines(), QStringList());
    }

    void addThenCancelWritesNothing()
    {
        // GIVEN two records, the last one shown, and a record typed after Add
        seed(2);
        auto form = open();
        click(*form, "cmdlast");
        const QStringList before = table();
        click(*form, "cmdadd");
        form->txtfields().at(1)->setText(QStringLiteral("NOT KEPT"));
        // WHEN Cancel is clicked
        click(*form, "cmdcancel");
        // THEN the table is as it was and the shown record is back
        QCOMPARE(table(), before);
        QCOMPARE(shown(*form), (QStringList{"2", "BANK 2", "BRANCH 2", "BC2"}));
        QVERIFY(browsing(*form));
        QVERIFY(!form->adding());
    }

    void modify_data()
    {
        QTest::addColumn<QString>("buttons");
        QTest::addColumn<QString>("typedCode");
        QTest::addColumn<QString>("code");
        QTest::addColumn<bool>("changed");
        QTest::newRow("the first record") << "" << QString() << "1" << true;
        QTest::newRow("a middle record") << "cmdnext" << QString() << "2" << true;
        QTest::newRow("the last record") << "cmdlast" << QString() << "3" << true;
        // The code box is also the key: a changed code matches no row, and nothing is reported.
        QTest::newRow("a changed code changes nothing") << "cmdnext" << "7" << "2" << false;
    }
    void modify()
    {
        QFETCH(QString, buttons);
        QFETCH(QString, typedCode);
        QFETCH(QString, code);
        QFETCH(bool, changed);
        // GIVEN a record of three in modification
        seed(3);
        auto form = open();
        clicks(*form, buttons);
        click(*form, "cmdmodify");
        QVERIFY(editing(*form));
        QVERIFY(!form->adding());
        if (!typedCode.isNull())
            form->txtfields().at(0)->setText(typedCode);
        form->txtfields().at(1)->setText(QStringLiteral("RENAMED BANK"));
        // WHEN Update is clicked
        StatementRecorder recorder;
        click(*form, "cmdupdate");
        recorder.stop();
        // THEN that row alone changed and was flushed, and the same record shows again
        QCOMPARE(recorder.unflushedWrites(), QStringList());
        QStringList expected;
        for (int i = 1; i <= 3; ++i) {
            const QString n = QString::number(i);
            expected << n + (changed && n == code ? QStringLiteral("|RENAMED BANK") : QStringLiteral("|BANK ") + n)
                    + QStringLiteral("|BRANCH ") + n + QStringLiteral("|BC") + n;
        }
        QCOMPARE(table(), expected);
        QCOMPARE(shown(*form), (QStringList{code, changed ? QStringLiteral("RENAMED BANK") : QStringLiteral("BANK ") + code,
                                            QStringLiteral("BRANCH ") + code, QStringLiteral("BC") + code}));
        QVERIFY(browsing(*form));
        QCOMPARE(prompts->texts(), QStringList());
        QCOMPARE(logLines(), QStringList());
    }

    void deletion_data()
    {
        QTest::addColumn<int>("records");
        QTest::addColumn<QString>("buttons");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<int>("remaining");
        QTest::addColumn<QString>("shownCode");
        QTest::newRow("the first record shows the next") << 3 << "" << true << 2 << "2";
        QTest::newRow("the middle record shows the next") << 3 << "cmdnext" << true << 2 << "3";
        QTest::newRow("the last record shows the new last") << 3 << "cmdlast" << true << 2 << "2";
        QTest::newRow("the only record leaves the fields empty") << 1 << "" << true << 0 << "";
        QTest::newRow("No keeps the record") << 3 << "cmdnext" << false << 3 << "2";
    }
    void deletion()
    {
        QFETCH(int, records);
        QFETCH(QString, buttons);
        QFETCH(bool, yes);
        QFETCH(int, remaining);
        QFETCH(QString, shownCode);
        // GIVEN a record shown
        seed(records);
        auto form = open();
        clicks(*form, buttons);
        const QString deleted = form->txtfields().at(0)->text();
        // WHEN Delete is clicked and the question answered
        prompts->then(yes ? Prompter::Answer::Yes : Prompter::Answer::No);
        click(*form, "cmddelete");
        // THEN the question was asked with the stop icon, and the record is gone or kept
        QCOMPARE(prompts->texts(), QStringList{QStringLiteral("Do you want to delete this record ?")});
        QCOMPARE(prompts->asked().front().icon, Prompter::Icon::Critical);
        QCOMPARE(prompts->asked().front().buttons, Prompter::Buttons::YesNo);
        QCOMPARE(db->count(QStringLiteral("Bank_Master")), remaining);
        QCOMPARE(db->count(QStringLiteral("Bank_Master"), QStringLiteral("bank_code_no = ") + deleted), yes ? 0 : 1);
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
        // WHEN Search is clicked
        click(*form, "cmdsearch");
        // THEN the component was set up with the context and asked once with an empty text
        QCOMPARE(FakeBankInfo::script().calls, QStringList{QStringLiteral("GetBSRCode()")});
        QCOMPARE(FakeBankInfo::script().appPath, db->appPath());
        QCOMPARE(FakeBankInfo::script().logFile, QStringLiteral("FBTLogger.log"));
        QVERIFY(FakeBankInfo::script().connectionGiven);
        QCOMPARE(FakeBankInfo::script().ratios[0], 1.25f);
        QCOMPARE(modbase().CnnObj, db->connection());
        // AND the fields show its answer, or stay as typed
        QCOMPARE(shown(*form), fields);
        QVERIFY(editing(*form));
    }

    void searchWithoutTheComponentIsLogged()
    {
        // GIVEN no bank information component installed
        ObjectRegistry::instance().unregisterClass(kBankInfoClass);
        auto form = open();
        click(*form, "cmdadd");
        // WHEN Search is clicked
        click(*form, "cmdsearch");
        // THEN the failure is logged under the form and the procedure, and the screen goes on
        const QStringList contexts = logContexts();
        QVERIFY(!contexts.isEmpty());
        for (const QString& c : contexts)
            QCOMPARE(c, QStringLiteral("frmbankdet1\tCMDSEARCH_CLICK"));
        QVERIFY(logLines().first().contains(QStringLiteral("\t429\t")));
        QVERIFY(editing(*form));
    }

    void addPastTheLargestCodeOverflows()
    {
        // GIVEN a register whose largest code is the largest 16-bit number
        insertBank(**db, 32767, QStringLiteral("LAST BANK"), QString(), QString());
        auto form = open();
        // WHEN Add is clicked
        click(*form, "cmdadd");
        // THEN the overflow is logged, the code box keeps what it showed, and the entry goes on
        QCOMPARE(logContexts(), QStringList{QStringLiteral("frmbankdet1\tCMDADD_CLICK")});
        QVERIFY(logLines().first().contains(QStringLiteral("\t6\t")));
        QCOMPARE(form->txtfields().at(0)->text(), QStringLiteral("32767"));
        QCOMPARE(form->txtfields().at(1)->text(), QString());
        QVERIFY(editing(*form));
    }

    void failuresAreLoggedUnderTheirProcedures()
    {
        // GIVEN a database without the Bank_Master table
        (*db)->execute(QStringLiteral("drop table Bank_Master"));
        // WHEN the screen loads, and a record is added and updated
        auto form = open();
        click(*form, "cmdadd");
        form->txtfields().at(1)->setText(QStringLiteral("NOWHERE"));
        click(*form, "cmdupdate");
        // THEN each failing statement is one line under its procedure, and the screen browses again
        const QStringList contexts = logContexts();
        QCOMPARE(contexts.count(QStringLiteral("frmbankdet1\tFORM_LOAD")), 1);
        QCOMPARE(contexts.count(QStringLiteral("frmbankdet1\tCMDADD_CLICK")), 1);
        QCOMPARE(contexts.count(QStringLiteral("frmbankdet1\tCMDUPDATE_CLICK")), 2); // insert, requery
        QCOMPARE(contexts.size(), 4);
        QVERIFY(browsing(*form));
        QCOMPARE(shown(*form), (QStringList{QString(), QString(), QString(), QString()}));
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
        seed(1);
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
        seed(1);
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
