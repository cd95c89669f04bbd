#include "cli/command.h"
#include "cli/terminalprogress.h"

#include "components/zip/zipcomponent.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "db/connection.h"
#include "screens/backup/backupjob.h"

#include <QFileInfo>

namespace corvane::cli {

namespace {

int runBackup(Invocation& inv)
{
    inv.expectWords(0, 1);
    int keep = 0;
    if (inv.has(QStringLiteral("--keep"))) {
        bool ok = false;
        keep = inv.option(QStringLiteral("--keep")).toInt(&ok);
        if (!ok || keep < 1)
            throw UsageError("--keep takes a number of archives (1 or more)");
    }
    registerZipComponent();
    auto connection = inv.connect();
    const QString destination = inv.words.isEmpty() ? backup::defaultDestination() : inv.words.first();

    backup::BackupJob::Outcome outcome;
    QString archive;
    bool declined = false;
    {
        TerminalProgress progress(inv.err, QStringLiteral("backup"));
        backup::BackupJob job(*connection, prompter(), progress);
        outcome = job.run(destination);
        archive = job.archivePath();
        declined = job.declined();
    }
    if (outcome != backup::BackupJob::Outcome::Completed) {
        if (declined)
            inv.err << "corvane backup: the archive of today exists and was kept (--yes replaces it)" << Qt::endl;
        return 1;
    }
    inv.out << archive << Qt::endl;
    if (keep > 0)
        for (const QString& removed : backup::pruneArchives(QFileInfo(archive).absolutePath(), keep))
            inv.err << "removed " << removed << Qt::endl;
    return 0;
}

const CommandRegistration registration({
    QStringLiteral("backup"),
    QStringLiteral("back up the databases, the table exports and the settings into FBT<date>.ZIP"),
    QStringLiteral("Usage: corvane backup [DEST] [--yes] [--keep N]\n"
                   "\n"
                   "Backs up what the Backup screen backs up into DEST/FBT<dd-MMM-yy>.ZIP:\n"
                   "the table files of the databases, an export of every table, the\n"
                   "documents and Confg.ini. The tables are held read-only while their files\n"
                   "are copied, so the archive holds one consistent state.\n"
                   "  DEST       the folder (default: the last backup folder, else the\n"
                   "             desktop folder, else the home folder)\n"
                   "  --yes      replace an archive made earlier the same day; without it\n"
                   "             the question is asked on a terminal, and refused without one\n"
                   "  --keep N   afterwards delete all but the newest N FBT*.ZIP of DEST\n"
                   "\n"
                   "Prints the archive's path. Exit status 0 when the backup completed,\n"
                   "1 with the message on standard error otherwise, 2 on wrong usage.\n"),
    {QStringLiteral("--keep")},
    {},
    runBackup,
});

} // namespace
} // namespace corvane::cli
