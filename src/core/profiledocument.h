#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace fleetwright {

// One parse of a profile file, in the bytes of its 8-bit code page, and the edits that a key write may make.
// A file is read the way the platform's profile calls read it and written by their rules:
//
//   ; a comment line                  neither key nor value
//   [ fltsim.0 ] ; text               header of "fltsim.0"
//   Title = "Cessna 172"              key "Title", value Cessna 172
//   title=second                      a second "title": reads find the first
//   no equals sign here               kept, but neither key nor value
//
// Lines keep their bytes and line ends (CR LF, LF or a lone CR) unless an edit is about them; lines that an
// edit adds end in CR LF. Names match without regard to case, Windows-1252 letters included.
class ProfileDocument
{
public:
    ProfileDocument() = default;
    explicit ProfileDocument(std::string_view bytes);

    // The file as it stands after the edits.
    std::string bytes() const;
    // A file in UTF-16 is read through its text, but never written: the key writes would garble it.
    bool isWritable() const { return m_writable; }

    // The value of key in the first section called section: the text behind the first "=", blanks and tabs
    // trimmed, a pair of like quotation marks around the whole dropped, cut at a NUL.
    std::optional<std::string> value(std::string_view section, std::string_view key) const;
    // Key names of the first section called section, or all section names, each followed by one NUL, in file
    // order and spelling, cut to LIST_LIMIT characters when longer.
    std::string keyNameList(std::string_view section) const;
    std::string sectionNameList() const;

    // The edits return whether the document changed.
    bool writeValue(std::string_view section, std::string_view key, std::string_view value);
    bool deleteKey(std::string_view section, std::string_view key);
    bool deleteSection(std::string_view section);

    static constexpr std::size_t LIST_LIMIT = 8190;

private:
    enum class LineEnd : std::uint8_t
    {
        None,
        CrLf,
        Lf,
        Cr,
    };
    enum class LineKind : std::uint8_t
    {
        Other,
        Comment,
        Header,
        Key,
    };
    struct Line
    {
        std::string text;
        std::uint32_t nameStart = 0; // key or section name as spelled, trimmed, inside text
        std::uint32_t nameLength = 0;
        LineEnd end = LineEnd::CrLf;
        LineKind kind = LineKind::Other;

        std::string_view name() const { return std::string_view(text).substr(nameStart, nameLength); }
    };
    struct Section
    {
        bool hasHeader = false;  // false only for the lines ahead of the first header
        std::vector<Line> lines; // lines[0] is the header when there is one
    };

    void parse(std::string_view bytes);
    static Line classify(std::string text, LineEnd end, bool insideSection);
    Section *findSection(std::string_view section);
    const Section *findSection(std::string_view section) const;
    static std::ptrdiff_t findKey(const Section &section, std::string_view key);
    void rebuildIndex();
    void endLastLine();
    void reparseIfNeeded(const Line &written, LineKind kind, std::string_view name);

    std::string m_bom;
    std::vector<Section> m_sections;
    std::unordered_map<std::string, std::size_t> m_firstSection; // folded name -> first section of that name
    bool m_writable = true;
};

} // namespace fleetwright
