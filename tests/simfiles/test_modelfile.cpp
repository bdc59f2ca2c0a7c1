#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "core/scripteddialogs.h"
#include "platform/fileio.h"
#include "simfiles/modelfile.h"
#include "common/tempdir.h"

using namespace fleetwright;
using fleetwright::test::readBytes;
using fleetwright::test::TempDir;
using fleetwright::test::widePath;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;
using namespace std::string_literals;

namespace {

const char16_t SEPARATOR = static_cast<char16_t>(fs::path::preferred_separator);

// A RIFF model file of size bytes with tag at offset 8 and radius at offset 28, where the file reaches.
std::string mdlBytes(const std::string &tag, unsigned char radius, std::size_t size = 64)
{
    std::string bytes = "RIFF" + std::string("\x38\x00\x00\x00", 4) + tag + "MDLH" + std::string("\x24\x00\x00\x00", 4)
        + std::string(8, '\x01') + std::string(1, static_cast<char>(radius));
    bytes.resize(std::max(bytes.size(), size), '\x02');
    bytes.resize(size);
    return bytes;
}

void makeReadOnly(const fs::path &path)
{
    fs::permissions(path, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
}

} // namespace

TEST(ResolveModelName, FirstNormalLineInAnyCase)
{
    const struct
    {
        const char *name;
        std::string modelCfg;
        std::u16string modelName;
    } rows[] = {
        {"key and extension in capitals", "[models]\r\nNORMAL=Skyliner200.MDL\r\n", u"Skyliner200"},
        {"trimmed, comment cut", "[models]\r\nnormal=  skyliner200  // main\r\n", u"skyliner200"},
        {"no extension", "[models]\r\nNormal=skyliner200\r\ninterior=cabin\r\n", u"skyliner200"},
        {"first line wins, in any section", "[other]\r\nnormal=a.mdl\r\n[models]\r\nnormal=b\r\n", u"a"},
        {"blank in front of the equals sign", "[models]\r\nnormal =a\r\nnormal=b\r\n", u"b"},
        {"without a normal= line", "[models]\r\ninterior=cabin\r\n", u""},
        {"byte order mark ahead of the section", "\xEF\xBB\xBF[models]\r\nnormal=skyliner200\r\n", u"skyliner200"},
        {"byte order mark on the normal= line", "\xEF\xBB\xBFnormal=skyliner200\r\n", u""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        TempDir dir;
        writeBytes(dir / "model" / "model.cfg", row.modelCfg);
        ScriptedDialogs dialogs;
        const ModelConfig config = resolveModelName(widePath(dir.path()), u"<default>", dialogs);
        EXPECT_FALSE(config.missing);
        EXPECT_EQ(config.path, widePath(dir.path()) + SEPARATOR + u"model" + SEPARATOR + u"model.cfg");
        EXPECT_EQ(config.modelName, row.modelName);
    }
}

TEST(ResolveModelName, FolderOfTheVariation)
{
    TempDir dir;
    const std::u16string folder = widePath(dir.path());
    writeBytes(dir / "Model.FSX" / "Model.CFG", "[models]\r\nnormal=skyliner200_fsx\r\n");
    ScriptedDialogs dialogs;

    // Found without regard to case.
    ModelConfig config = resolveModelName(folder, u"fsx", dialogs);
    EXPECT_EQ(config.path, folder + SEPARATOR + u"model.fsx" + SEPARATOR + u"model.cfg");
    EXPECT_FALSE(config.missing);
    EXPECT_EQ(config.modelName, u"skyliner200_fsx");

    // A folder that ends in its separator, as a drive root does, gets no second one in front of model.cfg's
    // folder; the model file's path does not have that care.
    config = resolveModelName(folder + SEPARATOR, u"fsx", dialogs);
    EXPECT_EQ(config.path, folder + SEPARATOR + u"model.fsx" + SEPARATOR + u"model.cfg");
    EXPECT_EQ(readModelFile(folder + SEPARATOR, u"fsx", config.modelName).ModelFilePath,
              folder + SEPARATOR + SEPARATOR + u"model.fsx" + SEPARATOR + u"skyliner200_fsx.mdl");

    config = resolveModelName(folder, u"<default>", dialogs);
    EXPECT_TRUE(config.missing);
    EXPECT_EQ(config.modelName, u"");

    // No model key at all: nothing to resolve, and nothing missing.
    config = resolveModelName(folder, u"", dialogs);
    EXPECT_FALSE(config.missing);
    EXPECT_EQ(config.path, u"");
    EXPECT_TRUE(dialogs.records().empty());
}

TEST(ReadModelFile, TagAndRadius)
{
    const struct
    {
        const char *name;
        std::string bytes;
        std::u16string version;
        std::u16string radius;
        bool editable;
    } rows[] = {
        {"MDL8, radius 0", mdlBytes("MDL8", 0), u"FS8/9", u"0", true},
        {"MDL9, radius 255", mdlBytes("MDL9", 255), u"FS8/9", u"255", true},
        {"MDL9 of 29 bytes", mdlBytes("MDL9", 36, 29), u"FS8/9", u"36", true},
        {"MDLX", mdlBytes("MDLX", 77), u"FSX", u"n/a", false},
        {"MDLX of 12 bytes", mdlBytes("MDLX", 0, 12), u"FSX", u"n/a", false},
        {"tag in lower case", mdlBytes("mdl9", 40), u"n/a", u"n/a", false},
        {"other tag", mdlBytes("ACMI", 40), u"n/a", u"n/a", false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        TempDir dir;
        writeBytes(dir / "model" / "skyliner200.mdl", row.bytes);
        const ModelFileReading reading = readModelFile(widePath(dir.path()), u"<default>", u"skyliner200");
        EXPECT_EQ(reading.outcome, ModelFileOutcome::Read);
        EXPECT_EQ(reading.ModelFilePath, widePath(dir.path()) + SEPARATOR + u"model" + SEPARATOR + u"skyliner200.mdl");
        EXPECT_EQ(reading.versionText, row.version);
        EXPECT_EQ(reading.radiusText, row.radius);
        EXPECT_EQ(reading.radiusEditable, row.editable);
        EXPECT_EQ(reading.RadiusOnLoad, row.editable ? row.radius : u"");
    }
}

TEST(ReadModelFile, ShortMissingAndReadOnlyFiles)
{
    TempDir dir;
    const std::u16string folder = widePath(dir.path());
    const struct
    {
        const char *name;
        std::string bytes;
    } shortFiles[] = {
        {"5 bytes", "RIFF\x01"s},
        {"empty", ""},
        {"MDL9 without a radius byte", mdlBytes("MDL9", 1, 28)},
    };
    for (const auto &row : shortFiles) {
        SCOPED_TRACE(row.name);
        writeBytes(dir / "model.short" / "a.mdl", row.bytes);
        const ModelFileReading reading = readModelFile(folder, u"short", u"a");
        EXPECT_EQ(reading.outcome, ModelFileOutcome::Failed);
        EXPECT_EQ(reading.failureMessage,
                  u"The model file:" + reading.ModelFilePath
                      + u"\r\n\r\n could not be opened for write access. Please make sure that the sim is not running "
                        u"and no other program access this file.");
        EXPECT_EQ(reading.RadiusOnLoad, u"");
    }

    // No normal= line: the name is empty and ".mdl" is looked for.
    ModelFileReading reading = readModelFile(folder, u"short", u"");
    EXPECT_EQ(reading.outcome, ModelFileOutcome::Missing);
    EXPECT_EQ(reading.ModelFilePath, folder + SEPARATOR + u"model.short" + SEPARATOR + u".mdl");

    writeBytes(dir / "model.ro" / "Skyliner200.MDL", mdlBytes("MDL9", 20));
    makeReadOnly(dir / "model.ro" / "Skyliner200.MDL");
    reading = readModelFile(folder, u"RO", u"skyliner200");
    EXPECT_EQ(reading.outcome, ModelFileOutcome::Read);
    EXPECT_EQ(reading.radiusText, u"20");
}

TEST(RadiusByte, ConvertsAsTheRunTimeDoes)
{
    const struct
    {
        std::u16string text;
        char16_t separator;
        std::optional<std::uint8_t> byte;
    } rows[] = {
        {u"0", u'.', 0},
        {u"255", u'.', 255},
        {u"256", u'.', std::nullopt},
        {u"012", u'.', 12},
        {u" 200 ", u'.', 200},
        {u"7.5", u'.', 8},
        {u"6.5", u'.', 6},
        {u"7,5", u',', 8},
        {u"255.4", u'.', 255},
        {u"255.5", u'.', std::nullopt},
        {u"-0.4", u'.', 0},
        {u"-1", u'.', std::nullopt},
        {u"&HFF", u'.', 255},
        {u"&HFFFF", u'.', std::nullopt},
        {u"2e2", u'.', 200},
        {u"", u'.', std::nullopt},
        {u"abc", u'.', std::nullopt},
        {u"7,5", u'.', std::nullopt},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.text.begin(), row.text.end()));
        EXPECT_EQ(radiusByte(row.text, row.separator), row.byte);
    }
}

TEST(WriteModelRadius, WritesOneByteWhenTheTextChanged)
{
    TempDir dir;
    const fs::path file = dir / "model" / "skyliner200.mdl";
    const std::string original = mdlBytes("MDL9", 0);
    writeBytes(file, original);
    ScriptedDialogs dialogs;
    const ModelFileReading reading = readModelFile(widePath(dir.path()), u"<default>", u"skyliner200");
    ASSERT_EQ(reading.RadiusOnLoad, u"0");

    EXPECT_EQ(writeModelRadius(reading.ModelFilePath, reading.RadiusOnLoad, u"0", u'.', dialogs),
              RadiusWriteOutcome::Unchanged);
    EXPECT_EQ(writeModelRadius(reading.ModelFilePath, u"", u"n/a", u'.', dialogs), RadiusWriteOutcome::Unchanged);
    EXPECT_EQ(readBytes(file), original);

    EXPECT_EQ(writeModelRadius(reading.ModelFilePath, reading.RadiusOnLoad, u"255", u'.', dialogs),
              RadiusWriteOutcome::Written);
    std::string expected = original;
    expected[28] = '\xFF';
    EXPECT_EQ(readBytes(file), expected);

    // Texts are compared, not numbers.
    EXPECT_EQ(writeModelRadius(reading.ModelFilePath, u"12", u"012", u'.', dialogs), RadiusWriteOutcome::Written);
    EXPECT_EQ(readModelFile(widePath(dir.path()), u"<default>", u"skyliner200").radiusText, u"12");
    EXPECT_TRUE(dialogs.records().empty());
}

TEST(WriteModelRadius, FailureBoxLeavesTheBytes)
{
    TempDir dir;
    const fs::path file = dir / "model" / "skyliner200.mdl";
    const std::string original = mdlBytes("MDL8", 30);
    writeBytes(file, original);
    makeReadOnly(file);
    const std::u16string path = widePath(file);

    for (const std::u16string text : {u"256", u"abc", u"-3"}) {
        SCOPED_TRACE(std::string(text.begin(), text.end()));
        ScriptedDialogs dialogs;
        EXPECT_EQ(writeModelRadius(path, u"30", text, u'.', dialogs), RadiusWriteOutcome::Failed);
        ASSERT_EQ(dialogs.records().size(), 1u);
        EXPECT_EQ(dialogs.records()[0].kind, DialogKind::Critical);
        EXPECT_EQ(dialogs.records()[0].text,
                  u"The changed radius value could not be written to the model file. Please make sure that the file "
                  u"is not opened by the sim or another program");
        EXPECT_EQ(readBytes(file), original);
    }
    // The read-only state went before the conversion failed, and a read-only model can be patched.
    EXPECT_FALSE(platform::isReadOnly(file));
    makeReadOnly(file);
    ScriptedDialogs dialogs;
    EXPECT_EQ(writeModelRadius(path, u"30", u"31", u'.', dialogs), RadiusWriteOutcome::Written);
    EXPECT_EQ(static_cast<unsigned char>(readBytes(file)[28]), 31);

    // A model file that is gone is not made again.
    const std::u16string gone = widePath(dir / "model" / "gone.mdl");
    EXPECT_EQ(writeModelRadius(gone, u"30", u"31", u'.', dialogs), RadiusWriteOutcome::Failed);
    EXPECT_FALSE(fs::exists(dir / "model" / "gone.mdl"));
}

// The simulator, or any program, holding the model file exclusively.
TEST(ModelFileHeld, ReadAndRadiusWriteFailWithoutAByteChanged)
{
    TempDir dir;
    const fs::path file = dir / "model" / "skyliner200.mdl";
    const std::string original = mdlBytes("MDL9", 30);
    writeBytes(file, original);
    const std::u16string folder = widePath(dir.path());
    const ModelFileReading before = readModelFile(folder, u"<default>", u"skyliner200");
    ASSERT_EQ(before.RadiusOnLoad, u"30");

    for (const platform::ExclusiveAccess access :
         {platform::ExclusiveAccess::Read, platform::ExclusiveAccess::ReadWrite}) {
        SCOPED_TRACE(access == platform::ExclusiveAccess::Read ? "held for reading" : "held for writing");
        ScriptedDialogs dialogs;
        {
            const platform::ExclusiveFile held = platform::ExclusiveFile::open(file, access);
            ASSERT_TRUE(held.isOpen());

            const ModelFileReading reading = readModelFile(folder, u"<default>", u"skyliner200");
            EXPECT_EQ(reading.outcome, ModelFileOutcome::Failed);
            EXPECT_EQ(reading.failureMessage, modelFileReadFailureText(before.ModelFilePath));
            EXPECT_EQ(reading.RadiusOnLoad, u"");

            // A valid radius and a text that is no number alike: the open fails first.
            for (const std::u16string text : {u"31", u"abc"}) {
                EXPECT_EQ(writeModelRadius(before.ModelFilePath, before.RadiusOnLoad, text, u'.', dialogs),
                          RadiusWriteOutcome::Failed);
            }
            ASSERT_EQ(dialogs.records().size(), 2u);
            for (const DialogRecord &record : dialogs.records()) {
                EXPECT_EQ(record.kind, DialogKind::Critical);
                EXPECT_EQ(record.text, RADIUS_WRITE_FAILURE_TEXT);
            }
        }
        EXPECT_EQ(readBytes(file), original);
    }

    ScriptedDialogs dialogs;
    EXPECT_EQ(writeModelRadius(before.ModelFilePath, before.RadiusOnLoad, u"31", u'.', dialogs),
              RadiusWriteOutcome::Written);
    EXPECT_EQ(readModelFile(folder, u"<default>", u"skyliner200").radiusText, u"31");
    EXPECT_TRUE(dialogs.records().empty());
}

TEST(ModelFileCorpus, PlaceholderModelsFailTheRead)
{
    const fs::path corpus = FLEETWRIGHT_CORPUS_DIR;
    if (!fs::is_directory(corpus))
        GTEST_SKIP() << "no corpus";
    ScriptedDialogs dialogs;
    const std::u16string folder = widePath(corpus / "jodel-dr1050-fsx");
    const ModelConfig config = resolveModelName(folder, u"<default>", dialogs);
    EXPECT_FALSE(config.missing);
    EXPECT_FALSE(config.modelName.empty());
    // The corpus keeps the model files as empty placeholders: found, then too short to read.
    EXPECT_EQ(readModelFile(folder, u"<default>", config.modelName).outcome, ModelFileOutcome::Failed);
}
