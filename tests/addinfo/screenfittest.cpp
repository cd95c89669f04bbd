#include "core/modbase.h"
#include "core/prompter.h"
#include "core/screenreso.h"
#include "ui/screenscaling.h"
#include "screens/addinfo/frmaddinfo.h"
#include "screens/addinfo/frmaddinfo1.h"
#include "screens/bank/frmbankdet.h"
#include "screens/bank/frmbankdet1.h"
#include "screens/cldet/frmcldet.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QApplication>
#include <QtTest>

using namespace corvane;

namespace {

// A desktop panel along the bottom and the frame a window manager draws.
constexpr int kPanel = 30;
const QMargins kFrame(4, 26, 4, 4);

std::unique_ptr<QWidget> openScreen(const QString& name)
{
    if (name == QLatin1String("frmbankdet1"))
        return std::make_unique<frmbankdet1>();
    if (name == QLatin1String("frmbankdet"))
        return std::make_unique<frmbankdet>();
    if (name == QLatin1String("frmaddinfo"))
        return std::make_unique<FrmAddInfo>();
    if (name == QLatin1String("frmcldet"))
        return std::make_unique<frmcldet>();
    return std::make_unique<FrmAddInfo1>();
}

double pointSize(const QFont& font)
{
    return font.pointSizeF() > 0 ? font.pointSizeF() : font.pixelSize() * 0.75;
}

} // namespace

// Every screen, opened on the common screen sizes, lies inside the free area
// of the screen with its frame, shows all of its controls and wastes no room.
class ScreenFitTest : public QObject {
    Q_OBJECT

    std::unique_ptr<test::TestDatabase> db_;

private slots:
    void initTestCase() { db_ = std::make_unique<test::TestDatabase>(QStringLiteral("screenfit")); }
    void cleanupTestCase() { db_.reset(); }

    void init()
    {
        db_->startAfresh({QStringLiteral("FBT_AddInfo"), QStringLiteral("FBT_MiscInf"), QStringLiteral("FBT_BankDet"),
                          QStringLiteral("Bank_Master"), QStringLiteral("FBT_Info")});
        modbase().Code = QStringLiteral("C001");
        modbase().TYear = 2008;
        modbase().prompter = std::make_shared<ScriptedPrompter>();
    }

    void cleanup()
    {
        setScreenRoomSource({});
        applyScreenReso(ScreenMeasure{800, 600, 96, 0, 0});
    }

    void everyScreenFits_data()
    {
        QTest::addColumn<QString>("screen");
        QTest::addColumn<QSize>("size");
        // The smallest and the largest common screens bound the ratios between them.
        const QList<QSize> sizes{QSize(1024, 768), QSize(1920, 1080)};
        for (const char* screen : {"frmbankdet1", "frmbankdet", "frmaddinfo", "frmaddinfo1", "frmcldet"})
            for (const QSize& size : sizes)
                QTest::newRow(qPrintable(QStringLiteral("%1 at %2x%3").arg(QLatin1String(screen)).arg(size.width()).arg(size.height())))
                    << QString::fromLatin1(screen) << size;
    }

    void everyScreenFits()
    {
        QFETCH(QString, screen);
        QFETCH(QSize, size);

        // GIVEN a screen of that size at 96 dots per inch, measured by the host
        const QRect available(0, 0, size.width(), size.height() - kPanel);
        setScreenRoomSource([available](const QWidget*) { return ScreenRoom{available, kFrame}; });
        applyScreenReso(ScreenMeasure{size.width(), size.height(), 96, 0, 0});

        // WHEN the screen opens
        auto form = openScreen(screen);
        form->show();

        // THEN the window with its frame lies inside the free area
        const QRect outer(form->pos(), form->size().grownBy(kFrame));
        QVERIFY2(available.contains(outer), qPrintable(QStringLiteral("%1,%2 %3x%4").arg(outer.x()).arg(outer.y())
                                                           .arg(outer.width()).arg(outer.height())));
        // every control is inside the window, none cut off
        const auto children = form->findChildren<QWidget*>();
        for (const QWidget* w : children) {
            if (!w->isVisible() || w->isWindow())
                continue;
            const QRect r(w->mapTo(form.get(), QPoint(0, 0)), w->size());
            QVERIFY2(form->rect().contains(r), qPrintable(w->objectName()));
        }
        // the layout has the room it asks for, so no caption is clipped
        if (form->layout()) {
            QVERIFY(form->width() >= form->minimumSizeHint().width());
            QVERIFY(form->height() >= form->minimumSizeHint().height());
        }
        // the controls fill the window: no large empty regions
        const QRect used = form->childrenRect();
        QVERIFY2(used.width() >= form->width() * 0.8 && used.height() >= form->height() * 0.8,
                 qPrintable(QStringLiteral("%1x%2 used of %3x%4").arg(used.width()).arg(used.height())
                                .arg(form->width()).arg(form->height())));
        // and the text is not larger than the desktop's
        QVERIFY(pointSize(form->font()) <= pointSize(QApplication::font()) + 0.01);
    }
};

CORVANE_TEST_CLASS(ScreenFitTest)

#include "screenfittest.moc"
