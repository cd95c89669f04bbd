#include "components/zip/zipengine.h"

#include "components/zip/ziperrors.h"
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

using namespace detail;

namespace {

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
    zip_t* za = openToRead(path);
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
    return openArchive(path, ZIP_CREATE | ZIP_TRUNCATE);
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
} // namespace corvane::zip
