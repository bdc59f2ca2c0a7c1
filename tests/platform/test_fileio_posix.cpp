// What a replace keeps of the old file where POSIX has more to keep than Windows: modes, owners, links; and how
// an exclusive open meets the advisory locks of other programs.
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/fileio.h"
#include "common/tempdir.h"

using namespace fleetwright::platform;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;

namespace {

mode_t modeOf(const fs::path &path)
{
    struct stat info
    {};
    EXPECT_EQ(::stat(path.c_str(), &info), 0);
    return info.st_mode & 07777;
}

} // namespace

TEST(FileIoPosix, ReplaceKeepsMode)
{
    TempDir dir;
    for (const mode_t mode : {0600, 0640, 0755, 0200}) {
        SCOPED_TRACE(mode);
        const fs::path file = dir / ("mode" + std::to_string(mode));
        writeBytes(file, "old");
        ASSERT_EQ(::chmod(file.c_str(), mode), 0);
        ASSERT_TRUE(replaceFileAtomically(file, "new"));
        EXPECT_EQ(readBytes(file), "new");
        EXPECT_EQ(modeOf(file), mode);
    }
    {
        SCOPED_TRACE("a new file gets 0666 less the umask");
        const mode_t previous = ::umask(027);
        const bool written = replaceFileAtomically(dir / "fresh.cfg", "x");
        ::umask(previous);
        ASSERT_TRUE(written);
        EXPECT_EQ(modeOf(dir / "fresh.cfg"), 0640u);
    }
    {
        SCOPED_TRACE("write bit for others only still counts as writable");
        writeBytes(dir / "odd.cfg", "old");
        ASSERT_EQ(::chmod((dir / "odd.cfg").c_str(), 0442), 0);
        EXPECT_FALSE(isReadOnly(dir / "odd.cfg"));
        EXPECT_TRUE(replaceFileAtomically(dir / "odd.cfg", "new"));
        EXPECT_EQ(modeOf(dir / "odd.cfg"), 0442u);
    }
}

TEST(FileIoPosix, ReplaceKeepsOwnerWhenRoot)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give a file to another owner";
    TempDir dir;
    writeBytes(dir / "owned.cfg", "old");
    ASSERT_EQ(::chown((dir / "owned.cfg").c_str(), 1234, 2345), 0);
    ASSERT_TRUE(replaceFileAtomically(dir / "owned.cfg", "new"));
    struct stat info
    {};
    ASSERT_EQ(::stat((dir / "owned.cfg").c_str(), &info), 0);
    EXPECT_EQ(info.st_uid, 1234u);
    EXPECT_EQ(info.st_gid, 2345u);
    EXPECT_EQ(readBytes(dir / "owned.cfg"), "new");
}

TEST(FileIoPosix, ReplaceThroughSymbolicLinks)
{
    TempDir dir;
    {
        SCOPED_TRACE("relative link in another folder, through a second link");
        writeBytes(dir / "store" / "real.cfg", "old");
        fs::create_directory(dir / "aircraft");
        fs::create_symlink("../store/real.cfg", dir / "aircraft" / "hop.cfg");
        fs::create_symlink("hop.cfg", dir / "aircraft" / "aircraft.cfg");
        ASSERT_TRUE(replaceFileAtomically(dir / "aircraft" / "aircraft.cfg", "new"));
        EXPECT_TRUE(fs::is_symlink(dir / "aircraft" / "aircraft.cfg"));
        EXPECT_TRUE(fs::is_symlink(dir / "aircraft" / "hop.cfg"));
        EXPECT_EQ(fs::read_symlink(dir / "aircraft" / "aircraft.cfg"), "hop.cfg");
        EXPECT_EQ(readBytes(dir / "store" / "real.cfg"), "new");
        EXPECT_EQ(fileIdentity(dir / "aircraft" / "aircraft.cfg"), fileIdentity(dir / "store" / "real.cfg"));
    }
    {
        SCOPED_TRACE("absolute link to a read-only file refuses");
        writeBytes(dir / "ro.cfg", "keep");
        ::chmod((dir / "ro.cfg").c_str(), 0444);
        fs::create_symlink(dir / "ro.cfg", dir / "ro-link.cfg");
        EXPECT_FALSE(replaceFileAtomically(dir / "ro-link.cfg", "lost"));
        EXPECT_EQ(readBytes(dir / "ro.cfg"), "keep");
        EXPECT_TRUE(fs::is_symlink(dir / "ro-link.cfg"));
    }
    {
        SCOPED_TRACE("a dangling link gets its target created");
        fs::create_symlink("later.cfg", dir / "dangling.cfg");
        ASSERT_TRUE(replaceFileAtomically(dir / "dangling.cfg", "made"));
        EXPECT_TRUE(fs::is_symlink(dir / "dangling.cfg"));
        EXPECT_EQ(readBytes(dir / "later.cfg"), "made");
    }
    {
        SCOPED_TRACE("a link loop fails and leaves the links");
        fs::create_symlink("loop-b", dir / "loop-a");
        fs::create_symlink("loop-a", dir / "loop-b");
        EXPECT_FALSE(replaceFileAtomically(dir / "loop-a", "x"));
        EXPECT_EQ(fs::read_symlink(dir / "loop-a"), "loop-b");
        EXPECT_EQ(fs::read_symlink(dir / "loop-b"), "loop-a");
    }
    {
        SCOPED_TRACE("a link to a folder is a folder");
        fs::create_directory(dir / "folder");
        fs::create_directory_symlink("folder", dir / "folder-link");
        EXPECT_FALSE(replaceFileAtomically(dir / "folder-link", "x"));
        EXPECT_TRUE(fs::is_directory(dir / "folder"));
    }
}

namespace {

// Another program's hold on a file: a descriptor of its own with an flock on it.
class ForeignLock
{
public:
    ForeignLock(const fs::path &path, int operation)
        : m_fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC))
    {
        EXPECT_GE(m_fd, 0);
        EXPECT_EQ(::flock(m_fd, operation | LOCK_NB), 0);
    }
    ~ForeignLock() { ::close(m_fd); }
    ForeignLock(const ForeignLock &) = delete;
    ForeignLock &operator=(const ForeignLock &) = delete;

private:
    int m_fd;
};

} // namespace

TEST(FileIoPosix, ExclusiveOpenMeetsForeignLocks)
{
    TempDir dir;
    writeBytes(dir / "a.air", "abcd");
    for (const int operation : {LOCK_EX, LOCK_SH}) {
        SCOPED_TRACE(operation == LOCK_EX ? "exclusive lock" : "shared lock");
        ForeignLock lock(dir / "a.air", operation);
        for (const ExclusiveAccess access : {ExclusiveAccess::Read, ExclusiveAccess::ReadWrite}) {
            const ExclusiveFile file = ExclusiveFile::open(dir / "a.air", access);
            EXPECT_FALSE(file.isOpen());
            EXPECT_EQ(file.failure(), ExclusiveOpenFailure::Locked);
        }
    }
    EXPECT_TRUE(ExclusiveFile::open(dir / "a.air", ExclusiveAccess::ReadWrite).isOpen());

    // And the other way round: while we hold the file, another program's lock attempt fails.
    const ExclusiveFile held = ExclusiveFile::open(dir / "a.air", ExclusiveAccess::Read);
    ASSERT_TRUE(held.isOpen());
    const int other = ::open((dir / "a.air").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(other, 0);
    EXPECT_EQ(::flock(other, LOCK_SH | LOCK_NB), -1);
    EXPECT_EQ(errno, EWOULDBLOCK);
    // Closing some other descriptor of the file, as a plain read does, leaves our hold in place.
    ::close(other);
    EXPECT_EQ(ExclusiveFile::open(dir / "a.air", ExclusiveAccess::Read).failure(), ExclusiveOpenFailure::Locked);
}

TEST(FileIoPosix, ExclusiveOpenRefusesPipesWithoutWaiting)
{
    TempDir dir;
    ASSERT_EQ(::mkfifo((dir / "pipe.air").c_str(), 0600), 0);
    for (const ExclusiveAccess access : {ExclusiveAccess::Read, ExclusiveAccess::ReadWrite})
        EXPECT_EQ(ExclusiveFile::open(dir / "pipe.air", access).failure(), ExclusiveOpenFailure::NotAFile);
}

TEST(FileIoPosix, WriteInPlaceToWhatHasNoLength)
{
    // A report sent to a pipe or a device is written all the same; only files are cut to length.
    EXPECT_TRUE(writeFileInPlace("/dev/null", "report\r\n"));
    TempDir dir;
    const std::filesystem::path fifo = dir / "report.fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const int reader = ::open(fifo.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_TRUE(writeFileInPlace(fifo, "report\r\n"));
    char got[16] = {};
    EXPECT_EQ(::read(reader, got, sizeof got), 8);
    EXPECT_EQ(std::string(got, 8), "report\r\n");
    ::close(reader);
}
