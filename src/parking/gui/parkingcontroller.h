#pragma once

#include <QObject>
#include <QString>

class QLineEdit;
class QPushButton;
class QWidget;

namespace fleetwright {

class Dialogs;
struct ProgramState;

// What the parking codes work on: the main window's button and the open variation's codes box, and the
// services the dialog uses. Members named for controls hold those controls.
struct ParkingContext
{
    QWidget *window; // the controller's parent and the dialog's owner
    QPushButton *cmd_ParkingCodes;
    QLineEdit *txt_atc_ParkingCodes;
    Dialogs &dialogs;
    const ProgramState &state;
};

// cmd_ParkingCodes on the main form: frm_ParkingCode, modal, when the database stands in the program's folder,
// else a box that says it is missing.
class ParkingController : public QObject
{
    Q_OBJECT

public:
    explicit ParkingController(const ParkingContext &context);

    // The folder in which parkingspecs.db is looked for: the program's own unless one is set (tests). An
    // empty folder goes back to the program's.
    static void setDatabaseFolder(const QString &folder);
    static QString databaseFolder();

public slots:
    void cmd_ParkingCodes_Click();

private:
    ParkingContext m_context;
};

} // namespace fleetwright
