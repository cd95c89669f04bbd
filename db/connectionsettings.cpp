#include "db/connectionsettings.h"

#include "core/inifile.h"
#include "core/settings.h"
#include "db/privateserver.h"

namespace corvane {

ConnectionSettings ConnectionSettings::fromConfig(const QString& appPath)
{
    const QString file = orvConfigPath();
    auto get = [&](const char* key, const QString& def = QString()) {
        return IniFile::read(file, QStringLiteral("MySql"), QString::fromLatin1(key), def).trimmed();
    };
    ConnectionSettings s;
    s.problem = IniFile::readProblem(file);
    if (!s.problem.isEmpty()) {
        s.problem += QStringLiteral(": the database server it names is not known");
        s.privateServer = false;
        return s;
    }
    s.server = get("Server");
    s.socket = get("Socket");
    s.port = get("Port", QStringLiteral("0")).toInt();
    s.user = get("User");
    s.password = get("Password");
    s.database = get("Database", QStringLiteral("fbt"));
    if (s.database.isEmpty())
        s.database = QStringLiteral("fbt");
    s.privateServer = s.server.isEmpty() && s.socket.isEmpty();
    if (s.privateServer) {
        const PrivateServer server(appPath);
        s.socket = server.socketPath();
        s.user = QStringLiteral("root");
        s.password.clear();
    }
    return s;
}

QString ConnectionSettings::describe() const
{
    QString where = !server.isEmpty() ? server + (port ? QStringLiteral(":%1").arg(port) : QString())
                                      : QStringLiteral("socket %1").arg(socket);
    if (privateServer)
        where = QStringLiteral("private server (%1)").arg(socket);
    return QStringLiteral("database %1 on %2 as %3").arg(database, where, user.isEmpty() ? QStringLiteral("(default user)") : user);
}

} // namespace corvane
