#pragma once

#include <QString>

namespace corvane {

// Appends one line about modbase().currentError to <AppPath>/FBTLogger.log:
// date and time, number, source, description, module TAB procedure, separated
// by tabs. Writes nothing when no error is pending or its number is 0.
// A log that cannot be written is ignored; lastLogWriteError() says why.
void LogError();

QString logFilePath();
QString lastLogWriteError();

// The date and time form of a log line.
QString logTimestamp();

} // namespace corvane
