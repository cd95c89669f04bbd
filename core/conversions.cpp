#include "core/conversions.h"

#include "core/chooser.h"
#include "core/modbase.h"
#include "core/resumenext.h"

#include <algorithm>

namespace corvane {

namespace {
bool isCapital(QChar c) { return c >= QLatin1Char('A') && c <= QLatin1Char('Z'); }
bool isDigit(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }
} // namespace

bool ValidPan(const QString& pan)
{
    if (pan.size() != 10 && !pan.isEmpty())
        return false;
    // Ten capital letters pass as a placeholder, deliberately.
    if (std::all_of(pan.begin(), pan.end(), isCapital))
        return true;
    for (qsizetype i = 0; i < pan.size(); ++i) {
        const bool fits = (i >= 5 && i <= 8) ? isDigit(pan.at(i)) : isCapital(pan.at(i));
        if (!fits)
            return false;
    }
    return true;
}

QString GetDirPath()
{
    QString path;
    auto guard = silentGuard();
    guard([&] {
        path = chooser().chooseFolder(modbase().vTmpPath.left(3), QString());
        const qsizetype nul = path.indexOf(QChar(0));
        if (nul >= 0)
            path.truncate(nul);
    });
    return path;
}

} // namespace corvane
