#pragma once

#include <QString>
#include <QStringList>

namespace corvane {

// One record of RFC 4180 text, CRLF at its end: a field holding a comma, a
// quote, a line break or blanks at either end is put in quotes, its quotes doubled.
QString csvRecord(const QStringList& fields);

} // namespace corvane
