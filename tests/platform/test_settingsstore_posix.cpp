// The settings file off Windows, through FLEETWRIGHT_SETTINGS and through the XDG folder.
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "core/runtimeerror.h"
#include "platform/settingsstore.h"
#include "common/tempdir.h"

using namespace fleetwright::platform;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;

namespace {

// Points the store at a file for the scope of one test.
class SettingsFile
{
public:
    explicit SettingsFile(const fs::path &path) { ::setenv("FLEETWRIGHT_SETTINGS", path.c_str(), 1); }
    ~SettingsFile() { ::unsetenv("FLEETWRIGHT_SETTINGS"); }
};

} // namespace

TEST(SettingsStorePosix, RoundTrip)
{
    TempDir dir;
    const fs::path file = dir / "config" / "settings.ini";
    const SettingsFile use(file);
    const SettingsStore store;

    EXPECT_EQ(store.GetSetting(u"ToolTips", u"1"), u"1");
    EXPECT_EQ(store.GetSetting(u"Path"), u"");
    EXPECT_FALSE(fs::exists(file)) << "a read never writes";

    struct Row
    {
        const char16_t *key;
        const char16_t *value;
    };
    const Row rows[] = {
        {u"ToolTips", u"0"},
        {u"AnalyzeOptions", u"1\u00A61\u00A60"},
        {u"Path", u"/home/pilot/FS9/Aircraft/B737 \u00E9t\u00E9"},
        {u"Empty", u""},
        {u"Blanks", u"  both ends  "},
        {u"Odd", u"a=b;c #d %41 [x]\r\nsecond line\ttab"},
        {u"Key with = and %", u"v"},
        {u"[Section-like", u"w"},
    };
    for (const Row &row : rows)
        ASSERT_TRUE(store.SaveSetting(row.key, row.value));
    for (const Row &row : rows) {
        SCOPED_TRACE(std::u16string(row.key).size());
        EXPECT_EQ(store.GetSetting(row.key, u"default"), row.value);
    }
    // Keys ignore case as registry values do; a rewrite replaces the value in place.
    EXPECT_EQ(store.GetSetting(u"TOOLTIPS", u"1"), u"0");
    ASSERT_TRUE(store.SaveSetting(u"tooltips", u"1"));
    EXPECT_EQ(store.GetSetting(u"ToolTips"), u"1");
    EXPECT_TRUE(store.GetBoolSetting(u"ToolTips", u"0"));
    EXPECT_FALSE(store.GetBoolSetting(u"Resizeable", u"0"));
    EXPECT_THROW(store.GetBoolSetting(u"Path", u"1"), fleetwright::RuntimeError);

    const std::string content = readBytes(file);
    EXPECT_EQ(content.rfind("[Fleetwright]\n", 0), 0u) << content;
    EXPECT_NE(content.find("\nToolTips=1\n"), std::string::npos) << content;
    EXPECT_EQ(content.find("tooltips="), std::string::npos) << content;

    // Another section of the same file is a different store.
    const SettingsStore other(u"\u00A9 Corvane Tools", u"Other");
    EXPECT_EQ(other.GetSetting(u"ToolTips", u"none"), u"none");
    ASSERT_TRUE(other.SaveSetting(u"ToolTips", u"7"));
    EXPECT_EQ(other.GetSetting(u"ToolTips"), u"7");
    EXPECT_EQ(store.GetSetting(u"ToolTips"), u"1");
}

TEST(SettingsStorePosix, HandWrittenFile)
{
    TempDir dir;
    const fs::path file = dir / "settings.ini";
    writeBytes(file,
               "; kept comment\r\n"
               "[Other]\r\n"
               "ToolTips=5\r\n"
               "[ fleetwright ]\r\n"
               "  ToolTips = 0  \r\n"
               "Path=C:\\FS9\\Aircraft\xe9\r\n" // a Windows-1252 byte where UTF-8 was expected
               "no equals sign here\r\n"
               "\r\n"
               "[Fleetwright]\r\n"
               "Editor=1\r\n");
    const SettingsFile use(file);
    const SettingsStore store;
    EXPECT_EQ(store.GetSetting(u"ToolTips"), u"0");
    EXPECT_EQ(store.GetSetting(u"Path"), u"C:\\FS9\\Aircraft\u00E9");
    EXPECT_EQ(store.GetSetting(u"Editor", u"none"), u"none") << "only the first section of the name counts";

    ASSERT_TRUE(store.SaveSetting(u"ToolTips", u"1"));
    ASSERT_TRUE(store.SaveSetting(u"AutoUpdate", u"0"));
    EXPECT_EQ(readBytes(file),
              "; kept comment\r\n"
              "[Other]\r\n"
              "ToolTips=5\r\n"
              "[ fleetwright ]\r\n"
              "ToolTips=1\r\n"
              "Path=C:\\FS9\\Aircraft\xe9\r\n"
              "no equals sign here\r\n"
              "AutoUpdate=0\n"
              "\r\n"
              "[Fleetwright]\r\n"
              "Editor=1\r\n");
}

TEST(SettingsStorePosix, UnwritableStoreKeepsItsValues)
{
    TempDir dir;
    const fs::path file = dir / "settings.ini";
    writeBytes(file, "[Fleetwright]\nToolTips=0");
    ::chmod(file.c_str(), 0444);
    const SettingsFile use(file);
    const SettingsStore store;
    EXPECT_FALSE(store.SaveSetting(u"ToolTips", u"1"));
    EXPECT_EQ(store.GetSetting(u"ToolTips"), u"0");
    EXPECT_EQ(readBytes(file), "[Fleetwright]\nToolTips=0");

    // A file without a final line end gets one before the new line.
    ::chmod(file.c_str(), 0644);
    EXPECT_TRUE(store.SaveSetting(u"Editor", u"1"));
    EXPECT_EQ(readBytes(file), "[Fleetwright]\nToolTips=0\nEditor=1\n");
}

TEST(SettingsStorePosix, ConfigFolder)
{
    TempDir dir;
    ::unsetenv("FLEETWRIGHT_SETTINGS");
    const char *oldConfig = std::getenv("XDG_CONFIG_HOME");
    const std::string savedConfig = oldConfig != nullptr ? oldConfig : "";
    ::setenv("XDG_CONFIG_HOME", dir.path().c_str(), 1);
    const SettingsStore store;
    const bool saved = store.SaveSetting(u"Path", u"/x");
    const std::string content = readBytes(dir / "\u00A9 Corvane Tools" / "Fleetwright.ini");
    if (oldConfig != nullptr)
        ::setenv("XDG_CONFIG_HOME", savedConfig.c_str(), 1);
    else
        ::unsetenv("XDG_CONFIG_HOME");
    EXPECT_TRUE(saved);
    EXPECT_EQ(content, "[Fleetwright]\nPath=/x\n");
}
