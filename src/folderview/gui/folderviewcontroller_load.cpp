// The folder load and the opening of a row on the main form: the engine reads, the form shows what it read in
// the order the load has always shown it.
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QToolButton>
#include <QTreeWidget>

#include "core/arraysearch.h"
#include "core/dialogs.h"
#include "core/errorbox.h"
#include "core/gui/backcolour.h"
#include "core/gui/statusbarpanels.h"
#include "core/gui/textconvert.h"
#include "core/runtimeerror.h"
#include "environment/programstate.h"
#include "folderview/folderload.h"
#include "folderview/gui/folderviewcontroller.h"
#include "folderview/gui/folderwidgets.h"
#include "folderview/openaircraft.h"
#include "history/gui/journalservice.h"
#include "platform/settingsstore.h"
#include "simfiles/airfile.h"
#include "simfiles/modelfile.h"

namespace fleetwright {

namespace {

const QColor WHITE = colourFromBgr(0xFFFFFF);

void setOption(QRadioButton *option, bool on)
{
    option->setAutoExclusive(false);
    option->setChecked(on);
    option->setAutoExclusive(true);
}

std::u16string withBackslashes(std::u16string text)
{
    for (auto &ch : text) {
        if (ch == u'/')
            ch = u'\\';
    }
    return text;
}

} // namespace

void FolderViewController::showCurrentFields(const std::u16string &section)
{
    m_services.aircraft.AircraftIni.setSection(section);
    const auto current = [this](const char16_t *key, bool slashes, const char16_t *none) {
        m_services.aircraft.AircraftIni.setKey(key);
        std::u16string value = m_services.aircraft.AircraftIni.Value();
        if (slashes)
            value = withBackslashes(std::move(value));
        value = StripComment(value);
        return toQString(value.empty() ? std::u16string(none) : value);
    };
    m_c.txt_CurrentTexture->setText(current(u"texture", true, u"<default>"));
    m_c.txt_CurrentModel->setText(current(u"model", true, u"<default>"));
    m_c.txt_CurrentAirfile->setText(current(u"sim", false, u"<none>"));
}

void FolderViewController::Dir1_Change()
{
    Descriptions.clear();
    if (LoadGuard)
        return;
    ResetValues();
    m_c.cmd_DirUp->setEnabled(false);

    FolderLoadInput input;
    input.folder = toU16String(m_c.Dir1->path());
    input.decimalSeparator = m_services.state.DecimalSeparator;
    input.ExitNote0 = m_services.aircraft.ExitNote0;
    input.ExitNote1 = m_services.aircraft.ExitNote1;
    input.WingSpanSection = WingSpanSection;
    FolderLoadResult loaded;
    std::optional<RuntimeError> fault;
    try {
        readAircraftFolder(input, m_services.aircraft.AircraftIni, loaded);
    } catch (const RuntimeError &error) {
        fault = error;
    }

    QTreeWidget *grid = m_c.ListView1;
    const auto paintPanel = [this](const PanelPaint &panel) {
        if (panel.panel > 0)
            paint(panel.panel, toQString(panel.text), panel.colour);
    };
    paintPanel(loaded.folderPanel);
    if (loaded.isAircraftFolder)
        paintPanel(loaded.statusPanel);
    m_c.cmd_DirUp->setEnabled(loaded.upwardsEnabled);
    grid->setUpdatesEnabled(false);
    for (const GridRow &row : loaded.rows) {
        QTreeWidgetItem *item = addVariationRow(grid, toQString(row[0]));
        for (std::size_t column = 1; column < row.size(); ++column)
            item->setText(static_cast<int>(column), toQString(row[column]));
    }
    grid->setUpdatesEnabled(true);
    Descriptions = loaded.Descriptions;
    for (std::size_t k = 0; k < EFFECT_COUNT; ++k) {
        m_c.txt_effects[k]->setText(toQString(loaded.effectNames[k]));
        m_c.chk_Effect[k]->setChecked(loaded.effectRunsOnce[k]);
    }
    m_c.txt_WingSpan_Org->setText(toQString(loaded.wingSpanText));
    WingSpanSection = loaded.WingSpanSection;
    const std::array<std::array<QLineEdit *, 5>, 3> exits = {m_c.txt_Exit_0, m_c.txt_Exit_1, m_c.txt_Exit_2};
    for (std::size_t row = 0; row < exits.size(); ++row) {
        for (std::size_t k = 0; k < 5; ++k)
            exits[row][k]->setText(toQString(loaded.exitFields[row][k]));
    }
    m_services.aircraft.ExitNote0 = loaded.ExitNote0;
    m_services.aircraft.ExitNote1 = loaded.ExitNote1;
    m_c.txt_Jetways->setText(toQString(loaded.jetways.text));
    setBackColour(m_c.txt_Jetways, colourFromBgr(loaded.jetways.backColour));
    m_c.txt_general_atc_model->setText(toQString(loaded.generalAtcModel));
    m_c.txt_general_atc_type->setText(toQString(loaded.generalAtcType));

    if (fault) {
        // Under the load's own handler the common error box ends it; past it the run time's fault ends the
        // operation where it stood.
        fault->setProcedure(u"Dir1_Change");
        if (loaded.errorHandlerOn)
            showCommonError(m_services.dialogs, *fault);
        else
            m_services.dialogs.critical(commonErrorText(*fault), u"");
        return;
    }

    AirFileName = loaded.AirFileName;
    ReadAirFile();
    m_c.mnuCFG->setEnabled(loaded.menus.openConfig);
    m_c.mnuDelKeys->setEnabled(loaded.menus.deleteKeys);
    m_c.mnuSortKeys->setEnabled(loaded.menus.sortKeys);
    m_c.mnuRenumber->setEnabled(loaded.menus.renumber);
    m_c.mnuValidate->setEnabled(loaded.menus.validate);
    m_c.mnuvalidateAll->setEnabled(loaded.menus.validateAll);
    m_c.chk_Exit_0->setChecked(loaded.exitComplete[0]);
    m_c.chk_Exit_1->setChecked(loaded.exitComplete[1]);
    m_c.chk_Exit_2->setChecked(loaded.exitComplete[2]);
    if (loaded.fieldsWhite) {
        for (QLineEdit *field : {m_c.txt_general_atc_model, m_c.txt_general_atc_type, m_c.txt_WingSpan_New})
            setBackColour(field, WHITE);
        for (const auto &row : exits) {
            for (QLineEdit *field : row)
                setBackColour(field, WHITE);
        }
    }
    if (loaded.pathSetting)
        m_services.settings.SaveSetting(u"Path", *loaded.pathSetting);

    if (loaded.selectedRow)
        grid->setCurrentItem(grid->topLevelItem(static_cast<int>(*loaded.selectedRow)));
    m_c.frm_RightClick.mnuDelete->setText(toQString(loaded.deleteCommandText));
    if (loaded.current) {
        m_c.txt_CurrentTexture->setText(toQString(loaded.current->texture));
        m_c.txt_CurrentModel->setText(toQString(loaded.current->model));
        m_c.txt_CurrentAirfile->setText(toQString(loaded.current->airFile));
    }
    if (!loaded.isAircraftFolder || loaded.rows.empty())
        paintPanel(loaded.statusPanel);
    m_c.StatusBar1->setPanelText(10, toQString(loaded.variationCountText));

    if (loaded.rowToOpen) {
        grid->setCurrentItem(grid->topLevelItem(static_cast<int>(*loaded.rowToOpen)));
        ListView1_DblClick();
    }
    for (const auto &name : loaded.textureChoices)
        m_c.combo_Texture->addItem(toQString(name));
    for (const auto &name : loaded.modelChoices)
        m_c.combo_Model->addItem(toQString(name));
    for (const auto &name : loaded.airFileChoices)
        m_c.combo_Airfile->addItem(toQString(name));
    // Filling a combo selects its first entry in Qt; the association combos start with none.
    for (QComboBox *combo : {m_c.combo_Texture, m_c.combo_Model, m_c.combo_Airfile})
        combo->setCurrentIndex(-1);
    for (const auto &name : loaded.folderAirFiles)
        m_c.lst_Airfile->addItem(toQString(name));
    if (loaded.selectedFolderAirFile) {
        m_c.lst_Airfile->setCurrentRow(static_cast<int>(*loaded.selectedFolderAirFile));
        lst_Airfile_Click();
    }
    m_c.SSTab1->setFocusPolicy(loaded.editorTabStop ? Qt::TabFocus : Qt::NoFocus);
}

void FolderViewController::ReadAirFile()
{
    AirFileState state {AirFileName, AirTypeShown};
    const AirFileReading reading = fleetwright::ReadAirFile(toU16String(m_c.Dir1->path()), state, m_services.dialogs);
    AirFileName = state.AirFileName;
    AirTypeShown = state.AirTypeShown;
    const bool eventsBefore = EventsEnabled;
    EventsEnabled = false;
    switch (reading.outcome) {
    case AirFileOutcome::NoFile:
    case AirFileOutcome::Failed:
        break;
    case AirFileOutcome::TypeFound:
        for (QRadioButton *option : {m_c.opt_ac_Normal, m_c.opt_ac_Helicopter, m_c.opt_ac_AI})
            option->setEnabled(true);
        if (reading.selected) {
            setOption(m_c.opt_ac_Normal, *reading.selected == AirType::Normal);
            setOption(m_c.opt_ac_Helicopter, *reading.selected == AirType::Helicopter);
            setOption(m_c.opt_ac_AI, *reading.selected == AirType::AI);
            setOption(m_c.opt_ac_Nok, false);
        }
        break;
    case AirFileOutcome::NoAircraftSection:
        for (QRadioButton *option : {m_c.opt_ac_Normal, m_c.opt_ac_Helicopter, m_c.opt_ac_AI}) {
            setOption(option, false);
            option->setEnabled(false);
        }
        setOption(m_c.opt_ac_Nok, true);
        break;
    }
    EventsEnabled = reading.outcome == AirFileOutcome::Failed ? eventsBefore : true;
}

void FolderViewController::lst_Airfile_Click()
{
    if (m_c.lst_Airfile->currentRow() < 0) {
        for (QRadioButton *option : {m_c.opt_ac_AI, m_c.opt_ac_Helicopter, m_c.opt_ac_Normal, m_c.opt_ac_Nok})
            option->setEnabled(false);
        return;
    }
    for (QRadioButton *option : {m_c.opt_ac_AI, m_c.opt_ac_Helicopter, m_c.opt_ac_Normal})
        option->setEnabled(true);
    AirFileName = toU16String(m_c.lst_Airfile->currentItem()->text());
    ReadAirFile();
}

void FolderViewController::airTypeOption_Click(int type)
{
    if (!EventsEnabled)
        return;
    const AirFileState state {AirFileName, AirTypeShown};
    AirTypePatch patch;
    try {
        const JournalService::Operation operation(m_services.history, toU16String(m_c.Dir1->path()), u"Air type");
        patch = patchAirType(static_cast<AirType>(type), state, m_services.state.ConfirmUpdates, m_services.dialogs);
    } catch (const RuntimeError &error) {
        // No journal, no patch: the file stays as it is, and so do the option buttons.
        m_services.dialogs.critical(commonErrorText(error), u"");
        patch.outcome = AirTypePatchOutcome::Refused;
        if (AirTypeShown >= 1 && AirTypeShown <= 3)
            patch.restore = static_cast<AirType>(AirTypeShown - 1);
    }
    if (patch.outcome == AirTypePatchOutcome::Refused) {
        EventsEnabled = false;
        if (patch.restore) {
            setOption(m_c.opt_ac_Normal, *patch.restore == AirType::Normal);
            setOption(m_c.opt_ac_Helicopter, *patch.restore == AirType::Helicopter);
            setOption(m_c.opt_ac_AI, *patch.restore == AirType::AI);
        }
        EventsEnabled = true;
    } else if (patch.outcome == AirTypePatchOutcome::Failed) {
        Dir1_Change();
    }
}

void FolderViewController::ListView1_DblClick()
{
    QTreeWidget *grid = m_c.ListView1;
    if (grid->topLevelItemCount() == 0)
        return;
    QTreeWidgetItem *item = grid->currentItem() ? grid->currentItem() : grid->topLevelItem(0);
    const std::size_t index = static_cast<std::size_t>(grid->indexOfTopLevelItem(item));
    try {
        m_c.txt_Title->setText(item->text(1));
        m_c.lblSelections->setText(item->text(2));
        m_c.txt_atc_ParkingCodes->setText(item->text(3));
        m_c.txt_ui_CreatedBy->setText(item->text(4));
        m_c.txt_ui_TypeRole->setText(item->text(5));
        m_c.txt_ui_Manufacturer->setText(item->text(6));
        m_c.txt_ui_Type->setText(item->text(7));
        m_c.txt_ui_Variation->setText(item->text(8));
        m_c.txt_atc_Id->setText(item->text(11));
        m_c.txt_atc_Flight_Number->setText(item->text(12));
        m_c.txt_atc_Airline->setText(item->text(13));
        if (index >= Descriptions.size())
            throw RuntimeError(9, u"Subscript out of range");
        m_c.txt_Description->setPlainText(toQString(Descriptions[index]));
        m_services.aircraft.DescriptionOnLoad = Descriptions[index];
        m_c.chk_atc_heavy->setEnabled(true);
        setBackColour(m_c.lblSelections, WHITE);
        setBackColour(m_c.picCombo, WHITE);
        bool numeric = false;
        const double heavy = item->text(14).trimmed().toDouble(&numeric);
        m_c.chk_atc_heavy->setChecked(numeric && heavy == 1.0);
        m_c.txt_atc_Model->setText(item->text(15));
        for (QWidget *field : std::initializer_list<QWidget *> {
                 m_c.txt_Title, m_c.txt_atc_ParkingCodes, m_c.txt_ui_CreatedBy, m_c.txt_ui_Manufacturer,
                 m_c.txt_ui_Type, m_c.txt_ui_Variation, m_c.txt_atc_Id, m_c.txt_atc_Flight_Number, m_c.txt_atc_Airline,
                 m_c.txt_atc_Model, m_c.txt_ui_TypeRole, m_c.txt_Description})
            setBackColour(field, WHITE);

        const std::u16string folder = toU16String(m_c.Dir1->path());
        const std::u16string model = toU16String(item->text(9));
        const ModelConfig config = resolveModelName(folder, model, m_services.dialogs);
        if (config.missing)
            paint(9, QStringLiteral("AC Status: NOK"), PanelColour::Red);

        EventsEnabled = false;
        AirFileName = toU16String(item->text(10));
        ReadAirFile();
        EventsEnabled = true;
        m_services.aircraft.RadiusOnLoad.clear();

        if (!config.missing) {
            const ModelFileReading reading = readModelFile(folder, model, config.modelName);
            m_services.aircraft.ModelFilePath = reading.ModelFilePath;
            if (reading.outcome != ModelFileOutcome::Read)
                paint(9, QStringLiteral("AC Status: NOK"), PanelColour::Red);
            if (reading.outcome == ModelFileOutcome::Failed) {
                m_services.dialogs.critical(reading.failureMessage, u"");
                return;
            }
            if (reading.outcome == ModelFileOutcome::Read) {
                m_c.txt_FSXVersion->setText(toQString(reading.versionText));
                m_c.txt_FS9Radius->setText(toQString(reading.radiusText));
                m_c.txt_FS9Radius->setReadOnly(!reading.radiusEditable);
                setBackColour(m_c.txt_FS9Radius,
                              colourFromBgr(reading.radiusEditable ? 0xFFFFFF : ModelFileReading::LOCKED_COLOUR));
                m_services.aircraft.RadiusOnLoad = reading.RadiusOnLoad;
            }
        }
        m_c.cmd_ParkingCodes->setEnabled(true);
        m_c.cmdDropDown->setEnabled(true);
        showCurrentFields(toU16String(item->text(0)));
    } catch (const RuntimeError &error) {
        RuntimeError named = error;
        named.setProcedure(u"ListView1_DblClick");
        showCommonError(m_services.dialogs, named);
    }
}

} // namespace fleetwright
