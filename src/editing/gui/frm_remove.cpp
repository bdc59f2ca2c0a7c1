#include "editing/gui/frm_remove.h"

#include <QAction>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/frm_main.h"
#include "core/aircraftfilestore.h"
#include "core/errorbox.h"
#include "core/gui/textconvert.h"
#include "core/runtimeerror.h"
#include "editing/keyremoval.h"
#include "environment/programstate.h"
#include "support/gui/tooltips.h"

using fleetwright::RuntimeError;

namespace {

QPushButton *addButton(QBoxLayout *row, const char *name, const QString &caption, const QString &tip)
{
    auto *button = new QPushButton(caption);
    button->setObjectName(QString::fromLatin1(name));
    button->setToolTip(tip);
    row->addWidget(button);
    return button;
}

void showRuntimeError(fleetwright::Dialogs &dialogs, const RuntimeError &error, const char16_t *procedure)
{
    RuntimeError named = error;
    if (named.procedure().empty())
        named.setProcedure(procedure);
    dialogs.critical(fleetwright::commonErrorText(named), u"");
}

} // namespace

frm_Remove::frm_Remove(frm_Main &main, QWidget *parent)
    : QDialog(parent)
    , m_main(main)
{
    setObjectName(QStringLiteral("frm_Remove"));
    setWindowTitle(QStringLiteral("Remove keys in all [fltsim.x] sections"));
    setModal(true);

    m_list = new QListWidget;
    m_list->setObjectName(QStringLiteral("List1"));
    m_list->setToolTip(
        QStringLiteral("This list shows all unique keys found in the [fltsim.x] sections of this aircraft.cfg file"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    auto *selection = new QHBoxLayout;
    QPushButton *all = addButton(selection, "cmd_All", QStringLiteral("Select &all"),
                                 QStringLiteral("Select all keys above for deletion"));
    QPushButton *none = addButton(selection, "cmd_None", QStringLiteral("Select &none"),
                                  QStringLiteral("De-select all keys above for deletion"));
    layout->addLayout(selection);
    auto *wipeRow = new QHBoxLayout;
    QPushButton *wipe = addButton(wipeRow, "cmd_Wipe", QStringLiteral("&Delete marked keys"),
                                  QStringLiteral("Delete selected keys in current aircraft.cfg"));
    layout->addLayout(wipeRow);

    connect(all, &QPushButton::clicked, this, &frm_Remove::cmd_All_Click);
    connect(none, &QPushButton::clicked, this, &frm_Remove::cmd_None_Click);
    connect(wipe, &QPushButton::clicked, this, &frm_Remove::cmd_Wipe_Click);

    // Form_Load.
    m_deleted = false;
    SetUpToolTips(this, fleetwright::programState().ToolTipsOn);
    LoadList();
}

void frm_Remove::LoadList()
{
    m_list->clear();
    for (const std::u16string &key : fleetwright::LoadList(m_main.AircraftIni())) {
        auto *entry = new QListWidgetItem(toQString(key), m_list);
        entry->setFlags(entry->flags() | Qt::ItemIsUserCheckable);
        entry->setCheckState(Qt::Unchecked);
    }
}

void frm_Remove::markAll(bool marked)
{
    for (int i = 0; i < m_list->count(); ++i)
        m_list->item(i)->setCheckState(marked ? Qt::Checked : Qt::Unchecked);
}

void frm_Remove::cmd_All_Click()
{
    markAll(true);
}

void frm_Remove::cmd_None_Click()
{
    markAll(false);
}

// Asked always, whatever ConfirmUpdates says.
bool frm_Remove::askWipe()
{
    return m_main.dialogs().criticalQuestion(fleetwright::WIPE_QUESTION, u"");
}

void frm_Remove::cmd_Wipe_Click()
{
    if (!askWipe())
        return;
    std::vector<std::u16string> marked;
    for (int i = 0; i < m_list->count(); ++i) {
        if (m_list->item(i)->checkState() == Qt::Checked)
            marked.push_back(toU16String(m_list->item(i)->text()));
    }
    try {
        const std::int16_t count = fleetwright::RemoveMarkedKeys(m_main.AircraftIni(), marked);
        if (count > 0)
            m_deleted = true;
        LoadList();
        m_main.dialogs().information(fleetwright::wipeReport(count), u"");
    } catch (const RuntimeError &error) {
        // The attempts up to the fault are written; the reload on closing shows them.
        m_deleted = true;
        showRuntimeError(m_main.dialogs(), error, u"cmd_Wipe_Click");
    }
}

void frm_Remove::done(int result)
{
    QDialog::done(result);
    if (m_deleted) {
        m_deleted = false;
        m_main.RunChange();
    }
}

KeyRemovalController::KeyRemovalController(frm_Main &form)
    : QObject(&form)
    , m_form(form)
{
    setObjectName(QStringLiteral("KeyRemovalController"));
    connect(form.controls().mnuDelKeys, &QAction::triggered, this, &KeyRemovalController::mnuDelKeys_Click);
}

void KeyRemovalController::mnuDelKeys_Click()
{
    try {
        fleetwright::MakeBackup(m_form.AircraftIni().path(), m_form.AutoBackupOn);
    } catch (const RuntimeError &error) {
        showRuntimeError(m_form.dialogs(), error, u"mnuDelKeys_Click");
        return;
    }
    frm_Remove dialog(m_form, &m_form);
    dialog.exec();
}
