#pragma once

// What the backup and restoration benchmarks share: the context a backup
// needs, one backup of the shared database, and the archive the restoration
// benchmark restores (the backup benchmark's last one).

#include <QString>
#include <memory>

namespace corvane {
class Connection;
class Progress;
}

namespace corvane::bench {

class BenchServer;

// Points the component context at the connection and at folders under the work folder.
void prepareBackupContext(const std::shared_ptr<Connection>& connection);

// One backup into `destination` (made when missing); returns the archive. Throws when it fails.
QString backUp(Connection& connection, const QString& destination, Progress& progress);

// The folder whose archive the restoration benchmark restores.
QString sharedArchiveFolder();

// The archive of the shared database in sharedArchiveFolder(), made when there is none.
QString sharedArchive(const BenchServer& server);

} // namespace corvane::bench
