#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

namespace corvane::test {

struct CliResult {
    int status = -1;
    QString out;
    QString err;
};

// Runs the built corvane command with the given arguments.
inline CliResult runCli(const QStringList& args, const QByteArray& input = QByteArray())
{
    QProcess process;
    process.setProgram(qEnvironmentVariable("CORVANE_CLI"));
    process.setArguments(args);
    process.start();
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(180000);
    CliResult r;
    r.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    r.out = QString::fromUtf8(process.readAllStandardOutput());
    r.err = QString::fromUtf8(process.readAllStandardError());
    return r;
}

} // namespace corvane::test
