#include "platform/datafolder.h"

#include <cstdlib>

#include "platform/posix/homefolder_posix.h"

namespace fleetwright::platform {

std::filesystem::path applicationDataFolder()
{
    // A relative XDG_DATA_HOME is ignored, as desktops do: only an absolute one names the data home.
    if (const std::optional<std::filesystem::path> home = environmentPath("XDG_DATA_HOME"); home && home->is_absolute())
        return *home / "fleetwright";
    const std::string user = homeFolder();
    if (user.empty())
        return {};
    return std::filesystem::path(user) / ".local" / "share" / "fleetwright";
}

std::optional<std::filesystem::path> environmentPath(const char *name)
{
    if (const char *value = std::getenv(name); value != nullptr && *value != '\0')
        return std::filesystem::path(value);
    return std::nullopt;
}

} // namespace fleetwright::platform
