// The profile engine: a file of the input's bytes, then a sequence of reads, writes, deletions and enumerations
// through clsIniFile, each held against what the calls promise. The sequence is taken from the input's tail,
// the file from the rest, so that a plain aircraft.cfg is a seed as it stands.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>
#include <vector>

#include "core/clsinifile.h"
#include "fuzzsupport.h"
#include "platform/codepage.h"
#include "platform/fileio.h"

using fleetwright::clsIniFile;
using namespace fleetwright::fuzz;
namespace fs = std::filesystem;
namespace platform = fleetwright::platform;

namespace {

constexpr std::size_t VALUE_LIMIT = 4095;
constexpr std::size_t LIST_LIMIT = 8190;
constexpr std::size_t MAX_OPERATIONS = 24;

const char *const NAMES[] = {"fltsim.0", "FLTSIM.1", "general", "effects", "title",     "model",
                             "texture",  "sim",      "atc_id",  " Wake ",  "\xC9t\xE9", "fltsim.",
                             "",         "a=b",      "[x",      "x]",      ";c",        "\tk\t"};
const std::string LONG_VALUE(VALUE_LIMIT + 10, 'v');
const char *const VALUES[] = {"",           " ",  "\"quoted\"",        "'x'",      "a=b", "x // c",    "line\r\nbreak",
                              "[fltsim.9]", "\"", " lead and trail\t", "nul\0cut", "\r",  "\n[s]\nk=v"};

enum class Op : std::uint8_t
{
    Write,
    WriteNull,
    DeleteKey,
    DeleteSection,
    EnumerateSections,
    EnumerateKeys,
    Read,
    SetIniSection,
    OutsideWrite,
    Count,
};

struct Operation
{
    Op op;
    std::uint8_t sectionPick;
    std::uint8_t keyPick;
    std::uint16_t valuePick;
    std::uint16_t a;
    std::uint16_t b;
};

std::string escaped(const std::string &bytes)
{
    std::string text;
    for (const char ch : bytes) {
        const auto byte = static_cast<unsigned char>(ch);
        if (byte >= 0x20 && byte < 0x7F && byte != '\\') {
            text += ch;
        } else {
            char hex[5];
            std::snprintf(hex, sizeof hex, "\\x%02X", byte);
            text += hex;
        }
    }
    return text;
}

std::string readFile(const fs::path &path)
{
    return platform::readWholeFile(path).bytes.value_or(std::string());
}

// A slice of the file's own bytes: arbitrary text that the mutations reach.
std::string slice(const std::string &bytes, std::uint16_t from, std::uint16_t length)
{
    if (bytes.empty())
        return {};
    return bytes.substr(from % bytes.size(), length);
}

std::vector<std::u16string> split(const std::u16string &list)
{
    std::vector<std::u16string> names;
    std::size_t pos = 0;
    for (std::size_t nul; (nul = list.find(u'\0', pos)) != std::u16string::npos; pos = nul + 1)
        names.push_back(list.substr(pos, nul - pos));
    return names;
}

std::u16string pickName(std::uint8_t pick, std::uint16_t a, std::uint16_t b, const std::vector<std::u16string> &known,
                        const std::string &bytes)
{
    switch (pick % 3) {
    case 0:
        if (!known.empty())
            return known[(pick / 3u) % known.size()];
        [[fallthrough]];
    case 1:
        return platform::fromCodePage(NAMES[(pick / 3u) % std::size(NAMES)]);
    default:
        return platform::fromCodePage(slice(bytes, a, static_cast<std::uint16_t>(b % 24)));
    }
}

std::u16string pickValue(std::uint16_t pick, std::uint16_t a, std::uint16_t b, const std::string &bytes)
{
    if (pick % 4 == 0)
        return platform::fromCodePage(slice(bytes, a, b));
    if (pick % 4 == 1) {
        const char *value = VALUES[(pick / 4u) % std::size(VALUES)];
        // "nul\0cut" keeps its NUL.
        return platform::fromCodePage(
            std::string(value, value == VALUES[10] ? 7 : std::char_traits<char>::length(value)));
    }
    if (pick % 4 == 2 && pick % 64 == 2)
        return platform::fromCodePage(LONG_VALUE);
    return platform::fromCodePage(slice(bytes, a, static_cast<std::uint16_t>(b % 48)));
}

bool blank(char16_t ch)
{
    return ch == u' ' || ch == u'\t';
}

std::u16string trimmed(std::u16string text)
{
    while (!text.empty() && blank(text.back()))
        text.pop_back();
    std::size_t first = 0;
    while (first < text.size() && blank(text[first]))
        ++first;
    return text.substr(first);
}

// A name whose key line or header reads back as that name, and a value that stays on its line: the cases
// where a write has a value to read back and touches one line.
bool plainName(const std::u16string &name)
{
    const std::u16string t = trimmed(name);
    return !t.empty() && t.find_first_of(std::u16string(u"\r\n\0=[];", 8)) == std::u16string::npos;
}

bool plainValue(const std::u16string &value)
{
    return value.find_first_of(u"\r\n") == std::u16string::npos;
}

// What a read gives back for a value written as it stands.
std::u16string readBack(std::u16string value)
{
    std::erase(value, u'\0');
    value = trimmed(value);
    if (value.size() >= 2 && (value.front() == u'"' || value.front() == u'\'') && value.back() == value.front())
        value = value.substr(1, value.size() - 2);
    if (value.size() > VALUE_LIMIT)
        value.resize(VALUE_LIMIT);
    return value;
}

std::vector<std::string> lines(const std::string &bytes)
{
    std::vector<std::string> result;
    std::size_t start = 0;
    while (start < bytes.size()) {
        std::size_t end = bytes.find_first_of("\r\n", start);
        if (end == std::string::npos)
            end = bytes.size();
        else if (bytes[end] == '\r' && end + 1 < bytes.size() && bytes[end + 1] == '\n')
            end += 2;
        else
            end += 1;
        result.push_back(bytes.substr(start, end - start));
        start = end;
    }
    return result;
}

std::string foldedKeyOf(const std::string &line)
{
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos)
        return {};
    // A name ends at a NUL, as the platform's C strings end.
    std::string name = line.substr(0, std::min(equals, line.find('\0')));
    while (!name.empty() && (name.back() == ' ' || name.back() == '\t'))
        name.pop_back();
    const std::size_t first = name.find_first_not_of(" \t");
    return platform::foldUpper(first == std::string::npos ? std::string() : name.substr(first));
}

// The lines an edit replaced and those it put in their place, between the longest untouched head and tail.
void changedLines(const std::string &before, const std::string &after, std::vector<std::string> &removed,
                  std::vector<std::string> &added)
{
    const std::vector<std::string> old = lines(before);
    const std::vector<std::string> now = lines(after);
    std::size_t head = 0;
    while (head < old.size() && head < now.size() && old[head] == now[head])
        ++head;
    std::size_t tail = 0;
    while (tail < old.size() - head && tail < now.size() - head
           && old[old.size() - 1 - tail] == now[now.size() - 1 - tail])
        ++tail;
    removed.assign(old.begin() + static_cast<std::ptrdiff_t>(head), old.end() - static_cast<std::ptrdiff_t>(tail));
    added.assign(now.begin() + static_cast<std::ptrdiff_t>(head), now.end() - static_cast<std::ptrdiff_t>(tail));
}

bool isHeaderLine(const std::string &line)
{
    const std::size_t first = line.find_first_not_of(" \t");
    return first != std::string::npos && line[first] == '[';
}

bool isListed(const std::vector<std::string> &list, const std::string &line)
{
    return std::find(list.begin(), list.end(), line) != list.end();
}

// Whether after is before with one run of whole lines taken out, the run's first line accepted by first(line,
// whether the run is that one line).
template<typename Accept> bool removesOneRun(const std::string &before, const std::string &after, Accept first)
{
    if (after.size() >= before.size())
        return false;
    const std::size_t length = before.size() - after.size();
    const std::vector<std::string> old = lines(before);
    std::size_t at = 0;
    for (const std::string &line : old) {
        if (std::string_view(after).substr(0, at) == std::string_view(before).substr(0, at)
            && std::string_view(after).substr(at) == std::string_view(before).substr(at + length)
            && first(line, line.size() == length))
            return true;
        at += line.size();
        if (at + length > before.size())
            break;
    }
    return false;
}

// Untouched lines keep their bytes: a write replaces the key's own line or adds lines (the file's last line
// getting the line end it lacked), a key deletion takes out the key's line, a section deletion a run of
// lines that starts with a header.
void checkTouchedLines(Op op, std::string before, std::string after, const std::u16string &key)
{
    // A UTF-8 byte order mark stays in front of the file and is no part of its first line.
    constexpr std::string_view MARK = "\xEF\xBB\xBF";
    if (before.starts_with(MARK) && after.starts_with(MARK)) {
        before.erase(0, MARK.size());
        after.erase(0, MARK.size());
    }
    std::vector<std::string> removed;
    std::vector<std::string> added;
    changedLines(before, after, removed, added);
    const std::string foldedKey = platform::foldUpper(platform::toCodePage(trimmed(key)));
    switch (op) {
    case Op::Write:
        for (const std::string &line : removed) {
            const bool ownLine = foldedKeyOf(line) == foldedKey;
            const bool endAdded = !line.ends_with('\r') && !line.ends_with('\n') && isListed(added, line + "\r\n");
            if (!ownLine && !endAdded)
                fail("a write changed the line \"" + line + "\"");
        }
        if (removed.size() > 2 || added.size() > 3)
            fail("a write changed more lines than its own");
        break;
    case Op::WriteNull:
    case Op::DeleteKey:
        if (before != after && !removesOneRun(before, after, [&](const std::string &line, bool last) {
                return last && foldedKeyOf(line) == foldedKey;
            }))
            fail("a key deletion changed more than the key's line");
        break;
    case Op::DeleteSection:
    case Op::SetIniSection:
        if (before != after
            && !removesOneRun(before, after, [](const std::string &line, bool) { return isHeaderLine(line); }))
            fail("a section deletion changed more than the section");
        break;
    default:
        break;
    }
}

// The object's reads against those of a new object that parses the file as it now stands.
void checkAgainstFreshRead(clsIniFile &ini, const fs::path &file)
{
    clsIniFile fresh;
    fresh.setPath(file.u16string());
    fresh.setSection(ini.Section());
    fresh.setKey(ini.Key());
    const std::u16string sections = ini.Sections();
    const std::u16string keys = ini.INISection();
    const std::u16string value = ini.Value();
    const std::u16string freshSections = fresh.Sections();
    const std::u16string freshKeys = fresh.INISection();
    const std::u16string freshValue = fresh.Value();
    if (sections != freshSections || keys != freshKeys || value != freshValue)
        fail("the object's reads differ from a fresh parse of the file:\n  sections ["
             + escaped(platform::toCodePage(sections)) + "] / [" + escaped(platform::toCodePage(freshSections))
             + "]\n  keys [" + escaped(platform::toCodePage(keys)) + "] / [" + escaped(platform::toCodePage(freshKeys))
             + "]\n  value [" + escaped(platform::toCodePage(value)) + "] / ["
             + escaped(platform::toCodePage(freshValue)) + "]");
    if (sections.size() > LIST_LIMIT || keys.size() > LIST_LIMIT || value.size() > VALUE_LIMIT)
        fail("a read went past its buffer");
    std::vector<std::u16string> names;
    std::int32_t count = -1;
    ini.EnumerateAllSections(names, count);
    if (count != static_cast<std::int32_t>(names.size()) || names.size() > split(sections).size())
        fail("EnumerateAllSections counts wrong");
    for (const std::u16string &name : names) {
        if (name.empty())
            fail("EnumerateAllSections returned an empty name");
    }
    ini.EnumerateCurrentSection(names, count);
    if (count != static_cast<std::int32_t>(names.size()) || names != split(keys))
        fail("EnumerateCurrentSection differs from INISection");
}

// Runs the operations on file; returns the file's bytes at the end.
std::string run(const fs::path &file, const std::string &source, const std::vector<Operation> &operations, bool batched,
                bool check)
{
    // FLEETWRIGHT_FUZZ_TRACE=1 shows each call and the file around it, for a finding's reproduction.
    static const bool trace = std::getenv("FLEETWRIGHT_FUZZ_TRACE") != nullptr;
    clsIniFile ini;
    ini.setPath(file.u16string());
    std::optional<clsIniFile::Batch> batch;
    if (batched)
        batch.emplace(ini);
    for (const Operation &o : operations) {
        const std::string before = readFile(file);
        // Names and values come from the file's first bytes, which a batch and single calls share.
        ini.setSection(pickName(o.sectionPick, o.a, o.b, split(ini.Sections()), source));
        ini.setKey(pickName(o.keyPick, o.b, o.a, split(ini.INISection()), source));
        const std::u16string value = pickValue(o.valuePick, o.a, o.b, source);
        switch (o.op) {
        case Op::Write:
            ini.setValue(value);
            break;
        case Op::WriteNull:
            ini.setValue(nullptr);
            break;
        case Op::DeleteKey:
            ini.DeleteKey();
            break;
        case Op::DeleteSection:
            ini.DeleteSection();
            break;
        case Op::SetIniSection:
            ini.setINISection(value);
            break;
        case Op::OutsideWrite:
            // Another program rewrites the file; the next call must see it. Never inside a batch, which
            // relies on nobody else writing.
            if (!batched)
                writeFile(file, before.substr(0, o.a % (before.size() + 1)) + platform::toCodePage(value));
            break;
        default:
            break;
        }
        if (!check)
            continue;
        const std::string after = readFile(file);
        if (trace)
            std::fprintf(stderr, "op %d section [%s] key [%s] value [%s]\n  before [%s]\n  after  [%s]\n",
                         static_cast<int>(o.op), escaped(platform::toCodePage(ini.Section())).c_str(),
                         escaped(platform::toCodePage(ini.Key())).c_str(), escaped(platform::toCodePage(value)).c_str(),
                         escaped(before).c_str(), escaped(after).c_str());
        if (o.op == Op::Write && plainName(ini.Section()) && plainName(ini.Key()) && plainValue(value)
            && ini.Value() != readBack(value) && !(before.starts_with("\xFF\xFE") || before.starts_with("\xFE\xFF")))
            fail("a written value does not read back");
        if (plainName(ini.Section()) && plainName(ini.Key()) && plainValue(value))
            checkTouchedLines(o.op, before, after, ini.Key());
        if ((before.starts_with("\xFF\xFE") || before.starts_with("\xFE\xFF")) && o.op != Op::OutsideWrite
            && after != before)
            fail("a UTF-16 file was written");
        checkAgainstFreshRead(ini, file);
    }
    if (batch)
        batch->commit();
    return readFile(file);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzedDataProvider provider(data, size);
    const bool batched = provider.ConsumeBool();
    std::vector<Operation> operations(provider.ConsumeIntegralInRange<std::size_t>(0, MAX_OPERATIONS));
    for (Operation &o : operations) {
        o.op = static_cast<Op>(provider.ConsumeIntegral<std::uint8_t>() % static_cast<std::uint8_t>(Op::Count));
        o.sectionPick = provider.ConsumeIntegral<std::uint8_t>();
        o.keyPick = provider.ConsumeIntegral<std::uint8_t>();
        o.valuePick = provider.ConsumeIntegral<std::uint16_t>();
        o.a = provider.ConsumeIntegral<std::uint16_t>();
        o.b = provider.ConsumeIntegral<std::uint16_t>();
    }
    const std::string content = provider.ConsumeRemainingBytesAsString();

    const fs::path folder = scratchFolder("profile");
    const fs::path single = folder / "single" / "aircraft.cfg";
    writeFile(single, content);
    const std::string oneByOne = run(single, content, operations, false, true);
    if (batched) {
        // The same calls in one batch leave the same bytes; an outside write would break the batch's promise,
        // so the comparison runs only without them.
        bool outside = false;
        for (const Operation &o : operations)
            outside = outside || o.op == Op::OutsideWrite;
        if (!outside) {
            const fs::path inBatch = folder / "batch" / "aircraft.cfg";
            writeFile(inBatch, content);
            if (run(inBatch, content, operations, true, false) != oneByOne)
                fail("a batch left other bytes than the same calls one by one");
        }
    }
    return 0;
}
