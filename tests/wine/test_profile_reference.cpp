#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>
#include <windows.h>

#include <gtest/gtest.h>

#include "common/tempdir.h"
#include "profilepair.h"

// Generated profile files and edit sequences, each run through clsIniFile on one copy and through the real
// Win32 calls on another; after every step the reads, the key order and the file bytes must agree. The files
// and edits stay inside what Wine's own calls get right (test_profile_edges.cpp holds our side where they do
// not): no blank lines nor blanks around names, "=" or values; no ";" line read by its name, no "=x" line; no
// lookup that needs "é" to find "É"; no comment or "="-less line behind a section's last key; no deletion of a
// key the first section of a name lacks and a later one holds (Wine deletes it there, we look in the first only).

using namespace fleetwright::test;

namespace {

constexpr std::uint32_t SEED = 20240611;
constexpr int CASES = 200;
constexpr int MAX_REPORTED_CASES = 5;

// Windows-1252 names, some with letters of the code page's upper half.
const std::vector<std::string> SECTION_NAMES =
    split("fltsim.0|fltsim.1|fltsim.2|General|WEIGHT_AND_BALANCE|"
          "contact_points|Views|flaps.0|\xC9lectrique|\x8Akoda|c\x9Cur|\237acht",
          '|');
const std::vector<std::string> KEY_NAMES = split("title|sim|model|panel|sound|texture|kb_checklists|atc_id|atc_airline|"
                                                 "ui_manufacturer|ui_type|description|wing_span|empty_weight|point.0|"
                                                 "point.1|//note|\xE9quipage|\xD8st|\216ebra|\xC6ther|a b",
                                                 '|');
const std::vector<std::string> VALUES =
    split("Cessna 172 N1234|1,2 //note|0.5||\"quoted value\"|'single'|a=b=c|x;y|\"|''|"
          "\"a\"b\"|'mixed\"|\"it's\"|Fa\347ade \253test\273|C:\\path\\to\\file.mdl|"
          "tab\tinside|[not a header]|=|;|\x80 100",
          '|');
const std::vector<std::string> COMMENTS = split("; a comment|;atc_id=N123|; title=hidden|;;", '|');
const std::vector<std::string> OTHER_LINES = {"this line has no equals sign", "END"};

// Names alike but for the case of their ASCII letters, the only folding Wine's calls know.
bool sameName(std::string_view a, std::string_view b)
{
    const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; };
    return a.size() == b.size()
        && std::equal(a.begin(), a.end(), b.begin(), [&](char x, char y) { return upper(x) == upper(y); });
}

// What the generator knows of a file's shape, so that its edits stay inside what Wine gets right and name
// what exists. The results to expect come from the Win32 calls, never from here.
struct Section
{
    std::string name;
    std::vector<std::string> keys;
    bool endsInKey = true; // no comment or "="-less line behind the last key (or the bare header)

    auto find(const std::string &key)
    {
        return std::find_if(keys.begin(), keys.end(), [&](const std::string &held) { return sameName(held, key); });
    }
};

using Shape = std::vector<Section>;

Section *find(Shape &shape, const std::string &name)
{
    const auto it = std::find_if(shape.begin(), shape.end(), [&](auto &held) { return sameName(held.name, name); });
    return it == shape.end() ? nullptr : &*it;
}

// std::mt19937's output is fixed by the standard; the distributions are not, so they are not used.
struct Generator
{
    std::mt19937 engine;

    std::uint32_t below(std::uint32_t bound) { return engine() % bound; }
    bool chance(std::uint32_t percent) { return below(100) < percent; }
    const std::string &pick(const std::vector<std::string> &pool) { return pool[below(pool.size())]; }

    // Only ASCII letters change case: Wine folds no others.
    std::string spell(std::string name)
    {
        for (char &c : name)
            if (chance(50) && (c | 0x20) >= 'a' && (c | 0x20) <= 'z')
                c ^= 0x20;
        return name;
    }

    std::string value()
    {
        return chance(5) ? std::string(200 + below(400), static_cast<char>('a' + below(26))) : pick(VALUES);
    }

    std::string file(Shape &shape)
    {
        std::string bytes = chance(30) ? pick(COMMENTS) + "\r\n" : "";
        for (std::uint32_t s = 0, sections = 1 + below(7); s < sections; ++s) {
            Section section {spell(pick(SECTION_NAMES)), {}, true};
            bytes += "[" + section.name + "]\r\n";
            for (std::uint32_t k = 0, keys = below(8); k < keys; ++k) {
                // Comments and "="-less lines only ahead of a key.
                if (chance(15))
                    bytes += pick(chance(60) ? COMMENTS : OTHER_LINES) + "\r\n";
                section.keys.push_back(spell(pick(KEY_NAMES)));
                bytes += section.keys.back() + "=" + value() + "\r\n";
            }
            shape.push_back(std::move(section));
        }
        return bytes;
    }
};

// A write ('w'), a key's deletion ('k', through DeleteKey or a null-string write) or a section's deletion ('s').
struct Edit
{
    char kind;
    std::string section, key, value;
    bool throughNullValue = false;
};

// A write of key into the section called name, or, where Wine and we would put a new key in different places,
// a write of a key that exists there, or else the deletion of a key that does not (both leave the file).
Edit writeInto(Generator &random, Shape &shape, const std::string &name, const std::string &key)
{
    Section *target = find(shape, name);
    if (!target)
        shape.push_back({name, {key}, true});
    else if (target->find(key) == target->keys.end()) {
        if (target->endsInKey)
            target->keys.push_back(key);
        else if (!target->keys.empty()) {
            const std::string existing = target->keys[random.below(target->keys.size())];
            return {'w', random.spell(name), random.spell(existing), random.value()};
        } else
            return {'k', random.spell(name), "no.such.key", {}};
    }
    return {'w', random.spell(name), random.spell(key), random.value()};
}

// Chooses the next edit and keeps the shape up to date. Edits address the first section of a name, as both
// sides do.
Edit nextEdit(Generator &random, Shape &shape, int caseNumber)
{
    const auto roll = random.below(100);
    if (shape.empty() || roll < 15) {
        // A new section, or one whose name exists already in another spelling.
        const std::string name = random.chance(50) ? random.pick(SECTION_NAMES)
                                                   : "new." + std::to_string(caseNumber) + "." + std::to_string(roll);
        return writeInto(random, shape, name, random.pick(KEY_NAMES));
    }
    const std::string name = shape[random.below(shape.size())].name;
    Section *section = find(shape, name);
    if (roll < 25) {
        shape.erase(shape.begin() + (section - shape.data()));
        return {'s', random.spell(name), {}, {}};
    }
    const bool existing = !section->keys.empty() && random.chance(75);
    std::string key = existing ? section->keys[random.below(section->keys.size())] : random.pick(KEY_NAMES);
    if (roll >= 45)
        return writeInto(random, shape, name, key);
    const auto it = section->find(key);
    const auto later = [&](Section &other) {
        return sameName(other.name, name) && other.find(key) != other.keys.end();
    };
    if (it == section->keys.end() && std::any_of(section + 1, shape.data() + shape.size(), later))
        key = "no.such.key";
    if (it != section->keys.end()) {
        // Deleting the last key may bare a comment line that stood ahead of it.
        section->endsInKey = section->endsInKey && it + 1 != section->keys.end();
        section->keys.erase(it);
    }
    const bool throughNullValue = random.chance(50);
    return {'k', random.spell(name), random.spell(key), {}, throughNullValue};
}

} // namespace

TEST(ProfileReference, GeneratedFilesAndEditsReadAndWriteAlike)
{
    ASSERT_EQ(GetACP(), 1252u) << "Wine must run with the ANSI code page 1252 (LC_ALL=C.UTF-8)";
    TempDir dir;
    Generator random {std::mt19937(SEED)};
    int failedCases = 0;
    std::size_t checkedSteps = 0;
    for (int caseNumber = 0; caseNumber < CASES && failedCases < MAX_REPORTED_CASES; ++caseNumber) {
        Shape shape;
        const std::string initial = random.file(shape);
        ProfilePair pair(dir.path(), "case" + std::to_string(caseNumber), initial);
        std::string log = "case " + std::to_string(caseNumber) + " of seed " + std::to_string(SEED) + ", file \""
            + escaped(initial) + "\"\n";
        // Beside every listed name in some spelling: a name that may be missing, and one that surely is. After
        // each edit the edited section and the file bytes are compared (an edit that strays elsewhere changes
        // the bytes); the first and the last state are read in full.
        Reads reads;
        reads.extraSections = {random.pick(SECTION_NAMES), "no.such.section"};
        reads.extraKeys = {random.pick(KEY_NAMES), "no.such.key"};
        reads.spell = [&random](const std::string &name) { return random.spell(name); };

        std::string differences = pair.differences(reads);
        const auto steps = 4 + random.below(16);
        for (std::uint32_t step = 0; differences.empty() && step < steps; ++step) {
            const Edit edit = nextEdit(random, shape, caseNumber);
            log += "step " + std::to_string(step) + ": " + edit.kind + "|" + escaped(edit.section) + "|"
                + escaped(edit.key) + "|" + escaped(edit.value) + (edit.throughNullValue ? "|null\n" : "\n");
            pair.edit(edit.section, edit.kind == 's' ? nullptr : edit.key.c_str(),
                      edit.kind == 'w' ? edit.value.c_str() : nullptr, edit.throughNullValue);
            Reads afterEdit = reads;
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

// Root, as an elevated Windows account, writes into read-only files through the Win32 calls; the Windows check
// runs this case again as an ordinary user and says so through FLEETWRIGHT_WINE_UNPRIVILEGED.
TEST(ProfileReference, ReadOnlyFileRefusesWritesOnBothSides)
{
    const char *unprivileged = std::getenv("FLEETWRIGHT_WINE_UNPRIVILEGED");
    if (!unprivileged || std::string(unprivileged) != "1")
        GTEST_SKIP() << "needs an unprivileged user; scripts/windows-check.sh runs it as one";
    TempDir dir;
    const std::string bytes = "[fltsim.0]\r\ntitle=Cessna\r\nmodel=\r\n[general]\r\natc_type=x\r\n";
    ProfilePair pair(dir.path(), "readonly", bytes);
    for (const auto &file : {pair.oursFile, pair.theirsFile})
        ASSERT_TRUE(SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY)) << file.string();
    for (const auto &[section, key] : {std::pair {"fltsim.0", "title"}, {"fltsim.0", "sim"}, {"new", "key"}})
        EXPECT_FALSE(pair.edit(section, key, "changed")) << key;
    EXPECT_FALSE(pair.edit("fltsim.0", "model", nullptr, true));
    EXPECT_FALSE(pair.edit("general", nullptr, nullptr));
    EXPECT_EQ(readBytes(pair.oursFile), bytes);
    EXPECT_EQ(readBytes(pair.theirsFile), bytes);
    const std::string differences = pair.differences();
    EXPECT_TRUE(differences.empty()) << differences;
    for (const auto &file : {pair.oursFile, pair.theirsFile})
        SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
}
