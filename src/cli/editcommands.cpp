#include "cli/editcommands.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <ostream>

#include "checkercommands.h"
#include "cli/historycommands.h"
#include "cli/validatecommands.h"
#include "core/aircraftfilestore.h"
#include "core/arraysearch.h"
#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/errorbox.h"
#include "core/runtimeerror.h"
#include "core/vbtext.h"
#include "editing/keyremoval.h"
#include "editing/sectionrenumber.h"
#include "editing/sortkeys.h"
#include "history/journal.h"
#include "platform/fileio.h"
#include "platform/filelookup.h"
#include "platform/utf8.h"
#include "simfiles/airfile.h"
#include "simfiles/binaryfile.h"
#include "simfiles/modelfile.h"

namespace fleetwright {

const char *const EDIT_OPTIONS_HELP =
    "Options of renumber, sort-keys and remove-keys:\n"
    "  --no-backup        do not take the backup aircraft.corvane that the program takes before a change\n"
    "\n"
    "remove-keys takes key names in any case; keys that no [fltsim.x] section holds are named and skipped.\n"
    "air-type shows the aircraft type of an .air file: 0 Normal, 1 Helicopter, 2 AI, or n/a without an\n"
    "aircraft section; --set writes the new type in place, without a backup, as the program does.\n"
    "mdl-info shows the version and the radius of a model file in a model or model.NAME folder.\n";

namespace {

struct EditArguments
{
    std::filesystem::path folder; // as the journal names it
    std::filesystem::path aircraftCfg;
    bool backup = true;
};

// The folder's aircraft.cfg, found as the program finds it; nothing, with the message written, when the
// command line is wrong or the file is not there or cannot be written.
// keys, when given, takes the arguments behind the folder.
std::optional<EditArguments> parse(const std::vector<std::string> &args, const char *command, std::ostream &err,
                                   int &exitCode, std::vector<std::string> *keys = nullptr)
{
    EditArguments parsed;
    std::optional<std::string> folder;
    for (const std::string &arg : args) {
        if (arg == "--no-backup") {
            parsed.backup = false;
        } else if (!folder && (arg.empty() || arg.front() != '-')) {
            folder = arg;
        } else if (folder && keys && (arg.empty() || arg.front() != '-')) {
            keys->push_back(arg);
        } else {
            exitCode = usageError(err, std::string(command) + ": unexpected argument '" + arg + "'");
            return std::nullopt;
        }
    }
    if (!folder) {
        exitCode = usageError(err, std::string(command) + " needs the aircraft FOLDER");
        return std::nullopt;
    }
    const std::filesystem::path cfg = std::filesystem::path(*folder) / "aircraft.cfg";
    const std::optional<std::filesystem::path> found = platform::FileLookup::findFile(cfg.u16string());
    if (!found) {
        err << "fleetwright-check: no aircraft.cfg in " << *folder << "\n";
        exitCode = CHECK_EXIT_NO_REPORT;
        return std::nullopt;
    }
    if (platform::isReadOnly(*found)) {
        err << "fleetwright-check: " << platform::toUtf8(found->u16string()) << " is read-only; nothing changed\n";
        exitCode = CHECK_EXIT_NO_REPORT;
        return std::nullopt;
    }
    parsed.folder = journalFolder(std::filesystem::path(*folder));
    parsed.aircraftCfg = *found;
    return parsed;
}

// The command's changes, as one operation of the folder's journal, named as the program names it.
template<typename Change> void journaled(const std::filesystem::path &folder, std::u16string name, Change change)
{
    Journal journal(Journal::defaultLocation());
    const JournalOperation operation(journal, folder, std::move(name));
    change();
}

int failed(std::ostream &err, const RuntimeError &error)
{
    err << "fleetwright-check: " << platform::toUtf8(commonErrorText(error)) << "\n";
    return CHECK_EXIT_NO_REPORT;
}

} // namespace

int runRenumberCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err)
{
    int exitCode = CHECK_EXIT_OK;
    const std::optional<EditArguments> parsed = parse(args, "renumber", err, exitCode);
    if (!parsed)
        return exitCode;
    try {
        journaled(parsed->folder, u"Renumber",
                  [&] { Renumber_fltsim(parsed->aircraftCfg.u16string(), parsed->backup); });
    } catch (const RuntimeError &error) {
        return failed(err, error);
    }
    out << "renumbered the [fltsim.x] sections of " << platform::toUtf8(parsed->aircraftCfg.u16string()) << "\n";
    return CHECK_EXIT_OK;
}

int runSortKeysCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err)
{
    int exitCode = CHECK_EXIT_OK;
    const std::optional<EditArguments> parsed = parse(args, "sort-keys", err, exitCode);
    if (!parsed)
        return exitCode;
    clsIniFile ini;
    ini.setPath(parsed->aircraftCfg.u16string());
    // The closing information box has nobody to read it; the line below says the same.
    NeverAskDialogs dialogs(false, [](const DialogRecord &) {});
    try {
        journaled(parsed->folder, u"Sort keys", [&] { DoSortKeys(ini, parsed->backup, dialogs); });
    } catch (const RuntimeError &error) {
        return failed(err, error);
    }
    out << "sorted the keys of the [fltsim.x] sections of " << platform::toUtf8(parsed->aircraftCfg.u16string())
        << "\n";
    return CHECK_EXIT_OK;
}

int runRemoveKeysCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err)
{
    int exitCode = CHECK_EXIT_OK;
    std::vector<std::string> keys;
    const std::optional<EditArguments> parsed = parse(args, "remove-keys", err, exitCode, &keys);
    if (!parsed)
        return exitCode;
    if (keys.empty())
        return usageError(err, "remove-keys needs at least one KEY");
    const std::u16string path = parsed->aircraftCfg.u16string();
    clsIniFile ini;
    ini.setPath(path);
    // What the dialog would list: only those entries can be marked there, in the list's order.
    const std::vector<std::u16string> list = LoadList(ini);
    std::vector<std::u16string> marked;
    for (const std::string &typed : keys) {
        std::u16string key = platform::fromUtf8(typed);
        bool found = false;
        FindInList(list, key, found);
        if (!found)
            err << "fleetwright-check: no [fltsim.x] section holds the key '" << platform::toUtf8(key) << "'\n";
        else if (std::find(marked.begin(), marked.end(), key) == marked.end())
            marked.push_back(key);
    }
    std::sort(marked.begin(), marked.end(), [&list](const std::u16string &a, const std::u16string &b) {
        return std::find(list.begin(), list.end(), a) < std::find(list.begin(), list.end(), b);
    });
    if (marked.empty()) {
        out << "nothing to remove in " << platform::toUtf8(path) << "\n";
        return CHECK_EXIT_OK;
    }
    std::int16_t count = 0;
    try {
        journaled(parsed->folder, u"Remove keys", [&] {
            MakeBackup(path, parsed->backup);
            count = RemoveMarkedKeys(ini, marked);
        });
    } catch (const RuntimeError &error) {
        return failed(err, error);
    }
    out << "removed from the [fltsim.x] sections of " << platform::toUtf8(path) << ":";
    for (const std::u16string &key : marked)
        out << " " << platform::toUtf8(key);
    out << "\n" << platform::toUtf8(wipeReport(count)) << "\n";
    return CHECK_EXIT_OK;
}

namespace {

const char *airTypeName(std::int32_t type)
{
    switch (type) {
    case 0:
        return "Normal";
    case 1:
        return "Helicopter";
    case 2:
        return "AI";
    default:
        return "not 0, 1 or 2";
    }
}

std::string typeText(std::int32_t type)
{
    return std::to_string(type) + " (" + airTypeName(type) + ")";
}

// Why a file that exists does not open, in the words of the program's own failure boxes.
std::optional<std::string> unopenable(const std::filesystem::path &file, platform::ExclusiveAccess access)
{
    platform::ExclusiveFile opened = platform::ExclusiveFile::open(file, access);
    switch (opened.failure()) {
    case platform::ExclusiveOpenFailure::None:
        return std::nullopt;
    case platform::ExclusiveOpenFailure::Locked:
        return "is in use by another program; please make sure that the sim is not running";
    case platform::ExclusiveOpenFailure::Denied:
        return "cannot be opened: permission denied";
    default:
        return "cannot be opened";
    }
}

bool endsWithFolded(const std::u16string &text, std::u16string_view tail)
{
    return text.size() >= tail.size() && LCase(text.substr(text.size() - tail.size())) == tail;
}

} // namespace

int runAirTypeCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err)
{
    std::optional<std::string> fileArgument;
    std::optional<AirType> newType;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        if (arg == "--set") {
            if (i + 1 == args.size())
                return usageError(err, "'--set' needs a value");
            const std::string &value = args[++i];
            if (value != "0" && value != "1" && value != "2")
                return usageError(err, "'--set' takes 0, 1 or 2, got '" + value + "'");
            newType = static_cast<AirType>(value.front() - '0');
        } else if (!fileArgument && (arg.empty() || arg.front() != '-')) {
            fileArgument = arg;
        } else {
            return usageError(err, "air-type: unexpected argument '" + arg + "'");
        }
    }
    if (!fileArgument)
        return usageError(err, "air-type needs the .air FILE");

    const std::filesystem::path given(platform::fromUtf8(*fileArgument));
    const std::u16string name = given.filename().u16string();
    if (!endsWithFolded(name, u".air")) {
        err << "fleetwright-check: " << *fileArgument << " is not an .air file\n";
        return CHECK_EXIT_NO_REPORT;
    }
    const std::optional<std::filesystem::path> file = existingFile(given.u16string());
    if (!file) {
        err << "fleetwright-check: no file " << *fileArgument << "\n";
        return CHECK_EXIT_NO_REPORT;
    }
    // The form reads a file it cannot open as one without an aircraft section; a script is told instead.
    const platform::ExclusiveAccess access =
        newType ? platform::ExclusiveAccess::ReadWrite : platform::ExclusiveAccess::Read;
    if (!(newType && platform::isReadOnly(*file))) {
        if (const std::optional<std::string> why = unopenable(*file, access)) {
            err << "fleetwright-check: " << *fileArgument << " " << *why << "\n";
            return CHECK_EXIT_NO_REPORT;
        }
    }

    // The form's reading: the folder and the base name, which the read turns into the full path.
    AirFileState state;
    state.AirFileName = name.substr(0, name.size() - 4);
    const std::u16string folder = given.has_parent_path() ? given.parent_path().u16string() : u".";
    std::vector<DialogRecord> boxes;
    NeverAskDialogs dialogs(false, [&boxes](const DialogRecord &box) { boxes.push_back(box); });
    const AirFileReading reading = ReadAirFile(folder, state, dialogs);
    const auto reportBoxes = [&err, &boxes] {
        for (const DialogRecord &box : boxes)
            err << "fleetwright-check: " << platform::toUtf8(box.text) << "\n";
    };
    if (reading.outcome == AirFileOutcome::Failed || reading.outcome == AirFileOutcome::NoFile) {
        reportBoxes();
        return CHECK_EXIT_NO_REPORT;
    }
    if (reading.outcome == AirFileOutcome::NoAircraftSection) {
        out << *fileArgument << ": n/a, no aircraft section (105)\n";
        if (newType) {
            err << "fleetwright-check: " << *fileArgument << " has no aircraft section (105); nothing written\n";
            return CHECK_EXIT_NO_REPORT;
        }
        return CHECK_EXIT_OK;
    }
    if (!newType) {
        out << *fileArgument << ": type " << typeText(reading.storedType) << "\n";
        return CHECK_EXIT_OK;
    }

    AirTypePatch patch;
    try {
        journaled(journalFolder(folder), u"Air type", [&] { patch = patchAirType(*newType, state, false, dialogs); });
    } catch (const RuntimeError &error) {
        return failed(err, error);
    }
    if (patch.outcome != AirTypePatchOutcome::Written) {
        reportBoxes();
        if (boxes.empty())
            err << "fleetwright-check: " << *fileArgument << " could not be written\n";
        return CHECK_EXIT_NO_REPORT;
    }
    // Only the low half is written: a stored value with a high half set keeps it.
    const std::int32_t written = static_cast<std::int32_t>(
        (static_cast<std::uint32_t>(reading.storedType) & 0xFFFF0000u) | static_cast<std::uint16_t>(*newType));
    out << *fileArgument << ": type " << typeText(written) << ", was " << typeText(reading.storedType) << "\n";
    return CHECK_EXIT_OK;
}

int runMdlInfoCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err)
{
    std::optional<std::string> fileArgument;
    for (const std::string &arg : args) {
        if (!fileArgument && (arg.empty() || arg.front() != '-'))
            fileArgument = arg;
        else
            return usageError(err, "mdl-info: unexpected argument '" + arg + "'");
    }
    if (!fileArgument)
        return usageError(err, "mdl-info needs the .mdl FILE");

    // The form reads P\model\NAME.mdl for a "<default>" model and P\model.M\NAME.mdl otherwise: the file is
    // split into those parts, so that it is read by the very same routine.
    const std::filesystem::path given(platform::fromUtf8(*fileArgument));
    const std::u16string name = given.filename().u16string();
    const std::u16string modelFolder = given.parent_path().filename().u16string();
    if (!endsWithFolded(name, u".mdl")) {
        err << "fleetwright-check: " << *fileArgument << " is not an .mdl file\n";
        return CHECK_EXIT_NO_REPORT;
    }
    std::u16string model;
    if (LCase(modelFolder) == u"model")
        model = u"<default>";
    else if (LCase(modelFolder.substr(0, 6)) == u"model." && modelFolder.size() > 6)
        model = modelFolder.substr(6);
    else {
        err << "fleetwright-check: " << *fileArgument
            << " does not stand in a model or model.NAME folder, where the program reads model files\n";
        return CHECK_EXIT_NO_REPORT;
    }
    const std::filesystem::path aircraftFolder = given.parent_path().parent_path();
    const std::u16string folder = aircraftFolder.empty() ? u"." : aircraftFolder.u16string();
    const ModelFileReading reading = readModelFile(folder, model, name.substr(0, name.size() - 4));
    switch (reading.outcome) {
    case ModelFileOutcome::Missing:
        err << "fleetwright-check: no file " << *fileArgument << "\n";
        return CHECK_EXIT_NO_REPORT;
    case ModelFileOutcome::Failed:
        err << "fleetwright-check: " << platform::toUtf8(reading.failureMessage) << "\n";
        return CHECK_EXIT_NO_REPORT;
    case ModelFileOutcome::Read:
        break;
    }
    out << *fileArgument << ": " << platform::toUtf8(reading.versionText) << ", radius "
        << platform::toUtf8(reading.radiusText) << "\n";
    return CHECK_EXIT_OK;
}

} // namespace fleetwright
