#include "cli/command.h"
#include "cli/consoleprompter.h"
#include "cli/manpage.h"

#include "core/appfolder.h"
#include "core/errorlog.h"
#include "core/failure.h"
#include "core/freespace.h"
#include "core/modbase.h"
#include "core/resumenext.h"
#include "db/connection.h"
#include "db/privateserver.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QFileInfo>
#include <algorithm>
#include <cstdio>
#include <memory>

namespace corvane::cli {

namespace {

QList<Command>& registry()
{
    static QList<Command> list;
    return list;
}

const QStringList kGlobalValueOptions{"--app-path", "--server", "--port", "--socket", "--user",
                                      "--password", "--database", "--code", "--year", "--on-error"};
const QStringList kGlobalFlagOptions{"--yes", "--no", "--help", "-h", "--manpage", "--bash-completion"};

QString globalHelp()
{
    QString text = QStringLiteral(
        "Usage: corvane [global options] COMMAND [arguments]\n"
        "\n"
        "The services of the Corvane component that need no screen.\n"
        "\n"
        "Global options:\n"
        "  --app-path DIR     application folder (default $CORVANE_APP_PATH, else the program's folder,\n"
        "                     else ~/.local/share/orv-softworks/FBT when that cannot be written)\n"
        "  --server HOST      database server (default: ORVCONFIG.INI [MySql], else the private server)\n"
        "  --port N           server port\n"
        "  --socket PATH      server socket\n"
        "  --user NAME        database user\n"
        "  --password TEXT    database password\n"
        "  --database NAME    database (default fbt)\n"
        "  --code CODE        client code\n"
        "  --year YEAR        year (the first year of the assessment year)\n"
        "  --yes | --no       answer every question so\n"
        "  --on-error abort|retry|ignore   answer every error question so\n"
        "  --help             this text; COMMAND --help tells about a command\n"
        "  --manpage          the manual page of every command (roff)\n"
        "  --bash-completion  a bash completion script\n"
        "\n"
        "Commands:\n");
    QList<Command> sorted = registry();
    std::sort(sorted.begin(), sorted.end(), [](const Command& a, const Command& b) { return a.name < b.name; });
    for (const Command& c : sorted)
        text += QStringLiteral("  %1%2\n").arg(c.name, -10).arg(c.summary);
    text += QStringLiteral("\nExit status: 0 done, 1 the operation failed, 2 wrong usage.\n");
    return text;
}

const Command* findCommand(const QString& name)
{
    for (const Command& c : registry())
        if (c.name == name)
            return &c;
    return nullptr;
}

// The folder of the running program, also before the application object exists.
QString programDir()
{
    return QFileInfo(QFileInfo(QStringLiteral("/proc/self/exe")).symLinkTarget()).absolutePath();
}

AppFolder appFolder(const QMap<QString, QString>& global)
{
    const QString asked = global.contains(QStringLiteral("--app-path")) ? global.value(QStringLiteral("--app-path"))
                                                                        : qEnvironmentVariable("CORVANE_APP_PATH");
    return chooseAppFolder(AppFolderInputs::fromEnvironment(asked, programDir()));
}

std::unique_ptr<QCoreApplication> g_app;

// A lost connection to the private server whose disk is full: the server
// waited for space until the client gave up. Say so.
Failure withLikelyCause(const Invocation& inv, const Failure& failure)
{
    constexpr qint64 kNearlyFull = 4 * 1024 * 1024;
    if (!inv.connection.privateServer || (failure.number() != 2013 && failure.number() != 2006))
        return failure;
    const QString folder = PrivateServer(inv.appPath).dataDir();
    const qint64 free = freeBytes(folder);
    if (free < 0 || free >= kNearlyFull)
        return failure;
    return Failure(failure.number(), failure.source(),
                   QStringLiteral("%1; the disk of the database folder %2 is full (%3 bytes free)")
                       .arg(failure.description(), folder)
                       .arg(free));
}

int run(int& argc, char** argv, const QStringList& args, QTextStream& out, QTextStream& err)
{
    Invocation inv(out, err);
    QMap<QString, QString> global;
    const Command* command = nullptr;
    bool help = false;

    for (int i = 0; i < args.size(); ++i) {
        QString arg = args.at(i);
        QString inlineValue;
        bool hasInline = false;
        if (arg.startsWith(QStringLiteral("--")) && arg.contains(QLatin1Char('='))) {
            inlineValue = arg.section(QLatin1Char('='), 1);
            arg = arg.section(QLatin1Char('='), 0, 0);
            hasInline = true;
        }
        auto takeValue = [&]() {
            if (hasInline)
                return inlineValue;
            if (i + 1 >= args.size())
                throw UsageError(QStringLiteral("%1 needs a value").arg(arg).toStdString());
            return args.at(++i);
        };
        if (arg == QStringLiteral("--")) {
            // Everything after it is a word, even when it starts with '-'.
            QStringList rest = args.mid(i + 1);
            if (!command && !rest.isEmpty()) {
                command = findCommand(rest.first());
                if (!command)
                    throw UsageError(QStringLiteral("unknown command %1").arg(rest.first()).toStdString());
                rest.removeFirst();
            }
            inv.words += rest;
            break;
        }
        if (kGlobalValueOptions.contains(arg)) {
            global[arg] = takeValue();
        } else if (kGlobalFlagOptions.contains(arg)) {
            if (arg == QStringLiteral("--help") || arg == QStringLiteral("-h"))
                help = true;
            else
                global[arg] = QString();
        } else if (arg.startsWith(QLatin1Char('-')) && arg.size() > 1 && !(arg.at(1).isDigit() || arg.at(1) == QLatin1Char('.'))) {
            if (!command)
                throw UsageError(QStringLiteral("unknown option %1").arg(arg).toStdString());
            if (command->valueOptions.contains(arg))
                inv.options[arg] = takeValue();
            else if (command->flagOptions.contains(arg) && !hasInline)
                inv.options[arg] = QString();
            else
                throw UsageError(QStringLiteral("unknown option %1 for %2").arg(arg, command->name).toStdString());
        } else if (!command) {
            command = findCommand(arg);
            if (!command)
                throw UsageError(QStringLiteral("unknown command %1").arg(arg).toStdString());
        } else {
            inv.words << arg;
        }
    }

    if (!command) {
        if (help) {
            out << globalHelp() << "\nApplication folder in use: " << appFolder(global).describe() << '\n';
            return 0;
        }
        if (global.contains(QStringLiteral("--manpage"))) {
            out << manPage(globalHelp(), registry(), QStringLiteral(CORVANE_VERSION));
            return 0;
        }
        if (global.contains(QStringLiteral("--bash-completion"))) {
            out << bashCompletion(kGlobalValueOptions + kGlobalFlagOptions, registry());
            return 0;
        }
        err << globalHelp();
        return 2;
    }
    if (help) {
        out << command->usage;
        if (!command->usage.endsWith(QLatin1Char('\n')))
            out << '\n';
        return 0;
    }

    // Made once the command is known: a few commands need more than a core application.
    g_app.reset(command->makeApplication ? command->makeApplication(argc, argv) : new QCoreApplication(argc, argv));
    QCoreApplication::setApplicationName(QStringLiteral("corvane"));

    const AppFolder folder = appFolder(global);
    if (folder.perUser) {
        const QString failed = preparePerUserFolder(folder.path, programDir());
        if (!failed.isEmpty())
            throw Failure(1, QStringLiteral("corvane"), failed);
    }
    inv.appPath = folder.path;
    inv.code = global.value(QStringLiteral("--code"));
    inv.year = global.value(QStringLiteral("--year"));
    inv.connection = ConnectionSettings::fromConfig(inv.appPath);
    if (global.contains(QStringLiteral("--server")) || global.contains(QStringLiteral("--socket"))) {
        inv.connection.privateServer = false;
        inv.connection.problem.clear(); // the options say where the server is
        inv.connection.server = global.value(QStringLiteral("--server"));
        inv.connection.socket = global.value(QStringLiteral("--socket"));
    }
    if (global.contains(QStringLiteral("--port"))) {
        bool ok = false;
        inv.connection.port = global.value(QStringLiteral("--port")).toInt(&ok);
        if (!ok || inv.connection.port <= 0 || inv.connection.port > 65535)
            throw UsageError("--port takes a port number");
    }
    if (global.contains(QStringLiteral("--user")))
        inv.connection.user = global.value(QStringLiteral("--user"));
    if (global.contains(QStringLiteral("--password")))
        inv.connection.password = global.value(QStringLiteral("--password"));
    if (global.contains(QStringLiteral("--database")))
        inv.connection.database = global.value(QStringLiteral("--database"));

    ConsolePrompter::Policy policy;
    if (global.contains(QStringLiteral("--yes")))
        policy.yesNo = ConsolePrompter::Policy::Yes;
    if (global.contains(QStringLiteral("--no")))
        policy.yesNo = ConsolePrompter::Policy::No;
    if (global.contains(QStringLiteral("--on-error"))) {
        const QString v = global.value(QStringLiteral("--on-error"));
        if (v == QStringLiteral("abort"))
            policy.onError = Prompter::Answer::Abort;
        else if (v == QStringLiteral("retry"))
            policy.onError = Prompter::Answer::Retry;
        else if (v == QStringLiteral("ignore"))
            policy.onError = Prompter::Answer::Ignore;
        else
            throw UsageError("--on-error takes abort, retry or ignore");
    }

    Modbase& m = modbase();
    m.AppPath = inv.appPath;
    bool yearOk = true;
    if (!inv.year.isEmpty())
        m.TYear = qint16(inv.year.toInt(&yearOk));
    if (!yearOk)
        throw UsageError("--year takes a year such as 2008");
    m.Code = inv.code;
    // A folder of this run's own: an extraction never meets another user's files in /tmp.
    const QTemporaryDir scratch(QDir::tempPath() + QStringLiteral("/corvane-XXXXXX"));
    m.vTmpPath = (scratch.isValid() ? scratch.path() : QDir::tempPath()) + QLatin1Char('/');
    m.prompter = std::make_shared<ConsolePrompter>(policy, err);
    m.chooser = std::make_shared<ConsoleChooser>();

    // A table the server repaired on the way is reported also when the command failed.
    try {
        const int status = command->run(inv);
        inv.reportServerRepairs();
        return status;
    } catch (const Failure& failure) {
        inv.reportServerRepairs();
        throw withLikelyCause(inv, failure);
    } catch (...) {
        inv.reportServerRepairs();
        throw;
    }
}

} // namespace

QString Invocation::word(int index, const QString& name) const
{
    if (index >= words.size())
        throw UsageError(QStringLiteral("missing %1").arg(name).toStdString());
    return words.at(index);
}

void Invocation::expectWords(int minimum, int maximum) const
{
    if (words.size() < minimum)
        throw UsageError("missing arguments");
    if (words.size() > maximum)
        throw UsageError(QStringLiteral("unexpected argument %1").arg(words.at(maximum)).toStdString());
}

std::shared_ptr<Connection> Invocation::connect(bool createDatabase)
{
    if (connection.privateServer) {
        PrivateServer server(appPath);
        if (serverLogOffset_ < 0)
            serverLogOffset_ = server.logSize();
        server.start([this](const QString& text) { err << text << Qt::endl; });
    }
    auto c = std::make_shared<Connection>();
    c->open(connection, createDatabase);
    modbase().CnnObj = c;
    return c;
}

void Invocation::reportServerRepairs()
{
    if (serverLogOffset_ < 0)
        return;
    const QStringList reports = PrivateServer(appPath).repairReports(serverLogOffset_);
    serverLogOffset_ = -1;
    ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("STARTSERVER"));
    for (const QString& line : reports) {
        guard([&] { throw Failure(145, QStringLiteral("MariaDB"), line); });
        err << "corvane: the database server reports: " << line << " (" << logNote() << ")" << Qt::endl;
    }
}

QCoreApplication* makeOffscreenApplication(int& argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    return new QGuiApplication(argc, argv);
}

CommandRegistration::CommandRegistration(Command command)
{
    registry().push_back(std::move(command));
}

const QList<Command>& commands()
{
    return registry();
}

} // namespace corvane::cli

int main(int argc, char* argv[])
{
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args << QString::fromLocal8Bit(argv[i]);
    QTextStream out(stdout);
    QTextStream err(stderr);
    int status = 0;
    try {
        status = corvane::cli::run(argc, argv, args, out, err);
    } catch (const corvane::cli::UsageError& e) {
        err << "corvane: " << e.what() << "\n(see corvane --help)" << Qt::endl;
        status = 2;
    } catch (const corvane::Failure& f) {
        err << "corvane: " << f.description() << Qt::endl;
        status = 1;
    } catch (const std::exception& e) {
        err << "corvane: " << e.what() << Qt::endl;
        status = 1;
    }
    out.flush();
    err.flush();
    corvane::modbase().CnnObj.reset();
    corvane::cli::g_app.reset();
    return status;
}
