#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>
#include <windows.h>

#include "common/golden.h"
#include "common/tempdir.h"
#include "core/clsinifile.h"
#include "platform/codepage.h"

namespace fleetwright::test {

// Printable ASCII as it is, everything else escaped.
inline std::string escaped(std::string_view bytes)
{
    std::string text;
    for (const unsigned char c : bytes)
        text += c >= 0x20 && c < 0x7F && c != '\\' && c != '"'
            ? std::string(1, c)
            : std::string("\\x") + "0123456789ABCDEF"[c >> 4] + "0123456789ABCDEF"[c & 15];
    return text;
}

// A returned list as the enumerations walk it: a name counts only when a NUL follows it.
inline std::vector<std::string> namesOf(std::string_view list, bool skipEmpty)
{
    std::vector<std::string> names;
    for (std::size_t pos = 0, nul = 0; (nul = list.find('\0', pos)) != std::string_view::npos; pos = nul + 1)
        if (nul > pos || !skipEmpty)
            names.emplace_back(list.substr(pos, nul - pos));
    return names;
}

// Names as a raw list holds them, each closed by a NUL.
inline std::string joined(const std::vector<std::string> &names)
{
    std::string list;
    for (const auto &name : names)
        list += name + '\0';
    return list;
}

// What ProfilePair::differences reads; spell gives the spelling a name is looked up in.
struct Reads
{
    std::vector<std::string> extraSections; // read beside the sections theirs lists
    std::vector<std::string> extraKeys;     // read beside the keys listed, wherever values are read
    std::function<std::string(const std::string &)> spell = [](const std::string &name) { return name; };
    bool listedSections = true, keyLists = true, values = true, fileBytes = true;
};

// One profile file in two copies, "ours" read and edited only through clsIniFile, "theirs" only through the
// Win32 calls, so that Wine's cache of parsed files never serves a stale copy. All text is in Windows-1252
// bytes, as the Win32 "A" calls take it; their buffers have the sizes of clsIniFile's reads.
class ProfilePair
{
public:
    ProfilePair(const std::filesystem::path &folder, const std::string &name, std::string_view bytes)
        : oursFile(folder / (name + "-ours.cfg"))
        , theirsFile(folder / (name + "-theirs.cfg"))
    {
        writeBytes(oursFile, bytes);
        writeBytes(theirsFile, bytes);
        m_ini.setPath(oursFile.u16string());
    }
    const std::filesystem::path oursFile, theirsFile;

    // A value, with key null a section's key list, with both null the section list.
    std::string theirs(const char *section, const char *key) const
    {
        std::string buffer(key ? 4096 : 8192, ' ');
        const auto path = platform::toCodePage(theirsFile.u16string());
        buffer.resize(GetPrivateProfileStringA(section, key, "", buffer.data(), buffer.size(), path.c_str()));
        return buffer;
    }
    std::string ours(const char *section, const char *key)
    {
        return !section ? narrow(m_ini.Sections())
            : key       ? narrow(at(section, key).Value())
                        : narrow(at(section, "").INISection());
    }
    // EnumerateCurrentSection, or with section null EnumerateAllSections, as a list; a mark where the count
    // disagrees with the names.
    std::string enumerated(const char *section)
    {
        std::vector<std::u16string> names;
        std::int32_t count = -1;
        section ? at(section, "").EnumerateCurrentSection(names, count) : m_ini.EnumerateAllSections(names, count);
        std::vector<std::string> narrowed;
        for (const auto &name : names)
            narrowed.push_back(narrow(name));
        const std::string mark = "<count " + std::to_string(count) + ">";
        return joined(narrowed) + (count == static_cast<std::int32_t>(names.size()) ? "" : mark);
    }

    // A write on both sides; with value null a key's deletion (ours through DeleteKey, or through a write of the
    // null string), with key null as well the section's. What the Win32 call returned.
    bool edit(const std::string &section, const char *key, const char *value, bool throughNullValue = false)
    {
        clsIniFile &ini = at(section, key ? key : "");
        if (value)
            ini.setValue(platform::fromCodePage(value));
        else if (!key)
            ini.DeleteSection();
        else if (throughNullValue)
            ini.setValue(nullptr);
        else
            ini.DeleteKey();
        const auto path = platform::toCodePage(theirsFile.u16string());
        return WritePrivateProfileStringA(section.c_str(), key, value, path.c_str()) != 0;
    }

    // One line for each disagreement, raw lists and enumerations alike; empty when the sides agree.
    std::string differences(const Reads &reads = {})
    {
        std::string report;
        const auto compare = [&report](const std::string &what, const std::string &ours, const std::string &theirs) {
            if (ours != theirs)
                report += what + ": ours \"" + escaped(ours) + "\", Win32 \"" + escaped(theirs) + "\"\n";
        };
        const std::string theirSections = theirs(nullptr, nullptr);
        compare("section list", ours(nullptr, nullptr), theirSections);
        compare("EnumerateAllSections", enumerated(nullptr), joined(namesOf(theirSections, true)));
        std::vector<std::string> sections;
        if (reads.listedSections)
            sections = namesOf(theirSections, true);
        sections.insert(sections.end(), reads.extraSections.begin(), reads.extraSections.end());
        for (const auto &listed : sections) {
            const std::string section = reads.spell(listed), where = "[" + escaped(section) + "]";
            const std::string theirKeys = theirs(section.c_str(), nullptr);
            if (reads.keyLists) {
                compare("key list of " + where, ours(section.c_str(), nullptr), theirKeys);
                compare("EnumerateCurrentSection of " + where, enumerated(section.c_str()),
                        joined(namesOf(theirKeys, false)));
            }
            std::vector<std::string> keys = namesOf(theirKeys, false);
            keys.insert(keys.end(), reads.extraKeys.begin(), reads.extraKeys.end());
            for (const auto &listedKey : reads.values ? keys : std::vector<std::string>()) {
                const std::string key = reads.spell(listedKey);
                compare("value of " + where + " " + escaped(key), ours(section.c_str(), key.c_str()),
                        theirs(section.c_str(), key.c_str()));
            }
        }
        if (reads.fileBytes)
            compare("file bytes", readBytes(oursFile), readBytes(theirsFile));
        return report;
    }

private:
    static std::string narrow(const std::u16string &text) { return platform::toCodePage(text); }
    clsIniFile &at(const std::string &section, const std::string &key)
    {
        m_ini.setSection(platform::fromCodePage(section));
        m_ini.setKey(platform::fromCodePage(key));
        return m_ini;
    }
    clsIniFile m_ini;
};

} // namespace fleetwright::test
