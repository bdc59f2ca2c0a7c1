#pragma once

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "common/aircraftfolder.h"
#include "common/environment.h"

namespace fleetwright::test {

// Every report of a test carries the same time stamp.
inline constexpr const char *FIXED_TIME = "1700000000";

} // namespace fleetwright::test
