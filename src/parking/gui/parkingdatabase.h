#pragma once

#include <optional>
#include <vector>

#include <QString>

namespace fleetwright {

// One row of the table parkingSpecs.
struct ParkingSpec
{
    QString Airline;
    QString Code;
};

// The parking code database: the SQLite file parkingspecs.db beside the program, table
// parkingSpecs(Airline, Code). It is only ever read: the file is opened read-only, and a file that is not
// there is not created.
//
// Each instance has a connection of its own, so two dialogs (or a dialog and a test) never share one.
class ParkingDatabase
{
public:
    ParkingDatabase();
    ~ParkingDatabase();
    ParkingDatabase(const ParkingDatabase &) = delete;
    ParkingDatabase &operator=(const ParkingDatabase &) = delete;

    // Opens filePath; false when it cannot be opened, with the reason in lastError(). A file that opens is
    // not yet known to be a database: the first query tells.
    bool open(const QString &filePath);
    bool isOpen() const;
    // All rows, in the order the table gives them; nothing when the query fails (lastError() says why).
    std::optional<std::vector<ParkingSpec>> allRows();
    // The rows whose Airline contains airlinePart, without regard to case. The text is taken literally:
    // "'", "%" and "_" are plain characters. An empty text gives all rows with an airline.
    std::optional<std::vector<ParkingSpec>> filteredRows(const QString &airlinePart);
    void close();

    QString lastError() const { return m_lastError; }

private:
    std::optional<std::vector<ParkingSpec>> run(const QString &statement, const QString *airlinePart);

    QString m_connectionName;
    QString m_lastError;
};

} // namespace fleetwright
