#include "core/freespace.h"

#include "core/failure.h"

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>

#include <cerrno>

namespace corvane {

namespace {

QString megabytes(qint64 bytes)
{
    return QStringLiteral("%1 MB").arg(double(bytes) / (1024.0 * 1024.0), 0, 'f', 1);
}

} // namespace

QString nearestExisting(const QString& path)
{
    QString existing = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    while (!QFileInfo::exists(existing) && existing != QStringLiteral("/"))
        existing = QFileInfo(existing).absolutePath();
    return existing;
}

qint64 freeBytes(const QString& path)
{
    const QStorageInfo storage(nearestExisting(path));
    return storage.isValid() ? storage.bytesAvailable() : -1;
}

void requireFreeSpace(const QString& path, qint64 needed, const QString& what)
{
    const qint64 free = freeBytes(path);
    if (free < 0 || free >= needed)
        return;
    throw Failure(ENOSPC, kSource,
                  QStringLiteral("Not enough free space for %1: it needs about %2 in %3, where %4 are free")
                      .arg(what, megabytes(needed), path, megabytes(free)));
}

} // namespace corvane
