#pragma once

#include <memory>

#include <QDialog>
#include <QObject>

class QMouseEvent;
class frm_Main;

namespace Ui {
class frm_About;
}

namespace fleetwright {

// The about box: the program's name, version and maker, the operating system it runs on, and whose airline
// data it carries. A click anywhere on it closes it.
class frm_About : public QDialog
{
    Q_OBJECT

public:
    explicit frm_About(QWidget *parent = nullptr);
    ~frm_About() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void Form_Load();

    std::unique_ptr<Ui::frm_About> m_ui;
};

} // namespace fleetwright

// Shows the about box, modal, from the main form's Help menu.
class AboutController : public QObject
{
    Q_OBJECT

public:
    explicit AboutController(frm_Main &form);

public slots:
    void mnuAboutProg_Click();

private:
    frm_Main &m_form;
};
