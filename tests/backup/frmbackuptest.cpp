#include "component/components.h"
#include "core/settings.h"
#include "screens/backup/frmbackup.h"
#include "support/formdriver.h"
#include "support/prompts.h"
#include "support/testdatabase.h"
#include "support/testmain.h"
#include "restoretestsupport.h"

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QStandardPaths>
#include <QtTest>

using namespace corvane;
using namespace corvane::test;

// The backup screen, driven like a user would, on the run's server; what goes
// into the archive is the job's own test.
class FrmBackupTest : public QObject {
    Q_OBJECT

    std::unique_ptr<test::TestDatabase> db_;
    std::shared_ptr<ScriptedPrompter> prompts_;
    std::shared_ptr<ScriptedChooser> chooser_;
    QTemporaryDir dest_;
    QTemporaryDir temp_;

    std::unique_ptr<frmbackup> open() { return openActive<frmbackup>(); }

private slots:
    void initTestCase()
    {
        registerDefaultComponents();
        db_ = std::make_unique<test::TestDatabase>(QStringLiteral("frmbackup"));
    }
    void cleanupTestCase() { db_.reset(); }

    void init()
    {
        db_->startAfresh({});
        QFile::remove(db_->appPath() + "/Confg.ini");
        modbase().clock = [] { return QDateTime(kToday, QTime(9, 30)); };
        modbase().vTmpPath = temp_.path() + '/';
        prompts_ = installPrompter();
        chooser_ = installChooser();
    }

    void defaultFolder_data()
    {
        QTest::addColumn<QString>("saved");
        QTest::addColumn<bool>("savedIsUsed");
        QTest::newRow("nothing saved") << QString() << false;
        QTest::newRow("saved folder exists") << "dest" << true;
        QTest::newRow("saved folder is gone") << "/nonexistent/corvane" << false;
    }
    void defaultFolder()
    {
        QFETCH(QString, saved);
        QFETCH(bool, savedIsUsed);
        if (saved == "dest")
            saved = dest_.path();
        if (!saved.isEmpty())
            SaveSettingINI("Settings", "BKDir", saved);
        // GIVEN the saved folder WHEN the screen opens
        auto form = open();
        // THEN the path is the saved folder, else the desktop folder, else home
        const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
        const QString fallback = QFileInfo(desktop).isDir() ? desktop : QDir::homePath();
        QCOMPARE(child<QLineEdit>(*form, "txtpath")->text(), savedIsUsed ? saved : fallback);
    }

    void browseFillsThePath()
    {
        auto form = open();
        auto* path = child<QLineEdit>(*form, "txtpath");
        path->setText("/before");
        // WHEN the user picks a folder THEN it is the path; WHEN he cancels THEN the path stays
        chooser_->then(dest_.path());
        click(*form, "cmdsource");
        QCOMPARE(path->text(), dest_.path());
        click(*form, "cmdsource");
        QCOMPARE(path->text(), dest_.path());
        QCOMPARE(chooser_->titles().size(), 2);
    }

    void refusedPathKeepsTheScreenOpen()
    {
        auto form = open();
        child<QLineEdit>(*form, "txtpath")->clear();
        click(*form, "cmdok");
        QCOMPARE(prompts_->texts(), QStringList{"Please select a path."});
        QVERIFY(child<QGroupBox>(*form, "Frame1")->isVisible()); // the choices, and so the screen, stay
    }

    void backupShowsProgressAndCloses()
    {
        // GIVEN a destination folder
        auto form = open();
        child<QLineEdit>(*form, "txtpath")->setText(dest_.path());
        auto* label = child<QLabel>(*form, "lblcopying");
        QList<int> values;
        QStringList texts;
        bool progressShown = false;
        connect(child<QProgressBar>(*form, "pb1"), &QProgressBar::valueChanged, this, [&](int v) {
            values << v;
            if (texts.isEmpty() || texts.last() != label->text())
                texts << label->text();
            progressShown = progressShown || (child<QGroupBox>(*form, "Frame3")->isVisible()
                                              && !child<QGroupBox>(*form, "Frame1")->isVisible());
        });
        // WHEN the user backs up
        click(*form, "cmdok");
        // THEN the archive is made, the progress advanced per file and per table, and the screen closed
        QCOMPARE(prompts_->texts(), QStringList{"Backup Completed."});
        QVERIFY(progressShown);
        QCOMPARE(form->result(), int(QDialog::Accepted));
        QVERIFY(!form->isVisible());
        const int tables = child<QListWidget>(*form, "lsttables")->count();
        QVERIFY(tables >= 5);
        QVERIFY(!texts.filter(QRegularExpression(QString("^Copying Table .*\\(%1 of %1\\)$").arg(tables))).isEmpty());
        QVERIFY(values.count(1) >= 2); // first file, first table
    }

    void exitAsksFirst_data()
    {
        QTest::addColumn<bool>("escape");
        QTest::newRow("Exit button") << false;
        QTest::newRow("Escape key") << true;
    }
    void exitAsksFirst()
    {
        QFETCH(bool, escape);
        auto form = open();
        prompts_->then(Prompter::Answer::No).then(Prompter::Answer::Yes);
        for (int i = 0; i < 2; ++i) {
            QVERIFY(form->isVisible());
            if (escape)
                QTest::keyClick(form.get(), Qt::Key_Escape);
            else
                click(*form, "cmdexit");
        }
        QVERIFY(!form->isVisible());
        QCOMPARE(prompts_->texts(), (QStringList{"Do you want to exit?", "Do you want to exit?"}));
    }
};

CORVANE_TEST_CLASS(FrmBackupTest)
#include "frmbackuptest.moc"
