#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "platform/fileio.h"
#include "common/tempdir.h"

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

TEST(FileIo, WriteFileInPlace)
{
    TempDir dir;
    const fs::path file = dir / "corvanecheck.log";
    EXPECT_TRUE(writeFileInPlace(file, "a longer first report\r\n"));
    EXPECT_EQ(readBytes(file), "a longer first report\r\n");
    const FileIdentity first = fileIdentity(file);
    EXPECT_TRUE(writeFileInPlace(file, "short\r\n"));
    EXPECT_EQ(readBytes(file), "short\r\n") << "nothing of the longer content is left behind";
    EXPECT_EQ(fileIdentity(file).fileId, first.fileId) << "written over, not replaced";
    EXPECT_TRUE(writeFileInPlace(file, ""));
    EXPECT_EQ(readBytes(file), "");
    EXPECT_FALSE(writeFileInPlace(dir.path(), "x"));
    EXPECT_FALSE(writeFileInPlace(dir / "missing" / "report.log", "x"));
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

TEST(ExclusiveFile, ReadsAndWritesInPlace)
{
    TempDir dir;
    const std::string bytes("RIFF\0\x01\x02\x03MDL9", 12);
    writeBytes(dir / "a.mdl", bytes);
    {
        ExclusiveFile file = ExclusiveFile::open(dir / "a.mdl", ExclusiveAccess::ReadWrite);
        ASSERT_TRUE(file.isOpen());
        EXPECT_EQ(file.failure(), ExclusiveOpenFailure::None);
        EXPECT_EQ(file.size(), 12u);
        EXPECT_EQ(file.readAll(), bytes);
        EXPECT_EQ(file.readAt(8, 4), "MDL9");
        EXPECT_EQ(file.readAt(10, 100), "L9");
        EXPECT_EQ(file.readAt(12, 4), "");
        EXPECT_EQ(file.readAt(40, 4), "");

        EXPECT_TRUE(file.writeAt(4, "ab"));
        EXPECT_TRUE(file.writeAt(14, "Z"));
        EXPECT_EQ(file.readAll(), std::string("RIFFab\x02\x03MDL9\0\0Z", 15));
        EXPECT_TRUE(file.close());
        EXPECT_FALSE(file.isOpen());
        EXPECT_EQ(file.readAll(), std::nullopt);
        EXPECT_FALSE(file.writeAt(0, "x"));
    }
    // A short write neither truncates nor moves what lies behind it.
    EXPECT_EQ(readBytes(dir / "a.mdl"), std::string("RIFFab\x02\x03MDL9\0\0Z", 15));

    std::string big(300000, 'x');
    big[299999] = 'y';
    writeBytes(dir / "big.air", big);
    ExclusiveFile reader = ExclusiveFile::open(dir / "big.air", ExclusiveAccess::Read);
    EXPECT_EQ(reader.readAll(), big);
    EXPECT_FALSE(reader.writeAt(0, "lost"));
    reader.close();
    EXPECT_EQ(readBytes(dir / "big.air"), big);

    writeBytes(dir / "empty.air", "");
    EXPECT_EQ(ExclusiveFile::open(dir / "empty.air", ExclusiveAccess::Read).readAll(), std::string());
}

TEST(ExclusiveFile, OpenFailures)
{
    TempDir dir;
    fs::create_directory(dir / "folder");
    writeBytes(dir / "ro.air", "keep");
    makeReadOnly(dir / "ro.air");
    const struct
    {
        const char *name;
        fs::path path;
        ExclusiveAccess access;
        ExclusiveOpenFailure failure;
    } rows[] = {
        {"missing", dir / "missing.air", ExclusiveAccess::Read, ExclusiveOpenFailure::NotFound},
        {"missing folder", dir / "nowhere" / "a.air", ExclusiveAccess::ReadWrite, ExclusiveOpenFailure::NotFound},
        {"folder, read", dir / "folder", ExclusiveAccess::Read, ExclusiveOpenFailure::NotAFile},
        {"folder, write", dir / "folder", ExclusiveAccess::ReadWrite, ExclusiveOpenFailure::NotAFile},
        // Also when root runs the test: the missing write permission counts.
        {"read-only file, write", dir / "ro.air", ExclusiveAccess::ReadWrite, ExclusiveOpenFailure::Denied},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const ExclusiveFile file = ExclusiveFile::open(row.path, row.access);
        EXPECT_FALSE(file.isOpen());
        EXPECT_EQ(file.failure(), row.failure);
    }
    EXPECT_FALSE(fs::exists(dir / "missing.air"));
    EXPECT_EQ(ExclusiveFile::open(dir / "ro.air", ExclusiveAccess::Read).readAll(), "keep");
}

TEST(ExclusiveFile, OneHolderAtATime)
{
    TempDir dir;
    writeBytes(dir / "a.air", "abcd");
    for (const ExclusiveAccess first : {ExclusiveAccess::Read, ExclusiveAccess::ReadWrite}) {
        for (const ExclusiveAccess second : {ExclusiveAccess::Read, ExclusiveAccess::ReadWrite}) {
            SCOPED_TRACE(std::to_string(static_cast<int>(first)) + " then " + std::to_string(static_cast<int>(second)));
            ExclusiveFile holder = ExclusiveFile::open(dir / "a.air", first);
            ASSERT_TRUE(holder.isOpen());
            const ExclusiveFile refused = ExclusiveFile::open(dir / "a.air", second);
            EXPECT_FALSE(refused.isOpen());
            EXPECT_EQ(refused.failure(), ExclusiveOpenFailure::Locked);
            EXPECT_EQ(refused.readAll(), std::nullopt);

            // The hold moves with the object and ends with its close.
            ExclusiveFile moved = std::move(holder);
            EXPECT_FALSE(holder.isOpen());
            EXPECT_EQ(ExclusiveFile::open(dir / "a.air", second).failure(), ExclusiveOpenFailure::Locked);
            moved.close();
            EXPECT_TRUE(ExclusiveFile::open(dir / "a.air", second).isOpen());
        }
    }
    {
        const ExclusiveFile holder = ExclusiveFile::open(dir / "a.air", ExclusiveAccess::Read);
    }
    EXPECT_TRUE(ExclusiveFile::open(dir / "a.air", ExclusiveAccess::ReadWrite).isOpen());
    EXPECT_EQ(readBytes(dir / "a.air"), "abcd");
}
