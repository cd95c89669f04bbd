#pragma once

#include <QString>
#include <functional>

namespace corvane {

class Progress;

namespace zip {

class DeflateAhead;

// Packs every file and folder under `folder` into `archive`, with the folder's
// own name as the top entry: deflate level 6, ZIP64 when needed, names in
// UTF-8, file times and permissions kept. Files are deflated on every core;
// those `ahead` deflated already and that are unchanged since are taken from
// it as they are. Written beside the archive under a temporary name, synced,
// read back with every CRC checked, then renamed and the folder synced.
// Throws Failure; on a failure or a cancel nothing is left under the
// archive's name.
void packFolder(const QString& folder, const QString& archive, Progress& progress,
                const std::function<bool()>& cancelled = nullptr, DeflateAhead* ahead = nullptr);

// Unpacks `archive` into `folder`. Every entry is checked first: a name that
// is absolute, has a ".." part, a drive letter or a backslash route out, or an
// entry that is a symbolic link or a device, refuses the archive before
// anything is written. Writing never follows a symbolic link already lying in
// the folder. Throws Failure.
void unpackArchive(const QString& archive, const QString& folder);

// Why an entry name is refused, or an empty text when it may be unpacked.
QString refusedEntryReason(const QByteArray& name);

} // namespace zip
} // namespace corvane
