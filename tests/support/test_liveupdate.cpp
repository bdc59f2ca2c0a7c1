// The update check's decisions: the version file's lines, the comparison, the texts, the week and the local copy.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "core/runtimeerror.h"
#include "support/liveupdate.h"
#include "common/tempdir.h"

using namespace fleetwright;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;

TEST(LiveUpdate, ConfigurationTakesLinesTwoAndThreeWhateverTheLineEnds)
{
    struct Row
    {
        const char *name;
        std::string bytes;
        std::u16string version;
        std::u16string url;
    };
    const Row rows[] = {
        {"CR LF", "Fleetwright\r\n1.2.3\r\nhttp://h/d/page.html\r\nmore\r\n", u"1.2.3", u"http://h/d/page.html"},
        {"LF", "x\n1.2.3\nhttp://h/p\n", u"1.2.3", u"http://h/p"},
        {"lone CR", "x\r1.2.3\rhttp://h/p", u"1.2.3", u"http://h/p"},
        {"CR CR is an empty line", "x\r\r1.2.3\r\n", u"", u"1.2.3"},
        {"one line", "1.2.3", u"", u""},
        {"code page", "x\r\n1.\xE9.3\r\n", u"1.\u00E9.3", u""},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const UpdateConfiguration configuration = parseUpdateConfiguration(row.bytes);
        EXPECT_EQ(configuration.WebVersion, row.version);
        EXPECT_EQ(configuration.DownloadURL, row.url);
    }
    EXPECT_EQ(parseUpdateConfiguration("x\n1\nhttp://h/d/page.html").DownloadFileName, u"page.html");
}

TEST(LiveUpdate, VersionsCompareByTheNumbersOfTheirFirstThreeParts)
{
    struct Row
    {
        const char16_t *web;
        const char16_t *own;
        UpdateVerdict verdict;
    };
    const Row rows[] = {
        {u"2.0.0", u"1.9.9", UpdateVerdict::Newer},
        {u"1.2.4", u"1.2.3", UpdateVerdict::Newer},
        {u"1.2.3", u"1.2.3", UpdateVerdict::Same},
        {u"01.2.3.9", u"1.2.3", UpdateVerdict::Same},
        {u" 1.2b.3", u"1.2.3", UpdateVerdict::Same},
        {u"1.9.5", u"2.0.0", UpdateVerdict::OwnNewer},
        // The second line of an error page: parts that start with no digit count 0.
        {u"<html xmlns=\"http://www.w3.org/1999/xhtml\">", u"1.0.0", UpdateVerdict::OwnNewer},
        {u"1.2", u"1.2.3", UpdateVerdict::None},
        {u"<html><head>", u"1.2.3", UpdateVerdict::None},
        {u"1.2.3", u"1.2", UpdateVerdict::None},
        {u"1e999.0.0", u"1.2.3", UpdateVerdict::None},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(&row - rows);
        EXPECT_EQ(compareVersions(row.web, row.own), row.verdict);
    }
}

TEST(LiveUpdate, TextsAreTheOnesUsersKnow)
{
    EXPECT_EQ(verdictText(UpdateVerdict::Newer),
              u"A new version is available. Click on the 'Update' button to open "
              u"Corvane in your webbrowser and download the update.");
    EXPECT_EQ(verdictText(UpdateVerdict::Same),
              u"You already have the most current version. Click 'Close' to continue.");
    EXPECT_EQ(verdictText(UpdateVerdict::OwnNewer),
              u"For unknown reasons your version is more recent than the official version.");
    EXPECT_EQ(verdictText(UpdateVerdict::None), u"");
    EXPECT_EQ(progressText(120, 300), u"120 bytes of 300 bytes configuration data retreived");
    EXPECT_EQ(versionLineText(u"1.0.0", u"1.2.0"), u"Your version: 1.0.0    Web version: 1.2.0");
    EXPECT_EQ(beginDownloadErrorText(u"why"), u":Error in call to BeginDownload().\r\n\r\nError Description: why");
}

TEST(LiveUpdate, WeeksStartOnSundayAndWeekOneHoldsJanuaryFirst)
{
    EXPECT_EQ(weekOfYear(2023, 1, 1), 1); // a Sunday
    EXPECT_EQ(weekOfYear(2023, 1, 7), 1);
    EXPECT_EQ(weekOfYear(2023, 1, 8), 2);
    EXPECT_EQ(weekOfYear(2022, 1, 1), 1); // a Saturday: the next day starts week 2
    EXPECT_EQ(weekOfYear(2022, 1, 2), 2);
    EXPECT_EQ(weekOfYear(2025, 6, 15), 25);
    EXPECT_EQ(weekOfYear(2024, 12, 31), 53);
    EXPECT_EQ(weekOfYear(2000, 12, 31), 54); // leap year that began on a Saturday
}

TEST(LiveUpdate, AutomaticCheckRunsWhenTheStoredWeekDiffers)
{
    EXPECT_TRUE(automaticCheckDue(u"0", 7));
    EXPECT_TRUE(automaticCheckDue(u"8", 7));
    const std::u16string_view same[] = {u"7", u" 7 ", u"07", u"7.0", u"&H7"};
    for (const auto &text : same)
        EXPECT_FALSE(automaticCheckDue(text, 7)) << "row " << &text - same;
    const std::u16string_view bad[] = {u"", u"abc", u"7x", u"1 2"};
    for (const auto &text : bad) {
        SCOPED_TRACE(&text - bad);
        try {
            automaticCheckDue(text, 7);
            ADD_FAILURE() << "no error";
        } catch (const RuntimeError &error) {
            EXPECT_EQ(error.number(), 13);
            EXPECT_EQ(error.procedure(), u"Form_Activate");
        }
    }
}

TEST(LiveUpdate, LocalCopyLiesInTempElseInTheProgramFolder)
{
    const std::u16string sep(1, static_cast<char16_t>(std::filesystem::path::preferred_separator));
    EXPECT_EQ(LocalFolder(u"tmp", u"prog"), u"tmp" + sep);
    EXPECT_EQ(LocalFolder(u"tmp" + sep, u"prog"), u"tmp" + sep);
    EXPECT_EQ(LocalFolder(u"", u"prog"), u"prog" + sep);
    EXPECT_EQ(localConfigFile(u"tmp" + sep), u"tmp" + sep + u"_vclu.txt");
}

TEST(LiveUpdate, CompletionReadsTheAnswerThroughTheLocalCopyAndDeletesIt)
{
    TempDir dir;
    const std::u16string local = widePath(dir / "_vclu.txt");
    const std::string answer = "Fleetwright\r\n1.10.0\r\nhttp://h/download.html\r\n";

    // A copy left behind by an earlier run is overwritten, then removed.
    test::writeBytes(dir / "_vclu.txt", "stale\r\n9.9.9\r\nstale\r\nstale\r\nstale\r\n");
    const UpdateCheckResult newer = completeUpdateCheck(answer, answer.size(), local, u"1.9.5");
    EXPECT_TRUE(newer.connected);
    EXPECT_EQ(newer.configuration.WebVersion, u"1.10.0");
    EXPECT_EQ(newer.configuration.DownloadURL, u"http://h/download.html");
    EXPECT_EQ(newer.versionLine, u"Your version: 1.9.5    Web version: 1.10.0");
    EXPECT_EQ(newer.verdict, UpdateVerdict::Newer);
    EXPECT_FALSE(std::filesystem::exists(dir / "_vclu.txt"));

    // Where the copy cannot be written, nothing is read and no verdict follows; the folder in the way stays.
    test::writeBytes(dir / "_vclu.txt" / "inside", "x");
    const UpdateCheckResult blocked = completeUpdateCheck(answer, answer.size(), local, u"1.9.5");
    EXPECT_TRUE(blocked.connected);
    EXPECT_EQ(blocked.versionLine, u"Your version: 1.9.5    Web version: ");
    EXPECT_EQ(blocked.verdict, UpdateVerdict::None);
    EXPECT_TRUE(std::filesystem::is_directory(dir / "_vclu.txt"));
}
