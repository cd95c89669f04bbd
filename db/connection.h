#pragma once

#include "db/connectionsettings.h"
#include "db/stallwatch.h"

#include <QSqlDatabase>
#include <QSqlRecord>
#include <QString>
#include <QVariant>
#include <QVector>

class QSqlQuery;
struct st_mysql;

namespace corvane {

class RowStream;

// The open connection the host hands the component (CnnObj). Every failure
// throws Failure with the MySQL error number, a source and the server's text.
class Connection {
public:
    // Watch::On: a statement stuck on a full disk fails instead of waiting (see StallWatch).
    enum class Watch { On, Off };
    explicit Connection(Watch watch = Watch::On);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Opens the connection; with createDatabase the database is created when missing.
    void open(const ConnectionSettings& settings, bool createDatabase = false);
    void close();
    bool isOpen() const;

    // Runs a statement without result; returns the number of rows it affected.
    int execute(const QString& sql);

    // A statement without result handed to the server without waiting for its
    // end, so that the caller prepares the next one meanwhile; collect() waits
    // for it. Any other statement on the connection collects it first.
    void send(const QString& sql);
    // Waits for the statement sent last: the rows it affected, 0 when none is
    // outstanding; throws as execute() does.
    int collect();

    struct Result {
        bool hasResult = false;          // false for statements without a result set
        QSqlRecord columns;              // names and origin tables of the columns
        QVector<QVector<QVariant>> rows; // null stays a null QVariant
    };
    Result query(const QString& sql);

    // When the watch looks at a running statement; takes effect on the next open.
    void setStallTiming(StallTiming timing) { timing_ = timing; }

    QString databaseName() const;
    const ConnectionSettings& settings() const { return settings_; }
    QSqlDatabase& database() { return db_; }

    // The Failure for the last error of a QSqlQuery or the database.
    static Failure failureFrom(const class QSqlError& error, const QString& source);

private:
    friend class RowStream; // runs its statement on the driver's handle, under the same watch

    QString name_;
    QSqlDatabase db_;
    ConnectionSettings settings_;
    Watch watchMode_;
    StallTiming timing_;
    std::unique_ptr<StallWatch> watch_;
    QString sent_;         // the statement sent and not yet collected
    bool sending_ = false;

    // Runs q.exec(sql) under the watch; throws the watch's failure or the driver's.
    void run(QSqlQuery& q, const QString& sql);
    // The driver's handle; throws when the connection is not open.
    st_mysql* handle();
    // A statement starts on the connection, and ends: the observer sees it;
    // the watch's failure when it stopped the statement.
    void statementStarts();
    std::optional<Failure> statementEnds(const QString& sql, bool ok);
    static Failure failureOf(st_mysql* mysql);
};

} // namespace corvane
