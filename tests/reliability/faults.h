#pragma once

#include "db/privateserver.h"
#include "support/clirunner.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QProcess>
#include <QScopeGuard>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvane::test {

inline bool runTool(const QString& program, const QStringList& args)
{
    QProcess p;
    p.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    p.start(program, args);
    return p.waitForFinished(30000) && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0;
}

// A tmpfs on path; false where the machine does not allow mounting.
inline bool mountTmpfs(const QString& path, const QString& options)
{
    return runTool(QStringLiteral("mount"), {QStringLiteral("-t"), QStringLiteral("tmpfs"), QStringLiteral("-o"), options,
                                             QStringLiteral("tmpfs"), path});
}

inline bool remountReadOnly(const QString& path)
{
    return runTool(QStringLiteral("mount"), {QStringLiteral("-o"), QStringLiteral("remount,ro"), path});
}

inline void unmount(const QString& path)
{
    runTool(QStringLiteral("umount"), {QStringLiteral("-l"), path});
}

// A folder whose file system is full. Where the machine allows mounting it is
// a small tmpfs filled up to the last byte; elsewhere a file-size limit makes
// every write past a few bytes fail, in this process (within run()) and in
// the programs prepared through prepare().
class FullDisk {
public:
    static constexpr rlim_t kLimit = 16; // bytes, for the file-size limit

    FullDisk()
    {
        path_ = base_.path() + QStringLiteral("/full");
        QDir().mkpath(path_);
        mounted_ = mountTmpfs(path_, QStringLiteral("size=256k"));
        qInfo("full disk: %s", mounted_ ? "a full 256 KiB tmpfs" : "a 16-byte file-size limit (this machine does not allow mounting)");
    }

    ~FullDisk()
    {
        if (mounted_)
            unmount(path_);
    }

    bool isTmpfs() const { return mounted_; }
    QString path() const { return path_; }
    // The reason a failed write gives.
    QString reason() const { return mounted_ ? QStringLiteral("No space left on device") : QStringLiteral("File too large"); }

    // Empties the folder and gives back its space.
    void clear()
    {
        for (const QString& name : QDir(path_).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
            const QFileInfo entry(path_ + QLatin1Char('/') + name);
            if (entry.isDir() && !entry.isSymLink())
                QDir(entry.filePath()).removeRecursively();
            else
                QFile::remove(entry.filePath());
        }
    }

    // Makes the disk full; files written before stay as they are.
    void fill()
    {
        if (!mounted_)
            return;
        const QString filler = path_ + QStringLiteral("/.filler");
        QFile::remove(filler);
        const int fd = ::open(QFile::encodeName(filler).constData(), O_WRONLY | O_CREAT, 0600);
        QVERIFY(fd >= 0);
        const QByteArray block(4096, 'x');
        while (::write(fd, block.constData(), size_t(block.size())) > 0) {
        }
        while (::write(fd, block.constData(), 1) > 0) {
        }
        ::close(fd);
    }

    // Runs work with the disk full in this process.
    template <typename Work>
    void run(Work work)
    {
        fill();
        if (mounted_) {
            work();
            return;
        }
        rlimit old{};
        ::getrlimit(RLIMIT_FSIZE, &old);
        const auto oldHandler = ::signal(SIGXFSZ, SIG_IGN);
        const auto restore = qScopeGuard([&] {
            ::setrlimit(RLIMIT_FSIZE, &old);
            ::signal(SIGXFSZ, oldHandler);
        });
        limitFileSize();
        work();
    }

    // For a program that must find the disk full.
    void prepare(QProcess& process)
    {
        fill();
        if (!mounted_)
            process.setChildProcessModifier(limitFileSize);
    }

private:
    // Writes past kLimit bytes fail (instead of raising a signal).
    static void limitFileSize()
    {
        ::signal(SIGXFSZ, SIG_IGN);
        rlimit low{};
        ::getrlimit(RLIMIT_FSIZE, &low);
        low.rlim_cur = kLimit;
        ::setrlimit(RLIMIT_FSIZE, &low);
    }

    QTemporaryDir base_;
    QString path_;
    bool mounted_ = false;
};

// Stops the private server of a test folder however the test ends, before the folder goes.
struct StopAtEnd {
    QString app;
    ~StopAtEnd() { PrivateServer(app).stop(); }
};

// The built corvane command, with the disk full when one is given.
inline CliResult cli(const QStringList& args, const QMap<QString, QString>& env = {}, FullDisk* full = nullptr)
{
    QProcess process;
    if (full)
        full->prepare(process);
    startCli(process, args, env);
    return finishCli(process);
}

// The permission bits of a file, -1 when it is not there.
inline int modeOf(const QString& path)
{
    struct stat st{};
    return ::stat(QFile::encodeName(path).constData(), &st) == 0 ? int(st.st_mode & 07777) : -1;
}

// Files of a folder, hidden ones included, but not the filler of a full disk.
inline QStringList filesIn(const QString& folder)
{
    QStringList names = QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System);
    names.removeAll(QStringLiteral(".filler"));
    return names;
}

} // namespace corvane::test
