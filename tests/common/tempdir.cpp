#include "tempdir.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>

namespace fleetwright::test {

TempDir::TempDir()
{
    static std::atomic<unsigned> counter {0};
    std::random_device random;
    const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
    for (;;) {
        auto candidate = std::filesystem::temp_directory_path()
            / ("fleetwright-test-" + std::to_string(stamp) + "-" + std::to_string(random()) + "-"
               + std::to_string(counter++));
        std::error_code error;
        if (std::filesystem::create_directory(candidate, error)) {
            m_path = candidate;
            return;
        }
    }
}

TempDir::~TempDir()
{
    std::error_code error;
    // Tests make files read-only; give the owner write access back so that removal works everywhere.
    for (auto it = std::filesystem::recursive_directory_iterator(m_path, error);
         !error && it != std::filesystem::recursive_directory_iterator(); it.increment(error)) {
        std::error_code ignored;
        if (!it->is_symlink(ignored))
            std::filesystem::permissions(it->path(), std::filesystem::perms::owner_write,
                                         std::filesystem::perm_options::add, ignored);
    }
    std::filesystem::remove_all(m_path, error);
}

void writeBytes(const std::filesystem::path &path, std::string_view bytes)
{
    if (path.has_parent_path())
        std::filesystem::create_directories(path.parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string readBytes(const std::filesystem::path &path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::u16string widePath(const std::filesystem::path &path)
{
    return path.u16string();
}

std::string crlf(std::string_view text)
{
    std::string bytes;
    for (const char ch : text) {
        if (ch == '\n')
            bytes += '\r';
        bytes += ch;
    }
    return bytes;
}

} // namespace fleetwright::test
