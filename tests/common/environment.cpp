#include "common/environment.h"

#include <cstdlib>

#include "common/tempdir.h"

namespace fleetwright::test {

namespace {

std::optional<std::string> currentValue(const char *name)
{
    if (const char *value = std::getenv(name))
        return std::string(value);
    return std::nullopt;
}

// On Windows the C run time's copy of the environment is the one the program reads; "NAME=" removes a variable.
void setValue(const std::string &name, const std::optional<std::string> &value)
{
#ifdef _WIN32
    const auto wide = [](const std::string &text) { return std::wstring(text.begin(), text.end()); };
    _wputenv_s(wide(name).c_str(), value ? wide(*value).c_str() : L"");
#else
    if (value)
        ::setenv(name.c_str(), value->c_str(), 1);
    else
        ::unsetenv(name.c_str());
#endif
}

} // namespace

ScopedVariable::ScopedVariable(const char *name, const std::optional<std::string> &value)
    : m_name(name)
    , m_old(currentValue(name))
{
    setValue(m_name, value);
}

ScopedVariable::~ScopedVariable()
{
    setValue(m_name, m_old);
}

struct ScratchSettings::Place
{
    TempDir dir;
    ScopedVariable file {"FLEETWRIGHT_SETTINGS", (dir / "settings.ini").string()};
    // The journal too, so no test writes into the user's real data folder.
    ScopedVariable history {"FLEETWRIGHT_HISTORY", (dir / "history").string()};
};

ScratchSettings::ScratchSettings()
    : m_place(std::make_unique<Place>())
    , m_store(std::make_unique<platform::SettingsStore>())
{}

ScratchSettings::~ScratchSettings() = default;

} // namespace fleetwright::test
