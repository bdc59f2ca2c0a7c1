#pragma once

#include <string>
#include <vector>

#include <QDialog>
#include <QObject>

class QListWidget;
class QPushButton;
class frm_Main;

// "Remove keys in all [fltsim.x] sections": every distinct key of the variation sections with a check box,
// and the removal of the marked ones from all those sections at once. Modal; the grid behind it is reloaded
// when it closes, and only when something was deleted.
class frm_Remove : public QDialog
{
    Q_OBJECT

public:
    explicit frm_Remove(frm_Main &main, QWidget *parent = nullptr);

    QListWidget *List1() const { return m_list; }
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

    frm_Main &m_main;
    QListWidget *m_list = nullptr;
    bool m_deleted = false;
};

// mnuDelKeys on the Tools menu: the backup, taken when the dialog opens whether or not anything is deleted
// later, then frm_Remove.
class KeyRemovalController : public QObject
{
    Q_OBJECT

public:
    explicit KeyRemovalController(frm_Main &form);

public slots:
    void mnuDelKeys_Click();

private:
    frm_Main &m_form;
};
