#pragma once

#include <QAbstractButton>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QRadioButton>
#include <QWidget>

namespace corvane::screenkeys {

inline bool isEnter(const QKeyEvent* key)
{
    return (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter)
        && !(key->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
}

// The quote would end a text value in the statements the screens build.
inline bool isQuote(const QKeyEvent* key)
{
    return key->text() == QLatin1String("'");
}

// Delivers a key press of a letter a to z again as its capital; true when it did.
inline bool sendUpperCase(QObject* target, const QKeyEvent* key)
{
    const QString text = key->text();
    if (key->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    if (text.size() != 1 || text.at(0) < QLatin1Char('a') || text.at(0) > QLatin1Char('z'))
        return false;
    QKeyEvent upper(key->type(), key->key(), key->modifiers(), text.toUpper(), key->isAutoRepeat(), key->count());
    QCoreApplication::sendEvent(target, &upper);
    return true;
}

// Enter acts as Tab: the focus moves to the next control of the window.
inline void tabFrom(QWidget* widget)
{
    if (QWidget* window = widget->window()) {
        QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
        QCoreApplication::sendEvent(window, &tab);
    }
}

// Enter on a dialog: a focused push button or check box is pressed, anywhere
// else (an option button included) the focus moves on as with Tab. True when
// the key was Enter and has been dealt with.
inline bool enterPressesOrMovesOn(QWidget* dialog, const QKeyEvent* key)
{
    if (!isEnter(key))
        return false;
    auto* button = qobject_cast<QAbstractButton*>(dialog->focusWidget());
    if (button && !qobject_cast<QRadioButton*>(button))
        button->click();
    else
        tabFrom(dialog);
    return true;
}

} // namespace corvane::screenkeys
