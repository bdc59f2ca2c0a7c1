#include "platform/fileio.h"

#include <atomic>
#include <string>
#include <windows.h>

namespace fleetwright::platform {

namespace {

// FILETIME counts 100 ns ticks since 1601-01-01; this many of them lie before 1970-01-01.
constexpr std::int64_t TICKS_1601_TO_1970 = 116444736000000000LL;

std::int64_t toNs(const FILETIME &time)
{
    const auto ticks =
        static_cast<std::int64_t>((static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime);
    return (ticks - TICKS_1601_TO_1970) * 100;
}

// Closes the handle at the end of the scope.
class Handle
{
public:
    explicit Handle(HANDLE handle)
        : m_handle(handle)
    {}
    ~Handle() { close(); }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;

    bool isValid() const { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return m_handle; }
    bool close()
    {
        if (!isValid())
            return true;
        const bool ok = CloseHandle(m_handle) != 0;
        m_handle = INVALID_HANDLE_VALUE;
        return ok;
    }

private:
    HANDLE m_handle;
};

constexpr DWORD SHARE_ALL = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// The path that finally holds the content: symbolic links and junctions followed. The path itself when the
// file does not exist yet (or the system cannot say).
std::wstring finalPath(const std::filesystem::path &path)
{
    Handle file(CreateFileW(path.c_str(), 0, SHARE_ALL, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.isValid())
        return path.wstring();
    std::wstring result(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetFinalPathNameByHandleW(file.get(), result.data(), static_cast<DWORD>(result.size()),
                                                       FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
        if (length == 0)
            return path.wstring();
        if (length < result.size()) {
            result.resize(length);
            return result;
        }
        result.resize(length);
    }
}

bool writeAll(HANDLE file, std::string_view bytes)
{
    const char *data = bytes.data();
    std::size_t left = bytes.size();
    while (left > 0) {
        const DWORD chunk = left > 0x40000000 ? 0x40000000 : static_cast<DWORD>(left);
        DWORD written = 0;
        if (!WriteFile(file, data, chunk, &written, nullptr) || written == 0)
            return false;
        data += written;
        left -= written;
    }
    return true;
}

} // namespace

FileIdentity fileIdentity(const std::filesystem::path &path)
{
    FileIdentity identity;
    // Without FILE_FLAG_BACKUP_SEMANTICS a folder does not open, and links are followed to their target.
    Handle file(CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, SHARE_ALL, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
    BY_HANDLE_FILE_INFORMATION info;
    if (!file.isValid() || !GetFileInformationByHandle(file.get(), &info)
        || (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return identity;
    identity.exists = true;
    identity.size = (static_cast<std::uint64_t>(info.nFileSizeHigh) << 32) | info.nFileSizeLow;
    identity.modifiedNs = toNs(info.ftLastWriteTime);
    identity.fileId = (static_cast<std::uint64_t>(info.nFileIndexHigh) << 32) | info.nFileIndexLow;
    identity.volumeId = info.dwVolumeSerialNumber;
    return identity;
}

std::int64_t currentTimeNs()
{
    FILETIME now;
    GetSystemTimePreciseAsFileTime(&now);
    return toNs(now);
}

std::optional<std::string> readWholeFile(const std::filesystem::path &path)
{
    Handle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.isValid() || GetFileType(file.get()) != FILE_TYPE_DISK)
        return std::nullopt;
    std::string content;
    LARGE_INTEGER size;
    if (GetFileSizeEx(file.get(), &size) && size.QuadPart > 0)
        content.reserve(static_cast<std::size_t>(size.QuadPart));
    char buffer[65536];
    for (;;) {
        DWORD got = 0;
        if (!ReadFile(file.get(), buffer, sizeof buffer, &got, nullptr))
            return std::nullopt;
        if (got == 0)
            break;
        content.append(buffer, got);
    }
    return content;
}

bool isReadOnly(const std::filesystem::path &path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

bool clearReadOnly(const std::filesystem::path &path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return false;
    DWORD cleared = attributes & ~(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
    if (cleared == attributes)
        return true;
    if (cleared == 0)
        cleared = FILE_ATTRIBUTE_NORMAL;
    return SetFileAttributesW(path.c_str(), cleared) != 0;
}

bool replaceFileAtomically(const std::filesystem::path &path, std::string_view bytes)
{
    const std::filesystem::path target(finalPath(path));
    if (!target.has_filename())
        return false;
    const DWORD oldAttributes = GetFileAttributesW(target.c_str());
    if (oldAttributes == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = GetLastError();
        if (error != ERROR_FILE_NOT_FOUND)
            return false;
    } else if ((oldAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) != 0) {
        return false;
    }

    static std::atomic<unsigned> counter {0};
    const std::filesystem::path folder = target.parent_path();
    std::filesystem::path tempPath;
    HANDLE created = INVALID_HANDLE_VALUE;
    for (int attempt = 0; attempt < 100 && created == INVALID_HANDLE_VALUE; ++attempt) {
        tempPath = folder
            / (L"." + target.filename().wstring() + L".fw" + std::to_wstring(GetCurrentProcessId()) + L"-"
               + std::to_wstring(counter++) + L".tmp");
        created = CreateFileW(tempPath.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (created == INVALID_HANDLE_VALUE && GetLastError() != ERROR_FILE_EXISTS)
            return false;
    }
    Handle temp(created);
    if (!temp.isValid())
        return false;

    bool ok = writeAll(temp.get(), bytes) && FlushFileBuffers(temp.get());
    ok = temp.close() && ok;
    if (ok && oldAttributes != INVALID_FILE_ATTRIBUTES) {
        // The rename brings the temporary file's attributes along; give it those of the file it replaces.
        const DWORD keep = oldAttributes
            & (FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM
               | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED);
        ok = SetFileAttributesW(tempPath.c_str(), keep != 0 ? keep : FILE_ATTRIBUTE_NORMAL) != 0;
    }
    if (ok)
        ok = MoveFileExW(tempPath.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
    if (!ok) {
        DeleteFileW(tempPath.c_str());
        return false;
    }
    return true;
}

} // namespace fleetwright::platform
