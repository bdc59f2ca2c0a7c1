#include "editing/gui/frm_remove.h"

#include <QListWidget>
#include <QPushButton>

#include "core/clsinifile.h"
#include "core/dialogs.h"
#include "core/errorbox.h"
#include "core/gui/textconvert.h"
#include "core/runtimeerror.h"
#include "editing/keyremoval.h"
#include "environment/programstate.h"
#include "support/gui/tooltips.h"
#include "ui_frm_remove.h"

namespace fleetwright {

frm_Remove::frm_Remove(clsIniFile &aircraftIni, Dialogs &dialogs, const ProgramState &state,
                       std::function<void()> reload, QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::frm_Remove>())
    , m_aircraftIni(aircraftIni)
    , m_dialogs(dialogs)
    , m_reload(std::move(reload))
{
    m_ui->setupUi(this);
    connect(m_ui->cmd_All, &QPushButton::clicked, this, &frm_Remove::cmd_All_Click);
    connect(m_ui->cmd_None, &QPushButton::clicked, this, &frm_Remove::cmd_None_Click);
    connect(m_ui->cmd_Wipe, &QPushButton::clicked, this, &frm_Remove::cmd_Wipe_Click);

    // Form_Load.
    m_deleted = false;
    SetUpToolTips(this, state.ToolTipsOn);
    LoadList();
}

frm_Remove::~frm_Remove() = default;

QListWidget *frm_Remove::List1() const
{
    return m_ui->List1;
}

void frm_Remove::LoadList()
{
    m_ui->List1->clear();
    for (const std::u16string &key : fleetwright::LoadList(m_aircraftIni)) {
        auto *entry = new QListWidgetItem(toQString(key), m_ui->List1);
        entry->setFlags(entry->flags() | Qt::ItemIsUserCheckable);
        entry->setCheckState(Qt::Unchecked);
    }
}

void frm_Remove::markAll(bool marked)
{
    for (int i = 0; i < m_ui->List1->count(); ++i)
        m_ui->List1->item(i)->setCheckState(marked ? Qt::Checked : Qt::Unchecked);
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
    return m_dialogs.criticalQuestion(WIPE_QUESTION, u"");
}

void frm_Remove::cmd_Wipe_Click()
{
    if (!askWipe())
        return;
    std::vector<std::u16string> marked;
    for (int i = 0; i < m_ui->List1->count(); ++i) {
        if (m_ui->List1->item(i)->checkState() == Qt::Checked)
            marked.push_back(toU16String(m_ui->List1->item(i)->text()));
    }
    try {
        const std::int16_t count = RemoveMarkedKeys(m_aircraftIni, marked);
        if (count > 0)
            m_deleted = true;
        LoadList();
        m_dialogs.information(wipeReport(count), u"");
    } catch (const RuntimeError &error) {
        // The attempts up to the fault are written; the reload on closing shows them.
        m_deleted = true;
        RuntimeError named = error;
        if (named.procedure().empty())
            named.setProcedure(u"cmd_Wipe_Click");
        m_dialogs.critical(commonErrorText(named), u"");
    }
}

void frm_Remove::done(int result)
{
    QDialog::done(result);
    if (m_deleted) {
        m_deleted = false;
        m_reload();
    }
}

} // namespace fleetwright
