#pragma once

#include <memory>
#include <string>

#include <QDialog>
#include <QString>

#include "support/gui/vcupdatectl.h"
#include "support/liveupdate.h"

namespace Ui {
class frm_Update;
}

namespace fleetwright {

class Dialogs;

// The live update dialog: hosts vcUPDATECTL1, whose address comes from the setting "UpdateURL"
// (DEFAULT_UPDATE_URL when there is none), and starts the check as it opens.
class frm_Update : public QDialog
{
    Q_OBJECT

public:
    explicit frm_Update(Dialogs &dialogs, QWidget *parent = nullptr, std::u16string currentVersion = ownVersion());
    ~frm_Update() override;

    vcUPDATECTL *vcUPDATECTL1() const { return m_control; }

private slots:
    void vcUPDATECTL1_Done(const QString &file);

private:
    std::unique_ptr<Ui::frm_Update> m_ui;
    Dialogs &m_dialogs;
    vcUPDATECTL *m_control = nullptr;
};

} // namespace fleetwright
