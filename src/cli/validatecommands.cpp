// validate and validate-all: the validation run and the batch, fed as the main form feeds them, with the
// simulators found as start-up finds them and every box the form would show told on the error stream.
#include "cli/validatecommands.h"

#include <filesystem>
#include <optional>
#include <ostream>
#include <random>
#include <system_error>
#include <utility>

#include "cli/checkercommands.h"
#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/errorbox.h"
#include "core/runtimeerror.h"
#include "environment/simulatorenvironment.h"
#include "environment/startupsettings.h"
#include "history/journal.h"
#include "platform/fileio.h"
#include "platform/filelookup.h"
#include "platform/settingsstore.h"
#include "platform/simulatorregistry.h"
#include "platform/utf8.h"
#include "validation/batch.h"
#include "validation/checkerfeed.h"
#include "validation/validationrun.h"

namespace fleetwright {

const char *const VALIDATE_OPTIONS_HELP =
    "Options of validate and validate-all:\n"
    "  --fs9 DIR          FS9's folder, in place of the one the registry names (\"\": no FS9)\n"
    "  --fsx DIR          FSX's folder, in place of the one the registry names (\"\": no FSX)\n"
    "  --against fs9|fsx  the airlines.cfg and effects to check against when both simulators are\n"
    "                     found (default fsx)\n"
    "  --options DIGITS   the 23 report options as 0 and 1, in the order of the report options\n"
    "                     dialog (default: the options stored by Fleetwright)\n"
    "  --report FILE      where the report goes; - for standard output (default: corvanecheck.log,\n"
    "                     for validate-all corvanecheckall.log, in the temporary folder)\n"
    "  --errors-only      validate-all only: leave out folders whose report has no errors\n"
    "\n"
    "Without --fs9 and --fsx the simulators are found as Fleetwright finds them at start-up. Boxes\n"
    "the program would show are written to standard error; the report's path goes to standard\n"
    "output unless the report itself does.\n";

namespace {

constexpr std::size_t OPTION_COUNT = 23;
const std::u16string STANDARD_OUTPUT = u"-";

struct ValidateArguments
{
    std::u16string folder;
    std::optional<std::u16string> fs9;
    std::optional<std::u16string> fsx;
    bool againstFs9 = false;
    std::optional<std::vector<std::u16string>> options;
    std::u16string report; // empty: the default place
    bool errorsOnly = false;
};

// The folder as the folder browser holds it: absolute, with no separator at the end unless it is a root.
std::u16string browserPath(const std::u16string &text)
{
    std::filesystem::path path = std::filesystem::absolute(std::filesystem::path(text)).lexically_normal();
    if (!path.has_filename() && path != path.root_path())
        path = path.parent_path();
    return path.u16string();
}

// Arguments come in the platform's narrow encoding (UTF-8 here, the ANSI code page on Windows), as paths do.
std::optional<std::u16string> widened(const std::string &argument)
{
    try {
        return std::filesystem::path(argument).u16string();
    } catch (const std::exception &) {
        return std::nullopt;
    }
}

std::optional<std::vector<std::u16string>> optionDigits(const std::string &text)
{
    if (text.size() != OPTION_COUNT || text.find_first_not_of("01") != std::string::npos)
        return std::nullopt;
    std::vector<std::u16string> list;
    for (const char digit : text)
        list.push_back(std::u16string(1, static_cast<char16_t>(digit)));
    return list;
}

// Fills arguments from args; a usage error's exit code when they are wrong.
std::optional<int> parseArguments(const std::vector<std::string> &args, std::string_view command, bool batch,
                                  ValidateArguments &arguments, std::ostream &err)
{
    const std::string name(command);
    std::optional<std::string> positional;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        if (batch && arg == "--errors-only") {
            arguments.errorsOnly = true;
            continue;
        }
        const bool takesValue =
            arg == "--fs9" || arg == "--fsx" || arg == "--against" || arg == "--options" || arg == "--report";
        if (!takesValue) {
            if (arg.size() > 1 && arg.front() == '-')
                return usageError(err, "'" + name + "' has no option '" + arg + "'");
            if (positional)
                return usageError(err, "'" + name + "' takes one folder, got '" + *positional + "' and '" + arg + "'");
            positional = arg;
            continue;
        }
        if (i + 1 == args.size())
            return usageError(err, "'" + arg + "' needs a value");
        const std::string &value = args[++i];
        const std::optional<std::u16string> wide = widened(value);
        if (!wide)
            return usageError(err, "'" + value + "' is no path of this system");
        if (arg == "--fs9") {
            arguments.fs9 = wide->empty() ? *wide : browserPath(*wide);
        } else if (arg == "--fsx") {
            arguments.fsx = wide->empty() ? *wide : browserPath(*wide);
        } else if (arg == "--against") {
            if (value != "fs9" && value != "fsx")
                return usageError(err, "'--against' takes fs9 or fsx, got '" + value + "'");
            arguments.againstFs9 = value == "fs9";
        } else if (arg == "--options") {
            arguments.options = optionDigits(value);
            if (!arguments.options)
                return usageError(err, "'--options' takes 23 digits 0 or 1, got '" + value + "'");
        } else if (wide->empty()) {
            return usageError(err, "'--report' needs a file");
        } else {
            arguments.report = *wide == STANDARD_OUTPUT ? *wide : browserPath(*wide);
        }
    }
    if (!positional)
        return usageError(err, "'" + name + "' needs a folder");
    const std::optional<std::u16string> folder = widened(*positional);
    if (!folder || folder->empty())
        return usageError(err, "'" + *positional + "' is no folder");
    arguments.folder = browserPath(*folder);
    return std::nullopt;
}

// The registry as start-up reads it, with the simulator folders the command line names in place of its own.
class CommandLineRegistry final : public platform::RegistryReader
{
public:
    CommandLineRegistry(const platform::RegistryReader &registry, const ValidateArguments &arguments)
        : m_registry(registry)
        , m_arguments(arguments)
    {}

    std::u16string GetRegistryValue(std::u16string_view keyPath, std::u16string_view valueName) const override
    {
        const std::string variable = [&] {
            const char *name = platform::registryOverrideVariable(keyPath, valueName);
            return std::string(name ? name : "");
        }();
        if (variable == "FLEETWRIGHT_FS9_DIR" && m_arguments.fs9)
            return *m_arguments.fs9;
        if (variable == "FLEETWRIGHT_FSX_DIR" && m_arguments.fsx)
            return *m_arguments.fsx;
        return m_registry.GetRegistryValue(keyPath, valueName);
    }
    std::u16string nativePath(std::u16string_view windowsPath) const override
    {
        return m_registry.nativePath(windowsPath);
    }

private:
    const platform::RegistryReader &m_registry;
    const ValidateArguments &m_arguments;
};

ValidationEnvironment findEnvironment(const ValidateArguments &arguments)
{
    const platform::SimulatorRegistry registry;
    const CommandLineRegistry reader(registry, arguments);
    const SimulatorEnvironment found = SimulatorEnvironment::detect(
        reader, registryPrefixFor(registry.Is64BitOS()), registry.GetSpecialFolder(platform::APPDATA_FOLDER));
    ValidationEnvironment environment;
    environment.Fs9Found = found.Fs9Found;
    environment.FsxFound = found.FsxFound;
    environment.Fs9Airlines = found.Fs9Airlines;
    environment.FsxAirlines = found.FsxAirlines;
    environment.Fs9EffectsFolder = found.Fs9EffectsFolder;
    environment.FsxEffectsFolder = found.FsxEffectsFolder;
    environment.TempFolder = computeTempFolder();
    return environment;
}

// The stored options as start-up repairs them; the checker leaves the stored text alone.
std::vector<std::u16string> reportOptions(const ValidateArguments &arguments)
{
    if (arguments.options)
        return *arguments.options;
    const platform::SettingsStore store;
    return splitList(repairAnalyzeOptions(readSetting(store, u"AnalyzeOptions")).text);
}

void tell(std::ostream &err, const std::u16string &text)
{
    std::u16string line;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
            continue;
        line.push_back(text[i]);
    }
    err << "fleetwright-check: " << platform::toUtf8(line) << "\n";
}

// Boxes go to the error stream; the simulator question is answered by --against and is not told.
NeverAskDialogs checkerDialogs(std::ostream &err)
{
    return NeverAskDialogs(false, [&err](const DialogRecord &box) {
        if (box.kind != DialogKind::ThreeButtonQuestion)
            tell(err, box.text);
    });
}

// Where the run writes: the place asked for, or for "-" a file of this run's own that is then sent out.
class ReportTarget
{
public:
    ReportTarget(const std::u16string &asked, const std::u16string &tempFolder)
        : m_toStandardOutput(asked == STANDARD_OUTPUT)
    {
        if (!m_toStandardOutput) {
            m_path = asked;
            return;
        }
        std::random_device random;
        const std::string unique = std::to_string(random()) + "-" + std::to_string(random());
        m_path = tempFolder + u"fleetwright-check-" + std::u16string(unique.begin(), unique.end()) + u".log";
    }
    ~ReportTarget()
    {
        if (m_toStandardOutput) {
            std::error_code ignored;
            std::filesystem::remove(std::filesystem::path(m_path), ignored);
        }
    }
    ReportTarget(const ReportTarget &) = delete;
    ReportTarget &operator=(const ReportTarget &) = delete;

    // Empty: the run's default place.
    const std::u16string &path() const { return m_path; }

    // Sends the report out, or names the file it stands in. False when it cannot be read back.
    bool deliver(const std::u16string &written, std::ostream &out, std::ostream &err) const
    {
        if (!m_toStandardOutput) {
            out << platform::toUtf8(written) << "\n";
            return true;
        }
        const std::optional<std::string> bytes = platform::readWholeFile(std::filesystem::path(written)).bytes;
        if (!bytes) {
            tell(err, u"The report could not be read back from " + written);
            return false;
        }
        out.write(bytes->data(), static_cast<std::streamsize>(bytes->size()));
        out.flush();
        return true;
    }

private:
    bool m_toStandardOutput;
    std::u16string m_path;
};

} // namespace

int runValidateCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err)
{
    ValidateArguments arguments;
    if (const std::optional<int> usage = parseArguments(args, "validate", false, arguments, err))
        return *usage;

    ValidationInput input;
    input.environment = findEnvironment(arguments);
    input.AnalyzeOptionList = reportOptions(arguments);
    const ReportTarget target(arguments.report, input.environment.TempFolder);
    NeverAskDialogs dialogs = checkerDialogs(err);
    dialogs.setButton(arguments.againstFs9 ? 1 : 2);

    clsIniFile AircraftIni;
    // Nothing else looks at the folder between its load and its check.
    const platform::LookupSnapshot snapshot;
    const ValidationFeed feed = feedValidationFromFolder(arguments.folder, AircraftIni, dialogs);
    input.folder = arguments.folder;
    input.textureFormatText = feed.textureFormatText;
    input.gridRowCount = feed.gridRowCount;
    input.reportPath = target.path();
    try {
        Journal journal(Journal::defaultLocation());
        input.journal = &journal;
        const ValidationResult result = runValidation(input, AircraftIni, dialogs);
        if (result.outcome != ValidationOutcome::ReportWritten)
            return CHECK_EXIT_NO_REPORT;
        if (!target.deliver(result.reportPath, out, err))
            return CHECK_EXIT_NO_REPORT;
        return result.ReportHasErrors ? CHECK_EXIT_ERRORS : CHECK_EXIT_OK;
    } catch (const RuntimeError &error) {
        tell(err, commonErrorText(error));
        return CHECK_EXIT_NO_REPORT;
    }
}

int runValidateAllCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err)
{
    ValidateArguments arguments;
    if (const std::optional<int> usage = parseArguments(args, "validate-all", true, arguments, err))
        return *usage;

    BatchInput input;
    input.BatchRoot = arguments.folder;
    input.errorsOnly = arguments.errorsOnly;
    input.environment = findEnvironment(arguments);
    input.AnalyzeOptionList = reportOptions(arguments);
    input.choice = arguments.againstFs9 ? SimulatorChoice::Fs9 : SimulatorChoice::Fsx;
    const ReportTarget target(arguments.report, input.environment.TempFolder);
    input.reportPath = target.path();
    NeverAskDialogs dialogs = checkerDialogs(err);

    clsIniFile AircraftIni;
    BatchResult result;
    try {
        Journal journal(Journal::defaultLocation());
        input.journal = &journal;
        result = runBatchValidation(input, AircraftIni, dialogs);
    } catch (const RuntimeError &error) {
        tell(err, commonErrorText(error));
        return CHECK_EXIT_NO_REPORT;
    }
    bool complete = result.skippedErrors.empty();
    for (const std::u16string &skipped : result.skippedErrors)
        tell(err, skipped);
    bool anyErrors = false;
    for (const BatchFolder &folder : result.folders) {
        anyErrors = anyErrors || folder.ReportHasErrors;
        if (folder.outcome != BatchFolderOutcome::Reported)
            complete = false;
        if (folder.error)
            tell(err, folder.folder + u": " + commonErrorText(*folder.error));
    }
    if (!target.deliver(result.reportPath, out, err) || !complete)
        return CHECK_EXIT_NO_REPORT;
    return anyErrors ? CHECK_EXIT_ERRORS : CHECK_EXIT_OK;
}

} // namespace fleetwright
