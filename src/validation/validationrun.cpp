#include "validation/validationrun.h"

#include <filesystem>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>
#include <unordered_map>

#include "core/arraysearch.h"
#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/paths.h"
#include "core/runtimeerror.h"
#include "core/vbtext.h"
#include "history/journal.h"
#include "platform/filelookup.h"
#include "simfiles/binaryfile.h"
#include "validation/reportwriter.h"
#include "validation/validationstate.h"

namespace fleetwright {

void addRow(std::u16string &list, const std::u16string &row)
{
    if (list.empty())
        list = row;
    else
        list += ListSeparator + row;
}

std::vector<std::u16string> splitRows(const std::u16string &list)
{
    std::vector<std::u16string> rows;
    if (list.empty())
        return rows;
    std::size_t start = 0;
    for (;;) {
        const std::size_t at = list.find(ListSeparator, start);
        if (at == std::u16string::npos) {
            rows.push_back(list.substr(start));
            return rows;
        }
        rows.push_back(list.substr(start, at - start));
        start = at + 1;
    }
}

void zeroWhenEmpty(std::u16string &list)
{
    if (list.empty())
        list = u"0";
}

void increment(std::int16_t &counter)
{
    if (counter == std::numeric_limits<std::int16_t>::max())
        throw RuntimeError::overflow(std::u16string(ProcedureName));
    ++counter;
}

double optionValue(const RunState &state, int index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= state.options.size())
        return 0;
    return valPlainDecimal(state.options[static_cast<std::size_t>(index)]);
}

void checkNumbering(RunState &state, std::size_t index)
{
    SectionRecord &record = state.SectionTable[index];
    const std::u16string_view name = record.sectionName;
    const double number = valPlainDecimal(name.size() > 7 ? name.substr(7) : std::u16string_view());
    if (number == static_cast<double>(index)) {
        record.numberingState = 1;
        return;
    }
    state.OutOfSequence = true;
    std::u16string wanted = u"fltsim." + [&] {
        const std::string digits = std::to_string(index);
        return std::u16string(digits.begin(), digits.end());
    }();
    if (IsInArrayLower(wanted, state.SectionNames)) {
        record.numberingState = 1;
        return;
    }
    record.numberingState = 0;
    state.AnyMisnumbered = true;
    addRow(state.SectionsMisnumbered, u"[" + record.sectionName + u"]");
}

void titlePass(RunState &state)
{
    // Only a title that more than one section has makes a group: the others are passed over without a look
    // at every section.
    std::unordered_map<std::u16string_view, std::size_t> titleCount;
    for (const SectionRecord &record : state.SectionTable)
        ++titleCount[record.title ? std::u16string_view(*record.title) : std::u16string_view()];
    for (const SectionRecord &record : state.SectionTable) {
        const std::u16string title = record.title.value_or(std::u16string());
        if (title.empty()) {
            state.AnyTitleUndefined = true;
            addRow(state.TitlesUndefined, record.sectionName + u" --> no 'title=' entry");
        }
        // A title that is part of any text seen before counts as handled: deliberate, not a set.
        if (!state.SeenText.empty() && state.SeenTextSearch.contains(state.SeenText, title))
            continue;
        addRow(state.SeenText, title);
        if (titleCount[title] < 2)
            continue;
        std::vector<std::u16string> group;
        for (const SectionRecord &other : state.SectionTable)
            if (other.title ? *other.title == title : title.empty())
                group.push_back(u"\"" + title + u"\" --> " + other.sectionName);
        if (group.size() >= 2)
            for (const std::u16string &row : group)
                addRow(state.TitleDuplicates, row);
    }
    state.AnyTitleDuplicate = !state.TitleDuplicates.empty();
    zeroWhenEmpty(state.TitleDuplicates);
}

namespace {

std::u16string lowerPrefix7(const std::u16string &name)
{
    return LCase(std::u16string_view(name).substr(0, 7));
}

void fillRecord(RunState &state, clsIniFile &AircraftIni, const std::u16string &sectionName)
{
    if (state.SectionTable.size() >= static_cast<std::size_t>(std::numeric_limits<std::int16_t>::max()))
        throw RuntimeError::overflow(std::u16string(ProcedureName));
    state.SectionNames.push_back(LCase(sectionName));
    SectionRecord &record = state.SectionTable.emplace_back();
    record.sectionName = LCase(sectionName);
    AircraftIni.setSection(sectionName);
    std::vector<std::u16string> keys;
    std::int32_t count = 0;
    AircraftIni.EnumerateCurrentSection(keys, count);
    for (std::int32_t k = 0; k < count; ++k) {
        const std::u16string key = LCase(keys[static_cast<std::size_t>(k)]);
        AircraftIni.setKey(key);
        auto pathValue = [&] {
            std::u16string value = LCase(StripComment(AircraftIni.Value()));
            for (char16_t &ch : value)
                if (ch == u'/')
                    ch = u'\\';
            return value;
        };
        if (key == u"title") {
            record.title = StripComment(AircraftIni.Value());
        } else if (key == u"sim") {
            record.sim = LCase(StripComment(AircraftIni.Value()));
        } else if (key == u"model") {
            record.model = pathValue();
        } else if (key == u"texture") {
            record.texture = pathValue();
        } else if (key == u"atc_airline") {
            record.airline = UCase(StripComment(AircraftIni.Value()));
            if (state.simulatorFound)
                evaluateAirline(state, record);
        }
    }
}

bool hasFile(const std::u16string &folder, const std::u16string &name)
{
    return platform::FileLookup::findFile(joinPath(folder, name)).has_value();
}

} // namespace

ValidationResult runValidation(const ValidationInput &input, clsIniFile &AircraftIni, Dialogs &dialogs)
{
    std::optional<JournalOperation> operation;
    if (input.journal)
        operation.emplace(*input.journal, std::filesystem::path(input.folder), std::u16string(BOM_REMOVAL_OPERATION));
    ValidationResult result;
    RunState state;
    state.options = input.AnalyzeOptionList;
    if (state.options.size() < 23)
        state.options.resize(23, u"0");
    const ValidationEnvironment &env = input.environment;
    state.Fs9EffectsFolder = env.Fs9EffectsFolder;
    state.FsxEffectsFolder = env.FsxEffectsFolder;
    auto finish = [&](ValidationOutcome outcome) {
        result.outcome = outcome;
        result.AnalyzeOptionList = state.options;
        return result;
    };

    double optionSum = 0;
    for (int i = 0; i < static_cast<int>(state.options.size()); ++i)
        optionSum += optionValue(state, i);
    if (optionSum == 0) {
        dialogs.information(u"You have disabled all analysis reporting options. Exiting here....", {});
        return finish(ValidationOutcome::NothingToReport);
    }

    state.simulatorFound = env.Fs9Found || env.FsxFound;
    auto chooseFs9 = [&](bool fs9) {
        state.UseFs9 = fs9;
        state.AirlineList = fs9 ? env.Fs9Airlines : env.FsxAirlines;
    };
    if (!env.Fs9Found && !env.FsxFound) {
        // In memory only: the stored setting keeps what the user chose.
        state.options[9] = state.options[10] = state.options[11] = u"0";
    } else if (env.Fs9Found && !env.FsxFound) {
        chooseFs9(true);
    } else if (!env.Fs9Found && env.FsxFound) {
        chooseFs9(false);
    } else if (input.choice != SimulatorChoice::Ask || input.BatchRunning) {
        chooseFs9(input.choice == SimulatorChoice::Fs9);
    } else if (valPlainDecimal(state.options[9] + state.options[10] + state.options[11] + state.options[21]) > 0) {
        const int button = dialogs.threeButtonQuestion(u"Select which flightsim version should be used...",
                                                       u"Validate Aircraft: Select FS-Version for ATC/Effects Analysis",
                                                       u"FS9", u"FSX", u"Cancel");
        if (button == 1)
            chooseFs9(true);
        else if (button == 2)
            chooseFs9(false);
        else
            return finish(ValidationOutcome::Cancelled);
    }

    // From here on nothing but the run looks at the aircraft folder, which it asks about many times over: the
    // snapshot answers each question once. The empty-folder search lets go of it when it serves events.
    const platform::LookupSnapshot snapshot;
    auto refuse = [&](const std::u16string &boxText, const std::u16string &batchText) {
        if (input.BatchRunning)
            result.BatchFailureText = batchText;
        else
            dialogs.critical(boxText, {});
        return finish(ValidationOutcome::Refused);
    };
    if (!hasFile(input.folder, u"aircraft.cfg"))
        return refuse(u"No aircraft.cfg file found in this folder. Exiting here...",
                      u"No aircraft.cfg file found in folder ");
    if (input.gridRowCount < 1)
        return refuse(u"An aircraft.cfg file without any [fltsim.x] section found in folder . Exiting here...",
                      u"An aircraft.cfg file without any [fltsim.x] section found in folder ");

    {
        // Only reads: the file is looked at once for all of them.
        clsIniFile::Batch reading(AircraftIni);
        std::vector<std::u16string> sections;
        std::int32_t sectionCount = 0;
        AircraftIni.EnumerateAllSections(sections, sectionCount);
        for (std::int32_t s = 0; s < sectionCount; ++s) {
            const std::u16string &name = sections[static_cast<std::size_t>(s)];
            const std::u16string start = lowerPrefix7(name);
            if (optionValue(state, 21) == 1 && state.simulatorFound && start == u"effects")
                effectSection(state, AircraftIni, name);
            if (start == u"fltsim.")
                fillRecord(state, AircraftIni, name);
        }
    }
    if (state.SectionTable.empty())
        return refuse(u"This aircraft.cfg does not contain a [fltsim.x] section. Exiting here...",
                      u"No [fltsim.x] section found in aircraft.cfg in folder ");

    const std::u16string &iniPath = AircraftIni.path();
    state.FolderPrefix = LCase(std::u16string_view(iniPath).substr(0, iniPath.size() >= 12 ? iniPath.size() - 12 : 0));

    for (std::size_t i = 0; i < state.SectionTable.size(); ++i) {
        checkNumbering(state, i);
        textureState(state, state.SectionTable[i]);
        airfileState(state, state.SectionTable[i]);
        modelState(state, state.SectionTable[i]);
    }
    titlePass(state);
    sharedTexturesPass(state);
    textureChecks(state, input.textureFormatText);
    modelChecks(state);
    airlinePass(state);
    airfileChecks(state);

    if (const auto stale = platform::FileLookup::findFile(state.FolderPrefix + u"corvanecheck.log")) {
        std::error_code ec;
        std::filesystem::remove(*stale, ec);
        platform::LookupSnapshot::forget(*stale);
    }

    state.EmptyFolderList.clear();
    const std::u16string emptyFolderRoot = withTrailingSeparator(state.FolderPrefix);
    FindEmptyFolders(emptyFolderRoot, emptyFolderRoot, state.EmptyFolderList, input.yieldToEvents);

    result.reportPath = input.reportPath.empty() ? env.TempFolder + u"corvanecheck.log" : input.reportPath;
    bool reportHasErrors = false;
    const std::vector<std::u16string> lines = reportLines(state, reportHasErrors);
    writeReportFile(std::filesystem::path(result.reportPath), lines, std::u16string(ProcedureName));
    platform::LookupSnapshot::forget(std::filesystem::path(result.reportPath));
    result.ReportHasErrors = reportHasErrors;
    return finish(ValidationOutcome::ReportWritten);
}

} // namespace fleetwright
