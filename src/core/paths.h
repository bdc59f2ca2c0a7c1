#pragma once

#include <string>
#include <string_view>

namespace fleetwright {

// Paths as the engine builds them from folders and names, with the platform's separator; and the two
// conversions between that separator and the "\" that configuration values and reports are written with.

// "\" on Windows, "/" elsewhere.
char16_t nativeSeparator();

// Whether ch ends a folder's name in a path: the native separator, and "/", which Windows takes as one too.
bool isSeparator(char16_t ch);

// Whether folder ends in a separator: a root ("C:\", "/") or a folder written so.
bool endsWithSeparator(std::u16string_view folder);

// text with every "\" and "/" turned into the native separator: values such as model= and texture= become
// path parts on every platform.
std::u16string nativeSeparators(std::u16string text);

// path with every native separator turned into "\", as reports show paths on every platform.
std::u16string backslashSeparators(std::u16string path);

// folder + name, with the native separator between unless folder already ends in a separator. An empty
// folder gets one all the same: "" and "x" give "\x" ("/x").
std::u16string joinPath(std::u16string_view folder, std::u16string_view name);

// folder + separator + name, the separator always, even behind one that folder ends in: a simulator's folder
// is joined so once the one trailing backslash of its registry text is cut. A "\" in name (a folder below)
// becomes the native separator; a "/" stays.
std::u16string joinPathAlways(std::u16string_view folder, std::u16string_view name);

// folder with a separator at its end, the native one added unless it ends in one already; an empty folder
// becomes the separator alone. Temporary and aircraft folders are kept so, for names to be appended.
std::u16string withTrailingSeparator(std::u16string folder);

} // namespace fleetwright
