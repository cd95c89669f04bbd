#include "components/zip/ziperrors.h"

#include <QFile>
#include <cstring>

namespace corvane::zip::detail {

Failure zipFailure(zip_error_t* error, const QString& what)
{
    return Failure(10000 + zip_error_code_zip(error), kZipSource,
                   QStringLiteral("%1: %2").arg(what, QString::fromLocal8Bit(zip_error_strerror(error))));
}

Failure archiveFailure(zip_t* za, const QString& what)
{
    return zipFailure(zip_get_error(za), what);
}

Failure errnoFailure(int number, const QString& what)
{
    return Failure(number, kZipSource, QStringLiteral("%1: %2").arg(what, QString::fromLocal8Bit(std::strerror(number))));
}

zip_t* openToRead(const QString& path)
{
    return openArchive(path, ZIP_RDONLY | ZIP_CHECKCONS);
}

zip_t* openArchive(const QString& path, int flags)
{
    int code = 0;
    zip_t* za = zip_open(QFile::encodeName(path).constData(), flags, &code);
    if (!za) {
        zip_error_t error;
        zip_error_init_with_code(&error, code);
        const Failure failure = zipFailure(&error, path);
        zip_error_fini(&error);
        throw failure;
    }
    return za;
}

} // namespace corvane::zip::detail
