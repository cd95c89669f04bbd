#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace corvane {

class Connection;
class Progress;
class ResumeNext;

// One thing the server's table check found: the table and the report.
struct TableProblem {
    QString table;
    QString report; // the server's text, or "Failed to Check Table"
    QString type;   // the server's kind of report (error, warning …), or "N/A"

    bool operator==(const TableProblem&) const = default;
};

// Checks every table of the database with the server's extended check and
// repairs the tables that reported problems. Shared by the check and repair
// screen, the command line and restoration; reports through a Progress (the
// screen's implementation lets the window repaint). A failed statement is
// logged under the module given (the screen's name) and the work goes on with
// the next table.
class CheckRepairJob {
public:
    static inline const QString kModule = QStringLiteral("frmchkrep");
    static inline const QString kFailedReport = QStringLiteral("Failed to Check Table");
    static inline const QString kFailedType = QStringLiteral("N/A");

    CheckRepairJob(Connection* connection, Progress& progress, QString module = kModule);

    // The names of all tables ("SHOW Tables"); a failure goes to the caller's guard.
    QStringList tables(ResumeNext& guard);

    // "Check Table … Extended" for each table, in order, then "Flush Tables".
    // Every result row whose report is not OK is a problem; a table whose
    // check could not run gives one problem with kFailedReport and kFailedType.
    QList<TableProblem> check(const QStringList& tables);

    // Repairs each table named by the problems once, in their order: rebuilds
    // the index from the definition when a report names the index file, then
    // checks the table and repairs it unless its check ends OK. Returns the
    // warnings and notes of the repair statements (rows lost, blocks skipped).
    QList<TableProblem> repair(const QList<TableProblem>& problems);

    // Whether a report names the table's index file.
    static bool namesIndexFile(const QString& report);

private:
    Connection& connection() const;

    Connection* connection_;
    Progress& progress_;
    QString module_;
};

} // namespace corvane
