// The parking code dialog over a database of the test's own, and the main form's button that opens it.
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTableView>

#include "parking/gui/frm_parkingcode.h"
#include "parking/gui/parkingcontroller.h"
#include "startupfixture.h"

using namespace fleetwright;
using test::StartUp;

namespace {

void makeDatabase(const std::filesystem::path &file)
{
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("test-parking"));
        db.setDatabaseName(QString::fromStdString(file.string()));
        ASSERT_TRUE(db.open());
        ASSERT_TRUE(QSqlQuery(db).exec(QStringLiteral("CREATE TABLE parkingSpecs (Airline TEXT, Code TEXT)")));
        ASSERT_TRUE(QSqlQuery(db).exec(QStringLiteral(
            "INSERT INTO parkingSpecs VALUES ('Corvane Air', 'CVA'), ('Sky 100% Cargo', 'SKC'), ('Hex''Air', 'HEX'), "
            "('Blue_Line', 'BLU'), ('Bluexline', 'BLX'), ('Lufthansa', 'DLH'), ('KLM Royal Dutch Airlines', 'KLM')")));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("test-parking"));
}

void clickRow(QTableView *grid, int row)
{
    grid->scrollTo(grid->model()->index(row, 1));
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, grid->visualRect(grid->model()->index(row, 1)).center());
}

} // namespace

TEST_F(StartUp, ParkingDialogClicksAddAndTakeOutCodesAndFiltersLiterally)
{
    makeDatabase(dir / "parkingspecs.db");
    QLineEdit codes;
    const ProgramState state;
    frm_ParkingCode dialog(&codes, dialogs, state, test::nativeText(dir / "parkingspecs.db"));
    dialog.show();
    QTableView *grid = dialog.MSHFlexGrid1();
    for (int row = 0; row < 6; ++row)
        clickRow(grid, row);
    EXPECT_EQ(codes.text(), QStringLiteral("CVA,SKC,HEX,BLU,BLX"));
    EXPECT_EQ(dialogs.records().size(), 1u) << "a sixth code is refused";
    clickRow(grid, 2);
    EXPECT_EQ(codes.text(), QStringLiteral("CVASKCBLUBLX")) << "taken out of five, the rest run together";
    EXPECT_EQ(dialog.findChild<QLineEdit *>(QStringLiteral("txt_parkingcodes"))->text(), QStringLiteral("1 of 5"));

    // Widest text in the form's font plus 120 twips, at 15 twips a pixel; a filter keeps the widths.
    const int width = dialog.fontMetrics().horizontalAdvance(QStringLiteral("KLM Royal Dutch Airlines")) + 8;
    for (const auto &[condition, first, count] :
         {std::tuple {"aIr", "Corvane Air", 3}, {"%", "Sky 100% Cargo", 1}, {"e_l", "Blue_Line", 1}, {"\\", "", 0}}) {
        dialog.findChild<QLineEdit *>(QStringLiteral("txt_FilterParkingCodes"))
            ->setText(QString::fromLatin1(condition));
        EXPECT_EQ(grid->model()->rowCount(), count) << condition;
        EXPECT_EQ(grid->model()->index(0, 1).data().toString(), QString::fromLatin1(first));
    }
    EXPECT_EQ(dialog.findChild<QLineEdit *>(QStringLiteral("txt_airlinecodes"))->text(), QStringLiteral("0"));
    EXPECT_EQ(grid->columnWidth(1), width);
}

TEST_F(StartUp, ParkingCodesButtonOpensTheDialogOverTheOpenRow)
{
    frm_Main form(&dialogs);
    const auto aircraft = openAircraft(form, "[fltsim.0]\r\ntitle=Blue\r\natc_parking_codes=DLH\r\n");
    ParkingController::setDatabaseFolder(QString::fromStdString(dir.path().string()));
    form.controls().cmd_ParkingCodes->click();
    EXPECT_EQ(dialogs.records().size(), 1u) << "the database is missing";
    makeDatabase(dir / "parkingspecs.db");
    test::ModalDialogs<frm_ParkingCode> picking([](frm_ParkingCode &dialog) {
        clickRow(dialog.MSHFlexGrid1(), 6);
        dialog.findChild<QPushButton *>(QStringLiteral("CancelButton"))->click();
    });
    form.controls().cmd_ParkingCodes->click();
    ParkingController::setDatabaseFolder({});
    EXPECT_EQ(picking.opened, 1);
    EXPECT_EQ(form.controls().txt_atc_ParkingCodes->text(), QStringLiteral("DLH,KLM")) << "the row keeps the change";
    EXPECT_EQ(test::readBytes(aircraft / "aircraft.cfg"), "[fltsim.0]\r\ntitle=Blue\r\natc_parking_codes=DLH\r\n");
}
