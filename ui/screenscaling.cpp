#include "ui/screenscaling.h"

#include "core/modbase.h"
#include "core/resumenext.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QCalendarWidget>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QScreen>
#include <QScrollArea>
#include <QHash>
#include <QTabBar>
#include <QTabWidget>
#include <QTableView>
#include <QShowEvent>
#include <QWindow>

namespace corvane {

namespace {

struct Ratios {
    double x = 1.0;
    double y = 1.0;
    double font = 1.0;
};

int scaled(int value, double ratio)
{
    return qBound(0, qRound(value * ratio), QWIDGETSIZE_MAX);
}

bool layoutHolds(const QLayout* layout, const QWidget* widget)
{
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem* item = layout->itemAt(i);
        if (item->widget() == widget)
            return true;
        if (item->layout() && layoutHolds(item->layout(), widget))
            return true;
    }
    return false;
}

bool inLayout(const QWidget* w)
{
    const QWidget* parent = w->parentWidget();
    return parent && parent->layout() && layoutHolds(parent->layout(), w);
}

// Widgets whose children are their own parts, not controls of the screen.
bool isCompositeControl(const QWidget* w)
{
    return qobject_cast<const QAbstractScrollArea*>(w) || qobject_cast<const QComboBox*>(w)
        || qobject_cast<const QAbstractSpinBox*>(w) || qobject_cast<const QLineEdit*>(w)
        || qobject_cast<const QAbstractButton*>(w) || qobject_cast<const QProgressBar*>(w)
        || qobject_cast<const QAbstractSlider*>(w) || qobject_cast<const QCalendarWidget*>(w)
        || qobject_cast<const QDialogButtonBox*>(w) || qobject_cast<const QTabBar*>(w)
        || qobject_cast<const QMenuBar*>(w) || qobject_cast<const QLabel*>(w);
}

// The controls inside a container, parents before their children.
void collectControls(QWidget* container, QList<QWidget*>& controls)
{
    const auto children = container->findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
    for (QWidget* child : children) {
        if (child->isWindow())
            continue; // dialogs and menus of the screen
        if (!child->objectName().startsWith(QLatin1String("qt_")))
            controls << child;
        if (auto* tabs = qobject_cast<QTabWidget*>(child)) {
            for (int i = 0; i < tabs->count(); ++i) {
                controls << tabs->widget(i);
                collectControls(tabs->widget(i), controls);
            }
        } else if (auto* area = qobject_cast<QScrollArea*>(child)) {
            if (area->widget()) {
                controls << area->widget();
                collectControls(area->widget(), controls);
            }
        } else if (!isCompositeControl(child)) {
            collectControls(child, controls);
        }
    }
}

class Scaler {
public:
    Scaler(const QList<QWidget*>& members, bool tabsSpecial, Ratios ratios) : tabsSpecial_(tabsSpecial), ratios_(ratios)
    {
        for (QWidget* w : members)
            if (w)
                fontSizes_.insert(w, fontSize(w->font()));
    }

    void scaleForm(QWidget* form, bool reposition)
    {
        scaleFont(form);
        scaleLimits(form);
        const QRect g = form->geometry();
        form->resize(scaled(g.width(), ratios_.x), scaled(g.height(), ratios_.y));
        if (reposition)
            form->move(qRound(g.x() * ratios_.x), qRound(g.y() * ratios_.y));
    }

    void scaleControl(QWidget* w)
    {
        if (!w)
            throw Failure(err::ObjectNotSet, kSource, QStringLiteral("Object variable or With block variable not set"));
        const QString type = controlTypeName(w);
        static const QStringList notScaled{QStringLiteral("MENU"), QStringLiteral("TIMER"),
                                           QStringLiteral("COMMONDIALOG"), QStringLiteral("MDIEXTEND")};
        if (notScaled.contains(type))
            return;
        if (type == QLatin1String("IMAGE")) {
            // A picture keeps its size unless it stretches to fill its box.
            const bool stretches = static_cast<QLabel*>(w)->hasScaledContents();
            scaleGeometry(w, stretches);
            return;
        }
        scaleLimits(w);
        scaleGeometry(w, true);
        if (type == QLatin1String("LINE") || type == QLatin1String("SHAPE") || type == QLatin1String("PROGRESSBAR"))
            return; // nothing written on them
        scaleFont(w);
        if (type == QLatin1String("VSFLEXGRID") || type == QLatin1String("CLGRD"))
            scaleGrid(static_cast<QTableView*>(w));
        else if (type == QLatin1String("SSTAB") && tabsSpecial_)
            scaleTabs(static_cast<QTabWidget*>(w));
    }

private:
    void scaleLimits(QWidget* w)
    {
        const QSize minimum = w->minimumSize();
        const QSize maximum = w->maximumSize();
        w->setMinimumSize(scaled(minimum.width(), ratios_.x), scaled(minimum.height(), ratios_.y));
        w->setMaximumSize(maximum.width() >= QWIDGETSIZE_MAX ? QWIDGETSIZE_MAX : scaled(maximum.width(), ratios_.x),
                          maximum.height() >= QWIDGETSIZE_MAX ? QWIDGETSIZE_MAX : scaled(maximum.height(), ratios_.y));
    }

    // A control outside a layout is placed by hand: move and size it.
    void scaleGeometry(QWidget* w, bool size)
    {
        if (inLayout(w))
            return;
        const QRect g = w->geometry();
        w->move(qRound(g.x() * ratios_.x), qRound(g.y() * ratios_.y));
        if (size)
            w->resize(scaled(g.width(), ratios_.x), scaled(g.height(), ratios_.y));
    }

    static double fontSize(const QFont& font)
    {
        return font.pointSizeF() > 0 ? font.pointSizeF() : font.pixelSize();
    }

    // A font that follows its parent's has grown with it already.
    void scaleFont(QWidget* w)
    {
        if (fontSize(w->font()) != fontSizes_.value(w))
            return;
        QFont font = w->font();
        if (font.pointSizeF() > 0)
            font.setPointSizeF(qMax(1.0, font.pointSizeF() * ratios_.font));
        else if (font.pixelSize() > 0)
            font.setPixelSize(qMax(1, qRound(font.pixelSize() * ratios_.font)));
        // A bitmap face has no sizes in between; a scalable one takes its place.
        if (!QFontDatabase::isSmoothlyScalable(font.family()))
            font.setFamily(QStringLiteral("Arial"));
        w->setFont(font);
    }

    void scaleGrid(QTableView* grid)
    {
        scaleHeader(grid->horizontalHeader(), ratios_.x);
        scaleHeader(grid->verticalHeader(), ratios_.y);
    }

    static void scaleHeader(QHeaderView* header, double ratio)
    {
        constexpr int kLargestSection = 1048575;
        QList<int> sizes;
        for (int i = 0; i < header->count(); ++i)
            sizes << header->sectionSize(i);
        const int oldDefault = header->defaultSectionSize();
        // Limits first, so that no section is clamped by a limit not yet scaled.
        header->setMinimumSectionSize(scaled(header->minimumSectionSize(), ratio));
        if (header->maximumSectionSize() < kLargestSection)
            header->setMaximumSectionSize(scaled(header->maximumSectionSize(), ratio));
        header->setDefaultSectionSize(scaled(oldDefault, ratio));
        for (int i = 0; i < sizes.size(); ++i)
            if (!header->isSectionHidden(i))
                header->resizeSection(i, scaled(sizes.at(i), ratio));
    }

    void scaleTabs(QTabWidget* tabs)
    {
        QTabBar* bar = tabs->tabBar();
        const QSize icons = bar->iconSize();
        bar->setIconSize(QSize(scaled(icons.width(), ratios_.x), scaled(icons.height(), ratios_.y)));
        scaleLimits(bar);
    }

    QHash<QWidget*, double> fontSizes_; // before anything was scaled
    bool tabsSpecial_;
    Ratios ratios_;
};

QColor fromBgr(quint32 value)
{
    return QColor(int(value & 0xFF), int((value >> 8) & 0xFF), int((value >> 16) & 0xFF));
}

// The colour of a host colour value (BGR, the default, or a system colour).
QColor colourOf(qint32 value, const QWidget* widget, QPalette::ColorRole defaultRole)
{
    const quint32 u = quint32(value);
    const QPalette system = QApplication::palette(widget);
    if (u == 0xFF000000u)
        return system.color(defaultRole);
    if ((u & 0xFF000000u) == 0x80000000u) {
        static const QPalette::ColorRole roles[] = {
            QPalette::Button, QPalette::Window, QPalette::Highlight, QPalette::Window, QPalette::Window,
            QPalette::Base, QPalette::Shadow, QPalette::WindowText, QPalette::Text, QPalette::HighlightedText,
            QPalette::Mid, QPalette::Mid, QPalette::Window, QPalette::Highlight, QPalette::HighlightedText,
            QPalette::Button, QPalette::Dark, QPalette::PlaceholderText, QPalette::ButtonText, QPalette::WindowText,
            QPalette::Light, QPalette::Shadow, QPalette::Midlight, QPalette::ToolTipText, QPalette::ToolTipBase};
        const quint32 index = u & 0xFFu;
        return system.color(index < std::size(roles) ? roles[index] : defaultRole);
    }
    return fromBgr(u);
}

void colourBar(QProgressBar* bar, qint32 value, std::initializer_list<QPalette::ColorRole> roles)
{
    auto guard = silentGuard();
    guard([&] {
        if (!bar)
            throw Failure(err::ObjectNotSet, kSource, QStringLiteral("Object variable or With block variable not set"));
        QPalette palette = bar->palette();
        for (const QPalette::ColorRole role : roles)
            palette.setColor(role, colourOf(value, bar, role));
        bar->setPalette(palette);
    });
}

} // namespace

QString controlTypeName(const QWidget* control)
{
    if (qobject_cast<const QMenu*>(control) || qobject_cast<const QMenuBar*>(control))
        return QStringLiteral("MENU");
    if (qobject_cast<const QProgressBar*>(control))
        return QStringLiteral("PROGRESSBAR");
    if (qobject_cast<const QTabWidget*>(control))
        return QStringLiteral("SSTAB");
    if (qobject_cast<const QTableView*>(control))
        return QStringLiteral("VSFLEXGRID");
    if (const auto* frame = qobject_cast<const QFrame*>(control)) {
        if (frame->frameShape() == QFrame::HLine || frame->frameShape() == QFrame::VLine)
            return QStringLiteral("LINE");
    }
    if (const auto* label = qobject_cast<const QLabel*>(control)) {
        if (!label->pixmap().isNull())
            return QStringLiteral("IMAGE");
    }
    if (control->isWindow())
        return QStringLiteral("COMMONDIALOG");
    return QString::fromLatin1(control->metaObject()->className()).toUpper();
}

namespace {

ScreenRoomSource& roomSource()
{
    static ScreenRoomSource source;
    return source;
}

QMargins frameMargins(const QWidget* w)
{
    const QRect f = w->frameGeometry();
    const QRect g = w->geometry();
    return {g.left() - f.left(), g.top() - f.top(), f.right() - g.right(), f.bottom() - g.bottom()};
}

bool isPlainWindow(const QWidget* w)
{
    const Qt::WindowType type = w->windowType();
    return type == Qt::Window || type == Qt::Dialog;
}

// The window manager's frame is known once a window has one; until a window
// is shown, one of the common size is assumed.
QMargins expectedFrame(const QWidget* window)
{
    if (window && window->isVisible() && !frameMargins(window).isNull())
        return frameMargins(window);
    bool known = false;
    QMargins frame;
    const auto tops = QApplication::topLevelWidgets();
    for (const QWidget* top : tops) {
        if (top == window || !top->isVisible() || !isPlainWindow(top))
            continue;
        const QMargins m = frameMargins(top);
        frame = QMargins(qMax(frame.left(), m.left()), qMax(frame.top(), m.top()), qMax(frame.right(), m.right()),
                         qMax(frame.bottom(), m.bottom()));
        known = true;
    }
    if (!known && QGuiApplication::platformName() != QLatin1String("offscreen"))
        frame = QMargins(8, 32, 8, 8);
    return frame;
}

ScreenRoom realRoom(const QWidget* window)
{
    ScreenRoom room;
    const QScreen* screen = window && window->screen() ? window->screen() : QGuiApplication::primaryScreen();
    if (screen)
        room.available = screen->availableGeometry();
    room.frame = expectedFrame(window);
    return room;
}

QRect innerRoom(const QWidget* window)
{
    const ScreenRoom room = screenRoom(window);
    return room.available.marginsRemoved(room.frame);
}

// Every layout keeps the sizes it measured, also in its nested layouts.
void forgetMeasures(QLayoutItem* item)
{
    item->invalidate();
    if (QLayout* layout = item->layout())
        for (int i = 0; i < layout->count(); ++i)
            forgetMeasures(layout->itemAt(i));
}

// A form not yet shown keeps the sizes its layouts measured before its fonts
// changed: measure afresh.
void forgetMeasures(QWidget* form)
{
    const auto widgets = form->findChildren<QWidget*>();
    for (QWidget* w : widgets) {
        w->updateGeometry();
        if (w->layout())
            forgetMeasures(w->layout());
    }
    if (form->layout())
        forgetMeasures(form->layout());
}

enum class Measure { Least, Preferred };

// The room a form's content asks for: its layout, or the controls it places
// itself, each at its place with the least or the preferred size.
QSize requiredSize(QWidget* form, Measure measure)
{
    forgetMeasures(form);
    QSize need;
    if (form->layout())
        need = measure == Measure::Least ? form->minimumSizeHint() : form->sizeHint().expandedTo(form->minimumSizeHint());
    need = need.expandedTo(QSize(0, 0));
    for (QObject* object : form->children()) {
        const auto* w = qobject_cast<const QWidget*>(object);
        if (!w || w->isWindow() || w->isHidden() || inLayout(w))
            continue;
        QSize size = w->minimumSizeHint().expandedTo(w->minimumSize());
        if (measure == Measure::Preferred)
            size = size.expandedTo(w->sizeHint());
        need = need.expandedTo(QSize(qMax(0, w->x()) + size.width(), qMax(0, w->y()) + size.height()));
    }
    return need;
}

Ratios contextRatios()
{
    const Modbase& m = modbase();
    return {m.vScreenRatX, m.vScreenRatY, m.vScreenRatFS};
}

double fontSizeOf(const QFont& font)
{
    return font.pointSizeF() > 0 ? font.pointSizeF() : font.pixelSize();
}

// The ratios are made for screens laid out at 800 x 600, but our forms are
// laid out with the desktop's font, which already suits the desktop's screen.
// So the ratios shrink together until the form's text is no larger than the
// desktop's and its layout fits the room its screen offers; the form keeps
// its proportions.
Ratios ratiosFor(QWidget* form)
{
    Ratios r = contextRatios();
    double cut = 1.0;
    const double desktop = fontSizeOf(QApplication::font());
    const double own = fontSizeOf(form->font());
    if (r.font > 0 && desktop > 0 && own > 0)
        cut = std::min(cut, desktop / (own * r.font));
    const QSize room = innerRoom(form).size();
    const QSize need = requiredSize(form, Measure::Least);
    if (!room.isEmpty() && !need.isEmpty() && r.x > 0 && r.y > 0)
        cut = std::min({cut, room.width() / (need.width() * r.x), room.height() / (need.height() * r.y)});
    if (cut < 1.0)
        r = {r.x * cut, r.y * cut, r.font * cut};
    return r;
}

// Fonts do not shrink a layout in proportion (margins and check boxes keep
// their size): a form still too large for its screen is shrunk again.
void shrinkToRoom(QWidget* form, const QList<QWidget*>& controls, ResumeNext& guard)
{
    const QSize room = innerRoom(form).size();
    for (int pass = 0; pass < 3 && !room.isEmpty(); ++pass) {
        const QSize need = requiredSize(form, Measure::Least);
        if (need.isEmpty() || (need.width() <= room.width() && need.height() <= room.height()))
            return;
        const double cut = 0.97 * std::min({1.0, double(room.width()) / need.width(), double(room.height()) / need.height()});
        Scaler scaler(QList<QWidget*>{form} + controls, true, {cut, cut, cut});
        guard([&] { scaler.scaleForm(form, false); });
        for (QWidget* control : controls)
            guard([&] { scaler.scaleControl(control); });
    }
}

const QString kShowWatcher = QStringLiteral("keepOnScreen");

class ShowWatcher : public QObject {
public:
    explicit ShowWatcher(QWidget* window) : QObject(window)
    {
        setObjectName(kShowWatcher);
        window->installEventFilter(this);
    }

protected:
    // Before the dialog's own placement: a window placed here keeps its place.
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show && watched == parent() && !static_cast<QShowEvent*>(event)->spontaneous())
            keepOnScreen(static_cast<QWidget*>(watched));
        return false;
    }
};

} // namespace

void setScreenRoomSource(ScreenRoomSource source)
{
    roomSource() = std::move(source);
}

ScreenRoom screenRoom(const QWidget* window)
{
    return roomSource() ? roomSource()(window) : realRoom(window);
}

QSize roomInsideFrame(const QWidget* window)
{
    return innerRoom(window).size();
}

void keepOnScreen(QWidget* window)
{
    if (!window || !window->isWindow() || window->isMaximized() || window->isFullScreen())
        return;
    const ScreenRoom room = screenRoom(window);
    const QRect inner = room.available.marginsRemoved(room.frame);
    if (inner.isEmpty())
        return;
    const QSize size = window->size().boundedTo(inner.size()).expandedTo(window->minimumSize().boundedTo(inner.size()));
    if (size != window->size())
        window->resize(size);
    // pos() is where the frame starts. Over the middle of its parent, as
    // dialogs open; a window placed already stays; a new one goes mid-screen.
    QRect frame(window->pos(), size.grownBy(room.frame));
    const QWidget* parent = window->parentWidget() ? window->parentWidget()->window() : nullptr;
    if (parent && parent->isVisible())
        frame.moveCenter(parent->geometry().center());
    else if (!window->testAttribute(Qt::WA_Moved))
        frame.moveCenter(room.available.center());
    frame.moveLeft(qBound(room.available.left(), frame.left(), room.available.right() + 1 - frame.width()));
    frame.moveTop(qBound(room.available.top(), frame.top(), room.available.bottom() + 1 - frame.height()));
    window->move(frame.topLeft());
}

void keepOnScreenWhenShown(QWidget* window)
{
    if (window && !window->findChild<QObject*>(kShowWatcher, Qt::FindDirectChildrenOnly))
        new ShowWatcher(window);
}

void Resize_For_Resolution(QWidget* form, bool rePosForm)
{
    ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("RESIZE_FOR_RESOLUTION"));
    QList<QWidget*> controls;
    guard([&] {
        if (!form)
            throw Failure(err::ObjectNotSet, kSource, QStringLiteral("Object variable or With block variable not set"));
        collectControls(form, controls);
    });
    if (!form)
        return;
    Ratios ratios = contextRatios();
    guard([&] { ratios = ratiosFor(form); });
    Scaler scaler(QList<QWidget*>{form} + controls, true, ratios);
    guard([&] { scaler.scaleForm(form, rePosForm); });
    for (QWidget* control : controls)
        guard([&] { scaler.scaleControl(control); });
    shrinkToRoom(form, controls, guard);
    guard([&] {
        // The designed size, grown to what the content would like within the
        // screen, never smaller than the content needs.
        const QSize room = innerRoom(form).size();
        QSize size = form->size().expandedTo(requiredSize(form, Measure::Preferred));
        if (!room.isEmpty())
            size = size.boundedTo(room);
        form->resize(size.expandedTo(requiredSize(form, Measure::Least)));
        keepOnScreenWhenShown(form);
    });
}

void Resize_For_ResolutionUC(const QList<QWidget*>& controls)
{
    ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("RESIZE_FOR_RESOLUTIONUC"));
    Scaler scaler(controls, false, contextRatios());
    for (QWidget* control : controls)
        guard([&] { scaler.scaleControl(control); });
}

void SetPBBackColor(QProgressBar* bar, qint32 bgr)
{
    colourBar(bar, bgr, {QPalette::Base, QPalette::Window});
}

void SetPBBarColor(QProgressBar* bar, qint32 bgr)
{
    colourBar(bar, bgr, {QPalette::Highlight});
}

} // namespace corvane
