#include "components/zip/zipengine.h"

#include "components/zip/deflateahead.h"

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

// Reads the entries that `next` hands out through to their end, where
// libzip checks each one's CRC.
void readEntries(const QString& path, std::atomic<zip_int64_t>& next, zip_int64_t count)
{
    zip_t* za = openToRead(path);
    QByteArray buffer(1 << 16, Qt::Uninitialized);
    for (zip_int64_t i = 0; (i = next++) < count;) {
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

// Reads every entry back on every core.
void verifyArchive(const QString& path, zip_int64_t expectedEntries)
{
    zip_t* za = openToRead(path);
    const zip_int64_t count = zip_get_num_entries(za, 0);
    zip_discard(za);
    if (count != expectedEntries)
        throw Failure(kPathFileAccessError, kZipSource,
                      QStringLiteral("%1: %2 entries written, %3 read back").arg(path).arg(expectedEntries).arg(count));
    const int cores = DeflateAhead::cores();
    std::atomic<zip_int64_t> next{0};
    auto failures = std::vector<std::exception_ptr>(size_t(cores));
    std::vector<std::thread> threads;
    for (int k = 0; k < cores; ++k)
        threads.emplace_back([&, k] {
            try {
                readEntries(path, next, count);
            } catch (...) {
                failures[size_t(k)] = std::current_exception();
                next = count;
            }
        });
    for (auto& t : threads)
        t.join();
    for (const auto& failure : failures)
        if (failure)
            std::rethrow_exception(failure);
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

// The source of an entry deflated ahead: libzip copies its data as it is.
struct RawState {
    DeflateAhead::Deflated data;
    time_t mtime = 0;
    qint64 position = 0;
    zip_error_t error{};
};

zip_int64_t rawSource(void* state, void* data, zip_uint64_t length, zip_source_cmd_t command)
{
    auto* s = static_cast<RawState*>(state);
    switch (command) {
    case ZIP_SOURCE_OPEN:
        s->position = 0;
        return 0;
    case ZIP_SOURCE_READ: {
        const zip_uint64_t wanted = std::min<zip_uint64_t>(length, zip_uint64_t(s->data.compressedSize - s->position));
        zip_uint64_t got = 0;
        while (got < wanted) {
            const ssize_t n = ::pread(s->data.fd, static_cast<char*>(data) + got, wanted - got,
                                      off_t(s->data.offset + s->position + qint64(got)));
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0) {
                zip_error_set(&s->error, ZIP_ER_READ, n < 0 ? errno : EIO);
                return -1;
            }
            got += zip_uint64_t(n);
        }
        s->position += qint64(got);
        return zip_int64_t(got);
    }
    case ZIP_SOURCE_CLOSE:
        return 0;
    case ZIP_SOURCE_STAT: {
        auto* st = static_cast<zip_stat_t*>(data);
        zip_stat_init(st);
        st->valid = ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE | ZIP_STAT_COMP_METHOD | ZIP_STAT_CRC | ZIP_STAT_MTIME;
        st->size = zip_uint64_t(s->data.size);
        st->comp_size = zip_uint64_t(s->data.compressedSize);
        st->comp_method = ZIP_CM_DEFLATE;
        st->crc = s->data.crc;
        st->mtime = s->mtime;
        return sizeof(*st);
    }
    case ZIP_SOURCE_ERROR:
        return zip_error_to_data(&s->error, data, length);
    case ZIP_SOURCE_FREE:
        zip_error_fini(&s->error);
        delete s;
        return 0;
    case ZIP_SOURCE_SUPPORTS:
        return ZIP_SOURCE_SUPPORTS_READABLE;
    default:
        zip_error_set(&s->error, ZIP_ER_OPNOTSUPP, 0);
        return -1;
    }
}

struct CloseState {
    Progress* progress;
    const std::function<bool()>* cancelled;
};

void onCloseProgress(zip_t*, double fraction, void* state)
{
    static_cast<CloseState*>(state)->progress->setValue(900 + int(fraction * 50.0));
}

int onCloseCancel(zip_t*, void* state)
{
    const auto* cancelled = static_cast<CloseState*>(state)->cancelled;
    return *cancelled && (*cancelled)() ? 1 : 0;
}

// Waits for the workers, showing their progress up to 900 of 1000; a cancel stops them.
void waitFor(DeflateAhead& workers, Progress& progress, const std::function<bool()>& cancelled, int& shown)
{
    for (;;) {
        const bool idle = workers.waitIdle(20);
        const qint64 queued = workers.queuedBytes();
        const qint64 done = workers.doneBytes();
        shown = std::max(shown, queued > 0 ? int(std::min(done, queued) * 900 / queued) : 900);
        progress.setValue(shown);
        if (cancelled && cancelled()) {
            workers.cancel();
            throw Failure(kPathFileAccessError, kZipSource, QStringLiteral("cancelled"));
        }
        if (idle)
            return;
    }
}

// Deflates on every core whatever was not deflated ahead, then writes the
// entries into `temp` in the folder's order, copying the deflated data as it is.
zip_int64_t writeArchive(const QList<Item>& items, const QString& temp, Progress& progress,
                         const std::function<bool()>& cancelled, DeflateAhead* ahead)
{
    const auto lookUp = [&](const DeflateAhead& from, int i) -> std::optional<DeflateAhead::Deflated> {
        struct stat st {};
        if (::lstat(QFile::encodeName(items.at(i).path).constData(), &st) != 0)
            throw errnoFailure(errno, items.at(i).path);
        return from.find(st.st_dev, st.st_ino, qint64(st.st_size), st.st_mtim);
    };

    int shown = 0;
    if (ahead)
        waitFor(*ahead, progress, cancelled, shown);
    // The deflated data of each file: what was deflated ahead and is unchanged, the rest deflated now.
    std::vector<std::optional<DeflateAhead::Deflated>> deflated(size_t(items.size()));
    QList<int> pending;
    for (int i = 0; i < items.size(); ++i)
        if (!items.at(i).isDir && !(ahead && (deflated[size_t(i)] = lookUp(*ahead, i))))
            pending << i;
    // Workers of its own only for what is left, and no more of them than files.
    std::optional<DeflateAhead> own;
    if (!pending.isEmpty()) {
        own.emplace(QFileInfo(temp).absolutePath(), std::min(int(pending.size()), DeflateAhead::cores()));
        for (int i : pending)
            own->add(items.at(i).path);
        waitFor(*own, progress, cancelled, shown);
    }
    for (int i : pending) {
        if (const std::exception_ptr failure = own->failure(items.at(i).path))
            std::rethrow_exception(failure);
        deflated[size_t(i)] = lookUp(*own, i);
    }

    zip_t* za = openNew(temp);
    try {
        for (int i = 0; i < items.size(); ++i) {
            const Item& item = items.at(i);
            zip_int64_t index = -1;
            if (item.isDir) {
                index = zip_dir_add(za, item.name.constData(), ZIP_FL_ENC_UTF_8);
            } else {
                const std::optional<DeflateAhead::Deflated>& data = deflated[size_t(i)];
                if (!data) // changed while it was deflated
                    throw Failure(kPathFileAccessError, kZipSource, QStringLiteral("%1: changed while packing").arg(item.path));
                auto* state = new RawState{*data, item.mtime, 0, {}};
                zip_error_init(&state->error);
                zip_source_t* source = zip_source_function(za, rawSource, state);
                if (!source) {
                    zip_error_fini(&state->error);
                    delete state;
                    throw archiveFailure(za, item.path);
                }
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
    CloseState state{&progress, &cancelled};
    zip_register_progress_callback_with_state(za, 0.01, onCloseProgress, nullptr, &state);
    zip_register_cancel_callback_with_state(za, onCloseCancel, nullptr, &state);
    const zip_int64_t entries = zip_get_num_entries(za, 0);
    closeOrDiscard(za, temp);
    return entries;
}
} // namespace

void packFolder(const QString& folder, const QString& archive, Progress& progress, const std::function<bool()>& cancelled,
                DeflateAhead* ahead)
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
                                                 progress, cancelled, ahead);
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
