#pragma once

#include <string>
#include <string_view>

namespace fleetwright::platform {

// UTF-8 where the system speaks it (file names, environment, arguments and output off Windows, the settings
// file). A lone surrogate, which UTF-8 cannot hold, is written as U+FFFD.
std::string toUtf8(std::u16string_view text);

// Reads UTF-8; a byte that starts no valid sequence is taken as a Windows-1252 character, so a file saved by
// an editor in the old code page still reads as its author meant and no byte is lost to U+FFFD.
std::u16string fromUtf8(std::string_view bytes);

} // namespace fleetwright::platform
