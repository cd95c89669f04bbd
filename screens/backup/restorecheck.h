#pragma once

#include <QStringList>

namespace corvane {
class Connection;
class Progress;
}

namespace corvane::backup {

// The table check of the check and repair screen on the connection's
// database, run after the private server came back with restored files:
// one "table: report" line per problem, empty when every table is OK.
QStringList checkRestoredTables(Connection& connection, Progress& progress);

} // namespace corvane::backup
