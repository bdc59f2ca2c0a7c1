// model.cfg, texture.cfg and the model file: the row's model resolution, the model file read, the run's
// texture and model look-ups and ReadByteArray, over a small aircraft folder described by the input (see
// writeTree). Only ReadByteArray may change a file, and only as it says.
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "core/arraysearch.h"
#include "core/dialogs.h"
#include "core/runtimeerror.h"
#include "core/vbtext.h"
#include "fuzzsupport.h"
#include "platform/fileio.h"
#include "platform/filelookup.h"
#include "simfiles/airfile.h"
#include "simfiles/modelfile.h"
#include "validation/validationstate.h"

using namespace fleetwright;
using namespace fleetwright::fuzz;
namespace fs = std::filesystem;

namespace {

constexpr std::string_view BOM = "\xEF\xBB\xBF";
constexpr std::size_t MARKED_LIMIT = 32767;

// What ReadByteArray leaves of a marked file: the bytes behind the mark written over its start, the length
// kept.
std::string unmarked(const std::string &bytes)
{
    return bytes.substr(3) + bytes.substr(bytes.size() - 3);
}

// By the name's bytes: a name that is no UTF-8 has no wide form.
bool isConfigName(const fs::path &path)
{
    std::string name = path.filename().native();
    for (char &ch : name)
        ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    return name == "model.cfg" || name == "texture.cfg";
}

void checkReadByteArray(const fs::path &file)
{
    const std::optional<std::string> content = platform::readWholeFile(file).bytes;
    if (!content)
        return;
    const std::string &bytes = *content;
    const bool marked = bytes.starts_with(BOM);
    const bool readOnly = platform::isReadOnly(file);
    std::u16string path;
    try {
        path = file.u16string();
    } catch (const std::system_error &) {
        return; // no UTF-8: the engine has no name for it
    }
    // Windows' rules: a component that ends in a point or blank is looked up without it, so the file may be
    // out of reach, or its path may lead to another spelling.
    const std::optional<fs::path> found = platform::FileLookup::findFile(path);
    if (!found || fs::weakly_canonical(*found) != fs::weakly_canonical(file))
        return;
    std::vector<std::uint8_t> read;
    try {
        ReadByteArray(path, read);
    } catch (const RuntimeError &error) {
        const bool tooShort = error.number() == 9 && bytes.size() < 3;
        const bool tooLong = error.number() == 6 && marked && bytes.size() > MARKED_LIMIT;
        const bool refused = error.number() == 75 && marked && readOnly;
        if (!tooShort && !tooLong && !refused)
            fail("ReadByteArray failed with error " + std::to_string(error.number()));
        if (platform::readWholeFile(file).bytes != content)
            fail("a failed ReadByteArray changed the file");
        return;
    }
    if (std::string(read.begin(), read.end()) != bytes)
        fail("ReadByteArray returned other bytes than the file's");
    if (platform::readWholeFile(file).bytes != (marked ? unmarked(bytes) : bytes))
        fail("ReadByteArray left other bytes than it promises");
}

std::vector<std::u16string> suffixes(const fs::path &folder, const char16_t *pattern, std::size_t base)
{
    std::vector<std::u16string> found;
    const platform::FileLookup lookup(folder / pattern, platform::LookupKind::FilesAndFolders);
    for (const std::u16string &name : lookup.names())
        found.push_back(name.size() > base + 1 ? name.substr(base + 1) : std::u16string());
    return found;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const fs::path root = scratchFolder("models");
    writeTree(root, std::string_view(reinterpret_cast<const char *>(data), size));
    const fs::path aircraft = root / "ac";
    const std::u16string folder = aircraft.u16string();
    const TreeState before = treeState(root);

    NeverAskDialogs dialogs;
    std::vector<std::u16string> models = suffixes(aircraft, u"model.*", 5);
    for (std::u16string &model : models) {
        if (model.empty())
            model = u"<default>";
        const ModelConfig config = resolveModelName(folder, model, dialogs);
        if (config.modelName != StripComment(config.modelName) && config.modelName.find(u"//") == std::u16string::npos
            && config.modelName.find(u'\t') == std::u16string::npos)
            fail("a model name kept its blanks");
        if (config.missing)
            continue;
        const ModelFileReading reading = readModelFile(folder, model, config.modelName);
        if (reading.outcome == ModelFileOutcome::Read && reading.versionText != u"FS8/9"
            && reading.versionText != u"FSX" && reading.versionText != u"n/a")
            fail("the model file's version reads as something unknown");
        if (reading.radiusEditable != (reading.outcome == ModelFileOutcome::Read && reading.versionText == u"FS8/9"))
            fail("the radius is editable for a model that has none");
    }
    requireOnlyAllowedChanges(
        before, treeState(root), [](auto &&...) { return false; }, "opening the model");

    // The run's look-ups, which read texture.cfg and model.cfg through ReadByteArray.
    RunState state;
    state.FolderPrefix = LCase(folder + static_cast<char16_t>(fs::path::preferred_separator));
    for (const std::u16string &texture : suffixes(aircraft, u"texture.*", 7)) {
        SectionRecord record;
        record.texture = LCase(texture);
        try {
            textureState(state, record);
        } catch (const RuntimeError &) {
            // Too many "..\" in a fallback: the run ends there, as it should.
        }
    }
    for (const std::u16string &model : suffixes(aircraft, u"model.*", 5)) {
        SectionRecord record;
        record.model = LCase(model);
        try {
            modelState(state, record);
        } catch (const RuntimeError &) {
            // A model.cfg that ReadByteArray refuses ends the run there, as it should.
        }
    }
    requireOnlyAllowedChanges(before, treeState(root), readByteArrayRewrites(root), "the texture and model look-ups");

    std::error_code error;
    for (auto it = fs::recursive_directory_iterator(root, error); !error && it != fs::end(it); it.increment(error)) {
        if (it->is_regular_file(error) && !it->is_symlink(error) && isConfigName(it->path()))
            checkReadByteArray(it->path());
    }
    return 0;
}
