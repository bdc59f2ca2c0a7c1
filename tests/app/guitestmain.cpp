#include <QApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

int main(int argc, char *argv[])
{
    // Without a display unless the caller chose a platform.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // A window made outside the fixtures journals its changes here, never in the user's own data folder.
    const QTemporaryDir history;
    if (qEnvironmentVariableIsEmpty("FLEETWRIGHT_HISTORY"))
        qputenv("FLEETWRIGHT_HISTORY", history.path().toLocal8Bit());
    QApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
