#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

namespace corvane {

class Connection;

// The host's tables. The component never creates tables; the host and the
// command line do, through this one definition, and so does every test database.
namespace schema {

struct Column {
    QString name;
    QString type; // SQL type, e.g. "VARCHAR(20)", "INT", "DOUBLE"
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

// Creates every missing table; returns the names of the tables it created.
QStringList createMissingTables(Connection& connection);

// Natures of business every database starts with, when FBT_Nature is empty.
int fillNatures(Connection& connection);

// A small, realistic set of clients, banks, accounts, bills and receipts.
// Adds nothing when clients exist already; returns the number of rows added.
int loadDemoData(Connection& connection);

} // namespace schema
} // namespace corvane
