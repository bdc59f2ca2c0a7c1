#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace fleetwright::test {

// Golden cases: tests/data/<area>/<case>/ holds an input folder and the outputs expected of it. A test runs
// every case folder it finds, so a new case is a new folder and no new code.
//
//     INSTANTIATE_TEST_SUITE_P(Cases, MyGolden, ::testing::ValuesIn(goldenCases("validation")), goldenName);
//
// With FLEETWRIGHT_UPDATE_GOLDEN=1 in the environment, expectGolden writes what the code produced instead of
// comparing; review the difference in version control before committing it.

// The case folders of an area, sorted by name.
std::vector<std::filesystem::path> goldenCases(const std::string &area);

// Test names are the case folders' names, with characters GoogleTest refuses turned into "_".
std::string goldenName(const ::testing::TestParamInfo<std::filesystem::path> &info);

// Copies a folder and everything in it, bytes unchanged.
void copyFolder(const std::filesystem::path &from, const std::filesystem::path &to);

// The parts of text between separators, empty parts kept: "a||b" gives "a", "", "b"; "" gives one empty part.
std::vector<std::string> split(std::string_view text, std::string_view separator = "|");
inline std::vector<std::string> split(std::string_view text, char separator)
{
    return split(text, std::string_view(&separator, 1));
}

// "key=value" lines of a case's settings file; blank lines and lines starting with "#" are skipped. A missing
// file gives no settings.
std::map<std::string, std::string> readSettings(const std::filesystem::path &file);

// Text pieces of a run that differ from machine to machine (temporary folders), each replaced by a token
// such as "{folder}" before the comparison.
using Replacements = std::vector<std::pair<std::string, std::string>>;

// Compares the bytes produced with the expected file, after the replacements; reports the first differing line.
void expectGolden(const std::string &actual, const std::filesystem::path &expectedFile,
                  const Replacements &replacements = {});

} // namespace fleetwright::test
