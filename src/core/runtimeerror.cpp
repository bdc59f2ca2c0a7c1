#include "core/runtimeerror.h"

#include "platform/fileio.h"

namespace fleetwright {

RuntimeError RuntimeError::readFailure(platform::ReadFailure reason, std::u16string procedure)
{
    switch (reason) {
    case platform::ReadFailure::FileNotFound:
        return fileNotFound(std::move(procedure));
    case platform::ReadFailure::PathNotFound:
        return pathNotFound(std::move(procedure));
    case platform::ReadFailure::IsFolder:
        return pathFileAccessError(std::move(procedure));
    case platform::ReadFailure::None:
    case platform::ReadFailure::AccessDenied:
    case platform::ReadFailure::Other:
        break;
    }
    // A file that is there and will not open: locked, no permission, no plain file.
    return permissionDenied(std::move(procedure));
}

} // namespace fleetwright
