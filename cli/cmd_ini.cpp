#include "cli/command.h"

#include "core/errorlog.h"
#include "core/failure.h"
#include "core/inifile.h"
#include "core/safefile.h"
#include "core/settings.h"

#include <QDir>
#include <QFileInfo>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace corvane::cli {

namespace {

// A database password goes into the machine's settings file readable by its
// owner only, as the application writes it: the file gets mode 0600 before
// the password is in it.
void protectPassword(const QString& file, const QString& section, const QString& key, const QString& value)
{
    if (section.trimmed().compare(QStringLiteral("MySql"), Qt::CaseInsensitive) != 0
        || key.trimmed().compare(QStringLiteral("Password"), Qt::CaseInsensitive) != 0 || value.trimmed().isEmpty()
        || QFileInfo(file).fileName() != QStringLiteral("ORVCONFIG.INI"))
        return;
    if (!QFileInfo::exists(file)) {
        QDir().mkpath(QFileInfo(file).absolutePath());
        replaceFile(file, QByteArray(), 0600);
    } else if (::chmod(QFile::encodeName(file).constData(), 0600) != 0) {
        throw Failure(errno, kSource, QStringLiteral("Cannot protect %1: %2").arg(file, QString::fromLocal8Bit(std::strerror(errno))));
    }
}

int runIni(Invocation& inv)
{
    const QString action = inv.word(0, QStringLiteral("get, set or path"));
    const QString file = inv.option(QStringLiteral("--file"));
    if (action == QStringLiteral("get")) {
        inv.expectWords(3, 3);
        inv.out << GetSettingINI(inv.words.at(1), inv.words.at(2), inv.option(QStringLiteral("--default")), file)
                << Qt::endl;
        return 0;
    }
    if (action == QStringLiteral("set")) {
        inv.expectWords(4, 4);
        const QString problem = IniFile::writeProblem(inv.words.at(1), inv.words.at(2), inv.words.at(3));
        if (!problem.isEmpty())
            throw UsageError(problem.toStdString());
        protectPassword(file.isEmpty() ? settingsFileFor(inv.words.at(1), inv.words.at(2)) : file, inv.words.at(1),
                        inv.words.at(2), inv.words.at(3));
        if (SaveSettingINI(inv.words.at(1), inv.words.at(2), inv.words.at(3), file))
            return 0;
        inv.err << "corvane: the setting was not written: " << lastLoggedDescription() << " (" << logNote() << ")"
                << Qt::endl;
        return 1;
    }
    if (action == QStringLiteral("path")) {
        inv.expectWords(3, 3);
        inv.out << (file.isEmpty() ? settingsFileFor(inv.words.at(1), inv.words.at(2)) : file) << Qt::endl;
        return 0;
    }
    throw UsageError(QStringLiteral("unknown action %1: use get, set or path").arg(action).toStdString());
}

const CommandRegistration registration({
    QStringLiteral("ini"),
    QStringLiteral("read, write or locate a setting of the settings files"),
    QStringLiteral("Usage: corvane [global options] ini get SECTION KEY [--default D] [--file F]\n"
                   "       corvane [global options] ini set SECTION KEY VALUE [--file F]\n"
                   "       corvane [global options] ini path SECTION KEY\n"
                   "\n"
                   "  get    prints the value (at most 254 characters), or D (default empty) when\n"
                   "         the file, section or key is missing\n"
                   "  set    writes the value, creating file, section or key as needed; every\n"
                   "         other line of the file stays as it is\n"
                   "  path   prints the file the setting lives in\n"
                   "\n"
                   "Sections and keys are compared without regard to case. Without --file, the\n"
                   "sections MySql, ScrReso and EMailSettings and the printer keys of section\n"
                   "Settings live in ORVCONFIG.INI in the system folder ($CORVANE_SYSTEM_DIR, else\n"
                   "/etc/orv-softworks when it exists, else ~/.config/orv-softworks); everything\n"
                   "else in Confg.ini in the application folder (--app-path).\n"),
    {QStringLiteral("--default"), QStringLiteral("--file")},
    {},
    runIni,
});

} // namespace
} // namespace corvane::cli
