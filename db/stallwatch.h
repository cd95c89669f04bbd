#pragma once

#include "core/failure.h"
#include "db/connectionsettings.h"

#include <QString>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace corvane {

class Connection;

// How soon a running statement is looked at, and how often after that.
struct StallTiming {
    std::chrono::milliseconds after{20000};
    std::chrono::milliseconds every{5000};
};

// Looks after the statements of one connection. On a full disk the server
// fails no write: it waits for space, and the client waits with it until its
// read timeout. A statement that has run for `after` is looked at every
// `every` from a second connection; only when the server reports it waiting
// for free space is it stopped (KILL QUERY), and the statement then fails
// with a message naming the disk. A statement that is long but working is
// never stopped for its length.
class StallWatch {
public:
    // threadId: the server's id of the watched connection.
    StallWatch(ConnectionSettings settings, qint64 threadId, StallTiming timing);
    ~StallWatch();
    StallWatch(const StallWatch&) = delete;
    StallWatch& operator=(const StallWatch&) = delete;

    // A statement starts.
    void begin();
    // The statement ended; the failure to report instead of the driver's
    // when the watch stopped it, else nothing.
    std::optional<Failure> end();

private:
    void run();
    // The message when the server waits for free space for the statement, else empty.
    QString diagnose();
    // Stops the running statement on the server.
    bool stop();

    const ConnectionSettings settings_;
    const qint64 threadId_;
    const StallTiming timing_;
    std::unique_ptr<Connection> probe_; // used by the watching thread only
    std::mutex mutex_;
    std::condition_variable wake_;
    bool quit_ = false;
    bool running_ = false;
    quint64 statement_ = 0;
    std::chrono::steady_clock::time_point startedAt_;
    QString stopped_; // why the running statement was stopped
    std::thread thread_;
};

} // namespace corvane
