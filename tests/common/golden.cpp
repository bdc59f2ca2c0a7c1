#include "common/golden.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

#include "common/tempdir.h"

namespace fleetwright::test {

namespace fs = std::filesystem;

std::vector<fs::path> goldenCases(const std::string &area)
{
    std::vector<fs::path> cases;
    for (const fs::directory_entry &entry : fs::directory_iterator(fs::path(FLEETWRIGHT_TEST_DATA_DIR) / area))
        if (entry.is_directory())
            cases.push_back(entry.path());
    std::sort(cases.begin(), cases.end());
    return cases;
}

std::string goldenName(const ::testing::TestParamInfo<fs::path> &info)
{
    std::string name = info.param.filename().string();
    for (char &ch : name)
        if (!std::isalnum(static_cast<unsigned char>(ch)))
            ch = '_';
    return name;
}

void copyFolder(const fs::path &from, const fs::path &to)
{
    fs::create_directories(to);
    fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::overwrite_existing);
}

std::vector<std::string> split(std::string_view text, std::string_view separator)
{
    std::vector<std::string> parts;
    for (std::size_t start = 0;;) {
        const std::size_t end = text.find(separator, start);
        parts.emplace_back(text.substr(start, end - start));
        if (end == std::string_view::npos)
            return parts;
        start = end + separator.size();
    }
}

std::map<std::string, std::string> readSettings(const fs::path &file)
{
    std::map<std::string, std::string> settings;
    const std::string text = readBytes(file);
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos)
            end = text.size();
        std::string line = text.substr(start, end - start);
        start = end + 1;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const std::size_t equals = line.find('=');
        if (line.empty() || line[0] == '#' || equals == std::string::npos)
            continue;
        settings[line.substr(0, equals)] = line.substr(equals + 1);
    }
    return settings;
}

namespace {

std::string replaced(std::string text, const Replacements &replacements)
{
    for (const auto &[from, token] : replacements) {
        if (from.empty())
            continue;
        for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += token.size())
            text.replace(at, from.size(), token);
    }
    return text;
}

std::string lineAt(const std::string &text, std::size_t offset)
{
    const std::size_t start = text.rfind('\n', offset == 0 ? 0 : offset - 1);
    const std::size_t begin = start == std::string::npos || offset == 0 ? 0 : start + 1;
    return text.substr(begin, text.find('\n', begin) - begin);
}

} // namespace

void expectGolden(const std::string &actual, const fs::path &expectedFile, const Replacements &replacements)
{
    const std::string produced = replaced(actual, replacements);
    if (const char *update = std::getenv("FLEETWRIGHT_UPDATE_GOLDEN"); update && std::string(update) == "1") {
        writeBytes(expectedFile, produced);
        return;
    }
    ASSERT_TRUE(fs::exists(expectedFile)) << expectedFile << " is missing";
    const std::string expected = readBytes(expectedFile);
    if (produced == expected)
        return;
    const auto differs = std::mismatch(produced.begin(), produced.end(), expected.begin(), expected.end()).first;
    const auto offset = static_cast<std::size_t>(differs - produced.begin());
    const auto line = std::count(produced.begin(), differs, '\n') + 1;
    ADD_FAILURE() << expectedFile.string() << " differs at line " << line << " (byte " << offset << ")\n"
                  << "  produced: " << ::testing::PrintToString(lineAt(produced, offset)) << "\n"
                  << "  expected: " << ::testing::PrintToString(lineAt(expected, offset));
}

} // namespace fleetwright::test
