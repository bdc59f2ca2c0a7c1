#pragma once

#include <string>

namespace fleetwright::platform {

// The user's folder for temporary files, always ending in the native separator: GetTempPath on Windows,
// $TMPDIR or else /tmp elsewhere. The folder is not checked or created.
std::u16string TempFolderPath();

} // namespace fleetwright::platform
