#pragma once

#include "screens/backup/archivelayout.h"

#include <QDate>
#include <QList>
#include <QLocale>
#include <QString>
#include <QStringList>
#include <functional>

namespace corvane {
class Connection;
class Progress;
class Prompter;
}

namespace corvane::backup {

// One restoration from the checks of "Proceed" to the closing message,
// shared by the screen and the command line. Questions and messages go
// through the prompter, the bar and the row text through the progress;
// failures are logged under "frmrestoration".
class RestoreJob {
public:
    enum class Mode { Zip, Manual };
    // What the user chose on the first page.
    struct Choice {
        Mode mode = Mode::Zip;
        QString archive;         // zip mode: the backup file
        QString databasesFolder; // manual mode: the folder holding backed-up databases (may be empty)
        QString dataFolder;      // manual mode: the folder holding backed-up data folders (may be empty)
        QString mysqlDirectory;  // where database folders go
        QString dataDirectory;   // the application folder
    };
    // The field a refused "Proceed" puts the cursor in.
    enum class Field { None, BackupFile, DatabasesFolder, DataFolder, MysqlDirectory, DataDirectory };
    enum class Outcome {
        Refused,       // a check stopped it before anything was touched
        Restored,      // "Data Restored." (also after Abort, as the message says)
        ErrorsIgnored, // some step failed and the user went on
    };
    struct Row {
        RestoreItem item;
        QString status;
    };

    RestoreJob(Connection* connection, Prompter& prompter, Progress& progress);
    ~RestoreJob();

    // The checks of "Proceed" in order, then the extraction (zip mode) and the
    // list of rows. False when a check refused; failedField() says where.
    bool proceed(const Choice& choice);

    // Restores the rows: the same-path check, the keeping folder, then keep,
    // delete and copy per row with the Abort/Retry/Ignore questions, and the
    // closing message.
    Outcome restore();

    // Deletes the extraction folder when one is remembered.
    void removeExtraction();

    const QList<Row>& rows() const { return rows_; }
    Field failedField() const { return failedField_; }
    const QString& extraction() const { return extraction_; }
    const QString& keepingFolder() const { return keepingFolder_; }
    const QString& lastMessage() const { return lastMessage_; }
    // The user chose Abort on a step.
    bool aborted() const { return aborted_; }
    // Rows were replaced: the database may differ from what it was.
    bool completed() const { return completed_; }
    // What the table check after a restart of the private server found, and
    // what went wrong stopping or starting that server.
    const QStringList& serverProblems() const { return serverProblems_; }

    // The stage label ("Extracting Backup File...", "Restoring 2 of 5").
    std::function<void(const QString&)> stage;
    // A row's status changed, or its turn came.
    std::function<void(int row)> rowChanged;

    // "Restore_<dd-MMM-yy>#n" in the data directory: the first n from 1 to 10
    // whose folder does not exist, else 11.
    static QString keepingFolderFor(const QString& dataDirectory, const QDate& date,
                                    const QLocale& locale = QLocale());
    // The rows of manual mode.
    static QList<RestoreItem> manualRows(const QString& databasesFolder, const QString& dataFolder,
                                         const QString& mysqlDirectory, const QString& dataDirectory);

private:
    class ServerPause;
    enum class Step { KeepFolder, DeleteFolder, RestoreFolder, KeepFile, DeleteFile, RestoreFile };
    struct Abort {};

    bool refuse(const QString& message, Field field);
    bool checkBackupSource(const Choice& choice);
    bool extract(const QString& archive);
    void restoreRow(int index, bool mayMove);
    // Runs one step until it works, or the user ignores or aborts it.
    void runStep(int index, Step step, const QString& path, const std::function<void()>& work);
    void inform(const QString& text);
    void flushTables(const QString& procedure);

    Connection* connection_;
    Prompter& prompter_;
    Progress& progress_;
    Choice choice_;
    QList<Row> rows_;
    Field failedField_ = Field::None;
    QString extraction_;
    QString keepingFolder_;
    QString lastMessage_;
    bool errorsIgnored_ = false;
    bool aborted_ = false;
    bool completed_ = false;
    QStringList serverProblems_;
};

} // namespace corvane::backup
