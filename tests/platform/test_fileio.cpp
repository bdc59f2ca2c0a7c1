#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "platform/fileio.h"
#include "support/tempdir.h"

using namespace fleetwright::platform;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;

namespace {

void makeReadOnly(const fs::path &path)
{
    fs::permissions(path, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
}

// Whatever else a failed replace did, it must not leave its temporary file behind.
std::size_t entryCount(const fs::path &folder)
{
    std::size_t count = 0;
    for ([[maybe_unused]] const auto &entry : fs::directory_iterator(folder))
        ++count;
    return count;
}

} // namespace

TEST(FileIo, ReadWholeFile)
{
    TempDir dir;
    const std::string bytes("a\r\nb\0c\x80\xff", 8);
    writeBytes(dir / "data.bin", bytes);
    writeBytes(dir / "empty.cfg", "");
    fs::create_directory(dir / "folder");

    EXPECT_EQ(readWholeFile(dir / "data.bin"), bytes);
    EXPECT_EQ(readWholeFile(dir / "empty.cfg"), std::string());
    EXPECT_EQ(readWholeFile(dir / "missing.cfg"), std::nullopt);
    EXPECT_EQ(readWholeFile(dir / "folder"), std::nullopt);

    std::string big(300000, 'x');
    big[123456] = 'y';
    writeBytes(dir / "big.bin", big);
    EXPECT_EQ(readWholeFile(dir / "big.bin"), big);
}

TEST(FileIo, FileIdentity)
{
    TempDir dir;
    fs::create_directory(dir / "folder");
    EXPECT_FALSE(fileIdentity(dir / "missing").exists);
    EXPECT_FALSE(fileIdentity(dir / "folder").exists);

    writeBytes(dir / "aircraft.cfg", "12345");
    const FileIdentity before = fileIdentity(dir / "aircraft.cfg");
    EXPECT_TRUE(before.exists);
    EXPECT_EQ(before.size, 5u);
    EXPECT_EQ(fileIdentity(dir / "aircraft.cfg"), before);
    // The clock the identities use and the wall clock agree to within a generous margin.
    EXPECT_LT(std::abs(currentTimeNs() - before.modifiedNs), 3600LL * 1000000000);

    // Same size, same content length: a rewrite still shows, as the replace makes a new file.
    ASSERT_TRUE(replaceFileAtomically(dir / "aircraft.cfg", "54321"));
    const FileIdentity after = fileIdentity(dir / "aircraft.cfg");
    EXPECT_TRUE(after.exists);
    EXPECT_EQ(after.size, 5u);
    EXPECT_NE(after, before);
}

TEST(FileIo, ReadOnly)
{
    TempDir dir;
    writeBytes(dir / "a.cfg", "x");
    EXPECT_FALSE(isReadOnly(dir / "a.cfg"));
    EXPECT_FALSE(isReadOnly(dir / "missing.cfg"));
    makeReadOnly(dir / "a.cfg");
    EXPECT_TRUE(isReadOnly(dir / "a.cfg"));
    EXPECT_TRUE(clearReadOnly(dir / "a.cfg"));
    EXPECT_FALSE(isReadOnly(dir / "a.cfg"));
    EXPECT_FALSE(clearReadOnly(dir / "missing.cfg"));
}

TEST(FileIo, ReplaceFileAtomically)
{
    TempDir dir;
    {
        SCOPED_TRACE("new file");
        ASSERT_TRUE(replaceFileAtomically(dir / "new.cfg", "[fltsim.0]\r\n"));
        EXPECT_EQ(readBytes(dir / "new.cfg"), "[fltsim.0]\r\n");
        EXPECT_EQ(entryCount(dir.path()), 1u);
    }
    {
        SCOPED_TRACE("existing file, longer then shorter, then empty");
        writeBytes(dir / "a.cfg", "old content");
        ASSERT_TRUE(replaceFileAtomically(dir / "a.cfg", "new and longer content"));
        EXPECT_EQ(readBytes(dir / "a.cfg"), "new and longer content");
        ASSERT_TRUE(replaceFileAtomically(dir / "a.cfg", "x"));
        EXPECT_EQ(readBytes(dir / "a.cfg"), "x");
        ASSERT_TRUE(replaceFileAtomically(dir / "a.cfg", ""));
        EXPECT_EQ(readBytes(dir / "a.cfg"), "");
    }
    {
        SCOPED_TRACE("read-only file refuses and keeps its bytes");
        writeBytes(dir / "ro.cfg", "keep me");
        makeReadOnly(dir / "ro.cfg");
        const std::size_t entries = entryCount(dir.path());
        EXPECT_FALSE(replaceFileAtomically(dir / "ro.cfg", "lost"));
        EXPECT_EQ(readBytes(dir / "ro.cfg"), "keep me");
        EXPECT_TRUE(isReadOnly(dir / "ro.cfg"));
        EXPECT_EQ(entryCount(dir.path()), entries);
    }
    {
        SCOPED_TRACE("folder and missing folder");
        fs::create_directory(dir / "folder");
        EXPECT_FALSE(replaceFileAtomically(dir / "folder", "x"));
        EXPECT_TRUE(fs::is_directory(dir / "folder"));
        EXPECT_FALSE(replaceFileAtomically(dir / "nowhere" / "a.cfg", "x"));
        EXPECT_FALSE(fs::exists(dir / "nowhere"));
    }
}
