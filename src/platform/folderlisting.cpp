#include "platform/folderlisting.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "platform/namefolding.h"

#ifndef _WIN32
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace fleetwright::platform {

namespace {

#ifndef _WIN32
std::filesystem::file_type typeOf(unsigned char type)
{
    switch (type) {
    case DT_REG:
        return std::filesystem::file_type::regular;
    case DT_DIR:
        return std::filesystem::file_type::directory;
    case DT_LNK:
        return std::filesystem::file_type::symlink;
    default:
        return std::filesystem::file_type::none; // the system did not say: asked when it matters
    }
}
#endif

constexpr std::size_t MAPPED_FROM = 16;

} // namespace

std::optional<std::u16string> wideOf(const NativeText &name)
{
    if (std::all_of(name.begin(), name.end(), [](auto ch) { return static_cast<std::uint32_t>(ch) < 0x80; }))
        return std::u16string(name.begin(), name.end());
    try {
        return std::filesystem::path(name).u16string();
    } catch (const std::system_error &) {
        return std::nullopt;
    }
}

std::shared_ptr<const Listing> listFolder(const NativeText &folder, bool kept)
{
    auto listed = std::make_shared<Listing>();
    const NativeText &listedFolder = folder.empty() ? NativeText(1, '.') : folder;
#ifndef _WIN32
    // The names and kinds come straight from the system: a path object per entry costs more than the listing.
    const auto add = [&](std::string_view name, unsigned char type) {
        if (name == "." || name == "..")
            return;
        ListedEntry &entry = listed->entries.emplace_back();
        entry.name = name;
        entry.wide = wideOf(entry.name);
        entry.type = typeOf(type);
    };
#ifdef __linux__
    // opendir takes a buffer of 32 KiB from the heap for every folder, and each such request makes the
    // allocator tidy up its small blocks first: one buffer serves every listing of the thread.
    const int fd = ::open(listedFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    listed->opened = fd >= 0;
    if (fd >= 0) {
        thread_local std::vector<std::uint64_t> buffer(4096);
        char *const bytes = reinterpret_cast<char *>(buffer.data());
        for (;;) {
            const ssize_t got = ::getdents64(fd, bytes, buffer.size() * sizeof(std::uint64_t));
            if (got <= 0)
                break; // the end, or the first error
            for (ssize_t at = 0; at < got;) {
                const auto *found = reinterpret_cast<const struct dirent64 *>(bytes + at);
                add(found->d_name, found->d_type);
                at += found->d_reclen;
            }
        }
        ::close(fd);
    }
#else
    DIR *dir = opendir(listedFolder.c_str());
    listed->opened = dir != nullptr;
    while (dir) {
        errno = 0;
        const dirent *found = readdir(dir);
        if (!found)
            break;
        add(found->d_name, found->d_type);
    }
    if (dir)
        closedir(dir);
#endif
#else
    std::error_code error;
    std::filesystem::directory_iterator it(listedFolder, error);
    listed->opened = !error;
    for (const std::filesystem::directory_iterator end; !error && it != end; it.increment(error)) {
        ListedEntry &entry = listed->entries.emplace_back();
        entry.name = it->path().filename().native();
        entry.wide = wideOf(entry.name);
    }
#endif
    for (std::uint32_t i = 0; i < listed->entries.size(); ++i) {
        if (listed->entries[i].wide)
            listed->sorted.push_back(i);
    }
    std::sort(listed->sorted.begin(), listed->sorted.end(), [&](std::uint32_t a, std::uint32_t b) {
        return listingOrderLess(*listed->entries[a].wide, *listed->entries[b].wide);
    });
    listed->kept = kept;
    // Maps pay off for folders that are asked about often and hold many entries, such as the one that holds
    // the aircraft; a texture folder's few entries are quicker searched.
    listed->mapped = kept && listed->entries.size() >= MAPPED_FROM;
    if (listed->mapped) {
        for (std::uint32_t i = 0; i < listed->entries.size(); ++i)
            listed->byName.try_emplace(listed->entries[i].name, i);
        for (const std::uint32_t i : listed->sorted)
            listed->byFoldedName[foldName(*listed->entries[i].wide)].push_back(i);
    }
    return listed;
}

void mendListing(std::shared_ptr<const Listing> &held, const NativeText &name, const std::filesystem::path &path)
{
    // Made by listFolder as a Listing that may change; a copy when someone else holds it meanwhile.
    std::shared_ptr<Listing> listed =
        held.use_count() == 1 ? std::const_pointer_cast<Listing>(held) : std::make_shared<Listing>(*held);
    held = listed;
    auto &entries = listed->entries;
    const auto retarget = [&](std::uint32_t from, std::uint32_t to) {
        const ListedEntry &entry = entries[to];
        if (entry.wide)
            std::replace(listed->sorted.begin(), listed->sorted.end(), from, to);
        if (!listed->mapped)
            return;
        listed->byName[entry.name] = to;
        if (entry.wide) {
            auto &alike = listed->byFoldedName[foldName(*entry.wide)];
            std::replace(alike.begin(), alike.end(), from, to);
        }
    };
    if (const ListedEntry *gone = listed->named(name)) {
        const auto index = static_cast<std::uint32_t>(gone - entries.data());
        if (gone->wide)
            std::erase(listed->sorted, index);
        if (listed->mapped) {
            listed->byName.erase(name);
            if (gone->wide) {
                const auto alike = listed->byFoldedName.find(foldName(*gone->wide));
                std::erase(alike->second, index);
                if (alike->second.empty())
                    listed->byFoldedName.erase(alike);
            }
        }
        const auto last = static_cast<std::uint32_t>(entries.size() - 1);
        if (index != last) {
            entries[index] = std::move(entries[last]);
            retarget(last, index);
        }
        entries.pop_back();
    }
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::symlink_status(path, error);
    if (error || !std::filesystem::exists(status))
        return;
    const auto index = static_cast<std::uint32_t>(entries.size());
    ListedEntry &entry = entries.emplace_back();
    entry.name = name;
    entry.wide = wideOf(name);
    if (std::filesystem::is_symlink(status) || std::filesystem::is_directory(status)
        || std::filesystem::is_regular_file(status))
        entry.type = status.type();
    if (listed->mapped)
        listed->byName.try_emplace(name, index);
    if (!entry.wide)
        return;
    const auto before = [&](std::uint32_t a, std::uint32_t b) {
        return listingOrderLess(*entries[a].wide, *entries[b].wide);
    };
    listed->sorted.insert(std::upper_bound(listed->sorted.begin(), listed->sorted.end(), index, before), index);
    if (listed->mapped) {
        auto &alike = listed->byFoldedName[foldName(*entry.wide)];
        alike.insert(std::upper_bound(alike.begin(), alike.end(), index, before), index);
    }
}

const ListedEntry *Listing::named(const NativeText &name) const
{
    if (mapped) {
        const auto at = byName.find(name);
        return at == byName.end() ? nullptr : &entries[at->second];
    }
    for (const ListedEntry &entry : entries) {
        if (entry.name == name)
            return &entry;
    }
    return nullptr;
}

std::vector<std::uint32_t> Listing::alike(std::u16string_view wide) const
{
    if (mapped) {
        const auto at = byFoldedName.find(foldName(wide));
        return at == byFoldedName.end() ? std::vector<std::uint32_t>() : at->second;
    }
    std::vector<std::uint32_t> found;
    for (const std::uint32_t index : sorted) {
        if (sameNameIgnoringCase(*entries[index].wide, wide))
            found.push_back(index);
    }
    return found;
}

} // namespace fleetwright::platform
