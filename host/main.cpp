#include "core/clsmain.h"
#include "host/busyrunner.h"
#include "host/connectiondialog.h"
#include "host/hostsession.h"
#include "host/mainwindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QIcon>

using namespace corvane;
using namespace corvane::host;

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("FBT"));
    QApplication::setApplicationDisplayName(QStringLiteral("FBT"));
    QApplication::setApplicationVersion(QStringLiteral(CORVANE_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("fbt"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/fbt/fbt.png")));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Fringe Benefit Tax returns of the clients of a practice."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption appPathOption(QStringLiteral("app-path"),
                                           QStringLiteral("The application folder (settings, error log, private database); "
                                                          "default: the folder of the program."),
                                           QStringLiteral("DIR"));
    parser.addOption(appPathOption);
    parser.process(app);

    const QString programDir = QApplication::applicationDirPath();
    const QString appPath = QDir::cleanPath(QDir(parser.isSet(appPathOption) ? parser.value(appPathOption) : programDir).absolutePath());
    QDir().mkpath(appPath);
    HostSession::provideDataFiles(programDir, appPath);

    ClsMain cls;
    HostSession* sessionRef = nullptr;
    HostSession::Hooks hooks;
    hooks.runBusy = [](const QString& title, const std::function<void(const HostSession::Report&)>& work) { runBusy(title, work); };
    hooks.editSettings = [&sessionRef](const QString& reason) {
        ConnectionDialog dialog(sessionRef->settings(),
                                [&sessionRef](const ConnectionSettings& s) { return sessionRef->tryConnect(s); }, reason);
        return dialog.exec() == QDialog::Accepted;
    };
    HostSession session(cls, appPath, hooks);
    sessionRef = &session;
    if (!session.start())
        return 1;

    int status = 0;
    {
        MainWindow window(cls, session);
        window.show();
        status = app.exec();
    }
    session.finish();
    return status;
}
