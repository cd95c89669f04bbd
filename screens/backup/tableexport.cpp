#include "screens/backup/tableexport.h"

#include "core/failure.h"
#include "db/connection.h"
#include "db/rowstream.h"
#include "db/sqltext.h"

#include <QFile>
#include <QStringList>

namespace corvane::backup {

namespace {

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
    void write(QByteArrayView line)
    {
        buffer_ += line;
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

} // namespace

QString exportExpression(const QString& column, const QString& type)
{
    const QString name = sqlName(column);
    const QString t = type.toLower();
    static const QStringList numeric{"tinyint", "smallint", "mediumint", "int", "bigint", "float", "double",
                                     "real", "decimal", "numeric"};
    const QString base = t.section(QLatin1Char('('), 0, 0).section(QLatin1Char(' '), 0, 0);
    if (numeric.contains(base))
        return QStringLiteral("IFNULL(%1, 0)").arg(name);
    if (base == QLatin1String("date"))
        return QStringLiteral("IFNULL(DATE_FORMAT(%1, '%Y-%m-%d'), '')").arg(name);
    if (base == QLatin1String("datetime") || base == QLatin1String("timestamp"))
        return QStringLiteral("IFNULL(DATE_FORMAT(%1, '%Y-%m-%d %h:%i:%s %p'), '')").arg(name);
    return QStringLiteral("IFNULL(REPLACE(REPLACE(REPLACE(REPLACE(%1, '\\\\', '\\\\\\\\'), '\\t', '\\\\t'), "
                          "'\\n', '\\\\n'), '\\r', '\\\\r'), '')")
        .arg(name);
}

qint64 exportTable(Connection& connection, const QString& table, const QString& filePath)
{
    const QString name = sqlName(table);
    // The server turns each row into its line, so the rows cross as text and
    // the formatting runs beside this process; they are read as they come.
    const auto columns = connection.query(QStringLiteral("SHOW COLUMNS FROM %1").arg(name));
    QStringList names;
    QStringList expressions;
    for (const auto& column : columns.rows) {
        names << escaped(column.value(0).toString());
        expressions << exportExpression(column.value(0).toString(), column.value(1).toString());
    }
    const QString line = QStringLiteral("CONCAT_WS('\\t', %1)").arg(expressions.join(QStringLiteral(", ")));

    ExportFile out(filePath);
    qint64 written = 0;
    // A table that cannot be read leaves no half-written export behind.
    try {
        out.write(names.join(QLatin1Char('\t')).toUtf8());
        RowStream rows(connection, QStringLiteral("SELECT %1 FROM %2").arg(line, name));
        while (rows.next()) {
            out.write(rows.text(0));
            ++written;
        }
        out.close();
    } catch (...) {
        QFile::remove(filePath);
        throw;
    }
    return written;
}

} // namespace corvane::backup
