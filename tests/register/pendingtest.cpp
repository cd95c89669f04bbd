#include "registertestsupport.h"

#include "component/clsmain.h"
#include "components/repview/reportdocument.h"
#include "screens/register/pending.h"
#include "support/formdriver.h"
#include "support/testdatabase.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>
#include <QTimer>

using namespace corvane;
using namespace corvane::test;
using namespace corvane::returnregister;

namespace {

// Whether a cell editor of the grid has the focus.
bool editing(QTableView* grid)
{
    QWidget* editor = QApplication::focusWidget();
    return editor && editor->parentWidget() == grid->viewport();
}

} // namespace

class PendingScreenTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db;
    std::shared_ptr<ScriptedPrompter> prompts;

    std::unique_ptr<Pending> open()
    {
        auto form = std::make_unique<Pending>();
        form->setGrid2Editable(2);
        showActive(*form);
        return form;
    }

private slots:
    void initTestCase() { db = std::make_unique<TestDatabase>(QStringLiteral("pending")); }
    void cleanupTestCase() { db.reset(); }
    void init()
    {
        db->startAfresh({QStringLiteral("FBT_Info"), QStringLiteral("FBT_AddInfo")});
        prompts = installPrompter();
        modbase().TYear = 2008;
        Connection& c = **db;
        insertClient(c, QStringLiteral("K10"), QStringLiteral("Kappa Mills"), QStringLiteral("ABCDE1234F"), QStringLiteral("15"));
        insertClient(c, QStringLiteral("B20"), QStringLiteral("Beta Stores"), QString(), QStringLiteral("7"));
        insertClient(c, QStringLiteral("b21"), QStringLiteral("beta annexe"));
        insertClient(c, QStringLiteral("Z30"), QStringLiteral("Zeta"));
        insertFiling(c, QStringLiteral("K10"), 2008, QStringLiteral("15/07/2008"), QStringLiteral("ACK-K"), QStringLiteral("31/07/2008"));
    }

    void registerViewAndEditingColumns()
    {
        // GIVEN the register of pending returns
        auto form = open();
        child<QComboBox>(*form, "cboreturn")->setCurrentIndex(1);
        QTest::mouseClick(child<QPushButton>(*form, "cmdproceed"), Qt::LeftButton);
        auto* grid = child<QTableView>(*form, "Grid2");
        QVERIFY(grid->isVisible());
        QVERIFY(!child<QGroupBox>(*form, "Frame1")->isVisible());
        QVERIFY(form->mnuopt()->isVisible() && form->Dos()->isVisible());
        QCOMPARE(child<QLabel>(*form, "lblhead")->text(), QStringLiteral("List of Pending Returns for the Assessment Year 2008-09"));
        QCOMPARE(form->register_().rowCount(), 3);
        QVERIFY(grid->isColumnHidden(HasRow) && grid->isColumnHidden(IntDate));
        QCOMPARE(form->register_().data(form->register_().index(0, Status)).toString(), QStringLiteral("7"));
        QCOMPARE(grid->currentIndex().row(), 0);

        // WHEN cells of columns 0-3 are entered THEN no editor opens; in columns 4 and 5 one does at once
        for (int column = 0; column < 6; ++column) {
            grid->setCurrentIndex(form->register_().index(1, column));
            QCOMPARE(editing(grid), column >= FilingDate);
        }
        // AND a date typed into column 4 is normalised
        grid->setCurrentIndex(form->register_().index(1, FilingDate));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // the editor of column 5 goes
        auto* editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
        QVERIFY(editor);
        editor->setText(QStringLiteral("15.4.8"));
        grid->setCurrentIndex(form->register_().index(2, Code)); // moving on ends the edit
        QCOMPARE(form->register_().rows().at(1)[FilingDate], QStringLiteral("15/04/2008"));
        QCOMPARE(form->register_().setData(form->register_().index(1, Name), QStringLiteral("x")), false);
    }

    void escapeStepsBackWithTheSaveQuestion()
    {
        auto form = open();
        QTest::mouseClick(child<QPushButton>(*form, "cmdproceed"), Qt::LeftButton);
        auto& model = form->register_();
        model.setData(model.index(1, AckNo), QStringLiteral("NEW-B"));

        // Cancel stays in the grid
        prompts->then(Prompter::Answer::Cancel);
        form->reject();
        QCOMPARE(prompts->texts(), QStringList{"Do you want to Save?"});
        QCOMPARE(prompts->asked().back().buttons, Prompter::Buttons::YesNoCancel);
        QVERIFY(child<QTableView>(*form, "Grid2")->isVisible());
        QCOMPARE(db->count(QStringLiteral("FBT_AddInfo")), 1);

        // Yes saves, then the selection frame comes back
        prompts->then(Prompter::Answer::Yes);
        form->mnuExit()->trigger();
        QCOMPARE(stored(*db, QStringLiteral("B20"), QStringLiteral("RetAckNo")), QStringLiteral("NEW-B"));
        QVERIFY(!child<QTableView>(*form, "Grid2")->isVisible());
        QVERIFY(child<QGroupBox>(*form, "Frame1")->isVisible());
        QCOMPARE(QApplication::focusWidget(), child<QPushButton>(*form, "cmdproceed"));

        // a refused date keeps the grid open with the row selected and writes nothing
        QTest::mouseClick(child<QPushButton>(*form, "cmdproceed"), Qt::LeftButton);
        model.setData(model.index(3, FilingDate), QStringLiteral("31/03/2008"));
        model.setData(model.index(2, AckNo), QStringLiteral("NOT WRITTEN"));
        prompts->then(Prompter::Answer::Yes);
        QTest::keyClick(form.get(), Qt::Key_Escape);
        QCOMPARE(prompts->texts().last(), QStringLiteral("Date Should be on or after 01/04/2008"));
        QVERIFY(child<QTableView>(*form, "Grid2")->isVisible());
        QCOMPARE(child<QTableView>(*form, "Grid2")->currentIndex().row(), 3);
        QCOMPARE(db->count(QStringLiteral("FBT_AddInfo"), QStringLiteral("Code_No='b21'")), 0);

        // No leaves without saving; Escape on the selection frame closes the form
        prompts->then(Prompter::Answer::No);
        QTest::mouseClick(child<QPushButton>(*form, "cmdback_0"), Qt::LeftButton); // Frame1 hidden: this is Escape in the grid
        QVERIFY(child<QGroupBox>(*form, "Frame1")->isVisible());
        QCOMPARE(db->count(QStringLiteral("FBT_AddInfo"), QStringLiteral("Code_No='b21'")), 0);
        QTest::mouseClick(child<QPushButton>(*form, "cmdback_0"), Qt::LeftButton);
        QVERIFY(!form->isVisible());
    }

    void emptyRegisterLeavesWithoutQuestion()
    {
        db->startAfresh({QStringLiteral("FBT_Info"), QStringLiteral("FBT_AddInfo")});
        auto form = open();
        QTest::mouseClick(child<QPushButton>(*form, "cmdproceed"), Qt::LeftButton);
        form->reject();
        QVERIFY(prompts->texts().isEmpty());
        QVERIFY(child<QGroupBox>(*form, "Frame1")->isVisible());
    }

    void periodFrame()
    {
        auto form = open();
        child<QComboBox>(*form, "cboreturn")->setCurrentIndex(2);
        QTest::mouseClick(child<QPushButton>(*form, "cmdproceed"), Qt::LeftButton);
        form->mnuopt()->trigger();
        QVERIFY(child<QGroupBox>(*form, "Frame3")->isVisible());
        QVERIFY(!child<QTableView>(*form, "Grid2")->isVisible());
        child<QRadioButton>(*form, "Option1_1")->setChecked(true);
        auto* begin = child<QLineEdit>(*form, "mText1");
        auto* end = child<QLineEdit>(*form, "mText2");

        begin->setText(QStringLiteral("01/04/2008"));
        end->setText(QStringLiteral("01/04/2008"));
        QTest::mouseClick(child<QPushButton>(*form, "Command1"), Qt::LeftButton);
        QCOMPARE(prompts->texts(), QStringList{"First date should be less than the second date."});
        QVERIFY(child<QGroupBox>(*form, "Frame3")->isVisible());
        QCOMPARE(QApplication::focusWidget(), begin);

        end->setText(QStringLiteral("31/02/2009"));
        QTest::mouseClick(child<QPushButton>(*form, "Command1"), Qt::LeftButton);
        QCOMPARE(prompts->texts().last(), QStringLiteral("Invalid date entry."));
        QCOMPARE(QApplication::focusWidget(), end);

        end->setText(QStringLiteral("15/07/2008"));
        QTest::mouseClick(child<QPushButton>(*form, "Command1"), Qt::LeftButton);
        QVERIFY(!child<QGroupBox>(*form, "Frame3")->isVisible());
        QCOMPARE(child<QLabel>(*form, "lblhead")->text(),
                 QStringLiteral("List of Filed Returns for the Assessment Year 2008-09 (Period from 01/04/2008 to 15/07/2008)"));
        QCOMPARE(form->register_().rowCount(), 1);

        // Escape in the period frame returns to the grid as it was
        form->mnuopt()->trigger();
        QTest::keyClick(form.get(), Qt::Key_Escape);
        QVERIFY(child<QTableView>(*form, "Grid2")->isVisible());
        QCOMPARE(form->register_().rowCount(), 1);
    }

    void entryViewByCode()
    {
        // GIVEN the entry view by code
        auto form = open();
        child<QComboBox>(*form, "cbomode")->setCurrentIndex(1);
        QTest::mouseClick(child<QPushButton>(*form, "cmdproceed"), Qt::LeftButton);
        auto* code = child<QLineEdit>(*form, "txtcode");
        auto* list = child<QTableView>(*form, "vsfc");
        QVERIFY(child<QGroupBox>(*form, "Frame2")->isVisible());
        QCOMPARE(QApplication::focusWidget(), code);
        QVERIFY(list->isVisible());

        // WHEN the user types the start of a code in small letters THEN the list follows
        QTest::keyClicks(code, QStringLiteral("b2"));
        QCOMPARE(list->currentIndex().row(), 1); // B20: the first from the top, any case
        QTest::keyClick(code, Qt::Key_Down);
        QCOMPARE(list->currentIndex().row(), 2);
        QTest::keyClick(code, Qt::Key_PageDown);
        QCOMPARE(list->currentIndex().row(), 3); // kept within the list
        QTest::keyClick(code, Qt::Key_PageUp);
        QCOMPARE(list->currentIndex().row(), 0);
        QTest::keyClicks(code, QStringLiteral("x"));  // "b2x" matches nothing: the cursor stays
        QCOMPARE(list->currentIndex().row(), 0);

        // AND Enter takes the row with its filing details
        QTest::keyClick(code, Qt::Key_Return);
        QCOMPARE(code->text(), QStringLiteral("K10"));
        QCOMPARE(child<QLineEdit>(*form, "txtnm")->text(), QStringLiteral("Kappa Mills"));
        QCOMPARE(child<QLineEdit>(*form, "txtfldt")->text(), QStringLiteral("15/07/2008"));
        QCOMPARE(child<QLineEdit>(*form, "txtrecno")->text(), QStringLiteral("ACK-K"));
        QVERIFY(!list->isVisible());

        // WHEN a new date is saved, the interest question is put to the user and the row is updated
        // (the interest rule itself is the filing service's test)
        auto* date = child<QLineEdit>(*form, "txtfldt");
        date->setText(QStringLiteral("20/07/2008"));
        prompts->then(Prompter::Answer::Yes);
        QTest::mouseClick(child<QPushButton>(*form, "cmdsave"), Qt::LeftButton);
        QCOMPARE(prompts->texts().size(), 1);
        QCOMPARE(stored(*db, QStringLiteral("K10"), QStringLiteral("IntDt")), QStringLiteral("20/07/2008"));
        QCOMPARE(code->text(), QString());
        QCOMPARE(QApplication::focusWidget(), code);
        QCOMPARE(form->entries().at(0)[EntryDate], QStringLiteral("20/07/2008"));

        // Escape hides the list first, then the entry frame
        QVERIFY(list->isVisible());
        QTest::keyClick(code, Qt::Key_Escape);
        QVERIFY(!list->isVisible());
        QVERIFY(child<QGroupBox>(*form, "Frame2")->isVisible());
        QTest::keyClick(code, Qt::Key_Escape);
        QVERIFY(!child<QGroupBox>(*form, "Frame2")->isVisible());
        QVERIFY(child<QGroupBox>(*form, "Frame1")->isVisible());
    }

    void entryViewByNameAndRefusals()
    {
        auto form = open();
        child<QComboBox>(*form, "cbomode")->setCurrentIndex(2);
        QTest::mouseClick(child<QPushButton>(*form, "cmdproceed"), Qt::LeftButton);
        auto* name = child<QLineEdit>(*form, "txtnm");
        auto* date = child<QLineEdit>(*form, "txtfldt");
        QCOMPARE(QApplication::focusWidget(), name);

        // no client chosen
        date->setFocus();
        child<QLineEdit>(*form, "txtcode")->clear();
        QTest::mouseClick(child<QPushButton>(*form, "cmdsave"), Qt::LeftButton);
        QCOMPARE(prompts->texts(), QStringList{"Please Select a Client."});
        QCOMPARE(QApplication::focusWidget(), name);
        name->clear();

        QTest::keyClicks(name, QStringLiteral("BETA A"));
        QCOMPARE(child<QTableView>(*form, "vsfc")->currentIndex().row(), 2);
        date->setFocus(); // leaving the box takes the row
        QCOMPARE(child<QLineEdit>(*form, "txtcode")->text(), QStringLiteral("b21"));
        QCOMPARE(date->text().remove(QLatin1Char('_')), QStringLiteral("//"));

        // an incomplete date is refused when leaving the box
        date->home(false);
        QTest::keyClicks(date, QStringLiteral("0104"));
        QCOMPARE(date->text(), QStringLiteral("01/04/"));
        child<QLineEdit>(*form, "txtrecno")->setFocus();
        QCOMPARE(prompts->texts().last(), QStringLiteral("Please Specify a Valid Date."));
        QCOMPARE(QApplication::focusWidget(), date);

        // 31/03 of the year is refused, 01/04 saved
        date->setText(QStringLiteral("31/03/2008"));
        QTest::mouseClick(child<QPushButton>(*form, "cmdsave"), Qt::LeftButton);
        QCOMPARE(prompts->texts().last(), QStringLiteral("Date Should be on or after 01/04/2008"));
        QCOMPARE(QApplication::focusWidget(), date);
        QCOMPARE(db->count(QStringLiteral("FBT_AddInfo"), QStringLiteral("Code_No='b21'")), 0);
        date->setText(QStringLiteral("01/04/2008"));
        QTest::mouseClick(child<QPushButton>(*form, "cmdsave"), Qt::LeftButton);
        QCOMPARE(stored(*db, QStringLiteral("b21"), QStringLiteral("RetDt")), QStringLiteral("01/04/2008"));
        QCOMPARE(QApplication::focusWidget(), name);
    }

    // The host's way in: ClsMain::ShowReturn shows the register modally for the context's year.
    void showReturnOpensForTheContextYear()
    {
        ClsMain cls;
        cls.setTYear(2007);
        QString year;
        int editable = -1;
        bool seen = false;
        QTimer::singleShot(0, [&] {
            for (QWidget* w : QApplication::topLevelWidgets()) {
                auto* form = qobject_cast<Pending*>(w);
                if (!form || !form->isVisible())
                    continue;
                seen = true;
                year = child<QComboBox>(*form, "cboasyear")->currentText();
                editable = form->grid2Editable();
                form->reject(); // Escape on the selection frame closes it
            }
        });
        cls.ShowReturn();
        QVERIFY(seen);
        QCOMPARE(year, QStringLiteral("2007-08"));
        QCOMPARE(editable, 2);
    }

    void printPreviewGetsTheVisibleColumns()
    {
        auto viewer = std::make_shared<ReportRecorder>();
        int shown = 0;
        viewer->show = [&](const ReportDocument&) { ++shown; };
        modbase().reportViewer = viewer;
        auto form = open();
        QTest::mouseClick(child<QPushButton>(*form, "cmdproceed"), Qt::LeftButton);
        form->Dos()->trigger();
        QCOMPARE(shown, 1);
        const ReportDocument& doc = viewer->document();
        QCOMPARE(doc.title(), QStringLiteral("List of All Clients for the Assessment Year 2008-09"));
        QCOMPARE(doc.lines.size(), 2 + 4);
        QCOMPARE(doc.lines.at(2).cells.size(), 6);
        QCOMPARE(doc.lines.at(2).cells.at(0).text, QStringLiteral("K10"));
        QCOMPARE(doc.lines.at(2).cells.at(1).width, child<QTableView>(*form, "Grid2")->columnWidth(1));
        QVERIFY(doc.lines.at(1).heading && doc.lines.at(1).condensed);
        // without a viewer nothing is shown and the failure is logged
        modbase().reportViewer.reset();
        form->Dos()->trigger();
        QCOMPARE(shown, 1);
        QVERIFY(logContexts().contains(QStringLiteral("Pending\tDOS_CLICK")));
    }
};

CORVANE_TEST_CLASS(PendingScreenTest)
#include "pendingtest.moc"
