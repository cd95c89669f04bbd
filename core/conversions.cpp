#include "core/conversions.h"

#include "core/chooser.h"
#include "core/modbase.h"
#include "core/resumenext.h"

namespace corvane {

QString ConvertDigit(const QString&) { return QString(); }
QString ConvertTens(const QString&) { return QString(); }
QString ConvertHundreds(const QString&) { return QString(); }
QString ConvertToWord(const QString&) { return QString(); }
bool ValidPan(const QString&) { return false; }
QString ConvertDate(const QString&, const QString&, QString&) { return QString(); }

QString GetDirPath()
{
    QString path;
    auto guard = silentGuard();
    guard([&] { path = chooser().chooseFolder(modbase().vTmpPath.left(3), QString()); });
    return path;
}

} // namespace corvane
