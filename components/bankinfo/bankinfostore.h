#pragma once

#include <QString>
#include <QStringList>
#include <QVector>
#include <optional>

namespace corvane {
class Connection;
}

namespace corvane::bankinfo {

// The three lists of the component, each in a table of its own.
enum class Kind { Banks, Micr, Ao };

std::optional<Kind> kindFromName(const QString& name); // "banks", "micr", "ao"
QString kindName(Kind kind);
QString kindDescription(Kind kind);                    // "bank branch list" …

struct Column {
    QString name;
    int maxLength;
};

// A list's table: columns in stored order, the key and the columns a chooser shows.
struct TableDef {
    QString name;
    QVector<Column> columns;
    QStringList key;
    QStringList shown;
    QStringList headings; // of the shown columns
    QString order;
};
const TableDef& tableDef(Kind kind);

// What a chooser shows: the shown columns of the matching rows.
struct Lookup {
    QStringList headings;
    QVector<QStringList> rows;
    bool more = false; // more rows match than were fetched
};

// The component's tables on the caller's connection; created on first use.
class BankInfoStore {
public:
    explicit BankInfoStore(Connection& connection) : connection_(connection) {}

    void ensureTables();
    int count(Kind kind);
    // The rows whose shown columns hold every word of filter (any case), in the list's order.
    Lookup find(Kind kind, const QString& filter, int limit = 500);

private:
    Connection& connection_;
    bool ensured_ = false;
};

// A LIKE pattern that finds text anywhere, with the LIKE wildcards of text taken literally.
QString likeAnywhere(const QString& text);

} // namespace corvane::bankinfo
