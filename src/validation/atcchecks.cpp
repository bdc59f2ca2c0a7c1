// The checks that need the installed simulator: ATC airlines and effect files.

#include <array>
#include <utility>

#include "core/arraysearch.h"
#include "core/clsinifile.h"
#include "core/paths.h"
#include "core/runtimeerror.h"
#include "core/vbtext.h"
#include "platform/filelookup.h"
#include "simfiles/binaryfile.h"
#include "validation/validationstate.h"

namespace fleetwright {

namespace {

bool IsListedAirline(const std::vector<std::u16string> &list, const std::u16string &needle)
{
    std::u16string joined(1, ListSeparator);
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (i > 0)
            joined += ListSeparator;
        joined += list[i];
    }
    joined += ListSeparator;
    return UCase(joined).find(needle) != std::u16string::npos;
}

bool startsWith(std::u16string_view text, std::u16string_view start)
{
    return text.substr(0, start.size()) == start;
}

// The file an effect key stands for when its value is only a switch. Keys without one (fueldump,
// snowskitrack and unknown keys) keep the file of the key before.
const std::u16string *defaultEffectFile(const std::u16string &key)
{
    static const std::array<std::pair<std::u16string, std::u16string>, 24> defaults {{
        {u"wake", u"fx_wake"},
        {u"water", u"fx_spray"},
        {u"waterspeed", u"fx_spray"},
        {u"dirt", u"fx_tchdrt"},
        {u"concrete", u"fx_sparks"},
        {u"touchdown", u"fx_tchdwn"},
        {u"contrail", u"fx_contrail_l"},
        {u"startup", u"fx_engstrt"},
        {u"landrotorwash", u"fx_rtr_lnd"},
        {u"waterrotorwash", u"fx_rtr_wtr"},
        {u"vaportrail_l", u"fx_vaportrail_l"},
        {u"vaportrail_r", u"fx_vaportrail_r"},
        {u"l_wingtipvortice", u"fx_wingtipvortice_l"},
        {u"r_wingtipvortice", u"fx_wingtipvortice_r"},
        {u"enginefire", u"fx_engfire"},
        {u"enginedamage", u"fx_engsmoke"},
        {u"engineoilleak", u"fx_oilLeak"},
        {u"skidpavement", u"fx_skidmark"},
        {u"wheelsnowspray", u"fx_wheelsnowspray"},
        {u"wheelwetspray", u"fx_wheelwetspray"},
        {u"wetenginewash", u"fx_wetenginewash"},
        {u"snowenginewash", u"fx_snowenginewash"},
        {u"waterballastdrain", u"fx_waterballastdrain"},
        {u"pistonfailure", u"fx_pistonfailure"},
    }};
    const std::u16string lower = LCase(key);
    for (const auto &[name, file] : defaults)
        if (name == lower)
            return &file;
    return nullptr;
}

} // namespace

void evaluateAirline(RunState &state, SectionRecord &record)
{
    const std::u16string &airline = record.airline.value_or(std::u16string());
    if (!airline.empty()
        && IsListedAirline(state.AirlineList, std::u16string(1, ListSeparator) + airline + ListSeparator)) {
        record.airlineState = 1;
        return;
    }
    if (!airline.empty())
        record.airlineState = 0;
    else
        record.airlineState.reset();
    state.AnyAirlineProblem = true;
}

void airlinePass(RunState &state)
{
    for (const SectionRecord &record : state.SectionTable) {
        if (!record.airlineState)
            addRow(state.AirlinesUndefined, record.sectionName + u" -->  atc_airline missing");
        else if (*record.airlineState == 0)
            addRow(state.AirlinesUnknown,
                   record.sectionName + u" -->  atc_airline=" + LCase(record.airline.value_or(std::u16string())));
        else
            increment(state.AirlinesFound);
    }
}

void effectSection(RunState &state, clsIniFile &AircraftIni, const std::u16string &sectionName)
{
    AircraftIni.setSection(sectionName);
    std::int32_t count = 0;
    AircraftIni.EnumerateCurrentSection(state.EffectFiles, count);
    for (std::int32_t j = 0; j < count; ++j) {
        std::u16string &element = state.EffectFiles[static_cast<std::size_t>(j)];
        const std::u16string key = element;
        if (key == u"windshield_rain_effect_available") {
            element.clear();
            continue;
        }
        AircraftIni.setKey(key);
        const std::u16string value = LCase(StripComment(AircraftIni.Value()));
        if (startsWith(value, u"fx_dummy")) {
            state.CurrentEffectFile.clear();
        } else if (startsWith(value, u"false") || startsWith(value, u"true") || startsWith(value, u"0")
                   || startsWith(value, u"1") || startsWith(value, u"-1")) {
            if (const std::u16string *file = defaultEffectFile(key))
                state.CurrentEffectFile = *file;
        } else {
            state.CurrentEffectFile = Trim(value);
        }
        if (Trim(state.CurrentEffectFile).empty()) {
            element.clear();
            continue;
        }
        const std::size_t comma = state.CurrentEffectFile.find(u',');
        if (comma != std::u16string::npos)
            state.CurrentEffectFile = Trim(std::u16string_view(state.CurrentEffectFile).substr(0, comma));
        const std::u16string &file = state.CurrentEffectFile;
        if (file.size() < 3 || file.compare(file.size() - 3, 3, u".fx") != 0)
            state.CurrentEffectFile += u".fx";
        element = state.CurrentEffectFile;
    }
    // The file check asks for the bounds of the key array, which a section without keys has not got.
    if (count == 0)
        throw RuntimeError::subscriptOutOfRange(std::u16string(ProcedureName));
    const std::u16string &folder = state.UseFs9 ? state.Fs9EffectsFolder : state.FsxEffectsFolder;
    std::vector<std::u16string> missing;
    for (std::u16string &element : state.EffectFiles) {
        if (element.empty())
            continue;
        if (!folder.empty() && platform::FileLookup::findFile(joinPath(folder, nativeSeparators(element))))
            continue;
        missing.push_back(element);
    }
    state.EffectFiles = std::move(missing);
}

} // namespace fleetwright
