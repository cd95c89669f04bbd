#pragma once

#include "components/bankinfo/bankinfostore.h"

#include <QIODevice>
#include <QString>
#include <QStringList>

namespace corvane {
class Connection;
class Progress;
}

namespace corvane::bankinfo {

struct ImportResult {
    int loaded = 0;        // rows written (a row with a key already present replaces it)
    int lines = 0;         // data lines read, blank lines not counted
    QStringList refused;   // "line 12: MICR '4000' is not nine digits"
    int refusedCount() const { return int(refused.size()); }
};

struct ImportOptions {
    bool replace = false;  // the rows take the list's place at the end, all at once (only when there is one to load)
    int batchRows = 1000;  // rows per INSERT statement
};

// Loads a comma-separated list into the component's table for kind. The first
// non-blank line names the columns (any order, any case; unknown columns are
// ignored). Throws Failure when the file cannot be read or its first line lacks
// a column the list needs; refuses single lines with their reason and goes on.
ImportResult importFile(Connection& connection, Kind kind, const QString& path, Progress& progress,
                        const ImportOptions& options = {});
ImportResult importDevice(Connection& connection, Kind kind, QIODevice& device, Progress& progress,
                          const ImportOptions& options = {}, const QString& name = QString());

// The demo lists shipped in the application's demo folder, loaded into the
// lists that are empty. Returns one line per list for the user.
QStringList loadDemoLists(Connection& connection, const QString& demoFolder);
// The demo folder beside the program or under the application folder, empty when neither exists.
QString findDemoFolder(const QString& appPath);

// The columns each list needs in the first line of its file, for help texts.
QString requiredColumnsText(Kind kind);

} // namespace corvane::bankinfo
