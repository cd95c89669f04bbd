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

    void repairFromTheScreen_data()
    {
        QTest::addColumn<Damage>("damage");
        QTest::addColumn<int>("rowsAfter"); // -1: stays broken
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<QString>("label");
        QTest::addColumn<QStringList>("during"); // the buttons at each message
        const QString advice = QStringLiteral("It is highly recommended to take Backup before Refreshing Data.");
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

    void repairDataOnHealthyTablesFindsNothingToRepair()
    {
        // GIVEN the host's form and three healthy tables
        for (const char* t : {"bank", "client", "year"})
            files->create(QString::fromLatin1(t), 20);
        QWidget host;
        host.show();
        // the screen as it is at each message: where it is, its buttons, its label and its bar
        QStringList seen;
        QString listed, grid, after;
        prompts->onAsk = [&](const Prompter::Question& q) {
            QWidget* modal = QApplication::activeModalWidget();
            if (!modal || modal->parentWidget() != &host) {
                seen << q.text + QStringLiteral(" / not modal over the host");
                return;
            }
            auto* bar = child<QProgressBar>(*modal, "pb1");
            seen << q.text + QStringLiteral(" / ") + buttons(*modal) + QStringLiteral(" / ") + child<QLabel>(*modal, "Label1")->text()
                    + QStringLiteral(" / %1 of %2").arg(bar->value()).arg(bar->maximum());
            if (q.text != QLatin1String("No Error."))
                return;
            // once the check has ended the user looks, clicks Repair and closes the screen
            QTimer::singleShot(0, modal, [&, modal] {
                listed = items(child<QListWidget>(*modal, "List1")).join(QLatin1Char(','));
                grid = rows(child<QTableWidget>(*modal, "vsf")).join(QLatin1Char(','));
                after = buttons(*modal);
                QTest::mouseClick(child<QPushButton>(*modal, "cmdrepair"), Qt::LeftButton);
                QTest::mouseClick(child<QPushButton>(*modal, "cmdcancel"), Qt::LeftButton);
            });
        };
        // WHEN the host calls RepairData with its form
        ClsMain().RepairData(&host);
        // THEN the screen was modal over that form, listed and checked every table with both buttons off, found nothing
        QCOMPARE(seen, (QStringList{"No Error. / repair off, cancel off / Checking Table ... (year) / 3 of 3",
                                    "Nothing to Repair. / repair on, cancel on / Checking Table ... (year) / 3 of 3"}));
        QCOMPARE(listed, QStringLiteral("bank,client,year"));
        QCOMPARE(grid, QString());
        QCOMPARE(after, QStringLiteral("repair on, cancel on"));
        QCOMPARE(logLines(), QStringList());
        // and is gone again
        QVERIFY(!QApplication::activeModalWidget());
        QVERIFY(host.findChildren<frmchkrep*>().isEmpty());
    }
};

CORVANE_TEST_CLASS(FrmChkRepTest)

#include "frmchkreptest.moc"
