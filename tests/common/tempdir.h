#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace fleetwright::test {

// A fresh folder under the system's temporary folder, removed with everything in it at the end of its scope.
class TempDir
{
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;

    const std::filesystem::path &path() const { return m_path; }
    std::filesystem::path operator/(const std::filesystem::path &name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

// Writes bytes exactly as given (no line-end translation); creates missing parent folders.
void writeBytes(const std::filesystem::path &path, std::string_view bytes);
// The bytes of a file; empty when it cannot be read.
std::string readBytes(const std::filesystem::path &path);

// Text with "\n" line ends, written with CR LF as makers' files are.
std::string crlf(std::string_view text);

// Path text for the engine's wide-string APIs.
std::u16string widePath(const std::filesystem::path &path);

} // namespace fleetwright::test
