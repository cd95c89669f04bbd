#pragma once

#include <QString>

namespace corvane {

// INI files with the semantics of the platform's profile-string functions:
// sections and keys without regard to case; a write keeps every other line,
// comment and the order of the file and creates file, section or key as needed.
namespace IniFile {

QString read(const QString& file, const QString& section, const QString& key, const QString& defVal);
// Throws Failure when the file cannot be written.
void write(const QString& file, const QString& section, const QString& key, const QString& value);

} // namespace IniFile
} // namespace corvane
