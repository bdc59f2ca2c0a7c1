#include "common/environment.h"

#include <cstdlib>
#include <windows.h>

namespace fleetwright::test {

namespace {

const std::wstring APPLICATION = L"Fleetwright Tests Start-up";

std::wstring wide(const std::string &text)
{
    return std::wstring(text.begin(), text.end());
}

std::optional<std::string> currentValue(const char *name)
{
    if (const char *value = std::getenv(name))
        return std::string(value);
    return std::nullopt;
}

// The C run time's copy of the environment is the one the program reads; "NAME=" removes a variable.
void setValue(const std::string &name, const std::optional<std::string> &value)
{
    _wputenv_s(wide(name).c_str(), value ? wide(*value).c_str() : L"");
}

void removeSettings()
{
    RegDeleteTreeW(HKEY_CURRENT_USER, (L"Software\\VB and VBA Program Settings\\" + APPLICATION).c_str());
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
{};

ScratchSettings::ScratchSettings()
    : m_store(std::make_unique<platform::SettingsStore>(std::u16string(APPLICATION.begin(), APPLICATION.end()),
                                                        u"Fleetwright"))
{
    removeSettings();
}

ScratchSettings::~ScratchSettings()
{
    removeSettings();
}

} // namespace fleetwright::test
