#include "cli/command.h"
#include "cli/terminalprogress.h"

#include "core/errorlog.h"
#include "core/prompter.h"
#include "core/resumenext.h"
#include "db/connection.h"
#include "screens/repair/checkrepairjob.h"

namespace corvane::cli {

namespace {

// One line per problem, table TAB report; "No Error." when there is none.
void print(Invocation& inv, const QList<TableProblem>& problems)
{
    if (problems.isEmpty())
        inv.out << "No Error." << Qt::endl;
    for (const TableProblem& p : problems)
        inv.out << p.table << '\t' << p.report << Qt::endl;
}

int runCheck(Invocation& inv)
{
    inv.expectWords(0, 0);
    auto connection = inv.connect();
    TerminalProgress progress(inv.err, QStringLiteral("check"));
    CheckRepairJob job(connection.get(), progress);

    ResumeNext guard(CheckRepairJob::kModule, QStringLiteral("FORM_LOAD"));
    const QStringList tables = job.tables(guard);
    if (guard.failures() > 0) {
        progress.finish();
        inv.err << "corvane: the tables could not be listed (logged in " << logFilePath() << ")" << Qt::endl;
        return 1;
    }
    QList<TableProblem> problems = job.check(tables);
    progress.finish();
    print(inv, problems);
    if (!inv.has(QStringLiteral("--repair"))) {
        if (!problems.isEmpty())
            inv.err << "corvane: " << problems.size() << " problem" << (problems.size() == 1 ? "" : "s")
                    << " found; corvane check --repair repairs them" << Qt::endl;
        return problems.isEmpty() ? 0 : 1;
    }
    if (problems.isEmpty()) {
        prompter().inform(QStringLiteral("Nothing to Repair."), Prompter::Icon::Information);
        return 0;
    }
    // The screen's advice; on a terminal it waits unless --yes.
    if (prompter().ask(QStringLiteral("It is highly recommended to take Backup before Refreshing Data."),
                       Prompter::Buttons::OKCancel, Prompter::Icon::Information, Prompter::Answer::OK)
        != Prompter::Answer::OK) {
        inv.err << "corvane: nothing repaired" << Qt::endl;
        return 1;
    }
    const QList<TableProblem> notes = job.repair(problems);
    progress.finish();
    for (const TableProblem& note : notes)
        inv.err << note.table << ": " << note.report << Qt::endl;
    problems = job.check(tables);
    progress.finish();
    print(inv, problems);
    if (problems.isEmpty())
        return 0;
    prompter().inform(QStringLiteral("Data can not be repaired."), Prompter::Icon::Information);
    return 1;
}

const CommandRegistration registration({
    QStringLiteral("check"),
    QStringLiteral("check every table of the database, and repair the damaged ones"),
    QStringLiteral("Usage: corvane [global options] check [--repair] [--yes]\n"
                   "\n"
                   "Checks every table of the database with the server's extended table check\n"
                   "and prints one line per problem found: the table, a tab, the server's report;\n"
                   "or \"No Error.\" when every table is OK. A table whose check cannot run is\n"
                   "listed with \"Failed to Check Table\".\n"
                   "  --repair  repairs the tables that reported problems (an index file that\n"
                   "            is lost is rebuilt from the table's definition), then checks\n"
                   "            every table again and prints that second check the same way.\n"
                   "            What the repair reports beyond OK, such as rows it could not\n"
                   "            keep, goes to standard error. Take a backup first.\n"
                   "  --yes     does not pause at the advice to take a backup (on a terminal)\n"
                   "\n"
                   "Progress shows on standard error when it is a terminal. A statement that\n"
                   "fails is logged and the work goes on with the next table.\n"
                   "\n"
                   "Exit status: 0 no problem remains, 1 a problem remains (after --repair:\n"
                   "\"Data can not be repaired.\"), 2 wrong usage.\n"),
    {},
    {QStringLiteral("--repair")},
    runCheck,
});

} // namespace
} // namespace corvane::cli
