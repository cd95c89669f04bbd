#pragma once

#include <QByteArray>
#include <QString>

namespace corvane {

// Replaces a file so that afterwards it is either the old file or the whole
// new one, never anything between, also on a full disk or after a crash: the
// new contents go to a temporary file beside the target, every write is
// checked, the file is synced, renamed over the target and the folder synced.
//
//   SafeFile out(path);          // or SafeFile out(path, 0600)
//   out.write(chunk); ...        // throws Failure on the first failed write
//   out.commit();                // throws Failure; the target is replaced only here
//
// A writer that needs a path of its own (a library that writes the file
// itself) writes to temporaryPath() and then calls commit().
// Every failure throws Failure(errno, …, "Cannot write <target>: <reason>")
// and leaves the target untouched; the temporary file is removed when the
// object goes without a successful commit.
class SafeFile {
public:
    // mode: the permissions of the new file; -1 keeps those of the file it
    // replaces (a new file gets 0666 less the umask).
    explicit SafeFile(const QString& target, int mode = -1);
    ~SafeFile();
    SafeFile(const SafeFile&) = delete;
    SafeFile& operator=(const SafeFile&) = delete;

    void write(const char* data, qint64 size);
    void write(const QByteArray& data) { write(data.constData(), data.size()); }
    void commit();

    // The file as named, and the file actually replaced (a symbolic link's target).
    QString target() const { return named_; }
    QString temporaryPath() const { return temporary_; }

private:
    [[noreturn]] void fail(int error, const QString& what = QString());
    void discard();

    QString named_;
    QString target_;
    QString temporary_;
    int fd_ = -1;
    bool committed_ = false;
};

// The whole replacement in one call.
void replaceFile(const QString& target, const QByteArray& data, int mode = -1);

} // namespace corvane
