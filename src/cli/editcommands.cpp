#include "cli/editcommands.h"

#include <filesystem>
#include <optional>
#include <ostream>

#include "checkercommands.h"
#include "cli/validatecommands.h"
#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/errorbox.h"
#include "core/runtimeerror.h"
#include "editing/sectionrenumber.h"
#include "editing/sortkeys.h"
#include "platform/fileio.h"
#include "platform/filelookup.h"
#include "platform/utf8.h"

namespace fleetwright {

const char *const EDIT_OPTIONS_HELP = "Options of renumber and sort-keys:\n"
                                      "  --no-backup        do not take the backup aircraft.corvane that the "
                                      "program takes before a change\n";

namespace {

struct EditArguments
{
    std::filesystem::path aircraftCfg;
    bool backup = true;
};

// The folder's aircraft.cfg, found as the program finds it; nothing, with the message written, when the
// command line is wrong or the file is not there or cannot be written.
std::optional<EditArguments> parse(const std::vector<std::string> &args, const char *command, std::ostream &err,
                                   int &exitCode)
{
    EditArguments parsed;
    std::optional<std::string> folder;
    for (const std::string &arg : args) {
        if (arg == "--no-backup") {
            parsed.backup = false;
        } else if (!folder && (arg.empty() || arg.front() != '-')) {
            folder = arg;
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
    parsed.aircraftCfg = *found;
    return parsed;
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
        Renumber_fltsim(parsed->aircraftCfg.u16string(), parsed->backup);
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
        DoSortKeys(ini, parsed->backup, dialogs);
    } catch (const RuntimeError &error) {
        return failed(err, error);
    }
    out << "sorted the keys of the [fltsim.x] sections of " << platform::toUtf8(parsed->aircraftCfg.u16string())
        << "\n";
    return CHECK_EXIT_OK;
}

} // namespace fleetwright
