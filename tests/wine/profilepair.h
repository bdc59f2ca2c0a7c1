#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/clsinifile.h"

namespace fleetwright::test {

// All text crossing this header is in Windows-1252 bytes, as the Win32 "A" profile calls take and return it.

// The Win32 profile calls on one file, with the buffer sizes that clsIniFile's reads use (4096 characters for a
// value, 8192 for a name list). Reads return exactly as many characters as the call says it returned.
class Win32Profile
{
public:
    explicit Win32Profile(const std::filesystem::path &file);

    std::string value(const std::string &section, const std::string &key) const;
    std::string keyList(const std::string &section) const;
    std::string sectionList() const;
    // The write call's result.
    bool writeValue(const std::string &section, const std::string &key, const std::string &value) const;
    bool deleteKey(const std::string &section, const std::string &key) const;
    bool deleteSection(const std::string &section) const;

private:
    std::string m_file;
};

// clsIniFile on one file, behind the same byte interface.
class EngineProfile
{
public:
    explicit EngineProfile(const std::filesystem::path &file);

    std::string value(const std::string &section, const std::string &key);
    std::string keyList(const std::string &section);
    std::string sectionList();
    // EnumerateCurrentSection and EnumerateAllSections.
    std::vector<std::string> keyNames(const std::string &section);
    std::vector<std::string> sectionNames();
    void writeValue(const std::string &section, const std::string &key, const std::string &value);
    // Through DeleteKey, or through a write of the null string.
    void deleteKey(const std::string &section, const std::string &key, bool throughNullValue);
    void deleteSection(const std::string &section);

private:
    clsIniFile m_ini;
};

// Names alike but for the case of their ASCII letters: the folding that both sides share (Wine's calls fold
// no other letters).
bool sameName(std::string_view a, std::string_view b);

// A returned list walked the way the enumerations walk it: a name counts only when a NUL follows it.
std::vector<std::string> splitList(std::string_view list, bool skipEmpty);

// Bytes made readable in a failure message: printable ASCII as it is, everything else escaped.
std::string escaped(std::string_view bytes);

// One profile file in two copies: "ours" is read and edited only through clsIniFile, "theirs" only through
// the Win32 calls. Wine keeps parsed profile files in a cache of its own; since neither side ever touches the
// other's copy, that cache never serves a stale file.
class ProfilePair
{
public:
    ProfilePair(const std::filesystem::path &folder, const std::string &name, std::string_view bytes);

    const std::filesystem::path &oursFile() const { return m_oursFile; }
    const std::filesystem::path &theirsFile() const { return m_theirsFile; }
    EngineProfile &ours() { return m_ours; }
    const Win32Profile &theirs() const { return m_theirs; }

    // What differences() reads. spell gives the spelling in which a name is looked up, so that lookups also
    // run with case-folded names.
    struct Reads
    {
        std::vector<std::string> extraSections; // read beside the sections theirs lists
        std::vector<std::string> extraKeys;     // read beside the keys listed, wherever values are read
        std::function<std::string(const std::string &)> spell;
        bool listedSections = true; // read every section theirs lists, or the extra ones only
        bool keyLists = true;
        bool values = true;
        bool fileBytes = true;
    };

    // Everything the two sides disagree on, one line each; empty when they agree. Compared: the section
    // list (raw and as enumerated) and whatever else the reads ask for; key lists are compared raw and as
    // enumerated too.
    std::string differences(const Reads &reads);
    std::string differences() { return differences(Reads {}); }

private:
    std::filesystem::path m_oursFile;
    std::filesystem::path m_theirsFile;
    EngineProfile m_ours;
    Win32Profile m_theirs;
};

} // namespace fleetwright::test
