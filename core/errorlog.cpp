#include "core/errorlog.h"

#include "core/modbase.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace corvane {

namespace {
QString g_lastWriteError;
}

QString logFilePath()
{
    return modbase().AppPath + QStringLiteral("/FBTLogger.log");
}

QString lastLogWriteError()
{
    return g_lastWriteError;
}

QString logTimestamp()
{
    return modbase().clock().toString(QStringLiteral("dd/MM/yyyy HH:mm:ss"));
}

void LogError()
{
    const auto& error = modbase().currentError;
    if (!error || error->number() == 0)
        return;

    auto flat = [](QString s) {
        // A description with line breaks would break the one-line-per-failure rule.
        s.replace(QLatin1Char('\r'), QLatin1Char(' '));
        s.replace(QLatin1Char('\n'), QLatin1Char(' '));
        return s;
    };
    const QString line = logTimestamp() + QLatin1Char('\t') + QString::number(error->number())
        + QLatin1Char('\t') + flat(error->source()) + QLatin1Char('\t') + flat(error->description())
        + QLatin1Char('\t') + modbase().ErrContext + QLatin1Char('\n');
    const QByteArray bytes = line.toUtf8();

    // One write on an O_APPEND descriptor, so lines of several processes never interleave.
    const QByteArray path = logFilePath().toLocal8Bit();
    const int fd = ::open(path.constData(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        g_lastWriteError = QStringLiteral("cannot open %1: %2").arg(logFilePath(), QString::fromLocal8Bit(std::strerror(errno)));
        return;
    }
    const ssize_t written = ::write(fd, bytes.constData(), size_t(bytes.size()));
    if (written != bytes.size())
        g_lastWriteError = QStringLiteral("cannot write %1: %2").arg(logFilePath(), QString::fromLocal8Bit(std::strerror(errno)));
    else
        g_lastWriteError.clear();
    ::close(fd);
}

} // namespace corvane
