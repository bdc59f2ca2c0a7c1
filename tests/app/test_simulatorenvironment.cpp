// Simulator detection at start-up, with registry values of the test's own and drive C: in a temporary folder.
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/simulatorenvironment.h"
#include "common/tempdir.h"
#include "core/runtimeerror.h"

using namespace fleetwright;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;
using Lines = std::vector<std::u16string>;

namespace {

const std::u16string WOW = u"SOFTWARE\\Wow6432Node\\Microsoft\\";
const std::u16string FS9_KEY = WOW + u"Microsoft Games\\Flight Simulator\\9.0|EXE Path";
const std::u16string FSX_KEY = WOW + u"Microsoft Games\\Flight Simulator\\10.0|SetupPath";

struct Machine : platform::RegistryReader
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

} // namespace

TEST(SimulatorEnvironment, NeitherSimulator)
{
    // No value, a blank one, a folder that has gone; values under the other prefix are not looked at.
    for (const std::u16string value : {u"", u"   ", u"C:\\Gone\\"}) {
        Machine machine;
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
    Machine machine;
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
    Machine fs9;
    fs9.values[FS9_KEY] = u"C:\\FS9\\\\";
    writeBytes(fs9.c / "FS9" / "airlines.cfg", "[Airlines]"); // not in Aircraft, where it belongs
    fs::create_directories(fs9.c / "FS9" / "Aircraft");
    SimulatorEnvironment env = fs9.detect();
    EXPECT_EQ(env.Fs9Folder, u"C:\\FS9\\") << "one backslash is cut, the second stays";
    EXPECT_TRUE(env.fs9OptionEnabled && env.fs9OptionSelected && !env.fsxOptionEnabled && !env.Fs9Found);
    EXPECT_TRUE(env.Fs9AirlinesPath.empty() && env.Fs9Airlines.empty());
    EXPECT_EQ(env.panelPaints, paints(PanelColour::Red, PanelColour::Red, PanelColour::Green, PanelColour::Red));

    Machine fsx;
    fsx.values[FSX_KEY] = u"C:\\FSX";
    fs::create_directories(fsx.c / "FSX" / "SimObjects");
    env = fsx.detect();
    EXPECT_TRUE(env.fsxOptionSelected && !env.FsxFound);
    EXPECT_FALSE(env.simFolderEnabled.has_value()) << "nothing in SimObjects: the combo keeps its design state";
    EXPECT_FALSE(env.FsxCfgPath.empty()) << "set although the file does not exist";
}

TEST(SimulatorEnvironment, SimObjectPathsOfFsxCfg)
{
    Machine machine;
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
    for (const std::string &content : {std::string("[Main]\r\nUser Objects=Airplane\r\n"),
                                       std::string("MDMP\x00\x01\xFF\xFE[\x80]\r\n\x00=\x00\x1A", 20), std::string()}) {
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
