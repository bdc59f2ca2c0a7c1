#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "common/tempdir.h"

namespace fleetwright::test {

// A model file of 40 bytes with the version tag at offset 8 and the radius byte 7 at offset 28.
inline std::string modelBytes(std::string_view tag, std::size_t size = 40)
{
    std::string bytes(40, '\0');
    bytes.replace(8, 4, tag);
    bytes[28] = 7;
    bytes.resize(size);
    return bytes;
}

// A small aircraft: two variations sharing the default model (tag given), textures "texture" and
// "texture.red", one air file. Clean with every report option on.
inline void writeAircraft(const std::filesystem::path &folder, std::string_view modelTag = "MDLX")
{
    writeBytes(folder / "aircraft.cfg",
               crlf("[fltsim.0]\ntitle=Corvane One\nmodel=\ntexture=\nsim=corvane\n"
                    "[fltsim.1]\ntitle=Corvane Two\nmodel=\ntexture=red\nsim=corvane\n"
                    "[general]\natc_type=CORVANE\n"));
    writeBytes(folder / "model" / "model.cfg", crlf("[models]\nnormal=corvane\n"));
    writeBytes(folder / "model" / "corvane.mdl", modelBytes(modelTag));
    writeBytes(folder / "texture" / "skin.dds", "dds");
    writeBytes(folder / "texture.red" / "skin.dds", "dds");
    writeBytes(folder / "corvane.air", "air");
}

} // namespace fleetwright::test
