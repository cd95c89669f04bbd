#include "screens/backup/archivelayout.h"

#include <QDir>
#include <QFileInfo>

namespace corvane::backup {

namespace {

QString withSlash(const QString& folder)
{
    return folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
}

QString tableOfFile(const QString& fileName)
{
    QString upper = fileName.toUpper();
    for (const char* extension : {".MYD", ".MYI", ".FRM"})
        upper.remove(QLatin1String(extension));
    return upper;
}

bool hasSubfolder(const QDir& dir, const QString& upperName)
{
    const QStringList folders = dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden);
    for (const QString& f : folders)
        if (f.toUpper() == upperName)
            return true;
    return false;
}

} // namespace

QString archiveBaseName(const QDate& date, const QLocale& locale)
{
    QString name = QStringLiteral("FBT") + locale.toString(date, QStringLiteral("dd-MMM-yy"));
    for (const QChar c : {QLatin1Char('\\'), QLatin1Char('/'), QLatin1Char(':'), QLatin1Char('.')})
        name.replace(c, QLatin1Char('-'));
    return name;
}

QString archiveFilePath(const QString& destination, const QString& baseName)
{
    return withSlash(destination) + baseName + QStringLiteral(".ZIP");
}

bool isBackedUpDatabase(const QString& folderName, const QString& defaultDatabase)
{
    const QString upper = folderName.toUpper();
    return upper.contains(QLatin1String("FBT")) || upper == defaultDatabase.toUpper();
}

bool isTemporaryMasterTable(const QString& tableName)
{
    const QString upper = tableName.toUpper();
    return upper.startsWith(QLatin1String("TMP")) && upper.contains(QLatin1String("_MASTER"));
}

bool isTemporaryMasterFile(const QString& fileName)
{
    return isTemporaryMasterTable(tableOfFile(fileName));
}

QString extractionFolder(const QString& tempPath, const QString& archiveFileName)
{
    return withSlash(tempPath) + archiveFileName.left(archiveFileName.size() - 4);
}

QString findBackupRoot(const QString& extractionFolder)
{
    QString path = extractionFolder;
    if (path.endsWith(QLatin1Char('/')) && path.size() > 1)
        path.chop(1);
    if (path.isEmpty())
        return QString();
    const QDir dir(path);
    if (!dir.exists())
        return QString();
    if (hasSubfolder(dir, QStringLiteral("SQLDATA")) && hasSubfolder(dir, QStringLiteral("TABLES")))
        return path;
    const QStringList folders = dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden | QDir::NoSymLinks, QDir::Unsorted);
    for (const QString& f : folders) {
        const QString found = findBackupRoot(dir.filePath(f));
        if (!found.isEmpty())
            return found;
    }
    return QString();
}

QString kindMark(RestoreItem::Kind kind)
{
    switch (kind) {
    case RestoreItem::Kind::Database: return QStringLiteral("DB");
    case RestoreItem::Kind::Folder: return QStringLiteral("FLD");
    case RestoreItem::Kind::File: return QStringLiteral("FL");
    }
    return QString();
}

QList<RestoreItem> classifyBackupRoot(const QString& root, const QString& mysqlDirectory, const QString& dataDirectory)
{
    QList<RestoreItem> items;
    const QDir dir(root);
    const QStringList folders = dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Unsorted);
    for (const QString& f : folders) {
        if (f.toUpper() == QLatin1String("SQLDATA")) {
            const QDir sql(dir.filePath(f));
            for (const QString& db : sql.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Unsorted))
                items.append({sql.filePath(db), withSlash(mysqlDirectory) + db, RestoreItem::Kind::Database});
        } else {
            items.append({dir.filePath(f), withSlash(dataDirectory) + f, RestoreItem::Kind::Folder});
        }
    }
    for (const QString& f : dir.entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Unsorted)) {
        const QString upper = f.toUpper();
        const bool document = upper == QLatin1String("BILLNEW.DOC") || upper == QLatin1String("RECPNEW.DOC");
        items.append({dir.filePath(f), withSlash(dataDirectory) + (document ? QStringLiteral("Data/") : QString()) + f,
                      RestoreItem::Kind::File});
    }
    return items;
}

} // namespace corvane::backup
