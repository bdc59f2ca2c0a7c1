#include "platform/tempfolder.h"

#include <windows.h>

namespace fleetwright::platform {

std::u16string TempFolderPath()
{
    // The documented maximum is MAX_PATH + 1 characters plus the terminating NUL.
    wchar_t buffer[MAX_PATH + 2];
    const DWORD length = GetTempPathW(MAX_PATH + 2, buffer);
    std::u16string folder;
    if (length > 0 && length < MAX_PATH + 2)
        folder.assign(buffer, buffer + length);
    else
        folder = u"C:\\Windows\\Temp\\";
    if (folder.back() != u'\\')
        folder.push_back(u'\\');
    return folder;
}

} // namespace fleetwright::platform
