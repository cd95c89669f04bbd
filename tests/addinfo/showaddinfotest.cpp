#include "component/clsmain.h"
#include "core/errorlog.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QTimer>
#include <QtTest>

using namespace corvane;

// The host's two members open the screens modally for the context's client and year.
class ShowAddInfoTest : public QObject {
    Q_OBJECT

    std::unique_ptr<test::TestDatabase> db_;

    // Runs once the modal form is up: records its name, fills it and presses Escape.
    static void answerModalForm(QString& seen, const char* box)
    {
        QTimer::singleShot(0, [&seen, box] {
            QWidget* form = QApplication::activeModalWidget();
            if (!form)
                return;
            seen = form->objectName();
            if (auto* nob = form->findChild<QCheckBox*>(QStringLiteral("chknob_0")))
                nob->setChecked(true);
            auto* ward = form->findChild<QLineEdit*>(QString::fromLatin1(box));
            ward->setText(QStringLiteral("BY HOST"));
            QTest::keyClick(ward, Qt::Key_Escape);
        });
    }

private slots:
    void init()
    {
        // One database per class; each test starts from empty tables and an empty log.
        db_->startAfresh({QStringLiteral("FBT_AddInfo"), QStringLiteral("FBT_MiscInf"), QStringLiteral("FBT_Info")});
        modbase().prompter = std::make_shared<ScriptedPrompter>();
    }
    void initTestCase() { db_ = std::make_unique<test::TestDatabase>(QStringLiteral("showaddinfo")); }
    void cleanupTestCase() { db_.reset(); }

    void eachMemberOpensItsEdition_data()
    {
        QTest::addColumn<bool>("second");
        QTest::addColumn<QString>("form");
        QTest::newRow("ShowAddInfo") << false << "frmaddinfo";
        QTest::newRow("ShowAddInfo1") << true << "frmaddinfo1";
    }

    void eachMemberOpensItsEdition()
    {
        QFETCH(bool, second);
        QFETCH(QString, form);
        // GIVEN the host's client and year
        ClsMain host;
        host.setCode(QStringLiteral("H9"));
        host.setTYear(2009);
        // WHEN the member is called and the user saves with Escape
        QString seen;
        answerModalForm(seen, second ? "txt2_1" : "txtfields_0");
        second ? host.ShowAddInfo1() : host.ShowAddInfo();
        // THEN the call returns after the form closed, and the client's year was written
        QCOMPARE(seen, form);
        QVERIFY(!QApplication::activeModalWidget());
        QCOMPARE(db_->scalar(QStringLiteral("select Ward from FBT_AddInfo where code_no='H9' and tyear=2009")), QStringLiteral("BY HOST"));
        QCOMPARE(db_->count(QStringLiteral("FBT_MiscInf")), second ? 1 : 0);
    }
};

CORVANE_TEST_CLASS(ShowAddInfoTest)

#include "showaddinfotest.moc"
