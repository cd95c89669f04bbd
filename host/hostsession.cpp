#include "host/hostsession.h"

#include "components/bankinfo/lookupimport.h"
#include "component/clsmain.h"
#include "core/inifile.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "db/connection.h"
#include "db/privateserver.h"
#include "db/schema.h"
#include "db/sqltext.h"
#include "host/assessmentyears.h"
#include "host/failuretext.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace corvane::host {

namespace {

const QString kSettingsSection = QStringLiteral("FBT");

const QString kDemoQuestion = QStringLiteral(
    "This is the first start of FBT on a new database.\n\n"
    "Load the demo clients, so that every screen can be tried at once? "
    "They can be deleted like any other client.");

Connection::Result queryOrEmpty(Connection& connection, const QString& sql)
{
    Connection::Result result;
    failureText([&] { result = connection.query(sql); });
    return result;
}

} // namespace

HostSession::HostSession(ClsMain& cls, QString appPath, Hooks hooks)
    : cls_(cls)
    , appPath_(std::move(appPath))
    , hooks_(std::move(hooks))
    , tmp_(QDir::tempPath() + QStringLiteral("/FBT-XXXXXX"))
{
    if (!hooks_.runBusy)
        hooks_.runBusy = [](const QString&, const std::function<void(const Report&)>& work) { work(Report()); };
}

HostSession::~HostSession() = default;

QString HostSession::tryConnect(const ConnectionSettings& wanted, std::shared_ptr<Connection>* opened)
{
    ConnectionSettings settings = wanted;
    if (settings.privateServer) {
        // The private server of this application folder, whatever folder the settings were read for.
        settings.server.clear();
        settings.port = 0;
        settings.socket = PrivateServer(appPath_).socketPath();
        settings.user = QStringLiteral("root");
        settings.password.clear();
        const QString missing = PrivateServer::missingProgramsMessage();
        if (!missing.isEmpty())
            return missing;
        PrivateServer server(appPath_);
        if (server.runningPid() == 0 || !server.answers()) {
            QString reason;
            hooks_.runBusy(QStringLiteral("Starting the database server of %1").arg(appPath_), [&](const Report& report) {
                reason = failureText([&] { server.start(report); });
            });
            if (!reason.isEmpty())
                return reason;
        }
    }
    auto connection = std::make_shared<Connection>();
    const QString reason = failureText([&] { connection->open(settings, false); });
    if (!reason.isEmpty()) {
        // A database that does not exist yet is created, as the tables are.
        if (!reason.contains(QStringLiteral("Unknown database"), Qt::CaseInsensitive))
            return reason;
        const QString again = failureText([&] { connection->open(settings, true); });
        if (!again.isEmpty())
            return again;
    }
    if (opened)
        *opened = connection;
    return QString();
}

bool HostSession::prepareDatabase(Connection& connection, bool offerDemo)
{
    QStringList created;
    const QString reason = failureText([&] {
        created = schema::createMissingTables(connection);
        schema::fillNatures(connection);
    });
    if (!reason.isEmpty()) {
        prompter().inform(QStringLiteral("The tables of database %1 could not be created:\n\n%2")
                              .arg(connection.databaseName(), reason),
                          Prompter::Icon::Critical);
        return false;
    }
    const bool newDatabase = std::any_of(created.begin(), created.end(), [](const QString& t) {
        return t.compare(QStringLiteral("FBT_Info"), Qt::CaseInsensitive) == 0;
    });
    if (!offerDemo || !newDatabase)
        return true;
    demoOffered_ = true;
    if (prompter().ask(kDemoQuestion, Prompter::Buttons::YesNo, Prompter::Icon::Question, Prompter::Answer::Yes)
        != Prompter::Answer::Yes)
        return true;
    const QString demo = failureText([&] {
        schema::loadDemoData(connection);
        // The bank and Assessing Officer lookups have demo lists of their own, shipped beside the program.
        const QString folder = bankinfo::findDemoFolder(appPath_);
        if (!folder.isEmpty())
            bankinfo::loadDemoLists(connection, folder);
        connection.execute(QStringLiteral("flush tables"));
    });
    if (!demo.isEmpty())
        prompter().inform(QStringLiteral("The demo data could not be loaded:\n\n%1").arg(demo), Prompter::Icon::Exclamation);
    return true;
}

bool HostSession::start()
{
    QDir().mkpath(appPath_);
    const QFileInfo folder(appPath_);
    if (!folder.isDir() || !folder.isWritable()) {
        prompter().inform(QStringLiteral("FBT cannot write to its application folder %1, where its settings, its error log "
                                         "and its private database live.\n\nStart FBT with --app-path and a folder of "
                                         "your own, or ask the administrator for write access to this one.")
                              .arg(appPath_),
                          Prompter::Icon::Critical);
        return false;
    }

    std::shared_ptr<Connection> connection;
    for (;;) {
        settings_ = ConnectionSettings::fromConfig(appPath_);
        const QString reason = tryConnect(settings_, &connection);
        if (reason.isEmpty())
            break;
        prompter().inform(QStringLiteral("FBT cannot open its database (%1):\n\n%2\n\nCheck the connection settings.")
                              .arg(settings_.describe(), reason),
                          Prompter::Icon::Critical);
        if (!hooks_.editSettings || !hooks_.editSettings(reason))
            return false;
    }
    if (!prepareDatabase(*connection, true))
        return false;

    const QString code = rememberedCode(*connection);
    const int year = rememberedYear(*connection);
    QString tmp = tmp_.isValid() ? tmp_.path() : QDir::tempPath();
    if (!tmp.endsWith(QLatin1Char('/')))
        tmp += QLatin1Char('/');

    // The order the component expects: the connection, the application
    // folder, the client and the year, the temporary folder, then the screen
    // measurements, before any screen is shown.
    cls_.setCnnObj(connection);
    cls_.setAppPath(appPath_);
    cls_.setCode(code);
    cls_.setTYear(qint16(year));
    cls_.setvTmpPath(tmp);
    cls_.GetScreenReso();
    return true;
}

bool HostSession::reconnect(bool offerDemo)
{
    const ConnectionSettings settings = ConnectionSettings::fromConfig(appPath_);
    std::shared_ptr<Connection> connection;
    const QString reason = tryConnect(settings, &connection);
    if (!reason.isEmpty()) {
        prompter().inform(QStringLiteral("FBT cannot open the database again (%1):\n\n%2")
                              .arg(settings.describe(), reason),
                          Prompter::Icon::Critical);
        return false;
    }
    if (!prepareDatabase(*connection, offerDemo))
        return false;
    const bool leftPrivateServer = settings_.privateServer && !settings.privateServer;
    auto previous = cls_.CnnObj();
    settings_ = settings;
    cls_.setCnnObj(connection);
    if (leftPrivateServer && previous)
        releasePrivateServer(std::move(previous));
    return true;
}

void HostSession::releasePrivateServer(std::shared_ptr<Connection> connection)
{
    const auto status = queryOrEmpty(*connection, QStringLiteral("SHOW STATUS LIKE 'Threads_connected'"));
    const int connected = status.rows.value(0).value(1).toInt();
    connection.reset();
    // Left running while another FBT or a corvane command uses it.
    if (connected <= 1)
        failureText([&] { PrivateServer(appPath_).stop(); });
}

void HostSession::finish()
{
    auto connection = cls_.CnnObj();
    if (!settings_.privateServer || !connection)
        return;
    cls_.setCnnObj({});
    releasePrivateServer(std::move(connection));
}

int HostSession::latestDataYear(Connection& connection) const
{
    return queryOrEmpty(connection, QStringLiteral("Select max(TYear) from FBT_AddInfo")).rows.value(0).value(0).toInt();
}

QList<int> HostSession::years() const
{
    int last = currentAssessmentYear(modbase().clock().date());
    if (const auto connection = cls_.CnnObj())
        last = std::max(last, latestDataYear(*connection));
    last = std::max(last, int(cls_.TYear()));
    return assessmentYears(last);
}

QString HostSession::rememberedCode(Connection& connection) const
{
    const QString code = IniFile::read(appPath_ + QStringLiteral("/Confg.ini"), kSettingsSection, QStringLiteral("Code"), QString());
    if (!code.isEmpty()) {
        const auto found = queryOrEmpty(connection, QStringLiteral("Select Code_No from FBT_Info where Code_No=%1").arg(sqlQuote(code)));
        if (!found.rows.isEmpty())
            return found.rows.first().value(0).toString();
    }
    return queryOrEmpty(connection, QStringLiteral("Select Code_No from FBT_Info order by Code_No limit 1")).rows.value(0).value(0).toString();
}

int HostSession::rememberedYear(Connection& connection) const
{
    const int today = currentAssessmentYear(modbase().clock().date());
    const int latest = latestDataYear(connection);
    bool ok = false;
    const int year = IniFile::read(appPath_ + QStringLiteral("/Confg.ini"), kSettingsSection, QStringLiteral("TYear"), QString()).toInt(&ok);
    if (ok && year >= kFirstAssessmentYear && year <= std::max(today, latest))
        return year;
    return latest >= kFirstAssessmentYear ? latest : today;
}

void HostSession::remember(const QString& code, int year)
{
    cls_.SaveSettingINI(kSettingsSection, QStringLiteral("Code"), code);
    cls_.SaveSettingINI(kSettingsSection, QStringLiteral("TYear"), QString::number(year));
}

} // namespace corvane::host
