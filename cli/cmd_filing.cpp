#include "cli/command.h"

#include "core/conversions.h"
#include "core/errorlog.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "core/resumenext.h"
#include "db/connection.h"
#include "screens/register/filingsave.h"
#include "screens/register/returnregister.h"

#include <unistd.h>

namespace corvane::cli {

namespace {

using namespace returnregister;

struct Refusal {
    QString text;
};

// The date as the masked box takes it: its eight digits in the day, month and
// year places, then normalised; empty stays empty.
QString boxDate(const QString& given)
{
    QString digits;
    for (const QChar c : given)
        if (c.isDigit())
            digits += c;
    if (given.trimmed().isEmpty())
        return QString();
    if (digits.size() != 8)
        throw Refusal{QStringLiteral("Please Specify a Valid Date.")};
    const QString box = digits.left(2) + QLatin1Char('/') + digits.mid(2, 2) + QLatin1Char('/') + digits.mid(4);
    QString year;
    const QString date = ConvertDate(box, QStringLiteral("dd/MM/yyyy"), year);
    if (!holdsEightDigits(date))
        throw Refusal{QStringLiteral("Please Specify a Valid Date.")};
    return date;
}

int runFiling(Invocation& inv)
{
    inv.expectWords(1, 1);
    const QString code = inv.word(0, QStringLiteral("CODE"));
    if (code.trimmed().isEmpty())
        throw UsageError("CODE is empty");
    if (inv.year.isEmpty())
        throw UsageError("--year is required (the first year of the assessment year, e.g. 2008)");
    bool ok = false;
    const int year = inv.year.toInt(&ok);
    if (!ok || year < kFirstYear || year > 9998)
        throw UsageError(QStringLiteral("--year takes a year from %1, not %2").arg(kFirstYear).arg(inv.year).toStdString());
    std::optional<Prompter::Answer> interest;
    if (inv.has(QStringLiteral("--interest"))) {
        const QString v = inv.option(QStringLiteral("--interest"));
        if (v == QStringLiteral("yes"))
            interest = Prompter::Answer::Yes;
        else if (v == QStringLiteral("no"))
            interest = Prompter::Answer::No;
        else
            throw UsageError("--interest takes yes or no");
    }

    auto connection = inv.connect();
    const QString item = yearItems(year).last();
    QVector<Entry> entries = loadEntries(*connection, year);
    try {
        if (findCode(entries, code, true) < 0)
            throw Refusal{filing::message(filing::Outcome::UnknownCode, item)};
        const int index = findCode(entries, code, false);
        const Entry stored = entries.at(index);
        const QString date = inv.has(QStringLiteral("--date")) ? boxDate(inv.option(QStringLiteral("--date")))
                                                               : stored[EntryDate];
        const QString number = inv.has(QStringLiteral("--ack")) ? inv.option(QStringLiteral("--ack")) : stored[EntryNumber];

        ScriptedPrompter answers;
        Prompter* prompter = &corvane::prompter();
        if (interest) {
            answers.then(*interest);
            prompter = &answers;
        } else if (stored[EntryHasRow] == QLatin1String("1") && filing::asksAboutInterest(stored[EntryIntDate], date)
                   && !::isatty(STDIN_FILENO)) {
            throw Refusal{QStringLiteral("the date of interest calculation is %1: give --interest yes to change it to "
                                         "the date of filing, or --interest no to keep it")
                              .arg(stored[EntryIntDate])};
        }

        ResumeNext guard(QStringLiteral("Pending"), QStringLiteral("CMDSAVE_CLICK"));
        const filing::ClientSave save{code, date, number};
        const filing::Outcome outcome = filing::saveClient(*connection, entries, save, item, *prompter, guard);
        if (outcome == filing::Outcome::Failed) {
            inv.err << "corvane: the filing details of " << code << " could not be written (logged in "
                    << logFilePath() << ")" << Qt::endl;
            return 1;
        }
        if (outcome != filing::Outcome::Saved)
            throw Refusal{filing::message(outcome, item, save)};
        const Entry& saved = entries.at(index);
        inv.err << "client " << code << ", " << item << ": date of filing "
                << (saved[EntryDate].isEmpty() ? QStringLiteral("(none)") : saved[EntryDate]) << ", acknowledgement no. "
                << (saved[EntryNumber].isEmpty() ? QStringLiteral("(none)") : saved[EntryNumber]) << Qt::endl;
        return 0;
    } catch (const Refusal& refusal) {
        inv.err << "corvane: " << refusal.text << Qt::endl;
        return 1;
    }
}

const CommandRegistration registration({
    QStringLiteral("filing"),
    QStringLiteral("record the date of filing and acknowledgement number of a client's return"),
    QStringLiteral(
        "Usage: corvane [global options] filing CODE --year YYYY [--date DATE] [--ack NUMBER]\n"
        "           [--interest yes|no]\n"
        "\n"
        "Saves the filing details of client CODE (exactly as stored) for the assessment\n"
        "year starting in YYYY, as the register's entry view does.\n"
        "  --date      the date of filing: its eight digits, day, month, year, with or\n"
        "              without separators (15/04/2008, 15042008); \"\" clears it.\n"
        "              Left out: the stored date is kept.\n"
        "  --ack       the acknowledgement number; \"\" clears it. Left out: kept.\n"
        "  --interest  when the client's date of interest calculation is a date other\n"
        "              than the new date of filing: yes replaces it with the date of\n"
        "              filing, no keeps it. Without it the question is asked on a\n"
        "              terminal, and refused without one. A cleared date of filing also\n"
        "              clears the date of interest calculation; \"todate\" is never changed.\n"
        "\n"
        "Exit status 1 with the message: \"Client Code does not Exists.\",\n"
        "\"Date Should be on or after 01/04/YYYY\", \"Please Specify a Valid Date.\", an\n"
        "acknowledgement number longer than the 30 characters stored, or a statement\n"
        "that failed.\n"),
    {QStringLiteral("--date"), QStringLiteral("--ack"), QStringLiteral("--interest")},
    {},
    runFiling,
});

} // namespace
} // namespace corvane::cli
