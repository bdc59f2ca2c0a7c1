#include "profilepair.h"

#include <algorithm>
#include <cstdio>

#include "common/tempdir.h"
#include "platform/codepage.h"

namespace fleetwright::test {

namespace {

std::vector<std::string> narrowNames(const std::vector<std::u16string> &names, std::int32_t count)
{
    std::vector<std::string> result;
    for (const auto &name : names)
        result.push_back(platform::toCodePage(name));
    if (static_cast<std::size_t>(count) != names.size())
        result.push_back("<count " + std::to_string(count) + " disagrees with the array>");
    return result;
}

// Names as a list of the raw form, each closed by a NUL.
std::string joined(const std::vector<std::string> &names)
{
    std::string list;
    for (const auto &name : names)
        list += name + '\0';
    return list;
}

} // namespace

std::string Win32Profile::read(const char *section, const char *key, DWORD size) const
{
    std::string buffer(size, ' ');
    buffer.resize(std::min(GetPrivateProfileStringA(section, key, "", buffer.data(), size, m_file.c_str()), size));
    return buffer;
}

std::vector<std::string> EngineProfile::keyNames(const std::string &section)
{
    std::vector<std::u16string> names;
    std::int32_t count = -1;
    at(section).EnumerateCurrentSection(names, count);
    return narrowNames(names, count);
}

std::vector<std::string> EngineProfile::sectionNames()
{
    std::vector<std::u16string> names;
    std::int32_t count = -1;
    m_ini.EnumerateAllSections(names, count);
    return narrowNames(names, count);
}

bool sameName(std::string_view a, std::string_view b)
{
    const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; };
    return a.size() == b.size()
        && std::equal(a.begin(), a.end(), b.begin(), [&](char x, char y) { return upper(x) == upper(y); });
}

std::vector<std::string> splitList(std::string_view list, bool skipEmpty)
{
    std::vector<std::string> names;
    std::size_t pos = 0;
    for (auto nul = list.find('\0'); nul != std::string_view::npos; nul = list.find('\0', pos)) {
        if (nul > pos || !skipEmpty)
            names.emplace_back(list.substr(pos, nul - pos));
        pos = nul + 1;
    }
    return names;
}

std::string escaped(std::string_view bytes)
{
    std::string text;
    for (const char c : bytes) {
        char hex[8];
        std::snprintf(hex, sizeof hex, "\\x%02X", static_cast<unsigned char>(c));
        text += c >= 0x20 && c < 0x7F && c != '\\' && c != '"' ? std::string(1, c) : std::string(hex);
    }
    return text;
}

ProfilePair::ProfilePair(const std::filesystem::path &folder, const std::string &name, std::string_view bytes)
    : m_oursFile(folder / (name + "-ours.cfg"))
    , m_theirsFile(folder / (name + "-theirs.cfg"))
    , m_ours(m_oursFile)
    , m_theirs(m_theirsFile)
{
    writeBytes(m_oursFile, bytes);
    writeBytes(m_theirsFile, bytes);
}

std::string ProfilePair::differences(const Reads &reads)
{
    const auto spell = [&reads](const std::string &name) { return reads.spell ? reads.spell(name) : name; };
    std::string report;
    const auto compare = [&report](const std::string &what, const std::string &ours, const std::string &theirs) {
        if (ours != theirs)
            report += what + ": ours \"" + escaped(ours) + "\", Win32 \"" + escaped(theirs) + "\"\n";
    };
    const auto compareNames = [&](const std::string &what, const auto &ours, const auto &theirs) {
        compare(what, joined(ours), joined(theirs));
    };

    const std::string theirSections = m_theirs.sectionList();
    compare("section list", m_ours.sectionList(), theirSections);
    compareNames("EnumerateAllSections", m_ours.sectionNames(), splitList(theirSections, true));

    std::vector<std::string> sections;
    if (reads.listedSections)
        sections = splitList(theirSections, true);
    sections.insert(sections.end(), reads.extraSections.begin(), reads.extraSections.end());
    for (const auto &listed : sections) {
        const std::string section = spell(listed);
        const std::string where = "[" + escaped(section) + "]";
        const std::string theirKeys = m_theirs.keyList(section);
        if (reads.keyLists) {
            compare("key list of " + where, m_ours.keyList(section), theirKeys);
            compareNames("EnumerateCurrentSection of " + where, m_ours.keyNames(section), splitList(theirKeys, false));
        }
        if (!reads.values)
            continue;
        std::vector<std::string> keys = splitList(theirKeys, false);
        keys.insert(keys.end(), reads.extraKeys.begin(), reads.extraKeys.end());
        for (const auto &listedKey : keys) {
            const std::string key = spell(listedKey);
            compare("value of " + where + " " + escaped(key), m_ours.value(section, key), m_theirs.value(section, key));
        }
    }
    if (reads.fileBytes)
        compare("file bytes", readBytes(m_oursFile), readBytes(m_theirsFile));
    return report;
}

} // namespace fleetwright::test
