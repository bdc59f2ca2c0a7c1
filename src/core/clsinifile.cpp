#include "core/clsinifile.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "core/profiledocument.h"
#include "history/journal.h"
#include "platform/codepage.h"
#include "platform/fileio.h"

namespace fleetwright {

namespace {

constexpr std::size_t VALUE_LIMIT = 4095;

bool applyEdit(ProfileDocument &doc, const std::string &section, const std::string *key, const std::string *value)
{
    if (!key)
        return doc.deleteSection(section);
    if (!value)
        return doc.deleteKey(section, *key);
    return doc.writeValue(section, *key, *value);
}

// How far a file's time stamp may lag behind the write that set it. A file system that keeps nanoseconds
// still stamps with a clock that ticks every few milliseconds; one that keeps whole seconds (FAT: two) may
// give two writes of one second the same stamp.
std::int64_t timestampGranularityNs(std::int64_t modifiedNs)
{
    return modifiedNs % 1'000'000'000 != 0 ? 20'000'000 : 2'000'000'000;
}

} // namespace

// One write call of a batch, kept until the batch writes the file: key and value as writeEntry takes them.
struct clsIniFile::BatchEdit
{
    std::string section;
    std::optional<std::string> key;   // none deletes the section
    std::optional<std::string> value; // none deletes the key
};

// The parse of the file as it stood at a known identity. A write by anybody changes the identity, unless it
// falls into the same tick of the file system's clock as the state we read: while the stamp is that young
// the cache is "racy" and each call compares the file's bytes before it trusts the parse. A file system that
// keeps no change time gives no identity to trust: there every call compares the bytes.
struct clsIniFile::Cache
{
    std::filesystem::path file;
    platform::FileIdentity identity;
    std::int64_t readStartNs = 0;
    std::string bytes;
    ProfileDocument document;
    bool loaded = false;
    bool pending = false;       // edits of a batch not yet written
    bool batchReadOnly = false; // the file refused writes when the batch began its first one
    bool batchChecked = false;
    bool batchVerified = false;        // the parse was held against the file once inside the batch
    bool journaled = false;            // the journal holds the bytes the pending edits will replace
    std::vector<BatchEdit> batchEdits; // the batch's writes, to replay should the file change under it

    bool racy() const
    {
        if (identity.changedNs == 0)
            return true;
        const std::int64_t newest = std::max(identity.modifiedNs, identity.changedNs);
        return newest + timestampGranularityNs(newest) >= readStartNs;
    }
};

clsIniFile::clsIniFile()
    : m_cache(std::make_unique<Cache>())
{}

clsIniFile::~clsIniFile()
{
    flush();
}

void clsIniFile::setPath(const std::u16string &path)
{
    if (path == m_path)
        return;
    flush();
    m_path = path;
    *m_cache = Cache {};
    m_cache->file = std::filesystem::path(path);
}

ProfileDocument *clsIniFile::document()
{
    Cache &cache = *m_cache;
    // Inside a batch the file is looked at once; from then on the batch's own edits are the truth.
    if (cache.loaded && (cache.pending || (m_batchDepth > 0 && cache.batchVerified)))
        return &cache.document;
    cache.batchVerified = m_batchDepth > 0;
    if (m_path.empty()) {
        cache.document = ProfileDocument();
        cache.loaded = false;
        return &cache.document;
    }
    const std::int64_t start = platform::currentTimeNs();
    const platform::FileIdentity identity = platform::fileIdentity(cache.file);
    if (cache.loaded && identity == cache.identity && !cache.racy())
        return &cache.document;
    std::optional<std::string> bytes;
    if (identity.exists)
        bytes = platform::readWholeFile(cache.file).bytes;
    if (!bytes) {
        // Missing or unreadable: read as an empty file, and look again at the next call.
        cache.document = ProfileDocument();
        cache.bytes.clear();
        cache.loaded = false;
        return &cache.document;
    }
    if (!cache.loaded || *bytes != cache.bytes)
        cache.document = ProfileDocument(*bytes);
    cache.bytes = std::move(*bytes);
    cache.identity = identity;
    cache.readStartNs = start;
    cache.loaded = true;
    return &cache.document;
}

void clsIniFile::setSection(const std::u16string &section)
{
    m_section = section;
    m_sectionBytes = platform::toCodePage(section);
}

std::u16string clsIniFile::Value()
{
    const auto value = document()->value(m_sectionBytes, platform::toCodePage(m_key));
    if (!value)
        return {};
    return platform::fromCodePage(std::string_view(*value).substr(0, VALUE_LIMIT));
}

void clsIniFile::setValue(std::u16string &value)
{
    std::erase(value, u'\0');
    const std::string bytes = platform::toCodePage(value);
    const std::string key = platform::toCodePage(m_key);
    writeEntry(&key, &bytes);
}

void clsIniFile::setValue(const std::u16string &value)
{
    std::u16string copy = value;
    setValue(copy);
}

void clsIniFile::setValue(std::nullptr_t)
{
    const std::string key = platform::toCodePage(m_key);
    writeEntry(&key, nullptr);
}

void clsIniFile::DeleteKey()
{
    const std::string key = platform::toCodePage(m_key);
    writeEntry(&key, nullptr);
}

void clsIniFile::DeleteSection()
{
    writeEntry(nullptr, nullptr);
}

void clsIniFile::setINISection(const std::u16string &)
{
    // A null key deletes the section whatever the string says.
    writeEntry(nullptr, nullptr);
}

// One write call: key and value as the platform's write takes them, where a null key deletes the section
// and a null value deletes the key.
void clsIniFile::writeEntry(const std::string *key, const std::string *value)
{
    m_writeResult = 0;
    if (m_path.empty())
        return;
    Cache &cache = *m_cache;
    if (m_batchDepth > 0 && cache.batchChecked && cache.batchReadOnly)
        return;
    const bool readOnly = platform::isReadOnly(cache.file);
    if (m_batchDepth > 0 && !cache.batchChecked) {
        cache.batchChecked = true;
        cache.batchReadOnly = readOnly;
    }
    if (readOnly)
        return;
    ProfileDocument *doc = document();
    if (!doc->isWritable())
        return;
    if (!applyEdit(*doc, m_sectionBytes, key, value)) {
        m_writeResult = 1;
        return;
    }
    if (!cache.journaled) {
        try {
            journalBeforeChange(cache.file);
        } catch (...) {
            // The edit stands in the parse only: drop it, so the file and the next read stay as they were.
            cache.loaded = false;
            cache.bytes.clear();
            cache.batchEdits.clear();
            throw;
        }
        cache.journaled = true;
    }
    if (m_batchDepth > 0)
        cache.batchEdits.push_back(
            {m_sectionBytes, key ? std::optional(*key) : std::nullopt, value ? std::optional(*value) : std::nullopt});
    cache.pending = true;
    cache.loaded = true;
    if (m_batchDepth == 0)
        flush();
    m_writeResult = cache.pending ? 0 : 1;
}

void clsIniFile::flush()
{
    Cache &cache = *m_cache;
    const std::vector<BatchEdit> edits = std::exchange(cache.batchEdits, {});
    if (!cache.pending)
        return;
    cache.pending = false;
    // Written or lost, the next batch's first edit journals the file as it then stands.
    cache.journaled = false;
    const std::int64_t start = platform::currentTimeNs();
    if (!edits.empty() && !rebaseBatch(edits)) {
        cache.loaded = false;
        cache.bytes.clear();
        return;
    }
    std::string bytes = cache.document.bytes();
    if (!platform::replaceFileAtomically(cache.file, bytes)) {
        // Lost without a word, as the platform's write loses it; the next read sees the file as it is.
        cache.loaded = false;
        cache.bytes.clear();
        return;
    }
    cache.identity = platform::fileIdentity(cache.file);
    cache.bytes = std::move(bytes);
    cache.readStartNs = start;
}

// A batch trusts the file as it found it at its first call. Should somebody else have written the file since
// (a backup tool, an editor), the batch's writes are made again on the file as it stands now, so that the
// outside change is kept and the batch's own writes land on top of it, as they would have one by one.
// False when the file as it now stands refuses writes: then the batch's writes are lost, as they would
// have been one by one.
bool clsIniFile::rebaseBatch(const std::vector<BatchEdit> &edits)
{
    Cache &cache = *m_cache;
    const platform::FileIdentity identity = platform::fileIdentity(cache.file);
    if (identity == cache.identity && !cache.racy())
        return true;
    std::optional<std::string> bytes;
    if (identity.exists)
        bytes = platform::readWholeFile(cache.file).bytes;
    if (bytes && *bytes == cache.bytes)
        return true;
    ProfileDocument current(bytes.value_or(std::string()));
    if (!current.isWritable())
        return false;
    for (const BatchEdit &edit : edits)
        applyEdit(current, edit.section, edit.key ? &*edit.key : nullptr, edit.value ? &*edit.value : nullptr);
    cache.document = std::move(current);
    return true;
}

std::u16string clsIniFile::INISection()
{
    return platform::fromCodePage(document()->keyNameList(m_sectionBytes));
}

std::u16string clsIniFile::Sections()
{
    return platform::fromCodePage(document()->sectionNameList());
}

namespace {

// Splits a NUL-separated list: a name counts only when a NUL follows it.
void splitList(const std::u16string &list, bool skipEmpty, std::vector<std::u16string> &names, std::int32_t &count)
{
    count = 0;
    names.clear();
    std::size_t pos = 0;
    for (;;) {
        const auto nul = list.find(u'\0', pos);
        if (nul == std::u16string::npos)
            return;
        if (nul > pos || !skipEmpty) {
            names.push_back(list.substr(pos, nul - pos));
            ++count;
        }
        pos = nul + 1;
    }
}

} // namespace

void clsIniFile::EnumerateCurrentSection(std::vector<std::u16string> &names, std::int32_t &count)
{
    splitList(INISection(), false, names, count);
}

void clsIniFile::EnumerateAllSections(std::vector<std::u16string> &names, std::int32_t &count)
{
    splitList(Sections(), true, names, count);
}

clsIniFile::Batch::Batch(clsIniFile &ini)
    : m_ini(&ini)
{
    ++m_ini->m_batchDepth;
}

clsIniFile::Batch::~Batch()
{
    commit();
}

void clsIniFile::Batch::commit()
{
    if (!m_ini)
        return;
    clsIniFile *ini = std::exchange(m_ini, nullptr);
    if (--ini->m_batchDepth == 0) {
        ini->m_cache->batchChecked = false;
        ini->m_cache->batchVerified = false;
        ini->flush();
    }
}

} // namespace fleetwright
