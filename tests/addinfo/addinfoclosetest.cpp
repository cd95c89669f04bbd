#include "core/modbase.h"
#include "core/prompter.h"
#include "db/sqltext.h"
#include "screens/addinfo/frmaddinfo.h"
#include "screens/addinfo/frmaddinfo1.h"
#include "support/prompts.h"
#include "support/testdatabase.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QtTest>

using namespace corvane;
using namespace corvane::test;

Q_DECLARE_METATYPE(Prompter::Answer)

// Closing either edition of the additional information with the window's
// close button, and the title that says whose data it is.
class AddInfoCloseTest : public QObject {
    Q_OBJECT

    std::unique_ptr<test::TestDatabase> db_;
    std::shared_ptr<ScriptedPrompter> prompter_;

    static std::unique_ptr<AddInfoDialog> open(int edition)
    {
        std::unique_ptr<AddInfoDialog> form;
        if (edition == 1)
            form = std::make_unique<FrmAddInfo>();
        else
            form = std::make_unique<FrmAddInfo1>();
        form->show();
        return form;
    }

    static QLineEdit* wardBox(AddInfoDialog& form, int edition)
    {
        return form.findChild<QLineEdit*>(edition == 1 ? QStringLiteral("txtfields_0") : QStringLiteral("txt2_1"));
    }

private slots:
    void initTestCase() { db_ = std::make_unique<test::TestDatabase>(QStringLiteral("addinfoclose")); }
    void cleanupTestCase() { db_.reset(); }

    void init()
    {
        db_->startAfresh({QStringLiteral("FBT_AddInfo"), QStringLiteral("FBT_MiscInf"), QStringLiteral("FBT_Info")});
        modbase().Code = QStringLiteral("C001");
        modbase().TYear = 2007;
        prompter_ = installPrompter();
    }

    void closeButton_data()
    {
        QTest::addColumn<int>("edition");
        QTest::addColumn<bool>("edit");
        QTest::addColumn<bool>("nature");
        QTest::addColumn<Prompter::Answer>("answer");
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<bool>("staysOpen");
        QTest::addColumn<int>("rows");

        const QStringList question{QStringLiteral("Do you want to Save?")};
        const auto none = Prompter::Answer::OK; // not asked
        QTest::newRow("first, only looked: closes without a question") << 1 << false << false << none << QStringList() << false << 0;
        QTest::newRow("first, edited, Yes: saved and closed") << 1 << true << true << Prompter::Answer::Yes << question << false << 1;
        QTest::newRow("first, edited, No: closed, nothing written") << 1 << true << true << Prompter::Answer::No << question << false << 0;
        QTest::newRow("first, edited, Cancel: stays") << 1 << true << true << Prompter::Answer::Cancel << question << true << 0;
        QTest::newRow("first, no nature of business, Yes: refused, stays")
            << 1 << true << false << Prompter::Answer::Yes
            << QStringList{QStringLiteral("Do you want to Save?"), QStringLiteral("Please Select Nature of Business.")} << true << 0;
        QTest::newRow("first, no nature of business, No: the user gets out")
            << 1 << true << false << Prompter::Answer::No << question << false << 0;
        QTest::newRow("second, edited, Yes: saved and closed") << 2 << true << false << Prompter::Answer::Yes << question << false << 1;
    }

    void closeButton()
    {
        QFETCH(int, edition);
        QFETCH(bool, edit);
        QFETCH(bool, nature);
        QFETCH(Prompter::Answer, answer);
        QFETCH(QStringList, messages);
        QFETCH(bool, staysOpen);
        QFETCH(int, rows);

        // GIVEN an open form, edited or only looked at
        auto form = open(edition);
        if (edit)
            wardBox(*form, edition)->setText(QStringLiteral("W 12"));
        if (nature)
            form->findChild<QCheckBox*>(QStringLiteral("chknob_1"))->setChecked(true);
        if (!messages.isEmpty())
            prompter_->then(answer);

        // WHEN the window's close button is used
        form->close();

        // THEN the question is asked only for edits, and the answer decides
        QCOMPARE(prompter_->texts(), messages);
        if (!messages.isEmpty()) {
            QCOMPARE(prompter_->asked().front().buttons, Prompter::Buttons::YesNoCancel);
            QCOMPARE(prompter_->asked().front().icon, Prompter::Icon::Question);
        }
        QCOMPARE(form->isVisible(), staysOpen);
        QCOMPARE(db_->count(QStringLiteral("FBT_AddInfo")), rows);
        if (rows > 0)
            QCOMPARE(db_->scalar(QStringLiteral("select Ward from FBT_AddInfo where code_no='C001' and tyear=2007")),
                     QStringLiteral("W 12"));
        if (edition == 2)
            QCOMPARE(db_->count(QStringLiteral("FBT_MiscInf")), rows);
    }

    void aSavedFormClosesQuietly()
    {
        // GIVEN a form saved with "Save & Exit" after an edit
        auto form = open(1);
        wardBox(*form, 1)->setText(QStringLiteral("W 3"));
        form->findChild<QCheckBox*>(QStringLiteral("chknob_0"))->setChecked(true);
        QMetaObject::invokeMethod(form.get(), "cmdexit_Click");
        QVERIFY(!form->isVisible());
        // WHEN it is closed again (the host's window goes)
        form->close();
        // THEN nothing more is asked
        QVERIFY(prompter_->texts().isEmpty());
        QCOMPARE(db_->count(QStringLiteral("FBT_AddInfo")), 1);
    }

    void titleSaysWhoseDataItIs_data()
    {
        QTest::addColumn<int>("edition");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("year");
        QTest::addColumn<QString>("title");
        QTest::newRow("first edition") << 1 << "SHARMA & CO" << 2008
                                       << QStringLiteral("Additional Information \u2014 C001 SHARMA & CO \u2014 2008-09");
        QTest::newRow("second edition, year before a century") << 2 << "O'NEIL TRADERS" << 2009
                                                               << QStringLiteral("Additional Information \u2014 C001 O'NEIL TRADERS \u2014 2009-10");
        QTest::newRow("a client without a name on record") << 1 << QString() << 2006
                                                           << QStringLiteral("Additional Information \u2014 C001 \u2014 2006-07");
    }

    void titleSaysWhoseDataItIs()
    {
        QFETCH(int, edition);
        QFETCH(QString, name);
        QFETCH(int, year);
        QFETCH(QString, title);
        if (!name.isEmpty())
            db_->connection()->execute(QStringLiteral("insert into FBT_Info (Code_No, Name) values ('C001', %1)").arg(sqlQuote(name)));
        modbase().TYear = qint16(year);
        auto form = open(edition);
        QCOMPARE(form->windowTitle(), title);
        QVERIFY(test::logLines().isEmpty());
    }
};

CORVANE_TEST_CLASS(AddInfoCloseTest)

#include "addinfoclosetest.moc"
