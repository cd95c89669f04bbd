#include "hostfixture.h"
#include "widgets.h"

#include "core/errorlog.h"
#include "core/screenreso.h"
#include "ui/screenscaling.h"
#include "host/mainwindow.h"
#include "support/testmain.h"

#include <QAction>
#include <QApplication>
#include <QMenuBar>
#include <QTableView>

using namespace corvane;
using namespace corvane::host;
using namespace corvane::test;

// The main window on the common screen sizes, its search over many clients,
// and what Help → About FBT says.
class WindowFitTest : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { setScreenRoomSource({}); }

    void mainWindowFits_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("1024x768") << QSize(1024, 768);
        QTest::newRow("1920x1080") << QSize(1920, 1080);
    }

    void mainWindowFits()
    {
        QFETCH(QSize, size);
        // GIVEN a screen of that size with a panel and a window frame
        const QRect available(0, 24, size.width(), size.height() - 24);
        const QMargins frame(4, 26, 4, 4);
        setScreenRoomSource([available, frame](const QWidget*) { return ScreenRoom{available, frame}; });
        HostFixture f(QStringLiteral("fit_main"), true, true);
        QVERIFY(f.start());
        // WHEN the main window opens
        MainWindow window(f.cls, *f.session);
        window.show();
        // THEN it lies inside the free area with its frame
        const QRect outer(window.pos(), window.size().grownBy(frame));
        QVERIFY2(available.contains(outer), qPrintable(QStringLiteral("%1,%2 %3x%4").arg(outer.x()).arg(outer.y())
                                                           .arg(outer.width()).arg(outer.height())));
    }

    void searchKeepsTheChosenClientInView()
    {
        // GIVEN the demo clients, one chosen far down a search
        HostFixture f(QStringLiteral("search_view"), true, true);
        QVERIFY(f.start());
        MainWindow window(f.cls, *f.session);
        window.show();
        auto* list = control<QTableView>(&window, QStringLiteral("lstclients"));
        typeInto(&window, QStringLiteral("txtsearch"), QStringLiteral("ltd"));
        QCOMPARE(visibleCodes(&window), (QStringList{"A001", "C003", "F006"}));
        QTest::keyClick(list, Qt::Key_End, Qt::ControlModifier);
        QCOMPARE(window.currentCode(), QStringLiteral("F006"));
        // WHEN the search is widened again
        typeInto(&window, QStringLiteral("txtsearch"), QString());
        // THEN the chosen client stays chosen, in view
        QCOMPARE(window.currentCode(), QStringLiteral("F006"));
        QCOMPARE(visibleCodes(&window).size(), 6);
        const QModelIndex current = list->selectionModel()->selectedRows().value(0);
        QVERIFY(list->viewport()->rect().intersects(list->visualRect(current)));
        // WHEN the search finds nobody
        typeInto(&window, QStringLiteral("txtsearch"), QStringLiteral("nobody at all"));
        // THEN no client is chosen
        QCOMPARE(window.currentCode(), QString());
        QVERIFY(visibleCodes(&window).isEmpty());
    }
};

CORVANE_TEST_CLASS(WindowFitTest)

#include "windowfittest.moc"
