#include "db/recordset.h"

#include "core/failure.h"
#include "db/sqltext.h"

#include <QRegularExpression>
#include <QSqlField>

namespace corvane {

namespace {
const QString kAdoSource = QStringLiteral("Corvane.Recordset");

[[noreturn]] void noCurrentRecord()
{
    throw Failure(err::NoCurrentRecord, kAdoSource,
                  QStringLiteral("Either BOF or EOF is True, or the current record has been deleted. "
                                 "Requested operation requires a current record."));
}
} // namespace

void Recordset::open(const QString& sql, Connection& connection)
{
    close();
    connection_ = &connection;
    sql_ = sql;
    try {
        load();
    } catch (...) {
        close();
        throw;
    }
}

void Recordset::openTable(const QString& table, Connection& connection)
{
    open(QStringLiteral("select * from ") + sqlName(table), connection);
}

void Recordset::load()
{
    Connection::Result result = connection_->query(sql_);
    names_.clear();
    table_.clear();
    for (int i = 0; i < result.columns.count(); ++i) {
        names_ << result.columns.fieldName(i);
        if (table_.isEmpty())
            table_ = result.columns.field(i).tableName();
    }
    rows_ = std::move(result.rows);
    pos_ = rows_.isEmpty() ? -1 : 0;
    currentDeleted_ = false;
}

void Recordset::close()
{
    connection_ = nullptr;
    sql_.clear();
    names_.clear();
    table_.clear();
    rows_.clear();
    pos_ = -1;
    currentDeleted_ = false;
}

void Recordset::requireOpen() const
{
    if (!connection_)
        throw Failure(err::RecordsetClosed, kAdoSource, QStringLiteral("Operation is not allowed when the object is closed."));
}

void Recordset::requireCurrent() const
{
    requireOpen();
    if (currentDeleted_ || pos_ < 0 || pos_ >= rows_.size())
        noCurrentRecord();
}

bool Recordset::bof() const
{
    requireOpen();
    return rows_.isEmpty() || pos_ < 0;
}

bool Recordset::eof() const
{
    requireOpen();
    return rows_.isEmpty() || (pos_ >= rows_.size() && !currentDeleted_);
}

int Recordset::recordCount() const
{
    requireOpen();
    return int(rows_.size());
}

void Recordset::moveFirst()
{
    requireOpen();
    currentDeleted_ = false;
    pos_ = rows_.isEmpty() ? -1 : 0;
}

void Recordset::moveLast()
{
    requireOpen();
    currentDeleted_ = false;
    pos_ = rows_.isEmpty() ? -1 : int(rows_.size()) - 1;
}

void Recordset::moveNext()
{
    requireOpen();
    if (currentDeleted_) {
        currentDeleted_ = false; // pos_ already names the following row
        return;
    }
    if (eof())
        noCurrentRecord();
    ++pos_;
}

void Recordset::movePrevious()
{
    requireOpen();
    if (currentDeleted_) {
        currentDeleted_ = false;
        --pos_;
        return;
    }
    if (bof())
        noCurrentRecord();
    --pos_;
}

int Recordset::absolutePosition() const
{
    requireOpen();
    if (currentDeleted_ || pos_ < 0 || pos_ >= rows_.size())
        return 0;
    return pos_ + 1;
}

void Recordset::setAbsolutePosition(int position)
{
    requireOpen();
    if (position < 1 || position > rows_.size())
        throw Failure(3001, kAdoSource, QStringLiteral("Arguments are of the wrong type, are out of acceptable range, or are in conflict with one another."));
    currentDeleted_ = false;
    pos_ = position - 1;
}

int Recordset::fieldCount() const
{
    requireOpen();
    return int(names_.size());
}

QString Recordset::fieldName(int index) const
{
    requireOpen();
    if (index < 0 || index >= names_.size())
        throw Failure(3265, kAdoSource, QStringLiteral("Item cannot be found in the collection corresponding to the requested name or ordinal."));
    return names_.at(index);
}

int Recordset::fieldIndex(const QString& name) const
{
    for (int i = 0; i < names_.size(); ++i)
        if (names_.at(i).compare(name, Qt::CaseInsensitive) == 0)
            return i;
    return -1;
}

QVariant Recordset::field(int index) const
{
    fieldName(index);
    requireCurrent();
    return rows_.at(pos_).at(index);
}

QVariant Recordset::field(const QString& name) const
{
    requireOpen();
    const int index = fieldIndex(name);
    if (index < 0)
        throw Failure(3265, kAdoSource, QStringLiteral("Item cannot be found in the collection corresponding to the requested name or ordinal."));
    return field(index);
}

QString Recordset::text(int index) const
{
    const QVariant v = field(index);
    return v.isNull() ? QString() : v.toString();
}

QString Recordset::text(const QString& name) const
{
    const QVariant v = field(name);
    return v.isNull() ? QString() : v.toString();
}

void Recordset::requery()
{
    requireOpen();
    load();
}

void Recordset::deleteCurrent()
{
    requireCurrent();
    if (table_.isEmpty())
        throw Failure(3251, kAdoSource, QStringLiteral("Current Recordset does not support updating."));

    QStringList keyColumns;
    const auto keys = connection_->query(QStringLiteral("SHOW KEYS FROM %1 WHERE Key_name = 'PRIMARY'").arg(sqlName(table_)));
    const int columnNameIndex = keys.columns.indexOf(QStringLiteral("Column_name"));
    for (const auto& row : keys.rows)
        if (columnNameIndex >= 0)
            keyColumns << row.at(columnNameIndex).toString();
    if (keyColumns.isEmpty())
        keyColumns = names_;

    const auto& row = rows_.at(pos_);
    QStringList criteria;
    for (const QString& column : keyColumns) {
        const int i = fieldIndex(column);
        if (i < 0)
            throw Failure(3251, kAdoSource, QStringLiteral("Current Recordset does not support updating."));
        criteria << sqlName(names_.at(i)) + QStringLiteral(" <=> ") + sqlLiteral(row.at(i));
    }
    const int affected = connection_->execute(QStringLiteral("DELETE FROM %1 WHERE %2 LIMIT 1")
                                                  .arg(sqlName(table_), criteria.join(QStringLiteral(" AND "))));
    if (affected < 1)
        throw Failure(-2147217864, kAdoSource, QStringLiteral("Row cannot be located for updating. Some values may have been changed since it was last read."));
    rows_.removeAt(pos_);
    currentDeleted_ = true;
}

bool Recordset::find(const QString& criterion)
{
    requireOpen();
    static const QRegularExpression pattern(
        QStringLiteral(R"(^\s*\[?(\w+)\]?\s*=\s*(?:'((?:[^']|'')*)'|([-+0-9.eE]+))\s*$)"));
    const auto match = pattern.match(criterion);
    if (!match.hasMatch())
        throw Failure(3001, kAdoSource, QStringLiteral("Arguments are of the wrong type, are out of acceptable range, or are in conflict with one another."));
    const int column = fieldIndex(match.captured(1));
    if (column < 0)
        throw Failure(3265, kAdoSource, QStringLiteral("Item cannot be found in the collection corresponding to the requested name or ordinal."));
    const bool numeric = match.capturedStart(3) >= 0;
    const QString wanted = numeric ? match.captured(3) : match.captured(2).replace(QStringLiteral("''"), QStringLiteral("'"));

    int start = pos_ < 0 ? 0 : pos_;
    currentDeleted_ = false;
    for (int i = start; i < rows_.size(); ++i) {
        const QVariant& v = rows_.at(i).at(column);
        if (v.isNull())
            continue;
        const bool equal = numeric ? v.toDouble() == wanted.toDouble()
                                   : v.toString().compare(wanted, Qt::CaseInsensitive) == 0;
        if (equal) {
            pos_ = i;
            return true;
        }
    }
    pos_ = int(rows_.size());
    return false;
}

} // namespace corvane
