#include "registertestsupport.h"

#include "component/clsmain.h"
#include "screens/register/pending.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QApplication>
#include <QComboBox>
#include <QTimer>

using namespace corvane;
using namespace corvane::test;

// The host's way in: ClsMain::ShowReturn shows the register modally for the context's year.
class ShowReturnTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db;

private slots:
    void initTestCase() { db = std::make_unique<TestDatabase>(QStringLiteral("showreturn")); }
    void cleanupTestCase() { db.reset(); }

    void opensForTheContextYear()
    {
        installPrompter();
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
                year = form->findChild<QComboBox*>(QStringLiteral("cboasyear"))->currentText();
                editable = form->grid2Editable();
                form->reject(); // Escape on the selection frame closes it
            }
        });
        cls.ShowReturn();
        QVERIFY(seen);
        QCOMPARE(year, QStringLiteral("2007-08"));
        QCOMPARE(editable, 2);
    }
};

CORVANE_TEST_CLASS(ShowReturnTest)
#include "showreturntest.moc"
