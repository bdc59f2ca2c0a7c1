// The registry off Windows: a Wine prefix of the test's own, found through WINEPREFIX as a user's would be.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

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

// system.reg as Wine 8 writes it for a win64 prefix with both simulators.
const char *const SYSTEM_REG = R"(WINE REGISTRY Version 2
;; All keys relative to REGISTRY\\Machine

#arch=win64

[Software\\Wow6432Node\\Microsoft\\Microsoft Games\\Flight Simulator\\10.0] 1795431092
#time=1dd7b3899efdfe0
"SetupPath"="C:\\Program Files (x86)\\Microsoft Games\\Microsoft Flight Simulator X\\"

[Software\\Wow6432Node\\Microsoft\\Microsoft Games\\Flight Simulator\\9.0] 1795431092
#time=1dd7b3899efdfe0
"Bin"=hex:01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,16,17,\
  18,19,1a,1b
"EXE Path"="C:\\FS9\\"
"Exp"=str(2):"%TEMP%\\x"
"Num"=dword:0000000a
"Negative"=dword:ffffffff

[SOFTWARE\\Fleetwright Tests\\Values] 1795431092
@="default"
"Escapes"="a\"b\\c\xe9\x00e9d\tx\101"
"Utf8"="Zürich"
"Unterminated"=hex(1):43,00,3a,00,5c,00,\
  58,00
"Terminated"=hex(1):43,00,00,00
"Number"=hex(4):0a,00,00,00
"Multi"=str(7):"a\0b"

[SOFTWARE\\Fleetwright Tests\\Values\\Sub] 1795431092
"Escapes"="sub"

[SOFTWARE\\Fleetwright Tests\\Other] 1795431092
"Only"="other"
)";

// A prefix like Wine makes it: dosdevices with the drive links, drive_c, the user's folders.
struct WinePrefix
{
    TempDir dir;
    fs::path drive = dir / "drive_c";

    explicit WinePrefix(const std::string &systemReg = SYSTEM_REG)
    {
        writeBytes(dir / "system.reg", systemReg);
        fs::create_directories(dir / "dosdevices");
        fs::create_directories(drive);
        fs::create_directory_symlink("../drive_c", dir / "dosdevices" / "c:");
    }
};

} // namespace

TEST(SimulatorRegistryPosix, FoundThroughThePrefix)
{
    WinePrefix prefix;
    const fs::path fsx = prefix.drive / "Program Files (x86)" / "Microsoft Games" / "Microsoft Flight Simulator X";
    fs::create_directories(fsx / "SimObjects" / "Airplanes");
    // Another case than the registry's, as a copied installation may have.
    fs::create_directories(prefix.drive / "fs9" / "Aircraft");
    writeBytes(prefix.drive / "fs9" / "Aircraft" / "airlines.cfg", "[a]\r\n");
    const fs::path roaming = prefix.drive / "users" / "Pilot" / "AppData" / "Roaming";
    writeBytes(roaming / "Microsoft" / "FSX" / "fsx.cfg", "[Main]\r\nSimObjectPaths.0=SimObjects\\Airplanes\r\n");

    const ScopedVariable wine("WINEPREFIX", prefix.dir.path().string());
    const ScopedVariable user("USER", "pilot");
    const ScopedVariable fs9("FLEETWRIGHT_FS9_DIR", std::nullopt);
    const ScopedVariable fsxDir("FLEETWRIGHT_FSX_DIR", std::nullopt);
    const ScopedVariable appData("FLEETWRIGHT_APPDATA", std::nullopt);
    const SimulatorRegistry registry;

    ASSERT_TRUE(registry.Is64BitOS());
    const std::u16string appDataFolder = registry.GetSpecialFolder(platform::APPDATA_FOLDER);
    EXPECT_TRUE(fs::equivalent(fs::path(appDataFolder), roaming));
    EXPECT_EQ(registry.GetSpecialFolder(0x05), u"");

    const SimulatorEnvironment env =
        SimulatorEnvironment::detect(registry, registryPrefixFor(registry.Is64BitOS()), appDataFolder);
    EXPECT_TRUE(env.fsxOptionEnabled && env.fs9OptionEnabled);
    EXPECT_EQ(env.Fs9Folder, u"C:\\FS9");
    EXPECT_TRUE(fs::equivalent(fs::path(env.Fs9AircraftRoot), prefix.drive / "fs9" / "Aircraft"));
    EXPECT_TRUE(env.Fs9Found);
    EXPECT_TRUE(fs::equivalent(fs::path(env.FsxSimObjectsRoot), fsx / "SimObjects"));
    EXPECT_EQ(env.simFolderEntries, std::vector<std::u16string> {u"SimObjects\\Airplanes"});
    ASSERT_EQ(env.SimFolderPaths.size(), 1u);
    EXPECT_EQ(env.SimFolderPaths[0], widePath(fs::canonical(fsx / "SimObjects" / "Airplanes")))
        << "the folder's own spelling, below the drive's real folder";

    // A 32-bit prefix keeps the simulators under the plain key.
    WinePrefix win32("WINE REGISTRY Version 2\n\n#arch=win32\n\n[Software\\\\Microsoft\\\\x] 1\n\"v\"=\"w\"\n");
    const ScopedVariable wine32("WINEPREFIX", win32.dir.path().string());
    EXPECT_FALSE(SimulatorRegistry().Is64BitOS());
    EXPECT_EQ(SimulatorRegistry().GetRegistryValue(u"software\\microsoft\\X", u"V"), u"w");

    const ScopedVariable none("WINEPREFIX", (prefix.dir / "missing").string());
    EXPECT_FALSE(SimulatorRegistry().Is64BitOS());
    EXPECT_EQ(SimulatorRegistry().GetRegistryValue(u"Software\\Fleetwright Tests\\Other", u"Only"), u"");
}

TEST(SimulatorRegistryPosix, ValuesOfSystemReg)
{
    WinePrefix prefix;
    const ScopedVariable wine("WINEPREFIX", prefix.dir.path().string());
    const ScopedVariable fs9("FLEETWRIGHT_FS9_DIR", std::nullopt);
    const SimulatorRegistry registry;
    const std::u16string fs9Key = u"SOFTWARE\\Wow6432Node\\Microsoft\\Microsoft Games\\Flight Simulator\\9.0";
    const std::u16string values = u"Software\\Fleetwright Tests\\Values";
    struct Row
    {
        std::u16string key;
        std::u16string name;
        std::u16string value;
    };
    const std::vector<Row> rows = {
        {fs9Key, u"EXE Path", u"C:\\FS9\\"},
        {fs9Key, u"exe path", u"C:\\FS9\\"},
        {fs9Key, u"Num", u"10"},
        {fs9Key, u"Negative", u"-1"},
        {fs9Key, u"Exp", u""},
        {fs9Key, u"Bin", u""},
        {fs9Key, u"Missing", u""},
        {u"SOFTWARE\\Microsoft\\Microsoft Games\\Flight Simulator\\9.0", u"EXE Path", u""},
        {values, u"", u"default"},
        {values, u"Escapes", u"a\"b\\c\u00E9\u00E9d\txA"},
        {values, u"Utf8", u"Z\u00FCrich"},
        {values, u"Unterminated", u"C:\\X"},
        {values, u"Terminated", u"C"},
        {values, u"Number", u"10"},
        {values, u"Multi", u""},
        {values, u"Only", u""},
        {values + u"\\Sub", u"Escapes", u"sub"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(std::string(row.name.begin(), row.name.end()));
        EXPECT_EQ(registry.GetRegistryValue(row.key, row.name), row.value);
    }
}

TEST(SimulatorRegistryPosix, NativePaths)
{
    WinePrefix prefix;
    fs::create_directories(prefix.drive / "Program Files" / "FS9");
    const ScopedVariable wine("WINEPREFIX", prefix.dir.path().string());
    const SimulatorRegistry registry;
    const fs::path drive = fs::canonical(prefix.drive);

    EXPECT_EQ(registry.nativePath(u"C:\\PROGRAM FILES\\fs9\\"), widePath(drive / "Program Files" / "FS9" / ""));
    EXPECT_EQ(registry.nativePath(u"c:/program files//FS9"), widePath(drive / "Program Files" / "FS9"));
    EXPECT_EQ(registry.nativePath(u"C:\\"), widePath(drive / ""));
    // Not there: spelled as asked, below the drive.
    EXPECT_EQ(registry.nativePath(u"C:\\Gone\\x"), widePath(drive / "Gone" / "x"));
    // A drive the prefix does not map leads nowhere.
    EXPECT_FALSE(fs::exists(fs::path(registry.nativePath(u"Q:\\Program Files"))));
    EXPECT_EQ(registry.nativePath(u"/opt/fs9"), u"/opt/fs9");
    EXPECT_EQ(registry.nativePath(u"SimObjects\\Airplanes"), u"SimObjects\\Airplanes");
}

TEST(SimulatorRegistryPosix, Overrides)
{
    WinePrefix prefix;
    const ScopedVariable wine("WINEPREFIX", prefix.dir.path().string());
    const ScopedVariable fs9("FLEETWRIGHT_FS9_DIR", "/srv/FS9/");
    const ScopedVariable fsx("FLEETWRIGHT_FSX_DIR", "");
    const ScopedVariable appData("FLEETWRIGHT_APPDATA", "/home/pilot/appdata");
    const SimulatorRegistry registry;

    EXPECT_EQ(registry.GetRegistryValue(u"SOFTWARE\\Microsoft\\Microsoft Games\\Flight Simulator\\9.0", u"EXE Path"),
              u"/srv/FS9/");
    EXPECT_EQ(registry.GetRegistryValue(u"Software\\Wow6432Node\\Microsoft\\Microsoft Games\\Flight Simulator\\9.0",
                                        u"EXE PATH"),
              u"/srv/FS9/");
    EXPECT_EQ(
        registry.GetRegistryValue(u"Software\\Wow6432Node\\Microsoft\\Microsoft Games\\Flight Simulator\\9.0", u"Num"),
        u"10")
        << "other values still come from the registry";
    EXPECT_EQ(registry.GetRegistryValue(u"Software\\Wow6432Node\\Microsoft\\Microsoft Games\\Flight Simulator\\10.0",
                                        u"SetupPath"),
              u"")
        << "an empty variable hides the simulator";
    EXPECT_EQ(registry.GetSpecialFolder(platform::APPDATA_FOLDER), u"/home/pilot/appdata");
    EXPECT_EQ(registry.nativePath(u"/srv/FS9/"), u"/srv/FS9/");
}
