#pragma once

#include <QString>
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

    bool isInitialised() const;
    // The pid of the running server, 0 when none runs.
    qint64 runningPid() const;
    // Whether something answers on the socket with a server greeting.
    bool answers() const;

    // Initialises the folder when empty, recovers from a stale pid file or
    // socket and starts the server; returns when it answers. Does nothing when
    // it runs already. Throws Failure with a clear text on every failure.
    void start(const std::function<void(const QString&)>& report = {});
    // Stops the server and waits until it is gone; does nothing when stopped.
    void stop();

    // Empty when mariadbd and mariadb-install-db are installed, else the message to show.
    static QString missingProgramsMessage();

private:
    void recoverStale();
    void initialise(const std::function<void(const QString&)>& report);
    QString logTail() const;

    QString appPath_;
};

} // namespace corvane
