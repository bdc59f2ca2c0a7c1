#pragma once

#include <memory>

#include <QDialog>

class QListWidget;
class QTreeWidget;

namespace Ui {
class frm_ListViewOptions;
}

namespace fleetwright {

struct ProgramState;
namespace platform {
class SettingsStore;
}

// Which of the grid's columns 3 to 17 are hidden. A check mark means hidden, and the grid follows each click
// at once; only "Save & Close" keeps the choice for the next start.
class frm_ListViewOptions : public QDialog
{
    Q_OBJECT

public:
    frm_ListViewOptions(QTreeWidget *grid, const platform::SettingsStore &settings, ProgramState &state,
                        QWidget *parent = nullptr);
    ~frm_ListViewOptions() override;

    QListWidget *List1() const;

public slots:
    void List1_Click();
    void cmd_All_Click();
    void cmd_None_Click();
    void cmdClose_Click();
    void cmdSave_Click();

private:
    void checkAll(bool checked);

    std::unique_ptr<Ui::frm_ListViewOptions> m_ui;
    QTreeWidget *m_grid;
    const platform::SettingsStore &m_settings;
    ProgramState &m_state;
    bool m_loadGuard = false;
};

// Fits every shown column but the last to its content and header; the last is fitted in any case, so a
// hidden "texture" column comes back, unlike all the others.
void ResizeGrid(QTreeWidget *grid);

} // namespace fleetwright
