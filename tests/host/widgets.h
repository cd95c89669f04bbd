#pragma once

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableView>
#include <QtTest>

namespace corvane::test {

// A control of a screen by its objectName; fails the test when it is missing.
template <typename T>
T* control(QObject* screen, const QString& name)
{
    T* found = screen->findChild<T*>(name);
    if (!found)
        qFatal("no control %s", qPrintable(name));
    return found;
}

// Types into a text box as a user does: focus, select all, type.
inline void typeInto(QObject* screen, const QString& name, const QString& text)
{
    auto* edit = control<QLineEdit>(screen, name);
    edit->selectAll();
    edit->del();
    QTest::keyClicks(edit, text);
}

inline void click(QObject* screen, const QString& name)
{
    QTest::mouseClick(control<QPushButton>(screen, name), Qt::LeftButton);
}

// The codes of the rows the client list shows, in order.
inline QStringList visibleCodes(QObject* window)
{
    const QAbstractItemModel* rows = control<QTableView>(window, QStringLiteral("lstclients"))->model();
    QStringList codes;
    for (int row = 0; row < rows->rowCount(); ++row)
        codes << rows->index(row, 0).data().toString();
    return codes;
}

} // namespace corvane::test
