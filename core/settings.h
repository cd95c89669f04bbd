#pragma once

#include <QString>

namespace corvane {

// The machine-wide folder that holds "ORVCONFIG.INI":
// $CORVANE_SYSTEM_DIR, else /etc/orv-softworks when it exists, else ~/.config/orv-softworks.
QString systemFolder();
QString orvConfigPath();

// The file a setting lives in when the caller names none.
QString settingsFileFor(const QString& section, const QString& key);

// Logged as CLSMAIN / GETSETTININI and CLSMAIN / SAVESETTININI.
QString GetSettingINI(const QString& section, const QString& key, const QString& defVal, const QString& fl = QString());
void SaveSettingINI(const QString& section, const QString& key, const QString& keyVal, const QString& fl = QString());

} // namespace corvane
