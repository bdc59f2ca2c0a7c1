#pragma once

#include <memory>
#include <vector>

#include <QDialog>
#include <QString>

#include "parking/gui/parkingdatabase.h"

class QLineEdit;
class QTableView;

namespace Ui {
class frm_ParkingCode;
}

namespace fleetwright {

class Dialogs;
class ParkingGridModel;
struct ProgramState;

// "Selelct the parking code": the airlines of the parking code database with their codes. A click on a row
// adds its code to the variation's parking codes on the main form, a second click takes it out; a filter
// narrows the list by any part of the airline's name. The box on the main form changes at once with every
// click and is the only thing the dialog changes: closing keeps the changes, the general update saves them.
class frm_ParkingCode : public QDialog
{
    Q_OBJECT

public:
    // codes is the main form's txt_atc_ParkingCodes; databasePath the database file, which must exist.
    frm_ParkingCode(QLineEdit *codes, Dialogs &dialogs, const ProgramState &state, const QString &databasePath,
                    QWidget *parent = nullptr);
    ~frm_ParkingCode() override;

    // False when the database file could not be opened at all: the load has shown why, and the dialog is
    // not to be shown.
    bool databaseOpened() const { return m_opened; }

    QTableView *MSHFlexGrid1() const;

    // Every column of grid as wide as its widest text, header included, in the form's font, plus 120 twips.
    static void AutoFitFlexGrid(QWidget *form, QTableView *grid);

public slots:
    void txt_FilterParkingCodes_Change();
    void MSHFlexGrid1_Click(const QModelIndex &index);
    void CancelButton_Click();

protected:
    // Closing by Esc or the close box releases the database as the Close button does.
    void done(int result) override;

private:
    void Form_Load(const ProgramState &state, const QString &databasePath);
    void showCounter();
    void showRows(std::vector<ParkingSpec> rows);

    std::unique_ptr<Ui::frm_ParkingCode> m_ui;
    QLineEdit *m_codes;
    Dialogs &m_dialogs;
    ParkingDatabase m_database;
    bool m_opened = false;
    ParkingGridModel *m_model = nullptr;
};

} // namespace fleetwright
