#include "parking/parkingentry.h"

namespace fleetwright {

namespace {

constexpr int KEY_BACKSPACE = 8;
constexpr int KEY_BLANK = 32;
constexpr int KEY_COMMA = 44;
constexpr std::size_t CODE_LENGTH = 5;

} // namespace

ParkingTypeSelection parkingTypesFromCaption(const std::u16string &caption)
{
    ParkingTypeSelection selected {};
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = caption.find(u',', start);
        const std::u16string part = caption.substr(start, end == std::u16string::npos ? end : end - start);
        for (std::size_t i = 0; i < PARKING_TYPES.size(); ++i) {
            if (part == PARKING_TYPES[i])
                selected[i] = true;
        }
        if (end == std::u16string::npos)
            return selected;
        start = end + 1;
    }
}

std::u16string parkingTypesCaption(const ParkingTypeSelection &selected)
{
    std::u16string caption;
    for (std::size_t i = 0; i < PARKING_TYPES.size(); ++i) {
        if (!selected[i])
            continue;
        if (!caption.empty())
            caption += u',';
        caption += PARKING_TYPES[i];
    }
    return caption;
}

std::int32_t CountCommas(const std::u16string &text)
{
    std::int32_t count = 0;
    for (const char16_t ch : text) {
        if ((ch & 0xFF) == u',')
            ++count;
    }
    return count;
}

ParkingCodeKey parkingCodeKeyPress(const std::u16string &text, int key)
{
    ParkingCodeKey result {key, {}};
    if (result.key == KEY_BLANK)
        result.key = 0;
    if (result.key == KEY_COMMA && CountCommas(text) > 3) {
        result.key = 0;
        result.message = TOO_MANY_CODES;
        return result;
    }
    const std::size_t lastComma = text.rfind(u',');
    const std::size_t lastCodeLength = lastComma == std::u16string::npos ? text.size() : text.size() - lastComma - 1;
    if (result.key != KEY_BACKSPACE && result.key != KEY_COMMA && lastCodeLength == CODE_LENGTH) {
        result.key = 0;
        result.message = CODE_TOO_LONG;
    }
    return result;
}

} // namespace fleetwright
