#include "checkercommands.h"

#include <algorithm>
#include <ostream>
#include <string_view>

#include "cli/editcommands.h"
#include "cli/historycommands.h"
#include "cli/validatecommands.h"
#include "version.h"

namespace fleetwright {

namespace {

constexpr std::string_view PROGRAM = "fleetwright-check";

using CommandFunction = int (*)(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);

struct Command
{
    std::string_view name;
    std::string_view arguments;
    std::string_view summary;
    CommandFunction run;
};

int showHelp(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);
int showVersion(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);

// The usage text is built from this table, so it lists exactly the commands that run.
constexpr Command COMMANDS[] = {
    {"validate", "FOLDER [OPTIONS]", "validate one aircraft folder and write its report", runValidateCommand},
    {"validate-all", "ROOT [OPTIONS]", "validate every folder directly below ROOT into one report",
     runValidateAllCommand},
    {"renumber", "FOLDER [--no-backup]", "number the [fltsim.x] sections of aircraft.cfg from 0 in file order",
     runRenumberCommand},
    {"sort-keys", "FOLDER [--no-backup]", "put the keys of every [fltsim.x] section in the standard order",
     runSortKeysCommand},
    {"remove-keys", "FOLDER KEY... [--no-backup]", "remove the keys from every [fltsim.x] section of aircraft.cfg",
     runRemoveKeysCommand},
    {"air-type", "FILE [--set 0|1|2]", "show or set the aircraft type of an .air file", runAirTypeCommand},
    {"mdl-info", "FILE", "show the version and the radius of an .mdl file", runMdlInfoCommand},
    {"history", "FOLDER", "list the journaled changes of an aircraft folder, newest first", runHistoryCommand},
    {"undo", "FOLDER [--force]", "undo the last change of the folder", runUndoCommand},
    {"redo", "FOLDER [--force]", "redo the last change undone in the folder", runRedoCommand},
    {"restore", "FOLDER --before ID [--force]", "put the folder's files back to just before operation ID",
     runRestoreCommand},
    {"--help", "", "show this text", showHelp},
    {"--version", "", "show the version of fleetwright-check", showVersion},
};

std::string commandColumn(const Command &command)
{
    std::string column(command.name);
    if (!command.arguments.empty())
        column.append(" ").append(command.arguments);
    return column;
}

void writeUsage(std::ostream &stream)
{
    stream << "Usage: " << PROGRAM << " COMMAND [ARGUMENTS]\n"
           << "\n"
           << "The command-line side of Fleetwright, built on the same engine as the program.\n"
           << "\n"
           << "Commands:\n";
    std::size_t width = 0;
    for (const Command &command : COMMANDS)
        width = std::max(width, commandColumn(command).size());
    for (const Command &command : COMMANDS) {
        const std::string column = commandColumn(command);
        stream << "  " << column << std::string(width - column.size() + 3, ' ') << command.summary << "\n";
    }
    stream << "\n"
           << VALIDATE_OPTIONS_HELP << "\n"
           << EDIT_OPTIONS_HELP << "\n"
           << HISTORY_OPTIONS_HELP << "\n"
           << "Exit status:\n"
           << "  " << CHECK_EXIT_OK << "   success; for validate and validate-all: no report has errors\n"
           << "  " << CHECK_EXIT_ERRORS << "   a validation report has errors\n"
           << "  " << CHECK_EXIT_NO_REPORT
           << "   a folder was refused (no aircraft.cfg, no [fltsim.x] section), all report options are\n"
           << "      off, a run-time error ended a run, or the report could not be written; for validate-all\n"
           << "      this wins over 1; for renumber, sort-keys and remove-keys: aircraft.cfg is missing or\n"
           << "      cannot be read or written; for air-type and mdl-info: the file is missing or cannot be\n"
           << "      read or written; for every command that writes: the journal cannot keep the old bytes;\n"
           << "      for undo, redo and restore: nothing to undo or redo, an unknown ID, a file changed outside\n"
           << "      since (without --force), or a file could not be written\n"
           << "  " << CHECK_EXIT_USAGE << "  the command line is wrong\n";
}

// A stray argument is a typing error, not something to skip.
int unexpectedArgument(std::ostream &err, std::string_view command, const std::string &argument)
{
    std::string message(1, '\'');
    message.append(command).append("' takes no arguments, got '").append(argument).append("'");
    return usageError(err, message);
}

int showHelp(const std::vector<std::string> &args, std::ostream &out, std::ostream &err)
{
    if (!args.empty())
        return unexpectedArgument(err, "--help", args.front());
    writeUsage(out);
    return CHECK_EXIT_OK;
}

int showVersion(const std::vector<std::string> &args, std::ostream &out, std::ostream &err)
{
    if (!args.empty())
        return unexpectedArgument(err, "--version", args.front());
    out << PROGRAM << " " << VERSION_TEXT << "\n";
    return CHECK_EXIT_OK;
}

} // namespace

int usageError(std::ostream &err, const std::string &message)
{
    err << PROGRAM << ": " << message << "\n"
        << "Try '" << PROGRAM << " --help' for the list of commands.\n";
    return CHECK_EXIT_USAGE;
}

int runCheckerCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err)
{
    if (args.empty()) {
        writeUsage(err);
        return CHECK_EXIT_USAGE;
    }
    const std::string &name = args.front();
    for (const Command &command : COMMANDS) {
        if (command.name != name)
            continue;
        return command.run(std::vector<std::string>(args.begin() + 1, args.end()), out, err);
    }
    return usageError(err, "unknown command '" + name + "'");
}

} // namespace fleetwright
