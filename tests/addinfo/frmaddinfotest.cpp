#include "core/errorlog.h"
#include "core/modbase.h"
#include "core/objectregistry.h"
#include "fakebankinfo.h"
#include "core/prompter.h"
#include "screens/addinfo/frmaddinfo.h"
#include "support/formdriver.h"
#include "support/prompts.h"
#include "support/testdatabase.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTimer>
#include <QtTest>

using namespace corvane;
using namespace corvane::test;

// The first edition of the additional information screen, driven offscreen.
class FrmAddInfoTest : public QObject {
    Q_OBJECT

    std::unique_ptr<test::TestDatabase> db_;
    std::shared_ptr<ScriptedPrompter> prompter_;


    QString column(const QString& name)
    {
        return db_->scalar(QStringLiteral("select ") + name + QStringLiteral(" from FBT_AddInfo where code_no='C001' and tyear=2007"));
    }


private slots:
    void init()
    {
        // One database per class; each test starts from empty tables and an empty log.
        db_->startAfresh({QStringLiteral("FBT_AddInfo"), QStringLiteral("FBT_MiscInf"), QStringLiteral("FBT_Info")});
        modbase().Code = QStringLiteral("C001");
        modbase().TYear = 2007;
        prompter_ = installPrompter();
    }
    void initTestCase() { db_ = std::make_unique<test::TestDatabase>(QStringLiteral("frmaddinfo")); }
    void cleanupTestCase() { db_.reset(); }

    void enablingChains_data()
    {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QStringList>("dependents");
        QTest::newRow("revised return") << "Option1_3" << QStringList{"txtfields_2", "txtfields_3"};
        QTest::newRow("44AB") << "Check1_1" << QStringList{"txtfields_4"};
        QTest::newRow("44AB(c)") << "Check1_2" << QStringList{"txtfields_5"};
        QTest::newRow("employees both") << "Check1_7" << QStringList{"Check1_8", "txtfields_7"};
        QTest::newRow("115WJ") << "Check3" << QStringList{"txtfields_12"};
        QTest::newRow("115WK") << "Check2" << QStringList{"txtfields_13"};
        QTest::newRow("interest date") << "Check4" << QStringList{"txtfields_14"};
    }

    void enablingChains()
    {
        QFETCH(QString, control);
        QFETCH(QStringList, dependents);
        // GIVEN a year without a row: every dependent box starts disabled
        FrmAddInfo form;
        showActive(form);
        for (const QString& d : dependents)
            QVERIFY2(!child(form, d)->isEnabled(), qPrintable(d));
        // WHEN the control is clicked
        auto* button = child<QAbstractButton>(form, control);
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(4, button->height() / 2));
        // THEN its dependents are enabled, and disabled again by the opposite choice
        for (const QString& d : dependents)
            QVERIFY2(child(form, d)->isEnabled(), qPrintable(d));
        if (control == QLatin1String("Option1_3"))
            child<QRadioButton>(form, "Option1_2")->click();
        else
            button->click();
        for (const QString& d : dependents)
            QVERIFY2(!child(form, d)->isEnabled(), qPrintable(d));
    }

    void enablingFollowsTheLoadedRow()
    {
        // GIVEN a revised return with 115WK and an interest date
        db_->connection()->execute(QStringLiteral(
            "insert into FBT_AddInfo values('C001',2007,'1','W','','3','1','R1','01/02/2007','24','0','0','','0','','0','0','0','0',"
            "'1','0',5,9,'','','','','','','0',0,'1',250,'1',0,'todate')"));
        // WHEN the form opens
        FrmAddInfo form;
        // THEN the boxes of the loaded answers are enabled and filled (what is read is the record's own test)
        for (const char* box : {"txtfields_2", "txtfields_13", "txtfields_14", "txtfields_7"})
            QVERIFY2(child(form, box)->isEnabled(), box);
        QVERIFY(!child(form, "txtfields_12")->isEnabled());
        QCOMPARE(child<QLineEdit>(form, "txtfields_13")->text(), QStringLiteral("250"));
        QVERIFY(child<QCheckBox>(form, "chknob_3")->isChecked());
    }

    void keyFilters_data()
    {
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::newRow("quote dropped in ward") << "txtfields_0" << "o'k" << "OK";
        QTest::newRow("quote dropped in a count") << "txtfields_6" << "1'2" << "12";
        QTest::newRow("amount keeps digits and point") << "txtfields_12" << "12a.5-" << "12.5";
        QTest::newRow("count keeps digits") << "txtfields_7" << "4x2" << "42";
    }

    void keyFilters()
    {
        QFETCH(QString, box);
        QFETCH(QString, typed);
        QFETCH(QString, shown);
        // GIVEN an open form whose boxes are all enabled
        FrmAddInfo form;
        auto* edit = child<QLineEdit>(form, box);
        edit->setEnabled(true);
        // WHEN the text is typed
        QTest::keyClicks(edit, typed);
        // THEN the box shows what the rules let through
        QCOMPARE(edit->text(), shown);
    }

    void longTextsAreCutToWhatTheirColumnsHold()
    {
        // GIVEN a ward longer than its column, a long AO code and a huge count typed in
        FrmAddInfo form;
        QTest::keyClicks(child<QLineEdit>(form, "txtfields_0"), QString(70, QLatin1Char('w')));
        QTest::keyClicks(child<QLineEdit>(form, "txtfields_8"), QStringLiteral("abcdefghijkl"));
        QTest::keyClicks(child<QLineEdit>(form, "txtfields_6"), QStringLiteral("123456789012"));
        child<QCheckBox>(form, "chknob_5")->setChecked(true);
        // WHEN saved
        child<QPushButton>(form, "cmdexit")->click();
        // THEN the row is written with what the boxes took, and nothing failed
        QCOMPARE(column(QStringLiteral("concat(length(Ward),'/',AreaCd,'/',IndiaEmp)")), QStringLiteral("60/ABCDEFGHIJ/123456789"));
        QVERIFY(test::logLines().isEmpty());
    }

    void enterMovesOnLikeTab()
    {
        FrmAddInfo form;
        showActive(form);
        auto* ward = child<QLineEdit>(form, "txtfields_0");
        ward->setFocus();
        QTest::keyClick(ward, Qt::Key_Return);
        QCOMPARE(QApplication::focusWidget(), child(form, "txtfields_1"));
        auto* nob = child(form, "chknob_0");
        nob->setFocus();
        QTest::keyClick(nob, Qt::Key_Enter);
        QCOMPARE(QApplication::focusWidget(), child(form, "chknob_1"));
        QVERIFY(form.isVisible());
        QCOMPARE(db_->count(QStringLiteral("FBT_AddInfo")), 0);
    }

    void escapeWithoutNatureOfBusinessIsRefused()
    {
        // GIVEN an open form with a ward but no nature of business
        FrmAddInfo form;
        showActive(form);
        auto* ward = child<QLineEdit>(form, "txtfields_0");
        ward->setFocus();
        QTest::keyClicks(ward, QStringLiteral("w1"));
        // WHEN Escape is pressed
        QTest::keyClick(ward, Qt::Key_Escape);
        // THEN the refusal is shown, nothing is written and the form stays open on the first box
        QCOMPARE(prompter_->texts(), QStringList{QStringLiteral("Please Select Nature of Business.")});
        QCOMPARE(prompter_->asked().front().icon, Prompter::Icon::Information);
        QVERIFY(form.isVisible());
        QCOMPARE(form.result(), 0);
        QCOMPARE(db_->count(QStringLiteral("FBT_AddInfo")), 0);
        QCOMPARE(QApplication::focusWidget(), child(form, "chknob_0"));
    }

    void saveAndExitWritesTheRowByKeyboard()
    {
        // GIVEN a form filled in by keyboard
        FrmAddInfo form;
        showActive(form);
        auto* ward = child<QLineEdit>(form, "txtfields_0");
        ward->setFocus();
        QTest::keyClicks(ward, QStringLiteral("ward 4"));
        child<QCheckBox>(form, "chknob_1")->setChecked(true);
        child<QCheckBox>(form, "chknob_3")->setChecked(true);
        auto* india = child<QLineEdit>(form, "txtfields_6");
        india->setFocus();
        QTest::keyClicks(india, QStringLiteral("35"));
        QTest::keyClick(india, Qt::Key_Tab);
        QCOMPARE(child<QLineEdit>(form, "txtfields_7")->text(), QStringLiteral("35"));
        // WHEN "Save & Exit" is pressed
        child<QPushButton>(form, "cmdexit")->click();
        // THEN the row is inserted and the form is closed
        QCOMPARE(form.result(), int(QDialog::Accepted));
        QVERIFY(!form.isVisible());
        QCOMPARE(column(QStringLiteral("concat(Ward,'/',NOB,'/',IndiaEmp,'/',TotalEmp)")), QStringLiteral("WARD 4/24/35/35"));
        QVERIFY(prompter_->texts().isEmpty());
    }

    void untickingEmployeesBothCopiesTheIndiaCount()
    {
        FrmAddInfo form;
        auto* both = child<QCheckBox>(form, "Check1_7");
        both->setChecked(true);
        child<QLineEdit>(form, "txtfields_6")->setText(QStringLiteral("12"));
        child<QLineEdit>(form, "txtfields_7")->setText(QStringLiteral("30"));
        both->click();
        QCOMPARE(child<QLineEdit>(form, "txtfields_7")->text(), QStringLiteral("12"));
        QVERIFY(!child(form, "txtfields_7")->isEnabled());
    }

    void loadFromPreviousYearFillsTheForm()
    {
        // GIVEN last year's row and no row this year
        db_->connection()->execute(QStringLiteral(
            "insert into FBT_AddInfo values('C001',2006,'0','OLD','','1','0','','','5','1','0','','0','','0','0','0','0',"
            "'0','0',3,3,'','','','','','','1',100,'0',0,'1',0,'')"));
        FrmAddInfo form;
        QCOMPARE(child<QLineEdit>(form, "txtfields_0")->text(), QString());
        // WHEN last year is loaded
        child<QPushButton>(form, "cmdloadpre")->click();
        // THEN the form shows its answers with the boxes they enable (what a save then writes is the record's test)
        QCOMPARE(child<QLineEdit>(form, "txtfields_0")->text(), QStringLiteral("OLD"));
        QVERIFY(child(form, "txtfields_12")->isEnabled());
        QCOMPARE(child(form, "Frame1")->property("Tag").toString(), QString());
    }

    void aoLookup_data()
    {
        QTest::addColumn<bool>("registered");
        QTest::addColumn<QStringList>("answer");
        QTest::addColumn<QStringList>("shown");
        const QStringList typed{"MUM", "W", "1", "2"};
        QTest::newRow("officer chosen") << true << QStringList{"PUNE", "PNE", "C", "14", "3", "WARD 1"}
                                        << QStringList{"PNE", "C", "14", "3"};
        QTest::newRow("nothing chosen") << true << QStringList{"", "PNE", "C", "14", "3"} << typed;
        QTest::newRow("no component") << false << QStringList{} << typed;
    }

    void aoLookup()
    {
        QFETCH(bool, registered);
        QFETCH(QStringList, answer);
        QFETCH(QStringList, shown);
        // GIVEN a client in Pune, typed AO boxes, and the component (or none)
        db_->connection()->execute(QStringLiteral("insert into FBT_Info (Code_No, City) values ('C001', '  Pune ')"));
        FakeBankInfo::Script& asked = FakeBankInfo::install(answer);
        if (!registered)
            ObjectRegistry::instance().unregisterClass(kBankInfoClass);
        FrmAddInfo form;
        const QStringList boxes{"txtfields_8", "txtfields_9", "txtfields_10", "txtfields_11"};
        for (int i = 0; i < 4; ++i)
            child<QLineEdit>(form, boxes[i])->setText(QStringList{"MUM", "W", "1", "2"}[i]);
        // WHEN the lookup is pressed
        child<QPushButton>(form, "cmdao")->click();
        FakeBankInfo::uninstall();
        // THEN the boxes show the officer's code, or stay; the component was asked for the client's city
        for (int i = 0; i < 4; ++i)
            QCOMPARE(child<QLineEdit>(form, boxes[i])->text(), shown[i]);
        QCOMPARE(test::logContexts().contains(QStringLiteral("frmaddinfo\tCMDAO_CLICK")), !registered);
        if (registered) {
            QCOMPARE(asked.city, QStringLiteral("Pune"));
            QVERIFY(asked.filterByCity);
            QCOMPARE(asked.resultSize, 8);
            QCOMPARE(asked.logFile, QStringLiteral("FBTLogger.log"));
            QCOMPARE(asked.appPath, modbase().AppPath);
        }
    }

    void bankDetailsOpensTheClientsAccounts()
    {
        // GIVEN two accounts of the client's year and one of another year
        Connection& c = *db_->connection();
        c.execute(QStringLiteral("delete from FBT_BankDet"));
        c.execute(QStringLiteral("insert into FBT_BankDet values ('C001',2007,1,'SBI','FORT','','SAVINGS','1','N','Y'),"
                                 "('C001',2007,2,'HDFC','PUNE','','CURRENT','2','N','N'),"
                                 "('C001',2006,1,'UCO','OLD','','SAVINGS','3','N','Y')"));
        FrmAddInfo form;
        // WHEN "Bank Details" is pressed, THEN the accounts screen opens modally on them
        QString seen;
        int rows = -1;
        QTimer::singleShot(0, [&] {
            QWidget* accounts = QApplication::activeModalWidget();
            if (!accounts)
                return;
            seen = accounts->objectName();
            rows = accounts->findChild<QTableWidget*>(QStringLiteral("vsf1"))->rowCount();
            accounts->findChild<QPushButton*>(QStringLiteral("cmdback"))->click();
        });
        child<QPushButton>(form, "cmdbankdet")->click();
        QCOMPARE(seen, QStringLiteral("frmbankdet"));
        QCOMPARE(rows, 2);
        QVERIFY(prompter_->texts().isEmpty());
    }

};

CORVANE_TEST_CLASS(FrmAddInfoTest)

#include "frmaddinfotest.moc"
