#pragma once

#include "cli/command.h"

namespace corvane::cli {

// The manual page (roff), made from the same texts that --help prints.
QString manPage(const QString& globalHelp, const QList<Command>& commands, const QString& version);

// A bash completion script for the commands and their options.
QString bashCompletion(const QStringList& globalOptions, const QList<Command>& commands);

} // namespace corvane::cli
