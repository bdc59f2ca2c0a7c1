#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>

#include "core/runtimeerror.h"
#include "platform/filelookup.h"
#include "test_validation_fixture.h"

using namespace fleetwright;
using namespace fleetwright::test;
namespace fs = std::filesystem;

namespace {

class ValidationEdges : public AircraftFixture
{
protected:
    std::optional<RuntimeError> failure()
    {
        try {
            run();
        } catch (const RuntimeError &error) {
            return error;
        }
        return std::nullopt;
    }

    void plainAircraft(const std::string &texture)
    {
        cfg("[fltsim.0]\r\ntitle=A\r\nsim=plane\r\nmodel=\r\ntexture=" + texture + "\r\n");
        file("plane.air", "a");
    }
};

TEST_F(ValidationEdges, BadInputEndsTheRunWithoutAReport)
{
    const fs::path report = dir / "tmp" / "corvanecheck.log";

    // A plain file named like a texture folder: the walk cannot open it as a folder.
    plainAircraft("");
    file("texture/a.bmp", "b");
    file("texture.txt", "notes");
    auto error = failure();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->number(), 76);
    EXPECT_EQ(error->procedure(), u"AnalyzeTextureFolder");
    EXPECT_FALSE(fs::exists(report));
    fs::remove(folder / "texture.txt");

    // A fallback without "..\" asks for -1 characters.
    plainAircraft("a");
    file("texture.a/texture.cfg", "[fltsim]\r\nfallback.1=texture.b\r\n");
    error = failure();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->number(), 5);
    EXPECT_EQ(error->procedure(), u"mnuValidate_Click");

    // A texture.cfg of two bytes: ReadByteArray's error ends the run in the routine that called it.
    file("texture.a/texture.cfg", "[f");
    error = failure();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->number(), 9);
    EXPECT_EQ(error->procedure(), u"mnuValidate_Click");
    fs::remove_all(folder / "texture.a");

#ifndef _WIN32
    // A folder "skin." is listed, but its path leads to "skin", which is not there: the walk fails on it.
    plainAircraft("");
    file("texture/skin./a.bmp", "b");
    error = failure();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->number(), 76);
    EXPECT_EQ(error->procedure(), u"AnalyzeTextureFolder");
    fs::remove_all(folder / "texture");
#endif

    // An effects section without keys, with a simulator found and option 21 on.
    useFs9({u"KLM"});
    cfg("[fltsim.0]\r\ntitle=A\r\n[effects]\r\n");
    error = failure();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->number(), 9);
    EXPECT_FALSE(fs::exists(report));

    // The same section with option 21 off is never looked at.
    input.AnalyzeOptionList[21] = u"0";
    EXPECT_EQ(run().outcome, ValidationOutcome::ReportWritten);
}

TEST_F(ValidationEdges, LoopingAndDeepFolders)
{
    plainAircraft("");
    file("texture/a.bmp", "b");
    fs::path deep = folder / "nest";
    for (int i = 0; i < 60; ++i)
        deep /= "d";
    fs::create_directories(deep);
    std::error_code ec;
    fs::create_directory_symlink(folder, folder / "links" / "up", ec);
    if (ec) {
        fs::create_directories(folder / "links");
        fs::create_directory_symlink(folder, folder / "links" / "up", ec);
    }
    const bool haveLinks = !ec;
    if (!haveLinks)
        fs::remove_all(folder / "links");

    int yields = 0;
    input.yieldToEvents = [&] { ++yields; };
    options({22});
    const ValidationResult result = run();
    std::string deepRow = "Empty folders found:               ..\\nest";
    for (int i = 0; i < 60; ++i)
        deepRow += "\\d";
    EXPECT_EQ(bodyOf(result), (std::vector<std::string> {"RULE", deepRow}));
    EXPECT_TRUE(result.ReportHasErrors);
    EXPECT_GE(yields, 63);

    if (!haveLinks)
        GTEST_SKIP() << "no folder links here";
    // The texture walk would grow its path for ever through the link: it stops at once.
    fs::create_directory_symlink(folder, folder / "texture" / "loop", ec);
    ASSERT_FALSE(ec);
    const auto error = failure();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->procedure(), u"AnalyzeTextureFolder");
}

TEST_F(ValidationEdges, FindEmptyFoldersOnItsOwn)
{
    fs::create_directories(folder / "a" / "b");
    fs::create_directories(folder / "C");
    writeBytes(folder / "full" / "x.txt", "x");
    const std::u16string root = withSeparator(folder);
    std::u16string list;
    FindEmptyFolders(root, root, list);
    EXPECT_EQ(list, u"..\\a\\b\u00A6..\\C");
    // A root that is gone adds nothing; the root itself counts when it is empty.
    list.clear();
    FindEmptyFolders(widePath(folder / "gone"), root, list);
    EXPECT_EQ(list, u"");
    FindEmptyFolders(widePath(folder / "C"), root, list);
    EXPECT_EQ(list, u"..\\C");
}

TEST_F(ValidationEdges, RealAircraftFoldersValidate)
{
    const fs::path corpus = FLEETWRIGHT_CORPUS_DIR;
    if (!fs::is_directory(corpus))
        GTEST_SKIP() << "no corpus of real aircraft folders";
    int validated = 0;
    for (const auto &entry : fs::directory_iterator(corpus)) {
        if (!entry.is_directory())
            continue;
        SCOPED_TRACE(entry.path().filename().string());
        // A copy: the run may take byte order marks off configuration files.
        const fs::path copy = dir / "corpus" / entry.path().filename();
        fs::create_directories(copy);
        fs::copy(entry.path(), copy, fs::copy_options::recursive);
        clsIniFile ini;
        const auto cfgFile = platform::FileLookup::findFile(widePath(copy / "aircraft.cfg"));
        ini.setPath(cfgFile ? cfgFile->u16string() : widePath(copy / "aircraft.cfg"));
        input.folder = widePath(copy);
        input.BatchRunning = true;
        try {
            const ValidationResult result = runValidation(input, ini, dialogs);
            if (result.outcome == ValidationOutcome::ReportWritten) {
                ++validated;
                EXPECT_FALSE(bodyOf(result).empty());
            }
        } catch (const RuntimeError &error) {
            // Real folders may hold what the checks name as fatal (a texture.txt beside the folders).
            ADD_FAILURE() << "run-time error " << error.number();
        }
    }
    EXPECT_GT(validated, 0);
}

} // namespace
