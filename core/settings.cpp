#include "core/settings.h"

#include "core/inifile.h"
#include "core/modbase.h"
#include "core/resumenext.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace corvane {

QString systemFolder()
{
    const QString env = qEnvironmentVariable("CORVANE_SYSTEM_DIR");
    if (!env.isEmpty())
        return env;
    if (QFileInfo(QStringLiteral("/etc/orv-softworks")).isDir())
        return QStringLiteral("/etc/orv-softworks");
    return QDir::homePath() + QStringLiteral("/.config/orv-softworks");
}

static QString withSeparator(const QString& folder)
{
    return folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
}

QString orvConfigPath()
{
    return withSeparator(systemFolder()) + QStringLiteral("ORVCONFIG.INI");
}

QString settingsFileFor(const QString& section, const QString& key)
{
    static const QStringList machineSections{QStringLiteral("MYSQL"), QStringLiteral("SCRRESO"),
                                             QStringLiteral("EMAILSETTINGS")};
    static const QStringList printerKeys{
        QStringLiteral("DOSPRINTER"), QStringLiteral("WINPRINTER"), QStringLiteral("PIN24"),
        QStringLiteral("LINESPACING"), QStringLiteral("LINESPP"), QStringLiteral("DOSPRN"),
        QStringLiteral("FONTNAME"), QStringLiteral("PAGEH"), QStringLiteral("PAGEW"),
        QStringLiteral("MARGINL"), QStringLiteral("MARGINT"), QStringLiteral("MARGINR"),
        QStringLiteral("MARGINB"), QStringLiteral("TICKFONT"), QStringLiteral("TICKCHAR"),
        QStringLiteral("TICKSIZE")};
    const QString s = section.toUpper();
    if (machineSections.contains(s))
        return orvConfigPath();
    if (s == QStringLiteral("SETTINGS") && printerKeys.contains(key.toUpper()))
        return orvConfigPath();
    return withSeparator(modbase().AppPath) + QStringLiteral("Confg.ini");
}

static QString cutForBuffer(const QString& value)
{
    constexpr qsizetype kLongest = 254;
    if (value.size() <= kLongest)
        return value;
    // Never leave half of a surrogate pair at the end.
    return value.left(value.at(kLongest - 1).isHighSurrogate() ? kLongest - 1 : kLongest);
}

QString GetSettingINI(const QString& section, const QString& key, const QString& defVal, const QString& fl)
{
    ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("GETSETTININI"));
    QString value = defVal;
    guard([&] {
        const QString file = fl.isEmpty() ? settingsFileFor(section, key) : fl;
        value = IniFile::read(file, section, key, defVal);
    });
    return cutForBuffer(value);
}

bool SaveSettingINI(const QString& section, const QString& key, const QString& keyVal, const QString& fl)
{
    ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("SAVESETTININI"));
    return guard([&] {
        const QString file = fl.isEmpty() ? settingsFileFor(section, key) : fl;
        IniFile::write(file, section, key, keyVal);
    });
}

} // namespace corvane
