#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace fleetwright::platform {

// What identifies one state of a file on disk. Two equal identities taken at different times mean the file
// was not replaced or rewritten in between, unless both changes fell into one tick of the file system's
// clock (see FileCache in core for how that case is met).
struct FileIdentity
{
    bool exists = false; // a regular file (or a link to one) stands at the path
    std::uint64_t size = 0;
    std::int64_t modifiedNs = 0; // last write, nanoseconds since 1970-01-01 UTC
    std::uint64_t fileId = 0;    // inode, or the NTFS file index
    std::uint64_t volumeId = 0;  // device, or the volume serial number

    bool operator==(const FileIdentity &) const = default;
};

FileIdentity fileIdentity(const std::filesystem::path &path);

// The wall clock in the epoch and unit of FileIdentity::modifiedNs.
std::int64_t currentTimeNs();

// The whole content of a regular file, or nothing when it cannot be opened (missing, a folder, locked,
// no permission).
std::optional<std::string> readWholeFile(const std::filesystem::path &path);

// True when the file carries no write permission (POSIX: none of the write bits; Windows: the read-only
// attribute). Such a file refuses writes even for root, as Windows refuses administrators.
bool isReadOnly(const std::filesystem::path &path);

// Clears the read-only state (and on Windows the hidden and system attributes). False on failure.
bool clearReadOnly(const std::filesystem::path &path);

// Replaces the content of path with bytes, never half-written: a temporary file in the same folder is
// written, flushed and renamed over the old one. A symbolic link is followed, so the link stays a link and
// its target gets the new bytes; the permissions of the old file are kept. A missing file is created.
// Returns false, with the old file as it stood, on any failure, and when the file is read-only.
bool replaceFileAtomically(const std::filesystem::path &path, std::string_view bytes);

} // namespace fleetwright::platform
