#pragma once

#include <QDate>
#include <QList>
#include <QLocale>
#include <QString>

namespace corvane::backup {

// "FBT" and the date as dd-MMM-yy in the locale's language, with every "\",
// "/", ":" and "." replaced by "-": FBT05-Mar-26.
QString archiveBaseName(const QDate& date, const QLocale& locale = QLocale::system());

// The destination, "/" unless it ends with one, the name and ".ZIP".
QString archiveFilePath(const QString& destination, const QString& baseName);

// A folder of the server's data directory is backed up when its upper-cased
// name contains "FBT" or equals the upper-cased default database.
bool isBackedUpDatabase(const QString& folderName, const QString& defaultDatabase);

// A temporary master table's file (TMP…_MASTER with .MYD, .MYI or .FRM), left out of a backup.
bool isTemporaryMasterFile(const QString& fileName);

// A temporary master table, left out of the table exports.
bool isTemporaryMasterTable(const QString& tableName);

// Where restoration unpacks an archive: the temporary path, "/" unless it
// ends with one, and the archive's file name without its last four characters.
QString extractionFolder(const QString& tempPath, const QString& archiveFileName);

// The first folder, depth first in the file system's order, holding both a
// "SQLDATA" and a "TABLES" folder (names without regard to case); empty when none.
QString findBackupRoot(const QString& extractionFolder);

// One row of a restoration: what is found under the backup root and where it goes.
struct RestoreItem {
    enum class Kind { Database, Folder, File };
    QString source;
    QString destination;
    Kind kind;
};

// "DB", "FLD" or "FL".
QString kindMark(RestoreItem::Kind kind);

// Each folder of SQLDATA to the MySQL directory, each other folder of the root
// to the data directory, BillNew.doc and RecpNew.doc to its Data folder, every
// other file of the root to the data directory.
QList<RestoreItem> classifyBackupRoot(const QString& root, const QString& mysqlDirectory, const QString& dataDirectory);

} // namespace corvane::backup
