#pragma once

#include <QString>

namespace corvane::backup {

enum class PlaceKind { Local, Network, Removable };

// Where a folder lies: a network path (starting "//" or "\\", or on a network
// file system), a removable disk (under /media or /run/media, or on a device
// the kernel marks removable), or a local disk. `mounts` is the text of
// /proc/self/mounts; empty reads the real one.
PlaceKind classifyPlace(const QString& folder, const QString& mounts = QString());

} // namespace corvane::backup
