#pragma once

#include "db/connectionsettings.h"

#include <QString>

namespace corvane::host {

// The [MySql] section of "ORVCONFIG.INI": where the database is.
namespace connectionconfig {

// The file, in the machine-wide settings folder.
QString file();

// Writes the section; the private server is written as no server and no
// socket. The file holds a password: it is kept readable by its owner only.
// Throws Failure when the file cannot be written.
void save(const ConnectionSettings& settings);

} // namespace connectionconfig
} // namespace corvane::host
