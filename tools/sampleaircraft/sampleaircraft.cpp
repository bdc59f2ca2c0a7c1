// Writes the sample aircraft "Corvane Skyliner 200" into the folder named on the command line, then reads it
// back through the engine and fails when the engine does not see what was meant to be there.
//
//     fleetwright-sampleaircraft "build/src/app/Sample Aircraft/Corvane Skyliner 200"
//
// Everything in it is made up: the aircraft, the airlines, the registrations. Text files are Windows-1252 with
// CR LF, as the simulators' own files are.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "platform/codepage.h"
#include "simfiles/airfile.h"
#include "simfiles/modelfile.h"

namespace fs = std::filesystem;
using namespace fleetwright;

namespace {

constexpr std::uint8_t MODEL_RADIUS = 18;

struct Variation
{
    const char16_t *texture; // empty: the default folder "texture"
    const char16_t *airline; // as the title and ui_variation show it
    const char16_t *atcAirline;
    const char16_t *flightNumber;
    const char16_t *registration;
    const char16_t *parkingCodes;
    const char16_t *description;
};

const Variation VARIATIONS[] = {
    {u"", u"House Colours", u"CORVANE", u"200", u"CV-SKA", u"CVT",
     u"The Skyliner 200 in the colours of its maker, as flown on delivery and demonstration flights."},
    {u"amberfield", u"Amberfield Air", u"AMBERFIELD", u"412", u"CV-SKB", u"AMF",
     u"Amberfield Air flies the Skyliner 200 on its busy commuter routes between the northern lake towns."},
    {u"solvanger", u"Solvanger Regional", u"SOLVANGER", u"1207", u"CV-SKC", u"SLV",
     u"Solvanger Regional links the islands of the western coast, six days a week."},
    {u"kestrelline", u"Kestrelline", u"KESTRELLINE", u"88", u"CV-SKD", u"KSL",
     u"Kestrelline leases its aircraft in the maker's colours and adds its name on the fuselage only."},
};

void writeFile(const fs::path &path, std::string_view bytes)
{
    fs::create_directories(path.parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out)
        throw std::runtime_error("cannot write " + path.string());
}

// Lines of a text file: Windows-1252, CR LF.
void writeText(const fs::path &path, const std::vector<std::u16string> &lines)
{
    std::u16string text;
    for (const std::u16string &line : lines)
        text += line + u"\r\n";
    writeFile(path, platform::toCodePage(text));
}

std::string int32Bytes(std::int32_t value)
{
    const auto bits = static_cast<std::uint32_t>(value);
    return {static_cast<char>(bits & 0xFF), static_cast<char>((bits >> 8) & 0xFF),
            static_cast<char>((bits >> 16) & 0xFF), static_cast<char>(bits >> 24)};
}

std::vector<std::u16string> aircraftCfg()
{
    std::vector<std::u16string> lines = {
        u"// Corvane Skyliner 200, a sample aircraft of Fleetwright. \u00A9 Corvane Tools, free to copy and change.",
        u"// The aircraft, its airlines and registrations are made up.",
        u"",
    };
    for (std::size_t i = 0; i < std::size(VARIATIONS); ++i) {
        const Variation &v = VARIATIONS[i];
        const std::u16string number(1, static_cast<char16_t>(u'0' + i));
        lines.insert(lines.end(),
                     {
                         u"[fltsim." + number + u"]",
                         u"title=Corvane Skyliner 200 " + std::u16string(v.airline),
                         u"sim=skyliner200",
                         u"model=",
                         u"panel=",
                         u"sound=",
                         u"texture=" + std::u16string(v.texture),
                         u"kb_checklists=",
                         u"kb_reference=",
                         u"atc_id=" + std::u16string(v.registration),
                         u"atc_airline=" + std::u16string(v.atcAirline),
                         u"atc_flight_number=" + std::u16string(v.flightNumber),
                         u"atc_heavy=0",
                         u"atc_parking_types=GATE,RAMP",
                         u"atc_parking_codes=" + std::u16string(v.parkingCodes),
                         u"ui_manufacturer=Corvane",
                         u"ui_type=Skyliner 200",
                         u"ui_variation=" + std::u16string(v.airline),
                         u"ui_typerole=Regional Airliner",
                         u"ui_createdby=Corvane Tools",
                         u"description=" + std::u16string(v.description),
                         u"",
                     });
    }
    lines.insert(lines.end(),
                 {
                     u"[general]",
                     u"atc_type=CORVANE",
                     u"atc_model=SK200",
                     u"editable=1",
                     u"",
                     u"[airplane_geometry]",
                     u"wing_area=760.0",
                     u"wing_span=94.5",
                     u"wing_root_chord=11.2",
                     u"",
                     u"[exits]",
                     u"number_of_exits=2",
                     u"exit_rate.0=0.4",
                     u"exit_rate.1=0.4",
                     u"exit.0=0.4, 31.6, -5.8, 4.2, 0            //Main door",
                     u"exit.1=0.4, -33.0, 5.8, 4.2, 1            //Service door",
                     u"",
                     u"[effects]",
                     u"wake=fx_wake",
                     u"water=fx_spray",
                     u"dirt=fx_tchdrt",
                     u"concrete=fx_sparks",
                     u"touchdown=fx_tchdwn_s, 1",
                     u"",
                 });
    return lines;
}

// A 4 x 4 pixel, 24-bit bitmap of one colour: enough for a texture folder to hold an image.
std::string bitmap(std::uint8_t red, std::uint8_t green, std::uint8_t blue)
{
    constexpr int SIDE = 4;
    constexpr std::int32_t PIXEL_BYTES = SIDE * SIDE * 3; // rows of 12 bytes need no padding
    std::string bytes = "BM" + int32Bytes(14 + 40 + PIXEL_BYTES) + int32Bytes(0) + int32Bytes(14 + 40);
    bytes += int32Bytes(40) + int32Bytes(SIDE) + int32Bytes(SIDE) + std::string("\x01\x00\x18\x00", 4) + int32Bytes(0)
        + int32Bytes(PIXEL_BYTES) + int32Bytes(2835) + int32Bytes(2835) + int32Bytes(0) + int32Bytes(0);
    for (int pixel = 0; pixel < SIDE * SIDE; ++pixel)
        bytes += {static_cast<char>(blue), static_cast<char>(green), static_cast<char>(red)};
    return bytes;
}

// A RIFF model of the FS9 kind: the tag "MDL9" at offset 8, then the header chunk whose ninth byte, at file
// offset 28, is the radius.
std::string model()
{
    std::string header(36, '\0');
    header[0] = 1; // header version
    header[8] = static_cast<char>(MODEL_RADIUS);
    const std::string chunks =
        "MDLH" + int32Bytes(static_cast<std::int32_t>(header.size())) + header + "MDLD" + int32Bytes(0);
    return "RIFF" + int32Bytes(static_cast<std::int32_t>(4 + chunks.size())) + "MDL9" + chunks;
}

std::string record(std::int32_t type, const std::string &payload)
{
    return int32Bytes(type) + int32Bytes(static_cast<std::int32_t>(payload.size())) + payload;
}

// A flight model in the record form the simulators read: a name record, a few records of numbers, the
// aircraft section 0x105 with type 0 (Normal), and more records behind it.
std::string airFile()
{
    std::string numbers;
    for (int i = 0; i < 24; ++i)
        numbers += int32Bytes(1000 + 37 * i);
    return record(0x1, std::string("Skyliner 200\0\0\0\0", 16)) + record(0x101, numbers.substr(0, 40))
        + record(0x102, "") + record(AIRCRAFT_RECORD_TYPE, int32Bytes(0) + numbers.substr(40, 12))
        + record(0x1101, numbers.substr(52));
}

void write(const fs::path &folder)
{
    writeText(folder / "aircraft.cfg", aircraftCfg());
    writeText(folder / "model" / "model.cfg", {u"[models]", u"normal=skyliner200"});
    writeFile(folder / "model" / "skyliner200.mdl", model());
    writeFile(folder / "skyliner200.air", airFile());
    writeFile(folder / "texture" / "skyliner200_t.bmp", bitmap(0x1E, 0x3C, 0x78));
    writeFile(folder / "texture.amberfield" / "skyliner200_t.bmp", bitmap(0xE0, 0x9A, 0x1C));
    writeFile(folder / "texture.solvanger" / "skyliner200_t.bmp", bitmap(0x2A, 0x8F, 0x6B));
    // Kestrelline flies the house colours: its folder borrows the default textures.
    writeText(folder / "texture.kestrelline" / "texture.cfg", {u"[fltsim]", u"fallback.1=..\\texture"});
}

// What the program will see of the folder, through its own reading code.
bool check(const fs::path &folder)
{
    NeverAskDialogs dialogs;
    bool ok = true;
    const auto fail = [&ok](const std::string &what) {
        std::cerr << "sample aircraft: " << what << '\n';
        ok = false;
    };

    clsIniFile ini;
    ini.setPath((folder / "aircraft.cfg").u16string());
    std::vector<std::u16string> sections;
    std::int32_t count = 0;
    ini.EnumerateAllSections(sections, count);
    std::int32_t variations = 0;
    for (const std::u16string &section : sections)
        variations += section.starts_with(u"fltsim.") ? 1 : 0;
    if (variations != static_cast<std::int32_t>(std::size(VARIATIONS)))
        fail("aircraft.cfg does not read as " + std::to_string(std::size(VARIATIONS)) + " variations");

    AirFileState air {u"skyliner200", 0};
    if (ReadAirFile(folder.u16string(), air, dialogs).selected != AirType::Normal)
        fail("the air file does not read as a normal aircraft");

    const ModelConfig config = resolveModelName(folder.u16string(), u"<default>", dialogs);
    const ModelFileReading reading = readModelFile(folder.u16string(), u"<default>", config.modelName);
    const std::string radius = std::to_string(MODEL_RADIUS);
    if (reading.versionText != u"FS8/9" || reading.RadiusOnLoad != std::u16string(radius.begin(), radius.end()))
        fail("the model does not read as an FS8/9 model of radius " + radius);
    if (!dialogs.messages().empty())
        fail("reading the sample showed a message box");
    return ok;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::cerr << "usage: fleetwright-sampleaircraft FOLDER\n";
        return 2;
    }
    const fs::path folder = fs::absolute(fs::path(argv[1]));
    try {
        write(folder);
    } catch (const std::exception &error) {
        std::cerr << "sample aircraft: " << error.what() << '\n';
        return 1;
    }
    return check(folder) ? 0 : 1;
}
