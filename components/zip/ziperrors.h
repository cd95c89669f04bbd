#pragma once

// What packing and unpacking share; not for use outside the zip component.

#include "core/failure.h"

#include <QString>
#include <zip.h>

namespace corvane::zip::detail {

inline const QString kZipSource = QStringLiteral("ORVZipLib");
constexpr long kPathFileAccessError = 75;

Failure zipFailure(zip_error_t* error, const QString& what);
Failure archiveFailure(zip_t* za, const QString& what);
Failure errnoFailure(int number, const QString& what);

// Opens an archive to read, checking its directory; throws Failure.
// Opens an archive with libzip's flags; a failure names the file.
zip_t* openArchive(const QString& path, int flags);
zip_t* openToRead(const QString& path);

} // namespace corvane::zip::detail
