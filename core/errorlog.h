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

// The description of the failure LogError was last called for.
QString lastLoggedDescription();
// Where that failure went, for a message to the user: "logged in <file>", or
// "it could not be logged: <reason>" when the log could not be written.
QString logNote();

// The date and time form of a log line.
QString logTimestamp();

} // namespace corvane
