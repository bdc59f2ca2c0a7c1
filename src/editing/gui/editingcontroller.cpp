// The writes of the open aircraft: the form's boxes in, the engine's write, then the reload.
#include "editing/gui/editingcontroller.h"

#include <algorithm>
#include <optional>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

#include "core/aircraftfilestore.h"
#include "core/dialogs.h"
#include "core/errorbox.h"
#include "core/gui/textconvert.h"
#include "core/runtimeerror.h"
#include "editing/association.h"
#include "editing/generalupdate.h"
#include "editing/gui/frm_remove.h"
#include "editing/sectionrenumber.h"
#include "editing/sortkeys.h"
#include "editing/updateall.h"
#include "environment/programstate.h"
#include "folderview/openaircraft.h"
#include "history/gui/journalservice.h"

namespace fleetwright {

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

// "Update [fltsim.3]": the grid shows section names in capitals, the files and the menus in small letters.
std::u16string updateName(const std::optional<std::u16string> &section)
{
    return u"Update [" + toU16String(toQString(section.value_or(u"")).toLower()) + u"]";
}

// "Delete 2 sections": the checked rows, or the selected one when none is checked.
std::u16string deletionName(const GridRows &rows)
{
    std::size_t count = static_cast<std::size_t>(std::count(rows.checked.begin(), rows.checked.end(), true));
    if (count == 0 && rows.selectedRow)
        count = 1;
    const std::string digits = std::to_string(count);
    return u"Delete " + std::u16string(digits.begin(), digits.end()) + (count == 1 ? u" section" : u" sections");
}

} // namespace

EditingController::EditingController(const EditingControls &controls, const EditingServices &services, QObject *parent)
    : QObject(parent)
    , m_c(controls)
    , m_services(services)
{
    setObjectName(QStringLiteral("EditingController"));
    connectFields();
    connect(m_c.mnuDelKeys, &QAction::triggered, this, &EditingController::mnuDelKeys_Click);
    connectEditing();
}

void EditingController::connectEditing()
{
    connect(m_c.cmd_cfg_Update, &QPushButton::clicked, this, &EditingController::cmd_cfg_Update_Click);
    connect(m_c.cmd_Associate, &QPushButton::clicked, this, &EditingController::cmd_Associate_Click);
    for (QPushButton *button :
         {m_c.cmd_Update_all_atc_airline, m_c.cmd_Update_all_atc_heavy, m_c.cmd_Update_all_atc_model,
          m_c.cmd_Update_all_atc_Parking_codes, m_c.cmd_Update_all_atc_Parking_types, m_c.cmd_Update_all_ui_Createdby,
          m_c.cmd_Update_all_ui_Manufacturer, m_c.cmd_Update_all_ui_Typerole, m_c.cmd_Update_all_ui_Type})
        connect(button, &QPushButton::clicked, this, [this, button] { cmd_Update_all_Click(button); });
    for (QComboBox *combo : {m_c.combo_Texture, m_c.combo_Model, m_c.combo_Airfile}) {
        connect(combo, &QComboBox::currentTextChanged, this, &EditingController::associationCombo_Change);
        connect(combo, &QComboBox::activated, this, &EditingController::associationCombo_Change);
    }

    for (QAction *item : {m_c.mnuRenumber, m_c.frm_RightClick.mnuRenumber})
        connect(item, &QAction::triggered, this, [this] {
            runEditing(u"FlightSimSectionRenumber", [this] {
                const JournalService::Operation operation(m_services.history, aircraftFolder(), u"Renumber");
                return FlightSimSectionRenumber(m_services.aircraft.AircraftIni.path(), m_services.state.ConfirmUpdates,
                                                m_services.state.AutoBackupOn, m_services.dialogs);
            });
        });
    for (QAction *item : {m_c.mnuSortKeys, m_c.frm_RightClick.mnuSortKeys})
        connect(item, &QAction::triggered, this, [this] {
            // The key order shows nowhere on the form: no reload.
            runEditing(u"DoSortKeys", [this] {
                const JournalService::Operation operation(m_services.history, aircraftFolder(), u"Sort keys");
                DoSortKeys(m_services.aircraft.AircraftIni, m_services.state.AutoBackupOn, m_services.dialogs);
                return false;
            });
        });
    connect(m_c.frm_RightClick.mnuDelete, &QAction::triggered, this, [this] {
        runEditing(u"FlightSimSectionDelete", [this] {
            QTreeWidget *grid = m_c.ListView1;
            GridRows rows;
            if (QTreeWidgetItem *selected = grid->currentItem())
                rows.selectedRow = static_cast<std::size_t>(grid->indexOfTopLevelItem(selected));
            for (int row = 0; row < grid->topLevelItemCount(); ++row) {
                const QTreeWidgetItem *item = grid->topLevelItem(row);
                rows.texts.push_back(toU16String(item->text(0)));
                rows.titles.push_back(toU16String(item->text(1)));
                rows.checked.push_back(item->checkState(0) == Qt::Checked);
            }
            const JournalService::Operation operation(m_services.history, aircraftFolder(), deletionName(rows));
            return FlightSimSectionDelete(m_services.aircraft.AircraftIni, rows, m_services.state.ConfirmUpdates,
                                          m_services.state.AutoBackupOn, m_services.dialogs);
        });
    });
}

// An editing operation that changed the file reloads the folder; a fault ends it where it stood, with a
// box that names the error and the routine, and the program lives on.
void EditingController::runEditing(const char16_t *procedure, const std::function<bool()> &operation)
{
    try {
        if (operation())
            m_services.Dir1_Change();
    } catch (const RuntimeError &error) {
        showFault(error, procedure);
    }
}

// The fault of an operation that does not guard itself: it ends where it stood, the box names it.
void EditingController::showFault(const RuntimeError &error, const char16_t *procedure)
{
    RuntimeError named = error;
    if (named.procedure().empty())
        named.setProcedure(procedure);
    m_services.dialogs.critical(commonErrorText(named), u"");
}

std::filesystem::path EditingController::aircraftFolder() const
{
    return JournalService::folderOf(m_services.aircraft.AircraftIni.path());
}

void EditingController::reopenRow(int position, bool makeVisible)
{
    QTreeWidget *grid = m_c.ListView1;
    QTreeWidgetItem *item = grid->topLevelItem(position);
    if (!item)
        throw RuntimeError(35600, u"Index out of bounds");
    grid->setCurrentItem(item);
    if (makeVisible)
        grid->scrollToItem(item);
    m_services.ListView1_DblClick();
    QCoreApplication::processEvents();
}

void EditingController::cmd_cfg_Update_Click()
{
    const EditingControls &c = m_c;
    QTreeWidget *grid = c.ListView1;
    GeneralUpdateInput input;
    input.rowSection = selectedSection(grid);
    const int position = grid->currentItem() ? grid->indexOfTopLevelItem(grid->currentItem()) : -1;

    GeneralData &d = input.data;
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
        input.rowAtc = atcBoxesOfRow(toU16String(row->text(11)), toU16String(row->text(12)), toU16String(row->text(13)),
                                     toU16String(row->text(14)), toU16String(row->text(15)));
    }
    input.ExitNote0 = m_services.aircraft.ExitNote0;
    input.ExitNote1 = m_services.aircraft.ExitNote1;
    input.ModelFilePath = m_services.aircraft.ModelFilePath;
    input.RadiusOnLoad = m_services.aircraft.RadiusOnLoad;
    input.radiusText = textOf(c.txt_FS9Radius);
    input.decimalSeparator = m_services.state.DecimalSeparator;
    input.ConfirmUpdates = m_services.state.ConfirmUpdates;
    input.AutoBackupOn = m_services.state.AutoBackupOn;

    GeneralUpdateResult result;
    try {
        const JournalService::Operation operation(m_services.history, aircraftFolder(), updateName(input.rowSection));
        result = updateGeneralData(m_services.aircraft.AircraftIni, input, m_services.dialogs);
    } catch (const RuntimeError &error) {
        showFault(error, u"cmd_cfg_Update_Click");
        return;
    }
    if (result.outcome != GeneralUpdateOutcome::Written)
        return;
    if (result.atcBoxes) {
        c.txt_atc_Id->setText(toQString(result.atcBoxes->atcId));
        c.txt_atc_Flight_Number->setText(toQString(result.atcBoxes->atcFlightNumber));
        c.txt_atc_Airline->setText(toQString(result.atcBoxes->atcAirline));
        c.chk_atc_heavy->setChecked(result.atcBoxes->atcHeavy);
        c.txt_atc_Model->setText(toQString(result.atcBoxes->atcModel));
    }
    m_services.Dir1_Change();
    try {
        reopenRow(position, true);
    } catch (const RuntimeError &error) {
        RuntimeError named = error;
        named.setProcedure(u"cmd_cfg_Update_Click");
        showCommonError(m_services.dialogs, named);
    }
}

void EditingController::cmd_Associate_Click()
{
    const EditingControls &c = m_c;
    QTreeWidget *grid = c.ListView1;
    try {
        AssociationInput input;
        input.rowSection = selectedSection(grid);
        const int position = grid->currentItem() ? grid->indexOfTopLevelItem(grid->currentItem()) : -1;
        input.texture = toU16String(c.combo_Texture->currentText());
        input.model = toU16String(c.combo_Model->currentText());
        input.airfile = toU16String(c.combo_Airfile->currentText());
        input.ConfirmUpdates = m_services.state.ConfirmUpdates;
        input.AutoBackupOn = m_services.state.AutoBackupOn;
        {
            const JournalService::Operation operation(m_services.history, aircraftFolder(), u"Associate");
            if (!associateFiles(m_services.aircraft.AircraftIni, input, m_services.dialogs))
                return;
        }
        for (QComboBox *combo : {c.combo_Texture, c.combo_Model, c.combo_Airfile})
            combo->setCurrentIndex(-1);
        m_services.Dir1_Change();
        reopenRow(position, true);
    } catch (const RuntimeError &error) {
        showFault(error, u"cmd_Associate_Click");
    }
}

void EditingController::cmd_Update_all_Click(QPushButton *button)
{
    const EditingControls &c = m_c;
    const std::u16string name = toU16String(button->objectName());
    const std::u16string procedure = name + u"_Click";
    const UpdateAllMember *member = nullptr;
    for (const auto &candidate : UPDATE_ALL_MEMBERS) {
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
        {
            const JournalService::Operation operation(m_services.history, aircraftFolder(),
                                                      u"Update all " + std::u16string(member->key));
            if (!updateAll(m_services.aircraft.AircraftIni, member->key, value, rowChecked,
                           m_services.state.ConfirmUpdates, m_services.dialogs))
                return;
        }
        // The selected row is looked up after the write; with none the position runs past the last row.
        int position = 0;
        while (position < grid->topLevelItemCount() && !grid->topLevelItem(position)->isSelected())
            ++position;
        m_services.Dir1_Change();
        reopenRow(position, false);
    } catch (const RuntimeError &error) {
        showFault(error, procedure.c_str());
    }
}

void EditingController::associationCombo_Change()
{
    m_c.cmd_Associate->setEnabled(!m_c.combo_Texture->currentText().isEmpty()
                                  || !m_c.combo_Model->currentText().isEmpty()
                                  || !m_c.combo_Airfile->currentText().isEmpty());
}

// The backup is taken when the dialog opens, whether or not anything is deleted later. The dialog's whole
// session is one operation: Undo takes back every delete made in it, and the backup with them.
void EditingController::mnuDelKeys_Click()
{
    std::optional<JournalService::Operation> operation;
    try {
        operation.emplace(m_services.history, aircraftFolder(), u"Remove keys");
        MakeBackup(m_services.aircraft.AircraftIni.path(), m_services.state.AutoBackupOn);
    } catch (const RuntimeError &error) {
        showFault(error, u"mnuDelKeys_Click");
        return;
    }
    frm_Remove dialog(m_services.aircraft.AircraftIni, m_services.dialogs, m_services.state, m_services.Dir1_Change,
                      &m_services.window);
    dialog.exec();
}

} // namespace fleetwright
