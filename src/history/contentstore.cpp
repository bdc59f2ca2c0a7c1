#include "history/contentstore.h"

#include <system_error>
#include <vector>

#include "history/sha256.h"
#include "platform/fileio.h"

namespace fleetwright {

ContentStore::ContentStore(std::filesystem::path folder)
    : m_folder(std::move(folder))
{}

std::filesystem::path ContentStore::pathOf(const std::string &digest) const
{
    return m_folder / digest.substr(0, 2) / digest;
}

std::optional<std::string> ContentStore::put(std::string_view bytes) const
{
    std::string digest = sha256Hex(bytes);
    const std::filesystem::path path = pathOf(digest);
    const platform::FileIdentity stored = platform::fileIdentity(path);
    if (stored.exists && stored.size == bytes.size())
        return digest;
    std::error_code ignored;
    std::filesystem::create_directories(path.parent_path(), ignored);
    if (!platform::writeFileDurably(path, bytes))
        return std::nullopt;
    return digest;
}

std::optional<std::string> ContentStore::get(const std::string &digest) const
{
    if (digest.size() < 2)
        return std::nullopt;
    return platform::readWholeFile(pathOf(digest)).bytes;
}

void ContentStore::remove(const std::string &digest) const
{
    if (digest.size() < 2)
        return;
    std::error_code ignored;
    std::filesystem::remove(pathOf(digest), ignored);
}

void ContentStore::removeLeftovers() const
{
    std::error_code error;
    std::filesystem::recursive_directory_iterator walk(m_folder, error);
    if (error)
        return;
    std::vector<std::filesystem::path> leftovers;
    for (const auto &entry : walk) {
        const std::string name = entry.path().filename().string();
        if (name.size() > 4 && name.front() == '.' && name.ends_with(".tmp"))
            leftovers.push_back(entry.path());
    }
    for (const auto &path : leftovers)
        std::filesystem::remove(path, error);
}

} // namespace fleetwright
