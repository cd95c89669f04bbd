#include "host/aboutfbt.h"

#include "core/errorlog.h"
#include "core/prompter.h"
#include "db/privateserver.h"
#include "host/hostsession.h"

#include <QCoreApplication>
#include <QMainWindow>
#include <QMenuBar>

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
    const QString version = QCoreApplication::applicationVersion();
    return QStringLiteral("FBT %1\nFringe Benefit Tax returns of the clients of a practice.\n\n"
                          "Database: %2\nApplication folder: %3\nLog file: %4")
        .arg(version.isEmpty() ? QStringLiteral("(development build)") : version, database, session.appPath(), logFilePath());
}

void addHelpMenu(QMainWindow& window, const HostSession& session)
{
    QMenu* help = window.menuBar()->addMenu(QStringLiteral("&Help"));
    help->setObjectName(QStringLiteral("mnuhelp"));
    QAction* about = help->addAction(QStringLiteral("&About FBT"));
    about->setObjectName(QStringLiteral("mnuabout"));
    about->setMenuRole(QAction::AboutRole);
    QObject::connect(about, &QAction::triggered, &window, [&session] {
        prompter().inform(aboutText(session), Prompter::Icon::Information, QStringLiteral("About FBT"));
    });
}

} // namespace corvane::host
