// Starting other programs, with stand-ins for the editor and the desktop tools made by the test.
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <thread>

#include <gtest/gtest.h>

#include "platform/shell.h"
#include "platform/utf8.h"
#include "common/tempdir.h"

using namespace fleetwright::platform;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;

namespace {

// Sets environment variables for one test and puts the old values back at its end.
class Environment
{
public:
    ~Environment()
    {
        for (auto it = m_saved.rbegin(); it != m_saved.rend(); ++it) {
            if (it->second)
                ::setenv(it->first.c_str(), it->second->c_str(), 1);
            else
                ::unsetenv(it->first.c_str());
        }
    }
    void set(const std::string &name, const std::optional<std::string> &value)
    {
        const char *old = std::getenv(name.c_str());
        m_saved.emplace_back(name, old != nullptr ? std::optional<std::string>(old) : std::nullopt);
        if (value)
            ::setenv(name.c_str(), value->c_str(), 1);
        else
            ::unsetenv(name.c_str());
    }

private:
    std::vector<std::pair<std::string, std::optional<std::string>>> m_saved;
};

void writeScript(const fs::path &path, const std::string &body)
{
    writeBytes(path, "#!/bin/sh\n" + body);
    ::chmod(path.c_str(), 0755);
}

// The started program runs on its own; wait until it has left its trace (or clearly never will).
std::string waitForFile(const fs::path &path)
{
    for (int i = 0; i < 1000 && !fs::exists(path); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    // The line is complete once its line end is there.
    for (int i = 0; i < 100 && readBytes(path).find('\n') == std::string::npos; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return readBytes(path);
}

} // namespace

TEST(ShellPosix, EditorFromEnvironment)
{
    TempDir dir;
    Environment environment;
    const fs::path script = dir / "my editor" / "edit.sh";
    // Writes its arguments, each closed by "|", so that a split or merged argument would show.
    writeScript(script,
                "for a in \"$@\"; do printf '%s|' \"$a\"; done > '" + (dir / "args.txt").string() + "'\necho >> '"
                    + (dir / "args.txt").string() + "'\n");
    const fs::path document = dir / "B737 800" / "aircraft.cfg";
    writeBytes(document, "[fltsim.0]\r\n");

    environment.set("VISUAL", "'" + script.string() + "' --wait");
    environment.set("EDITOR", "/nonexistent/editor");
    ASSERT_TRUE(Shell::openInPlainEditor(widePath(document)));
    EXPECT_EQ(waitForFile(dir / "args.txt"), "--wait|" + document.string() + "|\n");

    fs::remove(dir / "args.txt");
    environment.set("VISUAL", std::nullopt);
    environment.set("EDITOR", "\"" + script.string() + "\"");
    ASSERT_TRUE(Shell::openInPlainEditor(widePath(document)));
    EXPECT_EQ(waitForFile(dir / "args.txt"), document.string() + "|\n");

    environment.set("EDITOR", "/nonexistent/editor --flag");
    EXPECT_FALSE(Shell::openInPlainEditor(widePath(document)));
}

TEST(ShellPosix, DesktopTools)
{
    TempDir dir;
    Environment environment;
    const fs::path tools = dir / "bin";
    const fs::path document = dir / "manual.pdf";
    writeBytes(document, "%PDF");
    environment.set("VISUAL", std::nullopt);
    environment.set("EDITOR", std::nullopt);
    {
        SCOPED_TRACE("no desktop tools at all");
        fs::create_directories(tools);
        environment.set("PATH", tools.string());
        EXPECT_FALSE(Shell::open(widePath(document)));
        EXPECT_FALSE(Shell::open(u""));
        EXPECT_FALSE(Shell::openInPlainEditor(widePath(document)));
        EXPECT_EQ(Shell::findExecutable(widePath(document)), std::nullopt);
    }
    {
        SCOPED_TRACE("stand-ins that answer like the real tools");
        writeScript(tools / "xdg-mime",
                    "if [ \"$2\" = filetype ]; then echo 'application/pdf; charset=binary'; exit 0; fi\n"
                    "if [ \"$3\" = application/pdf ]; then echo ' org.example.Viewer.desktop '; exit 0; fi\n"
                    "if [ \"$3\" = text/plain ]; then echo 'org.example.Edit.desktop'; exit 0; fi\n"
                    "exit 4\n");
        // Only shell built-ins: PATH holds nothing but these stand-ins.
        writeScript(tools / "gtk-launch",
                    "printf '%s|%s\\n' \"$1\" \"$2\" > '" + (dir / "launched.txt").string() + "'\n");
        writeScript(tools / "xdg-open", "printf '%s\\n' \"$1\" > '" + (dir / "opened.txt").string() + "'\n");
        EXPECT_EQ(Shell::findExecutable(widePath(document)), u"org.example.Viewer.desktop");
        EXPECT_EQ(Shell::findExecutable(widePath(dir / "missing.pdf")), std::nullopt);

        ASSERT_TRUE(Shell::openInPlainEditor(widePath(document)));
        EXPECT_EQ(readBytes(dir / "launched.txt"), "org.example.Edit.desktop|" + document.string() + "\n");

        ASSERT_TRUE(Shell::open(u"https://example.org/fleetwright?x=1&y=2"));
        EXPECT_EQ(waitForFile(dir / "opened.txt"), "https://example.org/fleetwright?x=1&y=2\n");
    }
    {
        SCOPED_TRACE("a desktop entry that does not launch falls back to xdg-open");
        fs::remove(dir / "opened.txt");
        writeScript(tools / "gtk-launch", "exit 1\n");
        ASSERT_TRUE(Shell::openInPlainEditor(widePath(document)));
        EXPECT_EQ(waitForFile(dir / "opened.txt"), document.string() + "\n");
    }
}
