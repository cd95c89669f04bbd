#include "screens/backup/tableexport.h"

#include "core/failure.h"
#include "db/connection.h"
#include "db/sqltext.h"

#include <QDate>
#include <QDateTime>
#include <QFile>
#include <QSqlField>
#include <QStringList>

namespace corvane::backup {

namespace {

bool isNumeric(const QSqlField& field)
{
    switch (field.metaType().id()) {
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Float:
    case QMetaType::Double:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return true;
    default:
        return false;
    }
}

QString escaped(QString text)
{
    if (!text.contains(QLatin1Char('\\')) && !text.contains(QLatin1Char('\t')) && !text.contains(QLatin1Char('\n'))
        && !text.contains(QLatin1Char('\r')))
        return text;
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    text.replace(QLatin1Char('\t'), QLatin1String("\\t"));
    text.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    text.replace(QLatin1Char('\r'), QLatin1String("\\r"));
    return text;
}

// Checked writes: a short write or a full disk is a failure, never a silently cut file.
class ExportFile {
public:
    explicit ExportFile(const QString& path) : file_(path)
    {
        if (!file_.open(QIODevice::WriteOnly | QIODevice::Truncate))
            fail();
    }
    void write(const QString& line)
    {
        buffer_ += line.toUtf8();
        buffer_ += '\n';
        if (buffer_.size() >= (1 << 20))
            flushBuffer();
    }
    void close()
    {
        flushBuffer();
        if (!file_.flush())
            fail();
        file_.close();
        if (file_.error() != QFileDevice::NoError)
            fail();
    }

private:
    void flushBuffer()
    {
        if (!buffer_.isEmpty() && file_.write(buffer_) != buffer_.size())
            fail();
        buffer_.clear();
    }
    [[noreturn]] void fail()
    {
        throw Failure(75, QStringLiteral("Corvane"),
                      QStringLiteral("%1: %2").arg(file_.fileName(), file_.errorString()));
    }

    QFile file_;
    QByteArray buffer_;
};

// The one column of the primary key, or an empty text when the key has
// several columns or there is none.
QString singleKeyColumn(Connection& connection, const QString& table)
{
    const auto keys = connection.query(QStringLiteral("SHOW KEYS FROM %1 WHERE Key_name = 'PRIMARY'").arg(sqlName(table)));
    if (keys.rows.size() != 1)
        return QString();
    const int column = keys.columns.indexOf(QStringLiteral("Column_name"));
    return column < 0 ? QString() : keys.rows.first().at(column).toString();
}

} // namespace

QString exportValue(const QVariant& value, const QSqlField& field)
{
    if (value.isNull())
        return isNumeric(field) ? QStringLiteral("0") : QString();
    switch (value.metaType().id()) {
    case QMetaType::QDate:
        return value.toDate().toString(QStringLiteral("yyyy-MM-dd"));
    case QMetaType::QDateTime:
        return value.toDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss AP"));
    default:
        return escaped(value.toString());
    }
}

qint64 exportTable(Connection& connection, const QString& table, const QString& filePath, int chunkRows)
{
    const QString name = sqlName(table);
    const QString key = singleKeyColumn(connection, table);
    ExportFile out(filePath);
    qint64 written = 0;
    QVariant lastKey;
    int keyIndex = -1;
    for (bool first = true;; first = false) {
        // Keyset paging along the primary key; without one, plain offsets.
        QString sql = QStringLiteral("SELECT * FROM %1").arg(name);
        if (!key.isEmpty()) {
            if (!first)
                sql += QStringLiteral(" WHERE %1 > %2").arg(sqlName(key), sqlLiteral(lastKey));
            sql += QStringLiteral(" ORDER BY %1 LIMIT %2").arg(sqlName(key)).arg(chunkRows);
        } else {
            sql += QStringLiteral(" LIMIT %1 OFFSET %2").arg(chunkRows).arg(written);
        }
        const Connection::Result chunk = connection.query(sql);
        const int columns = chunk.columns.count();
        if (first) {
            QStringList names;
            for (int i = 0; i < columns; ++i)
                names << escaped(chunk.columns.fieldName(i));
            out.write(names.join(QLatin1Char('\t')));
            if (!key.isEmpty())
                keyIndex = chunk.columns.indexOf(key);
        }
        QStringList cells;
        for (const auto& row : chunk.rows) {
            cells.clear();
            for (int i = 0; i < columns; ++i)
                cells << exportValue(row.at(i), chunk.columns.field(i));
            out.write(cells.join(QLatin1Char('\t')));
        }
        written += chunk.rows.size();
        if (chunk.rows.size() < chunkRows)
            break;
        if (keyIndex >= 0)
            lastKey = chunk.rows.last().at(keyIndex);
    }
    out.close();
    return written;
}

} // namespace corvane::backup
