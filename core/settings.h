#pragma once

#include <QString>

namespace corvane {

// The machine-wide folder that holds "ORVCONFIG.INI":
// $CORVANE_SYSTEM_DIR, else /etc/orv-softworks when it exists, else ~/.config/orv-softworks.
QString systemFolder();
QString orvConfigPath();

// The file a setting lives in when the caller names none.
QString settingsFileFor(const QString& section, const QString& key);

// Logged as CLSMAIN / GETSETTININI and CLSMAIN / SAVESETTININI. A value read
// (or the default) is cut after 254 characters, as the platform's buffer did.
QString GetSettingINI(const QString& section, const QString& key, const QString& defVal, const QString& fl = QString());
// Returns false when the write failed (and was logged).
bool SaveSettingINI(const QString& section, const QString& key, const QString& keyVal, const QString& fl = QString());

} // namespace corvane
