#include "screens/backup/filecopy.h"

#include "core/failure.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvane::backup {

namespace {

[[noreturn]] void fail(int number, const QString& path)
{
    throw Failure(number, kSource, QStringLiteral("%1 (%2)").arg(QString::fromLocal8Bit(std::strerror(number)), path));
}

struct Fd {
    int fd;
    ~Fd()
    {
        if (fd >= 0)
            ::close(fd);
    }
};

} // namespace

void copyFileOver(const QString& source, const QString& target)
{
    Fd in{::open(QFile::encodeName(source).constData(), O_RDONLY | O_CLOEXEC)};
    if (in.fd < 0)
        fail(errno, source);
    struct stat st {};
    if (::fstat(in.fd, &st) != 0)
        fail(errno, source);
    if (!S_ISREG(st.st_mode))
        fail(EISDIR, source);
    Fd out{::open(QFile::encodeName(target).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644)};
    if (out.fd < 0)
        fail(errno, target);
    off_t left = st.st_size;
    bool plain = false;
    while (left > 0 && !plain) {
        const ssize_t n = ::copy_file_range(in.fd, nullptr, out.fd, nullptr, size_t(left), 0);
        if (n > 0) {
            left -= n;
        } else if (n == 0) {
            break; // the file got shorter while copying
        } else if (errno == EXDEV || errno == ENOSYS || errno == EINVAL || errno == EOPNOTSUPP) {
            plain = true;
        } else if (errno != EINTR) {
            fail(errno, target);
        }
    }
    if (plain) {
        char buffer[1 << 16];
        for (;;) {
            const ssize_t n = ::read(in.fd, buffer, sizeof buffer);
            if (n == 0)
                break;
            if (n < 0) {
                if (errno == EINTR)
                    continue;
                fail(errno, source);
            }
            for (ssize_t done = 0; done < n;) {
                const ssize_t w = ::write(out.fd, buffer + done, size_t(n - done));
                if (w < 0) {
                    if (errno == EINTR)
                        continue;
                    fail(errno, target);
                }
                done += w;
            }
        }
    }
    const struct timespec times[2] = {st.st_atim, st.st_mtim};
    ::futimens(out.fd, times);
    if (::close(out.fd) != 0) {
        out.fd = -1;
        fail(errno, target);
    }
    out.fd = -1;
}

} // namespace corvane::backup
