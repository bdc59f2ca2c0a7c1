#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/clsinifile.h"
#include "core/runtimeerror.h"
#include "editing/keyremoval.h"
#include "editing/sectionrenumber.h"
#include "platform/fileio.h"
#include "common/tempdir.h"

using namespace fleetwright;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;

namespace {

// A non-variation section ahead of [fltsim.0], comments on kept and on deleted lines, keys that some sections
// lack, a gap in the numbering and sections out of order.
const std::string AIRCRAFT = "// Corvane Skyliner\r\n"
                             "[general]\r\natc_type=CORVANE\r\natc_id=NOT-ME\r\n"
                             "[fltsim.0]\r\ntitle=Skyliner Red // the first\r\nAtc_Id=CV-1 // reg\r\n; paint notes\r\n"
                             "//title=old one\r\nui_type=Skyliner\r\n"
                             "[fltsim.3]\r\ntitle=Skyliner Blue\r\n  atc_id  =CV-3\r\n"
                             "[fltsim.1]\r\ntitle=Skyliner Green\r\ndescription=see a//b\r\n"
                             "[effects]\r\ntitle=not a variation\r\n";

class KeyRemoval : public ::testing::Test
{
protected:
    void SetUp() override
    {
        file = dir / "aircraft.cfg";
        writeBytes(file, AIRCRAFT);
        ini.setPath(widePath(file));
    }

    void makeReadOnly()
    {
        fs::permissions(file, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                        fs::perm_options::remove);
    }

    TempDir dir;
    fs::path file;
    clsIniFile ini;
};

std::vector<std::u16string> folderEntries(const fs::path &folder)
{
    std::vector<std::u16string> names;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().u16string());
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

TEST_F(KeyRemoval, ListHoldsEachVariationKeyOnceTrimmedFoldedAndSorted)
{
    EXPECT_EQ(LoadList(ini),
              (std::vector<std::u16string> {u"//title", u"atc_id", u"description", u"title", u"ui_type"}));

    std::vector<std::u16string> list = {u"atc_id", u" Title "};
    std::u16string key = u"  TITLE ";
    bool found = false;
    FindInList(list, key, found);
    EXPECT_TRUE(found);
    EXPECT_EQ(key, u"title");
    key = u"ui_type";
    FindInList(list, key, found);
    EXPECT_FALSE(found);

    writeBytes(file, "[general]\r\natc_id=X\r\n");
    EXPECT_TRUE(LoadList(ini).empty());
}

TEST_F(KeyRemoval, RemovesTheMarkedKeysFromEveryVariationOnly)
{
    EXPECT_EQ(RemoveMarkedKeys(ini, {u"atc_id", u"//title"}), 6);
    EXPECT_EQ(readBytes(file),
              "// Corvane Skyliner\r\n"
              "[general]\r\natc_type=CORVANE\r\natc_id=NOT-ME\r\n"
              "[fltsim.0]\r\ntitle=Skyliner Red // the first\r\n; paint notes\r\nui_type=Skyliner\r\n"
              "[fltsim.3]\r\ntitle=Skyliner Blue\r\n"
              "[fltsim.1]\r\ntitle=Skyliner Green\r\ndescription=see a//b\r\n"
              "[effects]\r\ntitle=not a variation\r\n");
    EXPECT_EQ(LoadList(ini), (std::vector<std::u16string> {u"description", u"title", u"ui_type"}));

    // No key is protected, and a section that loses all its keys keeps its header and its comments.
    EXPECT_EQ(RemoveMarkedKeys(ini, {u"description", u"title", u"ui_type"}), 9);
    EXPECT_EQ(readBytes(file),
              "// Corvane Skyliner\r\n"
              "[general]\r\natc_type=CORVANE\r\natc_id=NOT-ME\r\n"
              "[fltsim.0]\r\n; paint notes\r\n[fltsim.3]\r\n[fltsim.1]\r\n"
              "[effects]\r\ntitle=not a variation\r\n");
    EXPECT_TRUE(LoadList(ini).empty());
}

TEST_F(KeyRemoval, TheCountIsOfAttemptsNotOfKeysFound)
{
    std::string tenSections;
    for (int i = 0; i < 10; ++i)
        tenSections += "[fltsim." + std::to_string(i) + "]\r\ntitle=T" + std::to_string(i) + "\r\n";
    tenSections += "[fltsim.10]\r\nrare=1\r\n";
    writeBytes(file, tenSections);
    EXPECT_EQ(RemoveMarkedKeys(ini, {u"rare", u"absent", u"missing"}), 33);
    EXPECT_EQ(readBytes(file), tenSections.substr(0, tenSections.size() - 8));
    EXPECT_EQ(wipeReport(33), u"A total of 33 keys have been deleted in the aircraft.cfg");

    // Nothing marked still runs and reports 0.
    EXPECT_EQ(RemoveMarkedKeys(ini, {}), 0);
    EXPECT_EQ(wipeReport(0), u"A total of 0 keys have been deleted in the aircraft.cfg");
}

TEST_F(KeyRemoval, AReadOnlyFileStaysAsItWasWhileTheCountClaimsTheDeletes)
{
    makeReadOnly();
    EXPECT_EQ(RemoveMarkedKeys(ini, {u"title"}), 3);
    EXPECT_EQ(readBytes(file), AIRCRAFT);
    EXPECT_EQ(LoadList(ini).size(), 5u);
    EXPECT_EQ(folderEntries(dir.path()), std::vector<std::u16string> {u"aircraft.cfg"});
}

TEST_F(KeyRemoval, TheSixteenBitCounterOverflowsAfterWritingWhatWasDone)
{
    writeBytes(file, "[fltsim.0]\r\na=1\r\n[fltsim.1]\r\na=2\r\nb=3\r\n");
    std::vector<std::u16string> marked(16385, u"zz");
    marked.front() = u"a";
    marked.back() = u"b";
    try {
        RemoveMarkedKeys(ini, marked);
        FAIL() << "32770 attempts fit the counter";
    } catch (const RuntimeError &error) {
        EXPECT_EQ(error.number(), 6);
    }
    // The 32768th attempt is made and its count overflows: the second section's last key is never reached.
    EXPECT_EQ(readBytes(file), "[fltsim.0]\r\n[fltsim.1]\r\nb=3\r\n");
}

// A rewrite that fails at any byte leaves the old file whole and nothing beside it; one that runs leaves the
// new file whole.
TEST_F(KeyRemoval, NoRewriteIsEverLeftHalfWritten)
{
    const auto interrupted = [this](const std::function<void()> &rewrite, const std::string &expectedAfter) {
        for (std::size_t failAt = 0; failAt <= expectedAfter.size(); failAt += 7) {
            SCOPED_TRACE(failAt);
            writeBytes(file, AIRCRAFT);
            {
                const platform::ReplaceFailureForTests failure(failAt);
                try {
                    rewrite();
                } catch (const RuntimeError &) {
                    // The renumbering reports the failed write; the key writes lose it without a word.
                }
            }
            EXPECT_EQ(readBytes(file), AIRCRAFT);
            EXPECT_EQ(folderEntries(dir.path()), std::vector<std::u16string> {u"aircraft.cfg"});
        }
        writeBytes(file, AIRCRAFT);
        rewrite();
        EXPECT_EQ(readBytes(file), expectedAfter);
    };

    interrupted([this] { RemoveMarkedKeys(ini, {u"title"}); },
                "// Corvane Skyliner\r\n"
                "[general]\r\natc_type=CORVANE\r\natc_id=NOT-ME\r\n"
                "[fltsim.0]\r\nAtc_Id=CV-1 // reg\r\n; paint notes\r\n//title=old one\r\nui_type=Skyliner\r\n"
                "[fltsim.3]\r\n  atc_id  =CV-3\r\n"
                "[fltsim.1]\r\ndescription=see a//b\r\n"
                "[effects]\r\ntitle=not a variation\r\n");
    interrupted([this] { Renumber_fltsim(widePath(file), false); },
                "\r\n[general]\r\natc_type=CORVANE\r\natc_id=NOT-ME\r\n"
                "[fltsim.0]\r\ntitle=Skyliner Red\r\nAtc_Id=CV-1\r\n; paint notes\r\n\r\nui_type=Skyliner\r\n"
                "[fltsim.1]\r\ntitle=Skyliner Blue\r\natc_id  =CV-3\r\n"
                "[fltsim.2]\r\ntitle=Skyliner Green\r\ndescription=see a\r\n"
                "[effects]\r\ntitle=not a variation\r\n");
}
