#include "history/journallog.h"

#include <charconv>

namespace fleetwright {

namespace {

std::string escaped(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (const char ch : text) {
        switch (ch) {
        case '\\':
            out += "\\\\";
            break;
        case '\t':
            out += "\\t";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        default:
            out += ch;
        }
    }
    return out;
}

std::optional<std::string> unescaped(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            out += text[i];
            continue;
        }
        if (++i == text.size())
            return std::nullopt;
        switch (text[i]) {
        case '\\':
            out += '\\';
            break;
        case 't':
            out += '\t';
            break;
        case 'n':
            out += '\n';
            break;
        case 'r':
            out += '\r';
            break;
        default:
            return std::nullopt;
        }
    }
    return out;
}

// How many fields follow the id for each kind; a line with another count is not a record.
std::optional<std::size_t> fieldCount(char kind)
{
    switch (kind) {
    case 'B':
        return 3;
    case 'F':
    case 'A':
        return 5;
    case 'E':
    case 'U':
    case 'R':
    case 'D':
        return 0;
    default:
        return std::nullopt;
    }
}

std::optional<JournalLogRecord> parseLine(std::string_view line)
{
    std::vector<std::string_view> parts;
    for (std::size_t start = 0;;) {
        const std::size_t tab = line.find('\t', start);
        parts.push_back(line.substr(start, tab == std::string_view::npos ? std::string_view::npos : tab - start));
        if (tab == std::string_view::npos)
            break;
        start = tab + 1;
    }
    if (parts.size() < 2 || parts[0].size() != 1)
        return std::nullopt;
    JournalLogRecord record;
    record.kind = parts[0][0];
    const std::optional<std::size_t> count = fieldCount(record.kind);
    if (!count || parts.size() != *count + 2)
        return std::nullopt;
    const std::string_view id = parts[1];
    const auto [end, error] = std::from_chars(id.data(), id.data() + id.size(), record.id);
    if (error != std::errc() || end != id.data() + id.size() || id.empty())
        return std::nullopt;
    for (std::size_t i = 2; i < parts.size(); ++i) {
        std::optional<std::string> field = unescaped(parts[i]);
        if (!field)
            return std::nullopt;
        record.fields.push_back(std::move(*field));
    }
    return record;
}

} // namespace

std::string formatJournalLogRecord(const JournalLogRecord &record)
{
    std::string line(1, record.kind);
    line += '\t';
    line += std::to_string(record.id);
    for (const std::string &field : record.fields) {
        line += '\t';
        line += escaped(field);
    }
    line += '\n';
    return line;
}

std::vector<JournalLogRecord> parseJournalLog(std::string_view text, std::size_t *validLength)
{
    std::vector<JournalLogRecord> records;
    std::size_t start = 0;
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n', start)) {
        if (std::optional<JournalLogRecord> record = parseLine(text.substr(start, end - start)))
            records.push_back(std::move(*record));
        start = end + 1;
    }
    if (validLength)
        *validLength = start;
    return records;
}

} // namespace fleetwright
