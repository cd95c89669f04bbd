#include "components/zip/zipengine.h"

#include "core/failure.h"
#include "core/progress.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QList>
#include <QHash>
#include <QStringList>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <memory>
#include <thread>
#include <vector>

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

// What goes into the archive: every file and folder under the packed folder.
struct Item {
    QString path;
    QByteArray name; // UTF-8, with the folder's own name in front; folders end with '/'
    bool isDir = false;
    time_t mtime = 0;
    zip_uint32_t mode = 0;
    qint64 size = 0;
};

QList<Item> collectItems(const QString& folder, const QString& top)
{
    QStringList paths;
    QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        paths << it.next();
    paths.sort();

    const QDir base(folder);
    QList<Item> items;
    struct stat st {};
    if (::stat(QFile::encodeName(folder).constData(), &st) != 0)
        throw errnoFailure(errno, folder);
    items.append({folder, (top + QLatin1Char('/')).toUtf8(), true, st.st_mtime, zip_uint32_t(st.st_mode), 0});
    for (const QString& path : paths) {
        if (::lstat(QFile::encodeName(path).constData(), &st) != 0)
            throw errnoFailure(errno, path);
        Item item{path, (top + QLatin1Char('/') + base.relativeFilePath(path)).toUtf8(), false, st.st_mtime,
                  zip_uint32_t(st.st_mode), qint64(st.st_size)};
        if (S_ISLNK(st.st_mode))
            // The staging folder holds copies only; a link would point anywhere on restore.
            throw Failure(kPathFileAccessError, kZipSource, QStringLiteral("%1: a symbolic link is not packed").arg(path));
        if (S_ISDIR(st.st_mode)) {
            item.isDir = true;
            item.name += '/';
        } else if (!S_ISREG(st.st_mode)) {
            throw Failure(kPathFileAccessError, kZipSource, QStringLiteral("%1: not a file or folder").arg(path));
        }
        items.append(item);
    }
    return items;
}

void setAttributes(zip_t* za, zip_int64_t index, const Item& item)
{
    if (zip_file_set_mtime(za, zip_uint64_t(index), item.mtime, 0) < 0
        || zip_file_set_external_attributes(za, zip_uint64_t(index), 0, ZIP_OPSYS_UNIX, item.mode << 16) < 0)
        throw archiveFailure(za, item.path);
}

zip_t* openNew(const QString& path)
{
    int code = 0;
    zip_t* za = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!za) {
        zip_error_t error;
        zip_error_init_with_code(&error, code);
        const Failure failure = zipFailure(&error, path);
        zip_error_fini(&error);
        throw failure;
    }
    return za;
}

// Closes an archive being written; on failure it is discarded (nothing kept of it).
void closeOrDiscard(zip_t* za, const QString& path)
{
    if (zip_close(za) != 0) {
        const Failure failure = archiveFailure(za, path);
        zip_discard(za);
        throw failure;
    }
}

struct Shared {
    std::atomic<bool> cancel{false};
};

struct Part {
    QString path;
    QList<int> items;          // indexes into the item list
    qint64 bytes = 0;
    std::atomic<int> permille{0};
    std::exception_ptr failure;
};

void onPartProgress(zip_t*, double fraction, void* part)
{
    static_cast<Part*>(part)->permille = int(fraction * 1000.0);
}

int onPartCancel(zip_t*, void* shared)
{
    return static_cast<Shared*>(shared)->cancel ? 1 : 0;
}

// One part of the files, compressed into an archive of its own.
void writePart(Part& part, const QList<Item>& items, Shared& shared)
{
    try {
        zip_t* za = openNew(part.path);
        try {
            for (int i : part.items) {
                const Item& item = items.at(i);
                zip_source_t* source = zip_source_file(za, QFile::encodeName(item.path).constData(), 0, -1);
                if (!source)
                    throw archiveFailure(za, item.path);
                const zip_int64_t index = zip_file_add(za, item.name.constData(), source, ZIP_FL_ENC_UTF_8);
                if (index < 0) {
                    zip_source_free(source);
                    throw archiveFailure(za, item.path);
                }
                if (zip_set_file_compression(za, zip_uint64_t(index), ZIP_CM_DEFLATE, 6) < 0)
                    throw archiveFailure(za, item.path);
            }
            zip_register_progress_callback_with_state(za, 0.001, onPartProgress, nullptr, &part);
            zip_register_cancel_callback_with_state(za, onPartCancel, nullptr, &shared);
        } catch (...) {
            zip_discard(za);
            throw;
        }
        closeOrDiscard(za, part.path);
    } catch (...) {
        part.failure = std::current_exception();
        shared.cancel = true;
    }
}

// Compresses the files in parts on every core, then gathers the compressed
// entries into `temp` in the folder's order without compressing them again.
zip_int64_t writeArchive(const QList<Item>& items, const QString& temp, Progress& progress,
                         const std::function<bool()>& cancelled)
{
    const int cores = std::clamp(int(std::thread::hardware_concurrency()), 1, 8);
    std::vector<std::unique_ptr<Part>> parts;
    for (int i = 0; i < cores; ++i) {
        parts.push_back(std::make_unique<Part>());
        parts.back()->path = temp + QStringLiteral(".%1").arg(i);
    }
    // Largest files first, each to the part with the fewest bytes so far.
    QList<int> files;
    for (int i = 0; i < items.size(); ++i)
        if (!items.at(i).isDir)
            files << i;
    std::sort(files.begin(), files.end(), [&](int a, int b) { return items.at(a).size > items.at(b).size; });
    for (int i : files) {
        Part* lightest = std::min_element(parts.begin(), parts.end(), [](const auto& a, const auto& b) {
                             return a->bytes < b->bytes;
                         })->get();
        lightest->items << i;
        lightest->bytes += items.at(i).size + 1;
    }
    std::erase_if(parts, [](const auto& p) { return p->items.isEmpty(); });

    struct Cleanup {
        std::vector<std::unique_ptr<Part>>& parts;
        ~Cleanup()
        {
            for (const auto& p : parts)
                QFile::remove(p->path);
        }
    } cleanup{parts};

    Shared shared;
    qint64 total = 0;
    for (const auto& p : parts)
        total += p->bytes;
    std::vector<std::thread> threads;
    for (auto& p : parts)
        threads.emplace_back(writePart, std::ref(*p), std::cref(items), std::ref(shared));
    // The caller's thread reports progress and asks about cancelling while the parts are written.
    for (;;) {
        bool done = true;
        qint64 weighted = 0;
        for (const auto& p : parts) {
            weighted += p->bytes * p->permille / 1000;
            done = done && (p->permille >= 1000 || p->failure);
        }
        progress.setValue(total > 0 ? int(weighted * 950 / total) : 0);
        if (cancelled && cancelled())
            shared.cancel = true;
        if (done || shared.cancel)
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    for (auto& t : threads)
        t.join();
    for (const auto& p : parts)
        if (p->failure)
            std::rethrow_exception(p->failure);
    if (shared.cancel)
        throw Failure(kPathFileAccessError, kZipSource, QStringLiteral("%1: cancelled").arg(temp));

    // Gather: entries copied in their compressed form.
    std::vector<zip_t*> opened;
    struct Closer {
        std::vector<zip_t*>& opened;
        ~Closer()
        {
            for (zip_t* z : opened)
                zip_discard(z);
        }
    } closer{opened};
    QHash<int, QPair<zip_t*, zip_uint64_t>> where;
    for (const auto& p : parts) {
        int code = 0;
        zip_t* z = zip_open(QFile::encodeName(p->path).constData(), ZIP_RDONLY, &code);
        if (!z)
            throw Failure(kPathFileAccessError, kZipSource, QStringLiteral("%1: cannot be read back").arg(p->path));
        opened.push_back(z);
        for (int k = 0; k < p->items.size(); ++k)
            where.insert(p->items.at(k), {z, zip_uint64_t(k)});
    }
    zip_t* za = openNew(temp);
    try {
        for (int i = 0; i < items.size(); ++i) {
            const Item& item = items.at(i);
            zip_int64_t index = -1;
            if (item.isDir) {
                index = zip_dir_add(za, item.name.constData(), ZIP_FL_ENC_UTF_8);
            } else {
                const auto [from, at] = where.value(i);
                zip_source_t* source = zip_source_zip(za, from, at, ZIP_FL_COMPRESSED, 0, -1);
                if (!source)
                    throw archiveFailure(za, item.path);
                index = zip_file_add(za, item.name.constData(), source, ZIP_FL_ENC_UTF_8);
                if (index < 0)
                    zip_source_free(source);
            }
            if (index < 0)
                throw archiveFailure(za, item.path);
            setAttributes(za, index, item);
        }
    } catch (...) {
        zip_discard(za);
        throw;
    }
    const zip_int64_t entries = zip_get_num_entries(za, 0);
    closeOrDiscard(za, temp);
    return entries;
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
    progress.setRange(0, 1000);
    progress.setValue(0);
    try {
        const zip_int64_t entries = writeArchive(collectItems(source.absoluteFilePath(), source.fileName()), temp,
                                                 progress, cancelled);
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
