#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/clsinifile.h"
#include "common/tempdir.h"

using fleetwright::clsIniFile;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::writeBytes;

namespace {

class ProfileFile : public ::testing::Test
{
protected:
    void SetUp() override
    {
        file = dir / "aircraft.cfg";
        ini.setPath(file.u16string());
    }

    void create(std::string_view bytes) { writeBytes(file, bytes); }

    std::u16string read(const std::u16string &section, const std::u16string &key)
    {
        ini.setSection(section);
        ini.setKey(key);
        return ini.Value();
    }

    void write(const std::u16string &section, const std::u16string &key, const std::u16string &value)
    {
        ini.setSection(section);
        ini.setKey(key);
        ini.setValue(value);
    }

    std::vector<std::u16string> keys(const std::u16string &section)
    {
        ini.setSection(section);
        std::vector<std::u16string> names;
        std::int32_t count = -1;
        ini.EnumerateCurrentSection(names, count);
        EXPECT_EQ(static_cast<std::size_t>(count), names.size());
        return names;
    }

    std::vector<std::u16string> sections()
    {
        std::vector<std::u16string> names;
        std::int32_t count = -1;
        ini.EnumerateAllSections(names, count);
        EXPECT_EQ(static_cast<std::size_t>(count), names.size());
        return names;
    }

    std::string bytes() { return readBytes(file); }

    TempDir dir;
    std::filesystem::path file;
    clsIniFile ini;
};

using Names = std::vector<std::u16string>;
using namespace std::string_literals;

} // namespace

TEST_F(ProfileFile, ReadsValuesByTheReadingRules)
{
    create("; comment=not a key\r\n"
           "[FLTSIM.0]\r\n"
           "Title = \"Cessna 172\"   \r\n"
           "texture=\t'blue' \r\n"
           "model='half\r\n"
           "exit.0=1,2 //note\r\n"
           "; atc_id=N123\r\n"
           "  ;sim=hidden\r\n"
           "empty=\r\n"
           "a=b=c\r\n"
           "[ other ] trailing text\r\n"
           "Title=second\r\n"
           "[\xC9t\xE9]\r\n"
           "\xE9l\xE8ve=1\r\n");
    const struct
    {
        std::u16string section, key, expected;
    } rows[] = {
        {u"fltsim.0", u"title", u"Cessna 172"},
        {u"FltSim.0", u"TITLE", u"Cessna 172"},
        {u"fltsim.0", u"texture", u"blue"},
        {u"fltsim.0", u"model", u"'half"},
        {u"fltsim.0", u"exit.0", u"1,2 //note"},
        {u"fltsim.0", u"; atc_id", u""},
        {u"fltsim.0", u"atc_id", u""},
        {u"fltsim.0", u";sim", u""},
        {u"fltsim.0", u"empty", u""},
        {u"fltsim.0", u"missing", u""},
        {u"fltsim.0", u"a", u"b=c"},
        {u"other", u"title", u"second"},
        {u"missing", u"title", u""},
        {u"\u00e9t\u00c9", u"\u00c9L\u00c8VE", u"1"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.section.begin(), row.section.end()) + "/"
                     + std::string(row.key.begin(), row.key.end()));
        EXPECT_EQ(read(row.section, row.key), row.expected);
    }
}

TEST_F(ProfileFile, MissingFileOrEmptyPathReadsAsEmpty)
{
    EXPECT_EQ(read(u"fltsim.0", u"title"), u"");
    EXPECT_TRUE(sections().empty());

    clsIniFile unset;
    unset.setSection(u"fltsim.0");
    unset.setKey(u"title");
    EXPECT_EQ(unset.Value(), u"");
    std::vector<std::u16string> names {u"stale"};
    std::int32_t count = 7;
    unset.EnumerateAllSections(names, count);
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(names.empty());
}

TEST_F(ProfileFile, LongValueIsCutAt4095)
{
    create("[a]\r\nlong=" + std::string(5000, 'x') + "\r\n");
    EXPECT_EQ(read(u"a", u"long"), std::u16string(4095, u'x'));
}

TEST_F(ProfileFile, EnumerationsKeepFileOrderSpellingAndTheirAsymmetry)
{
    create("[Fltsim.1]\r\nTitle=x\r\n=nameless\r\nno equals sign\r\n; c=1\r\nModel=\r\n"
           "[]\r\nk=v\r\n"
           "[empty]\r\n"
           "[fltsim.1]\r\nlater=1\r\n");
    EXPECT_EQ(keys(u"FLTSIM.1"), (Names {u"Title", u"", u"Model"}));
    EXPECT_EQ(sections(), (Names {u"Fltsim.1", u"empty", u"fltsim.1"}));
    EXPECT_TRUE(keys(u"empty").empty());
    EXPECT_TRUE(keys(u"nowhere").empty());
    ini.setSection(u"fltsim.1");
    EXPECT_EQ(ini.INISection(), std::u16string(u"Title\0\0Model\0", 13));
    EXPECT_EQ(ini.Sections(), std::u16string(u"Fltsim.1\0\0empty\0fltsim.1\0", 25));
}

TEST_F(ProfileFile, NameListsStopAt8190Characters)
{
    // 819 names of nine characters and a NUL fill 8190 exactly; one more name no longer fits.
    std::string fits = "[s]\r\n";
    std::string over;
    for (int i = 0; i < 820; ++i) {
        char name[16];
        std::snprintf(name, sizeof name, "key%06d", i);
        (i < 819 ? fits : over) += std::string(name) + "=1\r\n";
    }
    create(fits);
    EXPECT_EQ(keys(u"s").size(), 819u);
    EXPECT_EQ(keys(u"s").back(), u"key000818");

    // The 820th name no longer fits.
    create(fits + over);
    ini.setSection(u"s");
    EXPECT_EQ(ini.INISection().size(), 8190u);
    EXPECT_EQ(keys(u"s").size(), 819u);

    // A name cut in the middle is dropped too.
    create(fits.substr(0, fits.size() - 13) + "a_very_long_key_name=1\r\n");
    EXPECT_EQ(keys(u"s").size(), 818u);
    EXPECT_EQ(keys(u"s").back(), u"key000817");
}

TEST_F(ProfileFile, WritingAnExistingKeyReplacesOnlyItsValue)
{
    const std::string rest = "; keep me\r\n\r\n  // only a comment\r\ntexture=blue   \t\r\n";
    create("[fltsim.0]\r\nTITLE = old value // note\r\n" + rest);
    write(u"fltsim.0", u"title", u"new");
    EXPECT_EQ(bytes(), "[fltsim.0]\r\nTITLE =new\r\n" + rest);
    EXPECT_EQ(read(u"fltsim.0", u"title"), u"new");

    write(u"fltsim.0", u"title", u"\"quoted\"");
    EXPECT_EQ(read(u"fltsim.0", u"title"), u"quoted");
    EXPECT_EQ(bytes(), "[fltsim.0]\r\nTITLE =\"quoted\"\r\n" + rest);
}

TEST_F(ProfileFile, EmptyStringWritesKeyAndNullStringDeletesIt)
{
    create("[general]\r\natc_type=Cessna\r\natc_model=C172\r\n");
    write(u"general", u"atc_type", u"");
    EXPECT_EQ(bytes(), "[general]\r\natc_type=\r\natc_model=C172\r\n");

    ini.setKey(u"atc_model");
    ini.setValue(nullptr);
    EXPECT_EQ(bytes(), "[general]\r\natc_type=\r\n");

    // A value keeps its own leading blanks.
    write(u"general", u"model", u" ");
    EXPECT_EQ(bytes(), "[general]\r\natc_type=\r\nmodel= \r\n");
}

TEST_F(ProfileFile, NewKeysGoBehindTheLastKeyOfTheirSection)
{
    create("[fltsim.0]\r\ntitle=a\r\n; trailing comment\r\n\r\n[fltsim.1]\r\ntitle=b");
    write(u"fltsim.0", u"sim", u"c172");
    write(u"fltsim.0", u"model", u"");
    EXPECT_EQ(bytes(),
              "[fltsim.0]\r\ntitle=a\r\nsim=c172\r\nmodel=\r\n; trailing comment\r\n\r\n"
              "[fltsim.1]\r\ntitle=b");

    // The last line has no line end of its own; the new line after it needs one.
    write(u"fltsim.1", u"sim", u"x");
    EXPECT_EQ(bytes(),
              "[fltsim.0]\r\ntitle=a\r\nsim=c172\r\nmodel=\r\n; trailing comment\r\n\r\n"
              "[fltsim.1]\r\ntitle=b\r\nsim=x\r\n");
}

TEST_F(ProfileFile, NewSectionIsAppendedAndMissingFileCreated)
{
    write(u"fltsim.0", u"title", u"first");
    EXPECT_EQ(bytes(), "[fltsim.0]\r\ntitle=first\r\n");

    create("[general]\r\natc_type=x");
    write(u"effects", u"wake", u"fx_wake");
    EXPECT_EQ(bytes(), "[general]\r\natc_type=x\r\n[effects]\r\nwake=fx_wake\r\n");

    // A missing folder cannot take a file: nothing happens, nothing is reported.
    clsIniFile lost;
    lost.setPath((dir / "no such folder" / "aircraft.cfg").u16string());
    lost.setSection(u"a");
    lost.setKey(u"b");
    lost.setValue(std::u16string(u"c"));
    EXPECT_FALSE(std::filesystem::exists(dir / "no such folder"));
    EXPECT_EQ(lost.Value(), u"");
}

TEST_F(ProfileFile, KeyWrittenAfterAllKeysWereDeletedGoesUnderTheOldHeader)
{
    create("[fltsim.0]\r\ntitle=a\r\nsim=b\r\n[fltsim.1]\r\ntitle=c\r\n");
    ini.setSection(u"fltsim.0");
    ini.setKey(u"title");
    ini.DeleteKey();
    ini.setKey(u"sim");
    ini.DeleteKey();
    EXPECT_EQ(bytes(), "[fltsim.0]\r\n[fltsim.1]\r\ntitle=c\r\n");
    EXPECT_EQ(sections(), (Names {u"fltsim.0", u"fltsim.1"}));

    write(u"fltsim.0", u"sim", u"b");
    write(u"fltsim.0", u"title", u"a");
    EXPECT_EQ(bytes(), "[fltsim.0]\r\nsim=b\r\ntitle=a\r\n[fltsim.1]\r\ntitle=c\r\n");
}

TEST_F(ProfileFile, DeletesRemoveTheirLinesAndNothingElse)
{
    create("// header comment\r\n[fltsim.0]\r\ntitle=a // x\r\n\r\n; about 1\r\n"
           "[fltsim.1]\r\ntitle=b\r\n; c\r\n\r\nsim=x\r\n[General]\r\natc_type=y\r\n");
    ini.setSection(u"fltsim.0");
    ini.setKey(u"TITLE");
    ini.DeleteKey();
    EXPECT_EQ(bytes(),
              "// header comment\r\n[fltsim.0]\r\n\r\n; about 1\r\n"
              "[fltsim.1]\r\ntitle=b\r\n; c\r\n\r\nsim=x\r\n[General]\r\natc_type=y\r\n");

    ini.setSection(u"FLTSIM.1");
    ini.DeleteSection();
    EXPECT_EQ(bytes(), "// header comment\r\n[fltsim.0]\r\n\r\n; about 1\r\n[General]\r\natc_type=y\r\n");

    // Deleting what is not there leaves the file alone.
    const auto before = std::filesystem::last_write_time(file);
    ini.setSection(u"nowhere");
    ini.DeleteSection();
    ini.setSection(u"general");
    ini.setKey(u"nokey");
    ini.DeleteKey();
    EXPECT_EQ(std::filesystem::last_write_time(file), before);

    // The write call with a null key deletes the section, whatever string comes with it.
    ini.setINISection(u"ignored=1");
    EXPECT_EQ(bytes(), "// header comment\r\n[fltsim.0]\r\n\r\n; about 1\r\n");
}

TEST_F(ProfileFile, DeletingSectionsOneByOneKeepsTheOthersFound)
{
    create("[a]\r\nk=1\r\n[b]\r\nk=2\r\n[A]\r\nk=3\r\n[c]\r\nk=4\r\n[a]\r\nk=5\r\n");
    {
        clsIniFile::Batch batch(ini);
        ini.setSection(u"b");
        ini.DeleteSection();
        // The second [A] takes the place of the first one, and [c] is still found behind it.
        ini.setSection(u"a");
        ini.DeleteSection();
        EXPECT_EQ(read(u"a", u"k"), u"3");
        EXPECT_EQ(read(u"c", u"k"), u"4");
        ini.setSection(u"a");
        ini.DeleteSection();
        EXPECT_EQ(read(u"a", u"k"), u"5");
        write(u"c", u"k", u"6");
    }
    EXPECT_EQ(bytes(), "[c]\r\nk=6\r\n[a]\r\nk=5\r\n");
}

TEST_F(ProfileFile, WritesAreWindows1252WithCrLf)
{
    create("[a]\nk=v\n");
    write(u"a", u"title", u"Caf\u00e9 \u20ac5 \u4e2d");
    EXPECT_EQ(bytes(),
              "[a]\nk=v\ntitle=Caf\xE9 \x80"
              "5 ?\r\n");
    EXPECT_EQ(read(u"a", u"title"), u"Caf\u00e9 \u20ac5 ?");

    // NULs are cut out of the caller's own string before the write.
    std::u16string withNul(u"a\0b", 3);
    ini.setKey(u"k");
    ini.setValue(withNul);
    EXPECT_EQ(withNul, u"ab");
    EXPECT_EQ(read(u"a", u"k"), u"ab");
}

TEST_F(ProfileFile, ChangesBehindTheObjectsBackAreSeenAtTheNextCall)
{
    create("[a]\r\nk=1\r\n");
    EXPECT_EQ(read(u"a", u"k"), u"1");
    // Same size, same second: only the content tells.
    create("[a]\r\nk=2\r\n");
    EXPECT_EQ(read(u"a", u"k"), u"2");
    std::filesystem::remove(file);
    EXPECT_EQ(read(u"a", u"k"), u"");
    create("[a]\r\nk=3\r\n[b]\r\n");
    EXPECT_EQ(read(u"a", u"k"), u"3");
    EXPECT_EQ(sections(), (Names {u"a", u"b"}));

    // A write goes onto the file as it stands now, not onto what was read before.
    create("[a]\r\nk=4\r\nextra=1\r\n");
    write(u"a", u"k", u"5");
    EXPECT_EQ(bytes(), "[a]\r\nk=5\r\nextra=1\r\n");

    // An old time stamp does not hide a rewrite of another size.
    const auto stamp = std::filesystem::last_write_time(file) - std::chrono::hours(1);
    std::filesystem::last_write_time(file, stamp);
    EXPECT_EQ(read(u"a", u"extra"), u"1");
    create("[a]\r\nk=6\r\n");
    std::filesystem::last_write_time(file, stamp);
    EXPECT_EQ(read(u"a", u"k"), u"6");
    EXPECT_EQ(read(u"a", u"extra"), u"");
}

TEST_F(ProfileFile, ReadOnlyFileRefusesWritesSilently)
{
    const std::string original = "[fltsim.0]\r\ntitle=a\r\n";
    create(original);
    std::filesystem::permissions(file,
                                 std::filesystem::perms::owner_write | std::filesystem::perms::group_write
                                     | std::filesystem::perms::others_write,
                                 std::filesystem::perm_options::remove);
    write(u"fltsim.0", u"title", u"b");
    write(u"fltsim.0", u"new", u"c");
    ini.setKey(u"title");
    ini.DeleteKey();
    ini.DeleteSection();
    {
        clsIniFile::Batch batch(ini);
        write(u"fltsim.0", u"title", u"d");
        EXPECT_EQ(read(u"fltsim.0", u"title"), u"a");
    }
    EXPECT_EQ(bytes(), original);
    EXPECT_EQ(read(u"fltsim.0", u"title"), u"a");
}

TEST_F(ProfileFile, FolderInPlaceOfTheFileReadsEmptyAndTakesNoWrite)
{
    std::filesystem::create_directory(file);
    EXPECT_EQ(read(u"a", u"b"), u"");
    write(u"a", u"b", u"c");
    EXPECT_TRUE(std::filesystem::is_directory(file));
    EXPECT_TRUE(sections().empty());
}

TEST_F(ProfileFile, BatchWritesOnceWithTheBytesOfSingleWrites)
{
    const std::string original = "[fltsim.0]\r\ntitle=a\r\nsim=x // c\r\n\r\n[fltsim.1]\r\ntitle=b\r\n";
    const auto run = [this] {
        write(u"fltsim.0", u"title", u"A");
        ini.setKey(u"sim");
        ini.DeleteKey();
        write(u"fltsim.0", u"sim", u"y");
        write(u"fltsim.2", u"title", u"c");
        ini.setSection(u"fltsim.1");
        ini.DeleteSection();
        write(u"general", u"atc_type", u"z");
    };
    create(original);
    run();
    const std::string expected = bytes();

    create(original);
    {
        clsIniFile::Batch batch(ini);
        run();
        // Reads inside the run see its writes before the file does.
        EXPECT_EQ(read(u"fltsim.0", u"sim"), u"y");
        EXPECT_EQ(bytes(), original);
    }
    EXPECT_EQ(bytes(), expected);
}

TEST_F(ProfileFile, BatchStoppedHalfWayStillWritesWhatWasDone)
{
    create("[a]\r\nk=1\r\n");
    try {
        clsIniFile::Batch outer(ini);
        write(u"a", u"k", u"2");
        {
            clsIniFile::Batch inner(ini);
            write(u"a", u"n", u"3");
        }
        EXPECT_EQ(bytes(), "[a]\r\nk=1\r\n");
        throw std::runtime_error("stop");
    } catch (const std::runtime_error &) {}
    EXPECT_EQ(bytes(), "[a]\r\nk=2\r\nn=3\r\n");
}

TEST_F(ProfileFile, OddLineEndsAndBytesAreReadAsTextAndLeftAlone)
{
    // LF-only and lone-CR line ends, a NUL inside a value, a header without "]", a byte order mark.
    create("\xEF\xBB\xBF[a]\rk=1\rn=x\0y\n[broken\nb=2\n[c]\r\n"s);
    EXPECT_EQ(read(u"a", u"k"), u"1");
    EXPECT_EQ(read(u"a", u"n"), u"x");
    EXPECT_EQ(read(u"a", u"[broken"), u"");
    EXPECT_EQ(read(u"a", u"b"), u"2");
    EXPECT_EQ(sections(), (Names {u"a", u"c"}));
    write(u"a", u"k", u"9");
    write(u"c", u"new", u"1");
    EXPECT_EQ(bytes(), "\xEF\xBB\xBF[a]\rk=9\rn=x\0y\n[broken\nb=2\n[c]\r\nnew=1\r\n"s);
}

TEST_F(ProfileFile, BinaryGarbageAndUtf16AreHandledWithoutLoss)
{
    std::string garbage;
    for (int i = 0; i < 4096; ++i)
        garbage.push_back(static_cast<char>((i * 131 + 7) % 256));
    create(garbage + "\r\n[tail]\r\nk=v\r\n");
    EXPECT_EQ(read(u"tail", u"k"), u"v");
    write(u"tail", u"k", u"w");
    EXPECT_EQ(bytes(), garbage + "\r\n[tail]\r\nk=w\r\n");

    // UTF-16 reads through its text; writes would garble it, so it keeps its bytes.
    const std::string utf16 = "\xFF\xFE[\0a\0]\0\r\0\n\0k\0=\0\xE9\0\r\0\n\0"s;
    create(utf16);
    EXPECT_EQ(read(u"a", u"k"), u"\u00e9");
    write(u"a", u"k", u"x");
    EXPECT_EQ(bytes(), utf16);
}

TEST_F(ProfileFile, OddKeyNamesAreWrittenAsTheFileWillReadThem)
{
    create("[a]\r\n");
    // A key name that itself reads as a header opens a section in the file: reads must agree with the file.
    write(u"a", u"[b]", u"1");
    EXPECT_EQ(bytes(), "[a]\r\n[b]=1\r\n");
    EXPECT_EQ(sections(), (Names {u"a", u"b"}));
    write(u"a", u"x", u"2\r\n[c]");
    EXPECT_EQ(sections(), (Names {u"a", u"c", u"b"}));
    EXPECT_EQ(read(u"a", u"x"), u"2");

    // So may the new value of a key that stands: "[d" given "e]" makes the line the header "d=e".
    create("[a]\r\n[d=1\r\n");
    EXPECT_EQ(read(u"a", u"[d"), u"1");
    write(u"a", u"[d", u"e]");
    EXPECT_EQ(bytes(), "[a]\r\n[d=e]\r\n");
    EXPECT_EQ(sections(), (Names {u"a", u"d=e"}));
    EXPECT_EQ(read(u"a", u"[d"), u"");
}

TEST_F(ProfileFile, PassedNamesLoseTheirBlanksAndTabs)
{
    create("[fltsim.0]\r\ntitle=a\r\n");
    EXPECT_EQ(read(u" fltsim.0\t", u"\ttitle "), u"a");
    write(u" fltsim.0 ", u" title ", u"b");
    write(u"\tnew ", u" k", u"c");
    EXPECT_EQ(bytes(), "[fltsim.0]\r\ntitle=b\r\n[new]\r\nk=c\r\n");
    ini.setSection(u" new ");
    ini.setKey(u"k ");
    ini.setValue(nullptr);
    EXPECT_EQ(bytes(), "[fltsim.0]\r\ntitle=b\r\n[new]\r\n");
}

TEST_F(ProfileFile, BatchLooksAtTheFileOnceAtItsFirstCall)
{
    create("[a]\r\nk=1\r\n");
    EXPECT_EQ(read(u"a", u"k"), u"1");
    create("[a]\r\nk=2\r\n");
    {
        clsIniFile::Batch batch(ini);
        EXPECT_EQ(read(u"a", u"k"), u"2");
        // One operation, one moment: a rewrite by somebody else in the middle is not seen inside...
        create("[a]\r\nk=3\r\n");
        EXPECT_EQ(read(u"a", u"k"), u"2");
    }
    // ...and is seen at the next call after it; a batch without writes writes nothing.
    EXPECT_EQ(read(u"a", u"k"), u"3");
    EXPECT_EQ(bytes(), "[a]\r\nk=3\r\n");
}

// A restore or copy that keeps file times (cp -p, rsync -t, unpacking an archive) can change a file without
// changing its size or its modification time; only the change time, which nobody can set back, tells.
TEST_F(ProfileFile, ChangeOfTheSameSizeWithItsOldTimeSetBackIsSeenAndKept)
{
    using namespace std::chrono_literals;
    const auto oldTime = std::chrono::file_clock::from_sys(std::chrono::sys_seconds(1000000000s));
    // Past the few milliseconds in which the cache compares bytes anyway, so that only the identity tells.
    const auto setTimeBack = [&] {
        std::filesystem::last_write_time(file, oldTime);
        std::this_thread::sleep_for(50ms);
    };
    const auto changeFromOutside = [&](std::string_view content) {
        ASSERT_EQ(content.size(), bytes().size());
        create(content);
        setTimeBack();
    };

    create("[fltsim.0]\r\ntitle=Plane A\r\n[fltsim.1]\r\nsim=Y\r\n");
    setTimeBack();
    EXPECT_EQ(read(u"fltsim.0", u"title"), u"Plane A");
    changeFromOutside("[fltsim.0]\r\ntitle=Plane Z\r\n[fltsim.1]\r\nsim=Y\r\n");
    EXPECT_EQ(read(u"fltsim.0", u"title"), u"Plane Z");
    write(u"fltsim.1", u"sim", u"X");
    EXPECT_EQ(bytes(), "[fltsim.0]\r\ntitle=Plane Z\r\n[fltsim.1]\r\nsim=X\r\n");

    // A write with no read between the change and itself.
    setTimeBack();
    EXPECT_EQ(read(u"fltsim.0", u"title"), u"Plane Z");
    changeFromOutside("[fltsim.0]\r\ntitle=Plane Q\r\n[fltsim.1]\r\nsim=X\r\n");
    write(u"fltsim.1", u"sim", u"W");
    EXPECT_EQ(bytes(), "[fltsim.0]\r\ntitle=Plane Q\r\n[fltsim.1]\r\nsim=W\r\n");

    setTimeBack();
    EXPECT_EQ(sections(), (Names {u"fltsim.0", u"fltsim.1"}));
    changeFromOutside("[fltsim.0]\r\ntitle=Plane Q\r\n[fltsim.2]\r\nsim=W\r\n");
    EXPECT_EQ(sections(), (Names {u"fltsim.0", u"fltsim.2"}));
    EXPECT_EQ(keys(u"fltsim.2"), (Names {u"sim"}));

    setTimeBack();
    EXPECT_EQ(keys(u"fltsim.2"), (Names {u"sim"}));
    changeFromOutside("[fltsim.0]\r\ntitle=Plane R\r\n[fltsim.2]\r\nsim=W\r\n");
    ini.setSection(u"fltsim.2");
    ini.setKey(u"sim");
    ini.DeleteKey();
    EXPECT_EQ(bytes(), "[fltsim.0]\r\ntitle=Plane R\r\n[fltsim.2]\r\n");

    // A batch reads the file once; a change under it is not seen by its reads but is not lost by its write.
    setTimeBack();
    {
        clsIniFile::Batch batch(ini);
        EXPECT_EQ(read(u"fltsim.0", u"title"), u"Plane R");
        write(u"fltsim.0", u"a", u"1");
        changeFromOutside("[fltsim.0]\r\ntitle=Plane S\r\n[fltsim.2]\r\n");
        EXPECT_EQ(read(u"fltsim.0", u"title"), u"Plane R");
        write(u"fltsim.2", u"b", u"2");
        ini.setSection(u"fltsim.0");
        ini.setKey(u"title");
        ini.DeleteKey();
        write(u"fltsim.0", u"title", u"Plane T");
    }
    EXPECT_EQ(bytes(), "[fltsim.0]\r\na=1\r\ntitle=Plane T\r\n[fltsim.2]\r\nb=2\r\n");
    // Even when the change took the section the batch wrote into.
    setTimeBack();
    {
        clsIniFile::Batch batch(ini);
        write(u"fltsim.2", u"c", u"3");
        changeFromOutside("[fltsim.0]\r\na=1\r\ntitle=Plane U\r\n[fltsim.9]\r\nb=2\r\n");
    }
    EXPECT_EQ(bytes(), "[fltsim.0]\r\na=1\r\ntitle=Plane U\r\n[fltsim.9]\r\nb=2\r\n[fltsim.2]\r\nc=3\r\n");
}
