// The main form's general data, association and update-all writes: the form's boxes in, the engine's write,
// then the reload.
#include "editing/gui/frm_main_editing.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

#include "app/frm_main.h"
#include "core/errorbox.h"
#include "core/gui/textconvert.h"
#include "core/runtimeerror.h"
#include "editing/association.h"
#include "editing/generalupdate.h"
#include "editing/updateall.h"

using fleetwright::RuntimeError;

namespace {

std::u16string textOf(const QLineEdit *box)
{
    return toU16String(box->text());
}

std::optional<std::u16string> selectedSection(const QTreeWidget *grid)
{
    if (const QTreeWidgetItem *item = grid->currentItem())
        return toU16String(item->text(0));
    return std::nullopt;
}

// The fault of an operation that does not guard itself: it ends where it stood, the box names it.
void showFault(fleetwright::Dialogs &dialogs, const RuntimeError &error, const char16_t *procedure)
{
    RuntimeError named = error;
    if (named.procedure().empty())
        named.setProcedure(procedure);
    dialogs.critical(fleetwright::commonErrorText(named), u"");
}

} // namespace

EditingController::EditingController(frm_Main &form)
    : QObject(&form)
    , m_form(form)
{
    setObjectName(QStringLiteral("EditingController"));
    const MainFormControls &c = form.controls();
    connect(c.cmd_cfg_Update, &QPushButton::clicked, this, &EditingController::cmd_cfg_Update_Click);
    connect(c.cmd_Associate, &QPushButton::clicked, this, &EditingController::cmd_Associate_Click);
    for (const fleetwright::UpdateAllMember &member : fleetwright::UPDATE_ALL_MEMBERS) {
        auto *button = form.findChild<QPushButton *>(toQString(member.button));
        if (button)
            connect(button, &QPushButton::clicked, this, [this, button] { cmd_Update_all_Click(button); });
    }
}

void EditingController::reopenRow(int position, bool makeVisible)
{
    QTreeWidget *grid = m_form.controls().ListView1;
    QTreeWidgetItem *item = grid->topLevelItem(position);
    if (!item)
        throw RuntimeError(35600, u"Index out of bounds");
    grid->setCurrentItem(item);
    if (makeVisible)
        grid->scrollToItem(item);
    m_form.ListView1_DblClick();
    QCoreApplication::processEvents();
}

void EditingController::cmd_cfg_Update_Click()
{
    const MainFormControls &c = m_form.controls();
    QTreeWidget *grid = c.ListView1;
    fleetwright::GeneralUpdateInput input;
    input.rowSection = selectedSection(grid);
    const int position = grid->currentItem() ? grid->indexOfTopLevelItem(grid->currentItem()) : -1;

    fleetwright::GeneralData &d = input.data;
    d.title = textOf(c.txt_Title);
    d.atcParkingTypes = toU16String(c.lblSelections->text());
    d.atcParkingCodes = textOf(c.txt_atc_ParkingCodes);
    d.uiCreatedBy = textOf(c.txt_ui_CreatedBy);
    d.uiTypeRole = textOf(c.txt_ui_TypeRole);
    d.uiManufacturer = textOf(c.txt_ui_Manufacturer);
    d.uiType = textOf(c.txt_ui_Type);
    d.uiVariation = textOf(c.txt_ui_Variation);
    d.atcId = textOf(c.txt_atc_Id);
    d.atcFlightNumber = textOf(c.txt_atc_Flight_Number);
    d.atcAirline = textOf(c.txt_atc_Airline);
    d.atcModel = textOf(c.txt_atc_Model);
    d.atcHeavy = c.chk_atc_heavy->isChecked();
    d.wingSpanNew = textOf(c.txt_WingSpan_New);
    const std::array<const std::array<QLineEdit *, 5> *, 3> exits = {&c.txt_Exit_0, &c.txt_Exit_1, &c.txt_Exit_2};
    for (std::size_t line = 0; line < exits.size(); ++line) {
        for (std::size_t k = 0; k < 5; ++k)
            d.exits[line][k] = textOf((*exits[line])[k]);
    }
    d.generalAtcModel = textOf(c.txt_general_atc_model);
    d.generalAtcType = textOf(c.txt_general_atc_type);
    if (const QTreeWidgetItem *row = grid->currentItem()) {
        input.rowAtc = fleetwright::atcBoxesOfRow(toU16String(row->text(11)), toU16String(row->text(12)),
                                                  toU16String(row->text(13)), toU16String(row->text(14)),
                                                  toU16String(row->text(15)));
    }
    input.ExitNote0 = m_form.ExitNote0;
    input.ExitNote1 = m_form.ExitNote1;
    input.ModelFilePath = m_form.ModelFilePath;
    input.RadiusOnLoad = m_form.RadiusOnLoad;
    input.radiusText = textOf(c.txt_FS9Radius);
    input.decimalSeparator = m_form.DecimalSeparator;
    input.ConfirmUpdates = m_form.ConfirmUpdates;
    input.AutoBackupOn = m_form.AutoBackupOn;

    const fleetwright::GeneralUpdateResult result =
        fleetwright::updateGeneralData(m_form.AircraftIni(), input, m_form.dialogs());
    if (result.outcome != fleetwright::GeneralUpdateOutcome::Written)
        return;
    if (result.atcBoxes) {
        c.txt_atc_Id->setText(toQString(result.atcBoxes->atcId));
        c.txt_atc_Flight_Number->setText(toQString(result.atcBoxes->atcFlightNumber));
        c.txt_atc_Airline->setText(toQString(result.atcBoxes->atcAirline));
        c.chk_atc_heavy->setChecked(result.atcBoxes->atcHeavy);
        c.txt_atc_Model->setText(toQString(result.atcBoxes->atcModel));
    }
    m_form.Dir1_Change();
    try {
        reopenRow(position, true);
    } catch (const RuntimeError &error) {
        fleetwright::RuntimeError named = error;
        named.setProcedure(u"cmd_cfg_Update_Click");
        fleetwright::showCommonError(m_form.dialogs(), named);
    }
}

void EditingController::cmd_Associate_Click()
{
    const MainFormControls &c = m_form.controls();
    QTreeWidget *grid = c.ListView1;
    try {
        fleetwright::AssociationInput input;
        input.rowSection = selectedSection(grid);
        const int position = grid->currentItem() ? grid->indexOfTopLevelItem(grid->currentItem()) : -1;
        input.texture = toU16String(c.combo_Texture->currentText());
        input.model = toU16String(c.combo_Model->currentText());
        input.airfile = toU16String(c.combo_Airfile->currentText());
        input.ConfirmUpdates = m_form.ConfirmUpdates;
        input.AutoBackupOn = m_form.AutoBackupOn;
        if (!fleetwright::associateFiles(m_form.AircraftIni(), input, m_form.dialogs()))
            return;
        for (QComboBox *combo : {c.combo_Texture, c.combo_Model, c.combo_Airfile})
            combo->setCurrentIndex(-1);
        m_form.Dir1_Change();
        reopenRow(position, true);
    } catch (const RuntimeError &error) {
        showFault(m_form.dialogs(), error, u"cmd_Associate_Click");
    }
}

void EditingController::cmd_Update_all_Click(QPushButton *button)
{
    const MainFormControls &c = m_form.controls();
    const std::u16string name = toU16String(button->objectName());
    const std::u16string procedure = name + u"_Click";
    const fleetwright::UpdateAllMember *member = nullptr;
    for (const auto &candidate : fleetwright::UPDATE_ALL_MEMBERS) {
        if (name == candidate.button)
            member = &candidate;
    }
    if (!member)
        return;

    std::u16string value;
    if (button == c.cmd_Update_all_atc_airline)
        value = textOf(c.txt_atc_Airline);
    else if (button == c.cmd_Update_all_atc_heavy)
        value = c.chk_atc_heavy->isChecked() ? u"1" : u"0";
    else if (button == c.cmd_Update_all_atc_model)
        value = textOf(c.txt_atc_Model);
    else if (button == c.cmd_Update_all_atc_Parking_codes)
        value = textOf(c.txt_atc_ParkingCodes);
    else if (button == c.cmd_Update_all_atc_Parking_types)
        value = toU16String(c.lblSelections->text());
    else if (button == c.cmd_Update_all_ui_Createdby)
        value = textOf(c.txt_ui_CreatedBy);
    else if (button == c.cmd_Update_all_ui_Manufacturer)
        value = textOf(c.txt_ui_Manufacturer);
    else if (button == c.cmd_Update_all_ui_Typerole)
        value = textOf(c.txt_ui_TypeRole);
    else if (button == c.cmd_Update_all_ui_Type)
        value = textOf(c.txt_ui_Type);

    QTreeWidget *grid = c.ListView1;
    std::vector<bool> rowChecked;
    for (int row = 0; row < grid->topLevelItemCount(); ++row)
        rowChecked.push_back(grid->topLevelItem(row)->checkState(0) == Qt::Checked);
    try {
        if (!fleetwright::updateAll(m_form.AircraftIni(), member->key, value, rowChecked, m_form.ConfirmUpdates,
                                    m_form.dialogs()))
            return;
        // The selected row is looked up after the write; with none the position runs past the last row.
        int position = 0;
        while (position < grid->topLevelItemCount() && !grid->topLevelItem(position)->isSelected())
            ++position;
        m_form.Dir1_Change();
        reopenRow(position, false);
    } catch (const RuntimeError &error) {
        showFault(m_form.dialogs(), error, procedure.c_str());
    }
}
