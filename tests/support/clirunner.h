#pragma once

#include "support/testdatabase.h"

#include <QMap>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace corvane::test {

struct CliResult {
    int status = -1;
    QString out;
    QString err;
};

// Starts the built corvane command. `env` adds variables; a null value removes one.
inline void startCli(QProcess& process, const QStringList& args, const QMap<QString, QString>& env = {},
                     const QByteArray& input = QByteArray())
{
    QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
    for (auto it = env.begin(); it != env.end(); ++it) {
        if (it.value().isNull())
            e.remove(it.key());
        else
            e.insert(it.key(), it.value());
    }
    process.setProcessEnvironment(e);
    process.setProgram(qEnvironmentVariable("CORVANE_CLI"));
    process.setArguments(args);
    process.start();
    process.write(input);
    process.closeWriteChannel();
}

inline CliResult finishCli(QProcess& process)
{
    CliResult r;
    if (!process.waitForFinished(600000))
        return r;
    r.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    r.out = QString::fromUtf8(process.readAllStandardOutput());
    r.err = QString::fromUtf8(process.readAllStandardError());
    return r;
}

inline CliResult runCli(const QStringList& args, const QMap<QString, QString>& env = {}, const QByteArray& input = QByteArray())
{
    QProcess process;
    startCli(process, args, env, input);
    return finishCli(process);
}

// The global options that point the command at a test database.
inline QStringList databaseArgs(const TestDatabase& db)
{
    const ConnectionSettings s = db.settings();
    return {QStringLiteral("--socket"), s.socket, QStringLiteral("--user"), s.user, QStringLiteral("--database"), s.database};
}

} // namespace corvane::test
