#pragma once

#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>

#include <QtTest>
#include <QtWidgets>

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#endif

#include "app/frm_main.h"
#include "common/environment.h"
#include "common/modaldialog.h"
#include "common/scripteddialogs.h"
#include "common/tempdir.h"
#include "core/gui/statusbarpanels.h"
#include "core/gui/textconvert.h"
#include "environment/programstate.h"
#include "environment/startupsettings.h"
#include "folderview/gui/folderwidgets.h"
#include "platform/settingsstore.h"
#include "support/gui/frm_update.h"
#include "support/gui/supportcontroller.h"

namespace fleetwright::test {

inline QString nativeText(const std::filesystem::path &path)
{
    return QDir::toNativeSeparators(QString::fromStdString(path.string()));
}

// A machine of the test's own: a settings file, no Wine prefix, the simulators the test installs, and no
// update dialog (activating a main window runs the weekly check; updateFormsShown counts what would open).
class StartUp : public ::testing::Test
{
protected:
    void SetUp() override
    {
        for (const char *name : {"FLEETWRIGHT_FS9_DIR", "FLEETWRIGHT_FSX_DIR"})
            setEnv(name, "");
        setEnv("FLEETWRIGHT_SETTINGS", (dir / "settings.ini").string());
        setEnv("FLEETWRIGHT_HISTORY", (dir / "history").string());
        setEnv("WINEPREFIX", (dir / "no-prefix").string());
        setEnv("FLEETWRIGHT_APPDATA", (dir / "appdata").string());
        m_savedUpdateForm =
            std::exchange(SupportController::showUpdateForm, [this](QWidget *, Dialogs &) { ++updateFormsShown; });
    }
    void TearDown() override
    {
        SupportController::showUpdateForm = m_savedUpdateForm;
        while (!m_variables.empty())
            m_variables.pop_back();
    }
    void setEnv(const char *name, const std::optional<std::string> &value)
    {
        m_variables.push_back(std::make_unique<ScopedVariable>(name, value));
#ifdef _WIN32
        // Windows' putenv removes a variable set to nothing; the block the registry reads can hold one.
        if (value && value->empty())
            SetEnvironmentVariableW(std::wstring(name, name + std::strlen(name)).c_str(), L"");
#endif
    }
    std::filesystem::path openAircraft(frm_Main &form, const std::string &cfg, const char *name = "Corvane")
    {
        writeBytes(dir / name / "aircraft.cfg", cfg);
        form.controls().Dir1->setPath(nativeText(dir / name));
        return dir / name;
    }
    static void openRow(frm_Main &form, int row)
    {
        form.controls().ListView1->setCurrentItem(form.controls().ListView1->topLevelItem(row));
        form.ListView1_DblClick();
    }

    TempDir dir;
    ScriptedDialogs dialogs;
    platform::SettingsStore settings;
    int updateFormsShown = 0;

private:
    std::vector<std::unique_ptr<ScopedVariable>> m_variables;
    std::function<void(QWidget *, Dialogs &)> m_savedUpdateForm;
};

} // namespace fleetwright::test
