#include "history/contentstore.h"

#include <fstream>
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

std::optional<std::string> ContentStore::put(std::string_view bytes, bool durable, std::string digest)
{
    if (digest.empty())
        digest = sha256Hex(bytes);
    if (m_durable.contains(digest))
        return digest;
    const std::filesystem::path path = pathOf(digest);
    const platform::FileIdentity stored = platform::fileIdentity(path);
    if (stored.exists && stored.size == bytes.size() && !durable)
        return digest;
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    if (durable) {
        // Also over a copy stored earlier without a flush: only a flushed copy may stand for a file's old bytes.
        if (!platform::writeFileDurably(path, bytes))
            return std::nullopt;
        m_durable.insert(digest);
        return digest;
    }
    // The bytes after an operation: losing them to a crash of the system costs the redo only, and the record
    // is then completed from the files anyway, so they are not waited for.
    const std::filesystem::path temp = path.parent_path() / ("." + digest + ".quick.tmp");
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        out.close();
        if (!out)
            return std::nullopt;
    }
    std::filesystem::rename(temp, path, error);
    if (error) {
        std::filesystem::remove(temp, error);
        return std::nullopt;
    }
    return digest;
}

void ContentStore::knowDurable(const std::string &digest)
{
    if (!digest.empty())
        m_durable.insert(digest);
}

std::optional<std::string> ContentStore::get(const std::string &digest) const
{
    if (digest.size() < 2)
        return std::nullopt;
    std::optional<std::string> bytes = platform::readWholeFile(pathOf(digest)).bytes;
    if (bytes && sha256Hex(*bytes) != digest)
        return std::nullopt;
    return bytes;
}

void ContentStore::remove(const std::string &digest)
{
    if (digest.size() < 2)
        return;
    m_durable.erase(digest);
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
