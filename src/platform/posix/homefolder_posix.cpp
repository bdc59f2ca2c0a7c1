#include "platform/posix/homefolder_posix.h"

#include <cstdlib>
#include <pwd.h>
#include <sys/types.h>
#include <unistd.h>
#include <vector>

namespace fleetwright::platform {

std::string homeFolder()
{
    if (const char *home = std::getenv("HOME"); home != nullptr && *home != '\0')
        return home;
    std::vector<char> buffer(16384);
    passwd entry {};
    passwd *found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr
        && found->pw_dir != nullptr)
        return found->pw_dir;
    return {};
}

} // namespace fleetwright::platform
