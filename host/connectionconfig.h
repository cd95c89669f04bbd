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

// The folder whose "ORVCONFIG.INI" every user of the machine reads once it exists.
inline const QString kMachineFolder = QStringLiteral("/etc/orv-softworks");

// Whether this user may write the settings of every user (the folder, or /etc to make it).
bool canSaveForEveryUser(const QString& machineFolder = kMachineFolder);

// Writes the section into the machine's file, readable by every user of the
// machine (who all need the server's address and account).
void saveForEveryUser(const ConnectionSettings& settings, const QString& machineFolder = kMachineFolder);

} // namespace connectionconfig
} // namespace corvane::host
