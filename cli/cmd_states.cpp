#include "cli/command.h"

#include "core/errorlog.h"
#include "core/resumenext.h"
#include "core/statelist.h"

#include <QFileInfo>

namespace corvane::cli {

namespace {

int runStates(Invocation& inv)
{
    inv.expectWords(0, 0);
    ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("LOADSTATELIST"));
    QStringList states;
    if (!guard([&] { states = readStateList(); })) {
        inv.err << "corvane: " << lastLoggedDescription() << " (" << logNote() << ")" << Qt::endl;
        return 1;
    }
    if (!QFileInfo(stateListPath()).isFile())
        inv.err << "corvane: there is no state list " << stateListPath() << Qt::endl;
    for (const QString& state : states)
        inv.out << state << '\n';
    inv.out.flush();
    return 0;
}

const CommandRegistration registration({
    QStringLiteral("states"),
    QStringLiteral("list the states of the application's state file"),
    QStringLiteral("Usage: corvane [global options] states\n"
                   "\n"
                   "Prints the states and union territories of Data/StateCodes.txt in the\n"
                   "application folder (--app-path), one per line, trimmed and in capitals, in\n"
                   "the order of the file. Items are separated by commas or line ends; quotes\n"
                   "around an item are removed. A missing file gives an empty list.\n"),
    {},
    {},
    runStates,
});

} // namespace
} // namespace corvane::cli
