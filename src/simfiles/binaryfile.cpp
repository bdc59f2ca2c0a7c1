#include "simfiles/binaryfile.h"

#include <fstream>
#include <system_error>

#include "platform/filelookup.h"

namespace fleetwright {

namespace fs = std::filesystem;
using platform::FileLookup;
using platform::LookupKind;

std::optional<fs::path> existingFile(const std::u16string &path)
{
    return FileLookup::findFile(path);
}

bool writeBytesAt(const fs::path &path, std::uint64_t offset, std::string_view bytes)
{
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    if (error)
        return false;
    // in | out neither creates nor truncates.
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    if (!file)
        return false;
    if (offset > size) {
        file.seekp(static_cast<std::streamoff>(size));
        const std::string gap(static_cast<std::size_t>(offset - size), '\0');
        file.write(gap.data(), static_cast<std::streamsize>(gap.size()));
    } else {
        file.seekp(static_cast<std::streamoff>(offset));
    }
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.flush();
    return static_cast<bool>(file);
}

} // namespace fleetwright
