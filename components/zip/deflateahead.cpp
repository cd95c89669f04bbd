#include "components/zip/deflateahead.h"

#include "components/zip/ziperrors.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

namespace corvane::zip {

using namespace detail;

namespace {

constexpr int kChunk = 1 << 18;

// An unnamed file in `folder`: it goes when its descriptor is closed.
int openScratch(const QString& folder)
{
    const QByteArray dir = QFile::encodeName(folder);
    int fd = ::open(dir.constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (fd >= 0)
        return fd;
    if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL)
        throw errnoFailure(errno, folder);
    // A file system without unnamed files: a named one, unlinked at once.
    QByteArray name = dir + "/.deflate-XXXXXX";
    fd = ::mkostemp(name.data(), O_CLOEXEC);
    if (fd < 0)
        throw errnoFailure(errno, folder);
    ::unlink(name.constData());
    return fd;
}

void writeAll(int fd, const char* data, size_t size, const QString& what)
{
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            throw errnoFailure(errno, what);
        }
        data += n;
        size -= size_t(n);
    }
}

struct Fd {
    int fd;
    ~Fd()
    {
        if (fd >= 0)
            ::close(fd);
    }
};

struct Stream {
    z_stream z{};
    bool open = false;
    ~Stream()
    {
        if (open)
            deflateEnd(&z);
    }
};

} // namespace

int DeflateAhead::cores()
{
    return std::clamp(int(std::thread::hardware_concurrency()), 1, 8);
}

DeflateAhead::DeflateAhead(const QString& scratchFolder, int workers)
{
    if (workers <= 0)
        workers = cores();
    try {
        for (int i = 0; i < workers; ++i)
            scratch_.push_back(openScratch(scratchFolder));
    } catch (...) {
        for (int fd : scratch_)
            ::close(fd);
        throw;
    }
    for (int i = 0; i < workers; ++i)
        threads_.emplace_back(&DeflateAhead::work, this, scratch_.at(size_t(i)));
}

DeflateAhead::~DeflateAhead()
{
    {
        std::lock_guard lock(mutex_);
        stop_ = true;
    }
    changed_.notify_all();
    for (auto& t : threads_)
        t.join();
    for (int fd : scratch_)
        ::close(fd);
}

void DeflateAhead::add(const QString& path)
{
    struct stat st {};
    const qint64 size = ::stat(QFile::encodeName(path).constData(), &st) == 0 ? qint64(st.st_size) : 0;
    {
        std::lock_guard lock(mutex_);
        queue_.push_back(path);
        queuedBytes_ += size;
    }
    changed_.notify_all();
}

bool DeflateAhead::idle() const
{
    std::lock_guard lock(mutex_);
    return queue_.empty() && busy_ == 0;
}

bool DeflateAhead::waitIdle(int milliseconds) const
{
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::milliseconds(milliseconds), [&] { return queue_.empty() && busy_ == 0; });
}

qint64 DeflateAhead::queuedBytes() const
{
    std::lock_guard lock(mutex_);
    return queuedBytes_;
}

qint64 DeflateAhead::doneBytes() const
{
    std::lock_guard lock(mutex_);
    return doneBytes_;
}

void DeflateAhead::cancel()
{
    {
        std::lock_guard lock(mutex_);
        stop_ = true;
        queue_.clear();
    }
    changed_.notify_all();
}

std::optional<DeflateAhead::Deflated> DeflateAhead::find(dev_t device, ino_t inode, qint64 size, const timespec& mtime) const
{
    std::lock_guard lock(mutex_);
    const auto it = done_.find({device, inode});
    if (it == done_.end() || it->second.data.size != size || it->second.mtime.tv_sec != mtime.tv_sec
        || it->second.mtime.tv_nsec != mtime.tv_nsec)
        return std::nullopt;
    return it->second.data;
}

std::exception_ptr DeflateAhead::failure(const QString& path) const
{
    std::lock_guard lock(mutex_);
    const auto it = failed_.find(path);
    return it == failed_.end() ? nullptr : it->second;
}

void DeflateAhead::work(int scratch)
{
    qint64 scratchEnd = 0;
    for (;;) {
        QString path;
        {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [&] { return stop_ || !queue_.empty(); });
            if (stop_)
                return;
            path = queue_.front();
            queue_.pop_front();
            ++busy_;
        }
        Key key{};
        timespec mtime{};
        std::exception_ptr failure;
        Deflated deflated;
        try {
            deflated = deflateFile(path, scratch, scratchEnd, key, mtime);
        } catch (...) {
            failure = std::current_exception();
        }
        {
            std::lock_guard lock(mutex_);
            if (failure)
                failed_[path] = failure;
            else
                done_[key] = {deflated, mtime};
            --busy_;
        }
        changed_.notify_all();
    }
}

DeflateAhead::Deflated DeflateAhead::deflateFile(const QString& path, int scratch, qint64& scratchEnd, Key& key,
                                                 timespec& mtime)
{
    Fd in{::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC)};
    if (in.fd < 0)
        throw errnoFailure(errno, path);
    struct stat st {};
    if (::fstat(in.fd, &st) != 0)
        throw errnoFailure(errno, path);
    if (!S_ISREG(st.st_mode))
        throw errnoFailure(EISDIR, path);
    key = {st.st_dev, st.st_ino};
    mtime = st.st_mtim;

    Stream stream;
    // Raw deflate at level 6, as libzip itself writes it.
    if (deflateInit2(&stream.z, 6, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        throw errnoFailure(ENOMEM, path);
    stream.open = true;
    std::vector<char> input(kChunk);
    std::vector<char> output(kChunk);
    Deflated d;
    d.fd = scratch;
    d.offset = scratchEnd;
    uLong crc = crc32(0, nullptr, 0);
    for (bool end = false; !end;) {
        {
            std::lock_guard lock(mutex_);
            if (stop_)
                throw errnoFailure(ECANCELED, path);
        }
        ssize_t n = ::read(in.fd, input.data(), input.size());
        if (n < 0) {
            if (errno == EINTR)
                continue;
            throw errnoFailure(errno, path);
        }
        end = n == 0;
        crc = crc32(crc, reinterpret_cast<const Bytef*>(input.data()), uInt(n));
        d.size += n;
        stream.z.next_in = reinterpret_cast<Bytef*>(input.data());
        stream.z.avail_in = uInt(n);
        do {
            stream.z.next_out = reinterpret_cast<Bytef*>(output.data());
            stream.z.avail_out = uInt(output.size());
            if (deflate(&stream.z, end ? Z_FINISH : Z_NO_FLUSH) == Z_STREAM_ERROR)
                throw errnoFailure(EIO, path);
            const size_t produced = output.size() - stream.z.avail_out;
            writeAll(scratch, output.data(), produced, path);
            scratchEnd += qint64(produced);
            d.compressedSize += qint64(produced);
        } while (stream.z.avail_out == 0);
        std::lock_guard lock(mutex_);
        doneBytes_ += n;
    }
    d.crc = quint32(crc);
    // A file that grew or shrank while it was read no longer matches its stat.
    if (d.size != qint64(st.st_size))
        mtime = {};
    return d;
}

} // namespace corvane::zip
