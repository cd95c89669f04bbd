#include "host/aboutfbt.h"

#include "core/errorlog.h"
#include "core/prompter.h"
#include "db/privateserver.h"
#include "host/hostsession.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace corvane::host {

QString aboutText(const HostSession& session)
{
    const ConnectionSettings& s = session.settings();
    QString database;
    if (s.privateServer) {
        database = QStringLiteral("%1 on the private server in %2").arg(s.database, PrivateServer(session.appPath()).baseDir());
    } else {
        const QString where = !s.server.isEmpty() ? s.server + (s.port ? QStringLiteral(":%1").arg(s.port) : QString())
                                                  : QStringLiteral("socket %1").arg(s.socket);
        database = QStringLiteral("%1 on %2").arg(s.database, where);
        if (!s.user.isEmpty())
            database += QStringLiteral(" as %1").arg(s.user);
    }
    const QString program = QCoreApplication::applicationDirPath();
    QString folder = session.appPath();
    if (QFileInfo(folder).canonicalFilePath() != QFileInfo(program).canonicalFilePath())
        folder += QStringLiteral("\n(the program is in %1)").arg(program);
    const QString version = QCoreApplication::applicationVersion();
    return QStringLiteral("FBT %1\nFringe Benefit Tax returns of the clients of a practice.\n\n"
                          "Application folder: %2\nDatabase: %3\nLog file: %4")
        .arg(version.isEmpty() ? QStringLiteral("(development build)") : version, folder, database, logFilePath());
}

} // namespace corvane::host
