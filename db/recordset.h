#pragma once

#include "db/connection.h"

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

namespace corvane {

// A static record set, read whole when opened, that the screens walk row by row:
// BOF and EOF are separate states before the first and after the last row,
// moves may pass the ends, positions are 1-based, a deleted row stays current
// until the next move.
class Recordset {
public:
    Recordset() = default;

    void open(const QString& sql, Connection& connection);
    // The whole table in table order.
    void openTable(const QString& table, Connection& connection);
    void close();
    bool isOpen() const { return connection_ != nullptr; }

    bool bof() const;
    bool eof() const;
    int recordCount() const;

    void moveFirst();
    void moveLast();
    // Past the last row gives EOF; moving on from EOF fails (3021).
    void moveNext();
    void movePrevious();

    // 1-based; 0 when at BOF or EOF.
    int absolutePosition() const;
    void setAbsolutePosition(int position);

    int fieldCount() const;
    QString fieldName(int index) const;
    int fieldIndex(const QString& name) const; // -1 when absent; names without regard to case
    QVariant field(int index) const;
    QVariant field(const QString& name) const;
    // The field as text, null as empty text.
    QString text(int index) const;
    QString text(const QString& name) const;

    // Runs the statement again and moves to the first row.
    void requery();

    // Deletes the current row from its table (by primary key, else by every column).
    void deleteCurrent();

    // Searches from the current row onwards for "field='value'" (or field=number);
    // the row found becomes current, else the record set is at EOF.
    bool find(const QString& criterion);

private:
    void requireOpen() const;
    void requireCurrent() const;
    void load();

    Connection* connection_ = nullptr;
    QString sql_;
    QStringList names_;
    QString table_;
    QVector<QVector<QVariant>> rows_;
    int pos_ = -1;               // -1 BOF, rows_.size() EOF
    bool currentDeleted_ = false; // pos_ then points at the row after the deleted one
};

} // namespace corvane
