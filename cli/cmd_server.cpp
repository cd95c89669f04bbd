#include "cli/command.h"

#include "db/privateserver.h"

namespace corvane::cli {

namespace {

int runServer(Invocation& inv)
{
    inv.expectWords(1, 1);
    const QString action = inv.word(0, QStringLiteral("start, stop or status"));
    PrivateServer server(inv.appPath);
    if (action == QStringLiteral("start")) {
        server.start([&](const QString& text) { inv.err << text << Qt::endl; });
        inv.out << "running (pid " << server.runningPid() << ", socket " << server.socketPath() << ")" << Qt::endl;
        return 0;
    }
    if (action == QStringLiteral("stop")) {
        server.stop();
        inv.out << "stopped" << Qt::endl;
        return 0;
    }
    if (action == QStringLiteral("status")) {
        const qint64 pid = server.runningPid();
        if (pid != 0 && server.answers())
            inv.out << "running (pid " << pid << ", socket " << server.socketPath() << ", data " << server.dataDir() << ")" << Qt::endl;
        else if (pid != 0)
            inv.out << "starting (pid " << pid << ")" << Qt::endl;
        else
            inv.out << "stopped" << (server.isInitialised() ? "" : " (not initialised)") << Qt::endl;
        return 0;
    }
    throw UsageError(QStringLiteral("unknown action %1: use start, stop or status").arg(action).toStdString());
}

const CommandRegistration registration({
    QStringLiteral("server"),
    QStringLiteral("start, stop or show the private database server of the application folder"),
    QStringLiteral("Usage: corvane [--app-path DIR] server start|stop|status\n"
                   "\n"
                   "Manages the private MariaDB server of the application folder: data in\n"
                   "DIR/MySQL/data, reached only through the socket DIR/MySQL/mysqld.sock.\n"
                   "  start   initialise the folder when empty and start the server\n"
                   "  stop    stop the server and wait until it is gone\n"
                   "  status  say whether it runs\n"),
    {},
    {},
    runServer,
});

} // namespace
} // namespace corvane::cli
