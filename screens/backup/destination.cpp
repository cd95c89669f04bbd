#include "screens/backup/destination.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace corvane::backup {

namespace {

const QStringList kNetworkTypes{"nfs", "nfs4", "cifs", "smb3", "smbfs", "sshfs", "fuse.sshfs", "9p", "afs",
                                "ceph", "glusterfs", "fuse.glusterfs", "davfs", "fuse.davfs2", "ncpfs", "fuse.rclone"};

// The octal escapes of the mount table (\040 for a blank).
QString unescape(const QString& field)
{
    QString out;
    for (int i = 0; i < field.size(); ++i) {
        if (field.at(i) == QLatin1Char('\\') && i + 3 < field.size()) {
            bool ok = false;
            const int code = field.mid(i + 1, 3).toInt(&ok, 8);
            if (ok) {
                out += QChar(code);
                i += 3;
                continue;
            }
        }
        out += field.at(i);
    }
    return out;
}

struct Mount {
    QString device;
    QString point;
    QString type;
};

// The mount holding `path`: the longest mount point that is a prefix of it.
Mount mountOf(const QString& path, const QString& table)
{
    Mount best;
    for (const QString& line : table.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QStringList f = line.split(QLatin1Char(' '));
        if (f.size() < 3)
            continue;
        const QString point = unescape(f.at(1));
        const bool holds = point == QLatin1String("/") || path == point || path.startsWith(point + QLatin1Char('/'));
        if (holds && point.size() >= best.point.size())
            best = {unescape(f.at(0)), point, f.at(2)};
    }
    return best;
}

bool removableDevice(const QString& path)
{
    struct stat st {};
    if (::stat(QFile::encodeName(path).constData(), &st) != 0)
        return false;
    const QString sys = QStringLiteral("/sys/dev/block/%1:%2").arg(major(st.st_dev)).arg(minor(st.st_dev));
    const QString device = QFileInfo(sys).canonicalFilePath();
    if (device.isEmpty())
        return false;
    // A partition has the flag on its disk, one folder up.
    for (const QString& candidate : {device + QStringLiteral("/removable"), device + QStringLiteral("/../removable")}) {
        QFile flag(candidate);
        if (flag.open(QIODevice::ReadOnly))
            return flag.readAll().trimmed() == "1";
    }
    return false;
}

} // namespace

PlaceKind classifyPlace(const QString& folder, const QString& mounts)
{
    if (folder.startsWith(QLatin1String("//")) || folder.startsWith(QLatin1String("\\\\")))
        return PlaceKind::Network;
    QString path = QFileInfo(folder).canonicalFilePath();
    if (path.isEmpty())
        path = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());

    QString table = mounts;
    const bool real = table.isEmpty();
    if (real) {
        QFile file(QStringLiteral("/proc/self/mounts"));
        if (file.open(QIODevice::ReadOnly))
            table = QString::fromLocal8Bit(file.readAll());
    }
    const Mount mount = mountOf(path, table);
    if (kNetworkTypes.contains(mount.type) || mount.device.startsWith(QLatin1String("//")))
        return PlaceKind::Network;
    for (const char* media : {"/media", "/run/media"}) {
        const QString m = QLatin1String(media);
        if (path.startsWith(m + QLatin1Char('/')) || mount.point.startsWith(m + QLatin1Char('/')))
            return PlaceKind::Removable;
    }
    if (real && removableDevice(path))
        return PlaceKind::Removable;
    return PlaceKind::Local;
}

} // namespace corvane::backup
