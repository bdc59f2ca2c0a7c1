// The temporary folder, the regional formats, and (off Windows) starting other programs with stand-ins for the
// editor and the desktop tools.
#include <chrono>
#include <ctime>
#include <filesystem>
#include <locale>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>

#include <gtest/gtest.h>

#include "common/environment.h"
#include "common/tempdir.h"
#include "platform/regional.h"
#include "platform/shell.h"
#include "platform/tempfolder.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

using namespace fleetwright::platform;
using fleetwright::test::readBytes;
using fleetwright::test::ScopedVariable;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;

TEST(Environment, WhatHoldsWhateverTheUserSet)
{
    const std::u16string folder = TempFolderPath();
    ASSERT_FALSE(folder.empty());
    EXPECT_EQ(folder.back(), static_cast<char16_t>(fs::path::preferred_separator));
    EXPECT_TRUE(fs::path(folder).is_absolute());
    const char16_t separator = DecimalSeparatorChar();
    EXPECT_TRUE(separator == u'.' || separator == u',' || separator == u'\u066B') << int(separator);
    // 2009-02-13 23:31:30 UTC: whatever the zone, the day is the 13th or the 14th and the year shows.
    const std::u16string date = shortDateText(1234567890);
    EXPECT_TRUE(date.find(u"13") != std::u16string::npos || date.find(u"14") != std::u16string::npos);
    EXPECT_NE(date.find(u"09"), std::u16string::npos);
    // Zones differ by whole quarter hours at least, so the seconds show as they are.
    EXPECT_NE(longTimeText(1234567897).find(u"37"), std::u16string::npos);
}

#ifndef _WIN32
namespace {

// Sets TZ for a scope; the C library reads it again only when told.
struct Zone
{
    std::optional<ScopedVariable> variable;
    explicit Zone(const char *value)
    {
        variable.emplace("TZ", value);
        ::tzset();
    }
    ~Zone()
    {
        variable.reset();
        ::tzset();
    }
};

void writeScript(const fs::path &path, const std::string &body)
{
    writeBytes(path, "#!/bin/sh\n" + body);
    ::chmod(path.c_str(), 0755);
}

// The started program runs on its own: wait for its line, complete with its line end.
std::string waitForLine(const fs::path &path)
{
    for (int i = 0; i < 1000 && readBytes(path).find('\n') == std::string::npos; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const std::string line = readBytes(path);
    fs::remove(path);
    return line;
}

} // namespace

TEST(Environment, TempFolderAndRegionalFormats)
{
    for (const auto &[value, folder] : {std::pair<const char *, std::u16string> {"/var/tmp", u"/var/tmp/"},
                                        {"/scratch/\u00E9t\u00E9/", u"/scratch/\u00E9t\u00E9/"},
                                        {"", u"/tmp/"},
                                        {nullptr, u"/tmp/"}}) {
        const ScopedVariable tmp("TMPDIR", value ? std::optional<std::string>(value) : std::nullopt);
        EXPECT_EQ(TempFolderPath(), folder);
    }

    const Zone zone("UTC0");
    // A locale that is not installed falls back to C rather than failing.
    for (const char *locale : {"C", "xx_NOWHERE.UTF-8"}) {
        const ScopedVariable all("LC_ALL", locale);
        EXPECT_EQ(DecimalSeparatorChar(), u'.');
        EXPECT_EQ(shortDateText(1234567890), u"02/13/09");
        EXPECT_EQ(longTimeText(1234567890), u"23:31:30");
        const Zone shifted("CET-1");
        EXPECT_EQ(shortDateText(1234567890), u"02/14/09");
        EXPECT_EQ(longTimeText(1234567890), u"00:31:30");
    }
    try {
        std::locale("de_DE.UTF-8");
    } catch (const std::runtime_error &) {
        GTEST_SKIP() << "de_DE.UTF-8 is not installed";
    }
    const ScopedVariable all("LC_ALL", "de_DE.UTF-8");
    EXPECT_EQ(DecimalSeparatorChar(), u',');
    EXPECT_EQ(shortDateText(1234567890), u"13.02.2009");
}

TEST(ShellPosix, EditorAndDesktopTools)
{
    TempDir dir;
    const fs::path script = dir / "my editor" / "edit.sh";
    const std::string args = "'" + (dir / "args.txt").string() + "'";
    // Each argument closed by "|", so that a split or merged argument shows.
    writeScript(script, "for a in \"$@\"; do printf '%s|' \"$a\"; done > " + args + "\necho >> " + args + "\n");
    const fs::path document = dir / "B737 800" / "aircraft.cfg";
    writeBytes(document, "[fltsim.0]\r\n");
    // VISUAL before EDITOR, split at blanks with quotes kept together.
    const std::tuple<std::optional<std::string>, std::string, std::string> editors[] = {
        {"'" + script.string() + "' --wait", "/nonexistent/editor", "--wait|" + document.string() + "|\n"},
        {std::nullopt, "\"" + script.string() + "\"", document.string() + "|\n"},
        {std::nullopt, "/nonexistent/editor --flag", ""}};
    for (const auto &[visual, editor, got] : editors) {
        const ScopedVariable visualVariable("VISUAL", visual), editorVariable("EDITOR", editor);
        ASSERT_EQ(Shell::openInPlainEditor(widePath(document)), !got.empty()) << editor;
        if (!got.empty()) {
            EXPECT_EQ(waitForLine(dir / "args.txt"), got);
        }
    }

    const ScopedVariable visual("VISUAL", std::nullopt);
    const ScopedVariable editor("EDITOR", std::nullopt);
    const ScopedVariable path("PATH", (dir / "bin").string());
    EXPECT_FALSE(Shell::open(widePath(document))) << "no desktop tools at all";
    EXPECT_FALSE(Shell::open(u""));
    EXPECT_FALSE(Shell::openInPlainEditor(widePath(document)));
    EXPECT_EQ(Shell::findExecutable(widePath(document)), std::nullopt);
    // Stand-ins that answer like the real tools, of shell built-ins only.
    writeScript(dir / "bin" / "xdg-mime",
                "if [ \"$2\" = filetype ]; then echo 'application/pdf; charset=binary'; exit 0; fi\n"
                "if [ \"$3\" = application/pdf ]; then echo ' org.example.Viewer.desktop '; exit 0; fi\n"
                "if [ \"$3\" = text/plain ]; then echo 'org.example.Edit.desktop'; exit 0; fi\n"
                "exit 4\n");
    writeScript(dir / "bin" / "gtk-launch",
                "printf '%s|%s\\n' \"$1\" \"$2\" > '" + (dir / "launched.txt").string() + "'\n");
    writeScript(dir / "bin" / "xdg-open", "printf '%s\\n' \"$1\" > '" + (dir / "opened.txt").string() + "'\n");
    EXPECT_EQ(Shell::findExecutable(widePath(document)), u"org.example.Viewer.desktop");
    EXPECT_EQ(Shell::findExecutable(widePath(dir / "missing.pdf")), std::nullopt);
    ASSERT_TRUE(Shell::openInPlainEditor(widePath(document)));
    EXPECT_EQ(waitForLine(dir / "launched.txt"), "org.example.Edit.desktop|" + document.string() + "\n");
    ASSERT_TRUE(Shell::open(u"https://example.org/fleetwright?x=1&y=2"));
    EXPECT_EQ(waitForLine(dir / "opened.txt"), "https://example.org/fleetwright?x=1&y=2\n");
    // A desktop entry that does not launch falls back to xdg-open.
    writeScript(dir / "bin" / "gtk-launch", "exit 1\n");
    ASSERT_TRUE(Shell::openInPlainEditor(widePath(document)));
    EXPECT_EQ(waitForLine(dir / "opened.txt"), document.string() + "\n");
}
#endif
