#include "editing/generalupdate.h"

#include <algorithm>

#include "core/aircraftfilestore.h"
#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/errorbox.h"
#include "core/runtimeerror.h"
#include "core/vbtext.h"
#include "simfiles/modelfile.h"

namespace fleetwright {

namespace {

constexpr char16_t PROCEDURE[] = u"cmd_cfg_Update_Click";

std::u16string withPoints(std::u16string text)
{
    std::replace(text.begin(), text.end(), u',', u'.');
    return text;
}

void write(clsIniFile &ini, const char16_t *key, const std::u16string &value)
{
    ini.setKey(key);
    ini.setValue(value);
}

void writeKeys(clsIniFile &ini, const std::u16string &section, const GeneralData &data, const GeneralUpdateInput &input,
               GeneralUpdateResult &result)
{
    clsIniFile::Batch batch(ini);
    ini.setSection(section);
    write(ini, u"title", data.title);
    write(ini, u"atc_parking_types", data.atcParkingTypes);
    write(ini, u"atc_parking_codes", data.atcParkingCodes);
    write(ini, u"ui_createdby", data.uiCreatedBy);
    write(ini, u"ui_typerole", data.uiTypeRole);
    write(ini, u"ui_manufacturer", data.uiManufacturer);
    write(ini, u"ui_type", data.uiType);
    write(ini, u"ui_variation", data.uiVariation);
    write(ini, u"atc_id", data.atcId);
    write(ini, u"atc_flight_number", data.atcFlightNumber);
    write(ini, u"atc_airline", data.atcAirline);
    write(ini, u"atc_model", data.atcModel);
    write(ini, u"atc_heavy", data.atcHeavy ? u"1" : u"0");

    result.atcBoxes = input.rowAtc;

    if (!data.wingSpanNew.empty()) {
        ini.setSection(u"airplane_geometry");
        write(ini, u"wing_span", withPoints(data.wingSpanNew));
    }

    ini.setSection(u"exits");
    const std::array<const char16_t *, 3> exitKeys = {u"exit.0", u"exit.1", u"exit.2"};
    const std::array<const std::u16string *, 3> notes = {&input.ExitNote0, &input.ExitNote1, &input.ExitNote1};
    for (std::size_t line = 0; line < exitKeys.size(); ++line) {
        const auto &values = data.exits[line];
        if (std::any_of(values.begin(), values.end(), [](const std::u16string &value) { return value.empty(); }))
            continue;
        write(ini, exitKeys[line], exitLineValue(values, *notes[line]));
    }

    ini.setSection(u"general");
    write(ini, u"atc_model", data.generalAtcModel);
    write(ini, u"atc_type", data.generalAtcType);
}

} // namespace

AtcBoxes atcBoxesOfRow(const std::u16string &atcId, const std::u16string &flightNumber, const std::u16string &airline,
                       const std::u16string &heavy, const std::u16string &atcModel)
{
    return {atcId, flightNumber, airline, Val(heavy) == 1.0, atcModel};
}

std::u16string exitLineValue(const std::array<std::u16string, 5> &values, const std::u16string &note)
{
    std::u16string value = u" ";
    for (std::size_t k = 0; k < values.size(); ++k) {
        if (k > 0)
            value += u", ";
        value += withPoints(values[k]);
    }
    return value + std::u16string(12, u' ') + note;
}

GeneralUpdateResult updateGeneralData(clsIniFile &AircraftIni, const GeneralUpdateInput &input, Dialogs &dialogs)
{
    GeneralUpdateResult result;
    bool radiusHandlerOn = false;
    try {
        if (!input.rowSection)
            throw RuntimeError::objectVariableNotSet();
        if (!confirmUpdate(dialogs, input.ConfirmUpdates))
            return result;
        MakeBackup(AircraftIni.path(), input.AutoBackupOn);
        if (input.radiusText != input.RadiusOnLoad && input.radiusText != u"n/a") {
            radiusHandlerOn = true;
            writeModelRadius(input.ModelFilePath, input.RadiusOnLoad, input.radiusText, input.decimalSeparator,
                             dialogs);
        }
        writeKeys(AircraftIni, *input.rowSection, input.data, input, result);
    } catch (const RuntimeError &error) {
        if (!radiusHandlerOn) {
            RuntimeError named = error;
            named.setProcedure(PROCEDURE);
            showCommonError(dialogs, named);
            result.outcome = GeneralUpdateOutcome::Failed;
            return result;
        }
        // The radius box answers every fault from here on, and the writing starts again with the variation's
        // keys. By then the ATC boxes hold the row's old values, and those are what the second run writes. A
        // fault that comes back ends it rather than going round for ever.
        dialogs.critical(RADIUS_WRITE_FAILURE_TEXT, u"");
        GeneralData again = input.data;
        if (result.atcBoxes) {
            again.atcId = result.atcBoxes->atcId;
            again.atcFlightNumber = result.atcBoxes->atcFlightNumber;
            again.atcAirline = result.atcBoxes->atcAirline;
            again.atcHeavy = result.atcBoxes->atcHeavy;
            again.atcModel = result.atcBoxes->atcModel;
        }
        try {
            writeKeys(AircraftIni, *input.rowSection, again, input, result);
        } catch (const RuntimeError &repeated) {
            RuntimeError named = repeated;
            named.setProcedure(PROCEDURE);
            showCommonError(dialogs, named);
            result.outcome = GeneralUpdateOutcome::Failed;
            return result;
        }
    }
    result.outcome = GeneralUpdateOutcome::Written;
    return result;
}

} // namespace fleetwright
