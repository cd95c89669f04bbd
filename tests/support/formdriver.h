#pragma once

#include <QApplication>
#include <QPushButton>
#include <QtTest>

namespace corvane::test {

// A control of a form by its objectName; a missing one ends the run, naming it.
template <typename T = QWidget>
T* child(QWidget& form, const QString& name)
{
    T* widget = form.findChild<T*>(name);
    if (!widget)
        qFatal("no control %s", qPrintable(name));
    return widget;
}

template <typename T = QWidget>
T* child(QWidget& form, const char* name)
{
    return child<T>(form, QString::fromLatin1(name));
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

// Makes and shows a form as the active window.
template <typename Form>
std::unique_ptr<Form> openActive()
{
    auto form = std::make_unique<Form>();
    showActive(*form);
    return form;
}

} // namespace corvane::test
