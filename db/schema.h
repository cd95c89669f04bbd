#pragma once

#include <QString>
#include <QStringList>
#include <QVector>
#include <utility>

namespace corvane {

class Connection;

// The host's tables. The component never creates tables; the host and the
// command line do, through this one definition, and so does every test database.
namespace schema {

struct Column {
    QString name;
    QString type; // SQL type, e.g. "VARCHAR(20)", "INT", "DOUBLE"

    // The characters a text column holds; 0 for other columns.
    int width() const;
};

struct Table {
    QString name;
    QVector<Column> columns;
    QStringList primaryKey;

    QStringList columnNames() const;
    QString createStatement() const; // CREATE TABLE IF NOT EXISTS …, MyISAM
};

const QVector<Table>& hostTables();
const Table* find(const QString& name);
const Column* findColumn(const QString& table, const QString& column);

// Characters as the server counts them: one per code point, so that an emoji
// (two UTF-16 units) counts once.
qsizetype storedLength(const QString& text);

// The server cuts an over-long text silently. Before a user's values are
// written, each is checked against its column; the first that does not fit
// gives the message (naming the field as the user knows it) and nothing is written.
class LengthCheck {
public:
    explicit LengthCheck(QString table) : table_(std::move(table)) {}
    // Checks value against the column; a column unknown or not text is not checked.
    LengthCheck& operator()(const QString& column, const QString& value, const QString& field);
    bool ok() const { return problem_.isEmpty(); }
    const QString& problem() const { return problem_; }
    // The column of the first value that did not fit.
    const QString& column() const { return column_; }

private:
    QString table_;
    QString problem_;
    QString column_;
};

// Creates every missing table; returns the names of the tables it created.
QStringList createMissingTables(Connection& connection);

// Natures of business every database starts with, when FBT_Nature is empty.
int fillNatures(Connection& connection);

// A small, realistic set of clients, banks, accounts, bills and receipts.
// Adds nothing when clients exist already; returns the number of rows added.
int loadDemoData(Connection& connection);

} // namespace schema
} // namespace corvane
