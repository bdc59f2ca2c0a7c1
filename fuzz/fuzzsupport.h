#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace fleetwright::fuzz {

// A scratch folder of this process, emptied for every input: <temp>/fleetwright-fuzz-<pid>/<name>.
std::filesystem::path scratchFolder(const std::string &name);

// Writes bytes to path, creating the parent folders; false when the file system refuses.
bool writeFile(const std::filesystem::path &path, std::string_view bytes);

// A folder tree described as text, so that seeds can be written from aircraft folders by hand and mutations
// keep their shape:
//
//     @ac/aircraft.cfg          a file; its bytes are the lines up to the next line that starts with "@"
//     [fltsim.0]
//     title=x
//     @ac/texture/              a folder
//     @!ac/model/model.cfg      a file without write permission
//     @ac/loop -> ..            a symbolic link (POSIX), relative, never leading out of the tree
//
// Components "." and ".." of a path are dropped, so nothing is written outside root. At most 64 entries,
// 12 levels and names of 64 bytes are taken; the rest is ignored. Returns the number of entries written.
std::size_t writeTree(const std::filesystem::path &root, std::string_view description);

// Every entry below root with what identifies its content: a file's bytes, a folder's mark, a link's target.
using TreeState = std::map<std::string, std::string>;
TreeState treeState(const std::filesystem::path &root);

// Fails the input (abort with a message) when before and after differ anywhere that allowed() does not
// accept; allowed(path, before or nullptr, after or nullptr) is asked for each difference.
using ChangeRule = std::function<bool(const std::string &path, const std::string *before, const std::string *after)>;
void requireOnlyAllowedChanges(const TreeState &before, const TreeState &after, const ChangeRule &allowed,
                               const char *operation);

// The changes that ReadByteArray may make below root, as texture.cfg and model.cfg (in any case, or a file that
// such a name links to) go through it: the byte order mark taken off by writing the rest over the start, once
// or more, the length kept.
ChangeRule readByteArrayRewrites(const std::filesystem::path &root);

// Aborts with the message: libFuzzer records the input as a crash.
[[noreturn]] void fail(const std::string &message);

} // namespace fleetwright::fuzz
