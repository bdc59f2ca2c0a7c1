#include "platform/utf8.h"

#include "platform/codepage.h"

namespace fleetwright::platform {

namespace {

constexpr char32_t REPLACEMENT = 0xFFFD;

void appendUtf8(std::string &out, char32_t code)
{
    if (code < 0x80) {
        out.push_back(static_cast<char>(code));
    } else if (code < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (code >> 6)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else if (code < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (code >> 12)));
        out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (code >> 18)));
        out.push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    }
}

void appendUtf16(std::u16string &out, char32_t code)
{
    if (code < 0x10000) {
        out.push_back(static_cast<char16_t>(code));
    } else {
        code -= 0x10000;
        out.push_back(static_cast<char16_t>(0xD800 + (code >> 10)));
        out.push_back(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
    }
}

// The code point of the well-formed sequence at bytes[pos], with its length; length 0 if there is none.
char32_t decodeAt(std::string_view bytes, std::size_t pos, std::size_t &length)
{
    length = 0;
    const auto lead = static_cast<unsigned char>(bytes[pos]);
    std::size_t count;
    char32_t code;
    char32_t minimum;
    if (lead >= 0xC2 && lead <= 0xDF) {
        count = 2;
        code = lead & 0x1F;
        minimum = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        count = 3;
        code = lead & 0x0F;
        minimum = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        count = 4;
        code = lead & 0x07;
        minimum = 0x10000;
    } else {
        return 0;
    }
    if (pos + count > bytes.size())
        return 0;
    for (std::size_t i = 1; i < count; ++i) {
        const auto next = static_cast<unsigned char>(bytes[pos + i]);
        if ((next & 0xC0) != 0x80)
            return 0;
        code = (code << 6) | (next & 0x3F);
    }
    if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        return 0;
    length = count;
    return code;
}

} // namespace

std::string toUtf8(std::u16string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t ch = text[i];
        if (ch >= 0xD800 && ch <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
            appendUtf8(out, 0x10000 + ((char32_t(ch) - 0xD800) << 10) + (char32_t(text[i + 1]) - 0xDC00));
            ++i;
        } else if (ch >= 0xD800 && ch <= 0xDFFF) {
            appendUtf8(out, REPLACEMENT);
        } else {
            appendUtf8(out, ch);
        }
    }
    return out;
}

std::u16string fromUtf8(std::string_view bytes)
{
    std::u16string out;
    out.reserve(bytes.size());
    for (std::size_t pos = 0; pos < bytes.size();) {
        std::size_t length;
        const char32_t code = decodeAt(bytes, pos, length);
        if (length > 0) {
            appendUtf16(out, code);
            pos += length;
        } else {
            const auto byte = static_cast<unsigned char>(bytes[pos]);
            out.push_back(byte < 0x80 ? char16_t(byte) : codePageToWide(byte));
            ++pos;
        }
    }
    return out;
}

} // namespace fleetwright::platform
