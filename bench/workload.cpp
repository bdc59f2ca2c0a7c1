#include "workload.h"

#include <cassert>
#include <chrono>
#include <fstream>
#include <initializer_list>
#include <random>
#include <system_error>

namespace fleetwright::bench {

namespace {

constexpr std::string_view CRLF = "\r\n";

// Zero-padded decimal, so values of one key have one length across the fleet.
std::string padded(int value, int width)
{
    std::string text = std::to_string(value);
    if (static_cast<int>(text.size()) < width)
        text.insert(0, static_cast<std::size_t>(width) - text.size(), '0');
    return text;
}

std::string description(int variation, int generation)
{
    // FSX shows "\n" in a description as a line break; makers write long texts on one line with it.
    std::string text = "\"Boeing 737-800 of the Corvane benchmark fleet, aircraft " + padded(variation, 4);
    text += generation == 0 ? ".\\n\\nRepainted" : ".\\n\\nRepainted again";
    text += " with the fleet's livery; the model, panel and sound are aliased to the default aircraft, so only"
            " the texture folder differs.\\nNo changes to the flight dynamics.\\n\\nCaf\xE9 class cabin, "
            "winglets, CFM56-7B engines, max take-off weight 174,200 lb.\"";
    return text;
}

void section(std::string &out, std::string_view name, std::initializer_list<std::string_view> lines)
{
    out += "[";
    out += name;
    out += "]";
    out += CRLF;
    for (std::string_view line : lines) {
        out += line;
        out += CRLF;
    }
    out += CRLF;
}

} // namespace

const std::vector<std::string_view> &variationKeys()
{
    static const std::vector<std::string_view> keys = {
        "title",
        "sim",
        "model",
        "panel",
        "sound",
        "texture",
        "kb_checklists",
        "kb_reference",
        "atc_id",
        "atc_airline",
        "atc_flight_number",
        "atc_heavy",
        "atc_parking_types",
        "atc_parking_codes",
        "ui_manufacturer",
        "ui_type",
        "ui_variation",
        "ui_typerole",
        "ui_createdby",
        "description",
        // Carried by some repaints only.
        "atc_id_color",
        "atc_id_font",
        "visual_damage",
        "ui_certified",
        "ui_editable",
        "isUserSelectable",
        "isAirTraffic",
        "prop_anim_ratio",
    };
    return keys;
}

std::string variationValue(int variation, std::string_view key, int generation)
{
    const std::string number = padded(variation, 4);
    const std::string mark = generation == 0 ? "" : "R" + std::to_string(generation);
    if (key == "title")
        return "Corvane 737-800 Fleet " + number + mark;
    if (key == "sim")
        return "Corvane_737-800";
    if (key == "model" || key == "panel" || key == "sound")
        return generation == 0 ? "" : "alt" + mark;
    if (key == "texture")
        return "L" + number + mark;
    if (key == "kb_checklists")
        return "Corvane_737-800_check" + mark;
    if (key == "kb_reference")
        return "Corvane_737-800_ref" + mark;
    if (key == "atc_id")
        return "N" + number + (generation == 0 ? "CV" : "CW");
    if (key == "atc_airline")
        return generation == 0 ? "CORVANE" : "CORVANE EXPRESS";
    if (key == "atc_flight_number")
        return std::to_string(1000 + variation + generation * 2000);
    if (key == "atc_heavy")
        return std::to_string((variation + generation) % 2);
    if (key == "atc_parking_types")
        return generation == 0 ? "GATE,RAMP" : "GATE,RAMP,CARGO";
    if (key == "atc_parking_codes")
        return generation == 0 ? "CVA,CVB" : "CVA,CVB,CVC";
    if (key == "ui_manufacturer")
        return "\"Boeing\"";
    if (key == "ui_type")
        return "\"737-800" + mark + "\"";
    if (key == "ui_variation")
        return "\"Fleet " + number + mark + "\"";
    if (key == "ui_typerole")
        return "\"Commercial Airliner\"";
    if (key == "ui_createdby")
        return "\"Corvane Tools" + mark + "\"";
    if (key == "description")
        return description(variation, generation);
    if (key == "atc_id_color")
        return generation == 0 ? "0xffffffff" : "0xff000000";
    if (key == "atc_id_font")
        return "Verdana,-11,1,600,0";
    if (key == "prop_anim_ratio")
        return "-1.43";
    return std::to_string((variation + generation) % 2);
}

std::string aircraftCfg(const WorkloadShape &shape)
{
    assert(shape.keysPerVariation >= 0 && shape.keysPerVariation <= static_cast<int>(variationKeys().size()));
    std::string out;
    out.reserve(static_cast<std::size_t>(shape.variations) * 1100 + 4096);

    out += "// Corvane benchmark fleet";
    out += CRLF;
    section(out, "version", {"major=1", "minor=0"});
    section(out, "general",
            {"atc_type=BOEING", "atc_model=B737-800", "editable=1", "performance=Cruise speed 460 kt",
             "category=airplane"});

    for (int variation = 0; variation < shape.variations; ++variation) {
        // A comment line before every fiftieth section, a trailing comment on its texture line.
        const bool remarked = variation % 50 == 0;
        if (remarked) {
            out += "// ---- block " + std::to_string(variation / 50) + " ----";
            out += CRLF;
        }
        out += "[fltsim." + std::to_string(variation) + "]";
        out += CRLF;
        for (int k = 0; k < shape.keysPerVariation; ++k) {
            const std::string_view key = variationKeys()[static_cast<std::size_t>(k)];
            out += key;
            out += "=";
            out += variationValue(variation, key);
            if (remarked && key == "texture")
                out += "   // repaint by the Corvane paint shop";
            out += CRLF;
        }
        out += CRLF;
    }

    section(out, "airplane_geometry",
            {"wing_area=1344.0", "wing_span=112.6", "wing_root_chord=15.5", "wing_dihedral=6.0", "wing_incidence=1.0",
             "wing_twist=-3.0", "oswald_efficiency_factor=0.8", "wing_winglets_flag=1", "wing_sweep=25.0",
             "htail_area=352.0", "htail_span=47.1", "vtail_area=284.0", "vtail_span=24.5"});
    section(out, "effects",
            {"wake=fx_wake", "water=fx_spray", "dirt=fx_tchdrt", "concrete=fx_sparks", "touchdown=fx_tchdwn_s, 1",
             "contrail=fx_contrail_l"});
    section(out, "contact_points",
            {"point.0=1, 43.50, 0.00, -10.5, 1600, 0, 1.38, 55.9, 0.35, 2.5, 0.72, 6.4, 6.4, 0, 0, 0",
             "point.1=1, -3.50, -9.50, -10.5, 1600, 1, 1.72, 0.0, 0.45, 2.5, 0.82, 7.0, 7.0, 2, 0, 0",
             "point.2=1, -3.50, 9.50, -10.5, 1600, 2, 1.72, 0.0, 0.45, 2.5, 0.82, 7.0, 7.0, 3, 0, 0",
             "static_pitch=0.0", "static_cg_height=9.8", "gear_system_type=1"});
    section(out, "exits", {"number_of_exits=2", "exit.0=0.4, 32.0, -5.5, 1.5, 0", "exit.1=0.4, 32.0, 5.5, 1.5, 3"});
    section(out, "views", {"eyepoint=44.0, -1.6, 3.9"});
    section(out, "flight_tuning",
            {"cruise_lift_scalar=1.0", "parasite_drag_scalar=1.0", "induced_drag_scalar=1.0",
             "elevator_effectiveness=1.0", "aileron_effectiveness=1.0", "rudder_effectiveness=1.0"});
    return out;
}

BenchFolder::BenchFolder(std::string_view stem)
{
    std::random_device random;
    m_path = std::filesystem::temp_directory_path()
        / ("fleetwright-bench-" + std::string(stem) + "-" + std::to_string(random()) + "-" + std::to_string(random()));
    std::filesystem::create_directories(m_path);
}

BenchFolder::~BenchFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

void writeSettledFile(const std::filesystem::path &file, std::string_view bytes)
{
    {
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    std::filesystem::last_write_time(file, std::filesystem::file_time_type::clock::now() - std::chrono::seconds(5));
}

} // namespace fleetwright::bench
