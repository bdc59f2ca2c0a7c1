// The validation run and the batch over a small folder tree described by the input (see writeTree): the
// aircraft folder "ac" alone, then every folder of the tree's top as a batch. A run may end with a run-time
// error; it may not crash, hang, or change a byte it has no business with.
#include <cstdint>
#include <filesystem>
#include <string>

#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/runtimeerror.h"
#include "fuzzsupport.h"
#include "platform/fileio.h"
#include "validation/batch.h"
#include "validation/checkerfeed.h"
#include "validation/validationrun.h"

using namespace fleetwright;
using namespace fleetwright::fuzz;
namespace fs = std::filesystem;

namespace {

std::u16string withSeparator(const fs::path &folder)
{
    return folder.u16string() + static_cast<char16_t>(fs::path::preferred_separator);
}

// The machine a run sees: FS9 with two airlines and one effect, beside the tree.
ValidationEnvironment environment(const fs::path &base)
{
    ValidationEnvironment env;
    env.Fs9Found = true;
    env.Fs9Airlines = {u"[airlines]", u"KLM", u"CORVANE"};
    env.Fs9EffectsFolder = (base / "Effects").u16string();
    writeFile(base / "Effects" / "fx_wake.fx", "fx");
    env.TempFolder = withSeparator(base / "tmp");
    fs::create_directories(base / "tmp");
    return env;
}

// Validation removes a report that an earlier run left in a folder it checks.
bool isStaleReport(const std::string &path, const std::string *before, const std::string *after)
{
    std::string name = fs::path(path).filename().string();
    for (char &ch : name)
        ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    return before && !after && name == "corvanecheck.log";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const fs::path base = scratchFolder("validation");
    const fs::path root = base / "tree";
    fs::create_directories(root);
    writeTree(root, std::string_view(reinterpret_cast<const char *>(data), size));
    const ValidationEnvironment env = environment(base);
    const TreeState before = treeState(root);
    const ChangeRule rewrites = readByteArrayRewrites(root);
    const ChangeRule allowed = [&](const std::string &path, const std::string *old, const std::string *now) {
        return rewrites(path, old, now) || isStaleReport(path, old, now);
    };

    NeverAskDialogs dialogs;
    clsIniFile AircraftIni;
    const std::u16string folder = (root / "ac").u16string();
    const ValidationFeed feed = feedValidationFromFolder(folder, AircraftIni, dialogs);
    ValidationInput input;
    input.folder = folder;
    input.AnalyzeOptionList.assign(23, u"1");
    input.environment = env;
    input.textureFormatText = feed.textureFormatText;
    input.gridRowCount = feed.gridRowCount;
    try {
        const ValidationResult result = runValidation(input, AircraftIni, dialogs);
        if (result.outcome == ValidationOutcome::ReportWritten && !platform::readWholeFile(result.reportPath).bytes)
            fail("a run that wrote its report left none");
    } catch (const RuntimeError &) {
        // The run ends where the error came; what it wrote stays.
    }
    requireOnlyAllowedChanges(before, treeState(root), allowed, "the validation run");

    BatchInput batch;
    batch.BatchRoot = root.u16string();
    batch.AnalyzeOptionList = input.AnalyzeOptionList;
    batch.environment = env;
    clsIniFile batchIni;
    try {
        const BatchResult result = runBatchValidation(batch, batchIni, dialogs);
        if (!platform::readWholeFile(result.reportPath).bytes)
            fail("the batch left no report");
    } catch (const RuntimeError &error) {
        fail("the batch failed with error " + std::to_string(error.number()));
    }
    requireOnlyAllowedChanges(before, treeState(root), allowed, "the batch");
    return 0;
}
