#pragma once

#include <QString>
#include <QStringList>

namespace corvane {

// <AppPath>/Data/StateCodes.txt
QString stateListPath();

// The states of the state file, trimmed and in capitals, in file order; empty
// when the file is missing. Throws Failure when it exists but cannot be read.
// The callers log as CLSMAIN / LOADSTATELIST.
QStringList readStateList();

// The items of a delimited read: separated by commas or line ends, an item in
// double quotes loses its quotes (and whatever follows them up to the next
// separator), blanks before an item are skipped. Empty items are left out.
QStringList delimitedItems(const QString& text);

} // namespace corvane
