#include "banktestsupport.h"

#include "screens/bank/frmbankdet.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QRadioButton>
#include <QTableWidget>

using namespace corvane;
using namespace corvane::test;

class BankAccountsScreenTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db;
    std::shared_ptr<ScriptedPrompter> prompts;

    // "SrNo|bank|address|MICR|type|account|ECS|default" for each stored row of the year.
    QStringList stored()
    {
        return values(**db, QStringLiteral("select concat_ws('|', SrNo, BankName, BranchAdd, MICR, AccType, AccNo, ECS, DefAcc) "
                                           "from FBT_BankDet where code_no = '%1' and Yr = %2 order by SrNo")
                                .arg(kClient).arg(kYear));
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

    void init() { prompts = startAfresh(*db, {QStringLiteral("FBT_BankDet")}); }

    void loadShowsTheGridAndTheSelectedRow()
    {
        // GIVEN two accounts, the first the default; WHEN the screen loads
        seedAccounts(**db, kYear, 2, 1);
        auto form = open();
        // THEN the grid has them, the first shown in the entry frame, which is closed
        QCOMPARE(gridColumn(*form, 0), (QStringList{"BANK 1", "BANK 2"}));
        QCOMPARE(form->txtfields().at(0)->text(), QStringLiteral("BANK 1"));
        QVERIFY(child<QCheckBox>(*form, "Check2")->isChecked());
        QVERIFY(child<QRadioButton>(*form, "Option2")->isChecked());
        QCOMPARE(child<QComboBox>(*form, "Combo1")->currentText(), QStringLiteral("SAVINGS"));
        QVERIFY(!form->editing() && !child<QGroupBox>(*form, "Frame2")->isEnabled());
        // WHEN the user moves down the grid with the keyboard, THEN the entry frame follows
        grid(*form)->setFocus();
        QTest::keyClick(grid(*form), Qt::Key_Down);
        QCOMPARE(form->txtfields().at(0)->text(), QStringLiteral("BANK 2"));
        QVERIFY(!child<QCheckBox>(*form, "Check2")->isChecked());
    }

    void entries_data()
    {
        QTest::addColumn<int>("accounts"); // stored before, the last the default; the second is selected
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("answer");   // to Delete's question; -1: not asked
        QTest::addColumn<QStringList>("rows");
        const QString typed = QStringLiteral("HDFC BANK LTD|FORT, MUMBAI|400240015|CURRENT|00991|Y|Y");
        auto seeded = [](int n, const char* isDefault) {
            return QStringLiteral("BANK %1|ADDRESS %1|40024001%1|SAVINGS|ACC%1|N|").arg(n) + QLatin1String(isDefault);
        };
        const int yes = int(Prompter::Answer::Yes), no = int(Prompter::Answer::No);
        QTest::newRow("add to an empty list: the default") << 0 << "cmdadd" << -1 << QStringList{"1|" + typed};
        QTest::newRow("modify the second, default ticked") << 2 << "cmdmodify" << -1 << QStringList{"1|" + seeded(1, "N"), "2|" + typed};
        QTest::newRow("delete the second, Yes") << 3 << "cmddelete" << yes << QStringList{"1|" + seeded(1, "N"), "2|" + seeded(3, "Y")};
        QTest::newRow("delete, No keeps every one")
            << 3 << "cmddelete" << no << QStringList{"1|" + seeded(1, "N"), "2|" + seeded(2, "N"), "3|" + seeded(3, "Y")};
    }
    void entries()
    {
        QFETCH(int, accounts);
        QFETCH(QString, button);
        QFETCH(int, answer);
        QFETCH(QStringList, rows);
        // GIVEN accounts, the second selected; WHEN one is typed after Add or Modify, or Delete is answered
        seedAccounts(**db, kYear, accounts, accounts);
        auto form = open();
        select(*form, accounts > 1 ? 1 : -1);
        if (answer >= 0)
            prompts->then(Prompter::Answer(answer));
        click(*form, button.toLatin1().constData());
        if (button != QLatin1String("cmddelete")) {
            QVERIFY(form->editing());
            QCOMPARE(form->editMode(), qint16(button == QLatin1String("cmdadd") ? -1 : 0));
            typeAccount(*form, QStringLiteral("HDFC BANK LTD"), QStringLiteral("400240015"));
            child<QCheckBox>(*form, "Check2")->setChecked(button == QLatin1String("cmdmodify"));
            click(*form, "cmdupdate");
            QCOMPARE(QApplication::focusWidget(), child<QPushButton>(*form, button));
        }
        // THEN every field is stored in its place, the grid shows the stored banks and defaults, and the entry is over
        QCOMPARE(stored(), rows);
        for (int column : {0, 6}) {
            QStringList cells;
            for (const QString& r : rows)
                cells << r.section(QLatin1Char('|'), column + 1, column + 1);
            QCOMPARE(gridColumn(*form, column), cells);
        }
        QVERIFY(!form->editing());
        QCOMPARE(prompts->texts(), answer < 0 ? QStringList() : QStringList{QStringLiteral("Do you want to delele the selected item?")});
    }

    void micrBox_data()
    {
        QTest::addColumn<QString>("micr");
        QTest::addColumn<QString>("leave"); // Tab, the Update button, or not visited after Modify
        QTest::addColumn<bool>("refused");
        QTest::newRow("eight characters, Tab: refused") << "40024001" << "tab" << true;
        QTest::newRow("empty, Tab: accepted") << "" << "tab" << false;
        QTest::newRow("nine characters, Tab: accepted") << "400240015" << "tab" << false;
        QTest::newRow("four, Update clicked: refused once, nothing written") << "1234" << "update" << true;
        QTest::newRow("eight stored, not visited: saved as it is") << "40024001" << "modify" << false;
    }
    void micrBox()
    {
        QFETCH(QString, micr);
        QFETCH(QString, leave);
        QFETCH(bool, refused);
        // GIVEN an account being added with the MICR typed, or a stored one modified elsewhere
        if (leave == QLatin1String("modify"))
            insertAccount(**db, kClient, kYear, 1, {"BANK 1", "ADDRESS 1", micr, "SAVINGS", "ACC1", "N", "Y"});
        auto form = open();
        QLineEdit* box = form->txtfields().at(2);
        if (leave == QLatin1String("modify")) {
            click(*form, "cmdmodify");
            form->txtfields().at(3)->setText(QStringLiteral("ACC9"));
        } else {
            click(*form, "cmdadd");
            typeAccount(*form, QStringLiteral("HDFC"));
            box->setFocus();
            QTest::keyClicks(box, micr);
        }
        // WHEN the box is left with Tab, or Update is clicked
        if (leave == QLatin1String("tab"))
            QTest::keyClick(box, Qt::Key_Tab);
        else
            click(*form, "cmdupdate");
        QCoreApplication::processEvents();
        // THEN a wrong length is told once and the focus comes back to the box, nothing written;
        // otherwise the focus moves on, or the account is saved
        QCOMPARE(prompts->texts(), refused ? QStringList{QStringLiteral("MICR should be 9 Digit Number.")} : QStringList());
        if (leave == QLatin1String("tab"))
            QCOMPARE(QApplication::focusWidget(), refused ? static_cast<QWidget*>(box) : child<QComboBox>(*form, "Combo1"));
        else
            QCOMPARE(form->editing(), refused);
        if (refused)
            QCOMPARE(QApplication::focusWidget(), static_cast<QWidget*>(box));
        QCOMPARE(stored(), leave == QLatin1String("modify") ? QStringList{"1|BANK 1|ADDRESS 1|40024001|SAVINGS|ACC9|N|Y"} : QStringList());
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
        click(*form, "cmdmicr");
        // THEN the component was asked with the trimmed name, and the fields show its answer
        QVERIFY(FakeBankInfo::script().calls.first().startsWith("InitMe(" + db->appPath() + ", FBTLogger.log, connection"));
        QCOMPARE(FakeBankInfo::script().calls.mid(1), QStringList{QStringLiteral("GetMICR(HDFC)")});
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
        click(*form, "cmdupdate");
        // THEN the delete and the insert are logged under SAVEGRID, and the screen is viewing again
        QCOMPARE(logContexts(), (QStringList{"frmbankdet\tSAVEGRID", "frmbankdet\tSAVEGRID"}));
        QVERIFY(!form->editing());
        QCOMPARE(grid(*form)->rowCount(), 1);
    }

    void leaving_data()
    {
        QTest::addColumn<QString>("way"); // Escape, or the window's close button
        QTest::addColumn<bool>("entry");
        QTest::addColumn<QString>("bank");
        QTest::addColumn<int>("answer"); // Prompter::Answer
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<bool>("visible");
        QTest::addColumn<bool>("editing");
        QTest::addColumn<QStringList>("rows");
        const QStringList save{QStringLiteral("Do you want to Save?")}, cancel{QStringLiteral("Do you want to Cancel this Entry?")};
        const int yes = int(Prompter::Answer::Yes), no = int(Prompter::Answer::No);
        QTest::newRow("close, viewing: no question") << "close" << false << "" << 0 << QStringList() << false << false << QStringList();
        QTest::newRow("close, entry, Yes: saved and closed")
            << "close" << true << "HDFC" << yes << save << false << false << QStringList{"1|HDFC|FORT, MUMBAI||CURRENT|00991|Y|Y"};
        QTest::newRow("close, entry, No: closed, nothing written") << "close" << true << "HDFC" << no << save << false << false << QStringList();
        QTest::newRow("close, entry, Cancel: the entry goes on")
            << "close" << true << "HDFC" << int(Prompter::Answer::Cancel) << save << true << true << QStringList();
        QTest::newRow("close, entry without a bank name, Yes: refused, stays")
            << "close" << true << "" << yes << save + QStringList{QStringLiteral("Please Enter Bank Name.")} << true << true << QStringList();
        QTest::newRow("Escape, viewing: closes, no question") << "escape" << false << "" << 0 << QStringList() << false << false << QStringList();
        QTest::newRow("Escape, entry, No: goes on") << "escape" << true << "HDFC" << no << cancel << true << true << QStringList();
        QTest::newRow("Escape, entry, Yes: cancelled, stays open") << "escape" << true << "HDFC" << yes << cancel << true << false << QStringList();
    }
    void leaving()
    {
        QFETCH(QString, way);
        QFETCH(bool, entry);
        QFETCH(QString, bank);
        QFETCH(int, answer);
        QFETCH(QStringList, messages);
        QFETCH(bool, visible);
        QFETCH(bool, editing);
        QFETCH(QStringList, rows);
        // GIVEN the screen, an account typed or only looked at
        auto form = open();
        if (entry) {
            click(*form, "cmdadd");
            typeAccount(*form, bank);
            form->txtfields().at(3)->setFocus();
        }
        if (!messages.isEmpty())
            prompts->then(Prompter::Answer(answer));
        // WHEN Escape is pressed or the window's close button used, and the question answered
        if (way == QLatin1String("escape"))
            QTest::keyClick(entry ? static_cast<QWidget*>(form->txtfields().at(0)) : grid(*form), Qt::Key_Escape);
        else
            form->close();
        // THEN only an open entry is asked about (Escape's question defaults to No), and the answer decides
        QCOMPARE(prompts->texts(), messages);
        if (!messages.isEmpty() && way == QLatin1String("escape"))
            QCOMPARE(prompts->asked().front().defaultAnswer, Prompter::Answer::No);
        else if (!messages.isEmpty())
            QCOMPARE(prompts->asked().front().buttons, Prompter::Buttons::YesNoCancel);
        if (messages.size() == 2) // the missing name: the entry goes on there
            QCOMPARE(QApplication::focusWidget(), form->txtfields().at(0));
        QCOMPARE(form->isVisible(), visible);
        QCOMPARE(form->editing(), editing);
        if (entry && visible)
            QCOMPARE(form->txtfields().at(0)->text(), editing ? bank : QString());
        QCOMPARE(stored(), rows);
    }

    void eachCellIsReadOnItsOwn()
    {
        // GIVEN two accounts in a table that has lost its last column
        seedAccounts(**db, kYear, 2, 1);
        (*db)->execute(QStringLiteral("alter table FBT_BankDet drop column DefAcc"));
        auto form = open();
        // THEN each row's missing cell is logged, and every other cell of both rows is shown
        QCOMPARE(logContexts(), (QStringList{"frmbankdet\tLOADGRID", "frmbankdet\tLOADGRID"}));
        QCOMPARE(gridColumn(*form, 0), (QStringList{"BANK 1", "BANK 2"}));
        QCOMPARE(gridColumn(*form, 5), (QStringList{"N", "N"}));
        QCOMPARE(gridColumn(*form, 6), (QStringList{"", ""}));
        (*db)->execute(QStringLiteral("drop table FBT_BankDet"));
    }
};

CORVANE_TEST_CLASS(BankAccountsScreenTest)
#include "frmbankdettest.moc"
