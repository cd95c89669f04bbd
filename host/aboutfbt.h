#pragma once

#include <QString>

class QMainWindow;

namespace corvane::host {

class HostSession;

// The text of Help → About FBT: the version, the database in use and where
// the error log is written.
QString aboutText(const HostSession& session);

// Adds the Help menu with "About FBT" to the window's menu bar.
void addHelpMenu(QMainWindow& window, const HostSession& session);

} // namespace corvane::host
