#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

namespace corvane::cli {

// Columns aligned with two blanks between them, a rule under the headings; a
// cell with line breaks takes as many lines as it has.
QString textTable(const QStringList& headings, const QVector<QStringList>& rows);

} // namespace corvane::cli
