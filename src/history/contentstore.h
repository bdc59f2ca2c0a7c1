#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
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

    // Stores bytes; their digest, or nothing when they could not be written (full disk, no right). durable:
    // flushed to the disk before it returns, also when the same bytes were stored before without. Otherwise
    // a crash of the system may lose them, which get() then tells.
    // digest: the bytes' SHA-256 when the caller has it already.
    std::optional<std::string> put(std::string_view bytes, bool durable = true, std::string digest = {});
    // The stored bytes; nothing when they are missing or not whole.
    std::optional<std::string> get(const std::string &digest) const;
    void remove(const std::string &digest);
    // The log names these bytes as a file's old bytes: they were flushed before it did.
    void knowDurable(const std::string &digest);
    // Temporary files a crash left behind.
    void removeLeftovers() const;

private:
    std::filesystem::path pathOf(const std::string &digest) const;

    std::filesystem::path m_folder;
    std::set<std::string> m_durable; // contents known to be on the disk
};

} // namespace fleetwright
