#pragma once

#include <QString>

namespace corvane {

class Connection;

// Sees each statement a Connection has run and whether it succeeded. Tests
// install one to observe the order of writes; none is installed otherwise.
class StatementObserver {
public:
    virtual ~StatementObserver() = default;
    virtual void ran(const Connection& connection, const QString& sql, bool ok) = 0;
};

// Installs the observer for every connection of the process; nullptr removes it.
void setStatementObserver(StatementObserver* observer);

} // namespace corvane
