#pragma once

#include "core/modbase.h"

#include <QString>
#include <cstdio>
#include <cstdlib>

namespace corvane::fuzz {

// Log lines go nowhere (a folder that does not exist) and today is fixed.
inline void quietContext()
{
    resetModbase();
    modbase().AppPath = QStringLiteral("/nonexistent/corvane-fuzz");
    modbase().clock = [] { return QDateTime(QDate(2010, 6, 1), QTime(12, 0)); };
}

[[noreturn]] inline void fail(const char* what, const QString& detail)
{
    std::fprintf(stderr, "broken: %s: %s\n", what, detail.toUtf8().constData());
    std::abort();
}

} // namespace corvane::fuzz
