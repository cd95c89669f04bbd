#pragma once

#include <QString>

namespace corvane {

// Where the database is: a configured server, or the private server of the
// application folder when "ORVCONFIG.INI" names none.
struct ConnectionSettings {
    QString server;     // host name; empty with a socket or the private server
    int port = 0;       // 0: the default port
    QString socket;     // Unix socket path
    QString user;
    QString password;
    QString database = QStringLiteral("fbt");
    bool privateServer = true;
    // Why the settings file could not be read; opening such settings fails
    // with this text rather than falling back to the private server.
    QString problem;

    // The [MySql] section of ORVCONFIG.INI, else the private server of appPath.
    static ConnectionSettings fromConfig(const QString& appPath);
    QString describe() const;
};

} // namespace corvane
