#pragma once

#include <QString>
#include <functional>

namespace corvane {

// Where the settings, the error log and the private database of a run live.
struct AppFolder {
    QString path;
    bool perUser = false; // the program's folder could not be written
    QString describe() const;
};

// What the choice depends on, so that tests can give their own.
struct AppFolderInputs {
    QString asked;        // --app-path, else $CORVANE_APP_PATH for the command line; empty: none
    QString programDir;   // the folder of the running program
    QString xdgDataHome;  // $XDG_DATA_HOME
    QString home;         // $HOME
    std::function<bool(const QString&)> canWrite; // default: access(W_OK)
    static AppFolderInputs fromEnvironment(const QString& asked, const QString& programDir);
};

// The folder asked for (as given), else the program's folder when it can be written
// (a portable folder), else $XDG_DATA_HOME/orv-softworks/FBT
// (~/.local/share/orv-softworks/FBT when XDG_DATA_HOME is unset or relative).
AppFolder chooseAppFolder(const AppFolderInputs& in);

// Makes a per-user folder a real application folder on its first use: a link
// FBT to the installed program, so that everything that recognises an
// application folder by its program recognises this one, and the missing
// files of Data/ copied from the program's folder. Returns what went wrong, or
// an empty text.
QString preparePerUserFolder(const QString& folder, const QString& programDir);

// Copies the files of the program's Data/ that the application folder lacks.
void provideDataFiles(const QString& programDir, const QString& appPath);

} // namespace corvane
