// FBT's start on an existing application folder, its private server included,
// up to its drawn main window; against a bare Qt Widgets window of the same
// build and a start of mariadbd on the same data up to "ready for connections",
// one after the other.
//   bench_start [CLIENTS]     (the folder's clients, default 1,000)
#include "bench/benchdata.h"
#include "bench/benchsupport.h"
#include "component/clsmain.h"
#include "core/failure.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "db/connection.h"
#include "db/privateserver.h"
#include "host/hostsession.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>


using namespace corvane;

namespace {

const QString kSource = QStringLiteral("bench");

[[noreturn]] void fail(const QString& text)
{
    throw Failure(1, kSource, text);
}

// An application folder as a user has it after some work: its database and clients.
void prepareFolder(const QString& appPath, int clients)
{
    auto answers = std::make_shared<ScriptedPrompter>();
    answers->then(Prompter::Answer::No); // no demo data
    modbase().prompter = answers;
    ClsMain cls;
    host::HostSession session(cls, appPath);
    if (!session.start())
        fail(QStringLiteral("the folder's database could not be opened"));
    Connection& connection = *modbase().CnnObj;
    if (connection.query(QStringLiteral("select count(*) from FBT_Info")).rows.value(0).value(0).toInt() != clients) {
        connection.execute(QStringLiteral("delete from FBT_Info"));
        bench::insertClients(connection, clients);
    }
    session.finish();
}

// Starts a program and returns the seconds until it prints `word` on the chosen channel;
// `peakMb` gets its peak memory by then. The program keeps running.
double secondsUntil(QProcess& process, const QString& program, const QStringList& arguments, QProcess::ProcessChannel channel,
                    const QByteArray& word, double* peakMb = nullptr)
{
    process.setReadChannel(channel);
    QElapsedTimer clock;
    clock.start();
    process.start(program, arguments);
    if (!process.waitForStarted(-1))
        fail(QStringLiteral("%1 did not start: %2").arg(program, process.errorString()));
    QByteArray seen;
    while (!seen.contains(word)) {
        if (!process.waitForReadyRead(-1))
            fail(QStringLiteral("%1 ended before \"%2\": %3").arg(program, QString::fromLatin1(word), QString::fromLocal8Bit(seen.right(2000))));
        seen += process.readAll();
    }
    const double seconds = double(clock.nsecsElapsed()) / 1e9;
    if (peakMb)
        *peakMb = bench::peakMemoryMbOf(process.processId());
    return seconds;
}

void waitForEnd(QProcess& process, const QString& program)
{
    process.closeReadChannel(QProcess::StandardOutput);
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        fail(QStringLiteral("%1 failed: %2").arg(program, QString::fromLocal8Bit(process.readAllStandardError())));
}

// The server as the private server starts it, except that it logs to standard error.
QStringList serverArguments(const PrivateServer& server)
{
    QStringList args = server.serverArguments();
    args.removeIf([](const QString& arg) { return arg.startsWith(QLatin1String("--log-error=")); });
    return args;
}

QString mariadbd()
{
    QString path = QStandardPaths::findExecutable(QStringLiteral("mariadbd"));
    if (path.isEmpty())
        path = QStandardPaths::findExecutable(QStringLiteral("mariadbd"), {QStringLiteral("/usr/sbin"), QStringLiteral("/usr/local/sbin")});
    if (path.isEmpty())
        fail(QStringLiteral("mariadbd is not installed"));
    return path;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const int clients = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 1000;
    if (clients <= 0) {
        bench::note(QStringLiteral("usage: bench_start [CLIENTS]"));
        return 2;
    }
    return bench::guarded(QStringLiteral("bench_start"), [&] {
        const QString buildDir = QDir(QCoreApplication::applicationDirPath() + QStringLiteral("/..")).absolutePath();
        const QString fbt = buildDir + QStringLiteral("/app/FBT");
        const QString bare = QCoreApplication::applicationDirPath() + QStringLiteral("/bench_bare_window");
        const QString appPath = bench::workFolder() + QStringLiteral("/start");
        qputenv("CORVANE_SYSTEM_DIR", (bench::workFolder() + QStringLiteral("/system")).toLocal8Bit());
        prepareFolder(appPath, clients);
        const PrivateServer server(appPath);
        const QStringList serverArgs = serverArguments(server);
        const QString serverProgram = mariadbd();

        double peak = 0;
        const auto [ours, anchor] = bench::alternateMeasured(
            bench::repetitions(),
            [&] {
                QProcess p;
                double mb = 0;
                const double s = secondsUntil(p, fbt, {QStringLiteral("--app-path"), appPath, QStringLiteral("--quit-when-shown")},
                                              QProcess::StandardOutput, "shown", &mb);
                peak = std::max(peak, mb);
                waitForEnd(p, fbt);
                if (server.runningPid() != 0)
                    fail(QStringLiteral("FBT left its server running"));
                return s;
            },
            [&] {
                QProcess window;
                const double shown = secondsUntil(window, bare, {}, QProcess::StandardOutput, "shown");
                waitForEnd(window, bare);
                QProcess database;
                const double ready = secondsUntil(database, serverProgram, serverArgs, QProcess::StandardError, "ready for connections");
                database.terminate();
                database.waitForFinished(-1);
                return shown + ready;
            });
        bench::report(QStringLiteral("start"), QStringLiteral("FBT start to its main window, private server included"), ours,
                      anchor, peak, QStringLiteral("ratio <= 2.0"));
    });
}
