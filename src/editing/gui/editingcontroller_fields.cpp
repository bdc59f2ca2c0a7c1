// The editor fields that need more than a value: effects, geometry and exits, parking types and codes.
#include <optional>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>
#include <QTreeWidget>

#include "core/dialogs.h"
#include "core/errorbox.h"
#include "core/gui/backcolour.h"
#include "core/gui/textconvert.h"
#include "core/runtimeerror.h"
#include "editing/effects.h"
#include "editing/gui/editingcontroller.h"
#include "environment/programstate.h"
#include "folderview/openaircraft.h"
#include "history/gui/journalservice.h"
#include "parking/parkingentry.h"
#include "simfiles/geometry.h"

namespace fleetwright {

namespace {

const QColor WHITE = colourFromBgr(0xFFFFFF);
const QColor CURRENT_EFFECT = colourFromBgr(0xC0E0FF);

// The key as a key-press handler gets it: the code of the typed character, 8 for Backspace. Keys that type
// nothing (arrows, Delete, function keys) and Tab, which moves the focus, never reach such a handler.
std::optional<int> typedKey(const QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Backspace:
        return KEY_BACKSPACE;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Delete:
        return std::nullopt;
    default:
        break;
    }
    const QString text = event->text();
    if (text.isEmpty())
        return std::nullopt;
    return text.at(0).unicode();
}

} // namespace

std::array<QLineEdit *, 15> EditingController::exitFields() const
{
    std::array<QLineEdit *, 15> fields {};
    std::size_t n = 0;
    for (const auto *row : {&m_c.txt_Exit_0, &m_c.txt_Exit_1, &m_c.txt_Exit_2}) {
        for (QLineEdit *field : *row)
            fields[n++] = field;
    }
    return fields;
}

void EditingController::connectFields()
{
    const EditingControls &c = m_c;
    for (std::size_t k = 0; k < c.txt_effects.size(); ++k) {
        QLineEdit *box = c.txt_effects[k];
        box->installEventFilter(this);
        connect(box, &QLineEdit::customContextMenuRequested, this,
                [this, k](const QPoint &position) { txt_effects_MouseDown(static_cast<int>(k), position); });
    }
    const auto &menus = c.frm_RightClick;
    connect(menus.mnuEffectsDisable, &QAction::triggered, this, &EditingController::EffectDisable);
    connect(menus.mnuEffectsDefault, &QAction::triggered, this, &EditingController::EffectDefault);
    connect(menus.mnuEffectsSelect, &QAction::triggered, this, &EditingController::EffectSelect);
    connect(c.cmd_Effect_Update, &QPushButton::clicked, this, &EditingController::cmd_Effect_Update_Click);

    connectWingSpanChain();
    connectExitRows();

    for (QWidget *field : std::initializer_list<QWidget *> {
             c.txt_atc_Airline, c.txt_atc_Flight_Number, c.txt_atc_Id, c.txt_atc_Model, c.txt_atc_ParkingCodes,
             c.txt_FS9Radius, c.txt_Title, c.txt_ui_CreatedBy, c.txt_ui_Manufacturer, c.txt_ui_TypeRole, c.txt_ui_Type,
             c.txt_ui_Variation, c.txt_general_atc_model, c.txt_general_atc_type, c.chk_Exit_0, c.chk_Exit_1,
             c.chk_Exit_2, c.txt_WingSpan_New, c.lstParking})
        field->installEventFilter(this);
    for (QLineEdit *field : exitFields())
        field->installEventFilter(this);

    connect(c.cmdDropDown, &QToolButton::clicked, this, &EditingController::cmdDropDown_Click);
    connect(c.lstParking, &QListWidget::itemSelectionChanged, this, [this] {
        if (!m_fillingParkingList)
            lstParking_Click();
    });
}

// ---- Effects ----

EffectFields EditingController::effectFields() const
{
    const EditingControls &c = m_c;
    EffectFields fields;
    for (std::size_t k = 0; k < EFFECT_COUNT; ++k) {
        fields.effectNames[k] = toU16String(c.txt_effects[k]->text());
        fields.effectRunsOnce[k] = c.chk_Effect[k]->isChecked();
    }
    return fields;
}

void EditingController::showEffectFields(const EffectFields &fields)
{
    const EditingControls &c = m_c;
    for (std::size_t k = 0; k < EFFECT_COUNT; ++k) {
        c.txt_effects[k]->setText(toQString(fields.effectNames[k]));
        c.chk_Effect[k]->setChecked(fields.effectRunsOnce[k]);
    }
}

void EditingController::txt_effects_GotFocus(int index)
{
    m_services.aircraft.EffectIndex = index;
    const EditingControls &c = m_c;
    for (std::size_t k = 0; k < c.txt_effects.size(); ++k)
        setBackColour(c.txt_effects[k], static_cast<int>(k) == index ? CURRENT_EFFECT : WHITE);
}

void EditingController::txt_effects_MouseDown(int index, const QPoint &position)
{
    m_services.aircraft.EffectIndex = index;
    const EditingControls &c = m_c;
    QLineEdit *box = c.txt_effects[static_cast<std::size_t>(index)];
    c.frm_RightClick.mnuThisEffects->popup(box->mapToGlobal(position));
}

void EditingController::EffectDefault()
{
    EffectFields fields = effectFields();
    fleetwright::EffectDefault(fields, m_services.aircraft.EffectIndex);
    showEffectFields(fields);
}

void EditingController::EffectDisable()
{
    EffectFields fields = effectFields();
    try {
        fleetwright::EffectDisable(fields, m_services.aircraft.EffectIndex);
    } catch (const RuntimeError &error) {
        showFault(error, u"EffectDisable");
        return;
    }
    showEffectFields(fields);
}

void EditingController::EffectSelect()
{
    const std::optional<std::u16string> name = fleetwright::EffectSelect(
        m_services.aircraft.EffectIndex, m_services.aircraft.AircraftIni.path(), m_services.dialogs);
    if (!name)
        return;
    m_c.txt_effects[static_cast<std::size_t>(m_services.aircraft.EffectIndex)]->setText(toQString(*name));
}

void EditingController::cmd_Effect_Update_Click()
{
    const EditingControls &c = m_c;
    QTreeWidget *grid = c.ListView1;
    EffectUpdateInput input;
    if (QTreeWidgetItem *selected = grid->currentItem())
        input.selectedPosition = grid->indexOfTopLevelItem(selected) + 1;
    input.description = toU16String(c.txt_Description->toPlainText());
    input.DescriptionOnLoad = m_services.aircraft.DescriptionOnLoad;
    input.fields = effectFields();
    try {
        const JournalService::Operation operation(m_services.history, aircraftFolder(), u"Effects");
        if (!fleetwright::cmd_Effect_Update(m_services.aircraft.AircraftIni, input, m_services.state.ConfirmUpdates,
                                            m_services.state.AutoBackupOn, m_services.dialogs))
            return;
    } catch (const RuntimeError &error) {
        showFault(error, u"cmd_Effect_Update_Click");
        return;
    }
    // The second load is as the program always did it: it changes nothing that the first did not.
    m_services.Dir1_Change();
    m_services.Dir1_Change();
    if (QTreeWidgetItem *row = grid->topLevelItem(*input.selectedPosition - 1)) {
        grid->setCurrentItem(row);
        grid->scrollToItem(row);
    }
    m_services.ListView1_DblClick();
    QCoreApplication::processEvents();
}

// ---- Geometry and exits ----

void EditingController::connectWingSpanChain()
{
    const EditingControls &c = m_c;
    using Step = std::u16string (*)(const std::u16string &, char16_t);
    const auto chain = [this](QLineEdit *source, QLineEdit *target, Step step, const char16_t *procedure,
                              bool needsRows) {
        connect(source, &QLineEdit::textChanged, this, [this, target, step, procedure, needsRows](const QString &text) {
            if (text.isEmpty()) {
                target->clear();
                return;
            }
            if (needsRows && m_c.ListView1->topLevelItemCount() == 0)
                return;
            try {
                target->setText(toQString(step(toU16String(text), m_services.state.DecimalSeparator)));
            } catch (const RuntimeError &error) {
                showFault(error, procedure);
            }
        });
    };
    chain(c.txt_WingSpan_Org, c.txt_WingSpan_Org_C1, WingSpanMetres, u"txt_WingSpan_Org_Change", false);
    chain(c.txt_WingSpan_New, c.txt_WingSpan_New_C1, WingSpanMetres, u"txt_WingSpan_New_Change", true);
    chain(c.txt_WingSpan_Org_C1, c.txt_WingSpan_Org_C2, HalfSpan, u"txt_WingSpan_Org_C1_Change", false);
    chain(c.txt_WingSpan_New_C1, c.txt_WingSpan_New_C2, HalfSpan, u"txt_WingSpan_New_C1_Change", false);
    chain(c.txt_WingSpan_Org_C2, c.txt_FSX_Spot_Org, SpotSize, u"txt_WingSpan_Org_C2_Change", false);
    chain(c.txt_WingSpan_New_C2, c.txt_FSX_Spot_New, SpotSize, u"txt_WingSpan_New_C2_Change", false);
}

void EditingController::connectExitRows()
{
    const EditingControls &c = m_c;
    const auto connectRow = [this](const std::array<QLineEdit *, 5> &row, QCheckBox *check) {
        for (QLineEdit *field : row) {
            connect(field, &QLineEdit::textChanged, this, [row, check] {
                std::array<std::u16string, 5> values;
                for (std::size_t k = 0; k < row.size(); ++k)
                    values[k] = toU16String(row[k]->text());
                check->setChecked(exitRowComplete(values));
            });
        }
    };
    connectRow(c.txt_Exit_0, c.chk_Exit_0);
    connectRow(c.txt_Exit_1, c.chk_Exit_1);
    connectRow(c.txt_Exit_2, c.chk_Exit_2);
}

bool EditingController::numberKeyPress(QLineEdit *box, QKeyEvent *event, bool signedField)
{
    const std::optional<int> key = typedKey(event);
    if (!key)
        return false;
    const std::u16string text = toU16String(box->text());
    const int kept = signedField ? SignedKeyFilter(text, *key, m_services.state.DecimalSeparator)
                                 : DecimalKeyFilter(text, *key, m_services.state.DecimalSeparator);
    if (kept == *key)
        return false;
    if (kept != 0)
        box->insert(QString(QChar(static_cast<char16_t>(kept))));
    return true;
}

// ---- Focus rules ----

bool EditingController::focusReturns(QObject *watched) const
{
    const EditingControls &c = m_c;
    for (QObject *check : {c.chk_Exit_0, c.chk_Exit_1, c.chk_Exit_2}) {
        if (watched == check)
            return true;
    }
    const bool gridEmpty = c.ListView1->topLevelItemCount() == 0;
    if (watched == c.txt_general_atc_model || watched == c.txt_general_atc_type)
        return gridEmpty;
    for (QLineEdit *field : exitFields()) {
        if (watched == field)
            return gridEmpty;
    }
    // All of these look at the title's colour, not their own: white there means a row is open.
    for (QObject *field : std::initializer_list<QObject *> {c.txt_atc_Airline, c.txt_atc_Flight_Number, c.txt_atc_Id,
                                                            c.txt_atc_Model, c.txt_atc_ParkingCodes, c.txt_FS9Radius,
                                                            c.txt_Title, c.txt_ui_CreatedBy, c.txt_ui_Manufacturer,
                                                            c.txt_ui_TypeRole, c.txt_ui_Type, c.txt_ui_Variation}) {
        if (watched == field)
            return backColour(c.txt_Title) != WHITE;
    }
    return false;
}

// ---- Parking types and codes ----

void EditingController::cmdDropDown_Click()
{
    const EditingControls &c = m_c;
    QListWidget *list = c.lstParking;
    if (list->isVisible() || ParkingListJustClosed) {
        list->hide();
        ParkingListJustClosed = false;
        return;
    }
    const ParkingTypeSelection selection = parkingTypesFromCaption(toU16String(c.lblSelections->text()));
    m_fillingParkingList = true;
    for (std::size_t i = 0; i < selection.size(); ++i) {
        if (selection[i] && static_cast<int>(i) < list->count())
            list->item(static_cast<int>(i))->setSelected(true);
    }
    m_fillingParkingList = false;
    list->show();
    list->raise();
    list->setFocus();
}

void EditingController::lstParking_Click()
{
    const EditingControls &c = m_c;
    ParkingTypeSelection selection {};
    for (int i = 0; i < c.lstParking->count() && i < static_cast<int>(selection.size()); ++i)
        selection[static_cast<std::size_t>(i)] = c.lstParking->item(i)->isSelected();
    const QString caption = toQString(parkingTypesCaption(selection));
    c.lblSelections->setText(caption);
    c.lblSelections->setToolTip(caption);
}

bool EditingController::parkingCodesKeyPress(QKeyEvent *event)
{
    const std::optional<int> key = typedKey(event);
    if (!key)
        return false;
    const ParkingCodeKey result = parkingCodeKeyPress(toU16String(m_c.txt_atc_ParkingCodes->text()), *key);
    if (!result.message.empty())
        m_services.dialogs.information(result.message, u"");
    return result.key == 0;
}

bool EditingController::eventFilter(QObject *watched, QEvent *event)
{
    const EditingControls &c = m_c;
    switch (event->type()) {
    case QEvent::FocusIn:
        for (std::size_t k = 0; k < c.txt_effects.size(); ++k) {
            if (watched == c.txt_effects[k]) {
                txt_effects_GotFocus(static_cast<int>(k));
                return false;
            }
        }
        if (focusReturns(watched))
            c.ListView1->setFocus();
        return false;
    case QEvent::FocusOut:
        if (watched == c.lstParking) {
            c.lstParking->hide();
            const QWidget *now = QApplication::focusWidget();
            ParkingListJustClosed = now && now->objectName() == QStringLiteral("cmdDropDown");
        }
        return false;
    case QEvent::KeyPress: {
        auto *keyEvent = static_cast<QKeyEvent *>(event);
        if (watched == c.txt_atc_ParkingCodes)
            return parkingCodesKeyPress(keyEvent);
        if (watched == c.txt_FS9Radius || watched == c.txt_WingSpan_New)
            return numberKeyPress(static_cast<QLineEdit *>(watched), keyEvent, false);
        for (QLineEdit *field : exitFields()) {
            if (watched == field)
                return numberKeyPress(field, keyEvent, true);
        }
        return false;
    }
    default:
        return false;
    }
}

} // namespace fleetwright
