#pragma once

#include <filesystem>
#include <optional>

namespace fleetwright::platform {

// The program's folder in the user's own data, never shared with other users nor with the simulators:
// Windows: the local application data folder + "Fleetwright"; elsewhere $XDG_DATA_HOME (default
// ~/.local/share) + "fleetwright". Empty when the system knows no such place. Not created here.
std::filesystem::path applicationDataFolder();

// An environment variable read as a path; nothing when it is unset or empty.
std::optional<std::filesystem::path> environmentPath(const char *name);

} // namespace fleetwright::platform
