#include "validation/checkerfeed.h"

#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/errorbox.h"
#include "folderview/folderload.h"
#include "platform/regional.h"
#include "simfiles/modelfile.h"

namespace fleetwright {

namespace {

// The part of ListView1_DblClick that reaches txt_FSXVersion. The row's other fields, ReadAirFile and the
// current fields change nothing a run reads, so they are left out.
void openRow(const std::u16string &folder, const FolderLoadResult &loaded, std::size_t row, Dialogs &dialogs,
             ValidationFeed &feed)
{
    try {
        if (row >= loaded.Descriptions.size())
            throw RuntimeError::subscriptOutOfRange();
        const std::u16string &model = loaded.rows[row][GridColumn::Model];
        const ModelConfig config = resolveModelName(folder, model, dialogs);
        if (config.missing)
            return;
        const ModelFileReading reading = readModelFile(folder, model, config.modelName);
        if (reading.outcome == ModelFileOutcome::Failed)
            dialogs.critical(reading.failureMessage, u"");
        else if (reading.outcome == ModelFileOutcome::Read)
            feed.textureFormatText = reading.versionText;
    } catch (const RuntimeError &error) {
        RuntimeError named = error;
        named.setProcedure(u"ListView1_DblClick");
        showCommonError(dialogs, named);
    }
}

} // namespace

ValidationFeed feedValidationFromFolder(const std::u16string &folder, clsIniFile &AircraftIni, Dialogs &dialogs)
{
    ValidationFeed feed;
    // The form takes the separator once, at start-up.
    static const char16_t decimalSeparator = platform::DecimalSeparatorChar();
    FolderLoadInput input;
    input.folder = folder;
    input.decimalSeparator = decimalSeparator;
    // The run takes the row count and the first row; the other rows' keys change neither.
    input.firstRowOnly = true;
    FolderLoadResult loaded;
    try {
        // The load only reads: the file is looked at once for all its keys.
        const clsIniFile::Batch reading(AircraftIni);
        readAircraftFolder(input, AircraftIni, loaded);
    } catch (const RuntimeError &error) {
        RuntimeError named = error;
        named.setProcedure(u"Dir1_Change");
        if (loaded.errorHandlerOn)
            showCommonError(dialogs, named);
        else
            dialogs.critical(commonErrorText(named), u"");
        feed.loadFault = named;
    }
    feed.gridRowCount = static_cast<int>(loaded.rows.size());
    if (!feed.loadFault && loaded.rowToOpen)
        openRow(folder, loaded, *loaded.rowToOpen, dialogs, feed);
    return feed;
}

} // namespace fleetwright
