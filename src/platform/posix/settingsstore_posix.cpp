// The settings store off Windows: the settings file in the XDG folder.
#include "platform/settingsstore.h"

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "platform/posix/homefolder_posix.h"
#include "platform/settingsfile.h"
#include "platform/utf8.h"

namespace fleetwright::platform {

namespace fs = std::filesystem;

namespace {

std::optional<fs::path> settingsFile(const std::u16string &application, const std::u16string &section)
{
    if (const char *file = std::getenv("FLEETWRIGHT_SETTINGS"); file != nullptr && *file != '\0')
        return fs::path(file);
    fs::path base;
    // The XDG rules ignore a relative XDG_CONFIG_HOME.
    if (const char *config = std::getenv("XDG_CONFIG_HOME"); config != nullptr && *config == '/') {
        base = config;
    } else {
        const std::string home = homeFolder();
        if (home.empty())
            return std::nullopt;
        base = fs::path(home) / ".config";
    }
    return base / toUtf8(application) / (toUtf8(section) + ".ini");
}

} // namespace

std::u16string SettingsStore::GetSetting(std::u16string_view key, std::u16string_view defaultValue) const
{
    const std::optional<fs::path> file = settingsFile(m_application, m_section);
    return file ? readSettingsFile(*file, m_section, key, defaultValue) : std::u16string(defaultValue);
}

bool SettingsStore::SaveSetting(std::u16string_view key, std::u16string_view text) const
{
    const std::optional<fs::path> file = settingsFile(m_application, m_section);
    return file && writeSettingsFile(*file, m_section, key, text);
}

} // namespace fleetwright::platform
