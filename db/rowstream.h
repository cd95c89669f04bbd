#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <QVector>

namespace corvane {

class Connection;

// A query whose rows are read one at a time as the server sends them, so that
// a result of any size takes the memory of one row. Each value reads as the
// text a Connection::query() value shows (QVariant::toString()), in UTF-8.
// The connection serves nothing else until the stream is destroyed; its
// stall watch looks after the statement until the last row is read.
class RowStream {
public:
    // Runs the statement; throws Failure as Connection::execute() does.
    RowStream(Connection& connection, const QString& sql);
    ~RowStream();
    RowStream(const RowStream&) = delete;
    RowStream& operator=(const RowStream&) = delete;

    // False for a statement without a result set.
    bool hasResult() const { return result_ != nullptr; }
    QStringList columnNames() const { return names_; }

    // Moves to the next row; false after the last. Throws Failure when the connection fails on the way.
    bool next();
    bool isNull(int column) const;
    QByteArrayView text(int column);

private:
    enum class Shown { AsSent, Decimal, Number, Integer, Date, DateTime };

    // The statement ended; throws the watch's failure or the driver's when it failed.
    void end(bool ok);

    Connection& connection_;
    QString sql_;
    bool running_ = false;    // under the connection's watch
    void* handle_ = nullptr;  // MYSQL*
    void* result_ = nullptr;  // MYSQL_RES*
    char** row_ = nullptr;
    unsigned long* lengths_ = nullptr;
    QStringList names_;
    QVector<Shown> shown_;
    QVector<QByteArray> converted_;
};

} // namespace corvane
