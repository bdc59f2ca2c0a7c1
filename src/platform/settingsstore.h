#pragma once

#include <string>
#include <string_view>

namespace fleetwright::platform {

// The per-user store of the program's settings: text values under an application and a section name.
// Windows keeps them where GetSetting and SaveSetting of the old run time do,
// HKEY_CURRENT_USER\Software\VB and VBA Program Settings\<application>\<section>, as REG_SZ values. Elsewhere
// they stand in a UTF-8 file, <XDG_CONFIG_HOME or ~/.config>/<application>/<section>.ini. On every platform,
// FLEETWRIGHT_SETTINGS names a file of that form to use instead, so that tests have a store of their own:
//
//     [Fleetwright]
//     ToolTips=1
//     AnalyzeOptions=1¦1¦1¦...
//
// Every read goes to the store, so a change by another instance of the program is seen at once. Key names
// ignore case, as registry value names do. Values are never deleted.
class SettingsStore
{
public:
    explicit SettingsStore(std::u16string application = u"\u00A9 Corvane Tools",
                           std::u16string section = u"Fleetwright");

    // The stored text, or defaultValue when there is none (or the store cannot be read).
    std::u16string GetSetting(std::u16string_view key, std::u16string_view defaultValue = {}) const;
    // Stores text under key. False when the store cannot be written; it then stays as it was.
    bool SaveSetting(std::u16string_view key, std::u16string_view text) const;

    // settingToBool of the stored text, or of defaultValue when there is none: GetBoolSetting(u"ToolTips", u"1").
    // Throws RuntimeError 13 for a text that is no boolean.
    bool GetBoolSetting(std::u16string_view key, std::u16string_view defaultValue) const;

    const std::u16string &application() const { return m_application; }
    const std::u16string &section() const { return m_section; }

private:
    std::u16string m_application;
    std::u16string m_section;
};

// How a stored text converts to a boolean, as the old run time converted a string: blanks around it do not
// count; a number ("1", "-1", " 0.0 ", "1e3", "&H10", "&O7") is true unless it is zero; "True" and "False" in
// any case are accepted. Anything else, the empty text too, throws RuntimeError 13, "Type mismatch".
bool settingToBool(std::u16string_view text);

} // namespace fleetwright::platform
