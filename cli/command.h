#pragma once

#include "db/connectionsettings.h"

#include <QMap>
#include <QString>
#include <QStringList>
#include <QTextStream>
#include <functional>
#include <memory>
#include <stdexcept>

class QCoreApplication;

namespace corvane {
class Connection;
}

namespace corvane::cli {

// Wrong usage: exit status 2, the text on standard error.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// What a command gets: its words after the command name, its options, the
// global options and the streams.
class Invocation {
public:
    QStringList words;                 // positional words after the command (and sub-command) name
    QMap<QString, QString> options;    // command options: --name value, or --flag with empty value
    QString appPath;
    ConnectionSettings connection;     // resolved from ORVCONFIG.INI and the global options
    QString code;
    QString year;
    QTextStream& out;
    QTextStream& err;

    Invocation(QTextStream& o, QTextStream& e) : out(o), err(e) {}

    bool has(const QString& option) const { return options.contains(option); }
    QString option(const QString& name, const QString& fallback = QString()) const { return options.value(name, fallback); }
    // The word at index, or a usage error naming it.
    QString word(int index, const QString& name) const;
    void expectWords(int minimum, int maximum) const;

    // The configured connection, opened (the private server is started on first need).
    std::shared_ptr<Connection> connect(bool createDatabase = false);
    // Tells the user, and logs, what the private server repaired since connect().
    void reportServerRepairs();

private:
    qint64 serverLogOffset_ = -1;
};

struct Command {
    QString name;                 // "server", "db", "sql" …
    QString summary;              // one line for the command list
    QString usage;                // the full --help text
    QStringList valueOptions;     // options that take a value
    QStringList flagOptions;      // options without a value
    std::function<int(Invocation&)> run;
    // The application object, when the command needs more than QCoreApplication.
    std::function<QCoreApplication*(int& argc, char** argv)> makeApplication = nullptr;
};

// A GUI application on the offscreen platform (unless another is asked for):
// what writing a PDF needs for its fonts.
QCoreApplication* makeOffscreenApplication(int& argc, char** argv);

// Commands register themselves from their own files.
struct CommandRegistration {
    explicit CommandRegistration(Command command);
};
const QList<Command>& commands();

} // namespace corvane::cli
