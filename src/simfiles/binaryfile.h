#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace fleetwright {

// The regular file at path, looked up without regard to case as Windows finds it; nothing when there is none.
std::optional<std::filesystem::path> existingFile(const std::u16string &path);

// Writes bytes at offset into the existing file at path, in place: the file is neither created nor
// truncated, and a write beyond its end grows it, the gap filled with zero bytes as a positional write does.
// False when the file cannot be opened for writing or the write fails.
bool writeBytesAt(const std::filesystem::path &path, std::uint64_t offset, std::string_view bytes);

} // namespace fleetwright
