#pragma once

#include <QString>
#include <QStringList>

namespace corvane {

class Connection;

// Client code maintenance across every table that has a code_no column,
// found at run time; logged under CLSDATA.
void DeleteClient(Connection* connection, const QString& cd);
void ChangeCode(Connection* connection, const QString& oldCd, const QString& newCd);

// The tables of the database as "SHOW Tables" lists them.
QStringList listTables(Connection& connection);

} // namespace corvane
