#include "components/zip/zipengine.h"

#include "core/failure.h"
#include "core/progress.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QList>
#include <QStringList>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zip.h>

namespace corvane::zip {

namespace {

const QString kZipSource = QStringLiteral("ORVZipLib");
constexpr long kPathFileAccessError = 75;

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

void syncPath(const QString& path, bool directory)
{
    const int fd = ::open(QFile::encodeName(path).constData(), (directory ? O_RDONLY | O_DIRECTORY : O_RDONLY) | O_CLOEXEC);
    if (fd < 0)
        throw errnoFailure(errno, path);
    const int rc = ::fsync(fd);
    const int saved = errno;
    ::close(fd);
    if (rc != 0)
        throw errnoFailure(saved, path);
}

struct PackState {
    Progress* progress;
    const std::function<bool()>* cancelled;
};

void onProgress(zip_t*, double fraction, void* state)
{
    static_cast<PackState*>(state)->progress->setValue(int(fraction * 1000.0));
}

int onCancel(zip_t*, void* state)
{
    const auto* cancelled = static_cast<PackState*>(state)->cancelled;
    return (*cancelled && (*cancelled)()) ? 1 : 0;
}

// Reads every entry through: libzip checks each entry's CRC at its end.
void verifyArchive(const QString& path, zip_int64_t expectedEntries)
{
    int code = 0;
    zip_t* za = zip_open(QFile::encodeName(path).constData(), ZIP_RDONLY | ZIP_CHECKCONS, &code);
    if (!za) {
        zip_error_t error;
        zip_error_init_with_code(&error, code);
        const Failure failure = zipFailure(&error, path);
        zip_error_fini(&error);
        throw failure;
    }
    const zip_int64_t count = zip_get_num_entries(za, 0);
    if (count != expectedEntries) {
        zip_discard(za);
        throw Failure(kPathFileAccessError, kZipSource,
                      QStringLiteral("%1: %2 entries written, %3 read back").arg(path).arg(expectedEntries).arg(count));
    }
    QByteArray buffer(1 << 16, Qt::Uninitialized);
    for (zip_int64_t i = 0; i < count; ++i) {
        zip_file_t* file = zip_fopen_index(za, zip_uint64_t(i), 0);
        if (!file) {
            const Failure failure = archiveFailure(za, path);
            zip_discard(za);
            throw failure;
        }
        zip_int64_t n = 0;
        while ((n = zip_fread(file, buffer.data(), zip_uint64_t(buffer.size()))) > 0) {
        }
        if (n < 0) {
            const Failure failure = zipFailure(zip_file_get_error(file),
                                               QStringLiteral("%1, entry %2").arg(path, QString::fromUtf8(zip_get_name(za, zip_uint64_t(i), 0))));
            zip_fclose(file);
            zip_discard(za);
            throw failure;
        }
        zip_fclose(file);
    }
    zip_discard(za);
}

void addEntries(zip_t* za, const QString& folder, const QString& top)
{
    QStringList paths;
    QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        paths << it.next();
    paths.sort();

    const QDir base(folder);
    if (zip_dir_add(za, (top + QLatin1Char('/')).toUtf8().constData(), ZIP_FL_ENC_UTF_8) < 0)
        throw archiveFailure(za, top);
    for (const QString& path : paths) {
        const QFileInfo info(path);
        const QString name = top + QLatin1Char('/') + base.relativeFilePath(path);
        const QByteArray utf8 = name.toUtf8();
        zip_int64_t index = -1;
        if (info.isSymLink()) {
            // The staging folder holds copies only; a link would point anywhere on restore.
            throw Failure(kPathFileAccessError, kZipSource, QStringLiteral("%1: a symbolic link is not packed").arg(path));
        } else if (info.isDir()) {
            index = zip_dir_add(za, (utf8 + '/').constData(), ZIP_FL_ENC_UTF_8);
        } else if (info.isFile()) {
            zip_source_t* source = zip_source_file(za, QFile::encodeName(path).constData(), 0, -1);
            if (!source)
                throw archiveFailure(za, path);
            index = zip_file_add(za, utf8.constData(), source, ZIP_FL_ENC_UTF_8 | ZIP_FL_OVERWRITE);
            if (index < 0) {
                zip_source_free(source);
                throw archiveFailure(za, path);
            }
            if (zip_set_file_compression(za, zip_uint64_t(index), ZIP_CM_DEFLATE, 6) < 0)
                throw archiveFailure(za, path);
        } else {
            throw Failure(kPathFileAccessError, kZipSource, QStringLiteral("%1: not a file or folder").arg(path));
        }
        if (index < 0)
            throw archiveFailure(za, path);
        struct stat st {};
        if (::lstat(QFile::encodeName(path).constData(), &st) != 0)
            throw errnoFailure(errno, path);
        if (zip_file_set_mtime(za, zip_uint64_t(index), st.st_mtime, 0) < 0
            || zip_file_set_external_attributes(za, zip_uint64_t(index), 0, ZIP_OPSYS_UNIX,
                                                zip_uint32_t(st.st_mode) << 16) < 0)
            throw archiveFailure(za, path);
    }
}

// ---- unpacking ----

struct Fd {
    int fd = -1;
    explicit Fd(int f = -1) : fd(f) {}
    ~Fd()
    {
        if (fd >= 0)
            ::close(fd);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    Fd(Fd&& o) noexcept : fd(o.fd) { o.fd = -1; }
    Fd& operator=(Fd&& o) noexcept
    {
        std::swap(fd, o.fd);
        return *this;
    }
};

// The entry name as its parts, backslashes taken as separators.
QList<QByteArray> partsOf(const QByteArray& name)
{
    QByteArray n = name;
    n.replace('\\', '/');
    QList<QByteArray> parts;
    for (const QByteArray& p : n.split('/'))
        if (!p.isEmpty() && p != ".")
            parts << p;
    return parts;
}

// Opens (creating when missing) the folder `part` inside `parent`, never through a link.
Fd openFolder(int parent, const QByteArray& part, const QString& where)
{
    if (::mkdirat(parent, part.constData(), 0755) != 0 && errno != EEXIST)
        throw errnoFailure(errno, where);
    const int fd = ::openat(parent, part.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        throw errnoFailure(errno == ELOOP || errno == ENOTDIR ? ELOOP : errno, where);
    return Fd(fd);
}

void writeEntry(zip_t* za, zip_uint64_t index, int root, const QList<QByteArray>& parts, bool isDir,
                const zip_stat_t& st, zip_uint32_t mode, const QString& where)
{
    Fd dir(::dup(root));
    const int folders = isDir ? int(parts.size()) : int(parts.size()) - 1;
    for (int i = 0; i < folders; ++i)
        dir = openFolder(dir.fd, parts.at(i), where);
    if (isDir)
        return;

    zip_file_t* file = zip_fopen_index(za, index, 0);
    if (!file)
        throw archiveFailure(za, where);
    const mode_t perms = mode ? (mode & 0777) : 0644;
    // A new file each time: an existing one may be a link, or share its data with another name.
    if (::unlinkat(dir.fd, parts.last().constData(), 0) != 0 && errno != ENOENT) {
        const int saved = errno;
        zip_fclose(file);
        throw errnoFailure(saved, where);
    }
    Fd out(::openat(dir.fd, parts.last().constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, perms | 0600));
    if (out.fd < 0) {
        const int saved = errno;
        zip_fclose(file);
        throw errnoFailure(saved, where);
    }
    QByteArray buffer(1 << 16, Qt::Uninitialized);
    zip_int64_t n = 0;
    while ((n = zip_fread(file, buffer.data(), zip_uint64_t(buffer.size()))) > 0) {
        const char* p = buffer.constData();
        zip_int64_t left = n;
        while (left > 0) {
            const ssize_t w = ::write(out.fd, p, size_t(left));
            if (w < 0) {
                if (errno == EINTR)
                    continue;
                const int saved = errno;
                zip_fclose(file);
                throw errnoFailure(saved, where);
            }
            p += w;
            left -= w;
        }
    }
    if (n < 0) {
        const Failure failure = zipFailure(zip_file_get_error(file), where);
        zip_fclose(file);
        throw failure;
    }
    zip_fclose(file);
    if (::fchmod(out.fd, perms) != 0)
        throw errnoFailure(errno, where);
    if (st.valid & ZIP_STAT_MTIME) {
        const struct timespec times[2] = {{st.mtime, 0}, {st.mtime, 0}};
        ::futimens(out.fd, times);
    }
}

} // namespace

void packFolder(const QString& folder, const QString& archive, Progress& progress, const std::function<bool()>& cancelled)
{
    const QFileInfo source(folder);
    if (!source.isDir())
        throw Failure(err::PathNotFound, kZipSource, QStringLiteral("%1: folder not found").arg(folder));
    const QFileInfo target(archive);
    const QString temp = target.absolutePath() + QStringLiteral("/.") + target.fileName() + QStringLiteral(".part");
    QFile::remove(temp);

    int code = 0;
    zip_t* za = zip_open(QFile::encodeName(temp).constData(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!za) {
        zip_error_t error;
        zip_error_init_with_code(&error, code);
        const Failure failure = zipFailure(&error, archive);
        zip_error_fini(&error);
        throw failure;
    }
    PackState state{&progress, &cancelled};
    progress.setRange(0, 1000);
    progress.setValue(0);
    zip_int64_t entries = 0;
    try {
        addEntries(za, source.absoluteFilePath(), source.fileName());
        entries = zip_get_num_entries(za, 0);
        zip_register_progress_callback_with_state(za, 0.001, onProgress, nullptr, &state);
        zip_register_cancel_callback_with_state(za, onCancel, nullptr, &state);
        if (zip_close(za) != 0)
            throw archiveFailure(za, archive);
    } catch (...) {
        // zip_close leaves the archive open when it fails; discarding drops what it wrote.
        zip_discard(za);
        QFile::remove(temp);
        throw;
    }
    try {
        syncPath(temp, false);
        verifyArchive(temp, entries);
        if (::rename(QFile::encodeName(temp).constData(), QFile::encodeName(archive).constData()) != 0)
            throw errnoFailure(errno, archive);
        syncPath(target.absolutePath(), true);
    } catch (...) {
        QFile::remove(temp);
        throw;
    }
    progress.setValue(1000);
}

QString refusedEntryReason(const QByteArray& name)
{
    if (name.isEmpty())
        return QStringLiteral("an empty name");
    if (name.contains('\0'))
        return QStringLiteral("a NUL character in the name");
    if (name.startsWith('/') || name.startsWith('\\'))
        return QStringLiteral("an absolute path");
    if (name.size() >= 2 && name.at(1) == ':')
        return QStringLiteral("a drive letter");
    const QList<QByteArray> parts = partsOf(name);
    if (parts.isEmpty())
        return QStringLiteral("no name");
    for (const QByteArray& part : parts)
        if (part == "..")
            return QStringLiteral("a \"..\" part");
    return QString();
}

void unpackArchive(const QString& archive, const QString& folder)
{
    int code = 0;
    zip_t* za = zip_open(QFile::encodeName(archive).constData(), ZIP_RDONLY | ZIP_CHECKCONS, &code);
    if (!za) {
        zip_error_t error;
        zip_error_init_with_code(&error, code);
        const Failure failure = zipFailure(&error, archive);
        zip_error_fini(&error);
        throw failure;
    }
    struct Closer {
        zip_t* za;
        ~Closer() { zip_discard(za); }
    } closer{za};

    struct Entry {
        zip_uint64_t index;
        QList<QByteArray> parts;
        bool isDir;
        zip_stat_t st;
        zip_uint32_t mode;
        QString name;
    };
    QList<Entry> entries;
    const zip_int64_t count = zip_get_num_entries(za, 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        const auto index = zip_uint64_t(i);
        zip_stat_t st;
        if (zip_stat_index(za, index, ZIP_FL_ENC_RAW, &st) != 0)
            throw archiveFailure(za, archive);
        const QByteArray raw(st.name);
        const QString shown = QString::fromUtf8(zip_get_name(za, index, 0));
        QString reason = refusedEntryReason(raw);
        zip_uint8_t opsys = 0;
        zip_uint32_t attributes = 0;
        zip_file_get_external_attributes(za, index, 0, &opsys, &attributes);
        zip_uint32_t mode = 0;
        if (reason.isEmpty() && opsys == ZIP_OPSYS_UNIX) {
            mode = attributes >> 16;
            const zip_uint32_t type = mode & S_IFMT;
            if (type == S_IFLNK)
                reason = QStringLiteral("a symbolic link");
            else if (type != 0 && type != S_IFREG && type != S_IFDIR)
                reason = QStringLiteral("a device or special file");
        }
        if (!reason.isEmpty())
            throw Failure(kPathFileAccessError, kZipSource,
                          QStringLiteral("%1: entry \"%2\" refused: %3").arg(archive, shown, reason));
        const bool isDir = raw.endsWith('/') || raw.endsWith('\\') || (mode & S_IFMT) == S_IFDIR;
        entries.append(Entry{index, partsOf(raw), isDir, st, mode, shown});
    }

    if (!QDir().mkpath(folder))
        throw Failure(err::PathNotFound, kZipSource, QStringLiteral("%1: cannot create the folder").arg(folder));
    Fd root(::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (root.fd < 0)
        throw errnoFailure(errno, folder);
    for (const Entry& e : entries)
        writeEntry(za, e.index, root.fd, e.parts, e.isDir, e.st, e.mode,
                   QStringLiteral("%1: entry \"%2\"").arg(archive, e.name));
}

} // namespace corvane::zip
