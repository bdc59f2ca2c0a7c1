#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace fleetwright {

class Dialogs;

// A variation's model is found through model.cfg in its model folder; the first "normal=" line names the
// .mdl file, with or without its extension, in any case:
//
//     [models]
//     normal=skyliner200          -> model\skyliner200.mdl
//
// Of the .mdl file two things are read, and one is written:
//
//     offset  8   4 bytes   version tag: "MDL8" or "MDL9" (FS8/9), "MDLX" (FSX)
//     offset 28   1 byte    radius, unsigned; meaningful for FS8/9 tags only
//
// Every other byte is left alone, and no backup is made.

// What resolving the model name found. M is the grid's model column of the variation (with "\" for "/",
// "<default>" for a blank model= key, empty for none) and P the aircraft folder.
struct ModelConfig
{
    // "P\model\model.cfg" for "<default>", else "P\model.M\model.cfg" (with no second separator behind a
    // folder that ends in one, a drive root); empty when M is empty.
    std::u16string path;
    // model.cfg is not there: "AC Status: NOK", and the model file is not read.
    bool missing = false;
    // The rest of the first line whose first seven characters, lower-cased, are "normal=", trimmed, less a
    // last ".mdl" in any case; empty when there is no such line (or no M).
    std::u16string modelName;
};

// Resolves the model name of a variation. model.cfg is read with FileToArray, which shows its own error
// box through dialogs when the file will not read. There is no look at the section a "normal=" line stands
// in, a line with a blank in front of "=" does not match, and a UTF-8 byte order mark on a file's first line
// spoils that line's match.
ModelConfig resolveModelName(const std::u16string &folder, const std::u16string &model, Dialogs &dialogs);

enum class ModelFileOutcome
{
    Missing, // no such file: "AC Status: NOK"; the version and radius fields keep what they held
    Read,    // the fields below apply
    Failed,  // "AC Status: NOK", then failureMessage as a critical box; the row is left half open (the rest
             // of ListView1_DblClick does not run) and the version and radius fields keep what they held
};

struct ModelFileReading
{
    // The colour of a radius box that is locked: not in edit. An editable one is white, 0xFFFFFF.
    static constexpr std::uint32_t LOCKED_COLOUR = 0xC0FFFF;

    ModelFileOutcome outcome = ModelFileOutcome::Missing;
    // ModelFilePath: "P\model\<name>.mdl" for "<default>", else "P\model.M\<name>.mdl", with no special case for
    // a drive root; an empty name gives ".mdl".
    std::u16string ModelFilePath;
    std::u16string versionText;  // txt_FSXVersion: "FS8/9", "FSX" or "n/a"
    std::u16string radiusText;   // txt_FS9Radius: the radius byte in decimal, or "n/a"
    bool radiusEditable = false; // unlocked and white; else locked in LOCKED_COLOUR
    // What the radius write compares against: the radius text of an FS8/9 model, empty otherwise.
    std::u16string RadiusOnLoad;
    std::u16string failureMessage;
};

// Reads the model file of a variation: M and P as for resolveModelName, modelName what it found. The file is
// opened exclusively: one that another program holds fails with the read failure box.
ModelFileReading readModelFile(const std::u16string &folder, const std::u16string &model,
                               const std::u16string &modelName);

// The critical box of a model file that cannot be read.
std::u16string modelFileReadFailureText(const std::u16string &modelFilePath);

// The critical box of a radius that cannot be written.
inline const std::u16string RADIUS_WRITE_FAILURE_TEXT =
    u"The changed radius value could not be written to the model file. Please make sure that the file is not "
    u"opened by the sim or another program";

// The radius as a byte, converted from text: blanks around
// it, a number with "." or decimalSeparator as its decimal mark (or "&H"/"&O" form), a fraction rounded to
// the nearest integer and a tie to the even one. Nothing when the text is no number or the result lies
// outside 0 to 255.
std::optional<std::uint8_t> radiusByte(const std::u16string &text, char16_t decimalSeparator);

enum class RadiusWriteOutcome
{
    Unchanged, // the text equals RadiusOnLoad, or it is "n/a": nothing to do
    Written,
    Failed, // RADIUS_WRITE_FAILURE_TEXT was shown; the update of aircraft.cfg goes on as if nothing happened
};

// The radius step of cmd_cfg_Update_Click. Writes only when radiusText differs from RadiusOnLoad as text
// ("12" against "012" is a change) and is not "n/a": clears the read-only state of ModelFilePath, converts
// the text with radiusByte and writes that one byte at offset 28. A failure from the attribute change on
// (no such file, in use, not a number, below 0 or above 255) shows the failure box; the model file's bytes
// stay as they were, its cleared read-only state stays cleared.
RadiusWriteOutcome writeModelRadius(const std::u16string &ModelFilePath, const std::u16string &RadiusOnLoad,
                                    const std::u16string &radiusText, char16_t decimalSeparator, Dialogs &dialogs);

} // namespace fleetwright
