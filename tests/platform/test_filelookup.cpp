#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "common/golden.h"
#include "common/tempdir.h"
#include "platform/fileio.h"
#include "platform/filelookup.h"
#include "platform/utf8.h"

using namespace fleetwright::platform;
using fleetwright::test::split;
using fleetwright::test::TempDir;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;
using Names = std::vector<std::u16string>;

namespace {

Names namesOf(std::string_view list)
{
    Names result;
    for (const std::string &name : split(list, ' '))
        if (!name.empty())
            result.push_back(fromUtf8(name));
    return result;
}

LookupKind kindOf(const std::string &letter)
{
    return letter == "F" ? LookupKind::Files : letter == "D" ? LookupKind::Folders : LookupKind::FilesAndFolders;
}

Names names(const fs::path &pattern, LookupKind kind = LookupKind::FilesAndFolders)
{
    return FileLookup(pattern, kind).names();
}

} // namespace

TEST(FileLookup, WildcardRules)
{
    // "pattern|names it matches|names it does not;". A point before "*" or at the pattern's end also matches the
    // name's end; "*" before a point stops at the name's last point; "?" is one character, or nothing before a
    // point or at the end. Letters of the code page fold, the signs among them do not.
    const std::string rows = "*.air|Boeing.AIR .air|boeing.air.bak air;*.mdl||x.mdlx;MODEL.CFG|model.cfg|model.cfgx;"
                             "texture.*|texture Texture.KLM texture.a.b|textures texture_old;a.b.*|A.B a.b.|a.bc;"
                             "*bmp|x.bmp|bm;abc||abcd;texture.|texture|texture.x;*.|readme|readme.txt a.b.c;"
                             "*.b|x.b.b|x.bb;*|anything.x|;*.*|noext .hidden a.b|;a*b*c|axxbyyc|axxbyy;a*|a|ba;?|a|ab;"
                             "a?c|abc|ac a.c;a??|a|abcd;file?.txt|file1.txt file.txt|file12.txt;é*|Éclair|;ÿ|Ÿ|;"
                             "škoda|ŠKODA|;×||÷;ß||SS;||a";
    for (const std::string &row : split(rows, ';')) {
        const std::vector<std::string> part = split(row);
        for (const std::u16string &name : namesOf(part[1]))
            EXPECT_TRUE(matchesWildcard(fromUtf8(part[0]), name)) << row << ": " << toUtf8(name);
        for (const std::u16string &name : namesOf(part[2]))
            EXPECT_FALSE(matchesWildcard(fromUtf8(part[0]), name)) << row << ": " << toUtf8(name);
    }
    EXPECT_FALSE(matchesWildcard(u"", u""));
}

TEST(FileLookup, CaseFoldingAndOrder)
{
    EXPECT_EQ(foldName(u"fltsim.éšœžÿàþ÷×ßµ[]_"), u"FLTSIM.ÉŠŒŽŸÀÞ÷×ßµ[]_");
    EXPECT_TRUE(sameNameIgnoringCase(u"Texture.KLM", u"texture.klm"));
    EXPECT_FALSE(sameNameIgnoringCase(u"texture", u"texture."));
    Names sorted = namesOf("_x b texture.KLM Z A Texture.a a.txt texture MODEL.cfg Model.cfg");
    std::sort(sorted.begin(), sorted.end(), [](const auto &a, const auto &b) { return listingOrderLess(a, b); });
    // Upper-cased and compared ordinally: "_" (0x5F) after "Z" (0x5A), a name before its longer forms; names
    // that differ only in case still in a fixed order.
    EXPECT_EQ(sorted, namesOf("A a.txt b MODEL.cfg Model.cfg texture Texture.a texture.KLM Z _x"));
    EXPECT_FALSE(listingOrderLess(u"Model.cfg", u"MODEL.cfg"));
    EXPECT_FALSE(listingOrderLess(u"same", u"same"));
}

TEST(FileLookup, LookupsResolveAndExist)
{
    TempDir dir;
    const fs::path aircraft = dir / "Aircraft";
    for (const char *file : {"aircraft.cfg", "Boeing.air", "extra.AIR", "old.air.bak", "texture.txt", "texture/a.bmp",
                             "Texture.KLM/b.bmp", "model/Boeing.MDL"})
        writeBytes(aircraft / file, "");
    fs::create_directory(aircraft / "textures");
    // "pattern|kind (Files, Folders, All)|names found;"; the folder part ignores case as well.
    for (const std::string &row :
         split("*.air|F|Boeing.air extra.AIR;texture.*|A|texture Texture.KLM texture.txt;texture.*|D|texture "
               "Texture.KLM;texture.*|F|texture.txt;model.*|A|model;*.mdl|F|;*|D|model texture Texture.KLM textures;"
               "AIRCRAFT.CFG|F|aircraft.cfg",
               ';')) {
        const std::vector<std::string> part = split(row);
        for (const fs::path &folder : {aircraft, dir / "aircraft"}) {
            Names found = names(folder / part[0], kindOf(part[1]));
            std::sort(found.begin(), found.end(), [](const auto &a, const auto &b) { return listingOrderLess(a, b); });
            EXPECT_EQ(found, namesOf(part[2])) << row;
        }
    }
    EXPECT_TRUE(names(dir / "missing" / "*.air").empty());
    EXPECT_TRUE(names(aircraft / "").empty());
    FileLookup lookup(dir / "AIRCRAFT" / "*.air");
    Names handedOut;
    while (const std::optional<std::u16string> name = lookup.next())
        handedOut.push_back(*name);
    EXPECT_EQ(handedOut, lookup.names());
    EXPECT_EQ(handedOut.size(), 2u);

    const std::optional<fs::path> resolved = FileLookup::resolve(dir / "AIRCRAFT" / "MODEL" / "boeing.mdl");
    ASSERT_TRUE(resolved);
    EXPECT_EQ(fileIdentity(*resolved), fileIdentity(aircraft / "model" / "Boeing.MDL"));
    EXPECT_FALSE(FileLookup::resolve(dir / "aircraft" / "nothing" / "a.bmp"));
    EXPECT_FALSE(FileLookup::resolve(fs::path()));
    // "path below the folder|kind|whether it exists;"; trailing points and blanks are dropped.
    for (const std::string &row :
         split("texture.klm/B.BMP|F|1;texture.|D|1;Model. |D|1;texture./A.bmp|F|1;aircraft.cfg."
               "|F|1;texture|F|0;texture|A|1;aircraft.cfg|D|0;model.cfg|F|0;aircraft.cfg/x|A|0",
               ';')) {
        const std::vector<std::string> part = split(row);
        EXPECT_EQ(FileLookup::exists(dir / "aircraft" / part[0], kindOf(part[1])), part[2] == "1") << row;
    }
}

#ifndef _WIN32
// Where the file system tells case apart: which of several spellings wins, and the listing order.
TEST(FileLookup, SpellingsThatDifferInCase)
{
    TempDir dir;
    for (const char *name : {"model.cfg", "Model.cfg", "MODEL.cfg"})
        writeBytes(dir / name, "");
    // "asked|found": no exact spelling, the first in listing order.
    for (const char *row :
         {"model.cfg|model.cfg", "MODEL.cfg|MODEL.cfg", "model.CFG|MODEL.cfg", "Model.cfg.|Model.cfg"})
        EXPECT_EQ(FileLookup::resolve(dir / split(row)[0]), dir / split(row)[1]) << row;

    const fs::path b737 = dir / "FS9" / "Aircraft" / "B737";
    writeBytes(b737 / "Model" / "Boeing.MDL", "");
    writeBytes(b737 / "TEXTURE", ""); // a file, no folder
    writeBytes(b737 / "texture" / "a.bmp", "");
    writeBytes(dir / "FS9" / "Aircraft" / "b737" / "marker", ""); // the exact spelling, but it holds no model
    EXPECT_EQ(FileLookup::resolve(dir / "fs9/aircraft/b737/model/boeing.mdl"), b737 / "Model" / "Boeing.MDL");
    EXPECT_EQ(FileLookup::resolve(dir / "fs9/AIRCRAFT/B737/Texture/A.BMP"), b737 / "texture" / "a.bmp");
    EXPECT_EQ(FileLookup::resolve(dir / "fs9/aircraft/"), dir / "FS9/Aircraft/");
    EXPECT_EQ(FileLookup::resolve(dir / "fs9/aircraft/./B737/../b737/MARKER"),
              dir / "FS9/Aircraft/./B737/../b737/marker");

    for (const char *name : {"b.air", "_x.air", "Z.air", "a.AIR", "A.air"})
        writeBytes(dir / "list" / name, "");
    fs::create_directory_symlink("nowhere", dir / "list" / "dangling.air");
    fs::create_directory(dir / "list" / "real");
    fs::create_directory_symlink("real", dir / "list" / "linked.air");
    // A name that is no UTF-8 cannot be named in the engine's text; it is left out, not mangled.
    writeBytes(dir / "list" / std::string("bad\xff.air"), "");
    EXPECT_EQ(names(dir / "list" / "*.air", LookupKind::Files), namesOf("A.air a.AIR b.air Z.air _x.air"));
    EXPECT_EQ(names(dir / "list" / "*.air", LookupKind::Folders), Names {u"linked.air"});
    // Wine's own lookup lets every name through "*.", so this rule is checked here only.
    EXPECT_EQ(names(dir / "list" / "*."), Names {u"real"});
}

// A lookup snapshot answers as the file system did when it first looked, until told otherwise.
TEST(LookupSnapshot, AnswersAsThePlainLookups)
{
    TempDir dir;
    const fs::path plane = dir / "Aircraft" / "Plane";
    for (const char *file : {"Texture.KLM/a.bmp", "texture.klm/b.dds", "Model/Model.cfg", "Model/old.cfg", "Pläne.air",
                             "Gone.cfg", "../PLANE/x.cfg"})
        writeBytes(plane / file, "");
    // A folder of many entries is mapped, one of few searched: forgetting mends both.
    for (int i = 0; i < 20; ++i)
        writeBytes(plane / ("file" + std::to_string(i) + ".dds"), "");
    fs::create_directory_symlink("Model", plane / "model.link");
    fs::create_directory_symlink("nowhere", plane / "dangling");
    const std::string root = dir.path().string() + "/aircraft/";
    const std::vector<std::string> asked = split(
        "plane/texture.klm/b.dds plane/TEXTURE.klm plane/model./model.cfg plane/pläne.air plane/x.cfg "
        "plane/model.link/MODEL.CFG /plane/model ./plane/../plane/Model plane/missing missing/model plane/model/ "
        "plane/dangling plane/texture.klm/* plane/* plane/texture.* plane/model./*.cfg ./plane/../PLANE/* nothing/* "
        "plane/NEW.CFG plane/gone.cfg plane/model/new.cfg plane/model/OLD.cfg plane/texture",
        ' ');
    const LookupKind kinds[] = {LookupKind::Files, LookupKind::Folders, LookupKind::FilesAndFolders};
    const auto answers = [&](const std::u16string &text) {
        std::vector<std::tuple<std::optional<fs::path>, bool, Names>> result;
        for (const LookupKind kind : kinds)
            result.emplace_back(FileLookup::resolve(text), FileLookup::exists(text, kind),
                                FileLookup(text, kind).names());
        return result;
    };
    const LookupSnapshot snapshot;
    EXPECT_NE(LookupSnapshot::generation(), 0u);
    for (int round = 0; round < 3; ++round) {
        if (round == 2) {
            fs::create_directory(plane / "Texture");
            for (const char *file : {"Gone.cfg", "Model/old.cfg"})
                fs::remove(plane / file);
            for (const char *file : {"new.cfg", "New.cfg", "Model/new.cfg"})
                writeBytes(plane / file, "");
            for (const char *file : {"new.cfg", "New.cfg", "Model/new.cfg", "Model/old.cfg", "Gone.cfg", "Texture"})
                LookupSnapshot::forget(plane / file);
        }
        // A snapshot of its own would share what this one saw: the plain answers come from another thread.
        for (const std::string &text : asked) {
            decltype(answers(u"")) plain;
            std::thread([&] { plain = answers(fromUtf8(root + text)); }).join();
            EXPECT_EQ(answers(fromUtf8(root + text)), plain) << text << " in round " << round;
        }
        EXPECT_EQ(std::vector({FileLookup::isNotLink(plane / "Model"), FileLookup::isNotLink(plane / "model.link"),
                               FileLookup::isNotLink(plane / "dangling"), FileLookup::isNotLink(plane / "missing"),
                               FileLookup::canList(plane), FileLookup::canList(plane / "Pläne.air")}),
                  std::vector({true, false, false, false, true, false}));
    }
    EXPECT_EQ(FileLookup::resolve(plane / "NEW.CFG"), plane / "New.cfg");
}

TEST(LookupSnapshot, ChangesShowAfterForgetOrOnceClosed)
{
    TempDir dir;
    writeBytes(dir / "Aircraft" / "Plane" / "aircraft.cfg", "");
    writeBytes(dir / "Aircraft" / "Other" / "aircraft.cfg", "");
    const fs::path log = dir / "Aircraft" / "Plane" / "corvanecheck.log";
    {
        const LookupSnapshot snapshot;
        const std::uint64_t first = LookupSnapshot::generation();
        EXPECT_FALSE(FileLookup::findFile(log.u16string()));
        EXPECT_EQ(names(dir / "aircraft" / "plane" / "*"), Names {u"aircraft.cfg"});
        EXPECT_EQ(names(dir / "aircraft" / "*", LookupKind::Folders), namesOf("Other Plane"));
        writeBytes(log, "");
        writeBytes(dir / "Aircraft" / "PlaneB" / "aircraft.cfg", "");
        {
            const LookupSnapshot nested; // shares what the outer one saw
            EXPECT_EQ(LookupSnapshot::generation(), first);
            EXPECT_FALSE(FileLookup::findFile(log.u16string()));
            EXPECT_EQ(names(dir / "aircraft" / "plane" / "*").size(), 1u);
        }
        // Everything inside the folder, as it was asked for under another spelling, is looked at again; what
        // lies around it is kept.
        LookupSnapshot::forgetBelow(dir / "Aircraft" / "Plane" / "");
        EXPECT_NE(LookupSnapshot::generation(), first);
        EXPECT_EQ(names(dir / "aircraft" / "plane" / "*"), namesOf("aircraft.cfg corvanecheck.log"));
        EXPECT_EQ(names(dir / "aircraft" / "*", LookupKind::Folders), namesOf("Other Plane"));

        fs::remove(log);
        EXPECT_EQ(FileLookup::findFile(log.u16string()), log);
        const std::uint64_t second = LookupSnapshot::generation();
        LookupSnapshot::forget(dir / "Aircraft" / "Plane" / "." / "corvanecheck.log");
        EXPECT_NE(LookupSnapshot::generation(), second);
        EXPECT_FALSE(FileLookup::findFile(log.u16string()));
        writeBytes(log, "");
        LookupSnapshot::forgetAll();
        EXPECT_EQ(FileLookup::findFile(log.u16string()), log);
        EXPECT_EQ(names(dir / "aircraft" / "*", LookupKind::Folders), namesOf("Other Plane PlaneB"));
        fs::remove(log);
    }
    EXPECT_EQ(LookupSnapshot::generation(), 0u);
    EXPECT_FALSE(FileLookup::findFile(log.u16string())) << "without a snapshot every lookup looks";
}

#endif
