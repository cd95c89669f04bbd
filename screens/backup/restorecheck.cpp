#include "screens/backup/restorecheck.h"

#include "core/resumenext.h"
#include "db/connection.h"
#include "screens/repair/checkrepairjob.h"

namespace corvane::backup {

QStringList checkRestoredTables(Connection& connection, Progress& progress)
{
    CheckRepairJob job(&connection, progress);
    ResumeNext guard(CheckRepairJob::kModule, QStringLiteral("CHECKTABLES"));
    QStringList lines;
    for (const TableProblem& problem : job.check(job.tables(guard)))
        lines << QStringLiteral("%1: %2").arg(problem.table, problem.report);
    return lines;
}

} // namespace corvane::backup
