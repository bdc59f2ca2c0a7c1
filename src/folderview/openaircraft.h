#pragma once

#include <string>

#include "core/clsinifile.h"

namespace fleetwright {

// The aircraft of the current folder as the folder view loaded it and the row the user opened: what the
// editing operations read back when they write the row. One instance for the main window; the folder view
// fills it, editing reads it and keeps EffectIndex current.
struct OpenAircraft
{
    // The profile file of the folder's aircraft.cfg; its path names the current file.
    clsIniFile AircraftIni;

    // The notes behind the exit lines: the load keeps them, the update writes them back.
    std::u16string ExitNote0;
    std::u16string ExitNote1;

    // Of the open row: its model file, the radius and description as they were read.
    std::u16string ModelFilePath;
    std::u16string RadiusOnLoad;
    std::u16string DescriptionOnLoad;

    // The effect box that last had the focus or the right click; -1 when none.
    int EffectIndex = -1;
};

} // namespace fleetwright
