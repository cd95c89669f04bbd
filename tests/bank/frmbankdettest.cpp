#include "banktestsupport.h"

#include "component/components.h"
#include "core/errorlog.h"
#include "db/schema.h"
#include "screens/bank/frmbankdet.h"
#include "support/statementrecorder.h"
#include "support/testdatabase.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTimer>

using namespace corvane;
using namespace corvane::test;

namespace {
const QString kClient = QStringLiteral("A001");
constexpr int kYear = 2008;

QStringList account(int n, const QString& isDefault = QStringLiteral("N"))
{
    return {QStringLiteral("BANK %1").arg(n), QStringLiteral("ADDRESS %1").arg(n), QStringLiteral("40024001%1").arg(n),
            QStringLiteral("SAVINGS"), QStringLiteral("ACC%1").arg(n), QStringLiteral("N"), isDefault};
}
} // namespace

class BankAccountsScreenTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db;
    std::shared_ptr<ScriptedPrompter> prompts;

    // "SrNo|bank|address|MICR|type|account|ECS|default" for each stored row of the year.
    QStringList stored(int year = kYear)
    {
        QStringList rows;
        const auto result = (*db)->query(QStringLiteral("select * from FBT_BankDet where code_no = '%1' and Yr = %2 order by SrNo")
                                             .arg(kClient).arg(year));
        for (const auto& r : result.rows) {
            QStringList cells;
            for (int i = 2; i < r.size(); ++i)
                cells << r.at(i).toString();
            rows << cells.join(QLatin1Char('|'));
        }
        return rows;
    }
    void seed(int year, int count, int defaultRow = 0)
    {
        for (int n = 1; n <= count; ++n)
            insertAccount(**db, kClient, year, n, account(n, n == defaultRow ? QStringLiteral("Y") : QStringLiteral("N")));
    }
    std::unique_ptr<frmbankdet> open() { return openActive<frmbankdet>(); }
    static QTableWidget* grid(frmbankdet& form) { return child<QTableWidget>(form, "vsf1"); }
    static void select(frmbankdet& form, int row) { grid(form)->setCurrentCell(row, 0); }
    static QStringList gridColumn(frmbankdet& form, int column)
    {
        QStringList cells;
        for (int r = 0; r < grid(form)->rowCount(); ++r)
            cells << grid(form)->item(r, column)->text();
        return cells;
    }
    static void typeAccount(frmbankdet& form, const QString& bank, const QString& micr = QString())
    {
        form.txtfields().at(0)->setText(bank);
        form.txtfields().at(1)->setText(QStringLiteral("FORT, MUMBAI"));
        form.txtfields().at(2)->setText(micr);
        child<QComboBox>(form, "Combo1")->setCurrentIndex(1);
        form.txtfields().at(3)->setText(QStringLiteral("00991"));
        child<QRadioButton>(form, "Option1")->setChecked(true);
    }

private slots:
    void initTestCase() { db = std::make_unique<TestDatabase>(QStringLiteral("bankdet")); }
    void cleanupTestCase() { db.reset(); }

    void init()
    {
        schema::createMissingTables(**db);
        (*db)->execute(QStringLiteral("delete from FBT_BankDet"));
        QFile::remove(logFilePath());
        prompts = installPrompter();
        registerDefaultComponents();
        modbase().Code = kClient;
        modbase().TYear = kYear;
    }

    void loadsTheYearInSrNoOrder()
    {
        // GIVEN three accounts stored out of order, and another client's account
        insertAccount(**db, kClient, kYear, 3, account(3));
        insertAccount(**db, kClient, kYear, 1, account(1, QStringLiteral("Y")));
        insertAccount(**db, kClient, kYear, 2, account(2));
        insertAccount(**db, QStringLiteral("B002"), kYear, 1, account(9));
        // WHEN the screen loads
        auto form = open();
        // THEN the grid has the client's rows by SrNo, the first shown below
        QCOMPARE(gridColumn(*form, 0), (QStringList{"BANK 1", "BANK 2", "BANK 3"}));
        QCOMPARE(form->txtfields().at(0)->text(), QStringLiteral("BANK 1"));
        QVERIFY(child<QCheckBox>(*form, "Check2")->isChecked());
        QVERIFY(child<QRadioButton>(*form, "Option2")->isChecked());
        QCOMPARE(child<QComboBox>(*form, "Combo1")->currentText(), QStringLiteral("SAVINGS"));
        QVERIFY(!form->editing());
        QVERIFY(!child<QGroupBox>(*form, "Frame2")->isEnabled());
        QCOMPARE(prompts->texts(), QStringList());
        // WHEN the user moves down the grid with the keyboard
        grid(*form)->setFocus();
        QTest::keyClick(grid(*form), Qt::Key_Down);
        // THEN the entry frame follows the selected row
        QCOMPARE(form->txtfields().at(0)->text(), QStringLiteral("BANK 2"));
        QVERIFY(!child<QCheckBox>(*form, "Check2")->isChecked());
    }

    void importFromThePreviousYear_data()
    {
        QTest::addColumn<int>("lastYear");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<int>("rows");
        QTest::newRow("Yes fills the grid") << 3 << true << 3;
        QTest::newRow("No leaves it empty") << 3 << false << 0;
        QTest::newRow("nothing last year: not asked") << 0 << false << 0;
    }
    void importFromThePreviousYear()
    {
        QFETCH(int, lastYear);
        QFETCH(bool, yes);
        QFETCH(int, rows);
        // GIVEN accounts last year (or none) and none this year
        seed(kYear - 1, lastYear, 1);
        if (lastYear)
            prompts->then(yes ? Prompter::Answer::Yes : Prompter::Answer::No);
        // WHEN the screen loads and is left with Back
        auto form = open();
        QCOMPARE(grid(*form)->rowCount(), rows);
        click(*form, "cmdback");
        // THEN the question was asked when there was something to import, nothing was written for this year,
        // and last year is untouched
        QCOMPARE(prompts->texts(), lastYear ? QStringList{QStringLiteral("Do you want to Import from Previous Year?")} : QStringList());
        QVERIFY(!form->isVisible());
        QCOMPARE(stored(), QStringList());
        QCOMPARE(stored(kYear - 1).size(), lastYear);
    }

    void importedAccountsAreWrittenAtTheNextUpdate()
    {
        // GIVEN last year's three accounts imported into the grid
        seed(kYear - 1, 3, 1);
        prompts->then(Prompter::Answer::Yes);
        auto form = open();
        // WHEN the second is modified and updated
        select(*form, 1);
        click(*form, "cmdmodify");
        form->txtfields().at(3)->setText(QStringLiteral("NEW-ACC"));
        click(*form, "cmdupdate");
        // THEN this year holds all three, the second changed
        QCOMPARE(stored(), (QStringList{"1|BANK 1|ADDRESS 1|400240011|SAVINGS|ACC1|N|Y",
                                        "2|BANK 2|ADDRESS 2|400240012|SAVINGS|NEW-ACC|N|N",
                                        "3|BANK 3|ADDRESS 3|400240013|SAVINGS|ACC3|N|N"}));
    }

    void theFirstAccountBecomesTheDefault()
    {
        // GIVEN an empty list and a first account typed without Default
        auto form = open();
        click(*form, "cmdadd");
        QVERIFY(form->editing());
        QCOMPARE(form->editMode(), qint16(-1));
        typeAccount(*form, QStringLiteral("HDFC BANK LTD"), QStringLiteral("400240015"));
        // WHEN it is updated
        click(*form, "cmdupdate");
        // THEN it is stored as SrNo 1 and the default account, and the grid says so
        QCOMPARE(stored(), QStringList{QStringLiteral("1|HDFC BANK LTD|FORT, MUMBAI|400240015|CURRENT|00991|Y|Y")});
        QCOMPARE(gridColumn(*form, 6), QStringList{QStringLiteral("Y")});
        QVERIFY(child<QCheckBox>(*form, "Check2")->isChecked());
        QVERIFY(!form->editing());
        QCOMPARE(QApplication::focusWidget(), child<QPushButton>(*form, "cmdadd"));
    }

    void tickingDefaultClearsTheOthers()
    {
        // GIVEN three accounts, the first the default
        seed(kYear, 3, 1);
        auto form = open();
        // WHEN the third is modified with Default ticked
        select(*form, 2);
        click(*form, "cmdmodify");
        QCOMPARE(form->editMode(), qint16(0));
        child<QCheckBox>(*form, "Check2")->setChecked(true);
        click(*form, "cmdupdate");
        // THEN only the third is the default, in the table and the grid
        QStringList defaults;
        for (const QString& row : stored())
            defaults << row.section(QLatin1Char('|'), 7, 7);
        QCOMPARE(defaults, (QStringList{"N", "N", "Y"}));
        QCOMPARE(gridColumn(*form, 6), (QStringList{"N", "N", "Y"}));
        QCOMPARE(QApplication::focusWidget(), child<QPushButton>(*form, "cmdmodify"));
    }

    void deletion_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QStringList>("banks"); // what stays, in SrNo order
        QTest::newRow("the first renumbers the others") << 0 << true << QStringList{"BANK 2", "BANK 3"};
        QTest::newRow("a middle one renumbers the last") << 1 << true << QStringList{"BANK 1", "BANK 3"};
        QTest::newRow("the last, the default, leaves the others") << 2 << true << QStringList{"BANK 1", "BANK 2"};
        QTest::newRow("No keeps every one") << 1 << false << QStringList{"BANK 1", "BANK 2", "BANK 3"};
    }
    void deletion()
    {
        QFETCH(int, row);
        QFETCH(bool, yes);
        QFETCH(QStringList, banks);
        // GIVEN three accounts, the last the default, one selected
        seed(kYear, 3, 3);
        auto form = open();
        select(*form, row);
        // WHEN it is deleted and the question answered
        prompts->then(yes ? Prompter::Answer::Yes : Prompter::Answer::No);
        StatementRecorder recorder;
        click(*form, "cmddelete");
        recorder.stop();
        // THEN the question had its title, and the others are stored numbered from 1, one of them the default
        QCOMPARE(prompts->texts(), QStringList{QStringLiteral("Do you want to delele the selected item?")});
        QCOMPARE(prompts->asked().front().title, QStringLiteral("Delete Confirmation"));
        QStringList numbers, names, defaults;
        for (const QString& r : stored()) {
            numbers << r.section(QLatin1Char('|'), 0, 0);
            names << r.section(QLatin1Char('|'), 1, 1);
            defaults << r.section(QLatin1Char('|'), 7, 7);
        }
        QCOMPARE(names, banks);
        QCOMPARE(numbers, (QStringList{"1", "2", "3"}).mid(0, banks.size()));
        QCOMPARE(defaults.count(QStringLiteral("Y")), 1);
        QCOMPARE(gridColumn(*form, 0), banks);
        // AND the old rows were flushed away before the new ones were written, and those flushed
        QStringList sequence;
        if (yes)
            sequence << "delete fbt_bankdet" << "flush" << QStringList(banks.size(), QStringLiteral("insert fbt_bankdet")) << "flush";
        QCOMPARE(recorder.sequence(), sequence);
    }

    void micrLengthOnLeavingTheBox_data()
    {
        QTest::addColumn<QString>("micr");
        QTest::addColumn<bool>("refused");
        QTest::newRow("eight characters are refused") << "40024001" << true;
        QTest::newRow("empty is accepted") << "" << false;
        QTest::newRow("nine characters are accepted") << "400240015" << false;
    }
    void micrLengthOnLeavingTheBox()
    {
        QFETCH(QString, micr);
        QFETCH(bool, refused);
        // GIVEN an account being added, the MICR typed
        auto form = open();
        click(*form, "cmdadd");
        QLineEdit* box = form->txtfields().at(2);
        box->setFocus();
        QTest::keyClicks(box, micr);
        // WHEN the box is left with Tab
        QTest::keyClick(box, Qt::Key_Tab);
        QCoreApplication::processEvents();
        // THEN a wrong length is refused and the focus comes back; otherwise the focus moves on
        QCOMPARE(prompts->texts(), refused ? QStringList{QStringLiteral("MICR should be 9 Digit Number.")} : QStringList());
        QCOMPARE(QApplication::focusWidget(), refused ? static_cast<QWidget*>(box) : child<QComboBox>(*form, "Combo1"));
    }

    void updateNeedsABankName()
    {
        // GIVEN an account typed without a bank name
        auto form = open();
        click(*form, "cmdadd");
        typeAccount(*form, QStringLiteral("   "));
        // WHEN it is updated
        click(*form, "cmdupdate");
        // THEN it is refused, the focus is on the name, nothing is written and the entry goes on
        QCOMPARE(prompts->texts(), QStringList{QStringLiteral("Please Enter Bank Name.")});
        QCOMPARE(prompts->asked().front().icon, Prompter::Icon::Information);
        QCOMPARE(QApplication::focusWidget(), form->txtfields().at(0));
        QCOMPARE(stored(), QStringList());
        QVERIFY(form->editing());
    }

    void typingIsUpperCasedAndEnterMovesOn()
    {
        // GIVEN an account being added, the focus in the bank name
        auto form = open();
        click(*form, "cmdadd");
        QLineEdit* name = form->txtfields().at(0);
        QCOMPARE(QApplication::focusWidget(), name);
        // WHEN a name is typed in lower case with a quote, and Enter pressed
        QTest::keyClicks(name, QStringLiteral("state bank's"));
        QTest::keyClick(name, Qt::Key_Return);
        // THEN it reads in capitals without the quote, and the focus is in the address
        QCOMPARE(name->text(), QStringLiteral("STATE BANKS"));
        QCOMPARE(QApplication::focusWidget(), form->txtfields().at(1));
        QVERIFY(form->isVisible());
    }

    void escape_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::newRow("No goes on editing") << false;
        QTest::newRow("Yes cancels the entry") << true;
    }
    void escape()
    {
        QFETCH(bool, yes);
        // GIVEN an account being added
        auto form = open();
        click(*form, "cmdadd");
        typeAccount(*form, QStringLiteral("NOT KEPT"));
        // WHEN Escape is pressed and the question answered
        prompts->then(yes ? Prompter::Answer::Yes : Prompter::Answer::No);
        QTest::keyClick(form->txtfields().at(0), Qt::Key_Escape);
        // THEN the question defaults to No; Yes ends the entry without writing, No keeps it
        QCOMPARE(prompts->texts(), QStringList{QStringLiteral("Do you want to Cancel this Entry?")});
        QCOMPARE(prompts->asked().front().defaultAnswer, Prompter::Answer::No);
        QCOMPARE(form->editing(), !yes);
        QVERIFY(form->isVisible());
        QCOMPARE(form->txtfields().at(0)->text(), yes ? QString() : QStringLiteral("NOT KEPT"));
        QCOMPARE(stored(), QStringList());
        // AND Escape while viewing closes the screen without a question
        if (yes) {
            QTest::keyClick(grid(*form), Qt::Key_Escape);
            QVERIFY(!form->isVisible());
            QCOMPARE(prompts->texts().size(), 1);
        }
    }

    void micrLookup_data()
    {
        QTest::addColumn<QStringList>("answer");
        QTest::addColumn<QStringList>("fields");
        QTest::newRow("a choice fills name, address and the nine digits")
            << QStringList{"HDFC BANK LTD", "KAMALA MILLS, LOWER PAREL", "400", "240", "015"}
            << QStringList{"HDFC BANK LTD", "KAMALA MILLS, LOWER PAREL", "400240015"};
        QTest::newRow("no choice changes nothing") << QStringList{"", "", "", "", ""} << QStringList{"HDFC", "", ""};
    }
    void micrLookup()
    {
        QFETCH(QStringList, answer);
        QFETCH(QStringList, fields);
        // GIVEN a bank information component answering so, and a bank name typed with blanks
        FakeBankInfo::install(answer);
        auto form = open();
        click(*form, "cmdadd");
        form->txtfields().at(0)->setText(QStringLiteral(" HDFC "));
        // WHEN the MICR lookup is clicked
        click(*form, "cmdmicr");
        // THEN the component was asked with the trimmed name, and the fields show its answer
        QCOMPARE(FakeBankInfo::script().calls, QStringList{QStringLiteral("GetMICR(HDFC)")});
        QCOMPARE(FakeBankInfo::script().logFile, QStringLiteral("FBTLogger.log"));
        const QStringList shown{form->txtfields().at(0)->text().trimmed(), form->txtfields().at(1)->text(),
                                form->txtfields().at(2)->text()};
        QCOMPARE(shown, fields);
    }

    void saveFailuresAreLoggedAndTheScreenGoesOn()
    {
        // GIVEN an account typed, and the table gone
        auto form = open();
        click(*form, "cmdadd");
        typeAccount(*form, QStringLiteral("LOST BANK"));
        (*db)->execute(QStringLiteral("drop table FBT_BankDet"));
        // WHEN it is updated
        click(*form, "cmdupdate");
        // THEN the delete and the insert are logged under SAVEGRID, and the screen is viewing again
        QCOMPARE(logContexts(), (QStringList{"frmbankdet\tSAVEGRID", "frmbankdet\tSAVEGRID"}));
        QVERIFY(!form->editing());
        QCOMPARE(grid(*form)->rowCount(), 1);
    }

    void updateLeavesTheMicrToItsBox()
    {
        // GIVEN a stored account whose MICR has eight characters
        insertAccount(**db, kClient, kYear, 1,
                      {"BANK 1", "ADDRESS 1", "40024001", "SAVINGS", "ACC1", "N", "Y"});
        auto form = open();
        // WHEN it is modified without visiting the MICR box and updated
        click(*form, "cmdmodify");
        form->txtfields().at(3)->setText(QStringLiteral("ACC9"));
        click(*form, "cmdupdate");
        // THEN it is saved as it is, without a message
        QVERIFY(prompts->texts().isEmpty());
        QVERIFY(!form->editing());
        QCOMPARE(stored(), QStringList{QStringLiteral("1|BANK 1|ADDRESS 1|40024001|SAVINGS|ACC9|N|Y")});
    }

    void updateClickedFromAShortMicrAsksOnce()
    {
        // GIVEN an account being added, the focus in the MICR box with four digits
        auto form = open();
        click(*form, "cmdadd");
        typeAccount(*form, QStringLiteral("HDFC"));
        QLineEdit* micr = form->txtfields().at(2);
        micr->setFocus();
        QTest::keyClicks(micr, QStringLiteral("1234"));
        // WHEN Update is clicked with the mouse, and the events are handled
        click(*form, "cmdupdate");
        QCoreApplication::processEvents();
        // THEN leaving the box is refused once, nothing is written and the entry goes on in the box
        QCOMPARE(prompts->texts(), QStringList{QStringLiteral("MICR should be 9 Digit Number.")});
        QCOMPARE(stored(), QStringList());
        QVERIFY(form->editing());
        QCOMPARE(QApplication::focusWidget(), static_cast<QWidget*>(micr));
    }

    void closeButton_data()
    {
        QTest::addColumn<bool>("editing");
        QTest::addColumn<QString>("bank");
        QTest::addColumn<int>("answer"); // Prompter::Answer
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<bool>("staysOpen");
        QTest::addColumn<QStringList>("rows");

        const QStringList question{QStringLiteral("Do you want to Save?")};
        const QString saved = QStringLiteral("1|HDFC|FORT, MUMBAI||CURRENT|00991|Y|Y");
        QTest::newRow("viewing: closes without a question") << false << "" << 0 << QStringList() << false << QStringList();
        QTest::newRow("entry, Yes: saved and closed") << true << "HDFC" << int(Prompter::Answer::Yes) << question << false
                                                      << QStringList{saved};
        QTest::newRow("entry, No: closed, nothing written") << true << "HDFC" << int(Prompter::Answer::No) << question << false
                                                            << QStringList();
        QTest::newRow("entry, Cancel: the entry goes on") << true << "HDFC" << int(Prompter::Answer::Cancel) << question << true
                                                          << QStringList();
        QTest::newRow("entry without a bank name, Yes: refused, stays")
            << true << "" << int(Prompter::Answer::Yes)
            << QStringList{QStringLiteral("Do you want to Save?"), QStringLiteral("Please Enter Bank Name.")} << true << QStringList();
    }
    void closeButton()
    {
        QFETCH(bool, editing);
        QFETCH(QString, bank);
        QFETCH(int, answer);
        QFETCH(QStringList, messages);
        QFETCH(bool, staysOpen);
        QFETCH(QStringList, rows);
        // GIVEN the screen, an account typed or only looked at
        auto form = open();
        if (editing) {
            click(*form, "cmdadd");
            typeAccount(*form, bank);
        }
        if (!messages.isEmpty())
            prompts->then(Prompter::Answer(answer));
        // WHEN the window's close button is used
        form->close();
        // THEN only an open entry is asked about, and the answer decides
        QCOMPARE(prompts->texts(), messages);
        if (!messages.isEmpty())
            QCOMPARE(prompts->asked().front().buttons, Prompter::Buttons::YesNoCancel);
        QCOMPARE(form->isVisible(), staysOpen);
        QCOMPARE(form->editing(), staysOpen);
        QCOMPARE(stored(), rows);
    }

    void eachCellIsReadOnItsOwn()
    {
        // GIVEN two accounts in a table that has lost its last column
        seed(kYear, 2, 1);
        (*db)->execute(QStringLiteral("alter table FBT_BankDet drop column DefAcc"));
        // WHEN the screen loads
        auto form = open();
        // THEN each row's missing cell is logged, and every other cell of both rows is shown
        QCOMPARE(logContexts(), (QStringList{"frmbankdet\tLOADGRID", "frmbankdet\tLOADGRID"}));
        QCOMPARE(gridColumn(*form, 0), (QStringList{"BANK 1", "BANK 2"}));
        QCOMPARE(gridColumn(*form, 5), (QStringList{"N", "N"}));
        QCOMPARE(gridColumn(*form, 6), (QStringList{"", ""}));
        (*db)->execute(QStringLiteral("drop table FBT_BankDet"));
    }

    void showBankDetIsModal()
    {
        // GIVEN an account, and a user who reads the grid and leaves with Back
        seed(kYear, 1, 1);
        QStringList seen;
        QTimer::singleShot(0, this, [&] {
            QWidget* modal = QApplication::activeModalWidget();
            QVERIFY(modal);
            seen << modal->objectName() << QString::number(child<QTableWidget>(*modal, "vsf1")->rowCount());
            QTest::mouseClick(child<QPushButton>(*modal, "cmdback"), Qt::LeftButton);
        });
        // WHEN the additional information screens' entry is called
        showBankDet(nullptr);
        // THEN it showed frmbankdet for the context's client and year and returned once closed
        QCOMPARE(seen, (QStringList{"frmbankdet", "1"}));
    }
};

CORVANE_TEST_CLASS(BankAccountsScreenTest)
#include "frmbankdettest.moc"
