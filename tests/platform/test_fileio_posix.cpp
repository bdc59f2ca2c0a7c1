// What a replace keeps of the old file where POSIX has more to keep than Windows: modes, owners, links.
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/fileio.h"
#include "support/tempdir.h"

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
