// Start-up: the settings and their decisions, and simulator detection from registry values to the environment,
// over values of the test's own and over the registry of this machine: a Wine prefix's system.reg off Windows,
// HKEY_LOCAL_MACHINE on Windows (written only under Wine; on a real Windows machine those tests skip).
#include <filesystem>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#endif

#include "common/environment.h"
#include "common/tempdir.h"
#include "core/runtimeerror.h"
#include "environment/simulatorenvironment.h"
#include "environment/startupsettings.h"
#include "platform/simulatorregistry.h"

using namespace fleetwright;
using namespace fleetwright::test;
using platform::SimulatorRegistry;
namespace fs = std::filesystem;
using Lines = std::vector<std::u16string>;

namespace {

const std::u16string WOW = u"SOFTWARE\\Wow6432Node\\Microsoft\\";
const std::u16string FS9_KEY = WOW + u"Microsoft Games\\Flight Simulator\\9.0|EXE Path";
const std::u16string FSX_KEY = WOW + u"Microsoft Games\\Flight Simulator\\10.0|SetupPath";

struct FakeRegistry : platform::RegistryReader
{
    test::TempDir dir;
    fs::path c = dir / "c";
    std::map<std::u16string, std::u16string> values;

    std::u16string GetRegistryValue(std::u16string_view key, std::u16string_view name) const override
    {
        const auto found = values.find(std::u16string(key) + u"|" + std::u16string(name));
        return found == values.end() ? std::u16string() : found->second;
    }
    std::u16string nativePath(std::u16string_view windowsPath) const override
    {
        if (windowsPath.size() < 2 || windowsPath[1] != u':')
            return std::u16string(windowsPath);
        std::u16string path = test::widePath(c);
        for (const char16_t ch : windowsPath.substr(2))
            path.push_back(ch == u'\\' ? static_cast<char16_t>(fs::path::preferred_separator) : ch);
        return path;
    }
    SimulatorEnvironment detect() const
    {
        return SimulatorEnvironment::detect(*this, WOW, test::widePath(dir / "appdata"));
    }
};

bool sameFolder(const std::u16string &a, const fs::path &b)
{
    std::error_code error;
    return fs::equivalent(fs::path(a), b, error);
}

std::vector<PanelPaint> paints(PanelColour fsx, PanelColour fsxAtc, PanelColour fs9, PanelColour fs9Atc)
{
    const auto text = [](PanelColour colour) { return colour == PanelColour::Green ? u"found" : u"n/a"; };
    return {
        {5, text(fsx), fsx, false}, {6, u"ATC", fsxAtc, false}, {2, text(fs9), fs9, true}, {3, u"ATC", fs9Atc, false}};
}

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

const char16_t SEPARATOR = static_cast<char16_t>(fs::path::preferred_separator);

std::u16string repeated(const std::u16string &element, int count)
{
    return joinList(std::vector<std::u16string>(count, element));
}

} // namespace

TEST(SimulatorEnvironment, NeitherSimulator)
{
    // No value, a blank one, a folder that has gone; values under the other prefix are not looked at.
    for (const std::u16string value : {u"", u"   ", u"C:\\Gone\\"}) {
        FakeRegistry machine;
        machine.values[FSX_KEY] = machine.values[FS9_KEY] = value;
        machine.values[u"SOFTWARE\\Microsoft\\Microsoft Games\\Flight Simulator\\10.0|SetupPath"] = u"C:\\FSX";
        fs::create_directories(machine.c / "FSX" / "SimObjects");
        const SimulatorEnvironment env = machine.detect();
        EXPECT_EQ(env.panelPaints, paints(PanelColour::Red, PanelColour::Red, PanelColour::Red, PanelColour::Red));
        EXPECT_FALSE(env.fsxOptionEnabled || env.fsxOptionSelected || env.fs9OptionEnabled || env.fs9OptionSelected);
        EXPECT_EQ(env.simFolderEnabled, false);
        EXPECT_TRUE(env.simFolderEntries.empty() && env.FsxSimObjectsRoot.empty() && env.FsxCfgPath.empty());
    }
}

TEST(SimulatorEnvironment, BothSimulators)
{
    FakeRegistry machine;
    machine.values[FSX_KEY] = u"C:\\FSX\\";
    machine.values[FS9_KEY] = u" C:\\FS9 ";
    writeBytes(machine.c / "FSX" / "airlines.cfg", "[Airlines]\r\nname=Caf\xE9\r\nx=a\nb\r\n");
    writeBytes(machine.c / "FS9" / "Aircraft" / "airlines.cfg", "[Airlines]");
    const fs::path simObjects = machine.c / "FSX" / "SimObjects";
    for (const char *entry : {"Rotorcraft", "Airplanes", "Airplanes.old"})
        fs::create_directories(simObjects / entry);
    writeBytes(simObjects / "notes", "");

    const SimulatorEnvironment env = machine.detect();
    EXPECT_EQ(env.panelPaints, paints(PanelColour::Green, PanelColour::Green, PanelColour::Green, PanelColour::Green));
    EXPECT_TRUE(env.fsxOptionEnabled && env.fsxOptionSelected && env.fs9OptionEnabled && !env.fs9OptionSelected);
    EXPECT_EQ(env.FsxFolder + u"|" + env.Fs9Folder, u"C:\\FSX|C:\\FS9");
    EXPECT_TRUE(sameFolder(env.Fs9AircraftRoot, machine.c / "FS9" / "Aircraft"));
    EXPECT_EQ(env.FsxAirlines, (Lines {u"[Airlines]", u"name=Caf\u00E9", u"x=a\nb", u""}));
    EXPECT_EQ(env.Fs9Airlines, Lines {u"[Airlines]"});
    // No fsx.cfg: the folder scan stands, names without a point in listing order.
    EXPECT_EQ(env.simFolderEntries, (Lines {u"Airplanes", u"notes", u"Rotorcraft"}));
    EXPECT_TRUE(sameFolder(env.SimFolderPaths.at(2), simObjects / "Rotorcraft") && env.simFolderEnabled == true);
    EXPECT_EQ(fs::path(env.FsxCfgPath), machine.dir / "appdata" / "Microsoft" / "FSX" / "fsx.cfg");
}

TEST(SimulatorEnvironment, OneSimulatorAndMissingAirlines)
{
    FakeRegistry fs9;
    fs9.values[FS9_KEY] = u"C:\\FS9\\\\";
    writeBytes(fs9.c / "FS9" / "airlines.cfg", "[Airlines]"); // not in Aircraft, where it belongs
    fs::create_directories(fs9.c / "FS9" / "Aircraft");
    SimulatorEnvironment env = fs9.detect();
    EXPECT_EQ(env.Fs9Folder, u"C:\\FS9\\") << "one backslash is cut, the second stays";
    EXPECT_TRUE(env.fs9OptionEnabled && env.fs9OptionSelected && !env.fsxOptionEnabled && !env.Fs9Found);
    EXPECT_TRUE(env.Fs9AirlinesPath.empty() && env.Fs9Airlines.empty());
    EXPECT_EQ(env.panelPaints, paints(PanelColour::Red, PanelColour::Red, PanelColour::Green, PanelColour::Red));

    FakeRegistry fsx;
    fsx.values[FSX_KEY] = u"C:\\FSX";
    fs::create_directories(fsx.c / "FSX" / "SimObjects");
    env = fsx.detect();
    EXPECT_TRUE(env.fsxOptionSelected && !env.FsxFound);
    EXPECT_FALSE(env.simFolderEnabled.has_value()) << "nothing in SimObjects: the combo keeps its design state";
    EXPECT_FALSE(env.FsxCfgPath.empty()) << "set although the file does not exist";
}

TEST(SimulatorEnvironment, SimObjectPathsOfFsxCfg)
{
    FakeRegistry machine;
    machine.values[FSX_KEY] = u"C:\\FSX";
    const fs::path fsx = machine.c / "FSX";
    fs::create_directories(fsx / "SimObjects" / "Airplanes");
    fs::create_directories(fsx / "extra");
    fs::create_directories(machine.c / "AI Traffic");
    const fs::path cfg = machine.dir / "appdata" / "Microsoft" / "FSX" / "fsx.cfg";
    writeBytes(
        cfg,
        "[Main]\r\nSimObjectPaths.0=SimObjects\\Airplanes\r\nVisibility=1\r\nSimObjectPaths.1=SimObjects\\Gone\r\n"
        "SIMOBJECTPATHS.2=C:\\AI Traffic\r\nSimObjectPaths.3=SimObjects\\Airplanes\r\nSimObjectPaths.4=Extra\r\n"
        "SimObjectPaths.5=Extra\r\nSimObjectPaths.6=extra\r\nSimObjectPaths.7=EXTRA\r\n"
        "[Other]\r\nSimObjectPaths.8=SimObjects\\Airplanes\r\n");
    const SimulatorEnvironment env = machine.detect();
    // A gone folder is left out. The duplicate test compares the lower-cased name, without "simobjects\", with
    // the raw entries: the prefixed value and "Extra" come in twice; "EXTRA" is "extra", which is listed.
    const Lines entries = {
        u"SimObjects\\Airplanes", u"C:\\AI Traffic", u"SimObjects\\Airplanes", u"Extra", u"Extra", u"extra"};
    EXPECT_EQ(env.simFolderEntries, entries);
    ASSERT_EQ(env.SimFolderPaths.size(), entries.size());
    EXPECT_TRUE(sameFolder(env.SimFolderPaths[0], fsx / "SimObjects" / "Airplanes"));
    EXPECT_EQ(env.SimFolderPaths[1], machine.nativePath(u"C:\\AI Traffic")) << "an absolute value keeps its case";
    EXPECT_TRUE(sameFolder(env.SimFolderPaths[3], fsx / "extra"));
    if (fs::path::preferred_separator == '\\') {
        EXPECT_EQ(env.SimFolderPaths[0], test::widePath(fsx) + u"\\simobjects\\airplanes") << "lower-cased";
    }
    // A file without such keys, or one that is no text, replaces the scan with nothing.
    for (const std::string &content :
         {std::string("[Main]\r\nUser Objects=Airplane\r\n"),
          std::string("MDMP\x00\x01\xFF\xFE[\x80\x81]\r\n\x00=\x00\x1A", 18), std::string()}) {
        writeBytes(cfg, content);
        EXPECT_TRUE(machine.detect().simFolderEntries.empty() && machine.detect().SimFolderPaths.empty());
        EXPECT_EQ(machine.detect().simFolderEnabled, true) << "the scan had entries";
    }
}

TEST(SimulatorEnvironment, ComboSearchAndLines)
{
    EXPECT_TRUE(CheckIfExistInCombo({u"SimObjects\\Airplanes", u"extra"}, u"extra"));
    EXPECT_FALSE(CheckIfExistInCombo({u"SimObjects\\Airplanes", u"extra"}, u"simobjects\\airplanes")) << "exact case";
    Lines many(32767, u"x");
    many.push_back(u"y");
    EXPECT_TRUE(CheckIfExistInCombo(many, u"y")) << "the last index the counter reaches";
    try {
        CheckIfExistInCombo(many, u"z");
        ADD_FAILURE() << "the counter does not overflow";
    } catch (const RuntimeError &error) {
        EXPECT_EQ(error.number(), 6);
    }
    EXPECT_EQ(splitAtCrLf(u"a\rb\n\r\r\n"), (Lines {u"a\rb\n\r", u""}));
}

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
    const std::string aircraft = machine.windowsPath(root / "FS9") + "\\AIRCRAFT\\";
    const std::u16string native = registry.nativePath(std::u16string(aircraft.begin(), aircraft.end()));
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

TEST(StartupSettings, CleanText)
{
    const std::tuple<std::u16string, bool, std::u16string> rows[] = {
        {u"  C:\\Temp\\  ", false, u"C:\\Temp\\"},
        {u"a    b  c", false, u"a b c"},
        {u"a\tb\r\nc", false, u"a\tb\r\nc"},
        {u"a\tb\r\nc", true, u"a b c"},
        {u"C:\\Temp\\  x\r\n", true, u"C:\\Temp\\ x "},
        {u"\u00E9t\u00E9\u20AC\u007F|\u0081", true, u" t | "},
    };
    for (const auto &[text, strict, clean] : rows)
        EXPECT_EQ(CleanText(text, strict), clean) << text.size();

    const std::u16string separator(1, SEPARATOR);
    EXPECT_EQ(tempFolderFrom(u" /tmp/x \r\n"), u"/tmp/x" + separator);
    EXPECT_EQ(tempFolderFrom(u"My  Temp"), u"My Temp" + separator);
    EXPECT_EQ(computeTempFolder().back(), SEPARATOR);
}

TEST(StartupSettings, AnalyzeOptionsRepair)
{
    const std::u16string full = repeated(u"1", 23);

    const AnalyzeOptionsRepair first = repairAnalyzeOptions(settingDefault(u"AnalyzeOptions"));
    EXPECT_EQ(settingDefault(u"AnalyzeOptions").size(), 43u);
    EXPECT_EQ(first.text, full);
    EXPECT_TRUE(first.save);

    const std::u16string stored = u"0\u00A6" + repeated(u"1", 21) + u"\u00A60";
    const AnalyzeOptionsRepair kept = repairAnalyzeOptions(stored);
    EXPECT_EQ(kept.text, stored);
    EXPECT_FALSE(kept.save);

    EXPECT_EQ(repairAnalyzeOptions(u"0\u00A60").text, u"0\u00A60\u00A6" + repeated(u"1", 21));

    // Texts that filling up would never bring to 45 characters.
    const std::pair<std::u16string, std::u16string> rows[] = {
        {u"", full},
        {u"0\u00A60\u00A60\u00A600", u"0\u00A60\u00A60\u00A61\u00A6" + repeated(u"1", 19)},
        {u"0\u00A6x\u00A6 0\u00A6-1\u00A60\u00A6", u"0\u00A61\u00A61\u00A61\u00A60\u00A6" + repeated(u"1", 18)},
        {repeated(u"0", 24), repeated(u"0", 23)},
        {repeated(u"0", 22) + u"\u00A60\u00A6", repeated(u"0", 23)},
    };
    for (const auto &[stored, repaired] : rows) {
        EXPECT_EQ(repairAnalyzeOptions(stored).text, repaired) << stored.size();
        EXPECT_TRUE(repairAnalyzeOptions(stored).save);
    }
}

TEST(StartupSettings, StoreOnFirstStartAndAfter)
{
    const ScratchSettings scratch;
    const platform::SettingsStore &store = scratch.store();
    EXPECT_TRUE(readStartFlags(store).ToolTipsOn && readStartFlags(store).RememberFolderOn);
    const OptionFlags options = readOptionFlags(store);
    EXPECT_TRUE(options.AutoBackupOn.value_or(false) && options.ConfirmUpdates.value_or(false)
                && options.InternalEditorOn.value_or(false));
    EXPECT_EQ(options.ResizableOn, false);
    EXPECT_TRUE(readBoolSetting(store, u"AutoUpdate"));
    EXPECT_EQ(readSetting(store, u"Path"), u"");
    EXPECT_EQ(store.GetSetting(u"ToolTips", u"none"), u"none") << "defaults are not written back";
    // The report options are the one value that start-up fills up and stores.
    ASSERT_TRUE(store.SaveSetting(u"AnalyzeOptions", u"1\u00A61"));
    EXPECT_EQ(loadAnalyzeOptions(store), repeated(u"1", 23));
    EXPECT_EQ(store.GetSetting(u"AnalyzeOptions"), repeated(u"1", 23));

    for (const auto &[name, value] :
         {std::pair {u"ToolTips", u"0"}, {u"IsZandor", u"False"}, {u"Resizeable", u"-1"}, {u"Editor", u"maybe"}})
        ASSERT_TRUE(store.SaveSetting(name, value));
    EXPECT_FALSE(readStartFlags(store).ToolTipsOn || readStartFlags(store).RememberFolderOn);
    const OptionFlags changed = readOptionFlags(store);
    EXPECT_EQ(changed.ResizableOn, true);
    EXPECT_FALSE(changed.InternalEditorOn.has_value()) << "skipped: the menu keeps its design state";
}

TEST(StartupSettings, HiddenGridColumns)
{
    const std::tuple<std::u16string, std::vector<int>, std::vector<int>> rows[] = {
        {settingDefault(u"DataGrid"), {}, {}},
        {u"", {}, {}},
        {u"-1", {3}, {}},
        {u"-1\u00A60\u00A6-1\u00A6 -1\u00A6-1.0\u00A61", {3, 5}, {}},
        {repeated(u"-1", 17), {3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}, {18, 19}},
        {repeated(u"0", 15) + u"\u00A60\u00A6-1", {}, {19}},
    };
    for (const auto &[options, columns, missing] : rows) {
        EXPECT_EQ(hiddenGridColumns(options).columns, columns) << options.size();
        EXPECT_EQ(hiddenGridColumns(options).missingColumns, missing) << options.size();
    }
}

TEST(StartupSettings, StartingFolder)
{
    const StartingFolder remembered = startingFolder(true, u"D:\\FS9\\Aircraft\\B737", u"C:\\Program");
    EXPECT_EQ(remembered.folder + u"|" + remembered.drive, u"D:\\FS9\\Aircraft\\B737|D:");
    EXPECT_TRUE(remembered.changeFolder && remembered.loadGuardWhileDriveChanges);
    const StartingFolder program = startingFolder(false, u"D:\\FS9", u"/opt/fleetwright");
    EXPECT_EQ(program.folder + u"|" + program.drive, u"/opt/fleetwright|/o");
    // A drive root: the guard is off, so the drive change itself loads.
    const StartingFolder root = startingFolder(true, u"E:\\", u"C:\\Program");
    EXPECT_TRUE(root.changeFolder && !root.loadGuardWhileDriveChanges);
    EXPECT_FALSE(startingFolder(true, u"", u"C:\\Program").changeFolder);
}

TEST(StartupSettings, Manual)
{
    TempDir program;
    EXPECT_FALSE(findManual(widePath(program.path())).has_value());
    writeBytes(program / "Manuals" / "fleetwright-readme.PDF", "%PDF");
    EXPECT_TRUE(fs::equivalent(fs::path(findManual(widePath(program.path())).value().folder), program / "Manuals"));
    writeBytes(program / "Fleetwright-Readme.pdf", "%PDF");
    const ManualLocation beside = findManual(widePath(program.path())).value();
    EXPECT_TRUE(fs::equivalent(fs::path(beside.ManualFilePath), program / "Fleetwright-Readme.pdf"));
    EXPECT_TRUE(fs::equivalent(fs::path(beside.folder), program.path()));
}
