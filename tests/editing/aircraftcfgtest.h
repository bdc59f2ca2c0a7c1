#pragma once

#include <filesystem>
#include <string_view>

#include <gtest/gtest.h>

#include "core/clsinifile.h"
#include "core/scripteddialogs.h"
#include "common/tempdir.h"

namespace fleetwright::test {

// One aircraft.cfg in a folder of its own, read and written through clsIniFile, with boxes answered by script.
class AircraftCfgTest : public ::testing::Test
{
protected:
    // The file's bytes; ini is pointed at it.
    void write(std::string_view bytes)
    {
        writeBytes(file, bytes);
        ini.setPath(widePath(file));
    }

    TempDir dir;
    std::filesystem::path file = dir / "aircraft.cfg";
    clsIniFile ini;
    ScriptedDialogs dialogs;
};

} // namespace fleetwright::test
