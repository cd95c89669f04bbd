#include "screens/backup/restorecandidates.h"

#include "db/connection.h"

#include <QDir>
#include <QFileInfo>

namespace corvane::backup {

CandidateRoots CandidateRoots::standard(const QString& home)
{
    CandidateRoots roots;
    const QString h = withTrailingSlash(home);
    roots.applicationFolders = {QStringLiteral("/opt/ORV Softworks/FBT/"), h + QStringLiteral("ORV Softworks/FBT/"),
                                QStringLiteral("/opt/ORV Softworks/Vantor/FBT/"),
                                h + QStringLiteral("ORV Softworks/Vantor/FBT/"), h + QStringLiteral("Vantor/FBT/")};
    return roots;
}

bool isMysqlDirectory(const QString& directory)
{
    if (directory.isEmpty())
        return false;
    const QStringList folders = QDir(directory).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden);
    for (const QString& f : folders)
        if (f.compare(QLatin1String("mysql"), Qt::CaseInsensitive) == 0)
            return true;
    return false;
}

bool isDataDirectory(const QString& directory)
{
    if (directory.isEmpty())
        return false;
    const QFileInfo program(withTrailingSlash(directory) + QStringLiteral("FBT"));
    // The per-user folder holds a link to the installed program.
    return (program.exists() || program.isSymLink()) && !program.isDir();
}

QString withTrailingSlash(const QString& folder)
{
    return folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
}

bool samePlace(const QString& a, const QString& b)
{
    if (a.isEmpty() || b.isEmpty())
        return false;
    const QString ca = QFileInfo(a).canonicalFilePath();
    const QString cb = QFileInfo(b).canonicalFilePath();
    if (!ca.isEmpty() && !cb.isEmpty())
        return ca == cb;
    return QDir::cleanPath(a) == QDir::cleanPath(b);
}

QStringList mysqlCandidates(const CandidateRoots& roots, const QString& serverDataDirectory)
{
    QStringList list;
    if (isMysqlDirectory(roots.systemMysql))
        list << withTrailingSlash(roots.systemMysql);
    if (isMysqlDirectory(serverDataDirectory)) {
        bool known = false;
        for (const QString& c : list)
            known = known || samePlace(c, serverDataDirectory);
        if (!known)
            list << withTrailingSlash(serverDataDirectory);
    }
    return list;
}

QStringList dataCandidates(const CandidateRoots& roots)
{
    QStringList list;
    for (const QString& folder : roots.applicationFolders)
        if (isDataDirectory(folder))
            list << withTrailingSlash(folder);
    return list;
}

QString serverDataDirectory(Connection* connection)
{
    if (!connection || !connection->isOpen())
        return QString();
    const auto vars = connection->query(QStringLiteral("Show variables like 'datadir'"));
    return vars.rows.isEmpty() ? QString() : vars.rows.first().value(1).toString();
}

} // namespace corvane::backup
