#include "db/stallwatch.h"

#include "db/connection.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace corvane {

StallWatch::StallWatch(ConnectionSettings settings, qint64 threadId, StallTiming timing)
    : settings_(std::move(settings)), threadId_(threadId),
      timing_{timing.after, std::max(timing.every, std::chrono::milliseconds(1))}
{
    thread_ = std::thread([this] { run(); });
}

StallWatch::~StallWatch()
{
    {
        std::lock_guard lock(mutex_);
        quit_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

// begin and end only note the statement (no wake-up per statement): the
// watching thread looks every `every` whether one has run for `after`.
void StallWatch::begin()
{
    std::lock_guard lock(mutex_);
    running_ = true;
    ++statement_;
    startedAt_ = std::chrono::steady_clock::now();
    stopped_.clear();
}

std::optional<Failure> StallWatch::end()
{
    std::lock_guard lock(mutex_);
    running_ = false;
    if (stopped_.isEmpty())
        return std::nullopt;
    return Failure(ENOSPC, QStringLiteral("MySQL"), std::exchange(stopped_, QString()));
}

void StallWatch::run()
{
    std::unique_lock lock(mutex_);
    while (!wake_.wait_for(lock, timing_.every, [&] { return quit_; })) {
        if (!running_ || !stopped_.isEmpty() || std::chrono::steady_clock::now() - startedAt_ < timing_.after)
            continue;
        const quint64 statement = statement_;
        lock.unlock();
        const QString cause = diagnose();
        lock.lock();
        // Stopped under the lock: the statement looked at cannot end and the next begin meanwhile.
        if (!cause.isEmpty() && running_ && statement_ == statement && stop())
            stopped_ = cause;
    }
    lock.unlock();
    probe_.reset();
}

QString StallWatch::diagnose()
{
    try {
        if (!probe_) {
            probe_ = std::make_unique<Connection>(Connection::Watch::Off);
            probe_->open(settings_);
        }
        const Connection::Result r = probe_->query(
            QStringLiteral("SELECT STATE, @@datadir, @@tmpdir FROM information_schema.PROCESSLIST WHERE ID=%1").arg(threadId_));
        if (r.rows.isEmpty() || !r.rows.first().value(0).toString().contains(QLatin1String("free space"), Qt::CaseInsensitive))
            return QString();
        const QString where = settings_.server.isEmpty() ? QString() : QStringLiteral(" on ") + settings_.server;
        return QStringLiteral("The disk holding the database is full: the server%1 was waiting for free space to write, so "
                              "the statement was stopped after it had waited. Its data folder is %2 and its temporary folder %3; "
                              "free some space there and try again (a table written at the time may need a check and repair).")
            .arg(where, r.rows.first().value(1).toString(), r.rows.first().value(2).toString());
    } catch (const Failure&) {
        // No answer from a second connection: the statement goes on as it would without the watch.
        probe_.reset();
        return QString();
    }
}

bool StallWatch::stop()
{
    try {
        probe_->execute(QStringLiteral("KILL QUERY %1").arg(threadId_));
        return true;
    } catch (const Failure&) {
        return false;
    }
}

} // namespace corvane
