#include "screens/backup/restoresteps.h"

#include "core/failure.h"

#include <QFile>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace corvane::backup {

namespace fs = std::filesystem;

namespace {

fs::path pathOf(const QString& path)
{
    return fs::path(QFile::encodeName(path).toStdString());
}

[[noreturn]] void fail(const std::error_code& ec, const QString& path)
{
    throw Failure(ec.value() ? ec.value() : err::PathNotFound, kSource,
                  QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(ec.message().c_str())));
}

bool present(const fs::path& p)
{
    std::error_code ec;
    return fs::exists(fs::symlink_status(p, ec));
}

void copyTree(const fs::path& from, const fs::path& to, const QString& shown)
{
    std::error_code ec;
    const auto status = fs::symlink_status(from, ec);
    if (ec)
        fail(ec, shown);
    const auto options = fs::copy_options::recursive | fs::copy_options::copy_symlinks
        | fs::copy_options::overwrite_existing;
    if (fs::is_directory(status)) {
        fs::create_directories(to, ec);
        if (ec)
            fail(ec, shown);
    }
    fs::copy(from, to, options, ec);
    if (ec)
        fail(ec, shown);
}

} // namespace

void keepExisting(const QString& path, const QString& keptAs)
{
    const fs::path from = pathOf(path), to = pathOf(keptAs);
    std::error_code ec;
    fs::create_directories(to.parent_path(), ec);
    if (ec)
        fail(ec, keptAs);
    if (std::rename(from.c_str(), to.c_str()) == 0)
        return;
    if (errno != EXDEV)
        fail(std::error_code(errno, std::generic_category()), path);
    copyTree(from, to, path);
}

void removeExisting(const QString& path)
{
    const fs::path p = pathOf(path);
    if (!present(p))
        return;
    std::error_code ec;
    fs::remove_all(p, ec);
    if (ec)
        fail(ec, path);
}

void putInPlace(const QString& source, const QString& destination, bool mayMove)
{
    const fs::path from = pathOf(source), to = pathOf(destination);
    std::error_code ec;
    if (!present(from))
        fail(std::make_error_code(std::errc::no_such_file_or_directory), source);
    fs::create_directories(to.parent_path(), ec);
    if (ec)
        fail(ec, destination);
    if (mayMove && std::rename(from.c_str(), to.c_str()) == 0)
        return;
    copyTree(from, to, destination);
}

bool forceRemove(const QString& path)
{
    const fs::path p = pathOf(path);
    if (!present(p))
        return true;
    std::error_code ec;
    if (fs::is_directory(fs::symlink_status(p, ec))) {
        fs::permissions(p, fs::perms::owner_all, fs::perm_options::add, ec);
        for (auto it = fs::recursive_directory_iterator(p, ec); !ec && it != fs::recursive_directory_iterator(); it.increment(ec))
            if (!it->is_symlink())
                fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ec);
    }
    ec.clear();
    fs::remove_all(p, ec);
    return !present(p);
}

} // namespace corvane::backup
