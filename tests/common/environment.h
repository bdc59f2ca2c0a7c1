#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/settingsstore.h"

namespace fleetwright::test {

// Sets an environment variable for a scope, or removes it when value is nothing; the old state comes back
// at the end.
class ScopedVariable
{
public:
    ScopedVariable(const char *name, const std::optional<std::string> &value);
    ~ScopedVariable();
    ScopedVariable(const ScopedVariable &) = delete;
    ScopedVariable &operator=(const ScopedVariable &) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_old;
};

// An empty settings store of a test's own, removed at the end: a file that FLEETWRIGHT_SETTINGS names. The
// journal of changes (FLEETWRIGHT_HISTORY) is pointed into the same scratch folder.
class ScratchSettings
{
public:
    ScratchSettings();
    ~ScratchSettings();
    ScratchSettings(const ScratchSettings &) = delete;
    ScratchSettings &operator=(const ScratchSettings &) = delete;

    const platform::SettingsStore &store() const { return *m_store; }

private:
    struct Place;
    std::unique_ptr<Place> m_place;
    std::unique_ptr<platform::SettingsStore> m_store;
};

} // namespace fleetwright::test
