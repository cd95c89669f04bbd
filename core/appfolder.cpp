#include "core/appfolder.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <unistd.h>

namespace corvane {

namespace {

bool writable(const QString& path)
{
    return ::access(QFile::encodeName(path).constData(), W_OK) == 0;
}

} // namespace

QString AppFolder::describe() const
{
    return perUser ? QStringLiteral("%1 (your own: the program's folder cannot be written)").arg(path) : path;
}

AppFolderInputs AppFolderInputs::fromEnvironment(const QString& asked, const QString& programDir)
{
    AppFolderInputs in;
    in.asked = asked;
    in.programDir = programDir;
    in.xdgDataHome = qEnvironmentVariable("XDG_DATA_HOME");
    in.home = qEnvironmentVariable("HOME", QDir::homePath());
    return in;
}

AppFolder chooseAppFolder(const AppFolderInputs& in)
{
    if (!in.asked.isEmpty())
        return {in.asked, false};
    const QString program = QDir::cleanPath(in.programDir);
    const auto canWrite = in.canWrite ? in.canWrite : writable;
    if (canWrite(program))
        return {program, false};
    // Relative values of XDG_DATA_HOME are invalid and ignored.
    const QString base = !in.xdgDataHome.isEmpty() && QDir::isAbsolutePath(in.xdgDataHome)
        ? in.xdgDataHome
        : in.home + QStringLiteral("/.local/share");
    return {QDir::cleanPath(base + QStringLiteral("/orv-softworks/FBT")), true};
}

QString preparePerUserFolder(const QString& folder, const QString& programDir)
{
    if (!QDir().mkpath(folder))
        return QStringLiteral("Cannot create the folder %1").arg(folder);
    const QString link = folder + QStringLiteral("/FBT");
    const QString program = QDir::cleanPath(programDir) + QStringLiteral("/FBT");
    const QFileInfo existing(link);
    // A link left by an earlier installation elsewhere is pointed at this one.
    if (existing.isSymLink() && existing.symLinkTarget() != program)
        QFile::remove(link);
    if (!QFileInfo(link).isSymLink() && !QFileInfo::exists(link) && !QFile::link(program, link))
        return QStringLiteral("Cannot make the link %1 to %2").arg(link, program);
    provideDataFiles(programDir, folder);
    return QString();
}

void provideDataFiles(const QString& programDir, const QString& appPath)
{
    const QDir source(programDir + QStringLiteral("/Data"));
    if (!source.exists() || QFileInfo(programDir).canonicalFilePath() == QFileInfo(appPath).canonicalFilePath())
        return;
    QDirIterator it(source.path(), QDir::Files | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString file = it.next();
        const QString target = appPath + QStringLiteral("/Data/") + source.relativeFilePath(file);
        if (QFileInfo::exists(target))
            continue;
        QDir().mkpath(QFileInfo(target).absolutePath());
        QFile::copy(file, target);
    }
}

} // namespace corvane
