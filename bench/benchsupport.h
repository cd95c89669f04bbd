#pragma once

// What every benchmark shares: alternating runs of our work and its anchor,
// the median of each, the peak memory, and the result line bench/run reads.

#include <QElapsedTimer>
#include <QFile>
#include <QString>
#include <QTextStream>

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include <sys/resource.h>

namespace corvane::bench {

// Seconds of one run.
inline double seconds(const std::function<void()>& work)
{
    QElapsedTimer t;
    t.start();
    work();
    return double(t.nsecsElapsed()) / 1e9;
}

inline double median(std::vector<double> v)
{
    if (v.empty())
        return 0;
    std::sort(v.begin(), v.end());
    const size_t n = v.size();
    return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

// Runs ours and the anchor in turn, `repetitions` times each, so that both see
// the same machine; returns the two medians in seconds. `reset` runs untimed
// before each timed run (e.g. to remove what the previous run wrote).
inline std::pair<double, double> alternate(int repetitions, const std::function<void()>& ours,
                                           const std::function<void()>& anchor,
                                           const std::function<void()>& reset = {})
{
    std::vector<double> a, b;
    for (int i = 0; i < repetitions; ++i) {
        if (reset)
            reset();
        a.push_back(seconds(ours));
        if (reset)
            reset();
        b.push_back(seconds(anchor));
    }
    return {median(a), median(b)};
}

// The peak resident memory of this process (and of its waited-for children when asked), in MB.
inline double peakMemoryMb(bool children = false)
{
    rusage usage{};
    getrusage(children ? RUSAGE_CHILDREN : RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0;
}

// Whether bench/run asked for the short run.
inline bool quick()
{
    return qEnvironmentVariableIntValue("CORVANE_BENCH_QUICK") == 1;
}

// One result for bench/run (tab-separated in $CORVANE_BENCH_RESULTS) and a line for a reader.
// anchorSeconds < 0: no anchor (a memory goal only).
inline void report(const QString& name, const QString& work, double oursSeconds, double anchorSeconds, double peakMb,
                   const QString& goal)
{
    QTextStream out(stdout);
    out << QStringLiteral("%1: %2: ours %3 s").arg(name, work).arg(oursSeconds, 0, 'f', 3);
    if (anchorSeconds >= 0)
        out << QStringLiteral(", anchor %1 s, ratio %2").arg(anchorSeconds, 0, 'f', 3).arg(oursSeconds / anchorSeconds, 0, 'f', 2);
    out << QStringLiteral(", peak %1 MB (goal %2)").arg(peakMb, 0, 'f', 0).arg(goal) << Qt::endl;
    const QString path = qEnvironmentVariable("CORVANE_BENCH_RESULTS");
    if (path.isEmpty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::Append | QIODevice::Text))
        return;
    QTextStream tsv(&file);
    tsv << name << '\t' << work << '\t' << QString::number(oursSeconds, 'f', 4) << '\t'
        << (anchorSeconds >= 0 ? QString::number(anchorSeconds, 'f', 4) : QStringLiteral("-")) << '\t'
        << QString::number(peakMb, 'f', 1) << '\t' << goal << '\n';
}

} // namespace corvane::bench
