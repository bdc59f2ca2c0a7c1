#pragma once

#include <string>

#include <QString>

namespace fleetwright {

// The two crossings between the engine's wide text and Qt's. Both hold UTF-16, so nothing is lost either way.

inline QString toQString(const std::u16string &text)
{
    return QString::fromStdU16String(text);
}

inline std::u16string toU16String(const QString &text)
{
    return text.toStdU16String();
}

} // namespace fleetwright
