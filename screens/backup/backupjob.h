#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

namespace corvane {
class Connection;
class Progress;
class Prompter;
namespace zip {
class DeflateAhead;
}
}

namespace corvane::backup {

// The saved "BKDir" when it names a folder, else the desktop folder when it
// exists, else the home folder.
QString defaultDestination();

// Deletes all but the newest `keep` FBT*.ZIP archives of the folder (newest
// by modification time); returns the paths deleted.
QStringList pruneArchives(const QString& folder, int keep);

// One backup from the destination checks to the outcome messages, shared by
// the screen and the command line. Every question and message goes through
// the prompter, progress through the progress interface; failures are logged
// under "frmbackup".
class BackupJob {
public:
    enum class Outcome {
        Refused,        // a destination check or the preparation of the names stopped it
        Failed,         // the copy-failure clean-up ran; no archive
        NotCompressed,  // the staging folder is kept as the backup
        Completed,      // "Backup Completed."
    };

    BackupJob(Connection& connection, Prompter& prompter, Progress& progress);
    ~BackupJob();

    // The whole backup into `destination`.
    Outcome run(const QString& destination);

    // The destination checks with their messages; true when the folder may be used.
    bool checkDestination(const QString& destination);

    // The archive and staging names with their questions; false when abandoned (names cleared).
    bool prepareNames(const QString& destination);

    // Called once the names are ready and the backup proper starts.
    std::function<void()> started;
    // Asked between files and tables and while zipping; true stops the backup.
    std::function<bool()> cancelled;

    const QString& archivePath() const { return archivePath_; }
    const QString& stagingPath() const { return stagingPath_; }
    const QStringList& tables() const { return tables_; }
    // The user kept the archive of the same day.
    bool declined() const { return declined_; }
    bool errorsOccurred() const { return errorsOccurred_; }
    // The last message shown (the outcome for the command line).
    const QString& lastMessage() const { return lastMessage_; }

private:
    struct Abort {};

    void loadTables();
    bool backUpData();
    bool copyDatabases(const QString& dataDirectory);
    void exportTables();
    void exportOne(const QString& table, int position);
    Outcome zipMe();
    void cleanUpAfterCopyFailure();
    // Hands a file written into the staging folder to the compression that
    // runs beside the copying and exporting.
    void deflateAhead(const QString& path);
    // Runs a statement under the BackUpData handler: logs, then the
    // "Multiple"/"step" rule or Abort/Retry/Ignore. Throws Abort.
    void step(const std::function<void()>& statement);
    bool isCancelled() const { return cancelled && cancelled(); }
    void inform(const QString& text);

    Connection& connection_;
    Prompter& prompter_;
    Progress& progress_;
    QString archivePath_;
    QString stagingPath_;
    QStringList tables_;
    bool errorsOccurred_ = false;
    bool declined_ = false;
    QString lastMessage_;
    class ReadLock* lock_ = nullptr;
    std::unique_ptr<zip::DeflateAhead> ahead_;
    bool aheadRefused_ = false;
};

} // namespace corvane::backup
