#include "platform/fileio.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <limits>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

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

ExclusiveOpenFailure openFailureOf(int error)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return ExclusiveOpenFailure::NotFound;
    case EACCES:
    case EPERM:
    case EROFS:
        return ExclusiveOpenFailure::Denied;
    case EISDIR:
    case ENXIO:
        return ExclusiveOpenFailure::NotAFile;
    case ETXTBSY:
        return ExclusiveOpenFailure::Locked;
    default:
        return ExclusiveOpenFailure::Other;
    }
}

// Why an open for reading failed, as Windows tells it: errno has one ENOENT for a missing file and a missing
// folder on the way, so the folder is looked at to tell them apart. Anything the system cannot even see at the
// path counts as missing, as a folder without search permission hides what is inside.
ReadFailure readFailureOf(const std::filesystem::path &path, int error)
{
    struct stat info;
    if (::stat(path.c_str(), &info) != 0) {
        const std::filesystem::path folder = path.parent_path();
        struct stat above;
        return !folder.empty() && (::stat(folder.c_str(), &above) != 0 || !S_ISDIR(above.st_mode))
            ? ReadFailure::PathNotFound
            : ReadFailure::FileNotFound;
    }
    if (S_ISDIR(info.st_mode))
        return ReadFailure::IsFolder;
    return error == EACCES || error == EPERM ? ReadFailure::AccessDenied : ReadFailure::Other;
}

int descriptorOf(std::intptr_t handle)
{
    return static_cast<int>(handle);
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
    identity.changedNs = toNs(info.st_ctimespec);
#else
    identity.modifiedNs = toNs(info.st_mtim);
    identity.changedNs = toNs(info.st_ctim);
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

WholeFile readWholeFile(const std::filesystem::path &path)
{
    WholeFile result;
    // O_NONBLOCK keeps a named pipe at the path from stalling the open; it is refused below anyway.
    const int fd = openRetrying(path.c_str(), O_RDONLY | O_NONBLOCK);
    if (fd < 0) {
        result.failure = readFailureOf(path, errno);
        return result;
    }
    struct stat info;
    const bool known = ::fstat(fd, &info) == 0;
    if (!known || !S_ISREG(info.st_mode)) {
        // Linux opens a folder for reading; only the file type tells.
        result.failure = known && S_ISDIR(info.st_mode) ? ReadFailure::IsFolder : ReadFailure::Other;
        ::close(fd);
        return result;
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
            result.failure = ReadFailure::Other;
            return result;
        }
        if (got == 0)
            break;
        content.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(fd);
    result.bytes = std::move(content);
    return result;
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

bool writeFileInPlace(const std::filesystem::path &path, std::string_view bytes)
{
    const int fd = openRetrying(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (fd < 0)
        return false;
    bool ok = true;
    for (std::size_t written = 0; ok && written < bytes.size();) {
        const ssize_t put = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (put < 0 && errno == EINTR)
            continue;
        ok = put > 0;
        if (ok)
            written += static_cast<std::size_t>(put);
    }
    // A pipe or a terminal (a report sent to /dev/stdout) has no length to cut.
    struct stat info;
    if (ok && ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode))
        ok = ::ftruncate(fd, static_cast<off_t>(bytes.size())) == 0;
    return ::close(fd) == 0 && ok;
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

    bool ok = false;
    if (const std::optional<std::size_t> failAfter = ReplaceFailureForTests::limit())
        writeAll(fd, bytes.substr(0, (std::min)(*failAfter, bytes.size()))); // and fail, as a test asked
    else
        ok = writeAll(fd, bytes) && ::fsync(fd) == 0;
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

bool writeFileDurably(const std::filesystem::path &path, std::string_view bytes)
{
    if (!path.has_filename())
        return false;
    const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
    std::filesystem::path tempPath;
    const int fd = createTempFile(folder, path.filename().string(), tempPath);
    if (fd < 0)
        return false;
    bool ok = writeAll(fd, bytes) && ::fsync(fd) == 0;
    ok = (::close(fd) == 0) && ok;
    if (ok)
        ok = ::rename(tempPath.c_str(), path.c_str()) == 0;
    if (!ok) {
        ::unlink(tempPath.c_str());
        return false;
    }
    syncFolder(folder);
    return true;
}

bool appendDurably(const std::filesystem::path &path, std::string_view bytes)
{
    struct stat info;
    const bool existed = ::stat(path.c_str(), &info) == 0;
    const int fd = openRetrying(path.c_str(), O_WRONLY | O_APPEND | O_CREAT, 0666);
    if (fd < 0)
        return false;
    bool ok = writeAll(fd, bytes) && ::fsync(fd) == 0;
    ok = (::close(fd) == 0) && ok;
    // A new file's name is in the folder, which needs its own flush to survive a crash.
    if (ok && !existed)
        syncFolder(path.has_parent_path() ? path.parent_path() : std::filesystem::path("."));
    return ok;
}

bool setReadOnly(const std::filesystem::path &path)
{
    struct stat info;
    if (::stat(path.c_str(), &info) != 0)
        return false;
    return ::chmod(path.c_str(), (info.st_mode & 07777) & ~(S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

std::u16string comparablePath(const std::filesystem::path &path)
{
    std::u16string text = path.lexically_normal().generic_u16string();
    while (text.size() > 1 && text.back() == u'/')
        text.pop_back();
    return text;
}

ExclusiveFile::~ExclusiveFile()
{
    close();
}

ExclusiveFile ExclusiveFile::open(const std::filesystem::path &path, ExclusiveAccess access)
{
    ExclusiveFile file;
    const bool writable = access == ExclusiveAccess::ReadWrite;
    // O_NONBLOCK keeps a named pipe from stalling the open; regular files do not heed it.
    const int fd = openRetrying(path.c_str(), (writable ? O_RDWR : O_RDONLY) | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) {
        file.m_failure = openFailureOf(errno);
        return file;
    }
    const auto refuse = [&file, fd](ExclusiveOpenFailure failure) {
        ::close(fd);
        file.m_failure = failure;
        return std::move(file);
    };
    struct stat info;
    if (::fstat(fd, &info) != 0)
        return refuse(ExclusiveOpenFailure::Other);
    if (!S_ISREG(info.st_mode))
        return refuse(ExclusiveOpenFailure::NotAFile);
    // Root gets past the permission check of open(); a file without write bits still refuses.
    if (writable && (info.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0)
        return refuse(ExclusiveOpenFailure::Denied);
    // flock, not fcntl: its lock belongs to this open, so a second open in this process is kept out as well,
    // and closing some other descriptor of the file does not drop it.
    int locked;
    do
        locked = ::flock(fd, LOCK_EX | LOCK_NB);
    while (locked != 0 && errno == EINTR);
    if (locked != 0)
        return refuse(errno == EWOULDBLOCK ? ExclusiveOpenFailure::Locked : ExclusiveOpenFailure::Other);
    file.m_handle = fd;
    file.m_writable = writable;
    return file;
}

std::optional<std::uint64_t> ExclusiveFile::size() const
{
    struct stat info;
    if (!isOpen() || ::fstat(descriptorOf(m_handle), &info) != 0)
        return std::nullopt;
    return static_cast<std::uint64_t>(info.st_size);
}

std::optional<std::string> ExclusiveFile::readAt(std::uint64_t offset, std::size_t count) const
{
    if (!isOpen() || offset > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max()))
        return std::nullopt;
    std::string bytes(count, '\0');
    std::size_t got = 0;
    while (got < count) {
        const ssize_t chunk =
            ::pread(descriptorOf(m_handle), bytes.data() + got, count - got, static_cast<off_t>(offset + got));
        if (chunk < 0) {
            if (errno == EINTR)
                continue;
            return std::nullopt;
        }
        if (chunk == 0)
            break;
        got += static_cast<std::size_t>(chunk);
    }
    bytes.resize(got);
    return bytes;
}

std::optional<std::string> ExclusiveFile::readAll() const
{
    const std::optional<std::uint64_t> expected = size();
    if (!expected)
        return std::nullopt;
    std::string content;
    for (;;) {
        // The size is a hint only: read on until the end, in case the file grew.
        const std::size_t want =
            content.size() < *expected ? static_cast<std::size_t>(*expected - content.size()) : std::size_t {65536};
        const std::optional<std::string> chunk = readAt(content.size(), want);
        if (!chunk)
            return std::nullopt;
        if (chunk->empty())
            return content;
        content += *chunk;
    }
}

bool ExclusiveFile::writeAt(std::uint64_t offset, std::string_view bytes)
{
    if (!isOpen() || !m_writable
        || offset > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max()) - bytes.size())
        return false;
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t written = ::pwrite(descriptorOf(m_handle), bytes.data() + done, bytes.size() - done,
                                         static_cast<off_t>(offset + done));
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        done += static_cast<std::size_t>(written);
    }
    return true;
}

bool ExclusiveFile::close()
{
    if (!isOpen())
        return true;
    // Closing the descriptor also drops the lock. No retry on EINTR: the descriptor is gone either way.
    const bool ok = ::close(descriptorOf(std::exchange(m_handle, INVALID))) == 0;
    m_writable = false;
    return ok;
}

} // namespace fleetwright::platform
