#pragma once

#include "db/connectionsettings.h"

#include <QList>
#include <QString>
#include <QTemporaryDir>
#include <functional>
#include <memory>

namespace corvane {
class ClsMain;
class Connection;
}

namespace corvane::host {

// What the host does before its window opens and whenever the database
// changes under it: find and open the database (the private server of the
// application folder unless another is configured), create the tables, offer
// the demo data on the very first start, and fill in the component context.
class HostSession {
public:
    using Report = std::function<void(const QString&)>;
    struct Hooks {
        // Lets the user correct the connection after a failure (reason says why);
        // returns false when the user gives up.
        std::function<bool(const QString& reason)> editSettings;
        // Runs long work off the user-interface thread while telling the user
        // what happens; by default it simply runs it.
        std::function<void(const QString& title, const std::function<void(const Report&)>& work)> runBusy;
    };

    HostSession(ClsMain& cls, QString appPath, Hooks hooks = {});
    ~HostSession();
    HostSession(const HostSession&) = delete;
    HostSession& operator=(const HostSession&) = delete;

    // Everything before the main window; false when there is no database to work on.
    bool start();

    // Opens the configured database again and hands the new connection to the
    // component (after a restoration or a change of the settings). A failure
    // is shown; the old connection stays then.
    bool reconnect(bool offerDemo = false);

    // Opens a connection with these settings (starting the private server when
    // they name it); empty text when it worked, else why not.
    QString tryConnect(const ConnectionSettings& settings, std::shared_ptr<Connection>* opened = nullptr);

    // Stops the private server when nobody else uses it.
    void finish();

    const QString& appPath() const { return appPath_; }
    const ConnectionSettings& settings() const { return settings_; }
    // Whether the demo data was offered (the database was new).
    bool demoOffered() const { return demoOffered_; }

    // The years the chooser offers: from 2006-07 up to the year in progress or
    // the latest year with data, whichever is later.
    QList<int> years() const;

    // The client and year to show next time.
    void remember(const QString& code, int year);

    // Copies the shipped files (Data/StateCodes.txt …) from the program's
    // folder into an application folder that lacks them.

private:
    bool prepareDatabase(Connection& connection, bool offerDemo);
    // Stops the private server when this connection is its only client.
    void releasePrivateServer(std::shared_ptr<Connection> connection);
    QString rememberedCode(Connection& connection) const;
    int rememberedYear(Connection& connection) const;
    int latestDataYear(Connection& connection) const;

    ClsMain& cls_;
    QString appPath_;
    Hooks hooks_;
    ConnectionSettings settings_;
    QTemporaryDir tmp_;
    bool demoOffered_ = false;
};

} // namespace corvane::host
