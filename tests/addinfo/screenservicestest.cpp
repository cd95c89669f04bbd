#include "core/errorlog.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "screens/addinfo/frmaddinfo.h"
#include "screens/addinfo/frmaddinfo1.h"
#include "support/files.h"
#include "support/formdriver.h"
#include "support/prompts.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QtTest>

using namespace corvane;
using namespace corvane::test;

// How both editions use the value services: dates normalised on leaving a
// box, PAN checks, and the state lists.
class ScreenServicesTest : public QObject {
    Q_OBJECT

    std::unique_ptr<test::TestDatabase> db_;
    std::shared_ptr<ScriptedPrompter> prompter_;


    // Types into the box and leaves it with Tab.
    static void typeAndLeave(QWidget& form, const QString& name, const QString& text)
    {
        auto* box = form.findChild<QLineEdit*>(name);
        QVERIFY2(box, qPrintable(name));
        box->setEnabled(true);
        box->setFocus();
        QTest::keyClicks(box, text);
        QTest::keyClick(box, Qt::Key_Tab);
    }

private slots:
    void initTestCase() { db_ = std::make_unique<test::TestDatabase>(QStringLiteral("screenservices")); }
    void cleanupTestCase() { db_.reset(); }
    void init()
    {
        modbase().Code = QStringLiteral("C001");
        modbase().TYear = 2009;
        prompter_ = installPrompter();
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
        std::unique_ptr<QDialog> form;
        if (second)
            form = std::make_unique<FrmAddInfo1>();
        else
            form = std::make_unique<FrmAddInfo>();
        showActive(*form);
        if (auto* f = qobject_cast<FrmAddInfo1*>(form.get()))
            f->cmddetail_Click(box.startsWith(QLatin1String("txt1")) ? 1 : 2);
        typeAndLeave(*form, box, typed);
        QCOMPARE(form->findChild<QLineEdit*>(box)->text(), shown);
    }

    void validPansMayBeLeft_data()
    {
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("typed");
        QTest::newRow("representative, a PAN") << "txt0_1" << "ABCDE1234F";
        QTest::newRow("representative, empty") << "txt0_1" << "";
        QTest::newRow("firm, ten capitals") << "txt1_3" << "ABCDEFGHIJ";
    }

    void validPansMayBeLeft()
    {
        QFETCH(QString, box);
        QFETCH(QString, typed);
        FrmAddInfo1 form;
        showActive(form);
        form.cmddetail_Click(box.startsWith(QLatin1String("txt1")) ? 1 : 0);
        typeAndLeave(form, box, typed);
        QVERIFY(prompter_->texts().isEmpty());
        QVERIFY(QApplication::focusWidget() != form.findChild<QWidget*>(box));
    }

    void stateListsComeFromTheStateFile()
    {
        // GIVEN a state file and a representative in a state the file lacks
        writeFile(modbase().AppPath + QStringLiteral("/Data/StateCodes.txt"), "Andhra Pradesh, Assam\nGoa\n");
        db_->connection()->execute(QStringLiteral("delete from FBT_MiscInf"));
        db_->connection()->execute(QStringLiteral("insert into FBT_MiscInf (Code_No, TYear, Var0_7, Var1_9) values ('C001', 2009, 'SIKKIM', 'GOA')"));
        // WHEN the second edition opens
        FrmAddInfo1 form;
        // THEN both lists hold the file's states in capitals, and the stored states are chosen
        auto* rep = form.findChild<QComboBox*>(QStringLiteral("cbost0"));
        auto* auditor = form.findChild<QComboBox*>(QStringLiteral("cbost1"));
        QCOMPARE(auditor->count(), 3);
        QCOMPARE(auditor->itemText(0), QStringLiteral("ANDHRA PRADESH"));
        QCOMPARE(auditor->currentText(), QStringLiteral("GOA"));
        QCOMPARE(rep->currentText(), QStringLiteral("SIKKIM"));
    }
};

CORVANE_TEST_CLASS(ScreenServicesTest)

#include "screenservicestest.moc"
