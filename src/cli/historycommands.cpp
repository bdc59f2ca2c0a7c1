// history, undo, redo and restore: the journal of a folder as the program's Edit menu and History dialog
// show it, for scripts.
#include "cli/historycommands.h"

#include <charconv>
#include <ctime>
#include <optional>
#include <ostream>
#include <string_view>

#include "cli/checkercommands.h"
#include "cli/validatecommands.h"
#include "core/runtimeerror.h"
#include "history/journal.h"
#include "platform/utf8.h"

namespace fleetwright {

namespace fs = std::filesystem;

const char *const HISTORY_OPTIONS_HELP =
    "Options of undo, redo and restore:\n"
    "  --force            also overwrite files that were changed outside since the journaled change\n"
    "  --before ID        restore only: the operation, as history lists it, to go back to just before\n"
    "\n"
    "Every change that Fleetwright and the commands above make to an aircraft folder is journaled\n"
    "(in FLEETWRIGHT_HISTORY when set, else in the user's data folder). history lists a folder's\n"
    "operations newest first; undo and redo act on its last one, as Edit > Undo and Redo do.\n";

namespace {

struct HistoryArguments
{
    fs::path folder;
    bool force = false;
    std::optional<std::uint64_t> before;
};

std::optional<std::uint64_t> operationId(const std::string &text)
{
    std::uint64_t id = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return id;
}

// Fills arguments from args; a usage error's exit code when they are wrong. --force only where force is
// taken, --before only where before is.
std::optional<int> parseArguments(const std::vector<std::string> &args, const std::string &command, bool force,
                                  bool before, HistoryArguments &arguments, std::ostream &err)
{
    std::optional<std::string> folder;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        if (force && arg == "--force") {
            arguments.force = true;
        } else if (before && arg == "--before") {
            if (i + 1 == args.size())
                return usageError(err, "'--before' needs an operation ID");
            arguments.before = operationId(args[++i]);
            if (!arguments.before)
                return usageError(err, "'--before' takes an operation ID as history lists it, got '" + args[i] + "'");
        } else if (arg.size() > 1 && arg.front() == '-') {
            return usageError(err, "'" + command + "' has no option '" + arg + "'");
        } else if (folder) {
            return usageError(err, "'" + command + "' takes one folder, got '" + *folder + "' and '" + arg + "'");
        } else {
            folder = arg;
        }
    }
    if (!folder || folder->empty())
        return usageError(err, "'" + command + "' needs a folder");
    if (before && !arguments.before)
        return usageError(err, "'" + command + "' needs '--before ID'");
    try {
        arguments.folder = journalFolder(fs::path(*folder));
    } catch (const std::exception &) {
        return usageError(err, "'" + *folder + "' is no path of this system");
    }
    return std::nullopt;
}

std::string shown(const fs::path &path)
{
    return platform::toUtf8(path.u16string());
}

// A file of the folder by its name in the folder, any other by its full path.
std::string fileName(const fs::path &file, const fs::path &folder)
{
    const fs::path relative = file.lexically_relative(folder);
    if (relative.empty() || *relative.begin() == "..")
        return shown(file);
    return shown(relative);
}

std::string localTime(std::int64_t timeNs)
{
    const std::time_t seconds = static_cast<std::time_t>(timeNs / 1'000'000'000);
    const std::tm *local = std::localtime(&seconds);
    char text[32] = {};
    if (!local || std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", local) == 0)
        return "?";
    return text;
}

int refused(std::ostream &err, const std::string &message)
{
    err << "fleetwright-check: " << message << "\n";
    return CHECK_EXIT_NO_REPORT;
}

// The journal's answer for a script: what was done on out, why nothing was on err.
int told(const JournalResult &result, const std::string &done, const HistoryArguments &arguments, std::ostream &out,
         std::ostream &err)
{
    switch (result.outcome) {
    case JournalOutcome::Done:
        out << done << "\n";
        return CHECK_EXIT_OK;
    case JournalOutcome::NothingToDo:
        return refused(err,
                       result.message.empty() ? "nothing to do in " + shown(arguments.folder)
                                              : platform::toUtf8(result.message));
    case JournalOutcome::ChangedOutside:
        for (const fs::path &file : result.changedOutside)
            err << "fleetwright-check: " << shown(file) << " was changed outside since the journaled change\n";
        return refused(err, "nothing written; --force overwrites the changes made outside");
    case JournalOutcome::Failed:
        break;
    }
    return refused(err,
                   result.message.empty() ? "the files of " + shown(arguments.folder) + " could not be written"
                                          : platform::toUtf8(result.message));
}

// The command's work on the journal; a journal that cannot be opened or read refuses with its reason.
template<typename Work> int withJournal(std::ostream &err, Work work)
{
    try {
        Journal journal(Journal::defaultLocation());
        return work(journal);
    } catch (const RuntimeError &error) {
        return refused(err, platform::toUtf8(error.description()));
    }
}

} // namespace

fs::path journalFolder(const fs::path &folder)
{
    fs::path path = fs::absolute(folder).lexically_normal();
    if (!path.has_filename() && path != path.root_path())
        path = path.parent_path();
    return path;
}

int runHistoryCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err)
{
    HistoryArguments arguments;
    if (const std::optional<int> usage = parseArguments(args, "history", false, false, arguments, err))
        return *usage;
    return withJournal(err, [&](Journal &journal) {
        for (const JournalOperationRecord &operation : journal.operations(arguments.folder)) {
            out << operation.id << "\t" << localTime(operation.timeNs) << "\t" << platform::toUtf8(operation.name)
                << "\t";
            for (std::size_t i = 0; i < operation.files.size(); ++i)
                out << (i ? ", " : "") << fileName(operation.files[i].path, arguments.folder);
            out << (operation.undone ? "\tundone\n" : "\n");
        }
        return CHECK_EXIT_OK;
    });
}

int runUndoCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err)
{
    HistoryArguments arguments;
    if (const std::optional<int> usage = parseArguments(args, "undo", true, false, arguments, err))
        return *usage;
    return withJournal(err, [&](Journal &journal) {
        const std::optional<JournalOperationRecord> next = journal.nextUndo(arguments.folder);
        if (!next)
            return refused(err, "nothing to undo in " + shown(arguments.folder));
        const JournalResult result = journal.undo(arguments.folder, arguments.force);
        return told(result, "undone: " + platform::toUtf8(next->name), arguments, out, err);
    });
}

int runRedoCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err)
{
    HistoryArguments arguments;
    if (const std::optional<int> usage = parseArguments(args, "redo", true, false, arguments, err))
        return *usage;
    return withJournal(err, [&](Journal &journal) {
        const std::optional<JournalOperationRecord> next = journal.nextRedo(arguments.folder);
        if (!next)
            return refused(err, "nothing to redo in " + shown(arguments.folder));
        const JournalResult result = journal.redo(arguments.folder, arguments.force);
        return told(result, "redone: " + platform::toUtf8(next->name), arguments, out, err);
    });
}

int runRestoreCommand(const std::vector<std::string> &args, std::ostream &out, std::ostream &err)
{
    HistoryArguments arguments;
    if (const std::optional<int> usage = parseArguments(args, "restore", true, true, arguments, err))
        return *usage;
    return withJournal(err, [&](Journal &journal) {
        const std::uint64_t id = *arguments.before;
        std::optional<JournalOperationRecord> target;
        for (const JournalOperationRecord &operation : journal.operations(arguments.folder)) {
            if (operation.id == id)
                target = operation;
        }
        if (!target)
            return refused(err, "no operation " + std::to_string(id) + " in " + shown(arguments.folder));
        const JournalResult result = journal.restoreBefore(arguments.folder, id, arguments.force);
        return told(result, "restored to before " + std::to_string(id) + ": " + platform::toUtf8(target->name),
                    arguments, out, err);
    });
}

} // namespace fleetwright
