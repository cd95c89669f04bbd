#pragma once

#include "support/formdriver.h"

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QTableView>

namespace corvane::test {

// Types into a text box as a user does: focus, select all, type.
inline void typeInto(QWidget& screen, const QString& name, const QString& text)
{
    auto* edit = child<QLineEdit>(screen, name);
    edit->selectAll();
    edit->del();
    QTest::keyClicks(edit, text);
}

// The codes of the rows the client list shows, in order.
inline QStringList visibleCodes(QWidget& window)
{
    const QAbstractItemModel* rows = child<QTableView>(window, QStringLiteral("lstclients"))->model();
    QStringList codes;
    for (int row = 0; row < rows->rowCount(); ++row)
        codes << rows->index(row, 0).data().toString();
    return codes;
}

} // namespace corvane::test
