#include "cli/command.h"
#include "cli/terminalprogress.h"

#include "components/zip/zipcomponent.h"
#include "core/failure.h"
#include "core/prompter.h"
#include "db/connection.h"
#include "screens/backup/restorecandidates.h"
#include "screens/backup/restorejob.h"

namespace corvane::cli {

namespace {

// The closing message of the restore goes to standard output (and, when the
// data was not restored, to standard error) once, not once more through the
// terminal's prompter; questions still go to the terminal.
class ClosingMessages : public Prompter {
public:
    explicit ClosingMessages(Prompter& terminal) : terminal_(terminal) {}
    Answer ask(const Question& question) override
    {
        if (!holding || question.buttons != Buttons::OK)
            return terminal_.ask(question);
        held << question.text;
        return Answer::OK;
    }
    bool holding = false;
    QStringList held;

private:
    Prompter& terminal_;
};

int runRestore(Invocation& inv)
{
    const bool manual = inv.has(QStringLiteral("--db-folder")) || inv.has(QStringLiteral("--data-folder"));
    if (manual && !inv.words.isEmpty())
        throw UsageError("give either ARCHIVE.zip or --db-folder/--data-folder");
    if (!manual)
        inv.expectWords(1, 1);
    registerZipComponent();

    // The server is asked for its data directory; without one the restore
    // still works when the directories are given.
    std::shared_ptr<Connection> connection;
    QString mysqlDirectory = inv.option(QStringLiteral("--mysql-dir"));
    try {
        connection = inv.connect();
    } catch (const Failure& failure) {
        if (mysqlDirectory.isEmpty())
            throw;
        inv.err << "corvane restore: no database connection (" << failure.description() << "); going on without" << Qt::endl;
    }
    if (mysqlDirectory.isEmpty())
        mysqlDirectory = backup::serverDataDirectory(connection.get());

    backup::RestoreJob::Choice choice;
    choice.mode = manual ? backup::RestoreJob::Mode::Manual : backup::RestoreJob::Mode::Zip;
    choice.archive = manual ? QString() : inv.words.first();
    choice.databasesFolder = inv.option(QStringLiteral("--db-folder"));
    choice.dataFolder = inv.option(QStringLiteral("--data-folder"));
    choice.mysqlDirectory = mysqlDirectory;
    choice.dataDirectory = inv.option(QStringLiteral("--data-dir"), inv.appPath);

    TerminalProgress progress(inv.err, QStringLiteral("restore"));
    ClosingMessages messages(prompter());
    backup::RestoreJob job(connection.get(), messages, progress);
    job.stage = [&](const QString& text) {
        if (!text.isEmpty())
            progress.setText(text);
    };
    const bool listed = job.proceed(choice);
    progress.finish();
    if (!listed) {
        job.removeExtraction();
        return 1;
    }
    if (inv.has(QStringLiteral("--list"))) {
        for (const auto& row : job.rows())
            inv.out << row.item.source << '\t' << row.item.destination << '\t' << backup::kindMark(row.item.kind) << '\n';
        inv.out.flush();
        job.removeExtraction();
        return 0;
    }

    messages.holding = true;
    const auto outcome = job.restore();
    progress.finish();
    const bool restored = outcome == backup::RestoreJob::Outcome::Restored;
    for (const auto& row : job.rows())
        inv.out << row.item.source << '\t' << row.item.destination << '\t' << backup::kindMark(row.item.kind) << '\t'
                << (row.status.isEmpty() ? QStringLiteral("Not Restored.") : row.status) << '\n';
    if (!messages.held.contains(job.lastMessage()))
        messages.held << job.lastMessage();
    for (const QString& message : std::as_const(messages.held)) {
        if (message.isEmpty())
            continue;
        if (message == job.lastMessage())
            inv.out << message << '\n';
        if (!restored || message != job.lastMessage())
            inv.err << message << '\n';
    }
    inv.out.flush();
    inv.err.flush();
    job.removeExtraction();

    int status = restored ? 0 : 1;
    if (job.aborted()) {
        inv.err << "corvane restore: aborted; the rows after the failed step were not restored" << Qt::endl;
        status = 1;
    }
    for (const QString& problem : job.serverProblems()) {
        inv.err << "corvane restore: " << problem << Qt::endl;
        status = 1;
    }
    return status;
}

const CommandRegistration registration({
    QStringLiteral("restore"),
    QStringLiteral("restore a backup archive (or backed-up folders) into the server's and the application's folders"),
    QStringLiteral("Usage: corvane restore ARCHIVE.zip [--mysql-dir DIR] [--data-dir DIR] [--on-error abort|retry|ignore] [--list]\n"
                   "       corvane restore --db-folder DIR --data-folder DIR [--mysql-dir DIR] [--data-dir DIR] [--on-error …] [--list]\n"
                   "\n"
                   "Puts a backup back in place as the Restoration screen does: database folders\n"
                   "into the MySQL directory, the other folders and files into the application\n"
                   "folder. What is replaced is kept in <data dir>/Restore_<dd-MMM-yy>#n first.\n"
                   "When the MySQL directory is the private server's, that server is stopped\n"
                   "while its files are replaced, started again and its tables checked.\n"
                   "  ARCHIVE.zip          the backup file (FBT<date>.ZIP)\n"
                   "  --db-folder DIR      manual mode: a folder named FBT (one database), DATA\n"
                   "                       (its folders) or MYSQL (the folders of its Data)\n"
                   "  --data-folder DIR    manual mode: the backed-up data folders (ORVSOFTWORKS:\n"
                   "                       the folders of its FBT)\n"
                   "  --mysql-dir DIR      where databases go (default: the server's datadir);\n"
                   "                       it must hold a folder mysql\n"
                   "  --data-dir DIR       the application folder (default: the one in use);\n"
                   "                       it must hold the program FBT\n"
                   "  --on-error ANSWER    abort, retry or ignore a failing step; without it the\n"
                   "                       question is asked on a terminal, and Abort without one\n"
                   "  --list               print the rows (source, destination, kind; tab-separated)\n"
                   "                       and restore nothing\n"
                   "  --yes                continue in manual mode without one of the two folders\n"
                   "\n"
                   "Prints one line per row (source, destination, kind, status; tab-separated),\n"
                   "then the closing message. Exit status 0 when the data was restored,\n"
                   "1 with the message on standard error otherwise, 2 on wrong usage.\n"),
    {QStringLiteral("--mysql-dir"), QStringLiteral("--data-dir"), QStringLiteral("--db-folder"), QStringLiteral("--data-folder")},
    {QStringLiteral("--list")},
    runRestore,
});

} // namespace
} // namespace corvane::cli
