#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/checkercommands.h"
#include "version.h"

namespace {

struct CheckRun
{
    int exitCode;
    std::string out;
    std::string err;
};

CheckRun check(const std::vector<std::string> &args)
{
    std::ostringstream out;
    std::ostringstream err;
    const int exitCode = fleetwright::runCheckerCommand(args, out, err);
    return {exitCode, out.str(), err.str()};
}

// The command names the usage text lists, in its order: the first word of each line under "Commands:".
std::vector<std::string> listedCommands(const std::string &usage)
{
    std::vector<std::string> names;
    std::istringstream lines(usage);
    std::string line;
    bool inCommands = false;
    while (std::getline(lines, line)) {
        if (line == "Commands:") {
            inCommands = true;
            continue;
        }
        if (!inCommands)
            continue;
        if (line.empty())
            break;
        std::istringstream words(line);
        std::string name;
        words >> name;
        names.push_back(name);
    }
    return names;
}

} // namespace

TEST(CheckerCommands, HelpListsExactlyTheCommandsThatRun)
{
    const CheckRun help = check({"--help"});
    EXPECT_EQ(help.exitCode, fleetwright::CHECK_EXIT_OK);
    EXPECT_EQ(help.err, "");
    EXPECT_TRUE(help.out.starts_with("Usage: fleetwright-check COMMAND [ARGUMENTS]\n")) << help.out;

    const std::vector<std::string> listed = listedCommands(help.out);
    EXPECT_EQ(listed, (std::vector<std::string> {"--help", "--version"}));
    for (const std::string &name : listed) {
        SCOPED_TRACE(name);
        const CheckRun run = check({name});
        EXPECT_EQ(run.exitCode, fleetwright::CHECK_EXIT_OK);
        EXPECT_NE(run.out, "");
        EXPECT_EQ(run.err, "");
    }
}

TEST(CheckerCommands, VersionIsTheBuildVersion)
{
    const CheckRun version = check({"--version"});
    EXPECT_EQ(version.exitCode, fleetwright::CHECK_EXIT_OK);
    EXPECT_EQ(version.out, std::string("fleetwright-check ") + fleetwright::VERSION_TEXT + "\n");
    EXPECT_EQ(std::string(fleetwright::VERSION_TEXT),
              std::to_string(fleetwright::VERSION_MAJOR) + "." + std::to_string(fleetwright::VERSION_MINOR) + "."
                  + std::to_string(fleetwright::VERSION_REVISION));
    EXPECT_EQ(version.err, "");
}

TEST(CheckerCommands, WrongCommandLinesGoToStderrWithExitCodeTwo)
{
    const std::string usage = check({"--help"}).out;

    const CheckRun none = check({});
    EXPECT_EQ(none.exitCode, fleetwright::CHECK_EXIT_USAGE);
    EXPECT_EQ(none.exitCode, 2);
    EXPECT_EQ(none.out, "");
    EXPECT_EQ(none.err, usage);

    struct Row
    {
        std::vector<std::string> args;
        std::string firstErrorLine;
    };
    const std::vector<Row> rows = {
        {{"frobnicate"}, "fleetwright-check: unknown command 'frobnicate'"},
        {{"validate", "some folder"}, "fleetwright-check: unknown command 'validate'"},
        {{""}, "fleetwright-check: unknown command ''"},
        {{"--HELP"}, "fleetwright-check: unknown command '--HELP'"},
        {{"-h"}, "fleetwright-check: unknown command '-h'"},
        {{"--version", "extra"}, "fleetwright-check: '--version' takes no arguments, got 'extra'"},
        {{"--help", "--version"}, "fleetwright-check: '--help' takes no arguments, got '--version'"},
        // Bytes of any kind come back as they were typed.
        {{"caf\xC3\xA9 \xE9"}, "fleetwright-check: unknown command 'caf\xC3\xA9 \xE9'"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.firstErrorLine);
        const CheckRun run = check(row.args);
        EXPECT_EQ(run.exitCode, fleetwright::CHECK_EXIT_USAGE);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, row.firstErrorLine + "\nTry 'fleetwright-check --help' for the list of commands.\n");
    }
}
