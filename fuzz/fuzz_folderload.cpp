// The reading half of a folder load and the opening of every row, over an aircraft folder "ac" described by
// the input (see writeTree): nothing may be written, and the result must hang together.
#include <cstdint>
#include <filesystem>
#include <string>

#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/runtimeerror.h"
#include "folderview/folderload.h"
#include "fuzzsupport.h"
#include "simfiles/airfile.h"
#include "simfiles/modelfile.h"
#include "validation/checkerfeed.h"

using namespace fleetwright;
using namespace fleetwright::fuzz;
namespace fs = std::filesystem;

namespace {

std::u16string decimal(std::size_t number)
{
    const std::string digits = std::to_string(number);
    return std::u16string(digits.begin(), digits.end());
}

// ListView1_DblClick's reads for one row.
void openRow(const std::u16string &folder, const GridRow &row, Dialogs &dialogs)
{
    const ModelConfig config = resolveModelName(folder, row[GridColumn::Model], dialogs);
    AirFileState air;
    air.AirFileName = row[GridColumn::Sim];
    ReadAirFile(folder, air, dialogs);
    if (!config.missing)
        readModelFile(folder, row[GridColumn::Model], config.modelName);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const fs::path root = scratchFolder("folderload");
    writeTree(root, std::string_view(reinterpret_cast<const char *>(data), size));
    const TreeState before = treeState(root);
    const std::u16string folder = (root / "ac").u16string();

    clsIniFile AircraftIni;
    NeverAskDialogs dialogs;
    FolderLoadInput input;
    input.folder = folder;
    FolderLoadResult result;
    try {
        readAircraftFolder(input, AircraftIni, result);
    } catch (const RuntimeError &error) {
        if (error.number() != 6 || error.procedure() != u"Dir1_Change")
            fail("the folder load failed with error " + std::to_string(error.number()));
    }
    if (result.rows.size() != result.Descriptions.size())
        fail("rows and descriptions differ in number");
    if (!result.isAircraftFolder && !result.rows.empty())
        fail("rows without an aircraft.cfg");
    if (result.variationCountText != decimal(result.rows.size()) + u" aircraft variations defined"
        && !result.variationCountText.empty())
        fail("panel 10 does not count the rows");
    if (result.airFileChoices.size() != result.folderAirFiles.size())
        fail("the air file lists differ");
    for (const GridRow &row : result.rows) {
        try {
            openRow(folder, row, dialogs);
        } catch (const RuntimeError &) {
            // The row's own error box; the program lives on.
        }
    }
    clsIniFile feedIni;
    feedValidationFromFolder(folder, feedIni, dialogs);
    requireOnlyAllowedChanges(
        before, treeState(root), [](auto &&...) { return false; }, "the folder load");
    return 0;
}
