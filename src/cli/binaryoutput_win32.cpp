#include "cli/binaryoutput.h"

#include <cstdio>
#include <fcntl.h>
#include <io.h>

namespace fleetwright {

void setBinaryStandardOutput()
{
    _setmode(_fileno(stdout), _O_BINARY);
}

} // namespace fleetwright
