#include "history/journal.h"

#include <algorithm>
#include <fstream>
#include <memory>
#include <set>
#include <system_error>

#include "core/runtimeerror.h"
#include "history/journalstate.h"
#include "history/sha256.h"
#include "platform/datafolder.h"
#include "platform/fileio.h"
#include "platform/utf8.h"

namespace fleetwright {

namespace {

constexpr std::int64_t NS_PER_DAY = 86400LL * 1000000000LL;

std::u16string inQuotes(const std::filesystem::path &path)
{
    return u"\"" + path.u16string() + u"\"";
}

std::string flag(bool value)
{
    return value ? "1" : "0";
}

std::uint64_t numberOf(const std::string &text)
{
    std::uint64_t value = 0;
    for (const char ch : text) {
        if (ch < '0' || ch > '9')
            return 0;
        value = value * 10 + static_cast<std::uint64_t>(ch - '0');
    }
    return value;
}

JournalLogRecord fileRecord(char kind, std::uint64_t id, const std::filesystem::path &path, bool exists, bool readOnly,
                            const std::string &digest, std::uint64_t size)
{
    return {kind, id, {utf8Of(path), flag(exists), flag(readOnly), digest, std::to_string(size)}};
}

// The records that say all the journal keeps of one operation, for a log written anew.
void describe(const StoredOperation &operation, std::vector<JournalLogRecord> &records)
{
    records.push_back({'B',
                       operation.id,
                       {std::to_string(operation.timeNs), utf8Of(operation.folder), platform::toUtf8(operation.name)}});
    for (const StoredFile &stored : operation.files) {
        const JournalFile &file = stored.file;
        records.push_back(fileRecord('F', operation.id, file.path, file.existedBefore, file.readOnlyBefore,
                                     file.beforeDigest, stored.sizeBefore));
        if (stored.hasAfter)
            records.push_back(fileRecord('A', operation.id, file.path, file.existedAfter, file.readOnlyAfter,
                                         file.afterDigest, stored.sizeAfter));
    }
    if (operation.ended)
        records.push_back({'E', operation.id, {}});
    if (operation.undone)
        records.push_back({'U', operation.id, {}});
}

// The operation recording on this thread, set by the outermost JournalOperation.
struct LiveOperation
{
    Journal::State *state = nullptr;
    std::filesystem::path folder;
    std::u16string name;
    std::int64_t timeNs = 0;
    std::optional<std::uint64_t> id; // given when the first file is about to change
    std::set<std::u16string> seen;
};

thread_local std::unique_ptr<LiveOperation> t_live;

RuntimeError cannotKeep(const std::filesystem::path &file, const std::filesystem::path &location)
{
    return RuntimeError(75,
                        u"The change to " + inQuotes(file) + u" was not made: the journal in " + inQuotes(location)
                            + u" could not keep the file's present contents. Is the disk full or the folder "
                              u"write-protected?",
                        u"journalBeforeChange");
}

// A file inside the operation's folder, spelt from the folder as the operation names it. The validation run
// reaches files by a lower-cased path on Windows; lists then still name them from the folder.
std::filesystem::path spelledFromFolder(const std::filesystem::path &file, const std::filesystem::path &folder)
{
    const std::u16string inFile = platform::comparablePath(file);
    const std::u16string inFolder = platform::comparablePath(folder);
    if (inFile.size() <= inFolder.size() || inFile.compare(0, inFolder.size(), inFolder) != 0
        || inFile[inFolder.size()] != u'/')
        return file;
    const auto below = static_cast<std::size_t>(std::count(inFile.begin() + inFolder.size(), inFile.end(), u'/'));
    std::vector<std::filesystem::path> parts(file.begin(), file.end());
    std::filesystem::path spelled = folder;
    for (std::size_t k = parts.size() - std::min(below, parts.size()); k < parts.size(); ++k)
        spelled /= parts[k];
    return spelled;
}

} // namespace

std::filesystem::path fullPath(const std::filesystem::path &path)
{
    std::error_code error;
    std::filesystem::path full = std::filesystem::absolute(path, error);
    return (error ? path : full).lexically_normal();
}

std::string utf8Of(const std::filesystem::path &path)
{
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

std::filesystem::path pathOfUtf8(const std::string &text)
{
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

DiskState readDiskState(const std::filesystem::path &path)
{
    DiskState state;
    platform::WholeFile whole = platform::readWholeFile(path);
    if (whole.bytes) {
        state.exists = true;
        state.bytes = std::move(*whole.bytes);
        state.readOnly = platform::isReadOnly(path);
    } else if (whole.failure != platform::ReadFailure::FileNotFound
               && whole.failure != platform::ReadFailure::PathNotFound) {
        state.readable = false;
        state.exists = true;
    }
    return state;
}

bool StoredOperation::isListed() const
{
    return ended && !dropped
        && std::any_of(files.begin(), files.end(), [](const StoredFile &file) { return file.hasAfter; });
}

JournalOperationRecord StoredOperation::record() const
{
    JournalOperationRecord record;
    record.id = id;
    record.timeNs = timeNs;
    record.folder = folder;
    record.name = name;
    record.undone = undone;
    for (const StoredFile &file : files)
        if (file.hasAfter)
            record.files.push_back(file.file);
    return record;
}

Journal::State::State(std::filesystem::path where, JournalLimits bounds)
    : location(std::move(where))
    , logPath(location / "journal.log")
    , limits(bounds)
    , store(location / "contents")
{}

void Journal::State::take(const JournalLogRecord &record)
{
    if (record.kind == 'B') {
        StoredOperation &operation = operations[record.id];
        operation.id = record.id;
        operation.timeNs = static_cast<std::int64_t>(numberOf(record.fields[0]));
        operation.folder = pathOfUtf8(record.fields[1]);
        operation.name = platform::fromUtf8(record.fields[2]);
        nextId = std::max(nextId, record.id + 1);
        return;
    }
    const auto found = operations.find(record.id);
    if (found == operations.end())
        return;
    StoredOperation &operation = found->second;
    switch (record.kind) {
    case 'F':
    case 'A': {
        const std::filesystem::path path = pathOfUtf8(record.fields[0]);
        auto file = std::find_if(operation.files.begin(), operation.files.end(),
                                 [&path](const StoredFile &stored) { return stored.file.path == path; });
        if (record.kind == 'F') {
            if (file != operation.files.end())
                return;
            StoredFile stored;
            stored.file.path = path;
            stored.file.existedBefore = record.fields[1] == "1";
            stored.file.readOnlyBefore = record.fields[2] == "1";
            stored.file.beforeDigest = record.fields[3];
            stored.sizeBefore = numberOf(record.fields[4]);
            store.knowDurable(stored.file.beforeDigest);
            operation.files.push_back(std::move(stored));
        } else if (file != operation.files.end()) {
            file->file.existedAfter = record.fields[1] == "1";
            file->file.readOnlyAfter = record.fields[2] == "1";
            file->file.afterDigest = record.fields[3];
            file->sizeAfter = numberOf(record.fields[4]);
            file->hasAfter = true;
        }
        break;
    }
    case 'E':
        operation.ended = true;
        break;
    case 'U':
        operation.undone = true;
        break;
    case 'R':
        operation.undone = false;
        break;
    case 'D':
        operation.dropped = true;
        break;
    default:
        break;
    }
}

void Journal::State::load(bool recover)
{
    platform::WholeFile log = platform::readWholeFile(logPath);
    if (!log.bytes && log.failure != platform::ReadFailure::FileNotFound)
        throw RuntimeError(75, u"The journal " + inQuotes(logPath) + u" cannot be read.", u"Journal");
    const std::string text = log.bytes ? std::move(*log.bytes) : std::string();
    operations.clear();
    nextId = 1;
    std::size_t valid = 0;
    for (const JournalLogRecord &record : parseJournalLog(text, &valid))
        take(record);
    logSize = text.size();
    // A line a crash cut short is dropped, so that the next record starts on a line of its own.
    if (recover && valid < text.size() && platform::writeFileDurably(logPath, std::string_view(text).substr(0, valid)))
        logSize = valid;
    // Only when the journal is opened: an unfinished operation seen later may be another process's, still
    // running.
    if (!recover)
        return;
    for (auto &[id, operation] : operations)
        if (!operation.ended && !operation.dropped)
            finish(operation);
}

void Journal::State::refresh()
{
    const platform::FileIdentity identity = platform::fileIdentity(logPath);
    if (identity.size != logSize && !live)
        load(false);
}

bool Journal::State::append(const std::vector<JournalLogRecord> &records, bool durable)
{
    std::string text;
    for (const JournalLogRecord &record : records)
        text += formatJournalLogRecord(record);
    if (durable) {
        if (!platform::appendDurably(logPath, text))
            return false;
    } else {
        std::ofstream out(logPath, std::ios::binary | std::ios::app);
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
        out.close();
        if (!out)
            return false;
    }
    logSize += text.size();
    for (const JournalLogRecord &record : records)
        take(record);
    return true;
}

bool Journal::State::finish(StoredOperation &operation)
{
    std::vector<JournalLogRecord> records;
    for (const StoredFile &stored : operation.files) {
        if (stored.hasAfter)
            continue;
        const JournalFile &file = stored.file;
        const DiskState now = readDiskState(file.path);
        // A file that cannot be read now cannot be put back later either; it stays out of the record.
        if (!now.readable)
            continue;
        std::string digest = now.exists && now.bytes.size() == stored.sizeBefore ? sha256Hex(now.bytes) : std::string();
        const bool sameBytes = !now.exists || digest == file.beforeDigest;
        if (now.exists == file.existedBefore && sameBytes && now.readOnly == file.readOnlyBefore)
            continue;
        if (now.exists) {
            std::optional<std::string> put = store.put(now.bytes, false, digest);
            if (!put)
                return false;
            digest = std::move(*put);
        }
        records.push_back(fileRecord('A', operation.id, file.path, now.exists, now.readOnly, digest, now.bytes.size()));
    }
    records.push_back({'E', operation.id, {}});
    // Not waited for: a crash of the system that loses these records leaves the operation unfinished, and the
    // next start completes it from the files, as it would here.
    return append(records, false);
}

void Journal::State::enforceLimits()
{
    std::map<std::string, std::pair<std::uint64_t, int>> uses; // digest: size, operations using it
    std::uint64_t stored = 0;
    const auto use = [&uses, &stored](const std::string &digest, std::uint64_t size, int step) {
        if (digest.empty())
            return;
        auto &[bytes, users] = uses[digest];
        bytes = size;
        if (users == 0 && step > 0)
            stored += size;
        users += step;
        if (users == 0)
            stored -= size;
    };
    const auto count = [&use](const StoredOperation &operation, int step) {
        for (const StoredFile &file : operation.files) {
            use(file.file.beforeDigest, file.sizeBefore, step);
            if (file.hasAfter)
                use(file.file.afterDigest, file.sizeAfter, step);
        }
    };
    for (const auto &[id, operation] : operations)
        if (!operation.dropped)
            count(operation, 1);
    const std::int64_t oldest = platform::currentTimeNs() - limits.maxAgeDays * NS_PER_DAY;
    std::vector<StoredOperation *> droppedNow;
    for (auto &[id, operation] : operations) {
        if (operation.dropped || (operation.timeNs >= oldest && stored <= limits.maxBytes))
            continue;
        operation.dropped = true;
        droppedNow.push_back(&operation);
        count(operation, -1);
    }
    if (std::none_of(operations.begin(), operations.end(), [](const auto &entry) { return entry.second.dropped; }))
        return;

    std::vector<JournalLogRecord> records;
    for (const auto &[id, operation] : operations)
        if (!operation.dropped)
            describe(operation, records);
    std::string text;
    for (const JournalLogRecord &record : records)
        text += formatJournalLogRecord(record);
    // Not written: the operations stay, and the next operation tries again.
    if (!platform::writeFileDurably(logPath, text)) {
        for (StoredOperation *operation : droppedNow)
            operation->dropped = false;
        return;
    }
    logSize = text.size();
    std::set<std::string> forgotten;
    for (auto &[id, operation] : operations) {
        if (!operation.dropped)
            continue;
        for (const StoredFile &file : operation.files) {
            forgotten.insert(file.file.beforeDigest);
            forgotten.insert(file.file.afterDigest);
        }
    }
    for (const std::string &digest : forgotten)
        if (!digest.empty() && uses[digest].second <= 0)
            store.remove(digest);
    std::erase_if(operations, [](const auto &entry) { return entry.second.dropped; });
}

std::vector<StoredOperation *> Journal::State::listed(const std::filesystem::path &folder)
{
    const std::u16string wanted = platform::comparablePath(fullPath(folder));
    std::vector<StoredOperation *> result;
    for (auto entry = operations.rbegin(); entry != operations.rend(); ++entry)
        if (entry->second.isListed() && platform::comparablePath(entry->second.folder) == wanted)
            result.push_back(&entry->second);
    return result;
}

std::filesystem::path Journal::defaultLocation()
{
    if (std::optional<std::filesystem::path> chosen = platform::environmentPath("FLEETWRIGHT_HISTORY"))
        return *chosen;
    const std::filesystem::path data = platform::applicationDataFolder();
    return data.empty() ? data : data / "history";
}

Journal::Journal(std::filesystem::path location, JournalLimits limits)
    : m_state(std::make_unique<State>(std::move(location), limits))
{
    std::error_code error;
    std::filesystem::create_directories(m_state->location, error);
    if (!std::filesystem::is_directory(m_state->location, error))
        throw RuntimeError(75, u"The journal's folder " + inQuotes(m_state->location) + u" cannot be made.",
                           u"Journal");
    m_state->store.removeLeftovers();
    m_state->load(true);
}

Journal::~Journal() = default;

const std::filesystem::path &Journal::location() const
{
    return m_state->location;
}

std::vector<JournalOperationRecord> Journal::operations(const std::filesystem::path &folder) const
{
    m_state->refresh();
    std::vector<JournalOperationRecord> records;
    for (const StoredOperation *operation : m_state->listed(folder))
        records.push_back(operation->record());
    return records;
}

std::optional<std::string> Journal::contents(const std::string &digest) const
{
    return m_state->store.get(digest);
}

JournalOperation::JournalOperation(Journal &journal, std::filesystem::path folder, std::u16string name)
{
    if (t_live)
        return;
    m_outer = true;
    t_live = std::make_unique<LiveOperation>();
    t_live->state = journal.m_state.get();
    t_live->folder = fullPath(folder);
    t_live->name = std::move(name);
    t_live->timeNs = platform::currentTimeNs();
}

JournalOperation::~JournalOperation()
{
    if (!m_outer)
        return;
    const std::unique_ptr<LiveOperation> live = std::move(t_live);
    if (!live->id)
        return;
    live->state->live = false;
    const auto found = live->state->operations.find(*live->id);
    // When the ending cannot be written, the next start of a journal completes it from the disk.
    if (found != live->state->operations.end())
        live->state->finish(found->second);
}

void journalBeforeChange(const std::filesystem::path &given)
{
    LiveOperation *live = t_live.get();
    if (!live)
        return;
    // Kept in full, so that an undo from another working folder finds the file.
    const std::filesystem::path file = spelledFromFolder(fullPath(given), live->folder);
    const std::u16string key = platform::comparablePath(file);
    if (live->seen.contains(key))
        return;
    const DiskState now = readDiskState(file);
    // Nothing to keep of a file that cannot be read: the writer meets the same refusal and changes nothing.
    if (!now.readable)
        return;
    Journal::State &state = *live->state;
    std::vector<JournalLogRecord> records;
    if (!live->id) {
        state.refresh();
        // A new operation cuts off what could have been redone in its folder.
        for (StoredOperation *operation : state.listed(live->folder))
            if (operation->undone)
                records.push_back({'D', operation->id, {}});
        if (!records.empty() && state.append(records))
            records.clear();
        state.enforceLimits();
        live->id = state.nextId;
        state.live = true;
        records.push_back(
            {'B', *live->id, {std::to_string(live->timeNs), utf8Of(live->folder), platform::toUtf8(live->name)}});
    }
    std::string digest;
    if (now.exists) {
        std::optional<std::string> put = state.store.put(now.bytes);
        if (!put)
            throw cannotKeep(file, state.location);
        digest = std::move(*put);
    }
    records.push_back(fileRecord('F', *live->id, file, now.exists, now.readOnly, digest, now.bytes.size()));
    if (!state.append(records)) {
        if (!state.operations.contains(*live->id)) {
            live->id.reset();
            state.live = false;
        }
        throw cannotKeep(file, state.location);
    }
    live->seen.insert(key);
}

} // namespace fleetwright
