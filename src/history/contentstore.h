#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace fleetwright {

// The contents the journal keeps, each stored once under its SHA-256:
//   <folder>/3f/3fa2...e1   the bytes exactly as they were, nothing added
// A content is written to a temporary name, flushed and renamed, so a name that exists holds all its bytes.
class ContentStore
{
public:
    explicit ContentStore(std::filesystem::path folder);

    // Stores bytes durably; their digest, or nothing when they could not be written (full disk, no right).
    std::optional<std::string> put(std::string_view bytes) const;
    std::optional<std::string> get(const std::string &digest) const;
    void remove(const std::string &digest) const;
    // Temporary files a crash left behind.
    void removeLeftovers() const;

private:
    std::filesystem::path pathOf(const std::string &digest) const;

    std::filesystem::path m_folder;
};

} // namespace fleetwright
