#pragma once

#include <QApplication>
#include <QPushButton>
#include <QtTest>

namespace corvane::test {

// A control of a form by its objectName; a missing one ends the run, naming it.
template <typename T = QWidget>
T* child(QWidget& form, const char* name)
{
    T* widget = form.findChild<T*>(QString::fromLatin1(name));
    if (!widget)
        qFatal("no control %s", name);
    return widget;
}

inline void click(QWidget& form, const char* button)
{
    QTest::mouseClick(child<QPushButton>(form, button), Qt::LeftButton);
}

// Shows a form offscreen as the active window, so that focus moves as on a screen.
inline void showActive(QWidget& form)
{
    form.show();
    QApplication::setActiveWindow(&form);
    form.activateWindow();
}

} // namespace corvane::test
