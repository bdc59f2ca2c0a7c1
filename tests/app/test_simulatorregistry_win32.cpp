// The registry on Windows, against values the test writes into HKEY_LOCAL_MACHINE. That is only done under
// Wine, in the prefix of the test run; on a real Windows machine these tests skip.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>
#include <windows.h>

#include <gtest/gtest.h>

#include "app/simulatorenvironment.h"
#include "platform/simulatorregistry.h"
#include "common/tempdir.h"
#include "common/environment.h"

using namespace fleetwright;
using fleetwright::platform::SimulatorRegistry;
using fleetwright::test::ScopedVariable;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;

namespace {

const wchar_t *const TEST_KEY = L"SOFTWARE\\Fleetwright Tests";
const wchar_t *const FS9_KEY = L"SOFTWARE\\Microsoft\\Microsoft Games\\Flight Simulator\\9.0";
const wchar_t *const FSX_KEY = L"SOFTWARE\\Microsoft\\Microsoft Games\\Flight Simulator\\10.0";

bool underWine()
{
    const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
}

// Keys of HKLM in the 32-bit view, removed before and after the test.
class MachineKeys
{
public:
    explicit MachineKeys(std::vector<std::wstring> keys)
        : m_keys(std::move(keys))
    {
        remove();
    }
    ~MachineKeys() { remove(); }

    static void set(const std::wstring &key, const std::wstring &name, DWORD type, const void *data, DWORD size)
    {
        HKEY handle;
        ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                  KEY_SET_VALUE | KEY_WOW64_32KEY, nullptr, &handle, nullptr),
                  ERROR_SUCCESS);
        EXPECT_EQ(RegSetValueExW(handle, name.c_str(), 0, type, static_cast<const BYTE *>(data), size), ERROR_SUCCESS);
        RegCloseKey(handle);
    }
    static void setText(const std::wstring &key, const std::wstring &name, const std::wstring &text)
    {
        set(key, name, REG_SZ, text.c_str(), static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    }

private:
    void remove()
    {
        for (const std::wstring &key : m_keys) {
            HKEY handle;
            if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_ALL_ACCESS | KEY_WOW64_32KEY, &handle)
                != ERROR_SUCCESS)
                continue;
            RegDeleteTreeW(handle, nullptr);
            RegCloseKey(handle);
            RegDeleteKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), KEY_WOW64_32KEY, 0);
        }
    }

    std::vector<std::wstring> m_keys;
};

std::u16string u16(const std::wstring &text)
{
    return std::u16string(text.begin(), text.end());
}

} // namespace

TEST(SimulatorRegistryWin32, ValuesOfTheRegistry)
{
    if (!underWine())
        GTEST_SKIP() << "writes into HKEY_LOCAL_MACHINE, which is done under Wine only";
    const MachineKeys keys({TEST_KEY});
    const std::wstring key = std::wstring(TEST_KEY) + L"\\Values";
    MachineKeys::setText(key, L"Text", L"C:\\FS9\\\\");
    MachineKeys::setText(key, L"", L"default");
    const std::wstring bare = L"C:\\X";
    MachineKeys::set(key, L"Unterminated", REG_SZ, bare.c_str(), static_cast<DWORD>(bare.size() * sizeof(wchar_t)));
    const DWORD ten = 10;
    const DWORD all = 0xFFFFFFFF;
    MachineKeys::set(key, L"Number", REG_DWORD, &ten, sizeof ten);
    MachineKeys::set(key, L"Negative", REG_DWORD, &all, sizeof all);
    const std::wstring expand = L"%TEMP%\\x";
    MachineKeys::set(key, L"Expand", REG_EXPAND_SZ, expand.c_str(),
                     static_cast<DWORD>((expand.size() + 1) * sizeof(wchar_t)));
    const BYTE bytes[] = {1, 2, 3};
    MachineKeys::set(key, L"Binary", REG_BINARY, bytes, sizeof bytes);

    const ScopedVariable fs9("FLEETWRIGHT_FS9_DIR", std::nullopt);
    const SimulatorRegistry registry;
    struct Row
    {
        std::u16string name;
        std::u16string value;
    };
    const std::vector<Row> rows = {
        {u"Text", u"C:\\FS9\\\\"}, {u"TEXT", u"C:\\FS9\\\\"}, {u"", u"default"}, {u"Unterminated", u"C:\\X"},
        {u"Number", u"10"},        {u"Negative", u"-1"},      {u"Expand", u""},  {u"Binary", u""},
        {u"Missing", u""},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(std::string(row.name.begin(), row.name.end()));
        EXPECT_EQ(registry.GetRegistryValue(u16(key), row.name), row.value);
    }
    EXPECT_EQ(registry.GetRegistryValue(u16(key) + u"\\Missing", u"Text"), u"");
    // The 32-bit view keeps these under Wow6432Node, where a 32-bit program on a 64-bit system looks.
    EXPECT_EQ(registry.GetRegistryValue(u"SOFTWARE\\Wow6432Node\\Fleetwright Tests\\Values", u"Text"), u"C:\\FS9\\\\");
    EXPECT_EQ(registry.nativePath(u"C:\\FS9\\"), u"C:\\FS9\\");
}

TEST(SimulatorRegistryWin32, SimulatorsOfTheMachine)
{
    if (!underWine())
        GTEST_SKIP() << "writes into HKEY_LOCAL_MACHINE, which is done under Wine only";
    const MachineKeys keys({FS9_KEY, FSX_KEY});
    const ScopedVariable fs9("FLEETWRIGHT_FS9_DIR", std::nullopt);
    const ScopedVariable fsx("FLEETWRIGHT_FSX_DIR", std::nullopt);
    TempDir dir;
    fs::create_directories(dir / "FS9" / "Aircraft");
    fs::create_directories(dir / "FSX" / "SimObjects" / "Airplanes");
    writeBytes(dir / "FSX" / "airlines.cfg", "[Airlines]\r\n");
    MachineKeys::setText(FS9_KEY, L"EXE Path", (dir / "FS9").wstring() + L"\\");
    MachineKeys::setText(FSX_KEY, L"SetupPath", L" " + (dir / "FSX").wstring());

    const SimulatorRegistry registry;
    EXPECT_FALSE(registry.Is64BitOS()) << "a 64-bit program runs in no 32-bit emulation";
    const SimulatorEnvironment env =
        SimulatorEnvironment::detect(registry, registryPrefixFor(registry.Is64BitOS()), widePath(dir / "appdata"));
    EXPECT_EQ(env.Fs9AircraftRoot, widePath(dir / "FS9") + u"\\Aircraft");
    EXPECT_EQ(env.FsxSimObjectsRoot, widePath(dir / "FSX") + u"\\SimObjects");
    EXPECT_EQ(env.SimFolderPaths, std::vector<std::u16string> {widePath(dir / "FSX") + u"\\SimObjects\\Airplanes"});
    EXPECT_TRUE(env.FsxFound);
    EXPECT_FALSE(env.Fs9Found);
    EXPECT_EQ(env.FsxCfgPath, widePath(dir / "appdata") + u"\\Microsoft\\FSX\\fsx.cfg");

    const std::u16string shellAppData = registry.GetSpecialFolder(platform::APPDATA_FOLDER);
    EXPECT_FALSE(shellAppData.empty());
    EXPECT_TRUE(fs::is_directory(fs::path(shellAppData)));

    const ScopedVariable override("FLEETWRIGHT_FS9_DIR", "D:\\Elsewhere");
    const ScopedVariable appData("FLEETWRIGHT_APPDATA", "D:\\AppData");
    EXPECT_EQ(registry.GetRegistryValue(u16(FS9_KEY), u"EXE Path"), u"D:\\Elsewhere");
    EXPECT_EQ(registry.GetSpecialFolder(platform::APPDATA_FOLDER), u"D:\\AppData");
}
