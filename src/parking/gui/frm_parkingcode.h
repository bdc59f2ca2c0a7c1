#pragma once

#include <vector>

#include <QDialog>
#include <QObject>
#include <QString>

#include "parking/gui/parkingdatabase.h"

class QLineEdit;
class QPushButton;
class QTableView;
class frm_Main;
class ParkingGridModel;

namespace fleetwright {
class Dialogs;
}

// "Selelct the parking code": the airlines of the parking code database with their codes. A click on a row
// adds its code to the variation's parking codes on the main form, a second click takes it out; a filter
// narrows the list by any part of the airline's name. The box on the main form changes at once with every
// click and is the only thing the dialog changes: closing keeps the changes, the general update saves them.
class frm_ParkingCode : public QDialog
{
    Q_OBJECT

public:
    // codes is the main form's txt_atc_ParkingCodes; databasePath the database file, which must exist.
    frm_ParkingCode(QLineEdit *codes, fleetwright::Dialogs &dialogs, const QString &databasePath,
                    QWidget *parent = nullptr);
    ~frm_ParkingCode() override;

    // False when the database file could not be opened at all: the load has shown why, and the dialog is
    // not to be shown.
    bool databaseOpened() const { return m_opened; }

    QTableView *MSHFlexGrid1() const { return m_grid; }

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
    void buildForm();
    void Form_Load(const QString &databasePath);
    void showCounter();
    void showRows(std::vector<ParkingSpec> rows);

    QLineEdit *m_codes;
    fleetwright::Dialogs &m_dialogs;
    ParkingDatabase m_database;
    bool m_opened = false;
    ParkingGridModel *m_model = nullptr;
    QTableView *m_grid = nullptr;
    QLineEdit *m_filter = nullptr;
    QLineEdit *m_airlineCount = nullptr;
    QLineEdit *m_codeCount = nullptr;
};

// cmd_ParkingCodes on the main form: frm_ParkingCode, modal, when the database stands in the program's folder,
// else a box that says it is missing.
class ParkingCodeController : public QObject
{
    Q_OBJECT

public:
    explicit ParkingCodeController(frm_Main &form);

    // The folder in which parkingspecs.db is looked for: the program's own unless one is set (tests). An
    // empty folder goes back to the program's.
    static void setDatabaseFolder(const QString &folder);
    static QString databaseFolder();

public slots:
    void cmd_ParkingCodes_Click();

private:
    frm_Main &m_form;
};
