#include "bench/benchsupport.h"

#include "core/failure.h"
#include "db/connection.h"
#include "db/privateserver.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>

#include <sys/resource.h>

namespace corvane::bench {

namespace {

const QString kSource = QStringLiteral("bench");

// The rounds of the last alternation, for the result line; 0 when none ran.
int lastRounds = 0;

double vmHwmMb(const QString& statusFile)
{
    QFile status(statusFile);
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024.0;
    return 0;
}

} // namespace

double seconds(const std::function<void()>& work)
{
    QElapsedTimer t;
    t.start();
    work();
    return double(t.nsecsElapsed()) / 1e9;
}

double median(std::vector<double> v)
{
    if (v.empty())
        return 0;
    std::sort(v.begin(), v.end());
    const size_t n = v.size();
    return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

std::pair<double, double> alternateMeasured(int repetitions, const std::function<double()>& ours,
                                            const std::function<double()>& anchor,
                                            const std::function<void()>& reset,
                                            const std::function<void()>& resetAnchor)
{
    std::vector<double> a, b;
    for (int i = 0; i < repetitions; ++i) {
        if (reset)
            reset();
        a.push_back(ours());
        if (resetAnchor)
            resetAnchor();
        else if (reset)
            reset();
        b.push_back(anchor());
        note(QStringLiteral("  round %1: ours %2 s, anchor %3 s").arg(i + 1).arg(a.back(), 0, 'f', 3).arg(b.back(), 0, 'f', 3));
    }
    lastRounds = repetitions;
    return {median(a), median(b)};
}

std::pair<double, double> alternate(int repetitions, const std::function<void()>& ours,
                                    const std::function<void()>& anchor, const std::function<void()>& reset,
                                    const std::function<void()>& resetAnchor)
{
    return alternateMeasured(
        repetitions, [&] { return seconds(ours); }, [&] { return seconds(anchor); }, reset, resetAnchor);
}

double peakMemoryMb(bool children)
{
    rusage usage{};
    getrusage(children ? RUSAGE_CHILDREN : RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0;
}

double peakMemoryMbOf(qint64 pid)
{
    return vmHwmMb(QStringLiteral("/proc/%1/status").arg(pid));
}

bool quick()
{
    return qEnvironmentVariableIntValue("CORVANE_BENCH_QUICK") == 1;
}

int repetitions()
{
    bool ok = false;
    const int n = qEnvironmentVariableIntValue("CORVANE_BENCH_REPETITIONS", &ok);
    return ok && n > 0 ? n : 3;
}

int largeRepetitions()
{
    return quick() || qEnvironmentVariableIsSet("CORVANE_BENCH_REPETITIONS") ? repetitions() : 2;
}

void note(const QString& text)
{
    QTextStream(stderr) << text << Qt::endl;
}

void report(const QString& name, const QString& work, double oursSeconds, double anchorSeconds, double peakMb,
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
        << QString::number(peakMb, 'f', 1) << '\t' << goal << '\t'
        << (lastRounds > 0 ? QString::number(lastRounds) : QStringLiteral("-")) << '\n';
    lastRounds = 0;
}

QString workFolder()
{
    const QString shared = qEnvironmentVariable("CORVANE_BENCH_WORK");
    if (!shared.isEmpty()) {
        QDir().mkpath(shared);
        return QDir(shared).absolutePath();
    }
    static QTemporaryDir own;
    return own.path();
}

BenchServer::BenchServer(const QString& database)
{
    settings_.privateServer = false;
    settings_.user = QStringLiteral("root");
    settings_.database = database;
    settings_.socket = qEnvironmentVariable("CORVANE_BENCH_SOCKET");
    if (!settings_.socket.isEmpty())
        return;
    server_ = std::make_unique<PrivateServer>(workFolder() + QStringLiteral("/server"));
    stopAtEnd_ = qEnvironmentVariableIsEmpty("CORVANE_BENCH_WORK");
    server_->start([](const QString& text) { note(text); });
    settings_.socket = server_->socketPath();
}

BenchServer::~BenchServer()
{
    if (server_ && stopAtEnd_)
        server_->stop();
}

std::shared_ptr<Connection> BenchServer::connect() const
{
    auto connection = std::make_shared<Connection>();
    connection->open(settings_, true);
    return connection;
}

QString BenchServer::dataDirectory() const
{
    QString dir = connect()->query(QStringLiteral("SELECT @@datadir")).rows.value(0).value(0).toString();
    while (dir.endsWith(QLatin1Char('/')))
        dir.chop(1);
    return dir;
}

QStringList BenchServer::clientArguments() const
{
    return {QStringLiteral("--socket=") + settings_.socket, QStringLiteral("--user=") + settings_.user, settings_.database};
}

void run(const QString& program, const QStringList& arguments, const QString& workingDirectory, const QString& outputFile,
         const QByteArray& input)
{
    QProcess p;
    if (!outputFile.isEmpty())
        p.setStandardOutputFile(outputFile);
    if (!workingDirectory.isEmpty())
        p.setWorkingDirectory(workingDirectory);
    p.start(program, arguments);
    if (!input.isEmpty())
        p.write(input);
    p.closeWriteChannel();
    if (!p.waitForFinished(-1) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
        throw Failure(1, kSource,
                      QStringLiteral("%1 failed: %2%3")
                          .arg(program, p.errorString(), QString::fromLocal8Bit(p.readAllStandardError())));
}

int guarded(const QString& name, const std::function<void()>& body)
{
    try {
        body();
        return 0;
    } catch (const std::exception& e) {
        QTextStream(stderr) << name << ": " << e.what() << Qt::endl;
        return 1;
    }
}

} // namespace corvane::bench
