#include "profilepair.h"

#include <algorithm>
#include <cstdio>
#include <windows.h>

#include "platform/codepage.h"
#include "common/tempdir.h"

namespace fleetwright::test {

namespace {

constexpr DWORD VALUE_BUFFER = 4096;
constexpr DWORD LIST_BUFFER = 8192;

std::string readProfile(const char *section, const char *key, DWORD size, const std::string &file)
{
    std::string buffer(size, ' ');
    const DWORD length = GetPrivateProfileStringA(section, key, "", buffer.data(), size, file.c_str());
    buffer.resize(std::min<DWORD>(length, size));
    return buffer;
}

std::u16string wide(const std::string &bytes)
{
    return platform::fromCodePage(bytes);
}

std::vector<std::string> narrow(const std::vector<std::u16string> &names)
{
    std::vector<std::string> result;
    for (const auto &name : names)
        result.push_back(platform::toCodePage(name));
    return result;
}

std::string joined(const std::vector<std::string> &names)
{
    std::string text = "{";
    for (const auto &name : names)
        text += (text.size() > 1 ? ", \"" : "\"") + escaped(name) + "\"";
    return text + "}";
}

} // namespace

Win32Profile::Win32Profile(const std::filesystem::path &file)
    : m_file(platform::toCodePage(file.u16string()))
{}

std::string Win32Profile::value(const std::string &section, const std::string &key) const
{
    return readProfile(section.c_str(), key.c_str(), VALUE_BUFFER, m_file);
}

std::string Win32Profile::keyList(const std::string &section) const
{
    return readProfile(section.c_str(), nullptr, LIST_BUFFER, m_file);
}

std::string Win32Profile::sectionList() const
{
    return readProfile(nullptr, nullptr, LIST_BUFFER, m_file);
}

bool Win32Profile::writeValue(const std::string &section, const std::string &key, const std::string &value) const
{
    return WritePrivateProfileStringA(section.c_str(), key.c_str(), value.c_str(), m_file.c_str()) != 0;
}

bool Win32Profile::deleteKey(const std::string &section, const std::string &key) const
{
    return WritePrivateProfileStringA(section.c_str(), key.c_str(), nullptr, m_file.c_str()) != 0;
}

bool Win32Profile::deleteSection(const std::string &section) const
{
    return WritePrivateProfileStringA(section.c_str(), nullptr, nullptr, m_file.c_str()) != 0;
}

EngineProfile::EngineProfile(const std::filesystem::path &file)
{
    m_ini.setPath(file.u16string());
}

std::string EngineProfile::value(const std::string &section, const std::string &key)
{
    m_ini.setSection(wide(section));
    m_ini.setKey(wide(key));
    return platform::toCodePage(m_ini.Value());
}

std::string EngineProfile::keyList(const std::string &section)
{
    m_ini.setSection(wide(section));
    return platform::toCodePage(m_ini.INISection());
}

std::string EngineProfile::sectionList()
{
    return platform::toCodePage(m_ini.Sections());
}

std::vector<std::string> EngineProfile::keyNames(const std::string &section)
{
    m_ini.setSection(wide(section));
    std::vector<std::u16string> names;
    std::int32_t count = -1;
    m_ini.EnumerateCurrentSection(names, count);
    if (static_cast<std::size_t>(count) != names.size())
        names.push_back(u"<count " + wide(std::to_string(count)) + u" disagrees with the array>");
    return narrow(names);
}

std::vector<std::string> EngineProfile::sectionNames()
{
    std::vector<std::u16string> names;
    std::int32_t count = -1;
    m_ini.EnumerateAllSections(names, count);
    if (static_cast<std::size_t>(count) != names.size())
        names.push_back(u"<count " + wide(std::to_string(count)) + u" disagrees with the array>");
    return narrow(names);
}

void EngineProfile::writeValue(const std::string &section, const std::string &key, const std::string &value)
{
    m_ini.setSection(wide(section));
    m_ini.setKey(wide(key));
    m_ini.setValue(wide(value));
}

void EngineProfile::deleteKey(const std::string &section, const std::string &key, bool throughNullValue)
{
    m_ini.setSection(wide(section));
    m_ini.setKey(wide(key));
    if (throughNullValue)
        m_ini.setValue(nullptr);
    else
        m_ini.DeleteKey();
}

void EngineProfile::deleteSection(const std::string &section)
{
    m_ini.setSection(wide(section));
    m_ini.DeleteSection();
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
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\r')
            text += "\\r";
        else if (c == '\n')
            text += "\\n";
        else if (c == '\t')
            text += "\\t";
        else if (c == '\\' || c == '"')
            text += std::string("\\") + c;
        else if (byte >= 0x20 && byte < 0x7F)
            text += c;
        else {
            char hex[8];
            std::snprintf(hex, sizeof hex, "\\x%02X", byte);
            text += hex;
        }
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
    const auto compareNames = [&report](const std::string &what, const std::vector<std::string> &ours,
                                        const std::vector<std::string> &theirs) {
        if (ours != theirs)
            report += what + ": ours " + joined(ours) + ", Win32 " + joined(theirs) + "\n";
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
