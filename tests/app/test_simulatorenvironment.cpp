// Simulator detection at start-up, with registry values of the test's own and simulator folders in a
// temporary folder.
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "app/simulatorenvironment.h"
#include "core/runtimeerror.h"
#include "common/tempdir.h"

using namespace fleetwright;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;
using namespace std::string_literals;

namespace {

const std::u16string WOW = u"SOFTWARE\\Wow6432Node\\Microsoft\\";
const std::u16string FS9_KEY = u"Microsoft Games\\Flight Simulator\\9.0";
const std::u16string FSX_KEY = u"Microsoft Games\\Flight Simulator\\10.0";

// Registry values by key and name; drive "C:" of the Windows paths is a folder of the test.
class FakeRegistry : public platform::RegistryReader
{
public:
    explicit FakeRegistry(fs::path driveC)
        : m_driveC(std::move(driveC))
    {}

    void set(const std::u16string &key, const std::u16string &name, const std::u16string &value)
    {
        m_values[key + u"|" + name] = value;
    }

    std::u16string GetRegistryValue(std::u16string_view key, std::u16string_view name) const override
    {
        const auto found = m_values.find(std::u16string(key) + u"|" + std::u16string(name));
        return found == m_values.end() ? std::u16string() : found->second;
    }

    std::u16string nativePath(std::u16string_view windowsPath) const override
    {
        if (windowsPath.size() < 2 || windowsPath[1] != u':')
            return std::u16string(windowsPath);
        std::u16string path = widePath(m_driveC);
        for (const char16_t ch : windowsPath.substr(2))
            path.push_back(ch == u'\\' ? static_cast<char16_t>(fs::path::preferred_separator) : ch);
        return path;
    }

private:
    fs::path m_driveC;
    std::map<std::u16string, std::u16string> m_values;
};

// One machine: drive C, the user's application data, and the registry.
struct Machine
{
    TempDir dir;
    fs::path c = dir / "c";
    fs::path appData = dir / "appdata";
    FakeRegistry registry {c};

    void installFsx(const std::u16string &value = u"C:\\FSX\\")
    {
        registry.set(WOW + FSX_KEY, u"SetupPath", value);
        fs::create_directories(c / "FSX" / "SimObjects");
    }
    void installFs9(const std::u16string &value = u" C:\\FS9 ")
    {
        registry.set(WOW + FS9_KEY, u"EXE Path", value);
        fs::create_directories(c / "FS9" / "Aircraft");
    }
    void writeFsxCfg(const std::string &content) { writeBytes(appData / "Microsoft" / "FSX" / "fsx.cfg", content); }
    SimulatorEnvironment detect() const { return SimulatorEnvironment::detect(registry, WOW, widePath(appData)); }
};

bool sameFolder(const std::u16string &a, const fs::path &b)
{
    std::error_code error;
    return fs::equivalent(fs::path(a), b, error);
}

} // namespace

TEST(SimulatorEnvironment, NeitherSimulator)
{
    // No value, a blank one, a folder that has gone, and values under the other prefix only.
    const std::vector<std::pair<std::u16string, std::u16string>> cases = {
        {u"", u""},
        {u"   ", u"  "},
        {u"C:\\Gone\\", u"C:\\Gone"},
    };
    for (const auto &[fsxValue, fs9Value] : cases) {
        SCOPED_TRACE(fsxValue.size());
        Machine machine;
        machine.registry.set(WOW + FSX_KEY, u"SetupPath", fsxValue);
        machine.registry.set(WOW + FS9_KEY, u"EXE Path", fs9Value);
        machine.registry.set(u"SOFTWARE\\Microsoft\\" + FSX_KEY, u"SetupPath", u"C:\\FSX");
        fs::create_directories(machine.c / "FSX" / "SimObjects");
        const SimulatorEnvironment env = machine.detect();

        const std::vector<PanelPaint> paints = {
            {5, u"n/a", PanelColour::Red, false},
            {6, u"ATC", PanelColour::Red, false},
            {2, u"n/a", PanelColour::Red, true},
            {3, u"ATC", PanelColour::Red, false},
        };
        EXPECT_EQ(env.panelPaints, paints);
        EXPECT_FALSE(env.fsxOptionEnabled || env.fsxOptionSelected || env.fs9OptionEnabled || env.fs9OptionSelected);
        EXPECT_EQ(env.simFolderEnabled, false);
        EXPECT_TRUE(env.simFolderEntries.empty() && env.SimFolderPaths.empty());
        EXPECT_FALSE(env.FsxFound || env.Fs9Found);
        EXPECT_TRUE(env.Fs9AircraftRoot.empty() && env.FsxSimObjectsRoot.empty() && env.FsxCfgPath.empty());
        EXPECT_TRUE(env.skippedErrors.empty());
    }
}

TEST(SimulatorEnvironment, BothSimulators)
{
    Machine machine;
    machine.installFsx();
    machine.installFs9();
    writeBytes(machine.c / "FSX" / "airlines.cfg", "[Airlines]\r\nname=Caf\xE9\r\nx=a\nb\r\n");
    writeBytes(machine.c / "FS9" / "Aircraft" / "airlines.cfg", "[Airlines]");
    const fs::path simObjects = machine.c / "FSX" / "SimObjects";
    fs::create_directories(simObjects / "Rotorcraft");
    fs::create_directories(simObjects / "Airplanes");
    fs::create_directories(simObjects / "Airplanes.old");
    writeBytes(simObjects / "notes", "a file without a point is listed too");
    writeBytes(simObjects / "readme.txt", "");

    const SimulatorEnvironment env = machine.detect();
    const std::vector<PanelPaint> paints = {
        {5, u"found", PanelColour::Green, false},
        {6, u"ATC", PanelColour::Green, false},
        {2, u"found", PanelColour::Green, true},
        {3, u"ATC", PanelColour::Green, false},
    };
    EXPECT_EQ(env.panelPaints, paints);
    EXPECT_TRUE(env.fsxOptionEnabled && env.fsxOptionSelected);
    EXPECT_TRUE(env.fs9OptionEnabled);
    EXPECT_FALSE(env.fs9OptionSelected) << "FSX takes the selection";

    EXPECT_EQ(env.FsxFolder, u"C:\\FSX");
    EXPECT_EQ(env.Fs9Folder, u"C:\\FS9");
    EXPECT_TRUE(sameFolder(env.FsxSimObjectsRoot, simObjects));
    EXPECT_TRUE(sameFolder(env.Fs9AircraftRoot, machine.c / "FS9" / "Aircraft"));
    EXPECT_EQ(fs::path(env.FsxEffectsFolder).filename(), "Effects");
    EXPECT_EQ(fs::path(env.Fs9EffectsFolder).filename(), "Effects");

    EXPECT_TRUE(env.FsxFound && env.Fs9Found);
    const std::vector<std::u16string> fsxLines = {u"[Airlines]", u"name=Caf\u00E9", u"x=a\nb", u""};
    EXPECT_EQ(env.FsxAirlines, fsxLines);
    EXPECT_EQ(env.Fs9Airlines, std::vector<std::u16string> {u"[Airlines]"});
    EXPECT_EQ(fs::path(env.FsxAirlinesPath), fs::path(machine.c / "FSX" / "airlines.cfg"));

    // No fsx.cfg: the folder scan stands, names without a point in listing order.
    const std::vector<std::u16string> entries = {u"Airplanes", u"notes", u"Rotorcraft"};
    EXPECT_EQ(env.simFolderEntries, entries);
    ASSERT_EQ(env.SimFolderPaths.size(), 3u);
    EXPECT_TRUE(sameFolder(env.SimFolderPaths[2], simObjects / "Rotorcraft"));
    EXPECT_EQ(env.simFolderEnabled, true);
    EXPECT_EQ(fs::path(env.FsxCfgPath), fs::path(machine.appData / "Microsoft" / "FSX" / "fsx.cfg"));
}

TEST(SimulatorEnvironment, OneSimulatorAndMissingAirlines)
{
    {
        SCOPED_TRACE("FS9 alone, airlines.cfg in its top folder, two trailing backslashes");
        Machine machine;
        machine.installFs9(u"C:\\FS9\\\\");
        writeBytes(machine.c / "FS9" / "airlines.cfg", "[Airlines]");
        const SimulatorEnvironment env = machine.detect();
        EXPECT_EQ(env.Fs9Folder, u"C:\\FS9\\") << "one backslash is cut, the second stays";
        EXPECT_TRUE(sameFolder(env.Fs9AircraftRoot, machine.c / "FS9" / "Aircraft"));
        EXPECT_TRUE(env.fs9OptionEnabled && env.fs9OptionSelected);
        EXPECT_FALSE(env.fsxOptionEnabled);
        EXPECT_FALSE(env.Fs9Found);
        EXPECT_TRUE(env.Fs9AirlinesPath.empty() && env.Fs9Airlines.empty());
        const std::vector<PanelPaint> paints = {
            {5, u"n/a", PanelColour::Red, false},
            {6, u"ATC", PanelColour::Red, false},
            {2, u"found", PanelColour::Green, true},
            {3, u"ATC", PanelColour::Red, false},
        };
        EXPECT_EQ(env.panelPaints, paints);
    }
    {
        SCOPED_TRACE("FSX alone, no airlines.cfg, nothing in SimObjects, an empty airlines.cfg of FS9 elsewhere");
        Machine machine;
        machine.installFsx();
        const SimulatorEnvironment env = machine.detect();
        EXPECT_TRUE(env.fsxOptionEnabled && env.fsxOptionSelected);
        EXPECT_FALSE(env.FsxFound);
        EXPECT_EQ(env.panelPaints.at(1), (PanelPaint {6, u"ATC", PanelColour::Red, false}));
        EXPECT_FALSE(env.simFolderEnabled.has_value()) << "the combo keeps its design state";
        EXPECT_FALSE(env.FsxCfgPath.empty()) << "set although the file does not exist";
    }
}

TEST(SimulatorEnvironment, SimObjectPathsOfFsxCfg)
{
    Machine machine;
    machine.installFsx();
    const fs::path fsx = machine.c / "FSX";
    fs::create_directories(fsx / "SimObjects" / "Airplanes");
    fs::create_directories(fsx / "SimObjects" / "Rotorcraft");
    fs::create_directories(fsx / "extra");
    fs::create_directories(machine.c / "AI Traffic");
    machine.writeFsxCfg("[Main]\r\n"
                        "SimObjectPaths.0=SimObjects\\Airplanes\r\n"
                        "Visibility=1\r\n"
                        "SimObjectPaths.1=SimObjects\\Gone\r\n"
                        "SIMOBJECTPATHS.2=C:\\AI Traffic\r\n"
                        "SimObjectPaths.3=SimObjects\\Airplanes\r\n"
                        "SimObjectPaths.4=Extra\r\n"
                        "SimObjectPaths.5=Extra\r\n"
                        "SimObjectPaths.6=extra\r\n"
                        "SimObjectPaths.7=EXTRA\r\n"
                        "[Other]\r\n"
                        "SimObjectPaths.8=SimObjects\\Rotorcraft\r\n");

    const SimulatorEnvironment env = machine.detect();
    // A gone folder is left out. The duplicate test compares the lower-cased name, without "simobjects\", with
    // the raw entries: the prefixed value and "Extra" come in twice; "EXTRA" is "extra", which is listed.
    const std::vector<std::u16string> entries = {
        u"SimObjects\\Airplanes", u"C:\\AI Traffic", u"SimObjects\\Airplanes", u"Extra", u"Extra", u"extra",
    };
    EXPECT_EQ(env.simFolderEntries, entries);
    ASSERT_EQ(env.SimFolderPaths.size(), entries.size());
    EXPECT_TRUE(sameFolder(env.SimFolderPaths[0], fsx / "SimObjects" / "Airplanes"));
    EXPECT_EQ(env.SimFolderPaths[1], machine.registry.nativePath(u"C:\\AI Traffic"))
        << "an absolute value keeps its case";
    EXPECT_TRUE(sameFolder(env.SimFolderPaths[3], fsx / "extra"));
    if (fs::path::preferred_separator == '\\') {
        EXPECT_EQ(env.SimFolderPaths[0], widePath(fsx) + u"\\simobjects\\airplanes") << "relative values lower-cased";
    }
    EXPECT_EQ(env.simFolderEnabled, true) << "enabled by the folder scan";
    EXPECT_TRUE(env.skippedErrors.empty());
}

TEST(SimulatorEnvironment, FsxCfgWithoutPaths)
{
    const std::vector<std::pair<const char *, std::string>> files = {
        {"no SimObjectPaths keys", "[Main]\r\nUser Objects=Airplane, Helicopter\r\n[Display]\r\nx=1\r\n"},
        {"binary", "MDMP\x00\x01\xFF\xFE[\x80\x81]\r\n\x00=\x00\x1A"s},
        {"empty", ""},
    };
    for (const auto &[name, content] : files) {
        SCOPED_TRACE(name);
        Machine machine;
        machine.installFsx();
        fs::create_directories(machine.c / "FSX" / "SimObjects" / "Airplanes");
        machine.writeFsxCfg(content);
        const SimulatorEnvironment env = machine.detect();
        EXPECT_TRUE(env.simFolderEntries.empty()) << "the file replaces the scan";
        EXPECT_TRUE(env.SimFolderPaths.empty());
        EXPECT_EQ(env.simFolderEnabled, true) << "the scan had entries";
        EXPECT_TRUE(env.fsxOptionSelected);
    }
}

TEST(SimulatorEnvironment, CheckIfExistInCombo)
{
    const std::vector<std::u16string> entries = {u"SimObjects\\Airplanes", u"extra"};
    EXPECT_TRUE(CheckIfExistInCombo(entries, u"extra"));
    EXPECT_FALSE(CheckIfExistInCombo(entries, u"simobjects\\airplanes")) << "exact case";
    EXPECT_FALSE(CheckIfExistInCombo(entries, u"extra "));
    EXPECT_FALSE(CheckIfExistInCombo({}, u""));

    std::vector<std::u16string> many(32767, u"x");
    EXPECT_FALSE(CheckIfExistInCombo(many, u"y"));
    many.push_back(u"y");
    EXPECT_TRUE(CheckIfExistInCombo(many, u"y")) << "the last index the counter reaches";
    try {
        CheckIfExistInCombo(many, u"z");
        ADD_FAILURE() << "the counter does not overflow";
    } catch (const RuntimeError &error) {
        EXPECT_EQ(error.number(), 6);
    }
}

TEST(SimulatorEnvironment, SplitAtCrLfAndPrefix)
{
    EXPECT_EQ(splitAtCrLf(u"a\r\nb\r\n"), (std::vector<std::u16string> {u"a", u"b", u""}));
    EXPECT_EQ(splitAtCrLf(u"a\rb\n\r\r\n"), (std::vector<std::u16string> {u"a\rb\n\r", u""}));
    EXPECT_EQ(splitAtCrLf(u"\r\n"), (std::vector<std::u16string> {u"", u""}));
    EXPECT_TRUE(splitAtCrLf(u"").empty());

    EXPECT_EQ(registryPrefixFor(true), u"SOFTWARE\\Wow6432Node\\Microsoft\\");
    EXPECT_EQ(registryPrefixFor(false), u"SOFTWARE\\Microsoft\\");
}
