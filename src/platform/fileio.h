#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace fleetwright::platform {

// What identifies one state of a file on disk. Two equal identities taken at different times mean the file
// was not replaced or rewritten in between, unless both changes fell into one tick of the file system's
// clock (see clsIniFile's cache for how that case is met). The modification time alone does not tell: a
// copy or restore that keeps times (cp -p, rsync -t, unpacking an archive) sets it back, and an edit that
// keeps the length then looks like no change. The change time is set by the system on every write and
// cannot be set back.
struct FileIdentity
{
    bool exists = false; // a regular file (or a link to one) stands at the path
    std::uint64_t size = 0;
    std::int64_t modifiedNs = 0; // last write, nanoseconds since 1970-01-01 UTC
    std::int64_t changedNs = 0;  // last change of content or attributes, same unit; 0 where the file system keeps none
    std::uint64_t fileId = 0;    // inode, or the NTFS file index
    std::uint64_t volumeId = 0;  // device, or the volume serial number

    bool operator==(const FileIdentity &) const = default;
};

FileIdentity fileIdentity(const std::filesystem::path &path);

// The wall clock in the epoch and unit of FileIdentity::modifiedNs.
std::int64_t currentTimeNs();

// Why a whole-file read failed.
enum class ReadFailure
{
    None,         // read, or nothing tried yet
    FileNotFound, // no file at the path, its folder there
    PathNotFound, // a folder on the way is missing, or is no folder
    AccessDenied, // no permission, or another holder keeps the file locked
    IsFolder,     // a folder stands at the path
    Other,        // a device, a pipe, a failing disk
};

// The content of a whole file, or why it could not be had.
struct WholeFile
{
    std::optional<std::string> bytes; // nothing when the read failed
    ReadFailure failure = ReadFailure::None;
};

// The whole content of a regular file; on failure no bytes and the reason.
WholeFile readWholeFile(const std::filesystem::path &path);

// True when the file carries no write permission (POSIX: none of the write bits; Windows: the read-only
// attribute). Such a file refuses writes even for root, as Windows refuses administrators.
bool isReadOnly(const std::filesystem::path &path);

// Clears the read-only state (and on Windows the hidden and system attributes). False on failure.
bool clearReadOnly(const std::filesystem::path &path);

// Makes bytes the whole content of the file at path, creating it when missing; false when it cannot be
// opened or written. An existing file is written over from its start and then cut to the new length, not
// emptied first: ext4 pushes a file that was emptied and written again to the disk when it is closed (its
// guard against a crash in between), which made a batch wait on the disk for every report it rewrote.
bool writeFileInPlace(const std::filesystem::path &path, std::string_view bytes);

// Replaces the content of path with bytes, never half-written: a temporary file in the same folder is
// written, flushed and renamed over the old one. A symbolic link is followed, so the link stays a link and
// its target gets the new bytes; the permissions of the old file are kept. A missing file is created.
// Returns false, with the old file as it stood, on any failure, and when the file is read-only.
bool replaceFileAtomically(const std::filesystem::path &path, std::string_view bytes);

// Makes bytes the whole content of the file at path the way the program's own records must be kept: a
// temporary file in the same folder, written and flushed to the disk, renamed over the old one, the folder
// flushed too. Unlike replaceFileAtomically it keeps nothing of an old file (links, permissions) and a test's
// ReplaceFailureForTests does not stop it: the journal keeps its before-images this way while a test
// interrupts the rewrite of a user's file. False, and nothing changed at path, on any failure.
bool writeFileDurably(const std::filesystem::path &path, std::string_view bytes);

// Appends bytes to the end of the file at path (created when missing) and flushes them to the disk before it
// returns. False when the file cannot be opened or the bytes did not all reach it.
bool appendDurably(const std::filesystem::path &path, std::string_view bytes);

// Makes the file read-only (POSIX: takes away every write bit; Windows: sets the read-only attribute).
// False on failure.
bool setReadOnly(const std::filesystem::path &path);

// A path as text to compare paths by: lexically normal, "/" as separator, no trailing one; upper-cased on
// Windows, where names differ not by case.
std::u16string comparablePath(const std::filesystem::path &path);

// For tests only: while one lives, every replaceFileAtomically writes no more than bytesBeforeFailure bytes of
// the new content and then fails as a full disk or a pulled cable would, so a test can interrupt any rewrite
// at any byte and look at what is left. Not for the program, and not for use from two threads.
class ReplaceFailureForTests
{
public:
    explicit ReplaceFailureForTests(std::size_t bytesBeforeFailure) { s_limit = bytesBeforeFailure; }
    ~ReplaceFailureForTests() { s_limit.reset(); }
    ReplaceFailureForTests(const ReplaceFailureForTests &) = delete;
    ReplaceFailureForTests &operator=(const ReplaceFailureForTests &) = delete;

    // How many bytes a rewrite may write before it fails; nothing while no test asks for a failure.
    static std::optional<std::size_t> limit() { return s_limit; }

private:
    static inline std::optional<std::size_t> s_limit;
};

// Why an exclusive open failed.
enum class ExclusiveOpenFailure
{
    None,     // opened, or nothing tried yet
    NotFound, // no file at the path, or a folder on the way is missing
    Locked,   // another holder has the file: the simulator, another program, or another open of our own
    Denied,   // no permission; for ReadWrite also a file without write permission, even for root
    NotAFile, // a folder, a device, a pipe
    Other,
};

enum class ExclusiveAccess
{
    Read,
    ReadWrite, // never creates and never truncates
};

// A file opened for binary access that nobody else may use while it is open, the way the simulator's own
// files are patched. Windows opens with share mode 0, so any other open of the file fails, and an open fails
// while anyone else has the file open at all. Elsewhere the file carries a non-blocking advisory lock
// (flock, exclusive) that fails while another holder has one; programs that do not lock are not kept out.
// Closed at the end of its life.
class ExclusiveFile
{
public:
    ExclusiveFile() = default;
    ~ExclusiveFile();
    ExclusiveFile(ExclusiveFile &&other) noexcept
        : m_handle(std::exchange(other.m_handle, INVALID))
        , m_writable(other.m_writable)
        , m_failure(other.m_failure)
    {}
    ExclusiveFile &operator=(ExclusiveFile &&other) noexcept
    {
        if (this != &other) {
            close();
            m_handle = std::exchange(other.m_handle, INVALID);
            m_writable = other.m_writable;
            m_failure = other.m_failure;
        }
        return *this;
    }
    ExclusiveFile(const ExclusiveFile &) = delete;
    ExclusiveFile &operator=(const ExclusiveFile &) = delete;

    // An existing regular file. Check isOpen(), and failure() for the reason when it is not.
    static ExclusiveFile open(const std::filesystem::path &path, ExclusiveAccess access);

    bool isOpen() const { return m_handle != INVALID; }
    ExclusiveOpenFailure failure() const { return m_failure; }

    std::optional<std::uint64_t> size() const;
    // The whole content, from the first byte to the end.
    std::optional<std::string> readAll() const;
    // Up to count bytes from offset; fewer where the file ends, none at or behind its end.
    std::optional<std::string> readAt(std::uint64_t offset, std::size_t count) const;
    // Writes bytes at offset, in place. A write behind the end grows the file, the gap reading as zero
    // bytes. False on a file opened for reading only and on any failure.
    bool writeAt(std::uint64_t offset, std::string_view bytes);
    // Lets the file go, lock and all. False when the system reports a failure (a write that did not reach
    // the disk); the file is closed all the same.
    bool close();

private:
    static constexpr std::intptr_t INVALID = -1; // a closed descriptor, or INVALID_HANDLE_VALUE

    std::intptr_t m_handle = INVALID;
    bool m_writable = false;
    ExclusiveOpenFailure m_failure = ExclusiveOpenFailure::None;
};

} // namespace fleetwright::platform
