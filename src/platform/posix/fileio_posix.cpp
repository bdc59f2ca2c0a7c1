#include "platform/fileio.h"

#include <atomic>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace fleetwright::platform {

namespace {

// The kernel's own limit for links followed in one path walk (MAXSYMLINKS on Linux).
constexpr int MAX_LINKS = 40;

std::int64_t toNs(const timespec &time)
{
    return static_cast<std::int64_t>(time.tv_sec) * 1000000000 + time.tv_nsec;
}

int openRetrying(const char *path, int flags, mode_t mode = 0)
{
    int fd;
    do
        fd = ::open(path, flags | O_CLOEXEC, mode);
    while (fd < 0 && errno == EINTR);
    return fd;
}

bool writeAll(int fd, std::string_view bytes)
{
    const char *data = bytes.data();
    std::size_t left = bytes.size();
    while (left > 0) {
        const ssize_t written = ::write(fd, data, left);
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += written;
        left -= static_cast<std::size_t>(written);
    }
    return true;
}

// Follows symbolic links to the path that finally holds the content. A link to a missing file resolves to
// that missing file, so a write through a dangling link creates its target. Nothing on a loop or an error.
std::optional<std::filesystem::path> followLinks(std::filesystem::path path)
{
    for (int hops = 0; hops <= MAX_LINKS; ++hops) {
        struct stat info;
        if (::lstat(path.c_str(), &info) != 0)
            return errno == ENOENT ? std::optional(path) : std::nullopt;
        if (!S_ISLNK(info.st_mode))
            return path;
        std::string target(info.st_size > 0 ? static_cast<std::size_t>(info.st_size) + 1 : 4096, '\0');
        const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
        if (length < 0 || static_cast<std::size_t>(length) >= target.size())
            return std::nullopt;
        target.resize(static_cast<std::size_t>(length));
        const std::filesystem::path next(target);
        path = next.is_absolute() ? next : path.parent_path() / next;
    }
    return std::nullopt;
}

// A fresh file in folder that nobody else can have opened: O_EXCL with a name made unique by the process id
// and a counter. Created with mode 0666 so that the umask applies as it would to any new file.
int createTempFile(const std::filesystem::path &folder, const std::string &baseName, std::filesystem::path &created)
{
    static std::atomic<unsigned> counter {0};
    for (int attempt = 0; attempt < 100; ++attempt) {
        const auto stamp = static_cast<unsigned long long>(currentTimeNs()) % 1000000007ULL;
        std::filesystem::path candidate = folder
            / ("." + baseName + ".fw" + std::to_string(::getpid()) + "-" + std::to_string(counter++) + "-"
               + std::to_string(stamp) + ".tmp");
        const int fd = openRetrying(candidate.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
        if (fd >= 0) {
            created = std::move(candidate);
            return fd;
        }
        if (errno != EEXIST)
            return -1;
    }
    return -1;
}

void syncFolder(const std::filesystem::path &folder)
{
    const int fd = openRetrying(folder.c_str(), O_RDONLY | O_DIRECTORY);
    if (fd < 0)
        return;
    // The rename is already done; a folder that cannot be flushed (some network file systems) changes nothing.
    ::fsync(fd);
    ::close(fd);
}

} // namespace

FileIdentity fileIdentity(const std::filesystem::path &path)
{
    FileIdentity identity;
    struct stat info;
    if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode))
        return identity;
    identity.exists = true;
    identity.size = static_cast<std::uint64_t>(info.st_size);
#if defined(__APPLE__)
    identity.modifiedNs = toNs(info.st_mtimespec);
#else
    identity.modifiedNs = toNs(info.st_mtim);
#endif
    identity.fileId = static_cast<std::uint64_t>(info.st_ino);
    identity.volumeId = static_cast<std::uint64_t>(info.st_dev);
    return identity;
}

std::int64_t currentTimeNs()
{
    timespec now {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return toNs(now);
}

std::optional<std::string> readWholeFile(const std::filesystem::path &path)
{
    // O_NONBLOCK keeps a named pipe at the path from stalling the open; it is refused below anyway.
    const int fd = openRetrying(path.c_str(), O_RDONLY | O_NONBLOCK);
    if (fd < 0)
        return std::nullopt;
    struct stat info;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return std::nullopt;
    }
    std::string content;
    content.reserve(static_cast<std::size_t>(info.st_size));
    char buffer[65536];
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0) {
            if (errno == EINTR)
                continue;
            ::close(fd);
            return std::nullopt;
        }
        if (got == 0)
            break;
        content.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(fd);
    return content;
}

bool isReadOnly(const std::filesystem::path &path)
{
    struct stat info;
    if (::stat(path.c_str(), &info) != 0)
        return false;
    // The bits, not access(): root may write anything, yet such a file is meant to be left alone.
    return (info.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

bool clearReadOnly(const std::filesystem::path &path)
{
    struct stat info;
    if (::stat(path.c_str(), &info) != 0)
        return false;
    if ((info.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) != 0)
        return true;
    return ::chmod(path.c_str(), (info.st_mode & 07777) | S_IWUSR) == 0;
}

bool replaceFileAtomically(const std::filesystem::path &path, std::string_view bytes)
{
    const std::optional<std::filesystem::path> resolved = followLinks(path);
    if (!resolved || !resolved->has_filename())
        return false;
    const std::filesystem::path &target = *resolved;

    struct stat old;
    const bool existed = ::stat(target.c_str(), &old) == 0;
    if (!existed && errno != ENOENT)
        return false;
    if (existed && (!S_ISREG(old.st_mode) || (old.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0))
        return false;

    const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : ".";
    std::filesystem::path tempPath;
    const int fd = createTempFile(folder, target.filename().string(), tempPath);
    if (fd < 0)
        return false;

    bool ok = writeAll(fd, bytes) && ::fsync(fd) == 0;
    if (ok && existed) {
        // Ownership first: a change of owner may clear the set-id bits that fchmod then puts back.
        struct stat mine;
        if (::fstat(fd, &mine) == 0 && (mine.st_uid != old.st_uid || mine.st_gid != old.st_gid)) {
            // Only root may give a file away; anyone else keeps the file as theirs, which is all they can do.
            [[maybe_unused]] const int ignored = ::fchown(fd, old.st_uid, old.st_gid);
        }
        ok = ::fchmod(fd, old.st_mode & 07777) == 0;
    }
    ok = (::close(fd) == 0) && ok;
    if (ok)
        ok = ::rename(tempPath.c_str(), target.c_str()) == 0;
    if (!ok) {
        ::unlink(tempPath.c_str());
        return false;
    }
    syncFolder(folder);
    return true;
}

} // namespace fleetwright::platform
