#include "platform/codepage.h"

#include <array>

namespace fleetwright::platform {

namespace {

// 0x80..0x9F; the rest of the code page equals Latin-1.
constexpr std::array<char16_t, 32> HIGH_CONTROLS = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

} // namespace

char16_t codePageToWide(unsigned char byte)
{
    if (byte >= 0x80 && byte <= 0x9F)
        return HIGH_CONTROLS[byte - 0x80];
    return byte;
}

char wideToCodePage(char16_t ch)
{
    if (ch < 0x80 || (ch >= 0xA0 && ch <= 0xFF))
        return static_cast<char>(ch);
    for (std::size_t i = 0; i < HIGH_CONTROLS.size(); ++i) {
        if (HIGH_CONTROLS[i] == ch)
            return static_cast<char>(0x80 + i);
    }
    return '?';
}

std::u16string fromCodePage(std::string_view bytes)
{
    std::u16string text;
    text.resize(bytes.size());
    for (std::size_t i = 0; i < bytes.size(); ++i)
        text[i] = codePageToWide(static_cast<unsigned char>(bytes[i]));
    return text;
}

std::string toCodePage(std::u16string_view text)
{
    std::string bytes(text.size(), '\0');
    std::size_t written = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t ch = text[i];
        // A surrogate pair is one character the code page lacks: one "?", not two.
        if (ch >= 0xD800 && ch <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF)
            ++i;
        bytes[written++] = wideToCodePage(ch);
    }
    bytes.resize(written);
    return bytes;
}

unsigned char foldByteUpper(unsigned char byte)
{
    if (byte >= 'a' && byte <= 'z')
        return byte - ('a' - 'A');
    if (byte >= 0xE0 && byte <= 0xFE && byte != 0xF7)
        return byte - 0x20;
    switch (byte) {
    case 0x9A: // š
        return 0x8A;
    case 0x9C: // œ
        return 0x8C;
    case 0x9E: // ž
        return 0x8E;
    case 0xFF: // ÿ
        return 0x9F;
    default:
        return byte;
    }
}

std::string foldUpper(std::string_view bytes)
{
    std::string folded(bytes);
    for (char &c : folded)
        c = static_cast<char>(foldByteUpper(static_cast<unsigned char>(c)));
    return folded;
}

} // namespace fleetwright::platform
