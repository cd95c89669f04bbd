#include "ui/keyrules.h"

#include "ui/screenkeys.h"

#include <QApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <QWidget>

namespace corvane {

KeyRules::KeyRules(QWidget* form, std::function<void()> escape)
    : QObject(form), form_(form), escape_(std::move(escape))
{
}

void KeyRules::watchAll()
{
    form_->installEventFilter(this);
    for (QWidget* w : form_->findChildren<QWidget*>())
        w->installEventFilter(this);
}

void KeyRules::textBox(QLineEdit* box, Box kind, std::function<void()> lostFocus)
{
    if (kind == Box::Digits) {
        digits_.insert(box);
        // Pasting is held to the same characters as typing.
        box->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9.]*")), box));
    } else {
        capitals_.insert(box);
    }
    enterAsTab_.insert(box);
    if (lostFocus)
        lostFocus_.insert(box, std::move(lostFocus));
}

void KeyRules::enterAsTab(QWidget* widget)
{
    enterAsTab_.insert(widget);
}

bool KeyRules::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FocusOut) {
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        // A message box or a popup taking the focus does not mean the box was left.
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) {
            const auto it = lostFocus_.constFind(watched);
            if (it != lostFocus_.constEnd())
                (*it)();
        }
        return false;
    }
    if (event->type() != QEvent::KeyPress)
        return false;

    auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Escape) {
        escape_();
        return true;
    }
    if (screenkeys::isQuote(key))
        return true;
    if (screenkeys::isEnter(key) && enterAsTab_.contains(watched)) {
        screenkeys::tabFrom(static_cast<QWidget*>(watched));
        return true;
    }
    const QString text = key->text();
    if (text.isEmpty())
        return false;
    if (digits_.contains(watched)) {
        const QChar c = text.at(0);
        const bool allowed = (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('.')
            || c == QLatin1Char('\t') || c == QLatin1Char('\b');
        return !allowed;
    }
    if (capitals_.contains(watched) && text.size() == 1 && text.at(0) >= QLatin1Char('a') && text.at(0) <= QLatin1Char('z')) {
        static_cast<QLineEdit*>(watched)->insert(text.toUpper());
        return true;
    }
    return false;
}

} // namespace corvane
