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
#include <QRegularExpression>
#include <QScopeGuard>
#include <QStackedWidget>
#include <QTableWidget>
#include <QTimer>
#include <QtTest>

using namespace corvane;
using namespace corvane::test;

namespace {

// Chooses "Other" in a directory list and types the directory.
void chooseOther(QWidget& form, const char* combo, const char* box, const QString& directory)
{
    auto* list = child<QComboBox>(form, combo);
    list->setCurrentIndex(list->count() - 1);
    emit list->activated(list->currentIndex());
    child<QLineEdit>(form, box)->setText(directory);
}

int page(QWidget& form)
{
    return child<QStackedWidget>(form, "stkpages")->currentIndex();
}

// A column of the list of rows: 0 the source, 3 the status.
QStringList column(QWidget& form, int c)
{
    auto* vsf = child<QTableWidget>(form, "vsf");
    QStringList out;
    for (int r = 0; r < vsf->rowCount(); ++r)
        out << vsf->item(r, c)->text();
    return out;
}

} // namespace

// The restoration screen, driven like a user would; what the job lists and
// restores is the job's own test.
class FrmRestorationTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db_;
    std::unique_ptr<RestoreArea> area_;
    std::shared_ptr<HookedPrompter> prompts_;
    std::shared_ptr<ScriptedChooser> chooser_;

    QString extraction() const { return area_->at("tmp/FBT05-Mar-26"); }

    // The first page filled in for the test's archive and folders.
    void fillIn(QWidget& form)
    {
        chooseOther(form, "cbomysql", "txtmysql", area_->mysql);
        chooseOther(form, "cbodatadir", "txtdatadir", area_->app);
        child<QLineEdit>(form, "txtbkfl")->setText(area_->archive);
    }
    std::unique_ptr<frmrestoration> openReady()
    {
        auto form = openActive<frmrestoration>();
        fillIn(*form);
        return form;
    }

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
        auto form = openActive<frmrestoration>();
        // THEN the server's data directory is chosen and fixed; the data directory is "Other" with the application path
        QCOMPARE(page(*form), 0);
        const QString datadir = db_->scalar("SELECT @@datadir");
        auto* mysql = child<QComboBox>(*form, "cbomysql");
        QCOMPARE(child<QLineEdit>(*form, "txtmysql")->text(), datadir);
        QVERIFY(backup::samePlace(mysql->currentText(), datadir));
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
        chooser_->then(area_->at("picked.ZIP")).then(QString());
        click(*form, "cmdbkfl");
        QCOMPARE(child<QLineEdit>(*form, "txtbkfl")->text(), area_->at("picked.ZIP"));
        click(*form, "cmdbkfl");
        QCOMPARE(child<QLineEdit>(*form, "txtbkfl")->text(), area_->at("picked.ZIP"));
        // AND a folder for the MySQL directory ("Other" is chosen)
        chooser_->then(area_->at("elsewhere"));
        click(*form, "cmdmysql");
        QCOMPARE(child<QLineEdit>(*form, "txtmysql")->text(), area_->at("elsewhere"));
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
        child<QLineEdit>(*form, qPrintable(box))->setText(value.replace("MYSQL", area_->mysql));
        click(*form, "cmdproceed");
        QCOMPARE(prompts_->texts(), QStringList{message.replace("MYSQL", area_->mysql)});
        QCOMPARE(page(*form), 0);
        QCOMPARE(QApplication::focusWidget(), child<QWidget>(*form, qPrintable(box)));
    }

    void ignoredErrorKeepsTheExtractionUntilTheScreenCloses()
    {
        // GIVEN the documents' folder that cannot be written
        writeFile(area_->app + "/Data", "a file where the folder must be");
        auto form = openReady();
        click(*form, "cmdproceed");
        // WHEN the user ignores the failing steps
        prompts_->then(Prompter::Answer::Ignore).then(Prompter::Answer::Ignore);
        click(*form, "cmdrestore");
        // THEN their rows say so, and the extraction stays until the screen closes
        QCOMPARE(column(*form, 3).count("Restroing File Error Ignored by User."), 2);
        QVERIFY(QFileInfo(extraction()).isDir());
        QTest::keyClick(form.get(), Qt::Key_Escape);
        QVERIFY(!form->isVisible());
        QVERIFY(!QFileInfo::exists(extraction()));
    }

    // The host opens the screen, the user restores there, and the host learns from its flag that the data was replaced.
    void restorationFromTheHostReturnsTheFlag()
    {
        ClsMain cls;
        modbase().prompter = prompts_;
        modbase().chooser = chooser_;
        QTimer::singleShot(0, this, [&] {
            auto* form = qobject_cast<frmrestoration*>(QApplication::activeModalWidget());
            QVERIFY(form);
            const auto leave = qScopeGuard([form] { click(*form, "cmdexit"); });
            fillIn(*form);
            // WHEN the user proceeds THEN the second page lists the rows of the backup from the extraction, none restored yet
            click(*form, "cmdproceed");
            QCOMPARE(page(*form), 1);
            QCOMPARE(column(*form, 0).filter(QRegularExpression("^" + QRegularExpression::escape(extraction()))).size(), 5);
            QCOMPARE(column(*form, 3), QStringList(5, QString()));
            // WHEN the user restores THEN every row is restored and the bar is full
            click(*form, "cmdrestore");
            QCOMPARE(column(*form, 3), QStringList(5, "Restored."));
            auto* bar = child<QProgressBar>(*form, "pg1");
            QCOMPARE(bar->value(), bar->maximum());
            QVERIFY(child<QLabel>(*form, "lblprog")->text().startsWith("Copying "));
            // AND the spent list cannot be restored twice; Back returns to the choices
            QVERIFY(!child<QPushButton>(*form, "cmdrestore")->isEnabled());
            click(*form, "cmdback");
            QCOMPARE(page(*form), 0);
        });
        QCOMPARE(cls.Restoration(), qint16(1));
    }
};

CORVANE_TEST_CLASS(FrmRestorationTest)
#include "frmrestorationtest.moc"
