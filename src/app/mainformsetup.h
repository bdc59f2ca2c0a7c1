#pragma once

class QMainWindow;
namespace Ui {
class frm_Main;
}

namespace fleetwright {

// What the main window's form cannot say. finishMainForm runs right after setupUi: the menus' own actions get
// their names, the made-up names of captions and layouts go, and the sizes that follow the font are set.
void finishMainForm(const Ui::frm_Main &ui);

// Fixes the window's size once every child is in place, and shares the grid's width among its columns.
void fixMainFormSize(QMainWindow *form, const Ui::frm_Main &ui);

} // namespace fleetwright
