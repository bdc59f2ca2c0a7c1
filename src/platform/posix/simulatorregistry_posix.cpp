// The registry of a Wine prefix, read from its system.reg, and Windows paths mapped into the prefix.
#include "platform/simulatorregistry.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <pwd.h>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "platform/fileio.h"
#include "platform/filelookup.h"
#include "platform/posix/homefolder_posix.h"
#include "platform/utf8.h"

namespace fleetwright::platform {

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t REG_SZ_TYPE = 1;
constexpr std::uint32_t REG_DWORD_TYPE = 4;

std::optional<std::string> variable(const char *name)
{
    if (const char *value = std::getenv(name))
        return std::string(value);
    return std::nullopt;
}

// Wine names the user's folder after $USER, else after the account.
std::string userName()
{
    if (const std::optional<std::string> user = variable("USER"); user && !user->empty())
        return *user;
    std::vector<char> buffer(16384);
    passwd entry {};
    passwd *found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr
        && found->pw_name != nullptr)
        return found->pw_name;
    return {};
}

bool isHexDigit(char ch)
{
    return (ch >= '0' && ch <= '9') || (ch >= 'a' && ch <= 'f') || (ch >= 'A' && ch <= 'F');
}

int hexValue(char ch)
{
    if (ch >= '0' && ch <= '9')
        return ch - '0';
    if (ch >= 'a' && ch <= 'f')
        return ch - 'a' + 10;
    return ch - 'A' + 10;
}

// One name or string of system.reg, from pos up to the unescaped end character. Wine escapes "\\", the end
// character, control characters ("\n", "\t", octal "\0") and every character above 127 ("\xe9", "\x00e9"
// when a hex digit follows); other bytes are UTF-8. Returns the text and the position behind the end
// character, or nothing when the end character is missing.
std::optional<std::pair<std::u16string, std::size_t>> unescaped(std::string_view line, std::size_t pos, char end)
{
    std::u16string text;
    std::string plain;
    const auto flush = [&] {
        text += fromUtf8(plain);
        plain.clear();
    };
    while (pos < line.size() && line[pos] != end) {
        if (line[pos] != '\\' || pos + 1 >= line.size()) {
            plain.push_back(line[pos++]);
            continue;
        }
        const char escape = line[++pos];
        char16_t ch = 0;
        switch (escape) {
        case 'a':
            ch = u'\a';
            break;
        case 'b':
            ch = u'\b';
            break;
        case 'e':
            ch = 0x1B;
            break;
        case 'f':
            ch = u'\f';
            break;
        case 'n':
            ch = u'\n';
            break;
        case 'r':
            ch = u'\r';
            break;
        case 't':
            ch = u'\t';
            break;
        case 'v':
            ch = u'\v';
            break;
        case 'x':
            ++pos;
            if (pos >= line.size() || !isHexDigit(line[pos])) {
                ch = u'x';
                --pos;
                break;
            }
            for (int digits = 0; digits < 4 && pos < line.size() && isHexDigit(line[pos]); ++digits)
                ch = static_cast<char16_t>(ch * 16 + hexValue(line[pos++]));
            flush();
            text.push_back(ch);
            continue;
        default:
            if (escape >= '0' && escape <= '7') {
                for (int digits = 0; digits < 3 && pos < line.size() && line[pos] >= '0' && line[pos] <= '7'; ++digits)
                    ch = static_cast<char16_t>(ch * 8 + (line[pos++] - '0'));
                flush();
                text.push_back(ch);
                continue;
            }
            // Any other escaped character stands for itself.
            plain.push_back(escape);
            ++pos;
            continue;
        }
        flush();
        text.push_back(ch);
        ++pos;
    }
    if (pos >= line.size())
        return std::nullopt;
    flush();
    return std::make_pair(std::move(text), pos + 1);
}

// "01,02,0a" (blanks and the line continuations already joined); nothing when it is no byte list.
std::optional<std::string> hexBytes(std::string_view text)
{
    std::string bytes;
    std::size_t pos = 0;
    while (pos < text.size()) {
        while (pos < text.size() && (text[pos] == ' ' || text[pos] == '\t' || text[pos] == ','))
            ++pos;
        if (pos == text.size())
            break;
        if (pos + 1 >= text.size() || !isHexDigit(text[pos]) || !isHexDigit(text[pos + 1]))
            return std::nullopt;
        bytes.push_back(static_cast<char>(hexValue(text[pos]) * 16 + hexValue(text[pos + 1])));
        pos += 2;
    }
    return bytes;
}

std::u16string dwordText(std::uint32_t value)
{
    return fromUtf8(std::to_string(static_cast<std::int32_t>(value)));
}

// The value as the query gives it to the caller: strings and numbers, nothing else.
std::u16string valueText(std::string_view data)
{
    // "text"  str(N):"text"  dword:0000000a  hex:01,02  hex(N):01,02
    std::uint32_t type = REG_SZ_TYPE;
    if (data.starts_with("str(")) {
        const std::size_t close = data.find("):");
        if (close == std::string_view::npos)
            return {};
        type = static_cast<std::uint32_t>(std::strtoul(std::string(data.substr(4, close - 4)).c_str(), nullptr, 16));
        data.remove_prefix(close + 2);
    }
    if (data.starts_with('"')) {
        const auto text = unescaped(data, 1, '"');
        return text && type == REG_SZ_TYPE ? text->first : std::u16string();
    }
    if (data.starts_with("dword:")) {
        const std::string digits(data.substr(6));
        if (digits.empty() || digits.size() > 8 || !std::all_of(digits.begin(), digits.end(), isHexDigit))
            return {};
        return dwordText(static_cast<std::uint32_t>(std::strtoul(digits.c_str(), nullptr, 16)));
    }
    if (!data.starts_with("hex("))
        return {};
    const std::size_t close = data.find("):");
    if (close == std::string_view::npos)
        return {};
    type = static_cast<std::uint32_t>(std::strtoul(std::string(data.substr(4, close - 4)).c_str(), nullptr, 16));
    const std::optional<std::string> bytes = hexBytes(data.substr(close + 2));
    if (!bytes)
        return {};
    // Wine writes a string that lacks its terminating NUL, or a number of odd size, as bytes.
    if (type == REG_DWORD_TYPE) {
        if (bytes->size() != 4)
            return {};
        std::uint32_t value = 0;
        for (int i = 3; i >= 0; --i)
            value = value << 8 | static_cast<unsigned char>((*bytes)[i]);
        return dwordText(value);
    }
    if (type != REG_SZ_TYPE)
        return {};
    std::u16string text;
    for (std::size_t i = 0; i + 1 < bytes->size(); i += 2)
        text.push_back(static_cast<char16_t>(static_cast<unsigned char>((*bytes)[i])
                                             | static_cast<unsigned char>((*bytes)[i + 1]) << 8));
    if (!text.empty() && text.back() == u'\0')
        text.pop_back();
    return text;
}

std::vector<std::string_view> lines(std::string_view content)
{
    std::vector<std::string_view> result;
    while (!content.empty()) {
        std::size_t end = content.find('\n');
        std::string_view line = content.substr(0, end);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        result.push_back(line);
        if (end == std::string_view::npos)
            break;
        content.remove_prefix(end + 1);
    }
    return result;
}

std::string_view leftTrimmed(std::string_view text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    return text;
}

std::optional<std::string> systemRegistry(const std::u16string &prefix)
{
    if (prefix.empty())
        return std::nullopt;
    return readWholeFile(fs::path(prefix) / "system.reg").bytes;
}

} // namespace

SimulatorRegistry::SimulatorRegistry()
{
    if (const std::optional<std::string> prefix = variable("WINEPREFIX"); prefix && !prefix->empty()) {
        m_prefix = fromUtf8(*prefix);
        return;
    }
    if (const std::string home = homeFolder(); !home.empty())
        m_prefix = (fs::path(home) / ".wine").u16string();
}

std::u16string SimulatorRegistry::GetRegistryValue(std::u16string_view keyPath, std::u16string_view valueName) const
{
    if (const char *name = registryOverrideVariable(keyPath, valueName)) {
        if (const std::optional<std::string> value = variable(name))
            return fromUtf8(*value);
    }
    const std::optional<std::string> content = systemRegistry(m_prefix);
    if (!content)
        return {};
    const std::vector<std::string_view> all = lines(*content);
    bool inKey = false;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const std::string_view line = all[i];
        if (line.starts_with('[')) {
            if (inKey)
                return {};
            const auto name = unescaped(line, 1, ']');
            inKey = name && sameNameIgnoringCase(name->first, keyPath);
            continue;
        }
        if (!inKey || !(line.starts_with('"') || line.starts_with('@')))
            continue;
        std::u16string name;
        std::size_t pos = 1;
        if (line.starts_with('"')) {
            const auto quoted = unescaped(line, 1, '"');
            if (!quoted)
                continue;
            name = quoted->first;
            pos = quoted->second;
        }
        if (pos >= line.size() || line[pos] != '=' || !sameNameIgnoringCase(name, valueName))
            continue;
        std::string data(line.substr(pos + 1));
        // Long byte lists go on over several lines, each but the last ending in a backslash.
        while (data.starts_with("hex") && data.ends_with('\\') && i + 1 < all.size()) {
            data.pop_back();
            data += leftTrimmed(all[++i]);
        }
        return valueText(data);
    }
    return {};
}

std::u16string SimulatorRegistry::nativePath(std::u16string_view windowsPath) const
{
    const auto isSeparator = [](char16_t ch) { return ch == u'\\' || ch == u'/'; };
    const bool drive = windowsPath.size() >= 2 && windowsPath[1] == u':'
        && ((windowsPath[0] >= u'A' && windowsPath[0] <= u'Z') || (windowsPath[0] >= u'a' && windowsPath[0] <= u'z'));
    const bool unc = windowsPath.size() >= 2 && windowsPath[0] == u'\\' && windowsPath[1] == u'\\';
    if ((!drive && !unc) || m_prefix.empty())
        return std::u16string(windowsPath);

    const fs::path devices = fs::path(m_prefix) / "dosdevices";
    fs::path base;
    std::u16string_view rest;
    if (drive) {
        const char letter = static_cast<char>(windowsPath[0] | 0x20);
        base = devices / (std::string(1, letter) + ":");
        // Name the drive by its target, so that paths read as the folders they are ("c:" is ../drive_c).
        std::error_code error;
        if (fs::path target = fs::canonical(base, error); !error)
            base = std::move(target);
        rest = windowsPath.substr(2);
    } else {
        base = devices / "unc";
        rest = windowsPath.substr(2);
    }
    fs::path path = base;
    std::size_t pos = 0;
    while (pos < rest.size()) {
        std::size_t end = pos;
        while (end < rest.size() && !isSeparator(rest[end]))
            ++end;
        if (end > pos)
            path /= fs::path(std::u16string(rest.substr(pos, end - pos)));
        pos = end + 1;
    }
    if (rest.empty() || isSeparator(rest.back()))
        path /= fs::path();
    if (const std::optional<fs::path> resolved = FileLookup::resolve(path))
        return resolved->u16string();
    return path.u16string();
}

bool SimulatorRegistry::Is64BitOS() const
{
    const std::optional<std::string> content = systemRegistry(m_prefix);
    if (!content)
        return false;
    for (const std::string_view line : lines(*content)) {
        if (line.starts_with('['))
            break;
        if (line == "#arch=win64")
            return true;
    }
    return false;
}

std::u16string SimulatorRegistry::GetSpecialFolder(int folderId) const
{
    if (folderId != APPDATA_FOLDER)
        return {};
    if (const std::optional<std::string> folder = variable("FLEETWRIGHT_APPDATA"))
        return fromUtf8(*folder);
    const std::string user = userName();
    if (m_prefix.empty() || user.empty())
        return {};
    const fs::path home = fs::path(m_prefix) / "drive_c" / "users" / user;
    for (const fs::path &roaming : {home / "AppData" / "Roaming", home / "Application Data"}) {
        if (const std::optional<fs::path> resolved = FileLookup::resolve(roaming))
            return resolved->u16string();
    }
    return {};
}

} // namespace fleetwright::platform
