#include "core/profiledocument.h"

#include <utility>

#include "platform/codepage.h"

namespace fleetwright {

namespace {

constexpr std::string_view UTF8_BOM = "\xEF\xBB\xBF";

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

std::string_view trimBlanks(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

// Names and values end at a NUL, as the C strings of the platform's calls do.
std::string_view cutAtNul(std::string_view text)
{
    const auto nul = text.find('\0');
    return nul == std::string_view::npos ? text : text.substr(0, nul);
}

// Names passed in are taken as the platform's calls take them: up to a NUL, blanks and tabs around dropped.
std::string_view passedName(std::string_view name)
{
    return trimBlanks(cutAtNul(name));
}

std::string joined(std::string_view a, std::string_view b, std::string_view c)
{
    std::string text;
    text.reserve(a.size() + b.size() + c.size());
    text.append(a).append(b).append(c);
    return text;
}

bool equalsFolded(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] != b[i]
            && platform::foldByteUpper(static_cast<unsigned char>(a[i]))
                != platform::foldByteUpper(static_cast<unsigned char>(b[i])))
            return false;
    }
    return true;
}

std::string_view lineEndBytes(std::uint8_t end)
{
    switch (end) {
    case 1:
        return "\r\n";
    case 2:
        return "\n";
    case 3:
        return "\r";
    default:
        return {};
    }
}

// A file that starts with a UTF-16 byte order mark, as the code page's text it holds.
std::string decodeUtf16(std::string_view bytes, bool bigEndian)
{
    std::u16string text;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        const auto a = static_cast<unsigned char>(bytes[i]);
        const auto b = static_cast<unsigned char>(bytes[i + 1]);
        text.push_back(static_cast<char16_t>(bigEndian ? (a << 8) | b : (b << 8) | a));
    }
    return platform::toCodePage(text);
}

} // namespace

ProfileDocument::ProfileDocument(std::string_view bytes)
{
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
        m_writable = false;
        parse(decodeUtf16(bytes, bytes[0] == '\xFE'));
        return;
    }
    // The platform's calls skip a UTF-8 byte order mark; it stays in front of the file.
    if (bytes.starts_with(UTF8_BOM)) {
        m_bom = UTF8_BOM;
        bytes.remove_prefix(UTF8_BOM.size());
    }
    parse(bytes);
}

void ProfileDocument::parse(std::string_view bytes)
{
    m_sections.clear();
    m_sections.emplace_back();
    std::size_t pos = 0;
    while (pos < bytes.size()) {
        std::size_t end = pos;
        while (end < bytes.size() && bytes[end] != '\r' && bytes[end] != '\n')
            ++end;
        LineEnd lineEnd = LineEnd::None;
        std::size_t next = end;
        if (end < bytes.size()) {
            if (bytes[end] == '\n') {
                lineEnd = LineEnd::Lf;
                next = end + 1;
            } else if (end + 1 < bytes.size() && bytes[end + 1] == '\n') {
                lineEnd = LineEnd::CrLf;
                next = end + 2;
            } else {
                lineEnd = LineEnd::Cr;
                next = end + 1;
            }
        }
        Line line = classify(std::string(bytes.substr(pos, end - pos)), lineEnd, m_sections.back().hasHeader);
        if (line.kind == LineKind::Header)
            m_sections.push_back(Section {true, {}});
        m_sections.back().lines.push_back(std::move(line));
        pos = next;
    }
    rebuildIndex();
}

ProfileDocument::Line ProfileDocument::classify(std::string text, LineEnd end, bool insideSection)
{
    Line line;
    line.end = end;
    const std::string_view view = text;
    std::string_view name;
    const auto first = view.find_first_not_of(" \t");
    if (first != std::string_view::npos && view[first] == '[') {
        const auto close = view.rfind(']');
        if (close != std::string_view::npos && close > first) {
            line.kind = LineKind::Header;
            name = cutAtNul(trimBlanks(view.substr(first + 1, close - first - 1)));
        }
    }
    if (line.kind == LineKind::Other && first != std::string_view::npos) {
        if (view[first] == ';') {
            line.kind = LineKind::Comment;
        } else if (insideSection) {
            const auto equals = view.find('=');
            if (equals != std::string_view::npos) {
                line.kind = LineKind::Key;
                name = trimBlanks(cutAtNul(view.substr(0, equals)));
            }
        }
    }
    if (!name.empty()) {
        line.nameStart = static_cast<std::uint32_t>(name.data() - view.data());
        line.nameLength = static_cast<std::uint32_t>(name.size());
    }
    line.text = std::move(text);
    return line;
}

std::string ProfileDocument::bytes() const
{
    std::size_t size = m_bom.size();
    for (const auto &section : m_sections) {
        for (const auto &line : section.lines)
            size += line.text.size() + 2;
    }
    std::string out;
    out.reserve(size);
    out += m_bom;
    for (const auto &section : m_sections) {
        for (const auto &line : section.lines) {
            out += line.text;
            out += lineEndBytes(static_cast<std::uint8_t>(line.end));
        }
    }
    return out;
}

void ProfileDocument::rebuildIndex()
{
    m_firstSection.clear();
    for (std::size_t i = 0; i < m_sections.size(); ++i) {
        if (m_sections[i].hasHeader)
            m_firstSection.try_emplace(platform::foldUpper(m_sections[i].lines.front().name()), i);
    }
}

const ProfileDocument::Section *ProfileDocument::findSection(std::string_view section) const
{
    const auto it = m_firstSection.find(platform::foldUpper(passedName(section)));
    return it == m_firstSection.end() ? nullptr : &m_sections[it->second];
}

ProfileDocument::Section *ProfileDocument::findSection(std::string_view section)
{
    return const_cast<Section *>(std::as_const(*this).findSection(section));
}

std::ptrdiff_t ProfileDocument::findKey(const Section &section, std::string_view key)
{
    for (std::size_t i = 1; i < section.lines.size(); ++i) {
        const Line &line = section.lines[i];
        if (line.kind == LineKind::Key && line.nameLength == key.size() && equalsFolded(line.name(), key))
            return static_cast<std::ptrdiff_t>(i);
    }
    return -1;
}

std::optional<std::string> ProfileDocument::value(std::string_view section, std::string_view key) const
{
    const Section *found = findSection(section);
    if (!found)
        return std::nullopt;
    const auto index = findKey(*found, passedName(key));
    if (index < 0)
        return std::nullopt;
    const std::string &text = found->lines[static_cast<std::size_t>(index)].text;
    std::string_view value = trimBlanks(std::string_view(text).substr(text.find('=') + 1));
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front())
        value = value.substr(1, value.size() - 2);
    return std::string(cutAtNul(value));
}

namespace {

std::string limitList(std::string list)
{
    // The platform's list buffer holds 8192 characters; a list that does not fit comes back as its first
    // 8190, the name on the boundary cut short with no NUL behind it.
    if (list.size() > ProfileDocument::LIST_LIMIT)
        list.resize(ProfileDocument::LIST_LIMIT);
    return list;
}

} // namespace

std::string ProfileDocument::keyNameList(std::string_view section) const
{
    std::string list;
    if (const Section *found = findSection(section)) {
        for (const auto &line : found->lines) {
            if (line.kind == LineKind::Key) {
                list += line.name();
                list += '\0';
                if (list.size() > LIST_LIMIT)
                    break;
            }
        }
    }
    return limitList(std::move(list));
}

std::string ProfileDocument::sectionNameList() const
{
    std::string list;
    for (const auto &section : m_sections) {
        if (section.hasHeader) {
            list += section.lines.front().name();
            list += '\0';
            if (list.size() > LIST_LIMIT)
                break;
        }
    }
    return limitList(std::move(list));
}

void ProfileDocument::endLastLine()
{
    for (auto it = m_sections.rbegin(); it != m_sections.rend(); ++it) {
        if (!it->lines.empty()) {
            if (it->lines.back().end == LineEnd::None)
                it->lines.back().end = LineEnd::CrLf;
            return;
        }
    }
}

// A written line that the parser would read otherwise (a key name that starts with "[" or ";", holds "=",
// a line break in a value) makes the document what the file now is by parsing it again.
void ProfileDocument::reparseIfNeeded(const Line &written, LineKind kind, std::string_view name)
{
    const bool breaks = written.text.find_first_of("\r\n") != std::string::npos;
    if (!breaks && written.kind == kind && written.name() == name)
        return;
    const std::string all = bytes();
    const std::string bom = m_bom;
    parse(std::string_view(all).substr(bom.size()));
    m_bom = bom;
}

bool ProfileDocument::writeValue(std::string_view section, std::string_view key, std::string_view value)
{
    section = passedName(section);
    key = passedName(key);
    Section *found = findSection(section);
    if (!found) {
        endLastLine();
        Section added {true, {}};
        added.lines.push_back(classify(joined("[", section, "]"), LineEnd::CrLf, false));
        added.lines.push_back(classify(joined(key, "=", value), LineEnd::CrLf, true));
        const Line header = added.lines[0];
        const Line keyLine = added.lines[1];
        m_sections.push_back(std::move(added));
        m_firstSection.try_emplace(platform::foldUpper(m_sections.back().lines.front().name()), m_sections.size() - 1);
        reparseIfNeeded(header, LineKind::Header, section);
        reparseIfNeeded(keyLine, LineKind::Key, key);
        return true;
    }
    const auto index = findKey(*found, key);
    if (index >= 0) {
        Line &line = found->lines[static_cast<std::size_t>(index)];
        std::string text = line.text.substr(0, line.text.find('=') + 1);
        text += value;
        if (text == line.text)
            return false;
        // The new value can make the line something else: "[d=" with "e]" behind it is a header.
        const std::string name(line.name());
        line = classify(std::move(text), line.end, true);
        reparseIfNeeded(line, LineKind::Key, name);
        return true;
    }
    // A new key goes behind the last key line of its section, or right under the header when the section
    // has none left; later writes then come in the order they were made.
    std::size_t after = 0;
    for (std::size_t i = 1; i < found->lines.size(); ++i) {
        if (found->lines[i].kind == LineKind::Key)
            after = i;
    }
    if (found->lines[after].end == LineEnd::None)
        found->lines[after].end = LineEnd::CrLf;
    Line added = classify(joined(key, "=", value), LineEnd::CrLf, true);
    const auto position =
        found->lines.insert(found->lines.begin() + static_cast<std::ptrdiff_t>(after) + 1, std::move(added));
    reparseIfNeeded(*position, LineKind::Key, key);
    return true;
}

bool ProfileDocument::deleteKey(std::string_view section, std::string_view key)
{
    Section *found = findSection(section);
    if (!found)
        return false;
    const auto index = findKey(*found, passedName(key));
    if (index < 0)
        return false;
    found->lines.erase(found->lines.begin() + index);
    return true;
}

bool ProfileDocument::deleteSection(std::string_view section)
{
    const auto it = m_firstSection.find(platform::foldUpper(passedName(section)));
    if (it == m_firstSection.end())
        return false;
    const std::size_t erased = it->second;
    const std::string name(m_sections[erased].lines.front().name());
    m_sections.erase(m_sections.begin() + static_cast<std::ptrdiff_t>(erased));
    // The index is mended rather than made anew: deleting many sections of a large file one by one would
    // otherwise fold and hash every name of the file once per deletion.
    for (auto &entry : m_firstSection) {
        if (entry.second > erased)
            --entry.second;
    }
    // A later section of the same name becomes the first one.
    m_firstSection.erase(it);
    for (std::size_t i = erased; i < m_sections.size(); ++i) {
        if (m_sections[i].hasHeader && equalsFolded(m_sections[i].lines.front().name(), name)) {
            m_firstSection.emplace(platform::foldUpper(name), i);
            break;
        }
    }
    return true;
}

} // namespace fleetwright
