#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>
#include <windows.h>

#include "core/clsinifile.h"
#include "platform/codepage.h"

namespace fleetwright::test {

// All text here is in Windows-1252 bytes, as the Win32 "A" profile calls take and return it.

// The Win32 profile calls on one file, with the buffer sizes of clsIniFile's reads (4096 characters for a
// value, 8192 for a name list). The edits return the call's result.
class Win32Profile
{
public:
    explicit Win32Profile(const std::filesystem::path &file)
        : m_file(platform::toCodePage(file.u16string()))
    {}
    std::string value(const std::string &section, const std::string &key) const
    {
        return read(section.c_str(), key.c_str(), 4096);
    }
    std::string keyList(const std::string &section) const { return read(section.c_str(), nullptr, 8192); }
    std::string sectionList() const { return read(nullptr, nullptr, 8192); }
    bool writeValue(const std::string &section, const std::string &key, const std::string &value) const
    {
        return write(section.c_str(), key.c_str(), value.c_str());
    }
    bool deleteKey(const std::string &section, const std::string &key) const
    {
        return write(section.c_str(), key.c_str(), nullptr);
    }
    bool deleteSection(const std::string &section) const { return write(section.c_str(), nullptr, nullptr); }

private:
    std::string read(const char *section, const char *key, DWORD size) const;
    bool write(const char *section, const char *key, const char *value) const
    {
        return WritePrivateProfileStringA(section, key, value, m_file.c_str()) != 0;
    }
    std::string m_file;
};

// clsIniFile on one file, behind the same byte interface.
class EngineProfile
{
public:
    explicit EngineProfile(const std::filesystem::path &file) { m_ini.setPath(file.u16string()); }
    std::string value(const std::string &section, const std::string &key) { return narrow(at(section, key).Value()); }
    std::string keyList(const std::string &section) { return narrow(at(section).INISection()); }
    std::string sectionList() { return narrow(m_ini.Sections()); }
    // EnumerateCurrentSection and EnumerateAllSections, with a mark where the count disagrees with the names.
    std::vector<std::string> keyNames(const std::string &section);
    std::vector<std::string> sectionNames();
    void writeValue(const std::string &section, const std::string &key, const std::string &value)
    {
        at(section, key).setValue(platform::fromCodePage(value));
    }
    // Through DeleteKey, or through a write of the null string.
    void deleteKey(const std::string &section, const std::string &key, bool throughNullValue)
    {
        throughNullValue ? at(section, key).setValue(nullptr) : at(section, key).DeleteKey();
    }
    void deleteSection(const std::string &section) { at(section).DeleteSection(); }

private:
    static std::string narrow(const std::u16string &text) { return platform::toCodePage(text); }
    clsIniFile &at(const std::string &section, const std::string &key = {})
    {
        m_ini.setSection(platform::fromCodePage(section));
        m_ini.setKey(platform::fromCodePage(key));
        return m_ini;
    }
    clsIniFile m_ini;
};

// Names alike but for the case of their ASCII letters, the only folding Wine's calls know.
bool sameName(std::string_view a, std::string_view b);
// A returned list walked as the enumerations walk it: a name counts only when a NUL follows it.
std::vector<std::string> splitList(std::string_view list, bool skipEmpty);
// Printable ASCII as it is, everything else escaped.
std::string escaped(std::string_view bytes);

// One profile file in two copies, "ours" edited only through clsIniFile, "theirs" only through the Win32
// calls; Wine's cache of parsed files never serves a stale copy, as neither side touches the other's.
class ProfilePair
{
public:
    ProfilePair(const std::filesystem::path &folder, const std::string &name, std::string_view bytes);
    const std::filesystem::path &oursFile() const { return m_oursFile; }
    const std::filesystem::path &theirsFile() const { return m_theirsFile; }
    EngineProfile &ours() { return m_ours; }
    const Win32Profile &theirs() const { return m_theirs; }

    // What differences() reads; spell gives the spelling a name is looked up in.
    struct Reads
    {
        std::vector<std::string> extraSections; // read beside the sections theirs lists
        std::vector<std::string> extraKeys;     // read beside the keys listed, wherever values are read
        std::function<std::string(const std::string &)> spell;
        bool listedSections = true;
        bool keyLists = true;
        bool values = true;
        bool fileBytes = true;
    };
    // One line for each disagreement, raw lists and enumerations alike; empty when the sides agree.
    std::string differences(const Reads &reads);
    std::string differences() { return differences(Reads {}); }

private:
    std::filesystem::path m_oursFile;
    std::filesystem::path m_theirsFile;
    EngineProfile m_ours;
    Win32Profile m_theirs;
};

} // namespace fleetwright::test
