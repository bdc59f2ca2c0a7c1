// The registry of this machine, against values of the test's own: a Wine prefix's system.reg off Windows,
// HKEY_LOCAL_MACHINE on Windows (written only under Wine; on a real Windows machine the tests skip).
#include <filesystem>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#endif

#include "app/simulatorenvironment.h"
#include "common/environment.h"
#include "common/tempdir.h"
#include "platform/simulatorregistry.h"

using namespace fleetwright;
using platform::SimulatorRegistry;
using test::ScopedVariable;
namespace fs = std::filesystem;

namespace {

const std::u16string VALUES = u"SOFTWARE\\Fleetwright Tests\\Values";
constexpr int SZ = 1, EXPAND_SZ = 2, BINARY = 3, DWORD_VALUE = 4; // value types by their numbers

#ifdef _WIN32
// Keys of HKLM in the 32-bit view, where the simulators' 32-bit installers write; removed before and after.
struct Machine
{
    const std::u16string simulatorKeys = u"SOFTWARE\\Microsoft\\Microsoft Games\\Flight Simulator\\";
    test::TempDir folders;
    ScopedVariable fs9 {"FLEETWRIGHT_FS9_DIR", std::nullopt}, fsx {"FLEETWRIGHT_FSX_DIR", std::nullopt};
    ScopedVariable appData {"FLEETWRIGHT_APPDATA", std::nullopt};
    Machine() { remove(); }
    ~Machine() { remove(); }
    static const wchar_t *wide(const std::u16string &text) { return reinterpret_cast<const wchar_t *>(text.c_str()); }
    void set(const std::u16string &key, const std::u16string &name, int type, const std::string &bytes)
    {
        HKEY handle;
        ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, wide(key), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                  KEY_SET_VALUE | KEY_WOW64_32KEY, nullptr, &handle, nullptr),
                  ERROR_SUCCESS);
        RegSetValueExW(handle, wide(name), 0, type, reinterpret_cast<const BYTE *>(bytes.data()),
                       static_cast<DWORD>(bytes.size()));
        RegCloseKey(handle);
    }
    void remove()
    {
        for (const std::u16string &key :
             {u"SOFTWARE\\Fleetwright Tests" + std::u16string(), simulatorKeys + u"9.0", simulatorKeys + u"10.0"}) {
            HKEY handle;
            if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, wide(key), 0, KEY_ALL_ACCESS | KEY_WOW64_32KEY, &handle) == 0) {
                RegDeleteTreeW(handle, nullptr);
                RegCloseKey(handle);
                RegDeleteKeyExW(HKEY_LOCAL_MACHINE, wide(key), KEY_WOW64_32KEY, 0);
            }
        }
    }
    fs::path drive() const { return folders.path(); }
    std::string windowsPath(const fs::path &folder) const { return folder.string(); }
    static bool available()
    {
        const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
        return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
    }
};
#else
// A win64 Wine prefix as Wine makes it, found through WINEPREFIX as a user's would be; values are written as
// hex(type) data, which Wine writes for any type.
struct Machine
{
    const std::u16string simulatorKeys = u"Software\\Wow6432Node\\Microsoft\\Microsoft Games\\Flight Simulator\\";
    test::TempDir dir;
    std::map<std::u16string, std::string> keys;
    ScopedVariable prefix {"WINEPREFIX", dir.path().string()}, user {"USER", "pilot"};
    ScopedVariable fs9 {"FLEETWRIGHT_FS9_DIR", std::nullopt}, fsx {"FLEETWRIGHT_FSX_DIR", std::nullopt};
    ScopedVariable appData {"FLEETWRIGHT_APPDATA", std::nullopt};
    Machine()
    {
        fs::create_directories(dir / "drive_c" / "users" / "Pilot" / "AppData" / "Roaming");
        fs::create_directories(dir / "dosdevices");
        fs::create_directory_symlink("../drive_c", dir / "dosdevices" / "c:");
    }
    void set(const std::u16string &key, const std::u16string &name, int type, const std::string &bytes)
    {
        std::string line = "=hex(" + std::to_string(type) + "):";
        for (const char byte : bytes)
            line += std::string {"0123456789abcdef"[(byte >> 4) & 15], "0123456789abcdef"[byte & 15], ','};
        line.pop_back();
        keys[key] += (name.empty() ? "@" : '"' + std::string(name.begin(), name.end()) + '"') + line + "\n";
        std::string reg = "WINE REGISTRY Version 2\n\n#arch=win64\n";
        for (const auto &[path, lines] : keys) {
            reg += "\n[";
            for (const char16_t ch : path)
                reg += ch == u'\\' ? std::string("\\\\") : std::string(1, static_cast<char>(ch));
            reg += "] 1795431092\n#time=1dd7b3899efdfe0\n" + lines;
        }
        test::writeBytes(dir / "system.reg", reg);
    }
    fs::path drive() const { return fs::canonical(dir / "drive_c"); }
    std::string windowsPath(const fs::path &folder) const
    {
        std::string path = "C:";
        for (const auto &part : folder.lexically_relative(drive()))
            path += "\\" + part.string();
        return path;
    }
    static bool available() { return true; }
};
#endif

std::string text(const std::string &value)
{
    std::string bytes;
    for (const char ch : value + '\0')
        bytes += std::string {ch, '\0'};
    return bytes;
}

std::u16string u16(const std::string &text)
{
    return std::u16string(text.begin(), text.end());
}

} // namespace

TEST(Registry, ValuesByTypeAndName)
{
    const std::tuple<std::u16string, int, std::string, std::u16string> rows[] = {
        {u"Text", SZ, text("C:\\FS9\\\\"), u"C:\\FS9\\\\"},
        {u"", SZ, text("default"), u"default"},
        {u"Unterminated", SZ, text("C:\\X").substr(0, 8), u"C:\\X"},
        {u"Number", DWORD_VALUE, std::string("\x0a\0\0\0", 4), u"10"},
        {u"Negative", DWORD_VALUE, "\xff\xff\xff\xff", u"-1"},
        {u"Expand", EXPAND_SZ, text("%TEMP%\\x"), u""},
        {u"Binary", BINARY, "\x01\x02", u""},
    };
    Machine machine;
    if (!machine.available())
        GTEST_SKIP() << "writes into HKEY_LOCAL_MACHINE, which is done under Wine only";
    for (const auto &[name, type, bytes, value] : rows)
        machine.set(VALUES, name, type, bytes);
    machine.set(VALUES + u"\\Sub", u"Sub", SZ, text("sub")); // a value of the subkey, not of the key
    const SimulatorRegistry registry;
    for (const auto &[name, type, bytes, value] : rows)
        EXPECT_EQ(registry.GetRegistryValue(VALUES, name), value) << std::string(name.begin(), name.end());
    EXPECT_EQ(registry.GetRegistryValue(VALUES, u"Sub"), u"");
    EXPECT_EQ(registry.GetRegistryValue(VALUES, u"TEXT"), u"C:\\FS9\\\\");
    EXPECT_EQ(registry.GetRegistryValue(u"software\\fleetwright tests\\values\\SUB", u"sub"), u"sub");
}

TEST(Registry, SimulatorsAreFoundWhereTheyAreRegistered)
{
    Machine machine;
    if (!machine.available())
        GTEST_SKIP() << "writes into HKEY_LOCAL_MACHINE, which is done under Wine only";
    const fs::path root = machine.drive();
    fs::create_directories(root / "FS9" / "Aircraft");
    fs::create_directories(root / "FSX" / "SimObjects" / "Airplanes");
    test::writeBytes(root / "FSX" / "airlines.cfg", "[Airlines]\r\n");
    machine.set(machine.simulatorKeys + u"9.0", u"EXE Path", SZ, text(machine.windowsPath(root / "FS9") + "\\"));
    machine.set(machine.simulatorKeys + u"10.0", u"SetupPath", SZ, text(" " + machine.windowsPath(root / "FSX")));
    const SimulatorRegistry registry;
    const std::u16string appDataFolder = registry.GetSpecialFolder(platform::APPDATA_FOLDER);
    EXPECT_TRUE(fs::is_directory(fs::path(appDataFolder)));
    const SimulatorEnvironment env =
        SimulatorEnvironment::detect(registry, registryPrefixFor(registry.Is64BitOS()), appDataFolder);
    EXPECT_TRUE(fs::equivalent(fs::path(env.Fs9AircraftRoot), root / "FS9" / "Aircraft"));
    EXPECT_EQ(env.SimFolderPaths,
              std::vector<std::u16string> {test::widePath(root / "FSX" / "SimObjects" / "Airplanes")})
        << "the folder's own spelling";
    EXPECT_TRUE(env.FsxFound && !env.Fs9Found);

    // Windows paths ignore case and keep a trailing separator; other text is native already.
    const std::u16string native = registry.nativePath(u16(machine.windowsPath(root / "FS9") + "\\AIRCRAFT\\"));
    EXPECT_TRUE(fs::equivalent(fs::path(native).parent_path(), root / "FS9" / "Aircraft")) << fs::path(native);
    EXPECT_EQ(native.back(), static_cast<char16_t>(fs::path::preferred_separator));
    EXPECT_EQ(registry.nativePath(u"SimObjects\\Airplanes"), u"SimObjects\\Airplanes");

    // The variables stand in for the machine under either prefix; an empty one hides the simulator.
    const ScopedVariable fs9("FLEETWRIGHT_FS9_DIR", "D:\\Elsewhere"), fsx("FLEETWRIGHT_FSX_DIR", "");
#ifdef _WIN32
    SetEnvironmentVariableW(L"FLEETWRIGHT_FSX_DIR", L""); // putenv removes a variable set to nothing
#endif
    const ScopedVariable appData("FLEETWRIGHT_APPDATA", "D:\\AppData");
    EXPECT_EQ(registry.GetRegistryValue(machine.simulatorKeys + u"9.0", u"exe path"), u"D:\\Elsewhere");
    EXPECT_EQ(registry.GetRegistryValue(u"SOFTWARE\\Microsoft\\Microsoft Games\\Flight Simulator\\9.0", u"EXE Path"),
              u"D:\\Elsewhere");
    EXPECT_EQ(registry.GetRegistryValue(machine.simulatorKeys + u"10.0", u"SetupPath"), u"");
    EXPECT_EQ(registry.GetSpecialFolder(platform::APPDATA_FOLDER), u"D:\\AppData");
}

#ifndef _WIN32
// The other forms Wine writes into system.reg, and prefixes that hold no simulators.
TEST(Registry, SystemRegOfWine)
{
    const Machine machine;
    test::writeBytes(machine.dir / "system.reg",
                     "WINE REGISTRY Version 2\n\n#arch=win64\n\n"
                     "[SOFTWARE\\\\Fleetwright Tests\\\\Values] 1\n"
                     "\"Escapes\"=\"a\\\"b\\\\c\\xe9\\x00e9d\\tx\\101\"\n"
                     "\"Utf8\"=\"Z\xC3\xBCrich\"\n\"Number\"=dword:ffffffff\n");
    const SimulatorRegistry registry;
    EXPECT_TRUE(registry.Is64BitOS());
    EXPECT_EQ(registry.GetRegistryValue(VALUES, u"Escapes"), u"a\"b\\c\u00E9\u00E9d\txA");
    EXPECT_EQ(registry.GetRegistryValue(VALUES, u"Utf8"), u"Z\u00FCrich");
    EXPECT_EQ(registry.GetRegistryValue(VALUES, u"Number"), u"-1");
    EXPECT_TRUE(fs::equivalent(fs::path(registry.GetSpecialFolder(platform::APPDATA_FOLDER)),
                               machine.dir / "drive_c" / "users" / "Pilot" / "AppData" / "Roaming"));
    EXPECT_EQ(registry.GetSpecialFolder(0x05), u"");
    EXPECT_FALSE(fs::exists(fs::path(registry.nativePath(u"Q:\\Program Files")))) << "a drive the prefix lacks";

    test::writeBytes(machine.dir / "system.reg",
                     "WINE REGISTRY Version 2\n\n#arch=win32\n\n[Software\\\\X] 1\n\"v\"=\"w\"\n");
    EXPECT_FALSE(SimulatorRegistry().Is64BitOS());
    EXPECT_EQ(SimulatorRegistry().GetRegistryValue(u"software\\x", u"V"), u"w");
    const ScopedVariable none("WINEPREFIX", (machine.dir / "missing").string());
    EXPECT_FALSE(SimulatorRegistry().Is64BitOS());
    EXPECT_EQ(SimulatorRegistry().GetRegistryValue(u"software\\x", u"v"), u"");
}
#endif
