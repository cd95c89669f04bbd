#include "host/connectionconfig.h"

#include "core/failure.h"
#include "core/inifile.h"
#include "core/settings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvane::host::connectionconfig {

namespace {

const QString kSection = QStringLiteral("MySql");

// Creates the file with the mode before any password goes into it, and sets
// the mode of a file that exists already.
void createWithMode(const QString& path, mode_t mode)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    const QByteArray name = QFile::encodeName(path);
    const int fd = ::open(name.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, mode);
    if (fd < 0)
        throw Failure(errno, QStringLiteral("FBT"),
                      QStringLiteral("Cannot write %1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno))));
    const int rc = ::fchmod(fd, mode);
    const int error = errno;
    ::close(fd);
    if (rc != 0)
        throw Failure(error, QStringLiteral("FBT"),
                      QStringLiteral("Cannot protect %1: %2").arg(path, QString::fromLocal8Bit(std::strerror(error))));
}

void write(const QString& path, const ConnectionSettings& s)
{
    const bool own = !s.privateServer;
    IniFile::write(path, kSection, QStringLiteral("Server"), own ? s.server : QString());
    IniFile::write(path, kSection, QStringLiteral("Port"), own && s.port > 0 ? QString::number(s.port) : QString());
    IniFile::write(path, kSection, QStringLiteral("Socket"), own ? s.socket : QString());
    IniFile::write(path, kSection, QStringLiteral("User"), own ? s.user : QString());
    IniFile::write(path, kSection, QStringLiteral("Password"), own ? s.password : QString());
    IniFile::write(path, kSection, QStringLiteral("Database"), s.database);
}

} // namespace

QString file()
{
    return orvConfigPath();
}

void save(const ConnectionSettings& s)
{
    const QString path = file();
    createWithMode(path, 0600);
    write(path, s);
}

bool canSaveForEveryUser(const QString& machineFolder)
{
    const QFileInfo folder(machineFolder);
    const QString writable = folder.exists() ? machineFolder : folder.absolutePath();
    return ::access(QFile::encodeName(writable).constData(), W_OK) == 0;
}

void saveForEveryUser(const ConnectionSettings& s, const QString& machineFolder)
{
    const QString path = machineFolder + QStringLiteral("/ORVCONFIG.INI");
    createWithMode(path, 0644);
    write(path, s);
}

} // namespace corvane::host::connectionconfig
