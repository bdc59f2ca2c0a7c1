#pragma once

#include <memory>

#include <QMainWindow>

namespace Ui {
class frm_Main;
}

// The main window: the hub that owns the controls and hands the work to the engine's units.
class frm_Main : public QMainWindow
{
    Q_OBJECT

public:
    explicit frm_Main(QWidget *parent = nullptr);
    ~frm_Main() override;

private slots:
    void mnuQuit_Click();

private:
    std::unique_ptr<Ui::frm_Main> m_ui;
};
