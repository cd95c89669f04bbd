// Times the start of the private database server until it answers against a
// bare mariadbd with the same arguments whose readiness a tight loop detects
// (connect, then wait for the greeting, no pauses). The lag of our detection
// is measured in our runs: a second tight loop watches the same start, and
// the lag is how much later than it our start returns.
//   bench_server_start [ROUNDS]
#include "benchsupport.h"
#include "core/failure.h"
#include "db/privateserver.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextStream>

#include <cstring>
#include <exception>
#include <thread>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace corvane;

namespace {

const QString kBench = QStringLiteral("bench");

// Whether the server greets on the socket: false at once while nothing listens.
bool greets(const QByteArray& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    bool greeted = false;
    if (fd >= 0 && ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0) {
        pollfd p{fd, POLLIN, 0};
        char buffer[8];
        greeted = ::poll(&p, 1, 10000) == 1 && ::recv(fd, buffer, sizeof(buffer), 0) > 4;
    }
    if (fd >= 0)
        ::close(fd);
    return greeted;
}

// Waits in a tight loop until the server greets; the time it did, on the clock's scale.
qint64 waitForGreeting(const QByteArray& socket, const QElapsedTimer& clock)
{
    while (!greets(socket))
        if (clock.elapsed() > 60000)
            throw Failure(1, kBench, QStringLiteral("mariadbd did not answer within a minute"));
    return clock.nsecsElapsed();
}

void startBare(const PrivateServer& server, const QString& program)
{
    QProcess process;
    process.setProgram(program);
    process.setArguments(server.serverArguments());
    process.setWorkingDirectory(server.baseDir());
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    if (!process.startDetached())
        throw Failure(1, kBench, QStringLiteral("cannot start mariadbd: ") + process.errorString());
    QElapsedTimer clock;
    clock.start();
    waitForGreeting(QFile::encodeName(server.socketPath()), clock);
}

// Our start, and how much later than a tight loop watching beside it it returned, in ms.
double startWatched(PrivateServer& server)
{
    QElapsedTimer clock;
    clock.start();
    qint64 greeted = 0;
    std::exception_ptr failure;
    std::thread watcher([&] {
        try {
            greeted = waitForGreeting(QFile::encodeName(server.socketPath()), clock);
        } catch (...) {
            failure = std::current_exception();
        }
    });
    server.start();
    const qint64 returned = clock.nsecsElapsed();
    watcher.join();
    if (failure)
        std::rethrow_exception(failure);
    return double(returned - greeted) / 1e6;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    const int rounds = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : (bench::quick() ? 3 : 9);
    QTemporaryDir dir;
    PrivateServer server(dir.filePath(QStringLiteral("app")));
    int status = 0;
    try {
        const QString program = QStandardPaths::findExecutable(QStringLiteral("mariadbd"), {QStringLiteral("/usr/sbin"), QStringLiteral("/usr/bin")});
        if (program.isEmpty())
            throw Failure(1, kBench, PrivateServer::missingProgramsMessage());
        // Initialised once, and started once so that both find its files in the page cache.
        server.start([&](const QString& text) { out << text << Qt::endl; });
        server.stop();
        std::vector<double> lags;
        const auto [ours, anchor] = bench::alternate(
            rounds, [&] { lags.push_back(startWatched(server)); }, [&] { startBare(server, program); }, [&] { server.stop(); });
        server.stop();
        const double lag = bench::median(lags);
        out << QStringLiteral("detection lag behind a tight loop: median %1 ms, largest %2 ms")
                   .arg(lag, 0, 'f', 2)
                   .arg(*std::max_element(lags.begin(), lags.end()), 0, 'f', 2)
            << Qt::endl;
        bench::report(QStringLiteral("server-start"), QStringLiteral("private server start to ready, lag %1 ms").arg(lag, 0, 'f', 1),
                      ours, anchor, bench::peakMemoryMb(), QStringLiteral("lag <= 10 ms"));
    } catch (const std::exception& e) {
        out << "failed: " << e.what() << Qt::endl;
        status = 1;
    }
    server.stop();
    return status;
}
