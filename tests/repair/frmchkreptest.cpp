#include "tabledamage.h"

#include "component/clsmain.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "screens/repair/frmchkrep.h"
#include "support/formdriver.h"
#include "support/prompts.h"
#include "support/testdatabase.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>

using namespace corvane;
using namespace corvane::test;

namespace {

QStringList items(QListWidget* list)
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts;
}

// The grid's rows as "table|report|type".
QStringList rows(QTableWidget* grid)
{
    QStringList texts;
    for (int r = 0; r < grid->rowCount(); ++r)
        texts << grid->item(r, 0)->text() + QLatin1Char('|') + grid->item(r, 1)->text() + QLatin1Char('|') + grid->item(r, 2)->text();
    return texts;
}

// "repair on, cancel off" and so on.
QString buttons(QWidget& form)
{
    return QStringLiteral("repair %1, cancel %2")
        .arg(child<QPushButton>(form, "cmdrepair")->isEnabled() ? "on" : "off",
             child<QPushButton>(form, "cmdcancel")->isEnabled() ? "on" : "off");
}

} // namespace

class FrmChkRepTest : public QObject, DamageBench {
    Q_OBJECT

    std::shared_ptr<HookedPrompter> prompts;

    // The screen shown, with its check on showing done.
    std::unique_ptr<frmchkrep> open()
    {
        auto form = openActive<frmchkrep>();
        QCoreApplication::sendPostedEvents(form.get(), QEvent::MetaCall);
        return form;
    }

private slots:
    void initTestCase() { openBench(QStringLiteral("frmchkrep")); }
    void cleanupTestCase() { closeBench(); }
    void init()
    {
        files->dropAll();
        db->startAfresh({});
        prompts = installPrompter<HookedPrompter>();
    }

    void allOkSaysNoErrorAndNothingToRepair()
    {
        // GIVEN three healthy tables
        for (const char* t : {"bank", "client", "year"})
            files->create(QString::fromLatin1(t), 20);
        QStringList seen;
        prompts->onAsk = [&](const Prompter::Question& q) {
            QWidget* form = QApplication::activeWindow();
            seen << q.text + QStringLiteral(" / ") + buttons(*form) + QStringLiteral(" / ")
                    + child<QLabel>(*form, "Label1")->text()
                    + QStringLiteral(" / %1 of %2").arg(child<QProgressBar>(*form, "pb1")->value()).arg(child<QProgressBar>(*form, "pb1")->maximum());
        };
        // WHEN the screen is shown
        auto form = open();
        // THEN it lists the tables, checked them all with both buttons off, found nothing and says so
        QCOMPARE(items(child<QListWidget>(*form, "List1")), (QStringList{"bank", "client", "year"}));
        QCOMPARE(seen, QStringList{"No Error. / repair off, cancel off / Checking Table ... (year) / 3 of 3"});
        QCOMPARE(rows(child<QTableWidget>(*form, "vsf")), QStringList());
        QCOMPARE(buttons(*form), QStringLiteral("repair on, cancel on"));
        // WHEN Repair is clicked
        QTest::mouseClick(child<QPushButton>(*form, "cmdrepair"), Qt::LeftButton);
        // THEN there is nothing to repair
        QCOMPARE(prompts->texts(), (QStringList{"No Error.", "Nothing to Repair."}));
        QCOMPARE(logLines(), QStringList());
    }

    void repairFromTheScreen_data()
    {
        QTest::addColumn<Damage>("damage");
        QTest::addColumn<int>("rowsAfter"); // -1: stays broken
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<QString>("label");
        QTest::addColumn<QStringList>("during"); // the buttons at each message
        const QString advice = QStringLiteral("It is highly recommended to take Backup before Refreshing Data.");
        QTest::newRow("index file deleted") << Damage::IndexDeleted << TableFiles::kRows
                                            << QStringList{advice, "No Error."}
                                            << "The repair reported: clients: Number of rows changed from 0 to 1000"
                                            << QStringList{"repair on, cancel on", "repair off, cancel off"};
        QTest::newRow("data file cut mid-row") << Damage::DataTruncated << TableFiles::kRowsBeforeCut
                                               << QStringList{advice, "No Error."}
                                               << "The repair reported: clients: Number of rows changed from 1000 to 400"
                                               << QStringList{"repair on, cancel on", "repair off, cancel off"};
        QTest::newRow("data file deleted") << Damage::DataDeleted << -1
                                           << QStringList{advice, "Data can not be repaired."}
                                           << "Checking Table ... (clients)"
                                           << QStringList{"repair on, cancel on", "repair on, cancel on"};
    }
    void repairFromTheScreen()
    {
        QFETCH(Damage, damage);
        QFETCH(int, rowsAfter);
        QFETCH(QStringList, messages);
        QFETCH(QString, label);
        QFETCH(QStringList, during);
        // GIVEN a damaged table beside a healthy one
        files->create(QStringLiteral("banks"), 10);
        files->create(QStringLiteral("clients"));
        files->damage(QStringLiteral("clients"), damage);
        // WHEN the screen is shown
        auto form = open();
        auto* grid = child<QTableWidget>(*form, "vsf");
        // THEN the damaged table is listed with the server's reports
        QVERIFY(grid->rowCount() > 0);
        for (const QString& row : rows(grid))
            QVERIFY2(row.startsWith(QStringLiteral("clients|")), qPrintable(row));
        QCOMPARE(prompts->texts(), QStringList());
        // WHEN Repair is clicked; the screen is looked at while it asks
        QStringList seen;
        prompts->onAsk = [&](const Prompter::Question&) { seen << buttons(*form); };
        QTest::mouseClick(child<QPushButton>(*form, "cmdrepair"), Qt::LeftButton);
        // THEN the advice comes first, then how the second check ended (its "No Error." while it still runs)
        QCOMPARE(prompts->texts(), messages);
        QCOMPARE(seen, during);
        QCOMPARE(buttons(*form), QStringLiteral("repair on, cancel on"));
        QCOMPARE(child<QLabel>(*form, "Label1")->text(), label);
        if (rowsAfter < 0) {
            QVERIFY(grid->rowCount() > 0);
            QCOMPARE(grid->item(0, 0)->text(), QStringLiteral("clients"));
        } else {
            QCOMPARE(rows(grid), QStringList());
            QCOMPARE(files->count(QStringLiteral("clients")), rowsAfter);
        }
        QCOMPARE(files->count(QStringLiteral("banks")), 10);
        QCOMPARE(logLines(), QStringList());
    }

    void cannotBeClosedWhileItRuns()
    {
        // GIVEN the screen in the middle of its check (at its closing message)
        files->create(QStringLiteral("one"), 1);
        QStringList seen;
        prompts->onAsk = [&](const Prompter::Question&) {
            QWidget* form = QApplication::activeWindow();
            // WHEN Escape is pressed and the window is closed
            QTest::keyClick(form, Qt::Key_Escape);
            form->close();
            // THEN it stays
            seen << (form->isVisible() ? "still shown" : "closed");
        };
        auto form = open();
        QCOMPARE(seen, QStringList{"still shown"});
        // and once the check has ended Escape closes it
        prompts->onAsk = nullptr;
        QTest::keyClick(form.get(), Qt::Key_Escape);
        QVERIFY(!form->isVisible());
    }

    void keyboardReachesBothButtons()
    {
        // GIVEN a damaged table on the screen
        files->create(QStringLiteral("crashed"), 5);
        files->damage(QStringLiteral("crashed"), Damage::MarkedCrashed);
        auto form = open();
        // THEN Repair has the focus, and Enter on it repairs
        QCOMPARE(QApplication::focusWidget(), child<QPushButton>(*form, "cmdrepair"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QCOMPARE(prompts->texts().value(1), QStringLiteral("No Error."));
        // and with nothing left Cancel has it, and Enter closes the screen
        QCOMPARE(QApplication::focusWidget(), child<QPushButton>(*form, "cmdcancel"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QVERIFY(!form->isVisible());
    }

    void repairDataShowsTheScreenModallyOverTheHostsForm()
    {
        // GIVEN the host's form and a healthy table
        files->create(QStringLiteral("only"), 3);
        QWidget host;
        host.show();
        QString seen;
        prompts->onAsk = [&](const Prompter::Question&) {
            QWidget* modal = QApplication::activeModalWidget();
            seen = modal ? modal->objectName() + (modal->parentWidget() == &host ? " over the host" : " alone") : "none";
            // the user closes the screen once the check is done
            QTimer::singleShot(0, modal, [modal] { QTest::mouseClick(child<QPushButton>(*modal, "cmdcancel"), Qt::LeftButton); });
        };
        // WHEN the host calls RepairData with its form
        ClsMain().RepairData(&host);
        // THEN the screen was modal over that form, checked, and is gone again
        QCOMPARE(seen, QStringLiteral("frmchkrep over the host"));
        QCOMPARE(prompts->texts(), QStringList{"No Error."});
        QVERIFY(!QApplication::activeModalWidget());
        QVERIFY(host.findChildren<frmchkrep*>().isEmpty());
    }
};

CORVANE_TEST_CLASS(FrmChkRepTest)

#include "frmchkreptest.moc"
