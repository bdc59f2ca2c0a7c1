#pragma once

#include <cstdint>
#include <string>

namespace fleetwright::test {

// A 32-bit little-endian integer as it stands in an .air file.
inline std::string int32Bytes(std::int32_t value)
{
    const auto bits = static_cast<std::uint32_t>(value);
    return {static_cast<char>(bits & 0xFF), static_cast<char>((bits >> 8) & 0xFF),
            static_cast<char>((bits >> 16) & 0xFF), static_cast<char>(bits >> 24)};
}

// The bytes of an .air file, record by record:
//
//     AirFileBuilder().record(0x1, "DR 1050\0"s).aircraft(2).bytes()
class AirFileBuilder
{
public:
    // A record whose size field tells the payload's true size.
    AirFileBuilder &record(std::int32_t type, const std::string &payload)
    {
        return record(type, static_cast<std::int32_t>(payload.size()), payload);
    }
    // A record whose size field says what the test wants, whatever payload follows.
    AirFileBuilder &record(std::int32_t type, std::int32_t size, const std::string &payload)
    {
        m_bytes += int32Bytes(type) + int32Bytes(size) + payload;
        return *this;
    }
    // Record 0x105 holding the aircraft type, with more payload behind it as real files have.
    AirFileBuilder &aircraft(std::int32_t type)
    {
        return record(0x105, int32Bytes(type) + std::string("\x10\x20\x30\x40", 4));
    }
    AirFileBuilder &raw(const std::string &bytes)
    {
        m_bytes += bytes;
        return *this;
    }

    std::size_t size() const { return m_bytes.size(); }
    const std::string &bytes() const { return m_bytes; }

private:
    std::string m_bytes;
};

} // namespace fleetwright::test
