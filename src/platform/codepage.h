#pragma once

#include <string>
#include <string_view>

namespace fleetwright::platform {

// Files, reports and profile calls hold 8-bit text in Windows-1252. The five bytes that code page leaves
// undefined (0x81, 0x8D, 0x8F, 0x90, 0x9D) decode to the C1 controls of the same value, so every byte
// survives a round trip. A character the code page lacks is written as "?".
std::u16string fromCodePage(std::string_view bytes);
std::string toCodePage(std::u16string_view text);

// The wide character a byte stands for, and back ('?' when there is none).
char16_t codePageToWide(unsigned char byte);
char wideToCodePage(char16_t ch);

// Case folding of Windows-1252 bytes for name comparison: ASCII letters and the code page's own letters
// (é and É, š and Š, ÿ and Ÿ) fold alike.
unsigned char foldByteUpper(unsigned char byte);
std::string foldUpper(std::string_view bytes);

} // namespace fleetwright::platform
