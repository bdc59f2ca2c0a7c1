// The settings store on Windows, checked against the registry itself. The test works under an application
// name of its own and removes that key at the end, so the program's real settings stay untouched.
#include <string>
#include <windows.h>

#include <gtest/gtest.h>

#include "platform/settingsstore.h"
#include "common/tempdir.h"

using namespace fleetwright::platform;

namespace {

const std::wstring APPLICATION = L"Fleetwright Tests \u00A9";
const std::wstring KEY = L"Software\\VB and VBA Program Settings\\" + APPLICATION;

class RegistryKeyRemover
{
public:
    RegistryKeyRemover() { RegDeleteTreeW(HKEY_CURRENT_USER, KEY.c_str()); }
    ~RegistryKeyRemover() { RegDeleteTreeW(HKEY_CURRENT_USER, KEY.c_str()); }
};

std::u16string u16(const std::wstring &text)
{
    return std::u16string(text.begin(), text.end());
}

std::optional<std::wstring> registryText(const std::wstring &section, const std::wstring &name)
{
    const std::wstring path = KEY + L"\\" + section;
    wchar_t buffer[512];
    DWORD size = sizeof buffer;
    DWORD type = 0;
    if (RegGetValueW(HKEY_CURRENT_USER, path.c_str(), name.c_str(), RRF_RT_ANY, &type, buffer, &size) != ERROR_SUCCESS
        || type != REG_SZ)
        return std::nullopt;
    return std::wstring(buffer);
}

} // namespace

TEST(SettingsStoreWin32, RegistryRoundTrip)
{
    const RegistryKeyRemover remover;
    const SettingsStore store(u16(APPLICATION), u"Fleetwright");
    EXPECT_EQ(store.GetSetting(u"ToolTips", u"1"), u"1");

    ASSERT_TRUE(store.SaveSetting(u"ToolTips", u"0"));
    ASSERT_TRUE(store.SaveSetting(u"AnalyzeOptions", u"1\u00A60\u00A61"));
    ASSERT_TRUE(store.SaveSetting(u"Empty", u""));
    EXPECT_EQ(registryText(L"Fleetwright", L"ToolTips"), L"0");
    EXPECT_EQ(registryText(L"Fleetwright", L"AnalyzeOptions"), L"1\u00A60\u00A61");
    EXPECT_EQ(registryText(L"Fleetwright", L"Empty"), L"");

    EXPECT_EQ(store.GetSetting(u"TOOLTIPS", u"1"), u"0");
    EXPECT_EQ(store.GetSetting(u"AnalyzeOptions"), u"1\u00A60\u00A61");
    EXPECT_EQ(store.GetSetting(u"Empty", u"default"), u"");
    EXPECT_FALSE(store.GetBoolSetting(u"ToolTips", u"1"));

    // A value written by another program is read on the next call; one of another type counts as absent.
    const std::wstring path = KEY + L"\\Fleetwright";
    const std::wstring text = L"C:\\FS9\\Aircraft";
    ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, path.c_str(), L"Path", REG_SZ, text.c_str(),
                              static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
              ERROR_SUCCESS);
    EXPECT_EQ(store.GetSetting(u"Path"), u"C:\\FS9\\Aircraft");
    const DWORD number = 1;
    ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, path.c_str(), L"Number", REG_DWORD, &number, sizeof number),
              ERROR_SUCCESS);
    EXPECT_EQ(store.GetSetting(u"Number", u"default"), u"default");
}

// FLEETWRIGHT_SETTINGS gives a store of its own in place of the registry, the same file as elsewhere.
TEST(SettingsStoreWin32, FileNamedInTheEnvironmentReplacesTheRegistry)
{
    const RegistryKeyRemover remover;
    const fleetwright::test::TempDir dir;
    const auto file = dir / "settings.ini";
    ASSERT_EQ(_wputenv_s(L"FLEETWRIGHT_SETTINGS", file.wstring().c_str()), 0);
    const SettingsStore store(u16(APPLICATION), u"Fleetwright");
    const bool saved = store.SaveSetting(u"ToolTips", u"0");
    const std::u16string read = store.GetSetting(u"TOOLTIPS", u"1");
    _wputenv_s(L"FLEETWRIGHT_SETTINGS", L"");
    EXPECT_TRUE(saved);
    EXPECT_EQ(read, u"0");
    EXPECT_EQ(fleetwright::test::readBytes(file), "[Fleetwright]\nToolTips=0\n");
    EXPECT_EQ(registryText(L"Fleetwright", L"ToolTips"), std::nullopt);
    EXPECT_EQ(store.GetSetting(u"ToolTips", u"1"), u"1") << "without the variable the registry serves again";
}
