#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <functional>

namespace corvane {

// The private MariaDB server of an application folder: data in
// <AppPath>/MySQL/data, reached only through a Unix socket, MyISAM by default.
// The tests, `corvane server` and the default connection all use this class.
class PrivateServer {
public:
    explicit PrivateServer(QString appPath);

    QString baseDir() const;
    QString dataDir() const;
    QString socketPath() const;
    QString pidFile() const;
    QString logFile() const;
    QString scratchDir() const; // the server's temporary tables
    // Held (flock) by the process that initialises, starts or stops the server.
    QString lockFile() const;

    bool isInitialised() const;
    // The pid of the running server, 0 when none runs.
    qint64 runningPid() const;
    // Whether something answers on the socket with a server greeting.
    bool answers() const;

    // Initialises the folder when empty, recovers from a stale pid file or
    // socket and starts the server; returns when it answers. Does nothing when
    // it runs already. Processes that start it at the same time wait for the
    // one that holds the lock and then use its server. Throws Failure with a
    // clear text on every failure.
    void start(const std::function<void(const QString&)>& report = {});
    // Stops every server of the folder and waits until they are gone; does
    // nothing when none runs.
    void stop();
    // The servers that run on this folder's data (normally one, or none).
    QList<qint64> serverPids() const;

    // The size of the server's log: what it logs later starts there.
    qint64 logSize() const;
    // The messages the server logged from offset on that report a crashed,
    // checked or repaired table (it repairs a table that was open when it
    // was killed when the table is next used).
    QStringList repairReports(qint64 offset) const;

    // The arguments mariadbd runs with on this folder.
    QStringList serverArguments() const;

    // Empty when mariadbd and mariadb-install-db are installed, else the message to show.
    static QString missingProgramsMessage();

private:
    class Lock;
    void recoverStale();
    void launch(const std::function<void(const QString&)>& report);
    void initialise(const std::function<void(const QString&)>& report);
    QString logTail() const;

    QString appPath_;
    qint64 logStart_ = 0;   // the size of the server's log before this start
    qint64 startedPid_ = 0;
};

} // namespace corvane
