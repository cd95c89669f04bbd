#pragma once

#include <QString>

namespace corvane::backup {

// Copies a file over `target` (replaced when it exists), keeping its
// modification time. Throws Failure with the system's reason.
void copyFileOver(const QString& source, const QString& target);

} // namespace corvane::backup
