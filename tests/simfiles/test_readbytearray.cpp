#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/runtimeerror.h"
#include "simfiles/airfile.h"
#include "common/tempdir.h"

using namespace fleetwright;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;
using namespace std::string_literals;

namespace {

const std::string MARK = "\xEF\xBB\xBF";

std::optional<int> runtimeErrorOf(const std::function<void()> &run)
{
    try {
        run();
    } catch (const RuntimeError &error) {
        return error.number();
    }
    return std::nullopt;
}

// FNV-1a over a stretch of bytes.
std::uint64_t checksum(std::string_view bytes)
{
    std::uint64_t hash = 14695981039346656037ull;
    for (char ch : bytes) {
        hash ^= static_cast<unsigned char>(ch);
        hash *= 1099511628211ull;
    }
    return hash;
}

// Text of a profile file, a line per entry, as long as asked for.
std::string profileText(std::size_t size)
{
    std::string text = "[fltsim]\r\n";
    for (int line = 0; text.size() < size; ++line)
        text += "fallback." + std::to_string(line) + "=..\\texture.line" + std::to_string(line * 7919 % 1000) + "\r\n";
    text.resize(size);
    return text;
}

} // namespace

TEST(ReadByteArray, MarkMovesOutWithoutTruncating)
{
    TempDir dir;
    const fs::path file = dir / "texture.cfg";
    const std::string original = MARK + "[fltsim";
    writeBytes(file, original);

    std::vector<std::uint8_t> bytes;
    ReadByteArray(widePath(file), bytes);
    EXPECT_EQ(bytes, std::vector<std::uint8_t>(original.begin(), original.end()));

    // Ten bytes stay ten; bytes 8 to 10 (from 1) repeat bytes 5 to 7.
    const std::string after = readBytes(file);
    ASSERT_EQ(after.size(), 10u);
    EXPECT_EQ(after, "[fltsimsim");
    EXPECT_EQ(after.substr(7, 3), after.substr(4, 3));
}

TEST(ReadByteArray, LeavesEverythingButTheMarkAsItStood)
{
    TempDir dir;
    const fs::path plain = dir / "plain" / "model.cfg";
    const fs::path marked = dir / "marked" / "Model.cfg";
    const std::string text = profileText(30000);
    writeBytes(plain, text);
    writeBytes(marked, MARK + text);

    std::vector<std::uint8_t> bytes;
    ReadByteArray(widePath(plain), bytes);
    EXPECT_EQ(bytes.size(), text.size());
    EXPECT_EQ(checksum(readBytes(plain)), checksum(text));

    ReadByteArray(widePath(marked), bytes);
    const std::string after = readBytes(marked);
    ASSERT_EQ(after.size(), text.size() + 3);
    EXPECT_EQ(checksum(std::string_view(after).substr(0, text.size())), checksum(text));
    EXPECT_EQ(after.substr(text.size()), text.substr(text.size() - 3));

    // Read again, the file has no mark any more and stays as it is.
    ReadByteArray(widePath(marked), bytes);
    EXPECT_EQ(readBytes(marked), after);
}

TEST(ReadByteArray, ErrorsGoToTheCaller)
{
    TempDir dir;
    std::vector<std::uint8_t> bytes;
    const struct
    {
        const char *name;
        std::optional<std::string> content;
        std::optional<int> error;
        bool rewritten;
    } rows[] = {
        {"missing file", std::nullopt, 53, false},
        {"empty file", "", 9, false},
        {"two bytes", "\xEF\xBB"s, 9, false},
        {"the mark alone", MARK, std::nullopt, false},
        {"marked, 32767 bytes", MARK + std::string(32764, 'x'), std::nullopt, true},
        {"marked, 32768 bytes", MARK + std::string(32765, 'x'), 6, false},
        {"unmarked, 40000 bytes", std::string(40000, 'x'), std::nullopt, false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const fs::path file = dir / (std::string(row.name) + ".cfg");
        if (row.content)
            writeBytes(file, *row.content);
        EXPECT_EQ(runtimeErrorOf([&] { ReadByteArray(widePath(file), bytes); }), row.error);
        if (row.content) {
            EXPECT_EQ(readBytes(file) != *row.content, row.rewritten);
        }
    }
}

TEST(ReadByteArray, ReadOnlyMarkedFileRefusesTheRewrite)
{
    TempDir dir;
    const fs::path marked = dir / "texture.cfg";
    const fs::path plain = dir / "model.cfg";
    writeBytes(marked, MARK + "[fltsim]\r\n");
    writeBytes(plain, "[models]\r\n");
    for (const fs::path &file : {marked, plain})
        fs::permissions(file, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                        fs::perm_options::remove);

    std::vector<std::uint8_t> bytes;
    EXPECT_EQ(runtimeErrorOf([&] { ReadByteArray(widePath(marked), bytes); }), 75);
    EXPECT_EQ(readBytes(marked), MARK + "[fltsim]\r\n");
    EXPECT_EQ(runtimeErrorOf([&] { ReadByteArray(widePath(plain), bytes); }), std::nullopt);
}
