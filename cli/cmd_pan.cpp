#include "cli/command.h"

#include "core/conversions.h"

namespace corvane::cli {

namespace {

int runPan(Invocation& inv)
{
    inv.expectWords(1, 1);
    const bool valid = ValidPan(inv.word(0, QStringLiteral("TEXT")));
    inv.out << (valid ? "valid" : "invalid") << Qt::endl;
    return valid ? 0 : 1;
}

const CommandRegistration registration({
    QStringLiteral("pan"),
    QStringLiteral("tell whether a text has the form of a permanent account number"),
    QStringLiteral("Usage: corvane [global options] pan TEXT\n"
                   "\n"
                   "Prints \"valid\" (exit status 0) when TEXT is five capital letters, four digits\n"
                   "and a capital letter (ABCDE1234F), and also for the empty text and for ten\n"
                   "capital letters (a placeholder); otherwise \"invalid\" (exit status 1).\n"
                   "Small letters never pass.\n"),
    {},
    {},
    runPan,
});

} // namespace
} // namespace corvane::cli
