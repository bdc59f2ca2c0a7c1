#pragma once

#include <string>
#include <string_view>

namespace fleetwright {

// SHA-256 of bytes as 64 lower-case hexadecimal digits: the journal's content address. A 64-bit hash would
// do for telling contents apart until two files collide; this one never will in practice, so a stored content
// is never mistaken for another and lost.
std::string sha256Hex(std::string_view bytes);

} // namespace fleetwright
