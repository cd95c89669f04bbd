#pragma once

#include "db/connectionsettings.h"

#include <QSqlDatabase>
#include <QSqlRecord>
#include <QString>
#include <QVariant>
#include <QVector>

namespace corvane {

class Failure;

// The open connection the host hands the component (CnnObj). Every failure
// throws Failure with the MySQL error number, a source and the server's text.
class Connection {
public:
    Connection();
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Opens the connection; with createDatabase the database is created when missing.
    void open(const ConnectionSettings& settings, bool createDatabase = false);
    void close();
    bool isOpen() const;

    // Runs a statement without result; returns the number of rows it affected.
    int execute(const QString& sql);

    struct Result {
        bool hasResult = false;          // false for statements without a result set
        QSqlRecord columns;              // names and origin tables of the columns
        QVector<QVector<QVariant>> rows; // null stays a null QVariant
    };
    Result query(const QString& sql);

    QString databaseName() const;
    const ConnectionSettings& settings() const { return settings_; }
    QSqlDatabase& database() { return db_; }

    // The Failure for the last error of a QSqlQuery or the database.
    static Failure failureFrom(const class QSqlError& error, const QString& source);

private:
    QString name_;
    QSqlDatabase db_;
    ConnectionSettings settings_;
};

} // namespace corvane
