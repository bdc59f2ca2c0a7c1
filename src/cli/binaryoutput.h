#pragma once

namespace fleetwright {

// Puts standard output into binary mode where the C library would turn "\n" into "\r\n" on its way out, so
// that a report's CR LF line ends leave the program as they stand in the file.
void setBinaryStandardOutput();

} // namespace fleetwright
