#pragma once

#include <QString>

namespace corvane::host {

class HostSession;

// The text of Help → About FBT: the version, the database in use and where
// the error log is written.
QString aboutText(const HostSession& session);

} // namespace corvane::host
