#pragma once

#include <QString>

namespace corvane::backup {

// The three file steps of restoring one row. Each throws Failure with the
// system's reason; none follows a symbolic link out of the tree it works on.

// Puts the existing `path` aside as `keptAs`: moved when both lie on one file
// system, copied otherwise (the delete step then removes what is left at `path`).
void keepExisting(const QString& path, const QString& keptAs);

// Deletes a file or a whole folder; nothing to do when it is not there.
void removeExisting(const QString& path);

// Puts `source` at `destination`, creating the folders above it. With
// `mayMove` the source is moved when that is possible (it is a scratch copy),
// else copied; an existing destination is overwritten file by file.
void putInPlace(const QString& source, const QString& destination, bool mayMove);

// Makes everything under `path` writable again and deletes it; false when it remains.
bool forceRemove(const QString& path);

} // namespace corvane::backup
