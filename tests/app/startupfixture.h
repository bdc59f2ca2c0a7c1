#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <system_error>

#include <QByteArray>
#include <QColor>
#include <QComboBox>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#endif

#include "app/frm_main.h"
#include "app/gui/statusbarpanels.h"
#include "app/programstate.h"
#include "core/scripteddialogs.h"
#include "platform/settingsstore.h"
#include "support/frm_update.h"
#include "common/tempdir.h"

// Failures show a QString as its text rather than as the bytes of the object.
inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace fleetwright::test {

// Sets environment variables for one test and puts back what was there.
class ScopedEnvironment
{
public:
    void set(const char *name, const QByteArray &value)
    {
        remember(name);
        qputenv(name, value);
#ifdef _WIN32
        // Windows' putenv removes a variable set to nothing; the environment block itself can hold one.
        if (value.isEmpty())
            SetEnvironmentVariableW(QString::fromLatin1(name).toStdWString().c_str(), L"");
#endif
    }
    void unset(const char *name)
    {
        remember(name);
        qunsetenv(name);
    }
    ~ScopedEnvironment()
    {
        for (const auto &[name, value] : m_saved) {
            if (value)
                qputenv(name.c_str(), *value);
            else
                qunsetenv(name.c_str());
        }
    }

private:
    void remember(const char *name)
    {
        if (!m_saved.count(name))
            m_saved[name] = qEnvironmentVariableIsSet(name) ? std::optional(qgetenv(name)) : std::nullopt;
    }
    std::map<std::string, std::optional<QByteArray>> m_saved;
};

inline QByteArray bytesOf(const std::filesystem::path &path)
{
    return QByteArray::fromStdString(path.string());
}

// Whether actual leads to the existing entry at expected and is spelt like it but for letter case, which
// Windows ignores in names. Where the file system tells case, only the exact spelling leads there.
inline ::testing::AssertionResult isSameEntry(const std::filesystem::path &actual,
                                              const std::filesystem::path &expected)
{
    std::error_code error;
    const bool spelt = QString::fromStdWString(actual.wstring())
                           .compare(QString::fromStdWString(expected.wstring()), Qt::CaseInsensitive)
        == 0;
    if (spelt && std::filesystem::equivalent(actual, expected, error))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << actual << " is not the entry " << expected;
}

// Stands in for the update dialog while it lives: activating a main window with the store's defaults runs the
// weekly update check, which must neither open a modal dialog nor reach the network. shown counts the dialogs
// that would have opened.
class UpdateFormStandIn
{
public:
    UpdateFormStandIn()
        : m_saved(UpdateController::showUpdateForm)
    {
        UpdateController::showUpdateForm = [this](frm_Main &) { ++shown; };
    }
    ~UpdateFormStandIn() { UpdateController::showUpdateForm = m_saved; }
    UpdateFormStandIn(const UpdateFormStandIn &) = delete;
    UpdateFormStandIn &operator=(const UpdateFormStandIn &) = delete;

    int shown = 0;

private:
    std::function<void(frm_Main &)> m_saved;
};

// A machine of the test's own: a settings file, no Wine prefix, and the simulators the test installs.
class StartUp : public ::testing::Test
{
protected:
    void SetUp() override
    {
        env.set("FLEETWRIGHT_SETTINGS", bytesOf(dir / "settings.ini"));
        env.set("WINEPREFIX", bytesOf(dir / "no-prefix"));
        env.set("FLEETWRIGHT_FS9_DIR", "");
        env.set("FLEETWRIGHT_FSX_DIR", "");
        env.set("FLEETWRIGHT_APPDATA", bytesOf(dir / "appdata"));
        fleetwright::programState() = {};
    }

    std::filesystem::path installFs9(bool withAirlines)
    {
        const auto root = dir / "FS9";
        std::filesystem::create_directories(root / "Aircraft");
        if (withAirlines)
            writeBytes(root / "Aircraft" / "airlines.cfg", "[atc_airline.0]\r\nname=Alpha\r\n");
        env.set("FLEETWRIGHT_FS9_DIR", bytesOf(root));
        return root;
    }

    std::filesystem::path installFsx(bool withAirlines)
    {
        const auto root = dir / "FSX";
        std::filesystem::create_directories(root / "SimObjects" / "Airplanes");
        std::filesystem::create_directories(root / "SimObjects" / "Rotorcraft");
        std::filesystem::create_directories(root / "SimObjects" / "old.bak");
        if (withAirlines)
            writeBytes(root / "airlines.cfg", "a\r\nb\r\n");
        env.set("FLEETWRIGHT_FSX_DIR", bytesOf(root));
        return root;
    }

    static QStringList comboTexts(const frm_Main &form)
    {
        QStringList texts;
        for (int i = 0; i < form.controls().combo_SimFolder->count(); ++i)
            texts << form.controls().combo_SimFolder->itemText(i);
        return texts;
    }

    static void expectPanel(const frm_Main &form, int panel, const QString &text, const QColor &colour)
    {
        SCOPED_TRACE(panel);
        EXPECT_EQ(form.controls().StatusBar1->panelText(panel), text);
        EXPECT_EQ(form.controls().StatusBar1->panelColour(panel), colour);
    }

    TempDir dir;
    ScopedEnvironment env;
    fleetwright::ScriptedDialogs dialogs;
    fleetwright::platform::SettingsStore settings;
    UpdateFormStandIn updateForms;
};

} // namespace fleetwright::test
