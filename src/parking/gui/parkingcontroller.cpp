#include "parking/gui/parkingcontroller.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPushButton>

#include "core/dialogs.h"
#include "parking/gui/frm_parkingcode.h"

namespace fleetwright {

namespace {

const QString DATABASE_FILE = QStringLiteral("parkingspecs.db");
constexpr char16_t DATABASE_MISSING[] = u"The file 'parkingspecs.db' is missing in your installation folder. "
                                        u"Re-install Fleetwright or copy the file back to fix this issue.";

QString databaseFolderSetting;

} // namespace

ParkingController::ParkingController(const ParkingContext &context)
    : QObject(context.window)
    , m_context(context)
{
    setObjectName(QStringLiteral("ParkingController"));
    connect(context.cmd_ParkingCodes, &QPushButton::clicked, this, &ParkingController::cmd_ParkingCodes_Click);
}

void ParkingController::setDatabaseFolder(const QString &folder)
{
    databaseFolderSetting = folder;
}

QString ParkingController::databaseFolder()
{
    return databaseFolderSetting.isEmpty() ? QCoreApplication::applicationDirPath() : databaseFolderSetting;
}

void ParkingController::cmd_ParkingCodes_Click()
{
    const QString path = QDir(databaseFolder()).filePath(DATABASE_FILE);
    if (!QFileInfo(path).isFile()) {
        m_context.dialogs.critical(DATABASE_MISSING, u"");
        return;
    }
    frm_ParkingCode dialog(m_context.txt_atc_ParkingCodes, m_context.dialogs, m_context.state, path, m_context.window);
    if (dialog.databaseOpened())
        dialog.exec();
}

} // namespace fleetwright
