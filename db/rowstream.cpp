#include "db/rowstream.h"

#include "core/failure.h"
#include "db/connection.h"

#include <QDate>
#include <QDateTime>
#include <QLocale>
#include <QSqlDriver>

#include <mysql.h>

namespace corvane {

namespace {

const QString kDbSource = QStringLiteral("MySQL");

MYSQL* mysqlOf(Connection& connection)
{
    const QVariant handle = connection.database().driver() ? connection.database().driver()->handle() : QVariant();
    // The driver's type is named after the typedef or after the struct behind it.
    const char* type = handle.typeName();
    if (!connection.isOpen() || !type || (qstrcmp(type, "MYSQL*") != 0 && qstrcmp(type, "st_mysql*") != 0))
        throw Failure(err::ObjectNotSet, kDbSource, QStringLiteral("The connection is not open"));
    return *static_cast<MYSQL* const*>(handle.constData());
}

Failure failureOf(MYSQL* mysql)
{
    const unsigned number = mysql_errno(mysql);
    return Failure(number ? long(number) : 2013, kDbSource, QString::fromUtf8(mysql_error(mysql)));
}

} // namespace

RowStream::RowStream(Connection& connection, const QString& sql)
{
    MYSQL* mysql = mysqlOf(connection);
    handle_ = mysql;
    const QByteArray text = sql.toUtf8();
    if (mysql_real_query(mysql, text.constData(), text.size()) != 0)
        throw failureOf(mysql);
    if (mysql_field_count(mysql) == 0)
        return;
    MYSQL_RES* result = mysql_use_result(mysql);
    if (!result)
        throw failureOf(mysql);
    result_ = result;
    // The values are shown as the Qt driver's values print: numbers with a
    // fraction as a double, dates and date-times in ISO form, times as sent.
    const unsigned count = mysql_num_fields(result);
    const MYSQL_FIELD* fields = mysql_fetch_fields(result);
    for (unsigned i = 0; i < count; ++i) {
        const MYSQL_FIELD& f = fields[i];
        names_ << QString::fromUtf8(f.name, int(f.name_length));
        Shown shown = Shown::AsSent;
        switch (f.type) {
        case MYSQL_TYPE_DECIMAL:
        case MYSQL_TYPE_NEWDECIMAL:
        case MYSQL_TYPE_FLOAT:
        case MYSQL_TYPE_DOUBLE:
            shown = Shown::Number;
            break;
        case MYSQL_TYPE_TINY:
        case MYSQL_TYPE_SHORT:
        case MYSQL_TYPE_INT24:
        case MYSQL_TYPE_LONG:
        case MYSQL_TYPE_LONGLONG:
            if (f.flags & ZEROFILL_FLAG)
                shown = Shown::Integer;
            break;
        case MYSQL_TYPE_DATE:
        case MYSQL_TYPE_NEWDATE:
            shown = Shown::Date;
            break;
        case MYSQL_TYPE_DATETIME:
        case MYSQL_TYPE_TIMESTAMP:
            shown = Shown::DateTime;
            break;
        default:
            break;
        }
        shown_ << shown;
    }
    converted_.resize(int(count));
}

RowStream::~RowStream()
{
    MYSQL* mysql = static_cast<MYSQL*>(handle_);
    // Reads what is left, so that the connection serves the next statement.
    if (result_)
        mysql_free_result(static_cast<MYSQL_RES*>(result_));
    while (mysql && mysql_more_results(mysql) && mysql_next_result(mysql) == 0)
        if (MYSQL_RES* more = mysql_use_result(mysql))
            mysql_free_result(more);
}

bool RowStream::next()
{
    if (!result_)
        return false;
    MYSQL_RES* result = static_cast<MYSQL_RES*>(result_);
    row_ = mysql_fetch_row(result);
    if (!row_) {
        if (mysql_errno(static_cast<MYSQL*>(handle_)) != 0)
            throw failureOf(static_cast<MYSQL*>(handle_));
        return false;
    }
    lengths_ = mysql_fetch_lengths(result);
    return true;
}

bool RowStream::isNull(int column) const
{
    return row_ && !row_[column];
}

QByteArrayView RowStream::text(int column)
{
    if (!row_ || !row_[column])
        return {};
    const QByteArray sent = QByteArray::fromRawData(row_[column], qsizetype(lengths_[column]));
    QByteArray& out = converted_[column];
    switch (shown_.at(column)) {
    case Shown::AsSent:
        return QByteArrayView(row_[column], qsizetype(lengths_[column]));
    case Shown::Number:
        out = QByteArray::number(sent.toDouble(), 'g', QLocale::FloatingPointShortest);
        break;
    case Shown::Integer:
        out = sent.startsWith('-') ? QByteArray::number(sent.toLongLong()) : QByteArray::number(sent.toULongLong());
        break;
    case Shown::Date:
        out = QDate::fromString(QString::fromLatin1(sent), Qt::ISODate).toString(Qt::ISODate).toLatin1();
        break;
    case Shown::DateTime: {
        QString value = QString::fromLatin1(sent);
        if (value.size() == 14) // yyyyMMddhhmmss
            value.insert(4, u'-').insert(7, u'-').insert(10, u'T').insert(13, u':').insert(16, u':');
        out = QDateTime::fromString(value, Qt::ISODate).toString(Qt::ISODateWithMs).toLatin1();
        break;
    }
    }
    return out;
}

} // namespace corvane
