#include "checkercommands.h"

#include <algorithm>
#include <ostream>
#include <string_view>

#include "version.h"

namespace fleetwright {

namespace {

constexpr std::string_view PROGRAM = "fleetwright-check";

using CommandFunction = int (*)(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);

struct Command
{
    std::string_view name;
    std::string_view summary;
    CommandFunction run;
};

int showHelp(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);
int showVersion(const std::vector<std::string> &args, std::ostream &out, std::ostream &err);

// The usage text is built from this table, so it lists exactly the commands that run.
constexpr Command COMMANDS[] = {
    {"--help", "show this text", showHelp},
    {"--version", "show the version of fleetwright-check", showVersion},
};

void writeUsage(std::ostream &stream)
{
    stream << "Usage: " << PROGRAM << " COMMAND [ARGUMENTS]\n"
           << "\n"
           << "The command-line side of Fleetwright, built on the same engine as the program.\n"
           << "\n"
           << "Commands:\n";
    std::size_t width = 0;
    for (const Command &command : COMMANDS)
        width = std::max(width, command.name.size());
    for (const Command &command : COMMANDS)
        stream << "  " << command.name << std::string(width - command.name.size() + 3, ' ') << command.summary << "\n";
    stream << "\n"
           << "Exit status: " << CHECK_EXIT_OK << " on success, " << CHECK_EXIT_USAGE
           << " when the command line is wrong.\n";
}

int usageError(std::ostream &err, const std::string &message)
{
    err << PROGRAM << ": " << message << "\n"
        << "Try '" << PROGRAM << " --help' for the list of commands.\n";
    return CHECK_EXIT_USAGE;
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
