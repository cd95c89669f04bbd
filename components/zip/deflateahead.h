#pragma once

#include <QString>

#include <condition_variable>
#include <deque>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include <sys/types.h>
#include <time.h>

namespace corvane::zip {

// Files deflated (raw deflate, level 6) on worker threads ahead of packing,
// so that compressing overlaps the work still filling the folder and uses
// every core. The deflated data waits in scratch files that are unlinked as
// soon as they are opened: nothing is left behind, whatever happens.
class DeflateAhead {
public:
    // A file as it was deflated: its data lies in `fd` at `offset`.
    struct Deflated {
        int fd = -1;
        qint64 offset = 0;
        qint64 compressedSize = 0;
        qint64 size = 0;
        quint32 crc = 0;
    };

    // The scratch files are made in `scratchFolder`; `workers` 0 means cores().
    explicit DeflateAhead(const QString& scratchFolder, int workers = 0);
    // How many threads work the machine's cores: one per core, at most eight.
    static int cores();
    // Stops the workers (a file half done is dropped) and closes the scratch files.
    ~DeflateAhead();
    DeflateAhead(const DeflateAhead&) = delete;
    DeflateAhead& operator=(const DeflateAhead&) = delete;

    // Queues a file; its bytes count from now in queuedBytes().
    void add(const QString& path);

    // Whether every queued file is done (deflated or failed).
    bool idle() const;
    // Waits at most `milliseconds` for idle(); returns idle().
    bool waitIdle(int milliseconds) const;
    qint64 queuedBytes() const;
    qint64 doneBytes() const;
    // Stops the workers at their next chunk; the files not done count as failed.
    void cancel();

    // The deflated data of the file of this device and inode when it was
    // deflated at this size and modification time; nothing when it was not
    // queued, is not done yet, failed or changed since.
    std::optional<Deflated> find(dev_t device, ino_t inode, qint64 size, const timespec& mtime) const;
    // Why the file of `path` could not be deflated (a Failure), or null.
    std::exception_ptr failure(const QString& path) const;

private:
    struct Key {
        dev_t device;
        ino_t inode;
        bool operator<(const Key& o) const { return device != o.device ? device < o.device : inode < o.inode; }
    };
    struct Result {
        Deflated data;
        timespec mtime{};
    };

    void work(int scratch);
    Deflated deflateFile(const QString& path, int scratch, qint64& scratchEnd, Key& key, timespec& mtime);

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::deque<QString> queue_;
    int busy_ = 0;
    bool stop_ = false;
    qint64 queuedBytes_ = 0;
    qint64 doneBytes_ = 0;
    std::map<Key, Result> done_;
    std::map<QString, std::exception_ptr> failed_;
    std::vector<int> scratch_;
    std::vector<std::thread> threads_;
};

} // namespace corvane::zip
