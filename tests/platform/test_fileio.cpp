#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>

#include "common/tempdir.h"
#include "platform/fileio.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace fleetwright::platform;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;
using enum ExclusiveAccess;
using enum ExclusiveOpenFailure;

namespace {

void makeReadOnly(const fs::path &path)
{
    fs::permissions(path, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
}

// Another program's hold on a file, an flock or a handle sharing all or nothing; empty when refused.
std::shared_ptr<void> foreignHold(const fs::path &path, bool shared)
{
#ifdef _WIN32
    const DWORD share = shared ? FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE : 0;
    HANDLE handle = CreateFileW(path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr);
    return handle == INVALID_HANDLE_VALUE ? nullptr : std::shared_ptr<void>(handle, CloseHandle);
#else
    std::shared_ptr<int> fd(new int(::open(path.c_str(), O_RDONLY | O_CLOEXEC)), [](int *fd) {
        ::close(*fd);
        delete fd;
    });
    return ::flock(*fd, (shared ? LOCK_SH : LOCK_EX) | LOCK_NB) == 0 ? fd : nullptr;
#endif
}

} // namespace

TEST(FileIo, ReadIdentityAndWriteInPlace)
{
    TempDir dir;
    const std::string bytes("a\r\nb\0c\x80\xff", 8);
    std::string big(300000, 'x');
    big[123456] = 'y';
    writeBytes(dir / "data.bin", bytes);
    writeBytes(dir / "big.bin", big);
    fs::create_directory(dir / "folder");
    EXPECT_EQ(readWholeFile(dir / "data.bin").bytes, bytes);
    EXPECT_EQ(readWholeFile(dir / "big.bin").bytes, big);
    EXPECT_EQ(ExclusiveFile::open(dir / "big.bin", Read).readAll(), big);
    for (const fs::path &nothing : {dir / "missing.cfg", dir / "folder"}) {
        EXPECT_EQ(readWholeFile(nothing).bytes, std::nullopt);
        EXPECT_FALSE(fileIdentity(nothing).exists);
    }
    // The reason of a failed read, as the run-time errors tell them apart.
    const std::pair<fs::path, ReadFailure> failures[] = {
        {dir / "missing.cfg", ReadFailure::FileNotFound},
        {dir / "missing" / "aircraft.cfg", ReadFailure::PathNotFound},
        {dir / "big.bin" / "aircraft.cfg", ReadFailure::PathNotFound},
        {dir / "folder", ReadFailure::IsFolder},
    };
    for (const auto &[path, reason] : failures) {
        SCOPED_TRACE(path.string());
        EXPECT_EQ(readWholeFile(path).failure, reason);
    }
    EXPECT_EQ(readWholeFile(dir / "big.bin").failure, ReadFailure::None);
    const FileIdentity before = fileIdentity(dir / "data.bin");
    EXPECT_TRUE(before.exists && before.size == 8u);
    EXPECT_EQ(fileIdentity(dir / "data.bin"), before);
    EXPECT_LT(std::abs(currentTimeNs() - before.modifiedNs), 3600LL * 1000000000);
    // Same size: the rewrite still shows, as the replace makes a new file.
    ASSERT_TRUE(replaceFileAtomically(dir / "data.bin", "87654321"));
    EXPECT_NE(fileIdentity(dir / "data.bin"), before);

    const fs::path file = dir / "corvanecheck.log";
    EXPECT_TRUE(writeFileInPlace(file, "a longer first report\r\n"));
    const FileIdentity first = fileIdentity(file);
    EXPECT_TRUE(writeFileInPlace(file, "short\r\n"));
    EXPECT_EQ(readBytes(file), "short\r\n");
    EXPECT_EQ(fileIdentity(file).fileId, first.fileId) << "written over, not replaced";
    EXPECT_TRUE(writeFileInPlace(file, ""));
    EXPECT_EQ(readWholeFile(file).bytes, std::string());
    EXPECT_FALSE(writeFileInPlace(dir.path(), "x"));
    EXPECT_FALSE(writeFileInPlace(dir / "missing" / "report.log", "x"));

    EXPECT_FALSE(isReadOnly(file) || isReadOnly(dir / "missing.cfg"));
    makeReadOnly(file);
    EXPECT_TRUE(isReadOnly(file));
    EXPECT_TRUE(clearReadOnly(file));
    EXPECT_FALSE(isReadOnly(file));
    EXPECT_FALSE(clearReadOnly(dir / "missing.cfg"));
}

TEST(FileIo, ReplaceFileAtomically)
{
    TempDir dir;
    for (const char *bytes : {"[fltsim.0]\r\n", "new and longer content", ""}) {
        ASSERT_TRUE(replaceFileAtomically(dir / "a.cfg", bytes));
        EXPECT_EQ(readBytes(dir / "a.cfg"), bytes);
    }
    writeBytes(dir / "ro.cfg", "keep me");
    makeReadOnly(dir / "ro.cfg");
    EXPECT_FALSE(replaceFileAtomically(dir / "ro.cfg", "lost"));
    EXPECT_EQ(readBytes(dir / "ro.cfg"), "keep me");
    EXPECT_TRUE(isReadOnly(dir / "ro.cfg"));
    fs::create_directory(dir / "folder");
    EXPECT_FALSE(replaceFileAtomically(dir / "folder", "x"));
    EXPECT_FALSE(replaceFileAtomically(dir / "nowhere" / "a.cfg", "x"));
    EXPECT_FALSE(fs::exists(dir / "nowhere"));
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator()), 3)
        << "no temporary file is left";
}

TEST(ExclusiveFile, ReadsAndWritesInPlace)
{
    TempDir dir;
    writeBytes(dir / "a.mdl", std::string("RIFF\0\x01\x02\x03MDL9", 12));
    ExclusiveFile file = ExclusiveFile::open(dir / "a.mdl", ReadWrite);
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(file.failure(), None);
    EXPECT_EQ(file.size(), 12u);
    // Fewer bytes where the file ends, none at or behind its end.
    for (const auto &[offset, count, read] : {std::tuple {8, 4, "MDL9"}, {10, 100, "L9"}, {12, 4, ""}, {40, 4, ""}})
        EXPECT_EQ(file.readAt(offset, count), read) << offset;
    EXPECT_TRUE(file.writeAt(4, "ab"));
    EXPECT_TRUE(file.writeAt(14, "Z"));
    const std::string written("RIFFab\x02\x03MDL9\0\0Z", 15);
    EXPECT_EQ(file.readAll(), written);
    EXPECT_TRUE(file.close());
    EXPECT_EQ(file.readAll(), std::nullopt);
    EXPECT_FALSE(file.writeAt(0, "x"));
    EXPECT_EQ(readBytes(dir / "a.mdl"), written) << "a short write neither truncates nor moves what follows";
    EXPECT_FALSE(ExclusiveFile::open(dir / "a.mdl", Read).writeAt(0, "lost"));
    writeBytes(dir / "empty.air", "");
    EXPECT_EQ(ExclusiveFile::open(dir / "empty.air", Read).readAll(), std::string());

    fs::create_directory(dir / "folder");
    writeBytes(dir / "ro.air", "keep");
    makeReadOnly(dir / "ro.air");
    // A read-only file refuses writing also for root.
    for (const auto &[path, access, failure] : {std::tuple {dir / "missing.air", Read, NotFound},
                                                {dir / "nowhere" / "a.air", ReadWrite, NotFound},
                                                {dir / "folder", Read, NotAFile},
                                                {dir / "folder", ReadWrite, NotAFile},
                                                {dir / "ro.air", ReadWrite, Denied}}) {
        const ExclusiveFile refused = ExclusiveFile::open(path, access);
        EXPECT_FALSE(refused.isOpen());
        EXPECT_EQ(refused.failure(), failure) << path.string();
    }
    EXPECT_FALSE(fs::exists(dir / "missing.air"));
    EXPECT_EQ(ExclusiveFile::open(dir / "ro.air", Read).readAll(), "keep");
}

TEST(ExclusiveFile, OneHolderAtATime)
{
    TempDir dir;
    const fs::path path = dir / "a.air";
    writeBytes(path, "abcd");
    for (const auto &[first, second] : {std::pair {Read, ReadWrite}, {ReadWrite, Read}, {Read, Read}}) {
        ExclusiveFile holder = ExclusiveFile::open(path, first);
        ASSERT_TRUE(holder.isOpen());
        EXPECT_EQ(ExclusiveFile::open(path, second).failure(), Locked);
        EXPECT_EQ(ExclusiveFile::open(path, second).readAll(), std::nullopt);
        // The hold moves with the object and ends with its close.
        ExclusiveFile moved = std::move(holder);
        EXPECT_FALSE(holder.isOpen());
        EXPECT_EQ(ExclusiveFile::open(path, second).failure(), Locked);
        moved.close();
        EXPECT_TRUE(ExclusiveFile::open(path, second).isOpen());
    }
    // Another program's hold keeps us out, shared or not; while we hold the file, it gets no hold.
    for (const bool shared : {false, true}) {
        const std::shared_ptr<void> other = foreignHold(path, shared);
        ASSERT_TRUE(other);
        EXPECT_EQ(ExclusiveFile::open(path, Read).failure(), Locked) << shared;
        EXPECT_EQ(ExclusiveFile::open(path, ReadWrite).failure(), Locked) << shared;
    }
    const ExclusiveFile held = ExclusiveFile::open(path, Read);
    ASSERT_TRUE(held.isOpen());
    // The refused program closes its descriptor of the file; our hold stays all the same.
    EXPECT_FALSE(foreignHold(path, true));
    EXPECT_EQ(ExclusiveFile::open(path, Read).failure(), Locked);
}

#ifndef _WIN32
// What a replace keeps where POSIX has more to keep than Windows: modes, owners, links; and pipes.
TEST(FileIo, ReplaceKeepsModeOwnerAndLinksAndWritesToPipes)
{
    TempDir dir;
    const auto stated = [](const fs::path &path) {
        struct stat info
        {};
        EXPECT_EQ(::stat(path.c_str(), &info), 0);
        return std::tuple(info.st_mode & 07777, info.st_uid, info.st_gid);
    };
    // 0442: a write bit for others only still counts as writable.
    writeBytes(dir / "mode.cfg", "old");
    ASSERT_EQ(::chmod((dir / "mode.cfg").c_str(), 0442), 0);
    EXPECT_FALSE(isReadOnly(dir / "mode.cfg"));
    ASSERT_TRUE(replaceFileAtomically(dir / "mode.cfg", "new"));
    EXPECT_EQ(std::get<0>(stated(dir / "mode.cfg")), 0442u);
    const mode_t previous = ::umask(027);
    const bool written = replaceFileAtomically(dir / "fresh.cfg", "x");
    ::umask(previous);
    ASSERT_TRUE(written);
    EXPECT_EQ(std::get<0>(stated(dir / "fresh.cfg")), 0640u) << "a new file: 0666 less the umask";
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown((dir / "fresh.cfg").c_str(), 1234, 2345), 0);
        ASSERT_TRUE(replaceFileAtomically(dir / "fresh.cfg", "new"));
        EXPECT_EQ(stated(dir / "fresh.cfg"), std::tuple(0640u, 1234u, 2345u));
    }

    // A relative link in another folder, through a second link: the links stay, the target changes.
    writeBytes(dir / "store" / "real.cfg", "old");
    fs::create_directory(dir / "aircraft");
    fs::create_symlink("../store/real.cfg", dir / "aircraft" / "hop.cfg");
    fs::create_symlink("hop.cfg", dir / "aircraft" / "aircraft.cfg");
    ASSERT_TRUE(replaceFileAtomically(dir / "aircraft" / "aircraft.cfg", "new"));
    EXPECT_EQ(fs::read_symlink(dir / "aircraft" / "aircraft.cfg"), "hop.cfg");
    EXPECT_TRUE(fs::is_symlink(dir / "aircraft" / "hop.cfg"));
    EXPECT_EQ(readBytes(dir / "store" / "real.cfg"), "new");
    fs::create_symlink("later.cfg", dir / "dangling.cfg");
    ASSERT_TRUE(replaceFileAtomically(dir / "dangling.cfg", "made"));
    EXPECT_TRUE(fs::is_symlink(dir / "dangling.cfg"));
    EXPECT_EQ(readBytes(dir / "later.cfg"), "made");
    // A link to a read-only file, a loop of links and a link to a folder are refused and stay.
    fs::create_symlink(dir / "mode.cfg", dir / "ro-link.cfg");
    makeReadOnly(dir / "mode.cfg");
    fs::create_symlink("loop-b", dir / "loop-a");
    fs::create_symlink("loop-a", dir / "loop-b");
    fs::create_directory_symlink("aircraft", dir / "folder-link");
    for (const char *link : {"ro-link.cfg", "loop-a", "folder-link"}) {
        EXPECT_FALSE(replaceFileAtomically(dir / link, "lost")) << link;
        EXPECT_TRUE(fs::is_symlink(dir / link)) << link;
    }
    EXPECT_EQ(readBytes(dir / "mode.cfg"), "new");

    // A report sent to a pipe or a device is written all the same; only files are cut to length. An exclusive
    // open of a pipe refuses at once rather than wait for a writer.
    EXPECT_TRUE(writeFileInPlace("/dev/null", "report\r\n"));
    ASSERT_EQ(::mkfifo((dir / "report.fifo").c_str(), 0600), 0);
    for (const ExclusiveAccess access : {Read, ReadWrite})
        EXPECT_EQ(ExclusiveFile::open(dir / "report.fifo", access).failure(), NotAFile);
}
#endif
