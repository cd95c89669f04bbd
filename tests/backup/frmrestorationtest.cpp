#include "component/clsmain.h"
#include "component/components.h"
#include "core/modbase.h"
#include "screens/backup/frmrestoration.h"
#include "screens/backup/restorecandidates.h"
#include "support/formdriver.h"
#include "support/prompts.h"
#include "support/testdatabase.h"
#include "support/testmain.h"
#include "restoretestsupport.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTableWidget>
#include <QTimer>
#include <QtTest>

using namespace corvane;
using namespace corvane::test;

namespace {

const QDate kToday(2026, 3, 5);

// Chooses "Other" in a directory list and types the directory.
void chooseOther(QWidget& form, const char* combo, const char* box, const QString& directory)
{
    auto* list = child<QComboBox>(form, combo);
    list->setCurrentIndex(list->count() - 1);
    emit list->activated(list->currentIndex());
    child<QLineEdit>(form, box)->setText(directory);
}

} // namespace

// The restoration screen, driven like a user would.
class FrmRestorationTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db_;
    std::unique_ptr<RestoreArea> area_;
    std::shared_ptr<HookedPrompter> prompts_;
    std::shared_ptr<ScriptedChooser> chooser_;
    QString mysql_, app_, archive_;

    QString at(const QString& relative) const { return area_->at(relative); }
    QString extraction() const { return at("tmp/FBT05-Mar-26"); }

    std::unique_ptr<frmrestoration> open() { return openActive<frmrestoration>(); }
    // The first page filled in for the test's archive and folders.
    void fillIn(QWidget& form)
    {
        chooseOther(form, "cbomysql", "txtmysql", mysql_);
        chooseOther(form, "cbodatadir", "txtdatadir", app_);
        child<QLineEdit>(form, "txtbkfl")->setText(archive_);
    }
    std::unique_ptr<frmrestoration> openReady()
    {
        auto form = open();
        fillIn(*form);
        return form;
    }
    int page(QWidget& form) { return child<QStackedWidget>(form, "stkpages")->currentIndex(); }

private slots:
    void initTestCase()
    {
        registerDefaultComponents();
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
        db_ = std::make_unique<TestDatabase>("frmrestoration");
    }
    void cleanupTestCase() { db_.reset(); }

    void init()
    {
        db_->startAfresh({});
        area_ = std::make_unique<RestoreArea>();
        mysql_ = area_->mysql;
        app_ = area_->app;
        archive_ = area_->archive;
        modbase().clock = [] { return QDateTime(kToday, QTime(9, 30)); };
        modbase().vTmpPath = area_->tmp + "/";
        modbase().restorationFlag = 0;
        prompts_ = installPrompter<HookedPrompter>();
        chooser_ = installChooser();
    }

    void opensOnTheChoicesWithTheDetectedDirectories()
    {
        // GIVEN the run's server and an application folder without the program
        // WHEN the screen opens
        auto form = open();
        // THEN the server's data directory is chosen and fixed; the data directory is "Other" with the application path
        QCOMPARE(page(*form), 0);
        const QString datadir = db_->scalar("SELECT @@datadir");
        auto* mysql = child<QComboBox>(*form, "cbomysql");
        QCOMPARE(child<QLineEdit>(*form, "txtmysql")->text(), datadir);
        QVERIFY(backup::samePlace(mysql->currentText(), datadir));
        QCOMPARE(mysql->itemText(mysql->count() - 1), QString("Other"));
        QVERIFY(!child<QLineEdit>(*form, "txtmysql")->isEnabled());
        QCOMPARE(child<QComboBox>(*form, "cbodatadir")->currentText(), QString("Other"));
        QCOMPARE(child<QLineEdit>(*form, "txtdatadir")->text(), db_->appPath());
        QVERIFY(child<QLineEdit>(*form, "txtdatadir")->isEnabled());
        // WHEN the user switches from the zip file to the manual folders THEN their boxes open, the file's closes
        QVERIFY(!child<QLineEdit>(*form, "txtbk_0")->isEnabled());
        child<QRadioButton>(*form, "Option1_1")->click();
        QVERIFY(!child<QLineEdit>(*form, "txtbkfl")->isEnabled());
        for (const char* name : {"txtbk_0", "txtbk_1"})
            QVERIFY2(child<QWidget>(*form, name)->isEnabled(), name);
        // WHEN the user picks a listed MySQL directory again THEN its box closes
        mysql->setCurrentIndex(0);
        emit mysql->activated(0);
        QVERIFY(!child<QLineEdit>(*form, "txtmysql")->isEnabled());
    }

    void browseButtonsFillTheirBoxes()
    {
        auto form = openReady();
        // WHEN the user picks a backup file and then cancels a second time
        chooser_->then(at("picked.ZIP")).then(QString());
        click(*form, "cmdbkfl");
        QCOMPARE(child<QLineEdit>(*form, "txtbkfl")->text(), at("picked.ZIP"));
        click(*form, "cmdbkfl");
        QCOMPARE(child<QLineEdit>(*form, "txtbkfl")->text(), at("picked.ZIP"));
        QCOMPARE(chooser_->titles(), (QStringList{"Select Backup File", "Select Backup File"}));
        // AND a folder for the MySQL directory ("Other" is chosen)
        chooser_->then(at("elsewhere"));
        click(*form, "cmdmysql");
        QCOMPARE(child<QLineEdit>(*form, "txtmysql")->text(), at("elsewhere"));
    }

    void refusedProceedPutsTheCursorInTheField_data()
    {
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("message");
        QTest::newRow("no backup file") << "txtbkfl" << "" << "Please Select a Backup File.";
        QTest::newRow("no MySQL directory") << "txtmysql" << "" << "Please Specify MySql Directory.";
        QTest::newRow("data directory without FBT") << "txtdatadir" << "MYSQL" << "[MYSQL] not a Valid Data Directory.";
    }
    void refusedProceedPutsTheCursorInTheField()
    {
        QFETCH(QString, box);
        QFETCH(QString, value);
        QFETCH(QString, message);
        auto form = openReady();
        value.replace("MYSQL", mysql_);
        message.replace("MYSQL", mysql_);
        child<QLineEdit>(*form, qPrintable(box))->setText(value);
        click(*form, "cmdproceed");
        QCOMPARE(prompts_->texts(), QStringList{message});
        QCOMPARE(page(*form), 0);
        QCOMPARE(QApplication::focusWidget(), child<QWidget>(*form, qPrintable(box)));
    }

    void proceedListsAndRestoreRestores()
    {
        // GIVEN the first page filled in
        auto form = openReady();
        // WHEN the user proceeds
        click(*form, "cmdproceed");
        // THEN the second page lists the four items of the backup (what they are is the job's own test)
        QCOMPARE(page(*form), 1);
        auto* vsf = child<QTableWidget>(*form, "vsf");
        QCOMPARE(vsf->rowCount(), 4);
        QVERIFY(vsf->item(0, 0)->text().startsWith(extraction()));
        QVERIFY(vsf->item(0, 3)->text().isEmpty());
        QVERIFY(prompts_->texts().isEmpty());

        // WHEN the user restores
        click(*form, "cmdrestore");
        // THEN every row is restored, the bar is full, and the user is told where the old data is
        for (int r = 0; r < 4; ++r)
            QCOMPARE(vsf->item(r, 3)->text(), QString("Restored."));
        auto* bar = child<QProgressBar>(*form, "pg1");
        QCOMPARE(bar->value(), bar->maximum());
        QVERIFY(child<QLabel>(*form, "lblprog")->text().startsWith("Copying "));
        QCOMPARE(prompts_->texts(),
                 QStringList{QString("Data Restored.\nExisting Data has been Kept as Backup in [%1/Restore_05-Mar-26#1].").arg(app_)});
        QCOMPARE(readFile(mysql_ + "/fbt/a.MYD"), QByteArray("new a"));
        QCOMPARE(modbase().restorationFlag, qint16(1));
        // AND the spent list cannot be restored twice; Back returns to the choices
        QVERIFY(!child<QPushButton>(*form, "cmdrestore")->isEnabled());
        click(*form, "cmdback");
        QCOMPARE(page(*form), 0);
        click(*form, "cmdexit");
        QVERIFY(!form->isVisible());
    }

    void ignoredErrorKeepsTheExtractionUntilTheScreenCloses()
    {
        // GIVEN a document's destination that cannot be written
        writeFile(app_ + "/Data", "a file where the folder must be");
        auto form = openReady();
        click(*form, "cmdproceed");
        // WHEN the user ignores the failing step
        prompts_->then(Prompter::Answer::Ignore);
        click(*form, "cmdrestore");
        // THEN its row says so, the others are restored, and the extraction stays until Exit
        auto* vsf = child<QTableWidget>(*form, "vsf");
        QStringList statuses;
        for (int r = 0; r < vsf->rowCount(); ++r)
            statuses << vsf->item(r, 3)->text();
        statuses.sort();
        QCOMPARE(statuses, (QStringList{"Restored.", "Restored.", "Restored.", "Restroing File Error Ignored by User."}));
        QCOMPARE(prompts_->texts().last(),
                 QString("Some Errors Ignored during Restoration. Please Retry or Contact your Vendor."));
        QVERIFY(QFileInfo(extraction()).isDir());
        QTest::keyClick(form.get(), Qt::Key_Escape);
        QVERIFY(!form->isVisible());
        QVERIFY(!QFileInfo::exists(extraction()));
    }

    void restorationReturnsTheFlag_data()
    {
        QTest::addColumn<bool>("restore");
        QTest::newRow("closed without restoring") << false;
        QTest::newRow("restored") << true;
    }
    void restorationReturnsTheFlag()
    {
        QFETCH(bool, restore);
        ClsMain cls;
        modbase().prompter = prompts_;
        modbase().chooser = chooser_;
        modbase().restorationFlag = 7;
        // WHEN the host opens the screen and the user proceeds, perhaps restores, and leaves
        QTimer::singleShot(0, this, [&] {
            auto* form = qobject_cast<frmrestoration*>(QApplication::activeModalWidget());
            QVERIFY(form);
            fillIn(*form);
            click(*form, "cmdproceed");
            if (restore)
                click(*form, "cmdrestore");
            click(*form, "cmdexit");
        });
        const qint16 flag = cls.Restoration();
        // THEN the flag tells whether the data was replaced, and the extraction is gone
        QCOMPARE(flag != 0, restore);
        QVERIFY(!QFileInfo::exists(extraction()));
        QCOMPARE(readFile(mysql_ + "/fbt/a.MYD"), QByteArray(restore ? "new a" : "old a"));
    }
};

CORVANE_TEST_CLASS(FrmRestorationTest)
#include "frmrestorationtest.moc"
