#include "cli/command.h"

#include "core/conversions.h"
#include "core/errorlog.h"

#include <QRegularExpression>

namespace corvane::cli {

namespace {

int runWords(Invocation& inv)
{
    inv.expectWords(1, 1);
    const QString amount = inv.word(0, QStringLiteral("AMOUNT"));
    static const QRegularExpression decimal(QStringLiteral("^ *([0-9]+(\\.[0-9]*)?|\\.[0-9]+) *$"));
    if (!decimal.match(amount).hasMatch())
        throw UsageError(QStringLiteral("AMOUNT must be a non-negative decimal number such as 1234.50, not \"%1\"")
                             .arg(amount)
                             .toStdString());
    int dropped = 0;
    inv.out << ConvertToWord(amount, &dropped) << Qt::endl;
    if (dropped == 0)
        return 0;
    inv.err << "corvane: the words stop at crore: " << dropped << " higher group" << (dropped == 1 ? " was" : "s were")
            << " left out (" << logNote() << ")" << Qt::endl;
    return 1;
}

const CommandRegistration registration({
    QStringLiteral("words"),
    QStringLiteral("write an amount in words (crore, lac, thousand, hundred; paisa)"),
    QStringLiteral("Usage: corvane [global options] words AMOUNT\n"
                   "\n"
                   "Prints AMOUNT in words in the Indian numbering system, as the printed forms\n"
                   "carry it: 1234567.5 gives \"Twelve Lac Thirty Four Thousand Five Hundred Sixty\n"
                   "Seven And Fifty Paisa Only\". Two decimals are read, a third is dropped.\n"
                   "AMOUNT is a non-negative decimal number with \".\" as the point.\n"
                   "\n"
                   "Amounts of one hundred crore and more lose their groups above crore: the\n"
                   "words are printed without them, the loss is logged and the exit status is 1.\n"),
    {},
    {},
    runWords,
});

} // namespace
} // namespace corvane::cli
