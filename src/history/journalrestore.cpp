// Undo, redo and restore: the journal puts files back to a state it recorded.

#include <algorithm>
#include <system_error>

#include "history/journal.h"
#include "history/journalstate.h"
#include "history/sha256.h"
#include "platform/fileio.h"

namespace fleetwright {

namespace {

struct FileTarget
{
    bool exists = false;
    bool readOnly = false;
    std::string digest;
    std::uint64_t size = 0;
};

FileTarget before(const StoredFile &stored)
{
    return {stored.file.existedBefore, stored.file.readOnlyBefore, stored.file.beforeDigest, stored.sizeBefore};
}

FileTarget after(const StoredFile &stored)
{
    return {stored.file.existedAfter, stored.file.readOnlyAfter, stored.file.afterDigest, stored.sizeAfter};
}

bool holds(const DiskState &now, const FileTarget &target)
{
    if (now.exists != target.exists)
        return false;
    return !now.exists || (now.bytes.size() == target.size && sha256Hex(now.bytes) == target.digest);
}

// Makes the file at path exist with bytes (or not exist), read-only or not. A read-only file is made
// writable for the write; on failure it is left as it stood.
bool put(const std::filesystem::path &path, bool exists, const std::string &bytes, bool readOnly)
{
    std::error_code error;
    const bool wasReadOnly = platform::isReadOnly(path);
    if (!exists) {
        if (!std::filesystem::exists(std::filesystem::symlink_status(path, error)))
            return true;
        if (wasReadOnly)
            platform::clearReadOnly(path);
        if (!std::filesystem::remove(path, error)) {
            if (wasReadOnly)
                platform::setReadOnly(path);
            return false;
        }
        return true;
    }
    if (wasReadOnly && !platform::clearReadOnly(path))
        return false;
    std::filesystem::create_directories(path.parent_path(), error);
    if (!platform::replaceFileAtomically(path, bytes)) {
        if (wasReadOnly)
            platform::setReadOnly(path);
        return false;
    }
    if (readOnly)
        return platform::setReadOnly(path);
    return true;
}

std::u16string inQuotes(const std::u16string &text)
{
    return u"\"" + text + u"\"";
}

JournalResult nothing(std::u16string message)
{
    return {JournalOutcome::NothingToDo, std::move(message), {}};
}

} // namespace

JournalResult Journal::State::move(StoredOperation &operation, bool back, bool force)
{
    struct Step
    {
        const StoredFile *file;
        DiskState now;
        std::string bytes; // the target's
    };
    std::vector<Step> steps;
    JournalResult result;
    for (const StoredFile &stored : operation.files) {
        if (!stored.hasAfter)
            continue;
        const FileTarget from = back ? after(stored) : before(stored);
        const FileTarget to = back ? before(stored) : after(stored);
        DiskState now = readDiskState(stored.file.path);
        if (!now.readable) {
            result.outcome = JournalOutcome::Failed;
            result.message = inQuotes(stored.file.path.u16string()) + u" cannot be read; nothing was changed.";
            return result;
        }
        // A file already put back (an undo that a crash cut short) is left alone.
        if (holds(now, to) && (!now.exists || now.readOnly == to.readOnly))
            continue;
        if (!holds(now, from))
            result.changedOutside.push_back(stored.file.path);
        Step step {&stored, std::move(now), {}};
        if (to.exists) {
            std::optional<std::string> bytes = store.get(to.digest);
            if (!bytes) {
                result.outcome = JournalOutcome::Failed;
                result.message = u"The journal no longer holds the contents of "
                    + inQuotes(stored.file.path.u16string()) + u"; nothing was changed.";
                return result;
            }
            step.bytes = std::move(*bytes);
        }
        steps.push_back(std::move(step));
    }
    if (!result.changedOutside.empty() && !force) {
        result.outcome = JournalOutcome::ChangedOutside;
        result.message = u"These files were changed outside the program after " + inQuotes(operation.name) + u":";
        for (const std::filesystem::path &path : result.changedOutside)
            result.message += u"\n" + path.u16string();
        return result;
    }

    const auto undoSteps = [](const std::vector<Step> &steps, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            put(steps[i].file->file.path, steps[i].now.exists, steps[i].now.bytes, steps[i].now.readOnly);
    };
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const FileTarget to = back ? before(*steps[i].file) : after(*steps[i].file);
        if (!put(steps[i].file->file.path, to.exists, steps[i].bytes, to.readOnly)) {
            undoSteps(steps, i);
            result.outcome = JournalOutcome::Failed;
            result.message = inQuotes(steps[i].file->file.path.u16string()) + u" could not be written; the files of "
                + inQuotes(operation.name) + u" were left as they stood.";
            return result;
        }
    }
    if (!append({{back ? 'U' : 'R', operation.id, {}}})) {
        undoSteps(steps, steps.size());
        result.outcome = JournalOutcome::Failed;
        result.message = u"The journal in " + inQuotes(location.u16string()) + u" cannot be written; the files of "
            + inQuotes(operation.name) + u" were left as they stood.";
        return result;
    }
    result.outcome = JournalOutcome::Done;
    result.message = (back ? u"Undone: " : u"Redone: ") + operation.name;
    return result;
}

std::optional<JournalOperationRecord> Journal::nextUndo(const std::filesystem::path &folder) const
{
    m_state->refresh();
    for (const StoredOperation *operation : m_state->listed(folder))
        if (!operation->undone)
            return operation->record();
    return std::nullopt;
}

std::optional<JournalOperationRecord> Journal::nextRedo(const std::filesystem::path &folder) const
{
    m_state->refresh();
    const std::vector<StoredOperation *> listed = m_state->listed(folder);
    // Undone operations stand above the rest: a new operation drops them.
    for (auto operation = listed.rbegin(); operation != listed.rend(); ++operation)
        if ((*operation)->undone)
            return (*operation)->record();
    return std::nullopt;
}

JournalResult Journal::undo(const std::filesystem::path &folder, bool force)
{
    m_state->refresh();
    for (StoredOperation *operation : m_state->listed(folder))
        if (!operation->undone)
            return m_state->move(*operation, true, force);
    return nothing(u"There is nothing to undo in " + inQuotes(folder.u16string()) + u".");
}

JournalResult Journal::redo(const std::filesystem::path &folder, bool force)
{
    m_state->refresh();
    const std::vector<StoredOperation *> listed = m_state->listed(folder);
    for (auto operation = listed.rbegin(); operation != listed.rend(); ++operation)
        if ((*operation)->undone)
            return m_state->move(**operation, false, force);
    return nothing(u"There is nothing to redo in " + inQuotes(folder.u16string()) + u".");
}

JournalResult Journal::restoreBefore(const std::filesystem::path &folder, std::uint64_t id, bool force)
{
    m_state->refresh();
    const std::vector<StoredOperation *> listed = m_state->listed(folder);
    std::vector<StoredOperation *> chain; // newest first
    for (StoredOperation *operation : listed)
        if (!operation->undone && operation->id >= id)
            chain.push_back(operation);
    const bool known = std::any_of(listed.begin(), listed.end(), [id](const StoredOperation *operation) {
        return operation->id == id && !operation->undone;
    });
    if (!known)
        return nothing(u"The history of " + inQuotes(folder.u16string()) + u" holds no such operation to go back to.");

    // Asked once for the whole way back: each file must hold a state one of these operations left it in.
    JournalResult check;
    for (const StoredOperation *operation : chain) {
        for (const StoredFile &stored : operation->files) {
            if (!stored.hasAfter
                || std::find(check.changedOutside.begin(), check.changedOutside.end(), stored.file.path)
                    != check.changedOutside.end())
                continue;
            const DiskState now = readDiskState(stored.file.path);
            const bool left = std::any_of(chain.begin(), chain.end(), [&](const StoredOperation *other) {
                return std::any_of(other->files.begin(), other->files.end(), [&](const StoredFile &file) {
                    return file.hasAfter && file.file.path == stored.file.path
                        && (holds(now, before(file)) || holds(now, after(file)));
                });
            });
            if (!left)
                check.changedOutside.push_back(stored.file.path);
        }
    }
    if (!check.changedOutside.empty() && !force) {
        check.outcome = JournalOutcome::ChangedOutside;
        check.message = u"These files were changed outside the program after " + inQuotes(chain.back()->name) + u":";
        for (const std::filesystem::path &path : check.changedOutside)
            check.message += u"\n" + path.u16string();
        return check;
    }
    for (StoredOperation *operation : chain) {
        JournalResult step = m_state->move(*operation, true, true);
        if (step.outcome != JournalOutcome::Done)
            return step;
    }
    JournalResult result;
    result.outcome = JournalOutcome::Done;
    result.message = u"Restored to before " + inQuotes(chain.back()->name);
    return result;
}

} // namespace fleetwright
