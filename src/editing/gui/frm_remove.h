#pragma once

#include <functional>
#include <memory>

#include <QDialog>

class QListWidget;

namespace Ui {
class frm_Remove;
}

namespace fleetwright {

class Dialogs;
class clsIniFile;
struct ProgramState;

// "Remove keys in all [fltsim.x] sections": every distinct key of the variation sections with a check box,
// and the removal of the marked ones from all those sections at once. Modal; the grid behind it is reloaded
// (reload) when it closes, and only when something was deleted.
class frm_Remove : public QDialog
{
    Q_OBJECT

public:
    frm_Remove(clsIniFile &aircraftIni, Dialogs &dialogs, const ProgramState &state, std::function<void()> reload,
               QWidget *parent = nullptr);
    ~frm_Remove() override;

    QListWidget *List1() const;
    // Whether a delete has run since the dialog opened.
    bool keysDeleted() const { return m_deleted; }

public slots:
    void LoadList();
    void cmd_Wipe_Click();
    void cmd_All_Click();
    void cmd_None_Click();

protected:
    // Form_Unload: the reload after a delete.
    void done(int result) override;

private:
    void markAll(bool marked);
    bool askWipe();

    std::unique_ptr<Ui::frm_Remove> m_ui;
    clsIniFile &m_aircraftIni;
    Dialogs &m_dialogs;
    std::function<void()> m_reload;
    bool m_deleted = false;
};

} // namespace fleetwright
