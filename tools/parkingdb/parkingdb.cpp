// Writes the parking code database from its table:
//
//     fleetwright-parkingdb data/parking/airlines.tsv <program folder>/parkingspecs.db
//
// The table is UTF-8, one row a line, two columns split by a tab, under the header line "Airline<TAB>Code":
//
//     Airline	Code
//     1Time Airline	RNX
//
// The database gets the table parkingSpecs(Airline, Code) with the rows in the file's order. It is written
// under a temporary name and renamed over the old one only when complete, so a failed run leaves the old file
// as it was. A line with another number of columns fails the run, naming the line.

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <QCoreApplication>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>
#include <QStringDecoder>
#include <QStringList>

namespace {

const QString HEADER = QStringLiteral("Airline\tCode");
const QString CONNECTION = QStringLiteral("parkingdb");

struct Row
{
    QString airline;
    QString code;
};

void fail(const QString &message)
{
    std::fprintf(stderr, "fleetwright-parkingdb: %s\n", message.toLocal8Bit().constData());
}

std::optional<std::vector<Row>> readTable(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        fail(QStringLiteral("%1: %2").arg(path, file.errorString()));
        return std::nullopt;
    }
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = utf8(file.readAll());
    if (utf8.hasError()) {
        fail(QStringLiteral("%1: not UTF-8 text").arg(path));
        return std::nullopt;
    }
    QStringList lines = text.split(QLatin1Char('\n'));
    // The line break that ends the last line opens no row of its own.
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    for (QString &line : lines) {
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
    }
    if (lines.isEmpty() || lines.first() != HEADER) {
        fail(QStringLiteral("%1:1: the header line must be \"Airline<TAB>Code\"").arg(path));
        return std::nullopt;
    }

    std::vector<Row> rows;
    rows.reserve(static_cast<std::size_t>(lines.size()));
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QStringList columns = lines[i].split(QLatin1Char('\t'));
        if (columns.size() != 2) {
            fail(QStringLiteral("%1:%2: the line has %3 columns, 2 wanted (Airline, Code)")
                     .arg(path)
                     .arg(i + 1)
                     .arg(columns.size()));
            return std::nullopt;
        }
        rows.push_back({columns[0], columns[1]});
    }
    return rows;
}

bool execute(QSqlQuery &query, const QString &statement)
{
    if (query.exec(statement))
        return true;
    fail(QStringLiteral("%1: %2").arg(statement, query.lastError().text()));
    return false;
}

bool writeDatabase(const QString &path, const std::vector<Row> &rows)
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), CONNECTION);
    db.setDatabaseName(path);
    if (!db.open()) {
        fail(QStringLiteral("%1: %2").arg(path, db.lastError().text()));
        return false;
    }
    QSqlQuery query(db);
    if (!execute(query, QStringLiteral("CREATE TABLE parkingSpecs (Airline TEXT, Code TEXT)")))
        return false;
    if (!db.transaction()) {
        fail(QStringLiteral("%1: %2").arg(path, db.lastError().text()));
        return false;
    }
    if (!query.prepare(QStringLiteral("INSERT INTO parkingSpecs (Airline, Code) VALUES (?, ?)"))) {
        fail(query.lastError().text());
        return false;
    }
    for (const Row &row : rows) {
        query.bindValue(0, row.airline);
        query.bindValue(1, row.code);
        if (!query.exec()) {
            fail(QStringLiteral("%1: %2").arg(path, query.lastError().text()));
            return false;
        }
    }
    if (!db.commit()) {
        fail(QStringLiteral("%1: %2").arg(path, db.lastError().text()));
        return false;
    }
    return true;
}

// The connection is removed once nothing holds it any more.
bool writeAndClose(const QString &path, const std::vector<Row> &rows)
{
    const bool written = writeDatabase(path, rows);
    {
        QSqlDatabase db = QSqlDatabase::database(CONNECTION, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(CONNECTION);
    return written;
}

} // namespace

int main(int argc, char *argv[])
{
    // The SQLite driver is a plugin, and plugins are found through the application object.
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        fail(QStringLiteral("usage: fleetwright-parkingdb TABLE.tsv DATABASE.db"));
        return 2;
    }
    const std::optional<std::vector<Row>> rows = readTable(arguments[1]);
    if (!rows)
        return 1;

    const std::filesystem::path target = arguments[2].toStdU16String();
    std::filesystem::path temporary = target;
    temporary += ".new";
    std::error_code error;
    std::filesystem::remove(temporary, error);
    if (error) {
        fail(QStringLiteral("%1: %2").arg(QString::fromStdU16String(temporary.u16string()),
                                          QString::fromLocal8Bit(error.message())));
        return 1;
    }
    if (!writeAndClose(QString::fromStdU16String(temporary.u16string()), *rows)) {
        std::filesystem::remove(temporary, error);
        return 1;
    }
    std::filesystem::rename(temporary, target, error);
    if (error) {
        fail(QStringLiteral("%1: %2").arg(QString::fromStdU16String(target.u16string()),
                                          QString::fromLocal8Bit(error.message())));
        std::filesystem::remove(temporary, error);
        return 1;
    }
    std::printf("%zu rows written to %s\n", rows->size(), arguments[2].toLocal8Bit().constData());
    return 0;
}
