#include "cli/command.h"

#include "core/conversions.h"

namespace corvane::cli {

namespace {

int runDate(Invocation& inv)
{
    inv.expectWords(1, 1);
    const QString text = inv.word(0, QStringLiteral("TEXT"));
    const QString format = inv.option(QStringLiteral("--format"), QStringLiteral("dd/MM/yyyy"));
    QString year = inv.year; // the caller's year variable; the conversion may change it
    const QString result = ConvertDate(text, format, year);
    inv.out << result << '\n' << year << Qt::endl;
    if (!result.isEmpty())
        return 0;
    inv.err << "corvane: \"" << text << "\" gives no date in " << format << " (day, month, year)" << Qt::endl;
    return 1;
}

const CommandRegistration registration({
    QStringLiteral("date"),
    QStringLiteral("normalise a typed date (day first) and show the year it assumed"),
    QStringLiteral("Usage: corvane [global options] date TEXT [--format FMT] [--year YR]\n"
                   "\n"
                   "Reads TEXT day first (\"/\", \"-\" or \".\" between day, month and year) and\n"
                   "prints it in FMT on the first line, or an empty line when it is no date\n"
                   "(exit status 1). The second line is the year variable after the conversion.\n"
                   "\n"
                   "A year of fewer than four digits is completed from YR, the year of January to\n"
                   "March of the financial year: YR defaults to the context's year, else this\n"
                   "year, and for April to December it is taken one lower (and printed so).\n"
                   "  --format FMT   d dd ddd dddd, M MM MMM MMMM, yy yyyy … (default dd/MM/yyyy)\n"
                   "  --year YR      the year variable (default empty); it sets the context's\n"
                   "                 year as well\n"
                   "\n"
                   "Example: corvane date 15/4/8 --year 2009   prints 15/04/2008 and 2008\n"),
    {QStringLiteral("--format")},
    {},
    runDate,
});

} // namespace
} // namespace corvane::cli
