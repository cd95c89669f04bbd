#pragma once

#include <QStringList>

namespace corvane {

// The states of <AppPath>/Data/StateCodes.txt, trimmed and in capitals, in
// file order; empty when the file is missing. Logged as CLSMAIN / LOADSTATELIST.
QStringList readStateList();

} // namespace corvane
