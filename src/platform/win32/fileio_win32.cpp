#include "platform/fileio.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <string>
#include <utility>
#include <windows.h>

#include "platform/namefolding.h"

namespace fleetwright::platform {

namespace {

// FILETIME counts 100 ns ticks since 1601-01-01; this many of them lie before 1970-01-01.
constexpr std::int64_t TICKS_1601_TO_1970 = 116444736000000000LL;

std::int64_t ticksToNs(std::int64_t ticks)
{
    return (ticks - TICKS_1601_TO_1970) * 100;
}

std::int64_t toNs(const FILETIME &time)
{
    return ticksToNs(
        static_cast<std::int64_t>((static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime));
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

ReadFailure readFailureOf(const std::filesystem::path &path, DWORD error)
{
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_INVALID_NAME:
        return ReadFailure::FileNotFound;
    case ERROR_PATH_NOT_FOUND:
    case ERROR_BAD_NETPATH:
        return ReadFailure::PathNotFound;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        return ReadFailure::AccessDenied;
    case ERROR_ACCESS_DENIED: {
        // A folder does not open as a file and says so only in this way.
        const DWORD attributes = GetFileAttributesW(path.c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0
            ? ReadFailure::IsFolder
            : ReadFailure::AccessDenied;
    }
    default:
        return ReadFailure::Other;
    }
}

// The same reasons, as an exclusive open tells them: a lock held by others stands apart from a refusal.
ExclusiveOpenFailure openFailureOf(const std::filesystem::path &path, DWORD error)
{
    switch (readFailureOf(path, error)) {
    case ReadFailure::FileNotFound:
    case ReadFailure::PathNotFound:
        return ExclusiveOpenFailure::NotFound;
    case ReadFailure::IsFolder:
        return ExclusiveOpenFailure::NotAFile;
    case ReadFailure::AccessDenied:
        return error == ERROR_ACCESS_DENIED ? ExclusiveOpenFailure::Denied : ExclusiveOpenFailure::Locked;
    case ReadFailure::None:
    case ReadFailure::Other:
        break;
    }
    return ExclusiveOpenFailure::Other;
}

HANDLE handleOf(std::intptr_t handle)
{
    return reinterpret_cast<HANDLE>(handle);
}

OVERLAPPED at(std::uint64_t offset)
{
    OVERLAPPED position {};
    position.Offset = static_cast<DWORD>(offset);
    position.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return position;
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
    // FAT keeps no change time and reports 0; the cache then compares bytes instead.
    FILE_BASIC_INFO basic;
    if (GetFileInformationByHandleEx(file.get(), FileBasicInfo, &basic, sizeof basic) && basic.ChangeTime.QuadPart > 0)
        identity.changedNs = ticksToNs(basic.ChangeTime.QuadPart);
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

WholeFile readWholeFile(const std::filesystem::path &path)
{
    WholeFile result;
    Handle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.isValid()) {
        result.failure = readFailureOf(path, GetLastError());
        return result;
    }
    if (GetFileType(file.get()) != FILE_TYPE_DISK) {
        result.failure = ReadFailure::Other;
        return result;
    }
    std::string content;
    LARGE_INTEGER size;
    if (GetFileSizeEx(file.get(), &size) && size.QuadPart > 0)
        content.reserve(static_cast<std::size_t>(size.QuadPart));
    char buffer[65536];
    for (;;) {
        DWORD got = 0;
        if (!ReadFile(file.get(), buffer, sizeof buffer, &got, nullptr)) {
            result.failure = GetLastError() == ERROR_LOCK_VIOLATION ? ReadFailure::AccessDenied : ReadFailure::Other;
            return result;
        }
        if (got == 0)
            break;
        content.append(buffer, got);
    }
    result.bytes = std::move(content);
    return result;
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

bool writeFileInPlace(const std::filesystem::path &path, std::string_view bytes)
{
    // NTFS has no such guard: the plain way serves.
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out)
        return false;
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    return static_cast<bool>(out);
}

namespace {

// A new file of our own beside target, named so that no one else's can be taken; tempPath names it.
HANDLE createTempBeside(const std::filesystem::path &target, std::filesystem::path &tempPath)
{
    static std::atomic<unsigned> counter {0};
    const std::filesystem::path folder = target.parent_path();
    for (int attempt = 0; attempt < 100; ++attempt) {
        tempPath = folder
            / (L"." + target.filename().wstring() + L".fw" + std::to_wstring(GetCurrentProcessId()) + L"-"
               + std::to_wstring(counter++) + L".tmp");
        const HANDLE created =
            CreateFileW(tempPath.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (created != INVALID_HANDLE_VALUE || GetLastError() != ERROR_FILE_EXISTS)
            return created;
    }
    return INVALID_HANDLE_VALUE;
}

} // namespace

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

    std::filesystem::path tempPath;
    Handle temp(createTempBeside(target, tempPath));
    if (!temp.isValid())
        return false;

    bool ok = false;
    if (const std::optional<std::size_t> failAfter = ReplaceFailureForTests::limit())
        writeAll(temp.get(), bytes.substr(0, (std::min)(*failAfter, bytes.size()))); // and fail, as a test asked
    else
        ok = writeAll(temp.get(), bytes) && FlushFileBuffers(temp.get());
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

bool writeFileDurably(const std::filesystem::path &path, std::string_view bytes)
{
    if (!path.has_filename())
        return false;
    std::filesystem::path tempPath;
    Handle temp(createTempBeside(path, tempPath));
    if (!temp.isValid())
        return false;
    bool ok = writeAll(temp.get(), bytes) && FlushFileBuffers(temp.get());
    ok = temp.close() && ok;
    if (ok)
        ok = MoveFileExW(tempPath.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
    if (!ok) {
        DeleteFileW(tempPath.c_str());
        return false;
    }
    return true;
}

bool appendDurably(const std::filesystem::path &path, std::string_view bytes)
{
    // GENERIC_WRITE, not FILE_APPEND_DATA alone: FlushFileBuffers asks for the full write right.
    Handle file(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.isValid())
        return false;
    LARGE_INTEGER zero {};
    bool ok = SetFilePointerEx(file.get(), zero, nullptr, FILE_END) && writeAll(file.get(), bytes)
        && FlushFileBuffers(file.get());
    return file.close() && ok;
}

bool setReadOnly(const std::filesystem::path &path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return false;
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0)
        return true;
    return SetFileAttributesW(path.c_str(), (attributes & ~FILE_ATTRIBUTE_NORMAL) | FILE_ATTRIBUTE_READONLY) != 0;
}

std::u16string comparablePath(const std::filesystem::path &path)
{
    std::u16string text = path.lexically_normal().generic_u16string();
    while (text.size() > 1 && text.back() == u'/')
        text.pop_back();
    return foldName(text);
}

ExclusiveFile::~ExclusiveFile()
{
    close();
}

ExclusiveFile ExclusiveFile::open(const std::filesystem::path &path, ExclusiveAccess access)
{
    ExclusiveFile file;
    const bool writable = access == ExclusiveAccess::ReadWrite;
    // Share mode 0: nobody else may open the file while we hold it, and we do not get it while anyone does.
    const HANDLE handle = CreateFileW(path.c_str(), GENERIC_READ | (writable ? GENERIC_WRITE : 0), 0, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        file.m_failure = openFailureOf(path, GetLastError());
        return file;
    }
    const auto refuse = [&file, handle](ExclusiveOpenFailure failure) {
        CloseHandle(handle);
        file.m_failure = failure;
        return std::move(file);
    };
    if (GetFileType(handle) != FILE_TYPE_DISK)
        return refuse(ExclusiveOpenFailure::NotAFile);
    // Windows refuses the open of a read-only file for writing; Wine lets root through, as POSIX does.
    BY_HANDLE_FILE_INFORMATION info;
    if (writable
        && (!GetFileInformationByHandle(handle, &info) || (info.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0))
        return refuse(ExclusiveOpenFailure::Denied);
    file.m_handle = reinterpret_cast<std::intptr_t>(handle);
    file.m_writable = writable;
    return file;
}

std::optional<std::uint64_t> ExclusiveFile::size() const
{
    LARGE_INTEGER size;
    if (!isOpen() || !GetFileSizeEx(handleOf(m_handle), &size))
        return std::nullopt;
    return static_cast<std::uint64_t>(size.QuadPart);
}

std::optional<std::string> ExclusiveFile::readAt(std::uint64_t offset, std::size_t count) const
{
    if (!isOpen())
        return std::nullopt;
    std::string bytes(count, '\0');
    std::size_t got = 0;
    while (got < count) {
        const DWORD want = count - got > 0x40000000 ? 0x40000000 : static_cast<DWORD>(count - got);
        // A positional read on a synchronous handle: the offset goes with the call.
        OVERLAPPED position = at(offset + got);
        DWORD chunk = 0;
        if (!ReadFile(handleOf(m_handle), bytes.data() + got, want, &chunk, &position)) {
            if (GetLastError() == ERROR_HANDLE_EOF)
                break;
            return std::nullopt;
        }
        if (chunk == 0)
            break;
        got += chunk;
    }
    bytes.resize(got);
    return bytes;
}

std::optional<std::string> ExclusiveFile::readAll() const
{
    const std::optional<std::uint64_t> expected = size();
    if (!expected)
        return std::nullopt;
    std::string content;
    for (;;) {
        // The size is a hint only: read on until the end, in case the file grew.
        const std::size_t want =
            content.size() < *expected ? static_cast<std::size_t>(*expected - content.size()) : std::size_t {65536};
        const std::optional<std::string> chunk = readAt(content.size(), want);
        if (!chunk)
            return std::nullopt;
        if (chunk->empty())
            return content;
        content += *chunk;
    }
}

bool ExclusiveFile::writeAt(std::uint64_t offset, std::string_view bytes)
{
    if (!isOpen() || !m_writable)
        return false;
    std::size_t done = 0;
    while (done < bytes.size()) {
        const DWORD chunk = bytes.size() - done > 0x40000000 ? 0x40000000 : static_cast<DWORD>(bytes.size() - done);
        OVERLAPPED position = at(offset + done);
        DWORD written = 0;
        if (!WriteFile(handleOf(m_handle), bytes.data() + done, chunk, &written, &position) || written == 0)
            return false;
        done += written;
    }
    return true;
}

bool ExclusiveFile::close()
{
    if (!isOpen())
        return true;
    const bool ok = CloseHandle(handleOf(std::exchange(m_handle, INVALID))) != 0;
    m_writable = false;
    return ok;
}

} // namespace fleetwright::platform
