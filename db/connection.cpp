#include "db/connection.h"

#include "core/failure.h"
#include "db/sqltext.h"
#include "db/statementobserver.h"

#include <QAtomicInt>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>

#include <mysql.h>
#include <utility>

namespace corvane {

namespace {
const QString kDbSource = QStringLiteral("MySQL");
QAtomicInt g_counter;
StatementObserver* g_observer = nullptr;
} // namespace

void setStatementObserver(StatementObserver* observer)
{
    g_observer = observer;
}

Failure Connection::failureFrom(const QSqlError& error, const QString& source)
{
    bool ok = false;
    long number = error.nativeErrorCode().toLong(&ok);
    if (!ok || number == 0)
        number = 2013; // lost connection / client error without a server number
    QString text = error.databaseText();
    if (text.isEmpty())
        text = error.driverText();
    if (text.isEmpty())
        text = error.text();
    return Failure(number, source, text);
}

Connection::Connection(Watch watch)
    : name_(QStringLiteral("corvane-%1").arg(g_counter.fetchAndAddRelaxed(1))), watchMode_(watch)
{
}

Connection::~Connection()
{
    close();
}

void Connection::open(const ConnectionSettings& settings, bool createDatabase)
{
    close();
    settings_ = settings;
    if (!settings.problem.isEmpty())
        throw Failure(err::FileNotFound, kDbSource, settings.problem);
    if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QMYSQL")))
        throw Failure(err::CannotCreateObject, kDbSource,
                      QStringLiteral("The Qt MySQL driver is missing: install the Debian package libqt6sql6-mysql"));
    db_ = QSqlDatabase::addDatabase(QStringLiteral("QMYSQL"), name_);
    if (!settings.server.isEmpty())
        db_.setHostName(settings.server);
    if (settings.port > 0)
        db_.setPort(settings.port);
    db_.setUserName(settings.user);
    db_.setPassword(settings.password);
    QString options = QStringLiteral("MYSQL_OPT_CONNECT_TIMEOUT=5;MYSQL_OPT_READ_TIMEOUT=600;MYSQL_OPT_WRITE_TIMEOUT=600");
    if (settings.server.isEmpty() && !settings.socket.isEmpty())
        options += QStringLiteral(";UNIX_SOCKET=") + settings.socket;
    db_.setConnectOptions(options);
    if (!createDatabase)
        db_.setDatabaseName(settings.database);
    if (!db_.open()) {
        const Failure failure = failureFrom(db_.lastError(), kDbSource);
        close();
        throw failure;
    }
    // The statements were written for a lenient server: no strict mode.
    execute(QStringLiteral("SET SESSION sql_mode = 'NO_ENGINE_SUBSTITUTION'"));
    if (createDatabase && !settings.database.isEmpty()) {
        execute(QStringLiteral("CREATE DATABASE IF NOT EXISTS %1 CHARACTER SET utf8mb4").arg(sqlName(settings.database)));
        execute(QStringLiteral("USE %1").arg(sqlName(settings.database)));
    }
    if (watchMode_ == Watch::On) {
        const Result id = query(QStringLiteral("SELECT CONNECTION_ID()"));
        ConnectionSettings probe = settings;
        if (createDatabase)
            probe.database.clear(); // the watch needs no database, and may start before it exists
        watch_ = std::make_unique<StallWatch>(probe, id.rows.value(0).value(0).toLongLong(), timing_);
    }
}

void Connection::close()
{
    if (std::exchange(sending_, false))
        statementEnds(sent_, false); // closing ends it on the server; its outcome is nobody's any more
    watch_.reset();
    if (db_.isValid()) {
        db_.close();
        db_ = QSqlDatabase();
        QSqlDatabase::removeDatabase(name_);
    }
}

bool Connection::isOpen() const
{
    return db_.isValid() && db_.isOpen();
}

QString Connection::databaseName() const
{
    return settings_.database;
}

void Connection::statementStarts()
{
    if (watch_)
        watch_->begin();
}

std::optional<Failure> Connection::statementEnds(const QString& sql, bool ok)
{
    std::optional<Failure> stopped = watch_ ? watch_->end() : std::nullopt;
    // The watch's own probe runs on its thread and is nobody's statement.
    if (g_observer && watchMode_ == Watch::On)
        g_observer->ran(*this, sql, ok);
    return stopped;
}

void Connection::run(QSqlQuery& q, const QString& sql)
{
    collect();
    statementStarts();
    const bool ok = q.exec(sql);
    std::optional<Failure> stopped = statementEnds(sql, ok);
    if (ok)
        return;
    if (stopped)
        throw *stopped;
    throw failureFrom(q.lastError(), kDbSource);
}

st_mysql* Connection::handle()
{
    const QVariant handle = isOpen() && db_.driver() ? db_.driver()->handle() : QVariant();
    // The driver's type is named after the typedef or after the struct behind it.
    const char* type = handle.typeName();
    if (!type || (qstrcmp(type, "MYSQL*") != 0 && qstrcmp(type, "st_mysql*") != 0))
        throw Failure(err::ObjectNotSet, kDbSource, QStringLiteral("The connection is not open"));
    return *static_cast<MYSQL* const*>(handle.constData());
}

Failure Connection::failureOf(st_mysql* mysql)
{
    const unsigned number = mysql_errno(mysql);
    return Failure(number ? long(number) : 2013, kDbSource, QString::fromUtf8(mysql_error(mysql)));
}

void Connection::send(const QString& sql)
{
    collect();
    MYSQL* mysql = handle();
    const QByteArray text = sql.toUtf8();
    statementStarts();
    if (mysql_send_query(mysql, text.constData(), text.size()) != 0) {
        const std::optional<Failure> stopped = statementEnds(sql, false);
        throw stopped ? *stopped : failureOf(mysql);
    }
    sent_ = sql;
    sending_ = true;
}

int Connection::collect()
{
    if (!std::exchange(sending_, false))
        return 0;
    const QString sql = std::exchange(sent_, QString());
    MYSQL* mysql = handle();
    const bool ok = mysql_read_query_result(mysql) == 0;
    const std::optional<Failure> stopped = statementEnds(sql, ok);
    if (!ok)
        throw stopped ? *stopped : failureOf(mysql);
    // A statement with a result was sent after all: its rows go unread.
    if (mysql_field_count(mysql) != 0)
        if (MYSQL_RES* rows = mysql_use_result(mysql))
            mysql_free_result(rows);
    return int(mysql_affected_rows(mysql));
}

static void requireOpen(const QSqlDatabase& db)
{
    if (!db.isValid() || !db.isOpen())
        throw Failure(err::ObjectNotSet, kDbSource, QStringLiteral("The connection is not open"));
}

int Connection::execute(const QString& sql)
{
    requireOpen(db_);
    QSqlQuery q(db_);
    run(q, sql);
    return q.numRowsAffected();
}

Connection::Result Connection::query(const QString& sql)
{
    requireOpen(db_);
    QSqlQuery q(db_);
    q.setForwardOnly(true);
    run(q, sql);
    Result result;
    result.hasResult = q.isSelect();
    result.columns = q.record();
    const int n = result.columns.count();
    while (q.next()) {
        QVector<QVariant> row(n);
        for (int i = 0; i < n; ++i)
            row[i] = q.value(i);
        result.rows.push_back(std::move(row));
    }
    if (q.lastError().isValid())
        throw failureFrom(q.lastError(), kDbSource);
    return result;
}

} // namespace corvane
