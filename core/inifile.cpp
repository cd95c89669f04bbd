#include "core/inifile.h"

#include "core/failure.h"

#define SI_NO_CONVERSION
#include <SimpleIni.h>

#include <QDir>
#include <QFileInfo>

namespace corvane::IniFile {

namespace {

using Ini = CSimpleIniTempl<char, SI_NoCase<char>, SI_ConvertA<char>>;

bool load(Ini& ini, const QString& file)
{
    ini.SetUnicode(true);
    ini.SetMultiKey(false);
    return ini.LoadFile(QFile::encodeName(file).constData()) >= 0;
}

} // namespace

QString read(const QString& file, const QString& section, const QString& key, const QString& defVal)
{
    Ini ini;
    if (!QFileInfo(file).isFile() || !load(ini, file))
        return defVal;
    const QByteArray s = section.toUtf8();
    const QByteArray k = key.toUtf8();
    const char* value = ini.GetValue(s.constData(), k.constData(), nullptr);
    return value ? QString::fromUtf8(value) : defVal;
}

void write(const QString& file, const QString& section, const QString& key, const QString& value)
{
    Ini ini;
    if (QFileInfo(file).isFile() && !load(ini, file))
        throw Failure(err::PathNotFound, kSource, QStringLiteral("Cannot read %1").arg(file));
    QDir().mkpath(QFileInfo(file).absolutePath());
    const QByteArray s = section.toUtf8();
    const QByteArray k = key.toUtf8();
    const QByteArray v = value.toUtf8();
    ini.SetValue(s.constData(), k.constData(), v.constData());
    if (ini.SaveFile(QFile::encodeName(file).constData(), false) < 0)
        throw Failure(err::PathNotFound, kSource, QStringLiteral("Cannot write %1").arg(file));
}

} // namespace corvane::IniFile
