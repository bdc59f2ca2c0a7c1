#pragma once

#include <string>
#include <vector>

namespace fleetwright {

// The program-wide values that start-up sets and the subsystems read. The main window owns the one instance
// of a run and hands it to each controller and dialog that needs it.
struct ProgramState
{
    std::u16string TempFolder; // always ends in the separator
    std::u16string RegistryPrefix;

    std::u16string Fs9AircraftRoot;
    std::u16string FsxSimObjectsRoot;
    std::u16string FsxCfgPath;
    std::vector<std::u16string> SimFolderPaths; // behind the entries of combo_SimFolder, in their order

    std::vector<std::u16string> Fs9Airlines; // raw lines of FS9's airlines.cfg
    std::vector<std::u16string> FsxAirlines; // raw lines of FSX's airlines.cfg
    bool Fs9Found = false;                   // FS9 found and its airlines.cfg loaded
    bool FsxFound = false;
    std::u16string Fs9AirlinesPath;
    std::u16string FsxAirlinesPath;
    std::u16string Fs9EffectsFolder;
    std::u16string FsxEffectsFolder;

    std::u16string AnalyzeOptionsText;
    std::vector<std::u16string> AnalyzeOptionList;
    std::u16string DataGridOptions;

    bool ToolTipsOn = true;
    bool RememberFolderOn = true;
    bool InternalEditorOn = true;
    bool AutoBackupOn = true;
    bool ConfirmUpdates = true;
    bool AutoUpdateOn = true; // the weekly update check
    bool ResizableOn = false; // the main window's controls and fonts follow its size
    char16_t DecimalSeparator = u'.';

    std::u16string ManualFilePath;
    std::u16string PdfViewerPath; // the program that opens the manual; empty when there is none

    bool BatchRunning = false;
};

} // namespace fleetwright
