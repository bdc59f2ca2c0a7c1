#include "platform/regional.h"

#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

namespace fleetwright::platform {

namespace {

// The environment variables that decide what std::locale("") gives for dates, times and numbers.
std::string localeEnvironment()
{
    std::string key;
    for (const char *name : {"LC_ALL", "LC_TIME", "LC_NUMERIC", "LC_CTYPE", "LANG"}) {
        const char *value = std::getenv(name);
        key += value ? value : "\x01";
        key += '\0';
    }
    return key;
}

// Building the user's locale costs more than the text it formats; it is built again only when the
// environment that names it changes.
std::locale userLocale()
{
    thread_local std::string cachedFor;
    thread_local std::locale cached = std::locale::classic();
    thread_local bool built = false;
    std::string key = localeEnvironment();
    if (built && key == cachedFor)
        return cached;
    try {
        cached = std::locale("");
    } catch (const std::runtime_error &) {
        // LANG names a locale that is not installed; the C library falls back the same way.
        cached = std::locale::classic();
    }
    cachedFor = std::move(key);
    built = true;
    return cached;
}

// wchar_t holds UTF-32 here; the engine's text is UTF-16.
std::u16string toWide(const std::wstring &text)
{
    std::u16string out;
    out.reserve(text.size());
    for (const wchar_t ch : text) {
        const auto code = static_cast<char32_t>(ch);
        if (code >= 0x10000 && code <= 0x10FFFF) {
            out.push_back(static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF)));
        } else if (code < 0x10000) {
            out.push_back(static_cast<char16_t>(code));
        } else {
            out.push_back(u'\uFFFD');
        }
    }
    return out;
}

std::u16string formatLocal(std::int64_t secondsSinceEpoch, const wchar_t *format)
{
    const auto moment = static_cast<std::time_t>(secondsSinceEpoch);
    std::tm local {};
    if (::localtime_r(&moment, &local) == nullptr)
        return {};
    std::wostringstream out;
    out.imbue(userLocale());
    out << std::put_time(&local, format);
    return toWide(out.str());
}

} // namespace

char16_t DecimalSeparatorChar()
{
    const wchar_t point = std::use_facet<std::numpunct<wchar_t>>(userLocale()).decimal_point();
    return static_cast<char32_t>(point) < 0x10000 ? static_cast<char16_t>(point) : u'.';
}

std::u16string shortDateText(std::int64_t secondsSinceEpoch)
{
    return formatLocal(secondsSinceEpoch, L"%x");
}

std::u16string longTimeText(std::int64_t secondsSinceEpoch)
{
    return formatLocal(secondsSinceEpoch, L"%X");
}

} // namespace fleetwright::platform
