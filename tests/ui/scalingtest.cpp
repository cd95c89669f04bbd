#include "component/clsmain.h"
#include "core/modbase.h"
#include "core/screenreso.h"
#include "ui/screenscaling.h"
#include "core/settings.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QVBoxLayout>

using namespace corvane;

namespace {

// A screen laid out as the designer leaves it: a layout, and one frame placed by hand.
struct Form {
    QWidget form;
    QLabel* title = new QLabel(QStringLiteral("Bank accounts"));
    QLineEdit* field = new QLineEdit;
    QPushButton* add = new QPushButton(QStringLiteral("&Add"));
    QTableWidget* grid = new QTableWidget(2, 3);
    QTabWidget* tabs = new QTabWidget;
    QProgressBar* progress = new QProgressBar;
    QFrame* line = new QFrame;
    QWidget* manual = new QWidget;
    QPushButton* placed = new QPushButton(QStringLiteral("Placed"), manual);

    Form()
    {
        form.setObjectName(QStringLiteral("frmtest"));
        form.setFont(QFont(QStringLiteral("DejaVu Sans"), 8));
        form.setGeometry(10, 20, 400, 300);
        title->setFont(QFont(QStringLiteral("DejaVu Sans"), 10));
        add->setFixedSize(80, 24);
        grid->setObjectName(QStringLiteral("vsf1"));
        grid->setColumnWidth(0, 100);
        grid->setColumnWidth(1, 50);
        grid->setColumnWidth(2, 80);
        grid->verticalHeader()->setMinimumSectionSize(10);
        grid->verticalHeader()->setDefaultSectionSize(20);
        grid->setRowHeight(0, 20);
        grid->setRowHeight(1, 30);
        auto* page = new QWidget;
        auto* pageLayout = new QVBoxLayout(page);
        pageLayout->addWidget(new QLineEdit);
        tabs->addTab(page, QStringLiteral("General"));
        tabs->setIconSize(QSize(16, 16));
        progress->setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
        line->setFrameShape(QFrame::HLine);
        manual->setMinimumSize(200, 60);
        placed->setGeometry(10, 10, 100, 30);
        auto* layout = new QVBoxLayout(&form);
        for (QWidget* w : {static_cast<QWidget*>(title), static_cast<QWidget*>(field), static_cast<QWidget*>(add),
                           static_cast<QWidget*>(grid), static_cast<QWidget*>(tabs), static_cast<QWidget*>(progress),
                           static_cast<QWidget*>(line), manual})
            layout->addWidget(w);
    }
};

void setRatios(float x, float y, float fs)
{
    modbase().vScreenRatX = x;
    modbase().vScreenRatY = y;
    modbase().vScreenRatFS = fs;
}

} // namespace

class ScalingTest : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> dir_;
    QFont desktopFont_;

    // Forms made for 800 x 600 with small fonts, on a desktop whose font is larger.
    static void largeDesktopFont()
    {
        QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 12));
    }

private slots:
    void initTestCase() { desktopFont_ = QApplication::font(); }

    void init()
    {
        dir_ = std::make_unique<QTemporaryDir>();
        resetModbase();
        modbase().AppPath = dir_->path();
        qputenv("CORVANE_SYSTEM_DIR", dir_->path().toLocal8Bit());
    }

    void cleanup()
    {
        QApplication::setFont(desktopFont_);
        setScreenRoomSource({});
    }

    void ratios_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("dpi");
        QTest::addColumn<QStringList>("settings"); // Opt, X, Y, DPI
        QTest::addColumn<QList<int>>("measured");
        QTest::addColumn<QList<float>>("ratios");

        const QStringList measuredOnly{"0", "0", "0", "0"};
        QTest::newRow("800x600 at 96") << 800 << 600 << 96 << measuredOnly << QList<int>{800, 600, 96}
                                       << QList<float>{1.0f, 1.0f, 1.0f};
        QTest::newRow("1024x768 at 96") << 1024 << 768 << 96 << measuredOnly << QList<int>{1024, 768, 96}
                                        << QList<float>{1.28f, 1.28f, 1.28f};
        QTest::newRow("1024x768 at 120") << 1024 << 768 << 120 << measuredOnly << QList<int>{1024, 768, 120}
                                         << QList<float>{1.024f, 1.024f, 1.024f};
        QTest::newRow("Opt 1, width from the file") << 1024 << 768 << 96 << QStringList{"1", "1280", "0", "0"}
                                                    << QList<int>{1024, 768, 96} << QList<float>{1.6f, 1.28f, 1.44f};
        QTest::newRow("Opt 1, dots per inch from the file") << 1024 << 768 << 96 << QStringList{"1", "0", "", "120"}
                                                            << QList<int>{1024, 768, 96}
                                                            << QList<float>{1.024f, 1.024f, 1.024f};
        QTest::newRow("Opt 2: no scaling") << 1024 << 768 << 120 << QStringList{"2", "1280", "1024", "96"}
                                           << QList<int>{1024, 768, 120} << QList<float>{1.0f, 1.0f, 1.0f};
        QTest::newRow("Opt no number counts as 0") << 1024 << 768 << 96 << QStringList{"abc", "1280", "1024", "96"}
                                                   << QList<int>{1024, 768, 96} << QList<float>{1.28f, 1.28f, 1.28f};
        QTest::newRow("nothing measured") << 0 << 0 << 0 << measuredOnly << QList<int>{800, 600, 96}
                                          << QList<float>{1.0f, 1.0f, 1.0f};
        // The desktop's extent (here 1024 x 768) stands in for an unknown display mode.
        QTest::newRow("mode unknown") << -1 << -1 << 96 << measuredOnly << QList<int>{1024, 768, 96}
                                      << QList<float>{1.28f, 1.28f, 1.28f};
    }

    void ratios()
    {
        QFETCH(int, width);
        QFETCH(int, height);
        QFETCH(int, dpi);
        QFETCH(QStringList, settings);
        QFETCH(QList<int>, measured);
        QFETCH(QList<float>, ratios);

        const bool unknownMode = width < 0;
        const ScreenReso r = computeScreenReso({qMax(width, 0), qMax(height, 0), dpi, unknownMode ? 1024 : 0, unknownMode ? 768 : 0},
                                               {settings.at(0), settings.at(1), settings.at(2), settings.at(3)});
        QCOMPARE(r.vDefScreenX, measured.at(0));
        QCOMPARE(r.vDefScreenY, measured.at(1));
        QCOMPARE(int(r.vDefScreenFS), measured.at(2));
        QCOMPARE(r.vScreenRatX, ratios.at(0));
        QCOMPARE(r.vScreenRatY, ratios.at(1));
        QCOMPARE(r.vScreenRatFS, ratios.at(2));
    }

    void getScreenResoMeasuresTheScreenAndReadsTheSettings()
    {
        // GIVEN the offscreen screen (800 x 800 at 96) and a screen to assume in ORVCONFIG.INI
        QVERIFY(SaveSettingINI(QStringLiteral("ScrReso"), QStringLiteral("Opt"), QStringLiteral("1")));
        QVERIFY(SaveSettingINI(QStringLiteral("ScrReso"), QStringLiteral("X"), QStringLiteral("1024")));
        QVERIFY(SaveSettingINI(QStringLiteral("ScrReso"), QStringLiteral("Y"), QStringLiteral("768")));
        QVERIFY(SaveSettingINI(QStringLiteral("ScrReso"), QStringLiteral("DPI"), QStringLiteral("120")));

        // WHEN the host asks for the measurement
        ClsMain host;
        host.GetScreenReso();

        // THEN the measured screen is kept and the ratios are for the assumed one
        const QScreen* screen = QGuiApplication::primaryScreen();
        QCOMPARE(host.vDefScreenX(), screen->geometry().width());
        QCOMPARE(host.vDefScreenY(), screen->geometry().height());
        QCOMPARE(int(host.vDefScreenFS()), qRound(screen->logicalDotsPerInch()));
        QCOMPARE(host.vScreenRatX(), 1.024f);
        QVERIFY(test::logLines().isEmpty());
    }

    void aFormIsScaledByTheRatios()
    {
        // GIVEN a form and ratios 1.5 across, 1.25 down and 1.375 for fonts
        largeDesktopFont();
        Form f;
        setRatios(1.5f, 1.25f, 1.375f);
        const QHeaderView* rows = f.grid->verticalHeader();

        // WHEN the form scales itself on load
        Resize_For_Resolution(&f.form, false);

        // THEN the form grows where it is (to what its layout would like), and its font with it
        QCOMPARE(f.form.size(), QSize(600, 375).expandedTo(f.form.sizeHint()));
        QCOMPARE(f.form.pos(), QPoint(10, 20));
        QCOMPARE(f.form.font().pointSizeF(), 11.0);
        // a control's own font size is scaled, an inherited one follows the form
        QCOMPARE(f.title->font().pointSizeF(), 13.75);
        QCOMPARE(f.field->font().pointSizeF(), 11.0);
        QCOMPARE(f.placed->font().pointSizeF(), 11.0);
        // fixed and minimum sizes are scaled, the layout does the rest
        QCOMPARE(f.add->minimumSize(), QSize(120, 30));
        QCOMPARE(f.add->maximumSize(), QSize(120, 30));
        QCOMPARE(f.manual->minimumSize(), QSize(300, 75));
        // a control placed by hand is moved and sized
        QCOMPARE(f.placed->geometry(), QRect(15, 13, 150, 38));
        // the grid's columns and rows
        QCOMPARE(f.grid->columnWidth(0), 150);
        QCOMPARE(f.grid->columnWidth(1), 75);
        QCOMPARE(f.grid->columnWidth(2), 120);
        QCOMPARE(f.grid->rowHeight(0), 25);
        QCOMPARE(f.grid->rowHeight(1), 38);
        QCOMPARE(rows->defaultSectionSize(), 25);
        QCOMPARE(rows->minimumSectionSize(), 13);
        // the tab bar's pictures
        QCOMPARE(f.tabs->iconSize(), QSize(24, 20));
        // a progress bar has nothing written on it to scale
        QCOMPARE(f.progress->font().pointSizeF(), 9.0);
        QVERIFY(test::logLines().isEmpty());
    }

    void theFormIsMovedWhenAsked_data()
    {
        QTest::addColumn<float>("ratio");    // across; down it is 1.25, or 1 with it
        QTest::addColumn<QRect>("designed"); // before the layout's wishes
        QTest::newRow("moved and grown") << 1.5f << QRect(15, 25, 600, 375);
        QTest::newRow("ratios of one change nothing") << 1.0f << QRect(10, 20, 400, 300);
    }
    void theFormIsMovedWhenAsked()
    {
        QFETCH(float, ratio);
        QFETCH(QRect, designed);
        largeDesktopFont();
        Form f;
        setRatios(ratio, ratio == 1.0f ? 1.0f : 1.25f, 1.0f);
        Resize_For_Resolution(&f.form, true);
        QCOMPARE(f.form.geometry(), QRect(designed.topLeft(), designed.size().expandedTo(f.form.sizeHint())));
    }

    void textNeverOutgrowsTheDesktopFont()
    {
        // GIVEN a form in the desktop's font, with a button of fixed size, on a large screen wider than its height
        applyScreenReso(ScreenMeasure{1366, 768, 96, 0, 0});
        QWidget form;
        form.resize(400, 300);
        auto* layout = new QVBoxLayout(&form);
        auto* button = new QPushButton(QStringLiteral("&Add"));
        button->setFixedSize(80, 24);
        layout->addWidget(button);
        const double desktop = QApplication::font().pointSizeF();
        const Modbase& m = modbase();

        // WHEN it scales itself
        Resize_For_Resolution(&form, false);

        // THEN the text keeps the desktop's size, and sizes follow the ratios in that proportion
        QCOMPARE(form.font().pointSizeF(), desktop);
        QCOMPARE(button->width(), qRound(80 * m.vScreenRatX / m.vScreenRatFS));
        QCOMPARE(button->height(), qRound(24 * m.vScreenRatY / m.vScreenRatFS));
        QVERIFY(test::logLines().isEmpty());
    }

    void keepOnScreen_data()
    {
        QTest::addColumn<QRect>("window");
        QTest::addColumn<QRect>("parent"); // null: none
        QTest::addColumn<QRect>("expected");
        const QRect none;
        // The room: 1280 x 770 free, a frame of 4 px and a title of 26 px.
        QTest::newRow("fits where it is") << QRect(100, 100, 600, 400) << none << QRect(100, 100, 600, 400);
        QTest::newRow("past the right edge: moved in") << QRect(1000, 100, 600, 400) << none << QRect(672, 100, 600, 400);
        QTest::newRow("past the bottom with its frame: moved up") << QRect(100, 500, 600, 250) << none << QRect(100, 490, 600, 250);
        QTest::newRow("wider and taller than the screen: shrunk and placed at the corner")
            << QRect(50, 50, 1346, 900) << none << QRect(0, 0, 1272, 740);
        QTest::newRow("over its parent's middle") << QRect(0, 0, 400, 200) << QRect(200, 100, 800, 600)
                                                  << QRect(396, 285, 400, 200);
        QTest::newRow("parent near the edge: kept inside") << QRect(0, 0, 600, 300) << QRect(900, 500, 380, 260)
                                                           << QRect(672, 440, 600, 300);
    }

    void keepOnScreen()
    {
        QFETCH(QRect, window);
        QFETCH(QRect, parent);
        QFETCH(QRect, expected);
        const QRect available(0, 0, 1280, 770);
        const QMargins frame(4, 26, 4, 4);
        setScreenRoomSource([=](const QWidget*) { return ScreenRoom{available, frame}; });
        QWidget owner;
        if (!parent.isNull()) {
            owner.setGeometry(parent);
            owner.show();
        }
        QWidget w(parent.isNull() ? nullptr : &owner, Qt::Dialog);
        w.setGeometry(window);
        w.setAttribute(Qt::WA_Moved);

        corvane::keepOnScreen(&w);

        QCOMPARE(QRect(w.pos(), w.size()), expected);
        QVERIFY(available.contains(QRect(w.pos(), w.size().grownBy(frame))));
    }

    void noFormIsLogged()
    {
        Resize_For_Resolution(nullptr, false);
        QCOMPARE(test::logContexts(), QStringList{QStringLiteral("CLSMAIN\tRESIZE_FOR_RESOLUTION")});
    }

    void theControlsOfAUserControl()
    {
        // GIVEN the controls of a user control, one of them missing
        largeDesktopFont();
        Form f;
        setRatios(1.5f, 1.25f, 1.375f);

        // WHEN they are scaled
        Resize_For_ResolutionUC({f.tabs, f.title, nullptr, f.placed});

        // THEN each is scaled for itself (a tab control like any other), the form is not, the missing one is logged
        QCOMPARE(f.tabs->iconSize(), QSize(16, 16));
        QCOMPARE(f.tabs->font().pointSizeF(), 11.0);
        QCOMPARE(f.title->font().pointSizeF(), 13.75);
        QCOMPARE(f.placed->font().pointSizeF(), 11.0);
        QCOMPARE(f.placed->geometry(), QRect(15, 13, 150, 38));
        QCOMPARE(f.form.font().pointSizeF(), 8.0);
        QCOMPARE(test::logContexts(), QStringList{QStringLiteral("CLSMAIN\tRESIZE_FOR_RESOLUTIONUC")});
    }

    void progressBarColoursComeInBgrOrder()
    {
        QProgressBar bar;
        ClsMain host;
        host.SetPBBarColor(&bar, 0x0000FF);
        host.SetPBBackColor(&bar, 0xFF8000);
        QCOMPARE(bar.palette().color(QPalette::Highlight), QColor(255, 0, 0));
        QCOMPARE(bar.palette().color(QPalette::Base), QColor(0, 128, 255));
        QCOMPARE(bar.palette().color(QPalette::Window), QColor(0, 128, 255));

        // 0xFF000000 asks for the default colour, 0x8000000D for the system's highlight colour.
        host.SetPBBarColor(&bar, qint32(0xFF000000));
        QCOMPARE(bar.palette().color(QPalette::Highlight), QApplication::palette(&bar).color(QPalette::Highlight));
        host.SetPBBackColor(&bar, qint32(0x8000000D));
        QCOMPARE(bar.palette().color(QPalette::Base), QApplication::palette(&bar).color(QPalette::Highlight));

        // No bar: nothing happens, nothing is logged.
        host.SetPBBarColor(nullptr, 0);
        QVERIFY(test::logLines().isEmpty());
    }
};

CORVANE_TEST_CLASS(ScalingTest)
#include "scalingtest.moc"
