#include <filesystem>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "common/tempdir.h"
#include "core/runtimeerror.h"
#include "platform/utf8.h"
#include "support/liveupdate.h"

using namespace fleetwright;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;

TEST(LiveUpdate, ConfigurationTakesLinesTwoAndThreeWhateverTheLineEnds)
{
    // Bytes, then the version and the address read; CR CR is an empty line.
    // clang-format off
    for (const auto &[bytes, version, url] : {std::tuple<std::string, std::u16string, std::u16string>
             {"Fleetwright\r\n1.2.3\r\nhttp://h/d/page.html\r\nmore\r\n", u"1.2.3", u"http://h/d/page.html"},
             {"x\n1.2.3\nhttp://h/p\n", u"1.2.3", u"http://h/p"}, {"x\r1.2.3\rhttp://h/p", u"1.2.3", u"http://h/p"},
             {"x\r\r1.2.3\r\n", u"", u"1.2.3"}, {"1.2.3", u"", u""}, {"x\r\n1.\xE9.3\r\n", u"1.\u00E9.3", u""}}) {
        // clang-format on
        const UpdateConfiguration configuration = parseUpdateConfiguration(bytes);
        EXPECT_EQ(configuration.WebVersion, version) << bytes;
        EXPECT_EQ(configuration.DownloadURL, url) << bytes;
    }
    EXPECT_EQ(parseUpdateConfiguration("x\n1\nhttp://h/d/page.html").DownloadFileName, u"page.html");
}

TEST(LiveUpdate, VersionsCompareByTheNumbersOfTheirFirstThreeParts)
{
    // The second line of an error page: parts that start with no digit count 0.
    using enum UpdateVerdict;
    // clang-format off
    for (const auto &[web, own, verdict] : {std::tuple<const char16_t *, const char16_t *, UpdateVerdict>
             {u"2.0.0", u"1.9.9", Newer}, {u"1.2.4", u"1.2.3", Newer}, {u"1.2.3", u"1.2.3", Same},
             {u"01.2.3.9", u"1.2.3", Same}, {u" 1.2b.3", u"1.2.3", Same}, {u"1.9.5", u"2.0.0", OwnNewer},
             {u"<html xmlns=\"http://www.w3.org/1999/xhtml\">", u"1.0.0", OwnNewer}, {u"1.2", u"1.2.3", None},
             {u"<html><head>", u"1.2.3", None}, {u"1.2.3", u"1.2", None}, {u"1e999.0.0", u"1.2.3", None}})
        // clang-format on
        EXPECT_EQ(compareVersions(web, own), verdict) << platform::toUtf8(web);
}

TEST(LiveUpdate, FormattedTexts)
{
    EXPECT_EQ(verdictText(UpdateVerdict::None), u"");
    EXPECT_EQ(progressText(120, 300), u"120 bytes of 300 bytes configuration data retreived");
    EXPECT_EQ(beginDownloadErrorText(u"why"), u":Error in call to BeginDownload().\r\n\r\nError Description: why");
}

TEST(LiveUpdate, WeeksStartOnSundayAndWeekOneHoldsJanuaryFirst)
{
    // 2023 began on a Sunday, 2022 on a Saturday; 2000, a leap year, on a Saturday too.
    for (const auto &[year, month, day, week] : {std::tuple {2023, 1, 1, 1},
                                                 {2023, 1, 7, 1},
                                                 {2023, 1, 8, 2},
                                                 {2022, 1, 1, 1},
                                                 {2022, 1, 2, 2},
                                                 {2025, 6, 15, 25},
                                                 {2024, 12, 31, 53},
                                                 {2000, 12, 31, 54}})
        EXPECT_EQ(weekOfYear(year, month, day), week) << year << "-" << month << "-" << day;
}

TEST(LiveUpdate, AutomaticCheckRunsWhenTheStoredWeekDiffers)
{
    EXPECT_TRUE(automaticCheckDue(u"0", 7));
    EXPECT_TRUE(automaticCheckDue(u"8", 7));
    for (const char16_t *text : {u"7", u" 7 ", u"07", u"7.0", u"&H7"})
        EXPECT_FALSE(automaticCheckDue(text, 7)) << platform::toUtf8(text);
    for (const char16_t *text : {u"", u"abc", u"7x", u"1 2"}) {
        try {
            automaticCheckDue(text, 7);
            ADD_FAILURE() << platform::toUtf8(text);
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
