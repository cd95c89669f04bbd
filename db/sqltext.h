#pragma once

#include <QString>
#include <QVariant>

namespace corvane {

// The one quoting helper. Every value concatenated into SQL text goes through it.

// The text in single quotes, escaped (quote, backslash, NUL, line ends and
// Ctrl-Z escaped; any other UTF-8 passes unchanged).
QString sqlQuote(const QString& text);

// The same appended to out, for a long statement built value by value.
void appendQuoted(QString& out, const QString& text);

// A table or column name in back quotes (a back quote inside is doubled).
QString sqlName(const QString& name);

// A value as SQL literal: NULL, a bare number, or a quoted text.
QString sqlLiteral(const QVariant& value);

} // namespace corvane
