#pragma once

#include <QString>

namespace corvane {

// path when it exists, else its nearest folder that exists ("/" at the last).
QString nearestExisting(const QString& path);

// Free bytes for this user on the file system that holds path (or its
// nearest folder that exists); -1 when it cannot be told.
qint64 freeBytes(const QString& path);

// Throws Failure (ENOSPC) before a large write when fewer than `needed`
// bytes are free where path lives, with a message naming what, where,
// how much is needed and how much is free. Does nothing when it cannot tell.
void requireFreeSpace(const QString& path, qint64 needed, const QString& what);

} // namespace corvane
