// The parking database that the build writes beside the program holds every row
// of the table it is made from.
#include <fstream>
#include <string>

#include <QCoreApplication>

#include <gtest/gtest.h>

#include "parking/gui/parkingdatabase.h"

TEST(ShippedParkingDatabase, HoldsEveryRowOfItsTableInOrder)
{
    int argc = 1;
    char name[] = "test_parking";
    char *argv[] = {name, nullptr};
    const QCoreApplication application(argc, argv); // the database driver is a plugin, loaded through it
    fleetwright::ParkingDatabase database;
    ASSERT_TRUE(database.open(QStringLiteral(FLEETWRIGHT_PARKING_DATABASE))) << database.lastError().toStdString();
    const auto rows = database.allRows();
    ASSERT_TRUE(rows.has_value()) << database.lastError().toStdString();
    std::ifstream table(FLEETWRIGHT_PARKING_TABLE);
    std::string line;
    ASSERT_TRUE(std::getline(table, line) && line == "Airline\tCode");
    std::size_t row = 0;
    for (; std::getline(table, line) && row < rows->size(); ++row)
        EXPECT_EQ(((*rows)[row].Airline + u'\t' + (*rows)[row].Code).toStdString(), line) << "row " << row;
    EXPECT_TRUE(table.eof());
    EXPECT_EQ(row, rows->size());
}
