#pragma once

#include <QString>
#include <QStringList>

namespace corvane {

class Connection;

// What a client maintenance run did.
struct ClientDataResult {
    int tables = 0;    // tables with a code_no column that were worked on
    int rows = 0;      // rows deleted or changed
    int failures = 0;  // statements that failed (each logged)
};

// Client code maintenance across every table that has a code_no column,
// found at run time; logged under CLSDATA, each failing statement on its
// own, the work going on with the next table.
ClientDataResult DeleteClient(Connection* connection, const QString& cd);
// Rows change only where the stored code in capitals equals oldCd exactly:
// an old code given in lower case changes nothing.
ClientDataResult ChangeCode(Connection* connection, const QString& oldCd, const QString& newCd);

// The tables of the database as "SHOW Tables" lists them.
QStringList listTables(Connection& connection);

} // namespace corvane
