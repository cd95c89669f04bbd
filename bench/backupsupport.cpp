#include "bench/backupsupport.h"

#include "bench/benchdata.h"
#include "bench/benchsupport.h"
#include "components/zip/zipcomponent.h"
#include "core/failure.h"
#include "core/modbase.h"
#include "core/progress.h"
#include "core/prompter.h"
#include "db/connection.h"
#include "screens/backup/backupjob.h"

#include <QDir>

namespace corvane::bench {

void prepareBackupContext(const std::shared_ptr<Connection>& connection)
{
    registerZipComponent();
    Modbase& m = modbase();
    m.AppPath = workFolder() + QStringLiteral("/app");
    QDir().mkpath(m.AppPath);
    m.vTmpPath = workFolder() + QStringLiteral("/tmp/");
    QDir().mkpath(m.vTmpPath);
    m.CnnObj = connection;
    if (!m.prompter)
        m.prompter = std::make_shared<ScriptedPrompter>();
}

QString backUp(Connection& connection, const QString& destination, Progress& progress)
{
    QDir().mkpath(destination);
    auto prompter = std::make_shared<ScriptedPrompter>();
    backup::BackupJob job(connection, *prompter, progress);
    if (job.run(destination) != backup::BackupJob::Outcome::Completed)
        throw Failure(1, QStringLiteral("bench"), QStringLiteral("the backup failed: ") + prompter->texts().join(QLatin1Char(' ')));
    return job.archivePath();
}

QString sharedArchiveFolder()
{
    return workFolder() + QStringLiteral("/archive");
}

QString sharedArchive(const BenchServer& server)
{
    const QStringList archives = QDir(sharedArchiveFolder()).entryList({QStringLiteral("FBT*.ZIP")}, QDir::Files);
    if (!archives.isEmpty())
        return sharedArchiveFolder() + QLatin1Char('/') + archives.first();
    auto connection = server.connect();
    makeDatabase(*connection, sharedDatabaseMegabytes(), note);
    prepareBackupContext(connection);
    NullProgress quiet;
    note(QStringLiteral("making the archive to restore"));
    return backUp(*connection, sharedArchiveFolder(), quiet);
}

} // namespace corvane::bench
