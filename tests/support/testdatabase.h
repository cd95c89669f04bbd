#pragma once

#include "db/connection.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <memory>

namespace corvane::test {

// A database of its own on the test run's server, with the host's tables,
// dropped again when the object goes. Also gives the test an application
// folder and a system folder of its own and installs both in the context.
class TestDatabase {
public:
    explicit TestDatabase(const QString& name, bool withTables = true);
    ~TestDatabase();

    std::shared_ptr<Connection> connection() const { return connection_; }
    Connection& operator*() const { return *connection_; }
    Connection* operator->() const { return connection_.get(); }

    ConnectionSettings settings() const;
    QString name() const { return name_; }
    QString appPath() const { return appDir_.path(); }
    QString systemPath() const { return systemDir_.path(); }

    // Empties the tables, puts this database back into the context and removes
    // the error log, so that every test function starts from the same state.
    void startAfresh(const QStringList& tables) const;

    // The value of a one-value query, as text ("" for null).
    QString scalar(const QString& sql) const;
    int count(const QString& table, const QString& where = QString()) const;

private:
    QString name_;
    QTemporaryDir appDir_;
    QTemporaryDir systemDir_;
    std::shared_ptr<Connection> connection_;
};

// Settings for the test run's server without a database.
ConnectionSettings serverSettings();

} // namespace corvane::test
