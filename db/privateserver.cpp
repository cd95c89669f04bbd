#include "db/privateserver.h"

#include "core/failure.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <QDirIterator>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace corvane {

namespace {

const QString kServerSource = QStringLiteral("Corvane.PrivateServer");
constexpr int kStartSeconds = 60;
constexpr int kStopSeconds = 60;
constexpr int kStartPollMs = 2;

QString findProgram(const QString& name)
{
    const QStringList dirs{QStringLiteral("/usr/sbin"), QStringLiteral("/usr/bin"), QStringLiteral("/usr/local/sbin"),
                           QStringLiteral("/usr/local/bin")};
    QString path = QStandardPaths::findExecutable(name);
    if (path.isEmpty())
        path = QStandardPaths::findExecutable(name, dirs);
    return path;
}

bool processAlive(qint64 pid)
{
    if (pid <= 0)
        return false;
    if (::kill(pid_t(pid), 0) != 0 && errno != EPERM)
        return false;
    // A recycled pid belongs to some other program; a zombie is gone already.
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return true;
    const QByteArray line = stat.readAll();
    const qsizetype open = line.indexOf('('), close = line.lastIndexOf(')');
    if (open < 0 || close < open || close + 2 >= line.size())
        return true;
    const QByteArray name = line.mid(open + 1, close - open - 1);
    const char state = line.at(close + 2);
    return state != 'Z' && state != 'X' && (name.startsWith("mariadbd") || name.startsWith("mysqld"));
}

bool isRoot()
{
    return ::geteuid() == 0;
}

QString reason(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

// Makes path and the folders above it; a failure names the folder that could not be made and why.
void makeFolder(const QString& path)
{
    const QString clean = QDir::cleanPath(QDir(path).absolutePath());
    if (QFileInfo(clean).isDir())
        return;
    const QString parent = QFileInfo(clean).absolutePath();
    if (parent != clean)
        makeFolder(parent);
    if (::mkdir(QFile::encodeName(clean).constData(), 0777) != 0 && errno != EEXIST) {
        const int error = errno;
        throw Failure(error, kServerSource, QStringLiteral("Cannot create the folder %1: %2").arg(clean, reason(error)));
    }
}

} // namespace

// One process at a time initialises, starts or stops the server of a folder:
// an exclusive lock on a file in the folder, released when the process ends
// however it ends.
class PrivateServer::Lock {
public:
    Lock(const PrivateServer& server, const std::function<void(const QString&)>& report)
    {
        makeFolder(server.baseDir());
        const QString path = server.lockFile();
        fd_ = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (fd_ < 0) {
            const int error = errno;
            throw Failure(error, kServerSource,
                          QStringLiteral("The private database server cannot be used: the folder %1 cannot be written: %2")
                              .arg(server.baseDir(), reason(error)));
        }
        if (::flock(fd_, LOCK_EX | LOCK_NB) == 0)
            return;
        if (report)
            report(QStringLiteral("Waiting for another process that starts or stops the private database server in %1")
                       .arg(server.baseDir()));
        while (::flock(fd_, LOCK_EX) != 0) {
            if (errno == EINTR)
                continue;
            const int error = errno;
            ::close(fd_);
            throw Failure(error, kServerSource, QStringLiteral("Cannot lock %1: %2").arg(path, reason(error)));
        }
    }
    ~Lock() { ::close(fd_); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    int fd_ = -1;
};

PrivateServer::PrivateServer(QString appPath)
    : appPath_(std::move(appPath))
{
}

QString PrivateServer::baseDir() const
{
    return QDir::cleanPath(QDir(appPath_).absolutePath() + QStringLiteral("/MySQL"));
}

QString PrivateServer::dataDir() const
{
    return baseDir() + QStringLiteral("/data");
}

QString PrivateServer::socketPath() const
{
    const QString natural = baseDir() + QStringLiteral("/mysqld.sock");
    // The socket goes into the connection options, which a ';' would split
    // and which lose tabs and line breaks.
    static const QRegularExpression unsafe(QStringLiteral("[;\\x00-\\x1f\\x7f]"));
    if (QFile::encodeName(natural).size() <= 100 && !unsafe.match(natural).hasMatch())
        return natural;
    // A Unix socket path holds at most 107 bytes: use a short, stable name instead.
    const QByteArray hash = QCryptographicHash::hash(QFile::encodeName(baseDir()), QCryptographicHash::Sha1).toHex().left(16);
    QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (runtime.isEmpty() || QFile::encodeName(runtime).size() > 60)
        runtime = QStringLiteral("/tmp");
    return runtime + QStringLiteral("/corvane-") + QString::fromLatin1(hash) + QStringLiteral(".sock");
}

QString PrivateServer::pidFile() const
{
    return baseDir() + QStringLiteral("/mysqld.pid");
}

QString PrivateServer::scratchDir() const
{
    return baseDir() + QStringLiteral("/tmp");
}

QString PrivateServer::logFile() const
{
    return baseDir() + QStringLiteral("/mysqld.err");
}

QString PrivateServer::lockFile() const
{
    return baseDir() + QStringLiteral("/server.lock");
}

QList<qint64> PrivateServer::serverPids() const
{
    QList<qint64> pids;
    if (const qint64 pid = runningPid())
        pids << pid;
    // Also servers whose pid file was overwritten or removed: every server
    // process whose data folder is this one.
    const QByteArray datadir = "--datadir=" + QFile::encodeName(dataDir());
    QDirIterator it(QStringLiteral("/proc"), QDir::Dirs | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
        it.next();
        bool isNumber = false;
        const qint64 pid = it.fileName().toLongLong(&isNumber);
        if (!isNumber || pids.contains(pid) || !processAlive(pid))
            continue;
        QFile cmdline(it.filePath() + QStringLiteral("/cmdline"));
        if (cmdline.open(QIODevice::ReadOnly) && cmdline.readAll().split('\0').contains(datadir))
            pids << pid;
    }
    return pids;
}

bool PrivateServer::isInitialised() const
{
    return QFileInfo(dataDir() + QStringLiteral("/mysql")).isDir();
}

qint64 PrivateServer::runningPid() const
{
    QFile file(pidFile());
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const qint64 pid = file.readAll().trimmed().toLongLong();
    return processAlive(pid) ? pid : 0;
}

bool PrivateServer::answers() const
{
    const QByteArray path = QFile::encodeName(socketPath());
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (size_t(path.size()) >= sizeof(address.sun_path))
        return false;
    std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return false;
    bool greeted = false;
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0) {
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, 2000) == 1 && (p.revents & POLLIN)) {
            char buffer[8];
            greeted = ::recv(fd, buffer, sizeof(buffer), 0) > 4;
        }
    }
    ::close(fd);
    return greeted;
}

QString PrivateServer::missingProgramsMessage()
{
    QStringList missing;
    if (findProgram(QStringLiteral("mariadbd")).isEmpty())
        missing << QStringLiteral("mariadbd");
    if (findProgram(QStringLiteral("mariadb-install-db")).isEmpty())
        missing << QStringLiteral("mariadb-install-db");
    if (missing.isEmpty())
        return QString();
    return QStringLiteral("The MariaDB server programs are missing (%1): install the Debian packages "
                          "mariadb-server-core and mariadb-client-core")
        .arg(missing.join(QStringLiteral(", ")));
}

qint64 PrivateServer::logSize() const
{
    return QFileInfo(logFile()).size();
}

QStringList PrivateServer::repairReports(qint64 offset) const
{
    static const QRegularExpression repair(QStringLiteral("crashed|repair|Recovering table|Checking table|Found \\d+ of \\d+ rows"),
                                           QRegularExpression::CaseInsensitiveOption);
    QFile file(logFile());
    if (!file.open(QIODevice::ReadOnly) || offset > file.size() || !file.seek(offset))
        return {};
    QStringList lines;
    for (const QByteArray& raw : file.readAll().split('\n')) {
        // "2026-01-31 10:00:00 4 [ERROR] mariadbd: Table './fbt/bill_main' is marked as crashed …": the message alone.
        QString line = QString::fromUtf8(raw).trimmed();
        if (!repair.match(line).hasMatch())
            continue;
        const qsizetype level = line.indexOf(QStringLiteral("] "));
        if (level >= 0)
            line = line.mid(level + 2);
        for (const QString& program : {QStringLiteral("mariadbd: "), QStringLiteral("mysqld: ")})
            if (line.startsWith(program))
                line = line.mid(program.size());
        lines << line.simplified();
    }
    return lines;
}

QString PrivateServer::logTail() const
{
    QFile file(logFile());
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    if (logStart_ > 0)
        file.seek(std::min(logStart_, file.size()));
    const QList<QByteArray> lines = file.readAll().trimmed().split('\n');
    QStringList tail;
    for (qsizetype i = std::max<qsizetype>(0, lines.size() - 3); i < lines.size(); ++i)
        tail << QString::fromUtf8(lines.at(i)).trimmed();
    return tail.join(QStringLiteral(" | "));
}

void PrivateServer::recoverStale()
{
    if (runningPid() != 0)
        return;
    // Left behind by a server that crashed or was killed.
    QFile::remove(pidFile());
    if (QFileInfo::exists(socketPath()) && !answers())
        QFile::remove(socketPath());
}

void PrivateServer::initialise(const std::function<void(const QString&)>& report)
{
    if (isInitialised())
        return;
    const QDir data(dataDir());
    if (data.exists() && !data.isEmpty())
        throw Failure(err::PathNotFound, kServerSource,
                      QStringLiteral("The folder %1 holds files but no database: move them away, then start again").arg(dataDir()));
    if (report)
        report(QStringLiteral("Initialising the database folder %1").arg(dataDir()));
    // Into a folder of its own that becomes the data folder only when
    // complete, so that an interrupted initialisation leaves nothing half made.
    for (const QString& old : QDir(baseDir()).entryList({QStringLiteral("data.new-*")}, QDir::Dirs | QDir::Hidden))
        QDir(baseDir() + QLatin1Char('/') + old).removeRecursively();
    const QString fresh = baseDir() + QStringLiteral("/data.new-") + QString::number(QCoreApplication::applicationPid());
    makeFolder(fresh);
    struct RemoveFolder {
        QString path;
        ~RemoveFolder()
        {
            if (!path.isEmpty())
                QDir(path).removeRecursively();
        }
    } removeFresh{fresh};

    // mariadb-install-db is a shell script that splits paths at blanks and
    // breaks on other characters the shell treats specially: hand it a link
    // with a plain name to the new folder.
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9_./+-]*$"));
    QString installDir = fresh;
    QString link;
    if (!plain.match(installDir).hasMatch()) {
        const QByteArray hash = QCryptographicHash::hash(QFile::encodeName(installDir), QCryptographicHash::Sha1).toHex().left(16);
        link = QDir::tempPath() + QStringLiteral("/corvane-install-") + QString::fromLatin1(hash);
        QFile::remove(link);
        if (!QFile::link(installDir, link))
            throw Failure(err::PathNotFound, kServerSource, QStringLiteral("Cannot create the link %1").arg(link));
        installDir = link;
    }
    struct RemoveLink {
        QString path;
        ~RemoveLink()
        {
            if (!path.isEmpty())
                QFile::remove(path);
        }
    } removeLink{link};
    QStringList args{QStringLiteral("--no-defaults"), QStringLiteral("--datadir=") + installDir,
                     QStringLiteral("--auth-root-authentication-method=normal"), QStringLiteral("--skip-test-db"),
                     // Only a socket is used: a machine whose own name does not resolve must work too.
                     QStringLiteral("--force"), QStringLiteral("--skip-name-resolve"),
                     QStringLiteral("--default-storage-engine=MyISAM"), QStringLiteral("--lower-case-table-names=1")};
    // Temporary tables of its own: several initialisations on one machine
    // must not meet in the shared temporary folder.
    QTemporaryDir scratch(QDir::tempPath() + QStringLiteral("/corvane-install-tmp-XXXXXX"));
    if (scratch.isValid())
        args << QStringLiteral("--tmpdir=") + scratch.path();
    if (isRoot())
        args << QStringLiteral("--user=root");
    QProcess install;
    install.setProcessChannelMode(QProcess::MergedChannels);
    install.start(findProgram(QStringLiteral("mariadb-install-db")), args);
    if (!install.waitForFinished(300000) || install.exitStatus() != QProcess::NormalExit || install.exitCode() != 0) {
        const QString output = QString::fromLocal8Bit(install.readAll()).trimmed().split(QLatin1Char('\n')).mid(0, 5).join(QLatin1Char(' '));
        throw Failure(install.exitCode() ? install.exitCode() : err::InvalidCall, kServerSource,
                      QStringLiteral("mariadb-install-db failed for %1: %2").arg(dataDir(), output));
    }
    if (data.exists())
        data.rmdir(dataDir());
    if (::rename(QFile::encodeName(fresh).constData(), QFile::encodeName(dataDir()).constData()) != 0) {
        const int error = errno;
        throw Failure(error, kServerSource, QStringLiteral("Cannot rename %1 to %2: %3").arg(fresh, dataDir(), reason(error)));
    }
    removeFresh.path.clear();
}

QStringList PrivateServer::serverArguments() const
{
    QStringList args{QStringLiteral("--no-defaults"),
                     QStringLiteral("--datadir=") + dataDir(),
                     QStringLiteral("--socket=") + socketPath(),
                     QStringLiteral("--pid-file=") + pidFile(),
                     QStringLiteral("--log-error=") + logFile(),
                     QStringLiteral("--skip-networking"),
                     QStringLiteral("--default-storage-engine=MyISAM"),
                     QStringLiteral("--default-tmp-storage-engine=MyISAM"),
                     QStringLiteral("--lower-case-table-names=1"),
                     QStringLiteral("--character-set-server=utf8mb4"),
                     QStringLiteral("--collation-server=utf8mb4_general_ci"),
                     QStringLiteral("--sql-mode=NO_ENGINE_SUBSTITUTION"),
                     QStringLiteral("--innodb-buffer-pool-size=16M"),
                     QStringLiteral("--key-buffer-size=16M"),
                     QStringLiteral("--skip-name-resolve"),
                     // Its temporary tables stay out of the shared temporary folder,
                     // which cleaners may empty while the server runs.
                     QStringLiteral("--tmpdir=") + scratchDir()};
    if (isRoot())
        args << QStringLiteral("--user=root");
    return args;
}

void PrivateServer::launch(const std::function<void(const QString&)>& report)
{
    // The server writes into its folder as the user we are: say which folder cannot be written.
    if (::access(QFile::encodeName(dataDir()).constData(), W_OK) != 0) {
        const int error = errno;
        throw Failure(error, kServerSource,
                      QStringLiteral("The private database server cannot start: the folder %1 cannot be written: %2")
                          .arg(dataDir(), reason(error)));
    }
    QDir().mkpath(scratchDir());
    if (report)
        report(QStringLiteral("Starting the private database server in %1").arg(baseDir()));
    // What the server logs from here on is about this start.
    logStart_ = QFileInfo(logFile()).size();
    QProcess process;
    process.setProgram(findProgram(QStringLiteral("mariadbd")));
    process.setArguments(serverArguments());
    process.setWorkingDirectory(baseDir());
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    if (!process.startDetached(&startedPid_))
        throw Failure(err::InvalidCall, kServerSource, QStringLiteral("Cannot start mariadbd: %1").arg(process.errorString()));
}

void PrivateServer::start(const std::function<void(const QString&)>& report)
{
    const QString missing = missingProgramsMessage();
    if (!missing.isEmpty())
        throw Failure(err::FileNotFound, kServerSource, missing);
    if (runningPid() != 0 && answers())
        return;
    const Lock lock(*this, report);
    // The process this one waited for may have started it.
    if (runningPid() != 0 && answers())
        return;
    recoverStale();
    startedPid_ = 0;
    if (runningPid() == 0) {
        initialise(report);
        launch(report);
    }
    // Else running but not answering yet: a server started without the lock, or still recovering.
    QDeadlineTimer deadline(kStartSeconds * 1000);
    while (!deadline.hasExpired()) {
        if (answers())
            return;
        if (startedPid_ != 0 && !processAlive(startedPid_))
            break; // it has failed; its log says why
        if (startedPid_ == 0 && runningPid() == 0)
            break;
        // Until the socket exists, answers() fails at once; from then on it
        // waits for the greeting, which comes as soon as the server is ready.
        QThread::msleep(kStartPollMs);
    }
    if (answers())
        return;
    const QString tail = logTail();
    throw Failure(2002, kServerSource,
                  QStringLiteral("The private database server in %1 did not start: %2")
                      .arg(baseDir(), tail.isEmpty() ? QStringLiteral("it wrote nothing to %1").arg(logFile()) : tail));
}

void PrivateServer::stop()
{
    if (!QFileInfo(baseDir()).isDir())
        return;
    const Lock lock(*this, {});
    const QList<qint64> pids = serverPids();
    for (const qint64 pid : pids)
        ::kill(pid_t(pid), SIGTERM);
    QDeadlineTimer deadline(kStopSeconds * 1000);
    auto anyAlive = [&] { return std::any_of(pids.begin(), pids.end(), processAlive); };
    while (anyAlive() && !deadline.hasExpired())
        QThread::msleep(50);
    for (const qint64 pid : pids) {
        if (processAlive(pid))
            ::kill(pid_t(pid), SIGKILL);
    }
    deadline = QDeadlineTimer(5000);
    while (anyAlive() && !deadline.hasExpired())
        QThread::msleep(20);
    QFile::remove(pidFile());
    if (QFileInfo::exists(socketPath()) && !answers())
        QFile::remove(socketPath());
}

} // namespace corvane
