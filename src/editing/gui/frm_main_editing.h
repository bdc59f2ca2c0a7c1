#pragma once

#include <QObject>

class QPushButton;
class frm_Main;

// The main form's writes of the General, ATC, Geometry and Texture tabs: "1. Update", "3. Update" and the
// nine update-all buttons. It hangs on the form as its child, collects the boxes, lets the engine write
// aircraft.cfg, and then reloads the folder and opens the row again.
class EditingController : public QObject
{
    Q_OBJECT

public:
    explicit EditingController(frm_Main &form);

public slots:
    void cmd_cfg_Update_Click();
    void cmd_Associate_Click();
    // One handler for the family; the button says which key and which box.
    void cmd_Update_all_Click(QPushButton *button);

private:
    // Selects the grid row at position and opens it, as after every write that keeps the open row.
    void reopenRow(int position, bool makeVisible);

    frm_Main &m_form;
};
