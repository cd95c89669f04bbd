#include "core/safefile.h"

#include "core/failure.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvane {

namespace {

QByteArray native(const QString& path)
{
    return QFile::encodeName(path);
}

int closeChecked(int fd)
{
    // A failed close may be the first report of a failed write; EINTR leaves the descriptor closed.
    return (::close(fd) == 0 || errno == EINTR) ? 0 : errno;
}

} // namespace

SafeFile::SafeFile(const QString& target, int mode)
    : named_(target)
{
    const QFileInfo info(target);
    // A link stays a link: its target is what gets replaced.
    target_ = info.isSymLink() ? info.symLinkTarget() : info.absoluteFilePath();
    const QFileInfo real(target_);
    if (real.isDir())
        fail(EISDIR);

    const QString prefix = real.absolutePath() + QStringLiteral("/.") + real.fileName() + QStringLiteral(".new-");
    for (int attempt = 0; fd_ < 0; ++attempt) {
        temporary_ = prefix + QString::number(QRandomGenerator::global()->generate(), 36);
        fd_ = ::open(native(temporary_).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd_ < 0 && (errno != EEXIST || attempt == 20)) {
            const int error = errno;
            temporary_.clear();
            fail(error);
        }
    }

    struct stat old{};
    if (mode < 0 && ::stat(native(target_).constData(), &old) == 0)
        mode = int(old.st_mode & 07777);
    if (mode >= 0 && ::fchmod(fd_, mode_t(mode)) != 0)
        fail(errno);
}

SafeFile::~SafeFile()
{
    if (!committed_)
        discard();
}

void SafeFile::write(const char* data, qint64 size)
{
    if (fd_ < 0)
        fail(EBADF);
    while (size > 0) {
        const ssize_t n = ::write(fd_, data, size_t(size));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            fail(n < 0 ? errno : ENOSPC);
        data += n;
        size -= n;
    }
}

void SafeFile::commit()
{
    if (committed_ || fd_ < 0)
        fail(EBADF);
    struct stat own{};
    if (::fstat(fd_, &own) != 0 || ::fsync(fd_) != 0)
        fail(errno);
    const int fd = fd_;
    fd_ = -1;
    if (const int error = closeChecked(fd))
        fail(error);

    // A writer that worked on temporaryPath() itself may have put another file there.
    struct stat now{};
    if (::stat(native(temporary_).constData(), &now) != 0)
        fail(errno);
    if (now.st_ino != own.st_ino || now.st_dev != own.st_dev) {
        const int other = ::open(native(temporary_).constData(), O_RDONLY | O_CLOEXEC);
        if (other < 0)
            fail(errno);
        const int error = ::fsync(other) == 0 ? 0 : errno;
        ::close(other);
        if (error)
            fail(error);
    }

    if (::rename(native(temporary_).constData(), native(target_).constData()) != 0)
        fail(errno);
    committed_ = true;

    // The rename itself lasts only once the folder is synced.
    const int folder = ::open(native(QFileInfo(target_).absolutePath()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        const int error = (::fsync(folder) == 0 || errno == EINVAL) ? 0 : errno;
        ::close(folder);
        if (error)
            fail(error, QStringLiteral("Cannot sync the folder of"));
    }
}

void SafeFile::discard()
{
    if (fd_ >= 0)
        ::close(fd_);
    fd_ = -1;
    if (!temporary_.isEmpty() && !committed_)
        ::unlink(native(temporary_).constData());
}

void SafeFile::fail(int error, const QString& what)
{
    discard();
    throw Failure(error, kSource,
                  QStringLiteral("%1 %2: %3")
                      .arg(what.isEmpty() ? QStringLiteral("Cannot write") : what, named_,
                           QString::fromLocal8Bit(std::strerror(error))));
}

void replaceFile(const QString& target, const QByteArray& data, int mode)
{
    SafeFile file(target, mode);
    file.write(data);
    file.commit();
}

} // namespace corvane
