#include "parking/gui/parkingdatabase.h"

#include <atomic>

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace fleetwright {

namespace {

const QString DRIVER = QStringLiteral("QSQLITE");
const QString ALL_ROWS = QStringLiteral("SELECT [Airline], [Code] FROM parkingSpecs");
// LIKE folds ASCII letters only; "\" makes the user's "%" and "_" plain characters.
const QString FILTERED_ROWS = QStringLiteral("SELECT [Airline], [Code] FROM parkingSpecs "
                                             "where Airline like ? escape '\\'");

QString likePattern(const QString &airlinePart)
{
    QString escaped;
    escaped.reserve(airlinePart.size() + 2);
    escaped += QLatin1Char('%');
    for (const QChar ch : airlinePart) {
        if (ch == QLatin1Char('\\') || ch == QLatin1Char('%') || ch == QLatin1Char('_'))
            escaped += QLatin1Char('\\');
        escaped += ch;
    }
    escaped += QLatin1Char('%');
    return escaped;
}

QString errorText(const QSqlError &error)
{
    const QString text = error.text().trimmed();
    return text.isEmpty() ? QStringLiteral("Unspecified error") : text;
}

} // namespace

ParkingDatabase::ParkingDatabase()
{
    static std::atomic<unsigned> instances {0};
    m_connectionName = QStringLiteral("fleetwright-parking-%1").arg(++instances);
}

ParkingDatabase::~ParkingDatabase()
{
    close();
}

bool ParkingDatabase::open(const QString &filePath)
{
    close();
    m_lastError.clear();
    QSqlDatabase db = QSqlDatabase::addDatabase(DRIVER, m_connectionName);
    db.setDatabaseName(filePath);
    // Read-only, which also keeps SQLite from creating a missing file.
    db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
    if (db.open())
        return true;
    m_lastError = db.isValid() ? errorText(db.lastError()) : QStringLiteral("The SQLite driver is not available");
    db = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connectionName);
    return false;
}

bool ParkingDatabase::isOpen() const
{
    return QSqlDatabase::contains(m_connectionName) && QSqlDatabase::database(m_connectionName, false).isOpen();
}

std::optional<std::vector<ParkingSpec>> ParkingDatabase::allRows()
{
    return run(ALL_ROWS, nullptr);
}

std::optional<std::vector<ParkingSpec>> ParkingDatabase::filteredRows(const QString &airlinePart)
{
    return run(FILTERED_ROWS, &airlinePart);
}

std::optional<std::vector<ParkingSpec>> ParkingDatabase::run(const QString &statement, const QString *airlinePart)
{
    m_lastError.clear();
    if (!isOpen()) {
        m_lastError = QStringLiteral("The parking code database is not open");
        return std::nullopt;
    }
    QSqlQuery query(QSqlDatabase::database(m_connectionName, false));
    query.setForwardOnly(true);
    if (!query.prepare(statement)) {
        m_lastError = errorText(query.lastError());
        return std::nullopt;
    }
    if (airlinePart)
        query.addBindValue(likePattern(*airlinePart));
    if (!query.exec()) {
        m_lastError = errorText(query.lastError());
        return std::nullopt;
    }
    std::vector<ParkingSpec> rows;
    while (query.next())
        rows.push_back({query.value(0).toString(), query.value(1).toString()});
    // A file that breaks off in the middle of the table ends the walk with an error, not with fewer rows.
    if (query.lastError().isValid()) {
        m_lastError = errorText(query.lastError());
        return std::nullopt;
    }
    return rows;
}

void ParkingDatabase::close()
{
    if (!QSqlDatabase::contains(m_connectionName))
        return;
    {
        QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(m_connectionName);
}

} // namespace fleetwright
