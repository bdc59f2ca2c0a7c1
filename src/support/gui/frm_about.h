#pragma once

#include <QDialog>
#include <QObject>

class QFrame;
class QLabel;
class QMouseEvent;
class frm_Main;

// The about box: the program's name, version and maker, the operating system it runs on, and whose airline
// data it carries. A click anywhere on it closes it.
class frm_About : public QDialog
{
    Q_OBJECT

public:
    explicit frm_About(QWidget *parent = nullptr);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void buildForm();
    void Form_Load();

    QFrame *Frame1 = nullptr;
    QLabel *imgLogo = nullptr;
    QLabel *lblProductName = nullptr;
    QLabel *lblVERSION = nullptr;
    QLabel *lblPlatform = nullptr;
    QLabel *lblCopyright = nullptr;
    QLabel *lblDataLicence = nullptr;
    QLabel *lblThirdParty = nullptr;
};

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
