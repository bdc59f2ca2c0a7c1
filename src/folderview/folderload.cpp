#include "folderview/folderload.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string_view>

#include "core/arraysearch.h"
#include "core/clsinifile.h"
#include "core/paths.h"
#include "core/runtimeerror.h"
#include "core/vbtext.h"
#include "platform/filelookup.h"

namespace fleetwright {

const std::array<const char16_t *, EFFECT_COUNT> EFFECT_KEYS = {
    u"wake",    u"water",        u"dirt",         u"concrete",         u"touchdown",        u"contrail",
    u"startup", u"vaportrail_l", u"vaportrail_r", u"l_wingtipvortice", u"r_wingtipvortice",
};

namespace {

namespace fs = std::filesystem;
using platform::FileLookup;
using platform::LookupKind;

const std::u16string PROCEDURE = u"Dir1_Change";
const std::u16string DEFAULT_NAME = u"<default>";

// The keys that fill a grid column, in the order they are tested.
struct ColumnKey
{
    std::u16string_view key;
    std::size_t column;
};
constexpr ColumnKey COLUMN_KEYS[] = {
    {u"title", GridColumn::Title},
    {u"atc_parking_types", GridColumn::ParkingTypes},
    {u"atc_parking_codes", GridColumn::ParkingCodes},
    {u"ui_createdby", GridColumn::CreatedBy},
    {u"ui_typerole", GridColumn::TypeRole},
    {u"ui_manufacturer", GridColumn::Manufacturer},
    {u"ui_type", GridColumn::Type},
    {u"ui_variation", GridColumn::Variation},
    {u"model", GridColumn::Model},
    {u"sim", GridColumn::Sim},
    {u"atc_id", GridColumn::AtcId},
    {u"atc_flight_number", GridColumn::FlightNumber},
    {u"atc_airline", GridColumn::Airline},
    {u"atc_heavy", GridColumn::Heavy},
    {u"atc_model", GridColumn::AtcModel},
    {u"texture", GridColumn::Texture},
};

std::u16string slashesToBackslashes(std::u16string text)
{
    std::replace(text.begin(), text.end(), u'/', u'\\');
    return text;
}

// The model and texture columns: "/" becomes "\" before the comment is cut, so "sub/dir //x" shows
// "sub\dir \\x"; a value that is empty up to its comment shows "<default>".
std::u16string folderColumnText(const std::u16string &value)
{
    if (StripComment(value).empty())
        return DEFAULT_NAME;
    return StripComment(slashesToBackslashes(value));
}

// The run time's split: an empty text has no parts at all.
std::vector<std::u16string> splitAtCommas(const std::u16string &text)
{
    std::vector<std::u16string> parts;
    if (text.empty())
        return parts;
    std::size_t start = 0;
    for (;;) {
        const std::size_t comma = text.find(u',', start);
        parts.push_back(text.substr(start, comma == std::u16string::npos ? std::u16string::npos : comma - start));
        if (comma == std::u16string::npos)
            return parts;
        start = comma + 1;
    }
}

void paintStatus(PanelPaint &panel, int number, std::u16string text, PanelColour colour)
{
    panel = PanelPaint {number, std::move(text), colour, false};
}

// A drive root ("C:\", "/") has nothing behind its last separator.
bool isDriveRoot(const std::u16string &folder)
{
    return folder.empty() || endsWithSeparator(folder);
}

// The aircraft.cfg of folder as a plain file, under any spelling of case, or nothing.
std::optional<fs::path> aircraftCfgOf(const fs::path &folder)
{
    const std::optional<fs::path> resolved = FileLookup::resolve(folder / u"aircraft.cfg");
    std::error_code error;
    if (!resolved || !fs::is_regular_file(*resolved, error))
        return std::nullopt;
    return folder / resolved->filename();
}

// The state of one load that the form does not see.
class FolderReader
{
public:
    FolderReader(const FolderLoadInput &input, clsIniFile &ini, FolderLoadResult &result)
        : m_input(input)
        , m_ini(ini)
        , m_result(result)
    {}

    void readSections();

private:
    void readVariationSection(std::u16string &name, std::int32_t place);
    void readVariationKey(const std::u16string &key, std::int32_t place);
    void readEffectsSection(const std::u16string &name);
    void readOtherSection(const std::u16string &name);
    void readExit(std::size_t exit, const std::u16string &value);

    const FolderLoadInput &m_input;
    clsIniFile &m_ini;
    FolderLoadResult &m_result;
    // Exist from the first variation (title) on; until then nothing can match them.
    std::optional<std::vector<std::u16string>> m_seenSections;
    std::optional<std::vector<std::u16string>> m_seenTitles;
};

// Every section of the file, in file order, whatever its number: a gap changes nothing and nothing ends
// the walk early.
void FolderReader::readSections()
{
    std::vector<std::u16string> sections;
    std::int32_t count = 0;
    m_ini.EnumerateAllSections(sections, count);
    for (std::int32_t i = 1; i <= count; ++i) {
        std::u16string &name = sections[static_cast<std::size_t>(i - 1)];
        const std::u16string left7 = LCase(std::u16string_view(name).substr(0, 7));
        if (left7 == u"fltsim.")
            readVariationSection(name, i);
        else if (left7 == u"effects")
            readEffectsSection(name);
        else
            readOtherSection(name);
    }
}

// The duplicate test folds the name to capitals in the enumerated list itself, and the row and every read
// below use it so: the grid shows FLTSIM.0 for [fltsim.0], which is the look users know.
void FolderReader::readVariationSection(std::u16string &name, std::int32_t place)
{
    if (!m_seenSections) {
        name = UCase(name);
        m_seenSections.emplace();
    } else if (IsInArrayUpper(name, *m_seenSections)) {
        paintStatus(m_result.statusPanel, 9, u"AC Status: NOK", PanelColour::Red);
    }
    m_seenSections->resize(static_cast<std::size_t>(place) + 1);
    m_result.Descriptions.emplace_back();
    (*m_seenSections)[static_cast<std::size_t>(place)] = name;

    m_ini.setSection(name);
    GridRow &row = m_result.rows.emplace_back();
    row[GridColumn::Section] = StripComment(m_ini.Section());
    if (m_input.firstRowOnly && m_result.rows.size() > 1)
        return;
    std::vector<std::u16string> keys;
    std::int32_t count = 0;
    m_ini.EnumerateCurrentSection(keys, count);
    for (std::int32_t k = 0; k < count; ++k)
        readVariationKey(keys[static_cast<std::size_t>(k)], place);
}

void FolderReader::readVariationKey(const std::u16string &key, std::int32_t place)
{
    GridRow &row = m_result.rows.back();
    const std::u16string lowerKey = LCase(key);
    if (lowerKey == u"description") {
        m_ini.setKey(key);
        m_result.Descriptions.back() = m_ini.Value();
        return;
    }
    const auto column = std::find_if(std::begin(COLUMN_KEYS), std::end(COLUMN_KEYS),
                                     [&](const ColumnKey &entry) { return entry.key == lowerKey; });
    if (column == std::end(COLUMN_KEYS))
        return;
    m_ini.setKey(lowerKey);
    const std::u16string value = m_ini.Value();
    switch (column->column) {
    case GridColumn::ParkingTypes:
        row[column->column] = StripComment(UCase(value));
        break;
    case GridColumn::Model:
    case GridColumn::Texture:
        row[column->column] = folderColumnText(value);
        break;
    default:
        row[column->column] = StripComment(value);
        break;
    }

    if (column->column == GridColumn::Title) {
        // Titles are kept as written and looked for in capitals, so only titles without lower-case letters
        // can collide; users know the status by that.
        std::u16string folded = value;
        if (m_seenTitles && IsInArrayUpper(folded, *m_seenTitles))
            paintStatus(m_result.statusPanel, 9, u"AC Status: NOK", PanelColour::Red);
        if (!m_seenTitles)
            m_seenTitles.emplace();
        m_seenTitles->resize(static_cast<std::size_t>(place) + 1);
        (*m_seenTitles)[static_cast<std::size_t>(place)] = value;
    } else if (column->column == GridColumn::Sim && m_result.AirFileName.empty()) {
        m_result.AirFileName = value;
    }
}

// "wake=fx_wake, 1": the text up to the first comma fills the field, blanks included; ",1" anywhere in the
// value without its blanks checks the box.
void FolderReader::readEffectsSection(const std::u16string &name)
{
    m_ini.setSection(name);
    std::vector<std::u16string> keys;
    std::int32_t count = 0;
    m_ini.EnumerateCurrentSection(keys, count);
    for (std::int32_t k = 0; k < count; ++k) {
        const std::u16string &key = keys[static_cast<std::size_t>(k)];
        m_ini.setKey(key);
        const std::u16string value = m_ini.Value();
        std::u16string flat = value;
        std::erase(flat, u' ');
        const std::u16string text = value.substr(0, value.find(u','));
        const std::u16string lowerKey = LCase(key);
        for (std::size_t index = 0; index < EFFECT_COUNT; ++index) {
            if (lowerKey == EFFECT_KEYS[index]) {
                m_result.effectNames[index] = text;
                m_result.effectRunsOnce[index] = flat.find(u",1") != std::u16string::npos;
                break;
            }
        }
    }
}

void FolderReader::readOtherSection(const std::u16string &name)
{
    m_ini.setSection(name);
    std::vector<std::u16string> keys;
    std::int32_t count = 0;
    m_ini.EnumerateCurrentSection(keys, count);
    const bool general = LCase(name) == u"general";
    for (std::int32_t k = 0; k < count; ++k) {
        const std::u16string &key = keys[static_cast<std::size_t>(k)];
        const std::u16string lowerKey = LCase(key);
        m_ini.setKey(key);
        if (lowerKey == u"wing_span") {
            m_result.wingSpanText = numberText(Val(m_ini.Value()), m_input.decimalSeparator);
            m_result.WingSpanSection = name;
        }
        // Whatever goes wrong below is skipped until the key is done; handling the key also leaves the load
        // without its error handler for good.
        m_result.errorHandlerOn = false;
        if (lowerKey == u"exit.0" || lowerKey == u"exit.1" || lowerKey == u"exit.2")
            readExit(static_cast<std::size_t>(lowerKey[5] - u'0'), m_ini.Value());
        else if (general && lowerKey == u"atc_model")
            m_result.generalAtcModel = m_ini.Value();
        else if (general && lowerKey == u"atc_type")
            m_result.generalAtcType = m_ini.Value();
    }
}

// "exit.0=0.4, 12.1, -3, 4, 0  //Door 1L": five parts and a "//" note make a door that takes a jetway. A
// missing part or a missing note is an error that the load skips, and only an exit without one says "yes";
// the fields that were read keep their text either way.
void FolderReader::readExit(std::size_t exit, const std::u16string &value)
{
    bool errorStands = false;
    const std::vector<std::u16string> parts = splitAtCommas(value);
    std::array<std::u16string, 5> &fields = m_result.exitFields[exit];
    for (std::size_t k = 0; k < fields.size(); ++k) {
        if (k >= parts.size()) {
            errorStands = true;
            continue;
        }
        const std::u16string &part = parts[k];
        const std::u16string trimmed = Trim(part);
        // Cut at the first blank of the part as it stands, blank before the number and all, so " 0 // door"
        // gives "0" and " 12.5 //x" gives "1". Kept as users have always seen it.
        if (trimmed.find(u' ') != std::u16string::npos)
            fields[k] = trimmed.substr(0, part.find(u' ') + 1);
        else
            fields[k] = trimmed;
    }
    const std::size_t note = value.find(u"//");
    if (note == std::u16string::npos)
        errorStands = true;
    else
        (exit == 0 ? m_result.ExitNote0 : m_result.ExitNote1) = value.substr(note);
    if (!errorStands)
        m_result.jetways = {u"Jetways possible: yes", COLOUR_GREEN};
}

// The current fields of a row, read from the file and not from the grid, as a click on the row reads them.
CurrentFields readCurrentFields(clsIniFile &ini, const std::u16string &rowText)
{
    CurrentFields current;
    ini.setSection(rowText);
    ini.setKey(u"texture");
    current.texture = StripComment(slashesToBackslashes(ini.Value()));
    if (current.texture.empty())
        current.texture = DEFAULT_NAME;
    ini.setKey(u"model");
    current.model = StripComment(slashesToBackslashes(ini.Value()));
    if (current.model.empty())
        current.model = DEFAULT_NAME;
    ini.setKey(u"sim");
    current.airFile = StripComment(ini.Value());
    if (current.airFile.empty())
        current.airFile = u"<none>";
    return current;
}

// "texture.KLM" lists as "KLM", the plain "texture" as "<default>"; folders and files alike, so a file
// "texture.txt" lists as "txt". Listing order, nothing sorted or merged.
void listFolderFiles(const fs::path &folder, FolderLoadResult &result)
{
    const FileLookup textures(folder / u"texture.*", LookupKind::FilesAndFolders);
    for (const std::u16string &name : textures.names())
        result.textureChoices.push_back(name.size() == 7 ? DEFAULT_NAME : name.size() > 8 ? name.substr(8) : u"");
    const FileLookup models(folder / u"model.*", LookupKind::FilesAndFolders);
    for (const std::u16string &name : models.names())
        result.modelChoices.push_back(name.size() == 5 ? DEFAULT_NAME : name.size() > 6 ? name.substr(6) : u"");
    const FileLookup airFiles(folder / u"*.air", LookupKind::Files);
    for (const std::u16string &name : airFiles.names()) {
        const std::u16string stem = name.substr(0, name.find(u'.'));
        result.airFileChoices.push_back(stem);
        result.folderAirFiles.push_back(stem);
    }
}

} // namespace

void readAircraftFolder(const FolderLoadInput &input, clsIniFile &AircraftIni, FolderLoadResult &result)
{
    result = FolderLoadResult {};
    result.ExitNote0 = input.ExitNote0;
    result.ExitNote1 = input.ExitNote1;
    result.WingSpanSection = input.WingSpanSection;
    const fs::path folder(input.folder);

    // Aircraft test.
    const std::optional<fs::path> aircraftCfg = aircraftCfgOf(folder);
    result.isAircraftFolder = aircraftCfg.has_value();
    if (!aircraftCfg) {
        paintStatus(result.folderPanel, 8, u"AC Folder", PanelColour::Red);
        result.jetways = {u"Jetways possible: n/a", COLOUR_NO_ROW};
    } else {
        paintStatus(result.statusPanel, 9, u"AC Status: OK", PanelColour::Green);
        paintStatus(result.folderPanel, 8, u"AC Folder", PanelColour::Green);
        result.upwardsEnabled = !isDriveRoot(input.folder);
        AircraftIni.setPath(aircraftCfg->u16string());
        // One parse for the whole load; nothing is written.
        clsIniFile::Batch batch(AircraftIni);
        try {
            FolderReader(input, AircraftIni, result).readSections();
        } catch (RuntimeError &error) {
            error.setProcedure(PROCEDURE);
            throw;
        }
        // The first row's current fields, read from the file as a click reads them.
        if (!result.rows.empty())
            result.current = readCurrentFields(AircraftIni, result.rows.front()[GridColumn::Section]);
    }

    // Settled by the number of rows, aircraft folder or not.
    const std::size_t n = result.rows.size();
    const bool any = n > 0;
    result.menus = {any, any, any, any, any, !any};
    for (std::size_t exit = 0; exit < result.exitFields.size(); ++exit) {
        const auto &fields = result.exitFields[exit];
        result.exitComplete[exit] = std::none_of(fields.begin(), fields.end(), [](const auto &f) { return f.empty(); });
    }
    result.fieldsWhite = any;
    if (any) {
        result.pathSetting = input.folder;
        result.selectedRow = 0;
        result.deleteCommandText = u"&Delete [fltsim.0]";
        result.rowToOpen = 0;
    } else {
        result.deleteCommandText = u"&Delete [fltsim.x]";
        paintStatus(result.statusPanel, 9, u"AC Status: n/a", PanelColour::Grey);
    }
    std::string countText = std::to_string(n);
    result.variationCountText = std::u16string(countText.begin(), countText.end()) + u" aircraft variations defined";

    // What stands beside the aircraft.
    listFolderFiles(folder, result);
    if (!result.folderAirFiles.empty())
        result.selectedFolderAirFile = 0;
    result.editorTabStop = any;
}

FolderLoadResult readAircraftFolder(const FolderLoadInput &input, clsIniFile &AircraftIni)
{
    FolderLoadResult result;
    readAircraftFolder(input, AircraftIni, result);
    return result;
}

} // namespace fleetwright
