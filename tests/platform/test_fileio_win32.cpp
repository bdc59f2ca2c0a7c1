// How an exclusive open meets the share modes of other programs' handles.
#include <filesystem>
#include <string>
#include <windows.h>

#include <gtest/gtest.h>

#include "platform/fileio.h"
#include "common/tempdir.h"

using namespace fleetwright::platform;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;

namespace {

constexpr DWORD SHARE_ALL = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Another program's handle on a file, opened for reading with the given share mode.
class ForeignHandle
{
public:
    ForeignHandle(const fs::path &path, DWORD share)
        : m_handle(
            CreateFileW(path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr))
        , m_error(GetLastError())
    {}
    ~ForeignHandle()
    {
        if (isValid())
            CloseHandle(m_handle);
    }
    ForeignHandle(const ForeignHandle &) = delete;
    ForeignHandle &operator=(const ForeignHandle &) = delete;

    bool isValid() const { return m_handle != INVALID_HANDLE_VALUE; }
    DWORD error() const { return m_error; }

private:
    HANDLE m_handle;
    DWORD m_error;
};

} // namespace

TEST(FileIoWin32, ExclusiveOpenMeetsForeignHandles)
{
    TempDir dir;
    writeBytes(dir / "a.air", "abcd");
    // Share mode 0 keeps us out, and so does a handle that shares everything: we share nothing.
    for (const DWORD share : {DWORD {0}, SHARE_ALL}) {
        SCOPED_TRACE(share);
        const ForeignHandle other(dir / "a.air", share);
        ASSERT_TRUE(other.isValid());
        for (const ExclusiveAccess access : {ExclusiveAccess::Read, ExclusiveAccess::ReadWrite}) {
            const ExclusiveFile file = ExclusiveFile::open(dir / "a.air", access);
            EXPECT_FALSE(file.isOpen());
            EXPECT_EQ(file.failure(), ExclusiveOpenFailure::Locked);
        }
    }

    // While we hold the file, no other program opens it, however much it would share.
    {
        const ExclusiveFile held = ExclusiveFile::open(dir / "a.air", ExclusiveAccess::Read);
        ASSERT_TRUE(held.isOpen());
        const ForeignHandle other(dir / "a.air", SHARE_ALL);
        EXPECT_FALSE(other.isValid());
        EXPECT_EQ(other.error(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
    }
    EXPECT_TRUE(ForeignHandle(dir / "a.air", 0).isValid());
    EXPECT_EQ(readBytes(dir / "a.air"), "abcd");
}
