#include "components/zip/zipengine.h"

#include "components/zip/ziperrors.h"
#include "core/failure.h"
#include "core/freespace.h"

#include <QDir>
#include <QFile>
#include <QList>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace corvane::zip {

using namespace detail;

namespace {

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
    zip_t* za = openToRead(archive);
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
    qint64 unpacked = 0;
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
        if (!isDir && (st.valid & ZIP_STAT_SIZE))
            unpacked += qint64(st.size);
    }
    // A full disk is found before the first file rather than in the middle.
    requireFreeSpace(folder, unpacked, QStringLiteral("extracting ") + archive);

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
