#include "core/errorlog.h"

#include "core/modbase.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvane {

namespace {
QString g_lastWriteError;
QString g_lastDescription;

// Half a line would run into the next one: takes back the bytes of a failed
// write unless another process has appended after them.
void takeBack(int fd, qsizetype written)
{
    struct stat st{};
    const off_t end = ::lseek(fd, 0, SEEK_CUR);
    if (written > 0 && end >= written && ::fstat(fd, &st) == 0 && st.st_size == end)
        [[maybe_unused]] const int ignored = ::ftruncate(fd, end - written);
}
} // namespace

QString logFilePath()
{
    return modbase().AppPath + QStringLiteral("/FBTLogger.log");
}

QString lastLogWriteError()
{
    return g_lastWriteError;
}

QString lastLoggedDescription()
{
    return g_lastDescription;
}

QString logNote()
{
    if (!g_lastWriteError.isEmpty())
        return QStringLiteral("it could not be logged: ") + g_lastWriteError;
    return QStringLiteral("logged in ") + logFilePath();
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
        // A line break would split the line, a tab would add a field.
        s.replace(QLatin1Char('\t'), QLatin1Char(' '));
        s.replace(QLatin1Char('\r'), QLatin1Char(' '));
        s.replace(QLatin1Char('\n'), QLatin1Char(' '));
        return s;
    };
    const QString line = logTimestamp() + QLatin1Char('\t') + QString::number(error->number())
        + QLatin1Char('\t') + flat(error->source()) + QLatin1Char('\t') + flat(error->description())
        + QLatin1Char('\t') + modbase().ErrContext + QLatin1Char('\n');
    const QByteArray bytes = line.toUtf8();
    g_lastDescription = error->description();

    // One write on an O_APPEND descriptor (a second only after a short one),
    // so lines of several processes never interleave.
    const QByteArray path = logFilePath().toLocal8Bit();
    const int fd = ::open(path.constData(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        g_lastWriteError = QStringLiteral("cannot open %1: %2").arg(logFilePath(), QString::fromLocal8Bit(std::strerror(errno)));
        return;
    }
    qsizetype written = 0;
    int writeError = 0;
    while (written < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + written, size_t(bytes.size() - written));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            writeError = n < 0 ? errno : ENOSPC;
            break;
        }
        written += n;
    }
    if (writeError) {
        takeBack(fd, written);
        g_lastWriteError = QStringLiteral("cannot write %1: %2").arg(logFilePath(), QString::fromLocal8Bit(std::strerror(writeError)));
    } else {
        g_lastWriteError.clear();
    }
    ::close(fd);
}

} // namespace corvane
