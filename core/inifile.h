#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace corvane {

// INI files with the semantics of the platform's profile-string functions:
// sections and keys without regard to case (ASCII), blanks around names and
// values ignored, the first of duplicate keys wins, a value in matching quotes
// loses them. A write keeps every other byte of the file (comments, blank and
// unreadable lines, order, line ends, byte-order mark, a missing final newline)
// and creates file, section or key as needed.
namespace IniFile {

// The value, or defVal when the file, section or key is missing. Never fails.
QString read(const QString& file, const QString& section, const QString& key, const QString& defVal);

// Why a file that is there cannot be read ("Cannot read <file>: <reason>"),
// or empty text when it can be read or is missing.
QString readProblem(const QString& file);

// Throws Failure when the setting cannot be stored (bad name, unwritable file).
void write(const QString& file, const QString& section, const QString& key, const QString& value);

// Why section/key/value cannot be written to any INI file, or empty text.
QString writeProblem(const QString& section, const QString& key, const QString& value);

// The same on file contents, for tests and fuzzing.
// The raw value as stored (blanks trimmed, quotes kept), or nothing.
std::optional<QByteArray> lookup(const QByteArray& data, const QByteArray& section, const QByteArray& key);
// The contents with the value set; throws Failure when it cannot be placed.
QByteArray edit(const QByteArray& data, const QByteArray& section, const QByteArray& key, const QByteArray& value);

} // namespace IniFile
} // namespace corvane
