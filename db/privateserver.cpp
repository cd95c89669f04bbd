#include "db/privateserver.h"

#include "core/failure.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

#include <cerrno>
#include <cstring>
#include <csignal>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace corvane {

namespace {

const QString kServerSource = QStringLiteral("Corvane.PrivateServer");
constexpr int kStartSeconds = 60;
constexpr int kStopSeconds = 60;

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

} // namespace

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
    if (QFile::encodeName(natural).size() <= 100)
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

QString PrivateServer::logFile() const
{
    return baseDir() + QStringLiteral("/mysqld.err");
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

QString PrivateServer::logTail() const
{
    QFile file(logFile());
    if (!file.open(QIODevice::ReadOnly))
        return QString();
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
    if (!QDir().mkpath(dataDir()))
        throw Failure(err::PathNotFound, kServerSource, QStringLiteral("Cannot create the folder %1").arg(dataDir()));
    if (report)
        report(QStringLiteral("Initialising the database folder %1").arg(dataDir()));
    // mariadb-install-db is a shell script that splits paths at blanks: hand it
    // a link without blanks to the data folder.
    QString installDir = dataDir();
    QString link;
    if (installDir.contains(QLatin1Char(' '))) {
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
}

void PrivateServer::start(const std::function<void(const QString&)>& report)
{
    const QString missing = missingProgramsMessage();
    if (!missing.isEmpty())
        throw Failure(err::FileNotFound, kServerSource, missing);
    if (runningPid() != 0 && answers())
        return;
    recoverStale();
    qint64 startedPid = 0;
    if (runningPid() != 0) {
        // Running but not answering yet (another process is starting it): wait below.
    } else {
        initialise(report);
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
                         QStringLiteral("--skip-name-resolve")};
        if (isRoot())
            args << QStringLiteral("--user=root");
        if (report)
            report(QStringLiteral("Starting the private database server in %1").arg(baseDir()));
        QProcess process;
        process.setProgram(findProgram(QStringLiteral("mariadbd")));
        process.setArguments(args);
        process.setWorkingDirectory(baseDir());
        process.setStandardInputFile(QProcess::nullDevice());
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(QProcess::nullDevice());
        if (!process.startDetached(&startedPid))
            throw Failure(err::InvalidCall, kServerSource, QStringLiteral("Cannot start mariadbd: %1").arg(process.errorString()));
    }
    QDeadlineTimer deadline(kStartSeconds * 1000);
    while (!deadline.hasExpired()) {
        if (answers())
            return;
        if (startedPid != 0 && !processAlive(startedPid))
            break; // it has failed; its log says why
        if (startedPid == 0 && runningPid() == 0)
            break;
        QThread::msleep(100);
    }
    if (answers())
        return;
    throw Failure(2002, kServerSource,
                  QStringLiteral("The private database server in %1 did not start: %2").arg(baseDir(), logTail()));
}

void PrivateServer::stop()
{
    const qint64 pid = runningPid();
    if (pid == 0) {
        recoverStale();
        return;
    }
    ::kill(pid_t(pid), SIGTERM);
    QDeadlineTimer deadline(kStopSeconds * 1000);
    while (processAlive(pid) && !deadline.hasExpired())
        QThread::msleep(50);
    if (processAlive(pid)) {
        ::kill(pid_t(pid), SIGKILL);
        QThread::msleep(200);
    }
    QFile::remove(pidFile());
    if (QFileInfo::exists(socketPath()) && !answers())
        QFile::remove(socketPath());
}

} // namespace corvane
