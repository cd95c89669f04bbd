#pragma once

#include <QString>
#include <QStringList>

namespace corvane {
class Connection;
}

namespace corvane::backup {

// Where a restoration may put things back: the server's data directories and
// the application folders found on this machine.
struct CandidateRoots {
    // A system server's data directory, offered when it holds "mysql".
    QString systemMysql = QStringLiteral("/var/lib/mysql/");
    // The application folders in the order they are offered.
    QStringList applicationFolders;

    // The usual places under /opt and the home folder.
    static CandidateRoots standard(const QString& home);
};

// A MySQL data directory holds a folder "mysql" (any case).
bool isMysqlDirectory(const QString& directory);
// An application folder holds the host program FBT.
bool isDataDirectory(const QString& directory);

// The folder with one trailing "/".
QString withTrailingSlash(const QString& folder);
// Whether two folders are the same place (links and a trailing "/" aside).
bool samePlace(const QString& a, const QString& b);

// The valid MySQL directories: the system one, then the server's own (when
// different), each with a trailing "/".
QStringList mysqlCandidates(const CandidateRoots& roots, const QString& serverDataDirectory);
// The application folders that hold FBT, each with a trailing "/".
QStringList dataCandidates(const CandidateRoots& roots);

// The server's "datadir", empty when it cannot be asked.
QString serverDataDirectory(Connection* connection);

} // namespace corvane::backup
