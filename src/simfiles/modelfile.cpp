#include "simfiles/modelfile.h"

#include <charconv>
#include <cmath>
#include <filesystem>
#include <string_view>
#include <vector>

#include "core/aircraftfilestore.h"
#include "core/arraysearch.h"
#include "core/dialogs.h"
#include "core/paths.h"
#include "core/vbtext.h"
#include "history/journal.h"
#include "platform/fileio.h"
#include "simfiles/binaryfile.h"

namespace fleetwright {

namespace fs = std::filesystem;

namespace {

const std::u16string DEFAULT_MODEL = u"<default>";
const std::u16string NOT_AVAILABLE = u"n/a";
constexpr std::size_t TAG_OFFSET = 8;
constexpr std::size_t RADIUS_OFFSET = 28;

// A drive root gets no second separator before "model.": the test takes "\\" on every platform.
bool endsLikeDriveRoot(const std::u16string &folder)
{
    return endsWithSeparator(folder) || (!folder.empty() && folder.back() == u'\\');
}

std::u16string decimalText(unsigned value)
{
    const std::string digits = std::to_string(value);
    return std::u16string(digits.begin(), digits.end());
}

} // namespace

ModelConfig resolveModelName(const std::u16string &folder, const std::u16string &model, Dialogs &dialogs)
{
    ModelConfig config;
    if (model.empty())
        return config;
    const char16_t separator = nativeSeparator();
    if (model == DEFAULT_MODEL)
        config.path = folder + separator + u"model" + separator + u"model.cfg";
    else
        config.path = (endsLikeDriveRoot(folder) ? folder : folder + separator) + u"model." + nativeSeparators(model)
            + separator + u"model.cfg";
    if (!existingFile(config.path)) {
        config.missing = true;
        return config;
    }

    std::vector<std::u16string> lines;
    FileToArray(config.path, lines, &dialogs);
    for (const std::u16string &line : lines) {
        if (lowerAsciiOnly(std::u16string_view(line).substr(0, 7)) != u"normal=")
            continue;
        config.modelName = Trim(std::u16string_view(line).substr(7));
        const std::size_t size = config.modelName.size();
        if (size >= 4 && lowerAsciiOnly(std::u16string_view(config.modelName).substr(size - 4)) == u".mdl")
            config.modelName.resize(size - 4);
        break;
    }
    return config;
}

std::u16string modelFileReadFailureText(const std::u16string &modelFilePath)
{
    return u"The model file:" + modelFilePath
        + u"\r\n\r\n could not be opened for write access. Please make sure that the sim is not running and no "
          u"other program access this file.";
}

ModelFileReading readModelFile(const std::u16string &folder, const std::u16string &model,
                               const std::u16string &modelName)
{
    const char16_t separator = nativeSeparator();
    ModelFileReading reading;
    reading.ModelFilePath = (model == DEFAULT_MODEL ? folder + separator + u"model"
                                                    : folder + separator + u"model." + nativeSeparators(model))
        + separator + nativeSeparators(modelName) + u".mdl";
    const std::optional<fs::path> file = existingFile(reading.ModelFilePath);
    if (!file)
        return reading;

    const auto fail = [&reading] {
        reading.outcome = ModelFileOutcome::Failed;
        reading.failureMessage = modelFileReadFailureText(reading.ModelFilePath);
        return reading;
    };
    // Held by the simulator or another program, the file does not open and the read fails.
    const std::optional<std::string> bytes =
        platform::ExclusiveFile::open(*file, platform::ExclusiveAccess::Read).readAll();
    if (!bytes || bytes->size() < TAG_OFFSET + 4)
        return fail();
    const std::string_view tag = std::string_view(*bytes).substr(TAG_OFFSET, 4);
    if (tag == "MDL8" || tag == "MDL9") {
        if (bytes->size() <= RADIUS_OFFSET)
            return fail();
        reading.versionText = u"FS8/9";
        reading.radiusText = decimalText(static_cast<unsigned char>((*bytes)[RADIUS_OFFSET]));
    } else {
        reading.versionText = tag == "MDLX" ? u"FSX" : NOT_AVAILABLE;
        reading.radiusText = NOT_AVAILABLE;
    }
    reading.outcome = ModelFileOutcome::Read;
    if (reading.radiusText != NOT_AVAILABLE) {
        reading.RadiusOnLoad = reading.radiusText;
        reading.radiusEditable = true;
    }
    return reading;
}

std::optional<std::uint8_t> radiusByte(const std::u16string &text, char16_t decimalSeparator)
{
    std::u16string body = Trim(text);
    if (decimalSeparator != u'.') {
        for (char16_t &ch : body) {
            if (ch == decimalSeparator)
                ch = u'.';
        }
    }
    if (!isNumericText(body))
        return std::nullopt;

    std::optional<double> value;
    if (body[0] == u'&') {
        value = radixValue(std::u16string_view(body).substr(2), body[1] == u'H' || body[1] == u'h' ? 16 : 8);
    } else {
        // isNumericText let only ASCII through; from_chars takes no "+" and ignores the locale.
        std::string ascii(body.begin() + (body[0] == u'+' ? 1 : 0), body.end());
        double parsed = 0;
        const auto [end, error] = std::from_chars(ascii.data(), ascii.data() + ascii.size(), parsed);
        if (error == std::errc() && end == ascii.data() + ascii.size())
            value = parsed;
    }
    if (!value)
        return std::nullopt;
    // The default rounding mode: to nearest, a tie to the even one, as the conversion to a byte rounds.
    const double rounded = std::nearbyint(*value);
    if (!(rounded >= 0 && rounded <= 255))
        return std::nullopt;
    return static_cast<std::uint8_t>(rounded);
}

namespace {

// The file is closed again when this returns.
bool writeRadiusByte(const fs::path &file, const std::u16string &radiusText, char16_t decimalSeparator)
{
    // Opened before the text is converted: a model the simulator holds fails whatever the text.
    platform::ExclusiveFile model = platform::ExclusiveFile::open(file, platform::ExclusiveAccess::ReadWrite);
    if (!model.isOpen())
        return false;
    const std::optional<std::uint8_t> radius = radiusByte(radiusText, decimalSeparator);
    if (!radius)
        return false;
    const char byte = static_cast<char>(*radius);
    return model.writeAt(RADIUS_OFFSET, std::string_view(&byte, 1)) && model.close();
}

} // namespace

RadiusWriteOutcome writeModelRadius(const std::u16string &ModelFilePath, const std::u16string &RadiusOnLoad,
                                    const std::u16string &radiusText, char16_t decimalSeparator, Dialogs &dialogs)
{
    if (radiusText == RadiusOnLoad || radiusText == NOT_AVAILABLE)
        return RadiusWriteOutcome::Unchanged;
    const auto fail = [&dialogs] {
        dialogs.critical(RADIUS_WRITE_FAILURE_TEXT, {});
        return RadiusWriteOutcome::Failed;
    };
    const std::optional<fs::path> file = existingFile(ModelFilePath);
    if (!file)
        return fail();
    // Taken before the read-only state goes.
    journalBeforeChange(*file);
    const bool written = platform::clearReadOnly(*file) && writeRadiusByte(*file, radiusText, decimalSeparator);
    return written ? RadiusWriteOutcome::Written : fail();
}

} // namespace fleetwright
