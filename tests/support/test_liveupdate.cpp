#include <filesystem>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "common/tempdir.h"
#include "core/runtimeerror.h"
#include "platform/utf8.h"
#include "support/liveupdate.h"

using namespace fleetwright;
using fleetwright::platform::toUtf8;

TEST(LiveUpdate, ConfigurationTakesLinesTwoAndThreeWhateverTheLineEnds)
{
    const auto read = [](const std::string &bytes) {
        const UpdateConfiguration configuration = parseUpdateConfiguration(bytes);
        return std::tuple(configuration.WebVersion, configuration.DownloadURL, configuration.DownloadFileName);
    };
    for (const std::string end : {"\r\n", "\n", "\r"})
        EXPECT_EQ(read("x" + end + "1.2" + end + "http://h/d/p.html" + end + "more" + end),
                  std::tuple(u"1.2", u"http://h/d/p.html", u"p.html"));
    // CR CR is an empty line; missing lines stay empty.
    EXPECT_EQ(read("x\r\r1.2"), std::tuple(u"", u"1.2", u"1.2"));
    EXPECT_EQ(read("1.2"), std::tuple(u"", u"", u""));
    EXPECT_EQ(read("x\r\n1.\xE9.3\r\n"), std::tuple(u"1.\u00E9.3", u"", u""));
}

TEST(LiveUpdate, VersionsWeeksAndTexts)
{
    // Parts that start with no digit, as on the second line of an error page, count 0.
    using enum UpdateVerdict;
    const std::tuple<const char16_t *, const char16_t *, UpdateVerdict> verdicts[] = {
        {u"2.0.0", u"1.9.9", Newer},         {u"1.2.4", u"1.2.3", Newer},
        {u"1.2.3", u"1.2.3", Same},          {u"01.2.3.9", u"1.2.3", Same},
        {u" 1.2b.3", u"1.2.3", Same},        {u"1.9.5", u"2.0.0", OwnNewer},
        {u"<a.w3.org>", u"1.0.0", OwnNewer}, {u"1.2", u"1.2.3", None},
        {u"<html><head>", u"1.2.3", None},   {u"1.2.3", u"1.2", None},
        {u"1e999.0.0", u"1.2.3", None}};
    for (const auto &[web, own, verdict] : verdicts)
        EXPECT_EQ(compareVersions(web, own), verdict) << toUtf8(web);
    EXPECT_EQ(verdictText(None), u"");
    EXPECT_EQ(progressText(120, 300), u"120 bytes of 300 bytes configuration data retreived");
    EXPECT_EQ(beginDownloadErrorText(u"why"), u":Error in call to BeginDownload().\r\n\r\nError Description: why");

    // Weeks start on Sunday and week 1 holds January 1: 2023 began on a Sunday, 2022 and 2000 on a Saturday.
    const int weeks[][4] = {{2023, 1, 1, 1}, {2023, 1, 7, 1},   {2023, 1, 8, 2},    {2022, 1, 1, 1},
                            {2022, 1, 2, 2}, {2025, 6, 15, 25}, {2024, 12, 31, 53}, {2000, 12, 31, 54}};
    for (const auto &[year, month, day, week] : weeks)
        EXPECT_EQ(weekOfYear(year, month, day), week) << year << "-" << month << "-" << day;
}

TEST(LiveUpdate, AutomaticCheckRunsWhenTheStoredWeekDiffers)
{
    EXPECT_TRUE(automaticCheckDue(u"0", 7));
    EXPECT_TRUE(automaticCheckDue(u"8", 7));
    for (const char16_t *text : {u"7", u" 7 ", u"07", u"7.0", u"&H7"})
        EXPECT_FALSE(automaticCheckDue(text, 7)) << toUtf8(text);
    for (const char16_t *text : {u"", u"abc", u"7x", u"1 2"}) {
        try {
            automaticCheckDue(text, 7);
            ADD_FAILURE() << toUtf8(text);
        } catch (const RuntimeError &error) {
            EXPECT_EQ(error.number(), 13);
            EXPECT_EQ(error.procedure(), u"Form_Activate");
        }
    }
}

TEST(LiveUpdate, CompletionReadsTheAnswerThroughTheLocalCopyAndDeletesIt)
{
    const std::u16string sep(1, static_cast<char16_t>(std::filesystem::path::preferred_separator));
    EXPECT_EQ(LocalFolder(u"tmp", u"prog"), u"tmp" + sep);
    EXPECT_EQ(LocalFolder(u"tmp" + sep, u"prog"), u"tmp" + sep);
    EXPECT_EQ(LocalFolder(u"", u"prog"), u"prog" + sep);

    test::TempDir dir;
    const std::u16string local = localConfigFile(test::widePath(dir.path()) + sep);
    const std::string answer = "Fleetwright\r\n1.10.0\r\nhttp://h/download.html\r\n";
    // A copy left behind by an earlier run is overwritten, then removed.
    test::writeBytes(dir / "_vclu.txt", "stale\r\n9.9.9\r\nstale\r\nstale\r\nstale\r\n");
    const UpdateCheckResult newer = completeUpdateCheck(answer, answer.size(), local, u"1.9.5");
    EXPECT_TRUE(newer.connected);
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
