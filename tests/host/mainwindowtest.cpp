#include "hostfixture.h"
#include "widgets.h"

#include "host/mainwindow.h"
#include "ui/screenscaling.h"
#include "support/testmain.h"

#include <QLabel>
#include <QApplication>
#include <QDialog>
#include <QScopeGuard>

using namespace corvane;
using namespace corvane::host;
using namespace corvane::test;

namespace {

struct Call {
    MainWindow::Member member;
    QString code;
    int year;
};

// Records the members the window calls instead of showing their screens.
struct Recorder {
    QList<Call> calls;
    qint16 restored = 0;
    std::function<void()> duringRestoration;

    Recorder(MainWindow& window, ClsMain& cls)
    {
        window.setInvoker([this, &cls](MainWindow::Member m) -> qint16 {
            calls.push_back({m, cls.Code(), cls.TYear()});
            if (m == MainWindow::Member::Restoration) {
                if (duringRestoration)
                    duringRestoration();
                return restored;
            }
            return 0;
        });
    }
};

} // namespace

// The main window: client list, search, year, the way to every screen, and its fit on the screen.
class MainWindowTest : public QObject {
    Q_OBJECT

private slots:
    void searchFindsByCodeOrName_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QStringList>("shown");
        QTest::newRow("nothing typed") << "" << QStringList{"A001", "B002", "C003", "D004", "E005", "F006"};
        QTest::newRow("start of a code") << "d0" << QStringList{"D004"};
        QTest::newRow("word in several names") << "LTD" << QStringList{"A001", "C003", "F006"};
        QTest::newRow("code and name") << "f" << QStringList{"C003", "F006"};
        QTest::newRow("blanks around") << "  chennai " << QStringList{"C003"};
        QTest::newRow("no match") << "xyz" << QStringList{};
    }

    void searchFindsByCodeOrName()
    {
        QFETCH(QString, typed);
        QFETCH(QStringList, shown);
        // GIVEN the demo clients in the main window
        HostFixture f(QStringLiteral("mw_search"), true, true);
        QVERIFY(f.session->start());
        MainWindow window(f.cls, *f.session);
        // WHEN text is typed into the search box
        QTest::keyClicks(child<QLineEdit>(window, "txtsearch"), typed);
        // THEN only the clients it finds are listed, the first of them chosen
        QCOMPARE(visibleCodes(window), shown);
        const QString first = shown.value(0);
        QCOMPARE(window.currentCode(), first);
        QCOMPARE(f.cls.Code(), first);
        QCOMPARE(child<QLabel>(window, "lblclient")->text().contains(first.isEmpty() ? "No client chosen" : first), true);
    }

    void keysInTheSearchBoxMoveAndOpen()
    {
        // GIVEN the clients whose names hold LTD
        HostFixture f(QStringLiteral("mw_keys"), true, true);
        QVERIFY(f.session->start());
        MainWindow window(f.cls, *f.session);
        window.resize(window.minimumSize()); // a short list, so that the chosen client can be out of view
        window.show();
        Recorder recorder(window, f.cls);
        auto* search = child<QLineEdit>(window, "txtsearch");
        QTest::keyClicks(search, "ltd");
        // WHEN Down is pressed twice and then Enter, all in the search box
        QTest::keyClick(search, Qt::Key_Down);
        QTest::keyClick(search, Qt::Key_Down);
        QTest::keyClick(search, Qt::Key_Return);
        // THEN the third client found is chosen and its additional information opened
        QCOMPARE(window.currentCode(), QStringLiteral("F006"));
        QCOMPARE(recorder.calls.size(), 1);
        QCOMPARE(recorder.calls.first().member, MainWindow::Member::ShowAddInfo);
        QCOMPARE(recorder.calls.first().code, QStringLiteral("F006"));
        // WHEN the search is widened again THEN the chosen client stays chosen, in view
        typeInto(window, QStringLiteral("txtsearch"), QString());
        QCOMPARE(window.currentCode(), QStringLiteral("F006"));
        auto* list = child<QTableView>(window, "lstclients");
        const QModelIndex current = list->selectionModel()->selectedRows().value(0);
        QVERIFY(list->viewport()->rect().intersects(list->visualRect(current)));
        // WHEN Enter is pressed in the list on another client
        QTest::keyClick(list, Qt::Key_Up);
        QTest::keyClick(list, Qt::Key_Return);
        // THEN that client's additional information opens
        QCOMPARE(recorder.calls.size(), 2);
        QCOMPARE(recorder.calls.last().member, MainWindow::Member::ShowAddInfo);
        QCOMPARE(recorder.calls.last().code, QStringLiteral("E005"));
    }

    void deleteKeyDeletesTextInTheSearchBoxAndClientsInTheList()
    {
        // GIVEN the demo clients in the active window, a word in the search box
        HostFixture f(QStringLiteral("mw_delkey"), true, true);
        QVERIFY(f.session->start());
        MainWindow window(f.cls, *f.session);
        showActive(window);
        auto* search = child<QLineEdit>(window, "txtsearch");
        search->setFocus();
        QTest::keyClicks(search, "ltd");
        QTest::keyClick(search, Qt::Key_Home);
        // WHEN Delete is pressed in the search box
        QTest::keyClick(search, Qt::Key_Delete);
        // THEN a letter goes, and nobody is asked about deleting a client
        QCOMPARE(search->text(), QStringLiteral("td"));
        QCOMPARE(f.answers->texts(), QStringList());
        // WHEN Delete is pressed in the list
        auto* list = child<QTableView>(window, "lstclients");
        list->setFocus();
        f.answers->then(Prompter::Answer::No);
        QTest::keyClick(list, Qt::Key_Delete);
        // THEN the deletion of the chosen client is asked for
        QCOMPARE(f.answers->texts().size(), 1);
        QVERIFY(f.answers->texts().first().startsWith("Delete the client " + window.currentCode()));
    }

    void yearChooserSetsTheYear()
    {
        // GIVEN the demo clients, whose latest year is 2008, on 21 November 2009
        HostFixture f(QStringLiteral("mw_year"), true, true);
        QVERIFY(f.session->start());
        auto window = std::make_unique<MainWindow>(f.cls, *f.session);
        auto* years = child<QComboBox>(*window, "cboyear");
        QStringList offered;
        for (int i = 0; i < years->count(); ++i)
            offered << years->itemText(i);
        // THEN the years run from 2006-07 to the year in progress, the latest with data chosen
        QCOMPARE(offered, (QStringList{"2006-07", "2007-08", "2008-09", "2009-10", "2010-11"}));
        QCOMPARE(years->currentText(), QStringLiteral("2008-09"));
        // WHEN 2007-08 is chosen
        years->setCurrentIndex(years->findText("2007-08"));
        // THEN the component works on 2007, and the status bar says so
        QCOMPARE(int(f.cls.TYear()), 2007);
        QCOMPARE(child<QLabel>(*window, "lblyear")->text(), QStringLiteral("Assessment Year: 2007-08"));
        // AND the next start opens on the same client and year
        QTest::keyClicks(child<QLineEdit>(*window, "txtsearch"), "D004");
        window->close();
        window.reset();
        f.cls.setTYear(0);
        f.cls.setCode(QString());
        HostSession next(f.cls, f.db.appPath());
        QVERIFY(next.start());
        QCOMPARE(int(f.cls.TYear()), 2007);
        QCOMPARE(f.cls.Code(), QStringLiteral("D004"));
    }

    void everyMenuItemCallsItsMember_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<MainWindow::Member>("member");
        QTest::newRow("Bank Master") << "mnubankmas" << MainWindow::Member::ShowBankMas;
        QTest::newRow("Additional Information") << "mnuaddinfo" << MainWindow::Member::ShowAddInfo;
        QTest::newRow("Additional Information - New Form") << "mnuaddinfo1" << MainWindow::Member::ShowAddInfo1;
        QTest::newRow("Return Register") << "mnureturn" << MainWindow::Member::ShowReturn;
        QTest::newRow("Client Details") << "mnucldet" << MainWindow::Member::ShowClDet;
        QTest::newRow("Backup") << "mnubackup" << MainWindow::Member::BackUp;
        QTest::newRow("Restore") << "mnurestore" << MainWindow::Member::Restoration;
        QTest::newRow("Check and Repair Data") << "mnurepair" << MainWindow::Member::RepairData;
    }

    void everyMenuItemCallsItsMember()
    {
        QFETCH(QString, action);
        QFETCH(MainWindow::Member, member);
        // GIVEN client C003 and the year 2007-08 chosen
        HostFixture f(QStringLiteral("mw_members"), true, true);
        QVERIFY(f.session->start());
        MainWindow window(f.cls, *f.session);
        Recorder recorder(window, f.cls);
        QTest::keyClicks(child<QLineEdit>(window, "txtsearch"), "C0");
        auto* years = child<QComboBox>(window, "cboyear");
        years->setCurrentIndex(years->findText("2007-08"));
        // WHEN the menu item is chosen
        child<QAction>(window, action)->trigger();
        // THEN its member is called once, with the client and the year in the context
        QCOMPARE(recorder.calls.size(), 1);
        QCOMPARE(recorder.calls.first().member, member);
        QCOMPARE(recorder.calls.first().code, QStringLiteral("C003"));
        QCOMPARE(recorder.calls.first().year, 2007);
    }

    void clientScreensNeedAClient()
    {
        // GIVEN no clients
        HostFixture f(QStringLiteral("mw_noclient"));
        QVERIFY(f.session->start());
        MainWindow window(f.cls, *f.session);
        Recorder recorder(window, f.cls);
        // WHEN the additional information is asked for
        child<QAction>(window, "mnuaddinfo")->trigger();
        child<QAction>(window, "mnuaddinfo1")->trigger();
        // THEN the user is told to choose a client, and no screen opens
        QCOMPARE(f.answers->texts(), (QStringList{"Choose a client first.", "Choose a client first."}));
        QVERIFY(recorder.calls.isEmpty());
    }

    void changedConnectionIsUsedAtOnce()
    {
        // GIVEN the window on a database without clients
        HostFixture f(QStringLiteral("mw_connect"));
        QVERIFY(f.session->start());
        MainWindow window(f.cls, *f.session);
        const QString other = f.db.name() + "_other";
        const auto drop = qScopeGuard([&] { f.db->execute("Drop database if exists " + other); });
        window.setDialogRunner([&](QDialog& dialog) {
            typeInto(dialog, "txtdatabase", other);
            click(dialog, "cmdok");
            return dialog.result();
        });
        f.answers->then(Prompter::Answer::Yes);
        // WHEN Settings / Database Connection names a database that does not exist yet
        child<QAction>(window, "mnuconnection")->trigger();
        // THEN it is created with its tables, the demo data offered and taken, and the window shows it
        QCOMPARE(f.cls.CnnObj()->databaseName(), other);
        QCOMPARE(f.answers->texts().size(), 1);
        QVERIFY(f.answers->texts().first().contains("demo"));
        QCOMPARE(visibleCodes(window).size(), 6);
        QCOMPARE(f.cls.Code(), QStringLiteral("A001"));
        QVERIFY(child<QLabel>(window, "lbldatabase")->text().contains(other));
        QCOMPARE(ConnectionSettings::fromConfig(f.db.appPath()).database, other);
    }

    void restorationReloadsWhenItRestored_data()
    {
        QTest::addColumn<int>("flag");
        QTest::newRow("nothing restored") << 0;
        QTest::newRow("a backup restored") << 1;
    }

    void restorationReloadsWhenItRestored()
    {
        QFETCH(int, flag);
        // GIVEN the demo clients in the window
        HostFixture f(QStringLiteral("mw_restore"), true, true);
        QVERIFY(f.session->start());
        MainWindow window(f.cls, *f.session);
        Recorder recorder(window, f.cls);
        recorder.restored = qint16(flag);
        // a restore that brings a client and a later year with it
        recorder.duringRestoration = [&] {
            f.db->execute("Insert into FBT_Info (Code_No, Name) values ('H008', 'HIMALAYA TRADERS')");
            f.db->execute("Insert into FBT_AddInfo (Code_No, TYear) values ('H008', 2012)");
        };
        const auto before = f.cls.CnnObj();
        // WHEN Restore returns its flag
        child<QAction>(window, "mnurestore")->trigger();
        // THEN after a restore the component works on a new connection; the list and the years are read again
        QCOMPARE(f.cls.CnnObj() != before, flag != 0);
        QVERIFY(f.cls.CnnObj()->isOpen());
        QVERIFY(visibleCodes(window).contains("H008"));
        QCOMPARE(child<QComboBox>(window, "cboyear")->itemText(child<QComboBox>(window, "cboyear")->count() - 1),
                 QStringLiteral("2012-13"));
        QCOMPARE(window.currentCode(), QStringLiteral("A001"));
    }

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
        const auto reset = qScopeGuard([] { setScreenRoomSource({}); });
        HostFixture f(QStringLiteral("fit_main"), true, true);
        QVERIFY(f.session->start());
        // WHEN the main window opens
        MainWindow window(f.cls, *f.session);
        window.show();
        // THEN it lies inside the free area with its frame
        const QRect outer(window.pos(), window.size().grownBy(frame));
        QVERIFY2(available.contains(outer), qPrintable(QStringLiteral("%1,%2 %3x%4").arg(outer.x()).arg(outer.y())
                                                           .arg(outer.width()).arg(outer.height())));
    }
};

CORVANE_TEST_CLASS(MainWindowTest)
#include "mainwindowtest.moc"
