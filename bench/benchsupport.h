#pragma once

// What every benchmark shares: alternating runs of our work and its anchor,
// the median of each, the peak memory, the benchmarks' database server, the
// standard tools, and the result line bench/run reads.

#include "db/connectionsettings.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace corvane {
class Connection;
class PrivateServer;
}

namespace corvane::bench {

// Seconds of one run.
double seconds(const std::function<void()>& work);

double median(std::vector<double> v);

// Runs ours and the anchor in turn, `repetitions` times each, so that both see
// the same machine; returns the two medians in seconds. `reset` runs untimed
// before each timed run (e.g. to remove what the previous run wrote); when
// `resetAnchor` is given, it runs before the anchor's runs instead.
std::pair<double, double> alternate(int repetitions, const std::function<void()>& ours,
                                    const std::function<void()>& anchor, const std::function<void()>& reset = {},
                                    const std::function<void()>& resetAnchor = {});

// The same where each run measures itself (e.g. up to a moment inside a child
// process) and returns its seconds.
std::pair<double, double> alternateMeasured(int repetitions, const std::function<double()>& ours,
                                            const std::function<double()>& anchor,
                                            const std::function<void()>& reset = {},
                                            const std::function<void()>& resetAnchor = {});

// The peak resident memory of this process (or of its waited-for children), in MB.
double peakMemoryMb(bool children = false);
// The peak resident memory of a running process so far (VmHWM), in MB; 0 when unknown.
double peakMemoryMbOf(qint64 pid);

// Whether bench/run asked for the short run.
bool quick();
// How many times each side runs ($CORVANE_BENCH_REPETITIONS, else 3).
int repetitions();
// The rounds of the backup row: 2 in a full run, where one round of ours and
// the anchor over the 1 GB database takes minutes; else repetitions().
int largeRepetitions();

// One result for bench/run (tab-separated in $CORVANE_BENCH_RESULTS, with the
// rounds of the last alternation) and a line for a reader.
// anchorSeconds < 0: no anchor (a memory goal only). The goal reads "ratio <= 1.5" or "peak <= 200 MB".
void report(const QString& name, const QString& work, double oursSeconds, double anchorSeconds, double peakMb,
            const QString& goal);

// A line of progress on standard error (bench/run shows it while the table is made).
void note(const QString& text);

// The folder the benchmarks of one bench/run share ($CORVANE_BENCH_WORK), else
// a temporary folder of this process.
QString workFolder();

// The database server of a benchmark: the private server of the work folder
// (started when needed; left running for the next benchmark of the same
// bench/run, else stopped at the end), or the running server at
// $CORVANE_BENCH_SOCKET (user root).
class BenchServer {
public:
    explicit BenchServer(const QString& database);
    ~BenchServer();
    BenchServer(const BenchServer&) = delete;
    BenchServer& operator=(const BenchServer&) = delete;

    const ConnectionSettings& settings() const { return settings_; }
    const QString& socket() const { return settings_.socket; }
    // A new connection to the database (made when missing).
    std::shared_ptr<Connection> connect() const;
    // The server's data folder, without a trailing slash.
    QString dataDirectory() const;
    // The arguments that make `mariadb` reach the database as we do.
    QStringList clientArguments() const;

private:
    ConnectionSettings settings_;
    std::unique_ptr<PrivateServer> server_;
    bool stopAtEnd_ = false;
};

// Runs a program to its end: `input` on its standard input, its standard
// output into `outputFile` when given. Throws with its error output when it fails.
void run(const QString& program, const QStringList& arguments, const QString& workingDirectory = {},
         const QString& outputFile = {}, const QByteArray& input = {});

// Runs the body of a benchmark's main: a failure is printed and gives 1.
int guarded(const QString& name, const std::function<void()>& body);

} // namespace corvane::bench
