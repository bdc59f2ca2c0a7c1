#pragma once

#include <string>

namespace fleetwright::platform {

// The user's home folder: $HOME, else the password database's entry; empty when neither is known.
std::string homeFolder();

} // namespace fleetwright::platform
