#pragma once

// The change of one journaled file as a reader sees it: a unified diff of its text before and after, or for a
// binary file (an .air or .mdl) the bytes that differ.

#include <optional>
#include <string>
#include <string_view>

namespace fleetwright {

// A file's bytes as text: UTF-16 (little- or big-endian, after its byte order mark) or else Windows-1252.
std::u16string decodeFileText(std::string_view bytes);

// Files that the journal could not give back are nothing; a file that did not exist is nothing as well.
// The result starts with "--- name (before)" and "+++ name (after)"; each hunk carries `context` unchanged
// lines around its changes. Lines compare with their line ends, so a changed line end is a change; a last
// line without one is marked as unified diffs mark it. Identical contents give the two header lines only.
std::u16string unifiedDiff(const std::optional<std::string> &before, const std::optional<std::string> &after,
                           const std::u16string &name, int context = 3);

} // namespace fleetwright
