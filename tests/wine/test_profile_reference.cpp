#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>
#include <windows.h>

#include <gtest/gtest.h>

#include "profilepair.h"
#include "common/tempdir.h"

// Generated profile files and edit sequences, each run through clsIniFile on one copy and through the real
// Win32 calls on another; after every step the reads, the key order and the file bytes must agree.
//
// The files and edits stay inside what Wine's own calls get right, so that any difference is ours:
// - no blank lines and no blanks around names, "=" or values: any write makes Wine rewrite the whole file
//   without them;
// - no ";" line read by its name and no "=x" line;
// - no lookup that needs "é" to match "É": Wine folds the case of ASCII letters only;
// - no comment or "="-less line behind the last key of a section: Wine puts a new key behind those lines, we
//   put it behind the last key;
// - no deletion of a key that the first section of a name lacks and a later one holds: Wine deletes it there,
//   we look in the first section only, where reads and writes look too.
// test_profile_edges.cpp shows our side of the first four.

using fleetwright::test::escaped;
using fleetwright::test::ProfilePair;
using fleetwright::test::sameName;
using fleetwright::test::TempDir;

namespace {

constexpr std::uint32_t SEED = 20240611;
constexpr int CASES = 200;
constexpr int MAX_REPORTED_CASES = 5;

// Windows-1252 names, some with letters of the code page's upper half; lookups vary the case of their ASCII
// letters only.
const std::vector<std::string> SECTION_NAMES = {
    "fltsim.0",
    "fltsim.1",
    "fltsim.2",
    "General",
    "WEIGHT_AND_BALANCE",
    "contact_points",
    "Views",
    "flaps.0",
    "\xC9lectrique",
    "\x8Akoda",
    "c\x9Cur",
    "\x9F"
    "acht",
};
const std::vector<std::string> KEY_NAMES = {
    "title",
    "sim",
    "model",
    "panel",
    "sound",
    "texture",
    "kb_checklists",
    "atc_id",
    "atc_airline",
    "ui_manufacturer",
    "ui_type",
    "description",
    "wing_span",
    "empty_weight",
    "point.0",
    "point.1",
    "//note",
    "\xE9quipage",
    "\xD8st",
    "\x8E"
    "ebra",
    "\xC6ther",
    "a b",
};
const std::vector<std::string> VALUES = {
    "Cessna 172 N1234",
    "1,2 //note",
    "0.5",
    "",
    "\"quoted value\"",
    "'single'",
    "a=b=c",
    "x;y",
    "\"",
    "''",
    "\"a\"b\"",
    "'mixed\"",
    "\"it's\"",
    "Fa\xE7"
    "ade \xAB"
    "test\xBB",
    "C:\\path\\to\\file.mdl",
    "tab\tinside",
    "[not a header]",
    "=",
    ";",
    "\x80 100",
};
const std::vector<std::string> COMMENTS = {"; a comment", ";atc_id=N123", "; title=hidden", ";;"};
const std::vector<std::string> OTHER_LINES = {"this line has no equals sign", "END"};

// Case of an ASCII letter turned the other way. Wine folds no other letters (we fold Windows-1252's too).
char flipCase(char c)
{
    if (c >= 'a' && c <= 'z')
        return static_cast<char>(c - 'a' + 'A');
    if (c >= 'A' && c <= 'Z')
        return static_cast<char>(c - 'A' + 'a');
    return c;
}

// What the generator knows of a file's shape, so that it can choose edits that stay inside what Wine gets
// right and names that exist. The results to expect come from the Win32 calls, never from here.
struct Shape
{
    struct Section
    {
        std::string name;
        std::vector<std::string> keys;
        bool endsInKey = true; // no comment or "="-less line behind the last key (or the bare header)
    };
    std::vector<Section> sections;

    Section *find(const std::string &name)
    {
        const auto it = std::find_if(sections.begin(), sections.end(),
                                     [&](const Section &section) { return sameName(section.name, name); });
        return it == sections.end() ? nullptr : &*it;
    }

    // Whether a later section of the same name as the first holds key.
    bool laterSectionHolds(const Section *first, const std::string &key) const
    {
        for (auto it = sections.begin() + (first - sections.data()) + 1; it != sections.end(); ++it) {
            if (sameName(it->name, first->name)
                && std::any_of(it->keys.begin(), it->keys.end(),
                               [&](const std::string &held) { return sameName(held, key); }))
                return true;
        }
        return false;
    }
};

class Generator
{
public:
    explicit Generator(std::uint32_t seed)
        : m_random(seed)
    {}

    // std::mt19937's output is fixed by the standard; the distributions are not, so they are not used.
    std::uint32_t below(std::uint32_t bound) { return m_random() % bound; }
    bool chance(std::uint32_t percent) { return below(100) < percent; }
    const std::string &pick(const std::vector<std::string> &pool) { return pool[below(pool.size())]; }

    std::string spell(const std::string &name)
    {
        std::string result = name;
        for (char &c : result) {
            if (chance(50))
                c = flipCase(c);
        }
        return result;
    }

    std::string value()
    {
        if (chance(5))
            return std::string(200 + below(400), static_cast<char>('a' + below(26)));
        return pick(VALUES);
    }

    std::string file(Shape &shape)
    {
        std::string bytes;
        if (chance(30))
            bytes += pick(COMMENTS) + "\r\n";
        const auto sectionCount = 1 + below(7);
        for (std::uint32_t s = 0; s < sectionCount; ++s) {
            Shape::Section section {spell(pick(SECTION_NAMES)), {}, true};
            bytes += "[" + section.name + "]\r\n";
            const auto keyCount = below(8);
            for (std::uint32_t k = 0; k < keyCount; ++k) {
                // Comments and "="-less lines only ahead of a key.
                if (chance(15))
                    bytes += pick(chance(60) ? COMMENTS : OTHER_LINES) + "\r\n";
                section.keys.push_back(spell(pick(KEY_NAMES)));
                bytes += section.keys.back() + "=" + value() + "\r\n";
            }
            shape.sections.push_back(std::move(section));
        }
        return bytes;
    }

private:
    std::mt19937 m_random;
};

// One edit, applied to both copies.
struct Edit
{
    enum class Kind
    {
        Write,
        DeleteKey,
        DeleteSection,
    };
    Kind kind;
    std::string section;
    std::string key;
    std::string value;
    bool throughNullValue = false;

    std::string describe() const
    {
        switch (kind) {
        case Kind::Write:
            return "write [" + escaped(section) + "] " + escaped(key) + "=\"" + escaped(value) + "\"";
        case Kind::DeleteKey:
            return std::string(throughNullValue ? "null-string write" : "DeleteKey") + " [" + escaped(section) + "] "
                + escaped(key);
        case Kind::DeleteSection:
            return "DeleteSection [" + escaped(section) + "]";
        }
        return {};
    }
};

bool holdsKey(const Shape::Section &section, const std::string &key)
{
    return std::any_of(section.keys.begin(), section.keys.end(),
                       [&](const std::string &name) { return sameName(name, key); });
}

// A write of key into the section called name, or, where Wine and we would put a new key in different places,
// a write of a key that exists there, or else the deletion of a key that does not (both leave the file).
Edit writeInto(Generator &random, Shape &shape, const std::string &name, const std::string &key)
{
    Shape::Section *target = shape.find(name);
    if (!target) {
        shape.sections.push_back({name, {key}, true});
        return {Edit::Kind::Write, random.spell(name), random.spell(key), random.value()};
    }
    if (holdsKey(*target, key))
        return {Edit::Kind::Write, random.spell(name), random.spell(key), random.value()};
    if (target->endsInKey) {
        target->keys.push_back(key);
        return {Edit::Kind::Write, random.spell(name), random.spell(key), random.value()};
    }
    if (!target->keys.empty()) {
        const std::string existing = target->keys[random.below(target->keys.size())];
        return {Edit::Kind::Write, random.spell(name), random.spell(existing), random.value()};
    }
    return {Edit::Kind::DeleteKey, random.spell(name), "no.such.key", {}};
}

// Chooses the next edit and keeps the shape up to date. Edits address the first section of a name, as
// both sides do.
Edit nextEdit(Generator &random, Shape &shape, int caseNumber)
{
    const auto roll = random.below(100);
    if (shape.sections.empty() || roll < 15) {
        // A new section, or one whose name exists already in another spelling.
        const std::string name = random.chance(50) ? random.pick(SECTION_NAMES)
                                                   : "new." + std::to_string(caseNumber) + "." + std::to_string(roll);
        return writeInto(random, shape, name, random.pick(KEY_NAMES));
    }
    const std::string name = shape.sections[random.below(shape.sections.size())].name;
    Shape::Section *section = shape.find(name);
    if (roll < 25) {
        shape.sections.erase(shape.sections.begin() + (section - shape.sections.data()));
        return {Edit::Kind::DeleteSection, random.spell(name), {}, {}};
    }
    const bool existing = !section->keys.empty() && random.chance(75);
    std::string key = existing ? section->keys[random.below(section->keys.size())] : random.pick(KEY_NAMES);
    if (roll < 45) {
        const auto it = std::find_if(section->keys.begin(), section->keys.end(),
                                     [&](const std::string &held) { return sameName(held, key); });
        // A key missing from the first section of its name but held by a later one: Wine deletes it there,
        // we delete nothing.
        if (it == section->keys.end() && shape.laterSectionHolds(section, key))
            key = "no.such.key";
        if (it != section->keys.end()) {
            // Deleting the last key may bare a comment line that stood ahead of it.
            if (it + 1 == section->keys.end())
                section->endsInKey = false;
            section->keys.erase(it);
        }
        const bool throughNullValue = random.chance(50);
        return {Edit::Kind::DeleteKey, random.spell(name), random.spell(key), {}, throughNullValue};
    }
    return writeInto(random, shape, name, key);
}

void apply(const Edit &edit, ProfilePair &pair)
{
    switch (edit.kind) {
    case Edit::Kind::Write:
        pair.ours().writeValue(edit.section, edit.key, edit.value);
        pair.theirs().writeValue(edit.section, edit.key, edit.value);
        break;
    case Edit::Kind::DeleteKey:
        pair.ours().deleteKey(edit.section, edit.key, edit.throughNullValue);
        pair.theirs().deleteKey(edit.section, edit.key);
        break;
    case Edit::Kind::DeleteSection:
        pair.ours().deleteSection(edit.section);
        pair.theirs().deleteSection(edit.section);
        break;
    }
}

} // namespace

TEST(ProfileReference, GeneratedFilesAndEditsReadAndWriteAlike)
{
    ASSERT_EQ(GetACP(), 1252u) << "Wine must run with the ANSI code page 1252 (LC_ALL=C.UTF-8)";
    TempDir dir;
    Generator random(SEED);
    int failedCases = 0;
    std::size_t checkedSteps = 0;
    for (int caseNumber = 0; caseNumber < CASES && failedCases < MAX_REPORTED_CASES; ++caseNumber) {
        Shape shape;
        const std::string initial = random.file(shape);
        ProfilePair pair(dir.path(), "case" + std::to_string(caseNumber), initial);
        std::string log = "case " + std::to_string(caseNumber) + " of seed " + std::to_string(SEED) + ", file \""
            + escaped(initial) + "\"\n";
        // Beside every listed name in some spelling: a name that may be missing, and one that surely is.
        // After each edit the section list, the edited section's keys and values and the file bytes are
        // compared (an edit that strays into other sections changes the bytes); the first and the last state
        // are read in full.
        ProfilePair::Reads reads;
        reads.extraSections = {random.pick(SECTION_NAMES), "no.such.section"};
        reads.extraKeys = {random.pick(KEY_NAMES), "no.such.key"};
        reads.spell = [&random](const std::string &name) { return random.spell(name); };

        std::string differences = pair.differences(reads);
        const auto steps = 4 + random.below(16);
        for (std::uint32_t step = 0; differences.empty() && step < steps; ++step) {
            const Edit edit = nextEdit(random, shape, caseNumber);
            log += "step " + std::to_string(step) + ": " + edit.describe() + "\n";
            apply(edit, pair);
            ProfilePair::Reads afterEdit = reads;
            afterEdit.listedSections = false;
            afterEdit.extraSections = {edit.section};
            differences = pair.differences(afterEdit);
            ++checkedSteps;
        }
        if (differences.empty())
            differences = pair.differences(reads);
        if (!differences.empty()) {
            ++failedCases;
            ADD_FAILURE() << log << differences;
        }
    }
    // The generator must have produced real work, or the agreement above means nothing.
    EXPECT_GT(checkedSteps, static_cast<std::size_t>(CASES) * 4);
}
