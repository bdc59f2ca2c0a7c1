#include "platform/tempfolder.h"

#include <cstdlib>

#include "platform/utf8.h"

namespace fleetwright::platform {

std::u16string TempFolderPath()
{
    const char *variable = std::getenv("TMPDIR");
    std::u16string folder = variable != nullptr && *variable != '\0' ? fromUtf8(variable) : u"/tmp";
    if (folder.back() != u'/')
        folder.push_back(u'/');
    return folder;
}

} // namespace fleetwright::platform
