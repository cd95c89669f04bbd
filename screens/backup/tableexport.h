#pragma once

#include <QString>

namespace corvane {
class Connection;
}

namespace corvane::backup {

// One table written as tab-separated text: the column names first, then one
// line per row in column order. Dates "yyyy-MM-dd", date-times
// "yyyy-MM-dd hh:mm:ss AM", null "0" in numeric columns and empty otherwise;
// a backslash, tab or line end inside a value is written \\, \t, \n, \r.
// Rows are read as the server sends them, so that a large table never sits
// in memory whole. Throws Failure; returns the number of rows written.
qint64 exportTable(Connection& connection, const QString& table, const QString& filePath);

// The SQL expression that gives one cell of a column of `type` (as SHOW
// COLUMNS gives it) by the rules above.
QString exportExpression(const QString& column, const QString& type);

} // namespace corvane::backup
