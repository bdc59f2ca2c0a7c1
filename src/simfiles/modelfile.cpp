#include "simfiles/modelfile.h"

#include <charconv>
#include <cmath>
#include <filesystem>
#include <string_view>
#include <vector>

#include "core/aircraftfilestore.h"
#include "core/arraysearch.h"
#include "core/dialogs.h"
#include "platform/fileio.h"
#include "simfiles/binaryfile.h"

namespace fleetwright {

namespace fs = std::filesystem;

namespace {

const std::u16string DEFAULT_MODEL = u"<default>";
const std::u16string NOT_AVAILABLE = u"n/a";
constexpr std::size_t TAG_OFFSET = 8;
constexpr std::size_t RADIUS_OFFSET = 28;

std::u16string asciiLower(std::u16string_view text)
{
    std::u16string lower(text);
    for (char16_t &ch : lower) {
        if (ch >= u'A' && ch <= u'Z')
            ch = static_cast<char16_t>(ch + (u'a' - u'A'));
    }
    return lower;
}

std::u16string trimBlanks(std::u16string_view text)
{
    const std::size_t first = text.find_first_not_of(u' ');
    if (first == std::u16string_view::npos)
        return {};
    return std::u16string(text.substr(first, text.find_last_not_of(u' ') - first + 1));
}

bool endsWithSeparator(const std::u16string &folder)
{
    return !folder.empty() && (folder.back() == nativeSeparator() || folder.back() == u'\\' || folder.back() == u'/');
}

std::u16string decimalText(unsigned value)
{
    const std::string digits = std::to_string(value);
    return std::u16string(digits.begin(), digits.end());
}

// "&HFF", "&o17": up to 16 bits the value is an Integer, so "&HFFFF" is -1; up to 32 bits a Long.
std::optional<double> hexOrOctalValue(std::u16string_view body)
{
    const unsigned base = (body[1] == u'H' || body[1] == u'h') ? 16 : 8;
    std::uint64_t value = 0;
    for (char16_t ch : body.substr(2)) {
        const unsigned digit = ch <= u'9' ? ch - u'0' : (ch | 0x20) - u'a' + 10;
        value = value * base + digit;
        if (value > 0xFFFFFFFFull)
            return std::nullopt;
    }
    if (value <= 0xFFFF)
        return static_cast<std::int16_t>(static_cast<std::uint16_t>(value));
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
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
        config.path = (endsWithSeparator(folder) ? folder : folder + separator) + u"model." + nativeSeparators(model)
            + separator + u"model.cfg";
    if (!existingFile(config.path)) {
        config.missing = true;
        return config;
    }

    std::vector<std::u16string> lines;
    FileToArray(config.path, lines, &dialogs);
    for (const std::u16string &line : lines) {
        if (asciiLower(std::u16string_view(line).substr(0, 7)) != u"normal=")
            continue;
        config.modelName = trimBlanks(std::u16string_view(line).substr(7));
        const std::size_t size = config.modelName.size();
        if (size >= 4 && asciiLower(std::u16string_view(config.modelName).substr(size - 4)) == u".mdl")
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
    std::u16string body = trimBlanks(text);
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
        value = hexOrOctalValue(body);
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
    if (!file || !platform::clearReadOnly(*file))
        return fail();
    // Opened before the text is converted: a model the simulator holds fails whatever the text.
    platform::ExclusiveFile model = platform::ExclusiveFile::open(*file, platform::ExclusiveAccess::ReadWrite);
    if (!model.isOpen())
        return fail();
    const std::optional<std::uint8_t> radius = radiusByte(radiusText, decimalSeparator);
    if (!radius)
        return fail();
    const char byte = static_cast<char>(*radius);
    if (!model.writeAt(RADIUS_OFFSET, std::string_view(&byte, 1)) || !model.close())
        return fail();
    return RadiusWriteOutcome::Written;
}

} // namespace fleetwright
