#include "db/rowstream.h"

#include "core/failure.h"
#include "db/connection.h"

#include <QDate>
#include <QDateTime>
#include <QLocale>

#include <mysql.h>

namespace corvane {

namespace {

// The decimal text the server sent as QByteArray::number(double, 'g', shortest)
// prints it, when that is the same digits (up to 15 significant ones, which
// a double keeps) in plain notation; false for anything else.
bool plainDecimal(QByteArrayView sent, QByteArray& out)
{
    const char* p = sent.data();
    const char* end = p + sent.size();
    const bool negative = p != end && *p == '-';
    if (negative)
        ++p;
    const char* point = p;
    while (point != end && *point >= '0' && *point <= '9')
        ++point;
    const char* fraction = point == end ? end : point + 1;
    if (point == p || (point != end && *point != '.'))
        return false;
    for (const char* c = fraction; c != end; ++c)
        if (*c < '0' || *c > '9')
            return false;
    const char* last = end; // past the last significant digit of the fraction
    while (last != fraction && last[-1] == '0')
        --last;
    const char* first = p; // first significant digit of the whole part
    while (first != point && *first == '0')
        ++first;
    if (first == point) // 0 and values below 1 take the general path
        return false;
    const qsizetype whole = point - first;
    qsizetype digits = whole + (last - fraction);
    if (last == fraction) {
        // A whole number ending in zeros prints in the exponent form ("1.2e+07") when that is shorter.
        const char* zeros = point;
        while (zeros[-1] == '0')
            --zeros;
        digits = zeros - first;
        if (whole > digits + (digits > 1 ? 1 : 0) + 4)
            return false;
    }
    if (digits > 15)
        return false;
    out.resize(0); // keeps the buffer for the next value
    if (negative)
        out += '-';
    out.append(first, point - first);
    if (last != fraction) {
        out += '.';
        out.append(fraction, last - fraction);
    }
    return true;
}

// Whether a DATE as sent, "yyyy-MM-dd", is a date QDate reads (and so prints back unchanged).
bool validIsoDate(QByteArrayView sent)
{
    if (sent.size() != 10 || sent[4] != '-' || sent[7] != '-')
        return false;
    auto number = [&](int from, int count) {
        int n = 0;
        for (int i = from; i < from + count; ++i) {
            if (sent[i] < '0' || sent[i] > '9')
                return -1;
            n = n * 10 + (sent[i] - '0');
        }
        return n;
    };
    const int year = number(0, 4), month = number(5, 2), day = number(8, 2);
    return year > 0 && QDate::isValid(year, month, day);
}

} // namespace

RowStream::RowStream(Connection& connection, const QString& sql) : connection_(connection), sql_(sql)
{
    connection.collect();
    MYSQL* mysql = connection.handle();
    handle_ = mysql;
    const QByteArray text = sql.toUtf8();
    connection.statementStarts();
    running_ = true;
    if (mysql_real_query(mysql, text.constData(), text.size()) != 0)
        end(false);
    if (mysql_field_count(mysql) == 0) {
        end(true);
        return;
    }
    MYSQL_RES* result = mysql_use_result(mysql);
    if (!result)
        end(false);
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
            shown = Shown::Decimal;
            break;
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
    if (running_)
        connection_.statementEnds(sql_, true);
}

void RowStream::end(bool ok)
{
    running_ = false;
    const std::optional<Failure> stopped = connection_.statementEnds(sql_, ok);
    if (ok)
        return;
    throw stopped ? *stopped : Connection::failureOf(static_cast<MYSQL*>(handle_));
}

bool RowStream::next()
{
    if (!result_ || !running_)
        return false;
    MYSQL_RES* result = static_cast<MYSQL_RES*>(result_);
    row_ = mysql_fetch_row(result);
    if (!row_) {
        end(mysql_errno(static_cast<MYSQL*>(handle_)) == 0);
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
    case Shown::Decimal:
        if (plainDecimal(sent, out))
            break;
        [[fallthrough]];
    case Shown::Number:
        out = QByteArray::number(sent.toDouble(), 'g', QLocale::FloatingPointShortest);
        break;
    case Shown::Integer:
        out = sent.startsWith('-') ? QByteArray::number(sent.toLongLong()) : QByteArray::number(sent.toULongLong());
        break;
    case Shown::Date:
        if (validIsoDate(sent))
            return QByteArrayView(row_[column], qsizetype(lengths_[column]));
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
