#include "cli/binaryoutput.h"

namespace fleetwright {

// POSIX streams never translate line ends.
void setBinaryStandardOutput()
{}

} // namespace fleetwright
