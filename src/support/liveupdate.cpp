#include "support/liveupdate.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <vector>

#include "core/paths.h"
#include "core/runtimeerror.h"
#include "core/vbtext.h"
#include "platform/codepage.h"
#include "platform/fileio.h"
#include "version.h"

namespace fleetwright {

namespace {

std::u16string decimal(std::uint64_t value)
{
    const std::string digits = std::to_string(value);
    return std::u16string(digits.begin(), digits.end());
}

// Split at "." as the run time splits: an empty text has no parts at all.
std::vector<std::u16string_view> versionParts(std::u16string_view version)
{
    std::vector<std::u16string_view> parts;
    if (version.empty())
        return parts;
    std::size_t start = 0;
    for (;;) {
        const std::size_t dot = version.find(u'.', start);
        parts.push_back(version.substr(start, dot == std::u16string_view::npos ? dot : dot - start));
        if (dot == std::u16string_view::npos)
            return parts;
        start = dot + 1;
    }
}

} // namespace

std::u16string beginDownloadErrorText(std::u16string_view description)
{
    std::u16string text = u":Error in call to BeginDownload().";
    text += u"\r\n\r\n";
    text += u"Error Description: ";
    text += description;
    return text;
}

UpdateConfiguration parseUpdateConfiguration(std::string_view bytes)
{
    const std::u16string text = platform::fromCodePage(bytes);
    std::array<std::u16string, 3> lines;
    std::size_t line = 0;
    std::size_t start = 0;
    while (line < lines.size() && start < text.size()) {
        std::size_t end = start;
        while (end < text.size() && text[end] != u'\r' && text[end] != u'\n')
            ++end;
        lines[line++] = text.substr(start, end - start);
        if (end < text.size() && text[end] == u'\r' && end + 1 < text.size() && text[end + 1] == u'\n')
            ++end;
        start = end + 1;
    }

    UpdateConfiguration configuration;
    configuration.WebVersion = lines[1];
    configuration.DownloadURL = lines[2];
    const std::size_t slash = configuration.DownloadURL.rfind(u'/');
    configuration.DownloadFileName =
        slash == std::u16string::npos ? configuration.DownloadURL : configuration.DownloadURL.substr(slash + 1);
    return configuration;
}

std::u16string ownVersion()
{
    return decimal(VERSION_MAJOR) + u"." + decimal(VERSION_MINOR) + u"." + decimal(VERSION_REVISION);
}

UpdateVerdict compareVersions(std::u16string_view webVersion, std::u16string_view currentVersion)
{
    const auto web = versionParts(webVersion);
    const auto own = versionParts(currentVersion);
    if (web.size() < 3 || own.size() < 3)
        return UpdateVerdict::None;
    std::array<double, 3> w {};
    std::array<double, 3> c {};
    try {
        for (std::size_t i = 0; i < 3; ++i) {
            w[i] = Val(web[i]);
            c[i] = Val(own[i]);
        }
    } catch (const RuntimeError &) {
        return UpdateVerdict::None;
    }
    // In this order, as the decision has always been taken: only the first three parts count.
    if (w[0] > c[0])
        return UpdateVerdict::Newer;
    if (w[0] == c[0] && w[1] > c[1])
        return UpdateVerdict::Newer;
    if (w[0] == c[0] && w[1] == c[1] && w[2] > c[2])
        return UpdateVerdict::Newer;
    if (w[0] == c[0] && w[1] == c[1] && w[2] == c[2])
        return UpdateVerdict::Same;
    return UpdateVerdict::OwnNewer;
}

std::u16string verdictText(UpdateVerdict verdict)
{
    switch (verdict) {
    case UpdateVerdict::Newer:
        return std::u16string(NEWER_TEXT);
    case UpdateVerdict::Same:
        return std::u16string(SAME_TEXT);
    case UpdateVerdict::OwnNewer:
        return std::u16string(OWN_NEWER_TEXT);
    case UpdateVerdict::None:
        break;
    }
    return {};
}

std::u16string progressText(std::uint64_t bytesRead, std::uint64_t bytesTotal)
{
    // "retreived" is the text users have always seen.
    return decimal(bytesRead) + u" bytes of " + decimal(bytesTotal) + u" bytes configuration data retreived";
}

std::u16string versionLineText(std::u16string_view currentVersion, std::u16string_view webVersion)
{
    std::u16string text = u"Your version: ";
    text += currentVersion;
    text += u"    Web version: ";
    text += webVersion;
    return text;
}

int weekOfYear(int year, unsigned month, unsigned day)
{
    using namespace std::chrono;
    const sys_days date {std::chrono::year {year} / std::chrono::month {month} / std::chrono::day {day}};
    const sys_days newYear {std::chrono::year {year} / January / 1};
    const auto dayOfYear = (date - newYear).count();
    const auto newYearWeekday = static_cast<int>(weekday {newYear}.c_encoding()); // Sunday is 0
    return static_cast<int>((dayOfYear + newYearWeekday) / 7) + 1;
}

bool automaticCheckDue(std::u16string_view storedLastCheck, int currentWeek)
{
    if (!convertsToNumber(storedLastCheck))
        throw RuntimeError::typeMismatch(u"Form_Activate");
    try {
        return Val(storedLastCheck) != static_cast<double>(currentWeek);
    } catch (RuntimeError &error) {
        error.setProcedure(u"Form_Activate");
        throw;
    }
}

std::u16string LocalFolder(std::u16string_view tempVariable, std::u16string_view programFolder)
{
    return withTrailingSeparator(std::u16string(tempVariable.empty() ? programFolder : tempVariable));
}

std::u16string localConfigFile(std::u16string_view localFolder)
{
    return std::u16string(localFolder) + u"_vclu.txt";
}

UpdateCheckResult completeUpdateCheck(std::string_view received, std::uint64_t total, const std::u16string &localFile,
                                      std::u16string_view currentVersion)
{
    UpdateCheckResult result;
    if (total == 0)
        return result;
    result.connected = true;

    // Every step goes on when the one before failed, as the control ignores its errors: a copy that could not
    // be written reads as nothing, and nothing gives no verdict.
    const std::filesystem::path path(localFile);
    platform::replaceFileAtomically(path, received);
    if (const auto bytes = platform::readWholeFile(path).bytes)
        result.configuration = parseUpdateConfiguration(*bytes);
    // Only a file is deleted, never a folder of that name.
    std::error_code ignored;
    if (!std::filesystem::is_directory(path, ignored))
        std::filesystem::remove(path, ignored);

    result.versionLine = versionLineText(currentVersion, result.configuration.WebVersion);
    result.verdict = compareVersions(result.configuration.WebVersion, currentVersion);
    return result;
}

} // namespace fleetwright
