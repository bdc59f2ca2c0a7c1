#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace fleetwright {

// The options of validate and validate-all, for the usage text.
extern const char *const VALIDATE_OPTIONS_HELP;

// fleetwright-check validate FOLDER [OPTIONS] and validate-all ROOT [OPTIONS]: args without the command name.
int runValidateCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);
int runValidateAllCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);

// How the checker tells a usage error, shared by every command.
int usageError(std::ostream &err, const std::string &message);

} // namespace fleetwright
