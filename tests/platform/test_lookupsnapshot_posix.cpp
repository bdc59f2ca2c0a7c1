// A lookup snapshot answers as the file system did when it first looked, until told otherwise.
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "platform/filelookup.h"
#include "common/tempdir.h"

using namespace fleetwright::platform;
using fleetwright::test::TempDir;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;

namespace {

std::vector<std::u16string> names(const fs::path &pattern, LookupKind kind = LookupKind::FilesAndFolders)
{
    return FileLookup(pattern, kind).names();
}

} // namespace

TEST(LookupSnapshot, AnswersAsWithoutOneWhileNothingChanges)
{
    TempDir dir;
    writeBytes(dir / "Aircraft" / "B737" / "Texture.KLM" / "a.bmp", "");
    writeBytes(dir / "Aircraft" / "B737" / "texture" / "b.dds", "");
    writeBytes(dir / "Aircraft" / "B737" / "texture.txt", "");
    writeBytes(dir / "Aircraft" / "b737" / "marker", "");
    const fs::path asked[] = {
        dir / "aircraft" / "b737" / "texture.klm" / "A.BMP",
        dir / "aircraft" / "b737" / "marker",
        dir / "aircraft" / "B737" / "texture.",
        dir / "aircraft" / "b737" / "texture" / "b.dds",
        dir / "aircraft" / "b737" / "nothing",
    };
    std::vector<std::optional<fs::path>> plain;
    for (const fs::path &path : asked)
        plain.push_back(FileLookup::resolve(path));
    const std::vector<std::u16string> textures = names(dir / "aircraft" / "B737" / "texture.*");
    ASSERT_EQ(textures, (std::vector<std::u16string> {u"texture", u"Texture.KLM", u"texture.txt"}));

    const LookupSnapshot snapshot;
    EXPECT_NE(LookupSnapshot::generation(), 0u);
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = 0; i < std::size(asked); ++i) {
            SCOPED_TRACE(asked[i].string());
            EXPECT_EQ(FileLookup::resolve(asked[i]), plain[i]);
        }
        EXPECT_EQ(names(dir / "aircraft" / "B737" / "texture.*"), textures);
        EXPECT_EQ(names(dir / "aircraft" / "B737" / "*", LookupKind::Folders),
                  (std::vector<std::u16string> {u"texture", u"Texture.KLM"}));
        EXPECT_TRUE(FileLookup::exists(dir / "aircraft" / "B737" / "texture.klm", LookupKind::Folders));
        EXPECT_TRUE(FileLookup::canList(dir / "Aircraft" / "B737"));
        EXPECT_FALSE(FileLookup::canList(dir / "Aircraft" / "B737" / "texture.txt"));
    }
}

TEST(LookupSnapshot, ChangesShowAfterForgetOrOnceClosed)
{
    TempDir dir;
    writeBytes(dir / "Plane" / "aircraft.cfg", "");
    const fs::path log = dir / "Plane" / "corvanecheck.log";
    {
        const LookupSnapshot snapshot;
        const std::uint64_t first = LookupSnapshot::generation();
        EXPECT_FALSE(FileLookup::findFile(log.u16string()));
        EXPECT_EQ(names(dir / "plane" / "*"), (std::vector<std::u16string> {u"aircraft.cfg"}));

        writeBytes(log, "");
        EXPECT_FALSE(FileLookup::findFile(log.u16string())) << "the snapshot still holds what it saw";
        EXPECT_EQ(names(dir / "plane" / "*").size(), 1u);
        {
            const LookupSnapshot nested; // shares what the outer one saw
            EXPECT_EQ(LookupSnapshot::generation(), first);
            EXPECT_FALSE(FileLookup::findFile(log.u16string()));
        }

        LookupSnapshot::forget(dir / "Plane" / "." / "corvanecheck.log");
        EXPECT_NE(LookupSnapshot::generation(), first);
        EXPECT_EQ(FileLookup::findFile(log.u16string()), log);
        EXPECT_EQ(names(dir / "plane" / "*"), (std::vector<std::u16string> {u"aircraft.cfg", u"corvanecheck.log"}));

        // Each forgotten name shows as it is now, the others stay as seen and in listing order.
        writeBytes(dir / "Plane" / "B.txt", "");
        writeBytes(dir / "Plane" / "b.TXT", "");
        LookupSnapshot::forget(dir / "Plane" / "b.TXT");
        LookupSnapshot::forget(dir / "Plane" / "B.txt");
        fs::remove(dir / "Plane" / "aircraft.cfg");
        LookupSnapshot::forget(dir / "Plane" / "aircraft.cfg");
        EXPECT_EQ(names(dir / "plane" / "*"), (std::vector<std::u16string> {u"B.txt", u"b.TXT", u"corvanecheck.log"}));
        EXPECT_EQ(FileLookup::resolve(dir / "plane" / "b.txt"), dir / "Plane" / "B.txt");
        EXPECT_FALSE(FileLookup::resolve(dir / "plane" / "Aircraft.cfg"));

        fs::remove(log);
        fs::create_directories(dir / "Plane" / "Texture");
        EXPECT_EQ(FileLookup::findFile(log.u16string()), log);
        LookupSnapshot::forgetAll();
        EXPECT_FALSE(FileLookup::findFile(log.u16string()));
        EXPECT_EQ(names(dir / "plane" / "*", LookupKind::Folders), (std::vector<std::u16string> {u"Texture"}));
        writeBytes(log, "");
    }
    EXPECT_EQ(LookupSnapshot::generation(), 0u);
    EXPECT_EQ(FileLookup::findFile(log.u16string()), log) << "without a snapshot every lookup looks";
    LookupSnapshot::forget(log); // nothing to forget: no snapshot
}

TEST(LookupSnapshot, TellsLinksFromWhatTheListingShows)
{
    TempDir dir;
    writeBytes(dir / "B737" / "texture" / "b.dds", "");
    fs::create_directory_symlink("texture", dir / "B737" / "texture.link");
    fs::create_directory_symlink("nowhere", dir / "B737" / "dangling");
    for (int withSnapshot = 0; withSnapshot < 2; ++withSnapshot) {
        SCOPED_TRACE(withSnapshot);
        std::optional<LookupSnapshot> snapshot;
        if (withSnapshot)
            snapshot.emplace();
        // Listed first, so that the snapshot's answers come from the listing.
        EXPECT_EQ(names(dir / "B737" / "*", LookupKind::Folders),
                  (std::vector<std::u16string> {u"texture", u"texture.link"}));
        EXPECT_TRUE(FileLookup::isNotLink(dir / "B737" / "texture"));
        EXPECT_FALSE(FileLookup::isNotLink(dir / "B737" / "texture.link"));
        EXPECT_FALSE(FileLookup::isNotLink(dir / "B737" / "dangling"));
        EXPECT_FALSE(FileLookup::isNotLink(dir / "B737" / "missing"));
        EXPECT_FALSE(FileLookup::exists(dir / "B737" / "dangling", LookupKind::FilesAndFolders));
        EXPECT_FALSE(FileLookup::exists(dir / "b737" / "missing", LookupKind::FilesAndFolders));
        EXPECT_TRUE(FileLookup::exists(dir / "b737" / "TEXTURE.LINK" / "B.DDS"));
    }
}

TEST(LookupSnapshot, ForgetBelowKeepsWhatLiesAroundTheFolder)
{
    TempDir dir;
    writeBytes(dir / "Aircraft" / "A" / "aircraft.cfg", "");
    writeBytes(dir / "Aircraft" / "B" / "aircraft.cfg", "");
    const LookupSnapshot snapshot;
    // Asked for under another spelling, as a run asks for its lower-cased folder.
    EXPECT_EQ(names(dir / "aircraft" / "a" / "*"), (std::vector<std::u16string> {u"aircraft.cfg"}));
    EXPECT_EQ(names(dir / "aircraft" / "*", LookupKind::Folders), (std::vector<std::u16string> {u"A", u"B"}));
    const std::uint64_t before = LookupSnapshot::generation();

    writeBytes(dir / "Aircraft" / "A" / "texture.cfg", "");
    writeBytes(dir / "Aircraft" / "AB" / "aircraft.cfg", "");
    LookupSnapshot::forgetBelow(dir / "Aircraft" / "A" / "");
    EXPECT_NE(LookupSnapshot::generation(), before);
    EXPECT_EQ(names(dir / "aircraft" / "a" / "*"), (std::vector<std::u16string> {u"aircraft.cfg", u"texture.cfg"}));
    EXPECT_EQ(names(dir / "aircraft" / "*", LookupKind::Folders), (std::vector<std::u16string> {u"A", u"B"}))
        << "the folder around it is still as first seen";
}

TEST(LookupSnapshot, TheEngineTextGetsThePathsAnswers)
{
    TempDir dir;
    writeBytes(dir / "Aircraft" / "Plane" / "Texture.KLM" / "a.bmp", "");
    writeBytes(dir / "Aircraft" / "Plane" / "texture.klm" / "b.dds", ""); // a twin that differs in case only
    writeBytes(dir / "Aircraft" / "Plane" / "Model" / "Model.cfg", "");
    writeBytes(dir / "Aircraft" / "Plane" / "Pläne.air", "");
    writeBytes(dir / "Aircraft" / "PLANE" / "texture.cfg", "");
    fs::create_directory_symlink("Model", dir / "Aircraft" / "Plane" / "model.link");
    const std::u16string root = dir.path().u16string() + u"/";
    const std::u16string asked[] = {
        u"aircraft/plane/texture.klm/b.dds",
        u"aircraft/plane/texture.klm/a.bmp",
        u"aircraft/plane/TEXTURE.klm",
        u"aircraft/plane/model./model.cfg",
        u"aircraft/plane/pläne.air",
        u"aircraft/plane/texture.cfg",
        u"aircraft/plane/model.link/MODEL.CFG",
        u"aircraft//plane/model",
        u"aircraft/./plane/../plane/Model",
        u"aircraft/plane/missing",
        u"aircraft/missing/model",
        u"aircraft/plane/model/",
    };
    const std::u16string patterns[] = {u"aircraft/plane/texture.klm/*",
                                       u"aircraft/plane/*",
                                       u"aircraft/plane/texture.*",
                                       u"aircraft/plane/*.air",
                                       u"aircraft/plane/model./*.cfg",
                                       u"aircraft/./plane/../PLANE/*",
                                       u"aircraft//plane/*",
                                       u"aircraft/nothing/*"};
    const LookupKind kinds[] = {LookupKind::Files, LookupKind::Folders, LookupKind::FilesAndFolders};
    const LookupSnapshot snapshot;
    for (int round = 0; round < 2; ++round) {
        for (const std::u16string &text : asked) {
            SCOPED_TRACE(fs::path(text).string());
            const fs::path path = fs::path(root + text);
            std::optional<fs::path> plain;
            {
                // A snapshot of its own would share what this one saw: the plain answer comes from another thread.
                std::thread([&] { plain = FileLookup::resolve(path); }).join();
            }
            EXPECT_EQ(FileLookup::resolve(root + text), plain);
            for (const LookupKind kind : kinds)
                EXPECT_EQ(FileLookup::exists(root + text, kind), FileLookup::exists(path, kind));
        }
        for (const std::u16string &pattern : patterns) {
            for (const LookupKind kind : kinds) {
                std::vector<std::u16string> plain;
                std::thread([&] { plain = names(fs::path(root + pattern), kind); }).join();
                EXPECT_EQ(FileLookup(root + pattern, kind).names(), plain) << fs::path(pattern).string();
            }
        }
    }
}

TEST(LookupSnapshot, ForgetMendsSmallAndLargeFolders)
{
    for (const int others : {2, 40}) {
        SCOPED_TRACE(others);
        TempDir dir;
        for (int i = 0; i < others; ++i)
            writeBytes(dir / "Plane" / ("file" + std::to_string(i) + ".dds"), "");
        writeBytes(dir / "Plane" / "Gone.cfg", "");
        const LookupSnapshot snapshot;
        const auto lookedAt = [&] {
            return std::tuple(names(dir / "plane" / "*"), FileLookup::resolve(dir / "plane" / "NEW.CFG"),
                              FileLookup::resolve(dir / "plane" / "gone.cfg"),
                              FileLookup::exists(dir / "plane" / "texture", LookupKind::Folders));
        };
        lookedAt();
        writeBytes(dir / "Plane" / "new.cfg", "");
        writeBytes(dir / "Plane" / "New.cfg", "");
        fs::create_directory(dir / "Plane" / "Texture");
        fs::remove(dir / "Plane" / "Gone.cfg");
        for (const char *name : {"new.cfg", "New.cfg", "Gone.cfg", "Texture"})
            LookupSnapshot::forget(dir / "Plane" / name);
        decltype(lookedAt()) plain;
        std::thread([&] { plain = lookedAt(); }).join();
        EXPECT_EQ(lookedAt(), plain);
        EXPECT_EQ(std::get<1>(plain), dir / "Plane" / "New.cfg");
    }
}
