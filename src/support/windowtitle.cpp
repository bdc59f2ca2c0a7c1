#include "windowtitle.h"

#include "version.h"

namespace fleetwright {

namespace {

std::u16string number(int value)
{
    const std::string digits = std::to_string(value);
    return std::u16string(digits.begin(), digits.end());
}

} // namespace

std::u16string windowTitle(std::u16string_view caption)
{
    std::u16string title(caption);
    title += u"   ";
    title += u" V.";
    title += number(VERSION_MAJOR);
    title += u".";
    title += number(VERSION_MINOR);
    title += u".";
    title += number(VERSION_REVISION);
    title += u"  -  ";
    title += MAKER_LINE;
    return title;
}

} // namespace fleetwright
