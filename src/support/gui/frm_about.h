#pragma once

#include <memory>

#include <QDialog>

class QMouseEvent;

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
