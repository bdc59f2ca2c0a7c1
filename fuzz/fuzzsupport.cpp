#include "fuzzsupport.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace fleetwright::fuzz {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t MAX_ENTRIES = 64;
constexpr std::size_t MAX_DEPTH = 12;
constexpr std::size_t MAX_NAME = 64;

// The components of a described path, "." and ".." dropped unless keepParents.
std::vector<std::string> components(std::string_view text, bool keepParents)
{
    std::vector<std::string> parts;
    std::string part;
    auto flush = [&] {
        if (part.empty() || part == "." || (part == ".." && !keepParents)) {
            part.clear();
            return;
        }
        for (char &ch : part) {
            if (ch == '\0')
                ch = '_';
        }
        parts.push_back(part.substr(0, MAX_NAME));
        part.clear();
    };
    for (const char ch : text) {
        if (ch == '/')
            flush();
        else
            part += ch;
    }
    flush();
    return parts;
}

fs::path joined(const fs::path &root, const std::vector<std::string> &parts)
{
    fs::path path = root;
    for (const std::string &part : parts)
        path /= part;
    return path;
}

// A link's target, relative to the link's folder, when it stays inside the tree: "" when it does not.
std::string linkTarget(const std::vector<std::string> &linkParts, std::string_view target)
{
    std::vector<std::string> at(linkParts.begin(), linkParts.end() - 1);
    const std::vector<std::string> steps = components(target, true);
    if (steps.empty())
        return {};
    std::string relative;
    for (const std::string &step : steps) {
        if (step == "..") {
            if (at.empty())
                return {};
            at.pop_back();
        } else {
            at.push_back(step);
        }
        relative += (relative.empty() ? "" : "/") + step;
    }
    return relative;
}

} // namespace

void fail(const std::string &message)
{
    std::fprintf(stderr, "FUZZ INVARIANT BROKEN: %s\n", message.c_str());
    std::fflush(stderr);
    std::abort();
}

fs::path scratchFolder(const std::string &name)
{
    std::error_code error;
    const fs::path folder = fs::temp_directory_path() / ("fleetwright-fuzz-" + std::to_string(::getpid())) / name;
    // Entries without write permission come back to life first, so the folder can go as a non-root user too.
    if (fs::exists(folder, error)) {
        for (auto it = fs::recursive_directory_iterator(folder, error); !error && it != fs::end(it);
             it.increment(error))
            fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add | fs::perm_options::nofollow,
                            error);
        fs::remove_all(folder, error);
    }
    fs::create_directories(folder, error);
    if (error)
        fail("cannot make the scratch folder " + folder.string() + ": " + error.message());
    return folder;
}

bool writeFile(const fs::path &path, std::string_view bytes)
{
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file)
        return false;
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return static_cast<bool>(file);
}

std::size_t writeTree(const fs::path &root, std::string_view description)
{
    std::size_t written = 0;
    std::size_t pos = description.starts_with('@') ? 0 : description.find("\n@");
    if (pos == std::string_view::npos)
        return 0;
    if (description[pos] == '\n')
        ++pos;
    while (pos < description.size() && written < MAX_ENTRIES) {
        // pos stands on the "@" of a header line.
        const std::size_t headerEnd = std::min(description.find('\n', pos), description.size());
        std::string_view header = description.substr(pos + 1, headerEnd - pos - 1);
        std::size_t contentEnd = description.find("\n@", headerEnd);
        if (contentEnd == std::string_view::npos)
            contentEnd = description.size();
        const std::string_view content =
            headerEnd < contentEnd ? description.substr(headerEnd + 1, contentEnd - headerEnd - 1) : std::string_view();
        pos = contentEnd + 1;

        const bool readOnly = header.starts_with('!');
        if (readOnly)
            header.remove_prefix(1);
        const std::size_t arrow = header.find(" -> ");
        const std::vector<std::string> parts =
            components(arrow == std::string_view::npos ? header : header.substr(0, arrow), false);
        if (parts.empty() || parts.size() > MAX_DEPTH)
            continue;
        const fs::path path = joined(root, parts);
        std::error_code error;
        if (arrow != std::string_view::npos) {
            const std::string target = linkTarget(parts, header.substr(arrow + 4));
            if (target.empty())
                continue;
            fs::create_directories(path.parent_path(), error);
            fs::create_symlink(target, path, error);
        } else if (header.ends_with('/')) {
            fs::create_directories(path, error);
        } else if (writeFile(path, content) && readOnly) {
            fs::permissions(path, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                            fs::perm_options::remove, error);
        }
        ++written;
    }
    return written;
}

TreeState treeState(const fs::path &root)
{
    TreeState state;
    std::error_code error;
    for (auto it = fs::recursive_directory_iterator(root, error); !error && it != fs::end(it); it.increment(error)) {
        const fs::path &path = it->path();
        const std::string key = fs::relative(path, root, error).generic_string();
        const fs::file_status status = fs::symlink_status(path, error);
        if (fs::is_symlink(status)) {
            state[key] = "link " + fs::read_symlink(path, error).string();
        } else if (fs::is_directory(status)) {
            state[key] = "folder";
        } else {
            std::ifstream file(path, std::ios::binary);
            const bool writable = (status.permissions() & fs::perms::owner_write) != fs::perms::none;
            state[key] = std::string(writable ? "file " : "read-only file ")
                + std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        }
    }
    return state;
}

void requireOnlyAllowedChanges(const TreeState &before, const TreeState &after, const ChangeRule &allowed,
                               const char *operation)
{
    auto check = [&](const std::string &path, const std::string *old, const std::string *now) {
        if ((old && now && *old == *now) || allowed(path, old, now))
            return;
        fail(std::string(operation) + " changed " + path + (old ? "" : " (new)") + (now ? "" : " (gone)"));
    };
    for (const auto &[path, old] : before) {
        const auto found = after.find(path);
        check(path, &old, found == after.end() ? nullptr : &found->second);
    }
    for (const auto &[path, now] : after) {
        if (!before.contains(path))
            check(path, nullptr, &now);
    }
}

ChangeRule readByteArrayRewrites(const fs::path &root)
{
    std::set<std::string> configs;
    std::error_code error;
    const fs::path canonicalRoot = fs::weakly_canonical(root, error);
    for (auto it = fs::recursive_directory_iterator(root, error); !error && it != fs::end(it); it.increment(error)) {
        std::string name = it->path().filename().string();
        std::transform(name.begin(), name.end(), name.begin(), [](unsigned char ch) { return std::tolower(ch); });
        if (name != "model.cfg" && name != "texture.cfg")
            continue;
        std::error_code ignored;
        const fs::path target = fs::weakly_canonical(it->path(), ignored);
        configs.insert(fs::relative(target, canonicalRoot, ignored).generic_string());
        configs.insert(fs::relative(it->path(), root, ignored).generic_string());
    }
    return [configs](const std::string &path, const std::string *before, const std::string *after) {
        constexpr std::string_view MARK = "\xEF\xBB\xBF";
        constexpr std::string_view FILE = "file ";
        if (!before || !after || !configs.contains(path) || !before->starts_with(FILE) || !after->starts_with(FILE))
            return false;
        std::string bytes = before->substr(FILE.size());
        const std::string_view now = std::string_view(*after).substr(FILE.size());
        // Each pass takes off one mark; a file is read again only while it had one.
        for (int pass = 0; pass < 16 && bytes.starts_with(MARK) && bytes.size() <= 32767; ++pass) {
            bytes = bytes.substr(3) + bytes.substr(bytes.size() - 3);
            if (bytes == now)
                return true;
        }
        return false;
    };
}

} // namespace fleetwright::fuzz
