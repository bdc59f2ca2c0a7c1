#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "common/tempdir.h"
#include "core/clsinifile.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;
using namespace std::chrono_literals;
using namespace std::string_literals;
using Text = std::u16string;

namespace {

class ProfileFile : public ::testing::Test
{
protected:
    void SetUp() override { ini.setPath(file.u16string()); }

    void create(std::string_view bytes) { writeBytes(file, bytes); }
    std::string bytes() const { return readBytes(file); }
    void at(const Text &section, const Text &key) { ini.setSection(section), ini.setKey(key); }

    // Calls, each "S|K=V" to write V, "S|K" to delete the key or "S" to delete the section (with alternate set,
    // through the null string and the write call's section form); with check set, "S|K=V" expects V to be read
    // instead, and "S|*=V" (or "|*=V") the names of S (or all sections).
    void run(const std::vector<Text> &calls, bool check = false)
    {
        for (const Text &call : calls) {
            const auto bar = call.find(u'|');
            const auto equals = call.find(u'=', bar);
            const Text key = bar == Text::npos ? Text() : call.substr(bar + 1, equals - bar - 1);
            at(call.substr(0, bar), key);
            if (check)
                EXPECT_EQ(key == u"*" ? names(bar == 0) : ini.Value(), call.substr(equals + 1));
            else if (bar == Text::npos)
                alternate ? ini.setINISection(u"ignored=1") : ini.DeleteSection();
            else if (equals == Text::npos)
                alternate ? ini.setValue(nullptr) : ini.DeleteKey();
            else
                ini.setValue(call.substr(equals + 1));
        }
    }

    // The key names of the section set, or all section names, each followed by ",".
    Text names(bool sections)
    {
        std::vector<Text> list {u"stale"};
        std::int32_t count = -1;
        sections ? ini.EnumerateAllSections(list, count) : ini.EnumerateCurrentSection(list, count);
        EXPECT_EQ(static_cast<std::size_t>(count), list.size());
        Text joined;
        for (const Text &name : list)
            joined += name + u",";
        return joined;
    }

    TempDir dir;
    fs::path file = dir / "aircraft.cfg";
    clsIniFile ini;
    bool alternate = false;
    // Whole seconds, which every file system keeps exactly.
    const fs::file_time_type oldTime = std::chrono::file_clock::from_sys(std::chrono::sys_seconds(1000000000s));
};

} // namespace

// Each row runs once call by call and once inside two nested batches, which write only when the outer one
// ends, deleting the other ways: the bytes must be the same, and a row that changes nothing must not write at
// all. File bytes without a CR stand for the same with CR LF line ends.
TEST_F(ProfileFile, EditsChangeTheirOwnLinesAndNothingElse)
{
    const struct
    {
        std::optional<std::string> before; // none: no file
        std::vector<Text> edits;
        std::optional<std::string> after; // none: never written
        std::vector<Text> reads = {};
        bool readOnly = false;
    } rows[] = {
        // Reading; names keep file order and spelling, only the key list keeps an empty name.
        {"; c=not a key\n[S]\nTitle = \"Cessna 172\"   \ntexture=\t'blue' \nmodel='half\nexit.0=1,2 //note\n"
         "; atc_id=N123\n  ;sim=hidden\n=nameless\nno equals sign\nempty=\na=b=c\nlong="
             + std::string(5000, 'x')
             + "\n[ other ] trailing text\nTitle=second\nq=\"\"\n[]\nk=v\n[empty]\n[\xC9t\xE9]\n\xE9l\xE8ve=1\n"
               "[a]b]\nk=1\n[s]\nlater=1\n",
         {},
         {},
         {u"S|*=Title,texture,model,exit.0,,empty,a,long,", u"|*=S,other,empty,\u00c9t\u00e9,a]b,s,", u"empty|*=",
          u"s|title=Cessna 172", u"s|texture=blue", u"s|model='half", u"s|exit.0=1,2 //note", u"s|atc_id=", u"s|;sim=",
          u"s|missing=", u"s|a=b=c", u"other|title=second", u"other|q=", u"missing|title=",
          u"\u00e9t\u00c9|\u00c9L\u00c8VE=1", u"a]b|k=1", u"s|later=", u"s|long=" + Text(4095, u'x')}},
        {"[s]\nKEY = old // x\n; c\n\n  // c\nb=1  \t\n", {u"s|key=new"}, "[s]\nKEY =new\n; c\n\n  // c\nb=1  \t\n"},
        {"[s]\na=1\nb=2\n", {u"s|a=", u"s|B", u"s|c= "}, "[s]\na=\nc= \n"},
        // New keys go behind the last key; a last line without a line end gets one.
        {"[s]\na=1\n; c\n\n[t]\na=2",
         {u"s|b=3", u"s|c=", u"u|d=5", u"t|b=4"},
         "[s]\na=1\nb=3\nc=\n; c\n\n[t]\na=2\nb=4\n[u]\nd=5\n"},
        {"[s]\na=1\nb=2\n[t]\na=3\n", {u"s|a", u"s|b", u"s|b=2", u"s|a=1"}, "[s]\nb=2\na=1\n[t]\na=3\n"},
        // A section goes up to the next header; what is not there is not deleted.
        {"// h\n[s]\na=1 // x\n\n; c\n[t]\na=2\n; c\n\nb=3\n[U]\na=4\n",
         {u"s|A", u"T"},
         "// h\n[s]\n\n; c\n[U]\na=4\n"},
        {"[s]\na=1\n", {u"nowhere", u"s|nokey"}, {}},
        // Sections of one name deleted one by one: the next of the name takes the place.
        {"[a]\nk=1\n[A]\nk=2\n[c]\n[a]\nk=3\n", {u"a", u"a", u"c|k=4"}, "[c]\nk=4\n[a]\nk=3\n", {u"a|k=3", u"|*=c,a,"}},
        // Windows-1252; a new line ends in CR LF whatever the file uses.
        {"[a]\nk=v\r", {u"a|t=\u20ac \u4e2d", u"a|k=w"}, "[a]\nk=w\rt=\x80 ?\r\n", {u"a|t=\u20ac ?"}},
        // LF and CR line ends, a NUL in a value, a header without "]", a byte order mark.
        {"\xEF\xBB\xBF[a]\rk=1\rn=x\0y\n[broken\nb=2\n[c]\r\n"s,
         {u"a|k=9", u"c|new=1"},
         "\xEF\xBB\xBF[a]\rk=9\rn=x\0y\n[broken\nb=2\n[c]\r\nnew=1\r\n"s,
         {u"a|n=x", u"a|[broken=", u"a|b=2"}},
        {"\x01\x80\xFF\0[=\x9F\r\xC0\n[t]\r\nk=v"s, {u"t|k=w"}, "\x01\x80\xFF\0[=\x9F\r\xC0\n[t]\r\nk=w"s},
        // UTF-16, either byte order, reads through its text and is never written.
        {"\xFF\xFE[\0a\0]\0\r\0\n\0k\0=\0\xE9\0\r\0\n\0"s, {u"a|k=x", u"a"}, {}, {u"a|k=\u00e9"}},
        {"\xFE\xFF\0[\0a\0]\0\r\0k\0=\0\xE9"s, {u"a|k=x"}, {}, {u"a|k=\u00e9"}},
        // A key name or value that reads as a header opens a section, as the file will read it.
        {"[a]\n[d=1\n",
         {u"a|[b]=1", u"a|x=2\r\n[c]", u"a|[d=e]"},
         "[a]\n[d=e]\nx=2\n[c]\n[b]=1\n",
         {u"a|[b]=", u"d=e|x=2", u"a|[d="}},
        // Nothing to read reads empty; writes with nowhere to go are lost silently.
        {{}, {u"s|a", u"s"}, {}, {u"s|a=", u"|*=", u"s|*="}},
        {{}, {u"s|a=1"}, "[s]\na=1\n"},
        {"[s]\na=1\n", {u"s|a=2", u"s|b=3", u"s|a", u"s"}, {}, {u"s|a=1"}, true},
        // Passed names lose their blanks and tabs; NULs are cut out of values.
        {"[s]\na=1\n",
         {u" s | a =2", u"\tt | k=3", u" t |k2 =4", u" t|k ", Text(u"t|k3=x\0y", 8)},
         "[s]\na=2\n[t]\nk2=4\nk3=xy\n",
         {u" s\t|\ta =2"}},
    };
    const auto withLineEnds = [](const std::string &text) {
        return text.find('\r') == std::string::npos ? crlf(text) : text;
    };
    int n = 0;
    for (const auto &row : rows) {
        for (const bool batched : {false, true}) {
            SCOPED_TRACE(testing::PrintToString(row.before.value_or("").substr(0, 60)) + (batched ? ", batched" : ""));
            file = dir / (std::to_string(n++) + ".cfg");
            ini.setPath(file.u16string());
            if (row.before) {
                create(withLineEnds(*row.before));
                fs::last_write_time(file, oldTime);
            }
            if (row.readOnly)
                fs::permissions(file, fs::perms::owner_read);
            alternate = batched;
            const std::string before = withLineEnds(row.before.value_or("")),
                              after = withLineEnds(row.after.value_or(row.before.value_or("")));
            {
                std::optional<clsIniFile::Batch> outer, inner;
                if (batched)
                    outer.emplace(ini), inner.emplace(ini);
                run(row.edits);
                inner.reset();
                run(row.reads, true);
                EXPECT_EQ(bytes(), batched ? before : after);
            }
            EXPECT_EQ(bytes(), after);
            if (!row.after) {
                EXPECT_TRUE(row.before ? fs::last_write_time(file) == oldTime : !fs::exists(file));
            }
        }
    }
    // NULs are cut out of the caller's own string.
    Text withNul(u"x\0y", 3);
    ini.setValue(withNul);
    EXPECT_EQ(withNul, u"xy");

    // Writes with nowhere to go are lost silently.
    fs::create_directory(dir / "folder.cfg");
    for (const fs::path &nowhere : {fs::path(), dir / "no such folder" / "a.cfg", dir / "folder.cfg"}) {
        ini.setPath(nowhere.u16string());
        run({u"a|b=c"});
        run({u"a|b="}, true);
    }
    EXPECT_FALSE(fs::exists(dir / "no such folder"));
    EXPECT_TRUE(fs::is_directory(dir / "folder.cfg"));
}

TEST_F(ProfileFile, NameListsStopAt8190Characters)
{
    // 819 names of nine characters and a NUL fill 8190 exactly; the 820th no longer fits.
    std::string fits = "[s]\r\n";
    for (int i = 0; i < 819; ++i)
        fits += "key" + std::to_string(100000 + i) + "=1\r\n";
    create(fits + "key100819=1\r\n");
    at(u"s", u"");
    EXPECT_EQ(ini.INISection().size(), 8190u);
    EXPECT_EQ(names(false).substr(8180), u"key100818,");
    EXPECT_EQ(ini.Sections(), Text(u"s\0", 2));
    // A name cut in the middle is dropped too.
    create(fits.substr(0, fits.size() - 13) + "a_very_long_key_name=1\r\n");
    EXPECT_EQ(names(false).size(), 8180u);
}

// A restore or copy that keeps file times (cp -p, rsync -t, unpacking an archive) can change a file without
// changing its size or its modification time; only the change time, which nobody can set back, tells.
TEST_F(ProfileFile, ChangeOfTheSameSizeWithItsOldTimeSetBackIsSeenAndKept)
{
    // Within the tick of the file system's clock only the content tells; a file gone reads as empty.
    create("[s]\r\na=1\r\n");
    run({u"s|a=1"}, true);
    create("[s]\r\na=2\r\n");
    run({u"s|a=2"}, true);
    fs::remove(file);
    run({u"s|a="}, true);

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
    run({u"s|a=A"}, true);
    changeFromOutside("[s]\r\na=Z\r\n[u]\r\nb=Y\r\n");
    run({u"s|a=Z", u"|*=s,u,"}, true);

    // A write with no read between the change and itself.
    changeFromOutside("[s]\r\na=Q\r\n[u]\r\nb=Y\r\n");
    run({u"u|b=W"});
    EXPECT_EQ(bytes(), "[s]\r\na=Q\r\n[u]\r\nb=W\r\n");

    // A batch reads the file once; a change under it is not seen by its reads but is not lost by its write.
    setTimeBack();
    {
        clsIniFile::Batch batch(ini);
        run({u"s|a=Q"}, true);
        run({u"s|c=1"});
        changeFromOutside("[s]\r\na=S\r\n[u]\r\nb=W\r\n");
        run({u"s|a=Q"}, true);
        run({u"u|d=2", u"s|a", u"s|a=T"});
    }
    EXPECT_EQ(bytes(), "[s]\r\nc=1\r\na=T\r\n[u]\r\nb=W\r\nd=2\r\n");
    // Even when the change took the section the batch wrote into.
    setTimeBack();
    {
        clsIniFile::Batch batch(ini);
        run({u"u|e=3"});
        changeFromOutside("[s]\r\nc=1\r\na=U\r\n[v]\r\nb=W\r\nd=2\r\n");
    }
    EXPECT_EQ(bytes(), "[s]\r\nc=1\r\na=U\r\n[v]\r\nb=W\r\nd=2\r\n[u]\r\ne=3\r\n");
    // A batch without writes writes nothing, and the change is seen at the next call.
    {
        clsIniFile::Batch batch(ini);
        run({u"s|a=U"}, true);
        changeFromOutside("[s]\r\nc=1\r\na=V\r\n[v]\r\nb=W\r\nd=2\r\n[u]\r\ne=3\r\n");
    }
    run({u"s|a=V"}, true);
    EXPECT_EQ(bytes(), "[s]\r\nc=1\r\na=V\r\n[v]\r\nb=W\r\nd=2\r\n[u]\r\ne=3\r\n");
}
