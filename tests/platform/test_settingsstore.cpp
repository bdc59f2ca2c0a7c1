#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "common/environment.h"
#include "common/tempdir.h"
#include "core/runtimeerror.h"
#include "platform/settingsstore.h"
#include "platform/utf8.h"

#ifdef _WIN32
#include <windows.h>
#endif

using namespace fleetwright::platform;
using fleetwright::RuntimeError;
using fleetwright::test::readBytes;
using fleetwright::test::ScopedVariable;
using fleetwright::test::TempDir;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;

TEST(SettingsStore, SettingToBool)
{
    // 1 and 0 are the result; 13 (type mismatch) and 6 (overflow) the error thrown. 1e-400 is too small: zero.
    const std::pair<int, std::vector<const char16_t *>> rows[] = {
        {1,
         {u"1", u"-1", u" 1 ", u".5", u"2.", u"1e3", u"1D2", u"2.5e-3", u"&H10", u"&HFFFFFFFF", u"&O17", u"True",
          u"  true "}},
        {0, {u"0", u"+0", u"\t0\t", u"00", u"0.0", u"-0.000", u"0E5", u"1e-400", u"&h0", u"&o00", u"FALSE", u"false"}},
        {13,
         {u"", u"   ", u"yes", u"1x", u"e5", u"1e", u"1e+", u"1..2", u"--1", u"&H", u"&HG", u"&O8", u"&X1", u"Tru",
          u"True1", u"1,5", u"- 1"}},
        {6, {u"1e400", u"&H100000000", u"&O40000000000"}}};
    for (const auto &[result, texts] : rows) {
        for (const char16_t *text : texts) {
            SCOPED_TRACE(toUtf8(text));
            try {
                EXPECT_EQ(settingToBool(text) ? 1 : 0, result);
            } catch (const RuntimeError &error) {
                EXPECT_EQ(error.number(), result);
                EXPECT_EQ(error.description() == u"Type mismatch", result == 13);
            }
        }
    }
}

// FLEETWRIGHT_SETTINGS names a file store on every platform.
TEST(SettingsStore, FileStoreKeepsWhatItDoesNotChange)
{
    TempDir dir;
    const fs::path file = dir / "config" / "settings.ini";
    const ScopedVariable use("FLEETWRIGHT_SETTINGS", file.string());
    const SettingsStore store;
    EXPECT_EQ(store.GetSetting(u"ToolTips", u"1"), u"1");
    EXPECT_FALSE(fs::exists(file)) << "a read never writes";

    const std::pair<const char16_t *, const char16_t *> rows[] = {
        {u"ToolTips", u"0"},
        {u"AnalyzeOptions", u"1\u00A61\u00A60"},
        {u"Path", u"/home/pilot/FS9/Aircraft/B737 \u00E9t\u00E9"},
        {u"Empty", u""},
        {u"Blanks", u"  both ends  "},
        {u"Odd", u"a=b;c #d %41 [x]\r\nsecond line\ttab"},
        {u"Key with = and %", u"v"},
        {u"[Section-like", u"w"}};
    for (const auto &[key, value] : rows)
        ASSERT_TRUE(store.SaveSetting(key, value));
    for (const auto &[key, value] : rows)
        EXPECT_EQ(store.GetSetting(key, u"default"), value) << toUtf8(key);
    // Keys ignore case; a rewrite replaces the value in place.
    ASSERT_TRUE(store.SaveSetting(u"tooltips", u"1"));
    EXPECT_TRUE(store.GetBoolSetting(u"TOOLTIPS", u"0"));
    EXPECT_FALSE(store.GetBoolSetting(u"Resizeable", u"0"));
    EXPECT_THROW(store.GetBoolSetting(u"Path", u"1"), RuntimeError);
    const std::string content = readBytes(file);
    EXPECT_EQ(content.rfind("[Fleetwright]\nToolTips=1\n", 0), 0u) << content;

    const SettingsStore other(u"\u00A9 Corvane Tools", u"Other");
    EXPECT_EQ(other.GetSetting(u"ToolTips", u"none"), u"none");
    ASSERT_TRUE(other.SaveSetting(u"ToolTips", u"7"));
    EXPECT_EQ(other.GetSetting(u"ToolTips"), u"7");
    EXPECT_EQ(store.GetSetting(u"ToolTips"), u"1");

    // A file written by hand changes only in its own lines.
    writeBytes(file,
               "; kept comment\r\n[Other]\r\nToolTips=5\r\n[ fleetwright ]\r\n  ToolTips = 0  \r\n"
               "Path=C:\\FS9\\Aircraft\xe9\r\nno equals sign here\r\n\r\n[Fleetwright]\r\nEditor=1\r\n");
    EXPECT_EQ(store.GetSetting(u"ToolTips"), u"0");
    EXPECT_EQ(store.GetSetting(u"Path"), u"C:\\FS9\\Aircraft\u00E9") << "no UTF-8: read as Windows-1252";
    EXPECT_EQ(store.GetSetting(u"Editor", u"none"), u"none") << "only the first section of the name counts";

    ASSERT_TRUE(store.SaveSetting(u"ToolTips", u"1"));
    ASSERT_TRUE(store.SaveSetting(u"AutoUpdate", u"0"));
    EXPECT_EQ(readBytes(file),
              "; kept comment\r\n[Other]\r\nToolTips=5\r\n[ fleetwright ]\r\nToolTips=1\r\n"
              "Path=C:\\FS9\\Aircraft\xe9\r\nno equals sign here\r\nAutoUpdate=0\n\r\n"
              "[Fleetwright]\r\nEditor=1\r\n");

    // A read-only store refuses and keeps its values; a file without a final line end gets one.
    writeBytes(file, "[Fleetwright]\nToolTips=0");
    fs::permissions(file, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    EXPECT_FALSE(store.SaveSetting(u"ToolTips", u"1"));
    EXPECT_EQ(store.GetSetting(u"ToolTips"), u"0");
    EXPECT_EQ(readBytes(file), "[Fleetwright]\nToolTips=0");
    fs::permissions(file, fs::perms::owner_write, fs::perm_options::add);
    EXPECT_TRUE(store.SaveSetting(u"Editor", u"1"));
    EXPECT_EQ(readBytes(file), "[Fleetwright]\nToolTips=0\nEditor=1\n");
}

// Without FLEETWRIGHT_SETTINGS: the registry on Windows, the XDG configuration folder elsewhere.
TEST(SettingsStore, NativeStore)
{
    const ScopedVariable noFile("FLEETWRIGHT_SETTINGS", std::nullopt);
#ifdef _WIN32
    const std::wstring key = L"Software\\VB and VBA Program Settings\\Fleetwright Tests \u00A9";
    RegDeleteTreeW(HKEY_CURRENT_USER, key.c_str());
    const SettingsStore store(u"Fleetwright Tests \u00A9", u"Fleetwright");
#else
    TempDir dir;
    const ScopedVariable config("XDG_CONFIG_HOME", dir.path().string());
    const SettingsStore store;
#endif
    EXPECT_EQ(store.GetSetting(u"Path", u"none"), u"none");
    ASSERT_TRUE(store.SaveSetting(u"Path", u"/x"));
    ASSERT_TRUE(store.SaveSetting(u"AnalyzeOptions", u"1\u00A60"));
    EXPECT_EQ(store.GetSetting(u"PATH"), u"/x");
    EXPECT_EQ(store.GetSetting(u"AnalyzeOptions"), u"1\u00A60");
#ifdef _WIN32
    // The value as another program finds it, and one written by another program, read at once; a value of
    // another type counts as absent.
    const std::wstring section = key + L"\\Fleetwright";
    wchar_t buffer[64];
    DWORD size = sizeof buffer, number = 1;
    ASSERT_EQ(RegGetValueW(HKEY_CURRENT_USER, section.c_str(), L"Path", RRF_RT_REG_SZ, nullptr, buffer, &size), 0);
    EXPECT_EQ(std::wstring(buffer), L"/x");
    RegSetKeyValueW(HKEY_CURRENT_USER, section.c_str(), L"Path", REG_SZ, L"C:\\FS9", 14);
    RegSetKeyValueW(HKEY_CURRENT_USER, section.c_str(), L"Number", REG_DWORD, &number, sizeof number);
    EXPECT_EQ(store.GetSetting(u"Path"), u"C:\\FS9");
    EXPECT_EQ(store.GetSetting(u"Number", u"default"), u"default");
    RegDeleteTreeW(HKEY_CURRENT_USER, key.c_str());
#else
    EXPECT_EQ(readBytes(dir / "\u00A9 Corvane Tools" / "Fleetwright.ini"),
              "[Fleetwright]\nPath=/x\nAnalyzeOptions=1\xC2\xA6"
              "0\n");
#endif
}
