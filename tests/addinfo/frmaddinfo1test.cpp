#include "core/errorlog.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "fakebankinfo.h"
#include "screens/addinfo/frmaddinfo.h"
#include "screens/addinfo/frmaddinfo1.h"
#include "support/files.h"
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
#include <QtTest>

using namespace corvane;
using namespace corvane::test;

// The second edition of the additional information screen, driven offscreen, and
// how both editions use the value services: dates on leaving a box, PAN checks, the state lists.
class FrmAddInfo1Test : public QObject {
    Q_OBJECT

    std::unique_ptr<test::TestDatabase> db_;
    std::shared_ptr<ScriptedPrompter> prompter_;

    static QLineEdit* box(QWidget& form, const char* name) { return child<QLineEdit>(form, QString::fromLatin1(name)); }

    QString column(const QString& name, const QString& table = QStringLiteral("FBT_AddInfo"))
    {
        return db_->scalar(QStringLiteral("select ") + name + QStringLiteral(" from ") + table
                           + QStringLiteral(" where code_no='C001' and tyear=") + QString::number(modbase().TYear));
    }


private slots:
    void init()
    {
        // One database per class; each test starts from empty tables and an empty log.
        db_->startAfresh({QStringLiteral("FBT_AddInfo"), QStringLiteral("FBT_MiscInf"), QStringLiteral("FBT_Info")});
        modbase().Code = QStringLiteral("C001");
        modbase().TYear = 2008;
        prompter_ = installPrompter();
    }
    void initTestCase() { db_ = std::make_unique<test::TestDatabase>(QStringLiteral("frmaddinfo1")); }
    void cleanupTestCase() { db_.reset(); }

    void switchingPagesKeepsTypedValues()
    {
        // GIVEN values typed on each page
        FrmAddInfo1 form;
        showActive(form);
        child<QCheckBox>(form, "chk0")->click();
        QTest::keyClicks(box(form, "txt0_0"), QStringLiteral("ravi kumar"));
        QTest::keyClicks(box(form, "txt0_8"), QStringLiteral("400a001"));
        form.cmddetail[1]->click();
        QTest::keyClicks(box(form, "txt1_0"), QStringLiteral("shah & co"));
        child<QCheckBox>(form, "chk1_1")->click();
        form.cmddetail[2]->click();
        QTest::keyClicks(box(form, "txt2_1"), QStringLiteral("ward 9"));
        child<QComboBox>(form, "cbosection")->setCurrentIndex(1);
        // WHEN going back and forth and saving with Escape
        form.cmddetail[0]->click();
        QCOMPARE(box(form, "txt0_0")->text(), QStringLiteral("RAVI KUMAR"));
        form.cmddetail[1]->click();
        QCOMPARE(box(form, "txt1_0")->text(), QStringLiteral("SHAH & CO"));
        QTest::keyClick(box(form, "txt1_0"), Qt::Key_Escape);
        // THEN both tables hold every page's values and the form is closed
        QCOMPARE(form.result(), int(QDialog::Accepted));
        QCOMPARE(column(QStringLiteral("concat(Ward,'/',Section)")), QStringLiteral("WARD 9/2"));
        QCOMPARE(column(QStringLiteral("concat(RepAss,'/',Var0_0,'/',Var0_8,'/',Opt44AB,'/',Var1_0)"), QStringLiteral("FBT_MiscInf")),
                 QStringLiteral("1/RAVI KUMAR/400001/1/SHAH & CO"));
        QVERIFY(prompter_->texts().isEmpty());
    }

    void interest115WJ5ShowsFrom2008_data()
    {
        QTest::addColumn<int>("year");
        QTest::addColumn<bool>("visible");
        QTest::newRow("2007") << 2007 << false;
        QTest::newRow("2008") << 2008 << true;
    }

    void interest115WJ5ShowsFrom2008()
    {
        QFETCH(int, year);
        QFETCH(bool, visible);
        // GIVEN the year
        modbase().TYear = qint16(year);
        FrmAddInfo1 form;
        showActive(form);
        form.cmddetail[2]->click();
        // THEN 115WJ(5) and its amount show only from 2008
        QCOMPARE(child(form, "chk2_5")->isVisible(), visible);
        QCOMPARE(box(form, "txt2_11")->isVisible(), visible);
        // AND a save still writes the pair ('0' and 0 when unticked)
        child<QPushButton>(form, "cmdexit")->click();
        QCOMPARE(column(QStringLiteral("concat(Calc115WJ5,'/',Amt115WJ5)")), QStringLiteral("0/0"));
    }

    void enablingChains_data()
    {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QStringList>("dependents");
        QTest::newRow("representative") << "chk0"
                                        << QStringList{"txt0_0", "txt0_1", "txt0_2", "txt0_3", "txt0_4", "txt0_5", "txt0_6",
                                                       "cbost0", "txt0_8"};
        QTest::newRow("revised") << "Opt2_1" << QStringList{"txt2_2", "txt2_3"};
        QTest::newRow("change of name") << "chk2_0" << QStringList{"txt2_0"};
        QTest::newRow("employees both") << "chk2_2" << QStringList{"chk2_3", "txt2_5"};
        QTest::newRow("115WJ(3)") << "chk2_4" << QStringList{"txt2_10"};
        QTest::newRow("115WJ(5)") << "chk2_5" << QStringList{"txt2_11"};
        QTest::newRow("115WK") << "chk2_6" << QStringList{"txt2_12"};
        QTest::newRow("interest date") << "chk2_7" << QStringList{"txt2_13"};
    }

    void enablingChains()
    {
        QFETCH(QString, control);
        QFETCH(QStringList, dependents);
        // GIVEN a year without rows: the dependents start disabled
        FrmAddInfo1 form;
        for (const QString& d : dependents)
            QVERIFY2(!child(form, d)->isEnabled(), qPrintable(d));
        // WHEN the control is chosen, THEN they are enabled; and disabled again by the opposite choice
        child<QAbstractButton>(form, control)->click();
        for (const QString& d : dependents)
            QVERIFY2(child(form, d)->isEnabled(), qPrintable(d));
        if (control == QLatin1String("Opt2_1"))
            child<QRadioButton>(form, "Opt2_0")->click();
        else
            child<QAbstractButton>(form, control)->click();
        for (const QString& d : dependents)
            QVERIFY2(!child(form, d)->isEnabled(), qPrintable(d));
    }

    void untickedRepresentativeKeepsAndSavesItsText()
    {
        FrmAddInfo1 form;
        auto* rep = child<QCheckBox>(form, "chk0");
        rep->click();
        box(form, "txt0_0")->setText(QStringLiteral("KEPT NAME"));
        rep->click();
        QVERIFY(!box(form, "txt0_0")->isEnabled());
        QCOMPARE(box(form, "txt0_0")->text(), QStringLiteral("KEPT NAME"));
        child<QPushButton>(form, "cmdexit")->click();
        QCOMPARE(column(QStringLiteral("concat(RepAss,'/',Var0_0)"), QStringLiteral("FBT_MiscInf")), QStringLiteral("0/KEPT NAME"));
    }

    void panOnLeaving_data()
    {
        QTest::addColumn<int>("page");
        QTest::addColumn<QString>("panBox");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("refused");
        QTest::newRow("representative, a PAN") << 0 << "txt0_1" << "ABCDE1234F" << false;
        QTest::newRow("representative, empty") << 0 << "txt0_1" << "" << false;
        QTest::newRow("representative, not a PAN") << 0 << "txt0_1" << "abcd1234" << true;
        QTest::newRow("firm, ten capitals") << 1 << "txt1_3" << "ABCDEFGHIJ" << false;
        QTest::newRow("firm, not a PAN") << 1 << "txt1_3" << "abcd1234" << true;
    }

    void panOnLeaving()
    {
        QFETCH(int, page);
        QFETCH(QString, panBox);
        QFETCH(QString, typed);
        QFETCH(bool, refused);
        // GIVEN a PAN (or none) typed into the box
        FrmAddInfo1 form;
        showActive(form);
        child<QCheckBox>(form, "chk0")->setChecked(true);
        form.cmddetail[page]->click();
        auto* pan = child<QLineEdit>(form, panBox);
        pan->setFocus();
        QTest::keyClicks(pan, typed);
        // WHEN the user leaves it with Enter
        QTest::keyClick(pan, Qt::Key_Return);
        // THEN a wrong one is refused and the focus is back in the box, the text as typed; a right one lets it go
        QCOMPARE(prompter_->texts(), refused ? QStringList{QStringLiteral("PAN No is not Valid.")} : QStringList());
        QCOMPARE(QApplication::focusWidget() == pan, refused);
        QCOMPARE(pan->text(), typed.toUpper());
    }

    void datesAreNormalisedOnLeaving_data()
    {
        QTest::addColumn<bool>("second");
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::newRow("original return date") << false << "txtfields_3" << "5.1.8" << "05/01/2008";
        QTest::newRow("44AB report") << false << "txtfields_4" << "15/4/8" << "15/04/2008";
        QTest::newRow("44AB(c) report") << false << "txtfields_5" << "31/02/2008" << "";
        QTest::newRow("interest upto") << false << "txtfields_14" << "12/05/35" << "12/05/1935";
        QTest::newRow("audit report") << true << "txt1_11" << "5.1.8" << "05/01/2008";
        QTest::newRow("revised return date") << true << "txt2_3" << "15/4/8" << "15/04/2008";
        QTest::newRow("second interest upto") << true << "txt2_13" << "1/1/2009" << "01/01/2009";
    }

    void datesAreNormalisedOnLeaving()
    {
        QFETCH(bool, second);
        QFETCH(QString, box);
        QFETCH(QString, typed);
        QFETCH(QString, shown);
        // GIVEN either edition, the page of the box shown
        std::unique_ptr<QDialog> form;
        if (second)
            form = std::make_unique<FrmAddInfo1>();
        else
            form = std::make_unique<FrmAddInfo>();
        showActive(*form);
        if (auto* f = qobject_cast<FrmAddInfo1*>(form.get()))
            f->cmddetail_Click(box.startsWith(QLatin1String("txt1")) ? 1 : 2);
        // WHEN a date is typed and the box left with Tab THEN it shows the date in full, or nothing
        auto* edit = child<QLineEdit>(*form, box);
        edit->setEnabled(true);
        edit->setFocus();
        QTest::keyClicks(edit, typed);
        QTest::keyClick(edit, Qt::Key_Tab);
        QCOMPARE(edit->text(), shown);
    }

    void keyFilters_data()
    {
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::newRow("115WK amount takes any key") << "txt2_12" << "12ab" << "12AB";
        QTest::newRow("115WJ(5) amount takes digits") << "txt2_11" << "12ab.5" << "12.5";
        QTest::newRow("pin code digits") << "txt0_8" << "40x0'01" << "40001";
        QTest::newRow("employee count digits") << "txt2_4" << "1o0" << "10";
        QTest::newRow("old name capitals") << "txt2_0" << "abc d'souza" << "ABC DSOUZA";
    }

    void keyFilters()
    {
        QFETCH(QString, box);
        QFETCH(QString, typed);
        QFETCH(QString, shown);
        FrmAddInfo1 form;
        auto* edit = child<QLineEdit>(form, box);
        edit->setEnabled(true);
        QTest::keyClicks(edit, typed);
        QCOMPARE(edit->text(), shown);
    }

    void everyBoxFitsItsColumn()
    {
        // GIVEN every box filled to its limit
        FrmAddInfo1 form;
        for (QLineEdit* edit : form.findChildren<QLineEdit*>()) {
            if (qobject_cast<QComboBox*>(edit->parentWidget()))
                continue;
            QVERIFY2(edit->maxLength() >= 9 && edit->maxLength() <= 100, qPrintable(edit->objectName()));
            edit->setText(QString(edit->maxLength(), QLatin1Char('9')));
        }
        child<QCheckBox>(form, "chk2_4")->setChecked(true);
        // WHEN saved
        child<QPushButton>(form, "cmdexit")->click();
        // THEN both rows are written without a failure
        QCOMPARE(db_->count(QStringLiteral("FBT_AddInfo")), 1);
        QCOMPARE(db_->count(QStringLiteral("FBT_MiscInf")), 1);
        QVERIFY2(test::logLines().isEmpty(), qPrintable(test::logLines().join(QLatin1Char('\n'))));
    }

    void aoLookupFillsThePageBoxes()
    {
        FakeBankInfo::install({"PUNE", "PNE", "C", "14", "3"});
        FrmAddInfo1 form;
        child<QPushButton>(form, "cmdao")->click();
        FakeBankInfo::uninstall();
        QCOMPARE(QStringList({box(form, "txt2_6")->text(), box(form, "txt2_7")->text(), box(form, "txt2_8")->text(),
                              box(form, "txt2_9")->text()}),
                 QStringList({"PNE", "C", "14", "3"}));
    }

    void enterMovesOnFromListsAndBoxes()
    {
        FrmAddInfo1 form;
        showActive(form);
        form.cmddetail[2]->click();
        auto* section = child(form, "cbosection");
        section->setFocus();
        QTest::keyClick(section, Qt::Key_Return);
        QCOMPARE(QApplication::focusWidget(), child(form, "Opt2_0"));
        auto* peIndia = child(form, "chk2_1");
        peIndia->setFocus();
        QTest::keyClick(peIndia, Qt::Key_Enter);
        QCOMPARE(QApplication::focusWidget(), child(form, "chk2_2"));
        QVERIFY(form.isVisible());
    }

    void loadsBothRowsAndSavesBothTables()
    {
        // GIVEN rows of the second edition for the year
        Connection& c = *db_->connection();
        c.execute(QStringLiteral("insert into FBT_AddInfo values('C001',2008,'1','W7','OLD','2','1','R9','02/03/2008','3','1','1',"
                                 "'01/01/2008','0','','1','0','0','0','0','0',4,4,'05/05/2008','ACK','A','B','C','D','1',10,'0',0,"
                                 "'1',20,'')"));
        c.execute(QStringLiteral("insert into FBT_MiscInf values('C001',2008,'1','REP','','','','','','','GOA','','0','1',"
                                 "'AUD','','','','','','','','','KERALA','','','1','OLD NAME')"));
        FrmAddInfo1 form;
        // THEN the pages show them
        QVERIFY(child<QCheckBox>(form, "chk0")->isChecked());
        QCOMPARE(child<QComboBox>(form, "cbost1")->currentText(), QStringLiteral("KERALA"));
        QCOMPARE(box(form, "txt2_0")->text(), QStringLiteral("OLD NAME"));
        QCOMPARE(child<QComboBox>(form, "cbosection")->currentText(), QStringLiteral("22 - Voluntarily after the due date"));
        QVERIFY(child<QRadioButton>(form, "Opt2_1")->isChecked());
        QCOMPARE(box(form, "txt2_11")->text(), QStringLiteral("20"));
        // WHEN saved unchanged THEN both rows are written back as they were
        // (that each edition keeps the other's columns is the record's own test)
        child<QPushButton>(form, "cmdexit")->click();
        QCOMPARE(column(QStringLiteral("concat(Ward,'/',RetDt,'/',Amt115WJ5)")), QStringLiteral("W7/05/05/2008/20"));
        QCOMPARE(column(QStringLiteral("concat(Var0_7,'/',Var1_9,'/',Var2_1)"), QStringLiteral("FBT_MiscInf")),
                 QStringLiteral("GOA/KERALA/OLD NAME"));
    }

    void stateListsComeFromTheStateFile()
    {
        // GIVEN a state file and a representative in a state the file lacks
        writeFile(modbase().AppPath + QStringLiteral("/Data/StateCodes.txt"), "Andhra Pradesh, Assam\nGoa\n");
        db_->connection()->execute(QStringLiteral("insert into FBT_MiscInf (Code_No, TYear, Var0_7, Var1_9) values ('C001', 2008, 'SIKKIM', 'GOA')"));
        // WHEN the second edition opens
        FrmAddInfo1 form;
        QFile::remove(modbase().AppPath + QStringLiteral("/Data/StateCodes.txt"));
        // THEN both lists hold the file's states in capitals, and the stored states are chosen
        auto* auditor = child<QComboBox>(form, "cbost1");
        QCOMPARE(auditor->count(), 3);
        QCOMPARE(auditor->itemText(0), QStringLiteral("ANDHRA PRADESH"));
        QCOMPARE(auditor->currentText(), QStringLiteral("GOA"));
        QCOMPARE(child<QComboBox>(form, "cbost0")->currentText(), QStringLiteral("SIKKIM"));
    }
};

CORVANE_TEST_CLASS(FrmAddInfo1Test)

#include "frmaddinfo1test.moc"
