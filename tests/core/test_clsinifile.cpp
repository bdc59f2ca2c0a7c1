#include <chrono>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "common/tempdir.h"
#include "core/clsinifile.h"
#include "platform/utf8.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;
using namespace std::chrono_literals;
using namespace std::string_literals;
using Text = std::u16string;
using Names = std::vector<Text>;

namespace {

class ProfileFile : public ::testing::Test
{
protected:
    void SetUp() override { ini.setPath(file.u16string()); }

    void create(std::string_view bytes) { writeBytes(file, bytes); }
    std::string bytes() const { return readBytes(file); }
    void at(const Text &section, const Text &key) { ini.setSection(section), ini.setKey(key); }
    Text read(const Text &section, const Text &key) { return at(section, key), ini.Value(); }
    void write(const Text &section, const Text &key, const Text &value) { at(section, key), ini.setValue(value); }
    Names keys(const Text &section) { return ini.setSection(section), names(&clsIniFile::EnumerateCurrentSection); }
    Names sections() { return names(&clsIniFile::EnumerateAllSections); }
    Names names(void (clsIniFile::*enumerate)(std::vector<Text> &, std::int32_t &))
    {
        Names list {u"stale"};
        std::int32_t count = -1;
        (ini.*enumerate)(list, count);
        EXPECT_EQ(static_cast<std::size_t>(count), list.size());
        return list;
    }

    // Calls, each "S|K=V" to write V, "S|K" to delete the key or "S" to delete the section; with check set,
    // "S|K=V" expects V to be read instead.
    void run(const std::vector<Text> &calls, bool check = false)
    {
        for (const Text &call : calls) {
            const auto bar = call.find(u'|');
            const auto equals = call.find(u'=', bar);
            const Text section = call.substr(0, bar);
            const Text key = bar == Text::npos ? Text() : call.substr(bar + 1, equals - bar - 1);
            if (check)
                EXPECT_EQ(read(section, key), call.substr(equals + 1)) << platform::toUtf8(call);
            else if (bar == Text::npos)
                ini.setSection(section), ini.DeleteSection();
            else if (equals == Text::npos)
                at(section, key), ini.DeleteKey();
            else
                write(section, key, call.substr(equals + 1));
        }
    }

    TempDir dir;
    fs::path file = dir / "aircraft.cfg";
    clsIniFile ini;
};

} // namespace

TEST_F(ProfileFile, ReadsValuesByTheReadingRules)
{
    create(
        "; c=not a key\r\n[FLTSIM.0]\r\nTitle = \"Cessna 172\"   \r\ntexture=\t'blue' \r\nmodel='half\r\n"
        "exit.0=1,2 //note\r\n; atc_id=N123\r\n  ;sim=hidden\r\nempty=\r\na=b=c\r\nlong="
        + std::string(5000, 'x')
        + "\r\n[ other ] trailing text\r\nTitle=second\r\nq=\"\"\r\n[\xC9t\xE9]\r\n\xE9l\xE8ve=1\r\n[a]b]\r\nk=1\r\n");
    run({u"fltsim.0|title=Cessna 172", u"FltSim.0|TITLE=Cessna 172", u"fltsim.0|texture=blue", u"fltsim.0|model='half",
         u"fltsim.0|exit.0=1,2 //note", u"fltsim.0|; atc_id=", u"fltsim.0|atc_id=", u"fltsim.0|;sim=",
         u"fltsim.0|empty=", u"fltsim.0|missing=", u"fltsim.0|a=b=c", u"other|title=second", u"other|q=",
         u"missing|title=", u"\u00e9t\u00c9|\u00c9L\u00c8VE=1", u"a]b|k=1"},
        true);
    EXPECT_EQ(read(u"fltsim.0", u"long"), Text(4095, u'x'));
}

TEST_F(ProfileFile, EnumerationsKeepFileOrderSpellingAndTheirAsymmetry)
{
    create("[Fltsim.1]\r\nTitle=x\r\n=nameless\r\nno equals sign\r\n; c=1\r\nModel=\r\n[]\r\nk=v\r\n[empty]\r\n"
           "[fltsim.1]\r\nlater=1\r\n");
    EXPECT_EQ(keys(u"FLTSIM.1"), (Names {u"Title", u"", u"Model"}));
    EXPECT_EQ(sections(), (Names {u"Fltsim.1", u"empty", u"fltsim.1"}));
    EXPECT_TRUE(keys(u"empty").empty());
    EXPECT_TRUE(keys(u"nowhere").empty());
    ini.setSection(u"fltsim.1");
    EXPECT_EQ(ini.INISection(), Text(u"Title\0\0Model\0", 13));
    EXPECT_EQ(ini.Sections(), Text(u"Fltsim.1\0\0empty\0fltsim.1\0", 25));
}

TEST_F(ProfileFile, NameListsStopAt8190Characters)
{
    // 819 names of nine characters and a NUL fill 8190 exactly; the 820th no longer fits.
    std::string fits = "[s]\r\n";
    for (int i = 0; i < 819; ++i)
        fits += "key" + std::to_string(100000 + i) + "=1\r\n";
    create(fits);
    EXPECT_EQ(keys(u"s").size(), 819u);
    create(fits + "key100819=1\r\n");
    ini.setSection(u"s");
    EXPECT_EQ(ini.INISection().size(), 8190u);
    EXPECT_EQ(keys(u"s").size(), 819u);
    EXPECT_EQ(keys(u"s").back(), u"key100818");
    // A name cut in the middle is dropped too.
    create(fits.substr(0, fits.size() - 13) + "a_very_long_key_name=1\r\n");
    EXPECT_EQ(keys(u"s").size(), 818u);
}

// Each row runs once call by call and once inside a batch: the bytes must be the same.
TEST_F(ProfileFile, EditsChangeTheirOwnLinesAndNothingElse)
{
    std::string garbage;
    for (int i = 0; i < 4096; ++i)
        garbage.push_back(static_cast<char>((i * 131 + 7) % 256));
    const std::string utf16 = "\xFF\xFE[\0a\0]\0\r\0\n\0k\0=\0\xE9\0\r\0\n\0"s;
    const struct
    {
        std::string before;
        std::vector<Text> edits;
        std::string after;
        std::vector<Text> reads = {};
    } rows[] = {
        {"[s]\r\nKEY = old // x\r\n; c\r\n\r\n  // c\r\nb=1  \t\r\n",
         {u"s|key=new"},
         "[s]\r\nKEY =new\r\n; c\r\n\r\n  // c\r\nb=1  \t\r\n"},
        {"[s]\r\na=1\r\nb=2\r\n", {u"s|a=", u"s|B", u"s|c= "}, "[s]\r\na=\r\nc= \r\n"},
        // New keys go behind the last key; a last line without a line end gets one.
        {"[s]\r\na=1\r\n; c\r\n\r\n[t]\r\na=2",
         {u"s|b=3", u"s|c=", u"t|b=4"},
         "[s]\r\na=1\r\nb=3\r\nc=\r\n; c\r\n\r\n[t]\r\na=2\r\nb=4\r\n"},
        {"[s]\r\na=1", {u"t|b=2"}, "[s]\r\na=1\r\n[t]\r\nb=2\r\n"},
        {"[s]\r\na=1\r\nb=2\r\n[t]\r\na=3\r\n",
         {u"s|a", u"s|b", u"s|b=2", u"s|a=1"},
         "[s]\r\nb=2\r\na=1\r\n[t]\r\na=3\r\n"},
        // A section goes up to the next header; what is not there is not deleted.
        {"// h\r\n[s]\r\na=1 // x\r\n\r\n; c\r\n[t]\r\na=2\r\n; c\r\n\r\nb=3\r\n[U]\r\na=4\r\n",
         {u"s|A", u"T", u"no", u"u|no"},
         "// h\r\n[s]\r\n\r\n; c\r\n[U]\r\na=4\r\n"},
        // Sections of one name deleted one by one: the next of the name takes the place.
        {"[a]\r\nk=1\r\n[b]\r\nk=2\r\n[A]\r\nk=3\r\n[c]\r\nk=4\r\n[a]\r\nk=5\r\n",
         {u"b", u"a", u"a", u"c|k=6"},
         "[c]\r\nk=6\r\n[a]\r\nk=5\r\n",
         {u"a|k=5"}},
        // Windows-1252; a new line ends in CR LF whatever the file uses.
        {"[a]\nk=v\n",
         {u"a|t=Caf\u00e9 \u20ac5 \u4e2d", u"a|k=w"},
         "[a]\nk=w\nt=Caf\xE9 \x80"
         "5 ?\r\n",
         {u"a|t=Caf\u00e9 \u20ac5 ?"}},
        // LF and CR line ends, a NUL in a value, a header without "]", a byte order mark.
        {"\xEF\xBB\xBF[a]\rk=1\rn=x\0y\n[broken\nb=2\n[c]\r\n"s,
         {u"a|k=9", u"c|new=1"},
         "\xEF\xBB\xBF[a]\rk=9\rn=x\0y\n[broken\nb=2\n[c]\r\nnew=1\r\n"s,
         {u"a|n=x", u"a|[broken=", u"a|b=2"}},
        {garbage + "\r\n[t]\r\nk=v\r\n", {u"t|k=w"}, garbage + "\r\n[t]\r\nk=w\r\n"},
        // UTF-16, either byte order, reads through its text and is never written.
        {utf16, {u"a|k=x", u"a"}, utf16, {u"a|k=\u00e9"}},
        {"\xFE\xFF\0[\0a\0]\0\n\0k\0=\0\xE9"s, {u"a|k=x"}, "\xFE\xFF\0[\0a\0]\0\n\0k\0=\0\xE9"s, {u"a|k=\u00e9"}},
        // A key name or value that reads as a header opens a section, as the file will read it.
        {"[a]\r\n[d=1\r\n",
         {u"a|[b]=1", u"a|x=2\r\n[c]", u"a|[d=e]"},
         "[a]\r\n[d=e]\r\nx=2\r\n[c]\r\n[b]=1\r\n",
         {u"a|[b]=", u"d=e|x=2", u"a|[d="}},
        // Passed names lose their blanks and tabs.
        {"[s]\r\na=1\r\n",
         {u" s | a =2", u"\tt | k=3", u" t |k2 =4", u" t|k "},
         "[s]\r\na=2\r\n[t]\r\nk2=4\r\n",
         {u" s\t|\ta =2"}},
    };
    for (const auto &row : rows) {
        for (const bool batched : {false, true}) {
            SCOPED_TRACE(testing::PrintToString(row.before) + (batched ? ", batched" : ""));
            create(row.before);
            {
                std::optional<clsIniFile::Batch> batch;
                if (batched)
                    batch.emplace(ini);
                run(row.edits);
            }
            EXPECT_EQ(bytes(), row.after);
            run(row.reads, true);
        }
    }
    // The null string deletes too, and NULs are cut out of the caller's own string.
    at(u"t", u"k2");
    ini.setValue(nullptr);
    Text withNul(u"x\0y", 3);
    at(u"s", u"k");
    ini.setValue(withNul);
    EXPECT_EQ(withNul, u"xy");
    EXPECT_EQ(bytes(), "[s]\r\na=2\r\nk=xy\r\n[t]\r\n");
}

TEST_F(ProfileFile, NothingToReadReadsEmptyAndWritesWithNowhereToGoAreLostSilently)
{
    EXPECT_EQ(read(u"s", u"a"), u"");
    EXPECT_TRUE(sections().empty());
    write(u"s", u"a", u"1");
    EXPECT_EQ(bytes(), "[s]\r\na=1\r\n");
    // Deleting what is not there leaves the file untouched.
    const auto stamp = fs::last_write_time(file) - 1h;
    fs::last_write_time(file, stamp);
    run({u"nowhere", u"s|nokey"});
    EXPECT_EQ(fs::last_write_time(file), stamp);

    fs::permissions(file, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    run({u"s|a=2", u"s|b=3", u"s|a", u"s"});
    {
        clsIniFile::Batch batch(ini);
        write(u"s", u"a", u"4");
        EXPECT_EQ(read(u"s", u"a"), u"1");
    }
    EXPECT_EQ(bytes(), "[s]\r\na=1\r\n");

    for (const fs::path &nowhere : {fs::path(), dir / "no such folder" / "a.cfg", dir / "folder.cfg"}) {
        fs::create_directory(dir / "folder.cfg");
        ini.setPath(nowhere.u16string());
        write(u"a", u"b", u"c");
        EXPECT_EQ(read(u"a", u"b"), u"") << nowhere;
    }
    EXPECT_FALSE(fs::exists(dir / "no such folder"));
    EXPECT_TRUE(fs::is_directory(dir / "folder.cfg"));
}

TEST_F(ProfileFile, BatchesNestAndWriteOnceAtTheEndAlsoWhenStoppedHalfWay)
{
    create("[s]\r\na=1\r\n[t]\r\na=2\r\n");
    try {
        clsIniFile::Batch outer(ini);
        {
            clsIniFile::Batch inner(ini);
            run({u"s|a=3", u"u|b=4"});
            // The write call's own form of a section delete: a null key, whatever string comes with it.
            ini.setSection(u"t");
            ini.setINISection(u"ignored=1");
        }
        EXPECT_EQ(read(u"s", u"a"), u"3");
        EXPECT_EQ(bytes(), "[s]\r\na=1\r\n[t]\r\na=2\r\n");
        throw std::runtime_error("stop");
    } catch (const std::runtime_error &) {}
    EXPECT_EQ(bytes(), "[s]\r\na=3\r\n[u]\r\nb=4\r\n");
}

TEST_F(ProfileFile, OutsideChangesAreSeenAtTheNextCallAndABatchLooksOnce)
{
    create("[a]\r\nk=1\r\n");
    EXPECT_EQ(read(u"a", u"k"), u"1");
    // Same size, same second: only the content tells.
    create("[a]\r\nk=2\r\n");
    EXPECT_EQ(read(u"a", u"k"), u"2");
    fs::remove(file);
    EXPECT_EQ(read(u"a", u"k"), u"");
    create("[a]\r\nk=3\r\n");
    {
        clsIniFile::Batch batch(ini);
        EXPECT_EQ(read(u"a", u"k"), u"3");
        create("[a]\r\nk=4\r\n");
        EXPECT_EQ(read(u"a", u"k"), u"3");
    }
    // Seen at the next call; a batch without writes writes nothing.
    EXPECT_EQ(read(u"a", u"k"), u"4");
    EXPECT_EQ(bytes(), "[a]\r\nk=4\r\n");
}

// A restore or copy that keeps file times (cp -p, rsync -t, unpacking an archive) can change a file without
// changing its size or its modification time; only the change time, which nobody can set back, tells.
TEST_F(ProfileFile, ChangeOfTheSameSizeWithItsOldTimeSetBackIsSeenAndKept)
{
    const auto oldTime = std::chrono::file_clock::from_sys(std::chrono::sys_seconds(1000000000s));
    // Past the few milliseconds in which the cache compares bytes anyway, so that only the identity tells.
    const auto setTimeBack = [&] {
        fs::last_write_time(file, oldTime);
        std::this_thread::sleep_for(50ms);
    };
    const auto changeFromOutside = [&](std::string_view content) {
        ASSERT_EQ(content.size(), bytes().size());
        create(content);
        setTimeBack();
    };

    create("[s]\r\na=A\r\n[t]\r\nb=Y\r\n");
    setTimeBack();
    EXPECT_EQ(read(u"s", u"a"), u"A");
    changeFromOutside("[s]\r\na=Z\r\n[u]\r\nb=Y\r\n");
    EXPECT_EQ(read(u"s", u"a"), u"Z");
    EXPECT_EQ(sections(), (Names {u"s", u"u"}));

    // A write and a delete with no read between the change and themselves.
    changeFromOutside("[s]\r\na=Q\r\n[u]\r\nb=Y\r\n");
    write(u"u", u"b", u"W");
    EXPECT_EQ(bytes(), "[s]\r\na=Q\r\n[u]\r\nb=W\r\n");
    setTimeBack();
    EXPECT_EQ(read(u"s", u"a"), u"Q");
    changeFromOutside("[s]\r\na=R\r\n[u]\r\nb=W\r\n");
    run({u"u|b"});
    EXPECT_EQ(bytes(), "[s]\r\na=R\r\n[u]\r\n");

    // A batch reads the file once; a change under it is not seen by its reads but is not lost by its write.
    setTimeBack();
    {
        clsIniFile::Batch batch(ini);
        EXPECT_EQ(read(u"s", u"a"), u"R");
        write(u"s", u"c", u"1");
        changeFromOutside("[s]\r\na=S\r\n[u]\r\n");
        EXPECT_EQ(read(u"s", u"a"), u"R");
        run({u"u|d=2", u"s|a", u"s|a=T"});
    }
    EXPECT_EQ(bytes(), "[s]\r\nc=1\r\na=T\r\n[u]\r\nd=2\r\n");
    // Even when the change took the section the batch wrote into.
    setTimeBack();
    {
        clsIniFile::Batch batch(ini);
        write(u"u", u"e", u"3");
        changeFromOutside("[s]\r\nc=1\r\na=U\r\n[v]\r\nd=2\r\n");
    }
    EXPECT_EQ(bytes(), "[s]\r\nc=1\r\na=U\r\n[v]\r\nd=2\r\n[u]\r\ne=3\r\n");
}
