#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace fleetwright {

// The update check: the version file on the update server against the program's own version. The download
// itself is the GUI's; everything it shows is decided here.
//
// The version file is plain text, read line by line; lines past the third are ignored:
//
//     Fleetwright                                                        free text, not used
//     1.4.2                                                              WebVersion
//     https://fleetwright.corvane.example/download/fleetwright.html      DownloadURL

inline constexpr std::u16string_view DEFAULT_UPDATE_URL =
    u"https://fleetwright.corvane.example/download/update/fleetwright.txt";
// Where the version file is fetched from; the setting holds the address, DEFAULT_UPDATE_URL when unset.
inline constexpr std::u16string_view UPDATE_URL_SETTING = u"UpdateURL";

inline constexpr std::u16string_view UPDATE_STEP_TEXT = u"Connect 'Corvane' and retrieve version information...";
inline constexpr std::u16string_view NO_URL_TEXT =
    u"A configuration download URL was not provided.  Live Update cannot continue.";
inline constexpr std::u16string_view CONNECTION_ERROR_TEXT =
    u"Error connecting to host.  Unable to complete Live Update.";
inline constexpr std::u16string_view NEWER_TEXT = u"A new version is available. Click on the 'Update' button to "
                                                  u"open Corvane in your webbrowser and download the update.";
inline constexpr std::u16string_view SAME_TEXT =
    u"You already have the most current version. Click 'Close' to continue.";
inline constexpr std::u16string_view OWN_NEWER_TEXT =
    u"For unknown reasons your version is more recent than the official version.";

// The box shown when the download cannot even start: ":Error in call to BeginDownload()." and the reason.
std::u16string beginDownloadErrorText(std::u16string_view description);

// The three lines that count. Missing lines stay empty.
struct UpdateConfiguration
{
    std::u16string WebVersion;
    std::u16string DownloadURL;
    // The part of DownloadURL behind its last "/"; kept, not used.
    std::u16string DownloadFileName;
};

// Lines 1 to 3 of the file's bytes (Windows-1252). LF, CR LF and a lone CR each end a line.
UpdateConfiguration parseUpdateConfiguration(std::string_view bytes);

// "major.minor.revision" of this build: CurrentVersion.
std::u16string ownVersion();

enum class UpdateVerdict
{
    Newer,
    Same,
    OwnNewer,
    // A version with fewer than three parts (or a part too large for a number): the comparison fails, its
    // error is ignored and no verdict is shown.
    None,
};

// Compares the first three parts of both versions, split at ".", by their numeric value as Val reads them
// ("10" > "9"; "x", "" and "<html" count 0).
UpdateVerdict compareVersions(std::u16string_view webVersion, std::u16string_view currentVersion);

// The text lblResult shows for the verdict; empty for None.
std::u16string verdictText(UpdateVerdict verdict);

// lblPROGRESS while the file arrives: "120 bytes of 300 bytes configuration data retreived".
std::u16string progressText(std::uint64_t bytesRead, std::uint64_t bytesTotal);

// lblVERSION: "Your version: 1.0.0    Web version: 1.2.0".
std::u16string versionLineText(std::u16string_view currentVersion, std::u16string_view webVersion);

// The week of the year as the format "ww" gives it: weeks start on Sunday, and week 1 is the one that holds
// January 1, so the last days of December can be week 53 or 54.
int weekOfYear(int year, unsigned month, unsigned day);

// Whether the automatic check runs: the stored "LastCheck" differs from the current week. Inequality, not age:
// the same week number a year later does not check. A stored text that is no number throws RuntimeError 13
// naming Form_Activate.
bool automaticCheckDue(std::u16string_view storedLastCheck, int currentWeek);

// LocalFolder: the TEMP variable's value, or the program's folder when that is empty, always ending in the
// native separator.
std::u16string LocalFolder(std::u16string_view tempVariable, std::u16string_view programFolder);
// The local copy of the version file: LocalFolder + "_vclu.txt".
std::u16string localConfigFile(std::u16string_view localFolder);

// What the check shows once the transfer has ended.
struct UpdateCheckResult
{
    // False when nothing arrived (a total of 0): lblPROGRESS shows CONNECTION_ERROR_TEXT and nothing else
    // changes.
    bool connected = false;
    UpdateConfiguration configuration;
    std::u16string versionLine;
    UpdateVerdict verdict = UpdateVerdict::None;
};

// The end of a transfer: the received bytes are written to localFile, read back line by line, and the file
// is deleted. A file that cannot be written or read leaves the three values empty, so no verdict follows.
UpdateCheckResult completeUpdateCheck(std::string_view received, std::uint64_t total, const std::u16string &localFile,
                                      std::u16string_view currentVersion);

} // namespace fleetwright
