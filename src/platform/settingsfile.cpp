#include "platform/settingsfile.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/fileio.h"
#include "platform/namefolding.h"
#include "platform/utf8.h"

namespace fleetwright::platform {

namespace fs = std::filesystem;

namespace {

bool isFileBlank(char ch)
{
    return ch == ' ' || ch == '\t';
}

std::string_view trimmedLine(std::string_view text)
{
    while (!text.empty() && isFileBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isFileBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

std::string escaped(std::u16string_view text, bool isKey)
{
    const std::string utf8 = toUtf8(text);
    std::string out;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const char ch = utf8[i];
        const bool edge = i == 0 || i + 1 == utf8.size();
        const bool escape = static_cast<unsigned char>(ch) < 0x20 || ch == '%' || (edge && isFileBlank(ch))
            || (isKey && (ch == '=' || (i == 0 && (ch == '[' || ch == ';' || ch == '#'))));
        if (escape) {
            static constexpr char HEX[] = "0123456789ABCDEF";
            out += '%';
            out += HEX[static_cast<unsigned char>(ch) >> 4];
            out += HEX[ch & 0x0F];
        } else {
            out += ch;
        }
    }
    return out;
}

int hexValue(char ch)
{
    if (ch >= '0' && ch <= '9')
        return ch - '0';
    if (ch >= 'A' && ch <= 'F')
        return ch - 'A' + 10;
    if (ch >= 'a' && ch <= 'f')
        return ch - 'a' + 10;
    return -1;
}

std::u16string unescaped(std::string_view text)
{
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0 && hexValue(text[i + 2]) >= 0) {
            out += static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return fromUtf8(out);
}

// One line of the file, its line end apart.
struct Line
{
    std::size_t start;  // offset of the line in the file
    std::size_t length; // without the line end
    std::size_t next;   // offset of the following line
};

std::vector<Line> splitLines(std::string_view content)
{
    std::vector<Line> lines;
    std::size_t start = 0;
    while (start < content.size()) {
        std::size_t end = content.find_first_of("\r\n", start);
        if (end == std::string_view::npos) {
            lines.push_back({start, content.size() - start, content.size()});
            break;
        }
        std::size_t next = end + 1;
        if (content[end] == '\r' && next < content.size() && content[next] == '\n')
            ++next;
        lines.push_back({start, end - start, next});
        start = next;
    }
    return lines;
}

// What a line of the file is: a section header, a key, or anything else (blank, comment, stray text).
struct ParsedLine
{
    enum Kind
    {
        Other,
        Header,
        Key,
    } kind = Other;
    std::u16string name; // the section or key name
    std::string_view rawName;
    std::string_view rawValue;
};

ParsedLine parseLine(std::string_view line)
{
    ParsedLine parsed;
    const std::string_view text = trimmedLine(line);
    if (text.empty() || text.front() == ';' || text.front() == '#')
        return parsed;
    if (text.front() == '[') {
        const std::size_t close = text.rfind(']');
        if (close == std::string_view::npos)
            return parsed;
        parsed.kind = ParsedLine::Header;
        parsed.name = fromUtf8(trimmedLine(text.substr(1, close - 1)));
        return parsed;
    }
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos)
        return parsed;
    parsed.kind = ParsedLine::Key;
    parsed.rawName = trimmedLine(text.substr(0, equals));
    parsed.name = unescaped(parsed.rawName);
    parsed.rawValue = trimmedLine(text.substr(equals + 1));
    return parsed;
}

// Where a key stands in the file, and where a new key of the section would go.
struct KeyPlace
{
    bool sectionFound = false;
    std::optional<std::size_t> keyLine;
    std::size_t insertAfter = 0; // the section's last line that is not blank
};

KeyPlace findKey(std::string_view content, const std::vector<Line> &lines, std::u16string_view section,
                 std::u16string_view key)
{
    KeyPlace place;
    bool inSection = false;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const ParsedLine parsed = parseLine(content.substr(lines[i].start, lines[i].length));
        if (parsed.kind == ParsedLine::Header) {
            // Only the first section of the name counts, as with the profile calls.
            if (place.sectionFound && inSection)
                break;
            inSection = sameNameIgnoringCase(parsed.name, section);
            if (inSection) {
                place.sectionFound = true;
                place.insertAfter = i;
            }
            continue;
        }
        if (!inSection)
            continue;
        if (!trimmedLine(content.substr(lines[i].start, lines[i].length)).empty())
            place.insertAfter = i;
        if (parsed.kind == ParsedLine::Key && sameNameIgnoringCase(parsed.name, key)) {
            place.keyLine = i;
            return place;
        }
    }
    return place;
}

} // namespace

std::u16string readSettingsFile(const fs::path &file, std::u16string_view section, std::u16string_view key,
                                std::u16string_view defaultValue)
{
    const std::optional<std::string> content = readWholeFile(file).bytes;
    if (!content)
        return std::u16string(defaultValue);
    const std::vector<Line> lines = splitLines(*content);
    const KeyPlace place = findKey(*content, lines, section, key);
    if (!place.keyLine)
        return std::u16string(defaultValue);
    const Line &line = lines[*place.keyLine];
    return unescaped(parseLine(std::string_view(*content).substr(line.start, line.length)).rawValue);
}

bool writeSettingsFile(const fs::path &file, std::u16string_view section, std::u16string_view key,
                       std::u16string_view text)
{
    std::error_code error;
    if (file.has_parent_path())
        fs::create_directories(file.parent_path(), error);

    std::string content;
    if (fs::exists(file, error)) {
        std::optional<std::string> old = readWholeFile(file).bytes;
        // A store that cannot be read must not be overwritten with this one value.
        if (!old)
            return false;
        content = std::move(*old);
    }
    const std::string value = escaped(text, false);
    const std::string keyLine = escaped(key, true) + "=" + value;
    const std::vector<Line> lines = splitLines(content);
    const KeyPlace place = findKey(content, lines, section, key);
    if (place.keyLine) {
        // The key keeps the spelling it has, as a registry value keeps its name.
        const Line &line = lines[*place.keyLine];
        const std::string_view oldLine = std::string_view(content).substr(line.start, line.length);
        const std::string newLine = std::string(parseLine(oldLine).rawName) + "=" + value;
        content.replace(line.start, line.length, newLine);
    } else if (place.sectionFound) {
        const Line &line = lines[place.insertAfter];
        const bool hasLineEnd = line.next > line.start + line.length;
        content.insert(line.next, hasLineEnd ? keyLine + "\n" : "\n" + keyLine + "\n");
    } else {
        if (!content.empty() && content.back() != '\n' && content.back() != '\r')
            content += '\n';
        content += "[" + toUtf8(section) + "]\n" + keyLine + "\n";
    }
    return replaceFileAtomically(file, content);
}

} // namespace fleetwright::platform
