#include "component/clsmain.h"
#include "core/appfolder.h"
#include "core/prompter.h"
#include "host/busyrunner.h"
#include "host/connectiondialog.h"
#include "host/hostsession.h"
#include "host/mainwindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QIcon>
#include <QSocketNotifier>
#include <QTextStream>
#include <QTimer>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

using namespace corvane;
using namespace corvane::host;

namespace {

int g_signalPipe[2] = {-1, -1};

void onSignal(int)
{
    const char c = 1;
    [[maybe_unused]] const ssize_t n = ::write(g_signalPipe[0], &c, 1);
}

// Ctrl+C in a terminal, a kill or the end of the session close the window the
// ordinary way, so that the private server is stopped and the choice kept.
void closeOnSignals(QApplication& app)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_signalPipe) != 0)
        return;
    auto* notifier = new QSocketNotifier(g_signalPipe[1], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, [] {
        char c = 0;
        [[maybe_unused]] const ssize_t n = ::read(g_signalPipe[1], &c, 1);
        QApplication::closeAllWindows();
        QApplication::quit();
    });
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int signal : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(signal, &action, nullptr);
}

} // namespace

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
                                                          "default: the folder of the program, or "
                                                          "~/.local/share/orv-softworks/FBT when that cannot be written."),
                                           QStringLiteral("DIR"));
    parser.addOption(appPathOption);
    // For the start benchmark: the time up to a drawn window, without the user.
    QCommandLineOption quitWhenShownOption(QStringLiteral("quit-when-shown"),
                                           QStringLiteral("Print \"shown\" and quit once the main window is drawn."));
    quitWhenShownOption.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOption(quitWhenShownOption);
    parser.process(app);
    closeOnSignals(app);

    // Made first: it installs the message boxes that the folder choice may need.
    ClsMain cls;
    const QString programDir = QApplication::applicationDirPath();
    const AppFolder folder = chooseAppFolder(AppFolderInputs::fromEnvironment(parser.value(appPathOption), programDir));
    const QString appPath = QDir::cleanPath(QDir(folder.path).absolutePath());
    if (folder.perUser) {
        const QString failed = preparePerUserFolder(appPath, programDir);
        if (!failed.isEmpty()) {
            prompter().inform(QStringLiteral("FBT cannot prepare your application folder:\n\n%1").arg(failed),
                              Prompter::Icon::Critical);
            return 1;
        }
    }
    QDir().mkpath(appPath);
    provideDataFiles(programDir, appPath);

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
        if (parser.isSet(quitWhenShownOption))
            QTimer::singleShot(0, &window, [&window] {
                window.repaint();
                QTextStream(stdout) << "shown" << Qt::endl;
                window.close();
            });
        status = app.exec();
    }
    session.finish();
    return status;
}
