#pragma once

#include "db/connectionsettings.h"
#include "db/stallwatch.h"

#include <QSqlDatabase>
#include <QSqlRecord>
#include <QString>
#include <QVariant>
#include <QVector>

class QSqlQuery;

namespace corvane {

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
    QString name_;
    QSqlDatabase db_;
    ConnectionSettings settings_;
    Watch watchMode_;
    StallTiming timing_;
    std::unique_ptr<StallWatch> watch_;

    // Runs q.exec(sql) under the watch; throws the watch's failure or the driver's.
    void run(QSqlQuery& q, const QString& sql);
};

} // namespace corvane
