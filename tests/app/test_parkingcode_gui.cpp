#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFontMetrics>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTableView>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include "app/frm_main.h"
#include "app/gui/folderwidgets.h"
#include "parking/frm_parkingcode.h"
#include "startupfixture.h"
#include "support/tooltips.h"

using fleetwright::DialogKind;
using fleetwright::DialogRecord;
using fleetwright::test::readBytes;
using fleetwright::test::writeBytes;
namespace fs = std::filesystem;

namespace {

const std::vector<std::pair<QString, QString>> AIRLINES = {
    {QStringLiteral("Corvane Air"), QStringLiteral("CVA")},
    {QStringLiteral("Sky 100% Cargo"), QStringLiteral("SKC")},
    {QStringLiteral("Hex'Air"), QStringLiteral("HEX")},
    {QStringLiteral("Blue_Line"), QStringLiteral("BLU")},
    {QStringLiteral("Bluexline"), QStringLiteral("BLX")},
    {QStringLiteral("Lufthansa"), QStringLiteral("DLH")},
    {QStringLiteral("KLM Royal Dutch Airlines"), QStringLiteral("KLM")},
};

const DialogRecord TOO_MANY {DialogKind::Information, u"",
                             u"You are not allowed to add more than five (5) parkig codes"};
const DialogRecord LOAD_FAILED {DialogKind::Critical, u"", u"Error opening the parking code file"};

void makeDatabase(const fs::path &file)
{
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("test-parking"));
        db.setDatabaseName(QString::fromStdString(file.string()));
        ASSERT_TRUE(db.open());
        QSqlQuery query(db);
        ASSERT_TRUE(query.exec(QStringLiteral("CREATE TABLE parkingSpecs (Airline TEXT, Code TEXT)")));
        ASSERT_TRUE(query.prepare(QStringLiteral("INSERT INTO parkingSpecs VALUES (?, ?)")));
        for (const auto &[airline, code] : AIRLINES) {
            query.addBindValue(airline);
            query.addBindValue(code);
            ASSERT_TRUE(query.exec());
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("test-parking"));
}

template<typename T> T *control(const QWidget &form, const char *name)
{
    return form.findChild<T *>(QString::fromLatin1(name));
}

QString text(const QWidget &form, const char *name)
{
    return control<QLineEdit>(form, name)->text();
}

QStringList airlines(const QTableView *grid)
{
    QStringList names;
    for (int row = 0; row < grid->model()->rowCount(); ++row)
        names << grid->model()->index(row, 1).data().toString();
    return names;
}

bool contains(const std::u16string &text, const std::u16string &part)
{
    return text.find(part) != std::u16string::npos;
}

void clickRow(QTableView *grid, int row, int column = 1)
{
    const QModelIndex index = grid->model()->index(row, column);
    grid->scrollTo(index);
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, grid->visualRect(index).center());
}

class ParkingDialog : public ::testing::Test
{
protected:
    void SetUp() override { fleetwright::programState() = {}; }

    std::unique_ptr<frm_ParkingCode> open(const fs::path &file)
    {
        auto dialog = std::make_unique<frm_ParkingCode>(&codes, dialogs, QString::fromStdString(file.string()));
        dialog->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(dialog.get()));
        return dialog;
    }

    fleetwright::test::TempDir dir;
    fleetwright::ScriptedDialogs dialogs;
    QLineEdit codes;
};

} // namespace

TEST_F(ParkingDialog, ListsTheAirlinesFittedToTheirText)
{
    makeDatabase(dir / "parkingspecs.db");
    const auto dialog = open(dir / "parkingspecs.db");
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Selelct the parking code"));
    QTableView *grid = dialog->MSHFlexGrid1();
    EXPECT_EQ(grid->objectName(), QStringLiteral("MSHFlexGrid1"));
    EXPECT_EQ(grid->model()->columnCount(), 3);
    EXPECT_EQ(grid->model()->headerData(1, Qt::Horizontal).toString(), QStringLiteral("Airline"));
    EXPECT_EQ(grid->model()->headerData(2, Qt::Horizontal).toString(), QStringLiteral("Code"));
    ASSERT_EQ(airlines(grid).size(), 7);
    EXPECT_EQ(airlines(grid).front(), QStringLiteral("Corvane Air"));
    EXPECT_EQ(grid->model()->index(6, 2).data().toString(), QStringLiteral("KLM"));
    EXPECT_EQ(text(*dialog, "txt_airlinecodes"), QStringLiteral("7"));
    EXPECT_EQ(text(*dialog, "txt_parkingcodes"), QStringLiteral("0 of 5"));

    // Widest text in the form's font plus 120 twips, at 15 twips a pixel; the fixed column gets the margin.
    const QFontMetrics metrics = dialog->fontMetrics();
    EXPECT_EQ(grid->columnWidth(0), 8);
    EXPECT_EQ(grid->columnWidth(1), metrics.horizontalAdvance(QStringLiteral("KLM Royal Dutch Airlines")) + 8);
    EXPECT_EQ(
        grid->columnWidth(2),
        std::max(metrics.horizontalAdvance(QStringLiteral("Code")), metrics.horizontalAdvance(QStringLiteral("SKC")))
            + 8);

    const std::pair<const char *, QString> captions[] = {
        {"Label1", QStringLiteral("filter condition")},
        {"Label2", QStringLiteral("listed parking codes")},
        {"Label3", QStringLiteral("assigned parking codes")},
    };
    for (const auto &[name, caption] : captions)
        EXPECT_EQ(control<QLabel>(*dialog, name)->text(), caption) << name;
    auto *close = control<QPushButton>(*dialog, "CancelButton");
    EXPECT_EQ(close->text(), QStringLiteral("&Close"));
    EXPECT_EQ(plainToolTip(close), QStringLiteral("Press the ESC key or click this button to close the dialog."));
    EXPECT_EQ(plainToolTip(grid),
              QStringLiteral("Click on an item to add the parking code in the respective atc_parking_codes filed on "
                             "the main form. Click a second time to remove the parking code."));
    EXPECT_EQ(plainToolTip(control<QLineEdit>(*dialog, "txt_parkingcodes")),
              QStringLiteral("# of parking codes already assigned to the [fltsim.x] variation you edit"));
    EXPECT_EQ(plainToolTip(control<QLineEdit>(*dialog, "txt_airlinecodes")),
              QStringLiteral("# of airlines found that match the filter criteria (inclusive no filter)"));
    EXPECT_EQ(plainToolTip(control<QLineEdit>(*dialog, "txt_FilterParkingCodes")),
              QStringLiteral("Enter a filter condition to reduce the elements in the airline list. The filter "
                             "condition can be any part of the name."));

    // Esc closes the dialog.
    QTest::keyClick(dialog.get(), Qt::Key_Escape);
    EXPECT_FALSE(dialog->isVisible());
}

TEST_F(ParkingDialog, ClicksAddAndTakeOutCodes)
{
    makeDatabase(dir / "parkingspecs.db");
    const auto dialog = open(dir / "parkingspecs.db");
    QTableView *grid = dialog->MSHFlexGrid1();

    // A click on the airline takes the row's code, and the code column becomes the current one.
    clickRow(grid, 0);
    EXPECT_EQ(codes.text(), QStringLiteral("CVA"));
    EXPECT_EQ(text(*dialog, "txt_parkingcodes"), QStringLiteral("1 of 5"));
    EXPECT_EQ(grid->currentIndex(), grid->model()->index(0, 2));
    for (int row = 1; row < 5; ++row)
        clickRow(grid, row, 2);
    EXPECT_EQ(codes.text(), QStringLiteral("CVA,SKC,HEX,BLU,BLX"));
    EXPECT_EQ(text(*dialog, "txt_parkingcodes"), QStringLiteral("5 of 5"));

    clickRow(grid, 5);
    EXPECT_EQ(codes.text(), QStringLiteral("CVA,SKC,HEX,BLU,BLX"));
    ASSERT_EQ(dialogs.records(), std::vector<DialogRecord> {TOO_MANY});

    // Taken out of five, the rest run together; the counter then sees one code.
    clickRow(grid, 2);
    EXPECT_EQ(codes.text(), QStringLiteral("CVASKCBLUBLX"));
    EXPECT_EQ(text(*dialog, "txt_parkingcodes"), QStringLiteral("1 of 5"));

    codes.setText(QStringLiteral("DLH,KLM"));
    clickRow(grid, 5);
    EXPECT_EQ(codes.text(), QStringLiteral("KLM"));
    clickRow(grid, 6);
    EXPECT_EQ(codes.text(), QString());
    EXPECT_EQ(text(*dialog, "txt_parkingcodes"), QStringLiteral("0 of 5"));
    EXPECT_EQ(dialogs.records().size(), 1u);
}

TEST_F(ParkingDialog, FilterTakesEveryCharacterLiterally)
{
    makeDatabase(dir / "parkingspecs.db");
    const auto dialog = open(dir / "parkingspecs.db");
    QTableView *grid = dialog->MSHFlexGrid1();
    auto *filter = control<QLineEdit>(*dialog, "txt_FilterParkingCodes");
    const int airlineWidth = grid->columnWidth(1);

    QTest::keyClicks(filter, QStringLiteral("aIr"));
    EXPECT_EQ(airlines(grid),
              (QStringList {QStringLiteral("Corvane Air"), QStringLiteral("Hex'Air"),
                            QStringLiteral("KLM Royal Dutch Airlines")}));
    EXPECT_EQ(text(*dialog, "txt_airlinecodes"), QStringLiteral("3"));
    // The columns keep the widths of the load.
    EXPECT_EQ(grid->columnWidth(1), airlineWidth);

    const std::pair<QString, QStringList> cases[] = {
        {QStringLiteral("%"), {QStringLiteral("Sky 100% Cargo")}},
        {QStringLiteral("e_l"), {QStringLiteral("Blue_Line")}},
        {QStringLiteral("x'a"), {QStringLiteral("Hex'Air")}},
        {QStringLiteral("\\"), {}},
        {QStringLiteral("zzz"), {}},
    };
    for (const auto &[condition, expected] : cases) {
        SCOPED_TRACE(condition.toStdString());
        filter->clear();
        QTest::keyClicks(filter, condition);
        EXPECT_EQ(airlines(grid), expected);
        EXPECT_EQ(text(*dialog, "txt_airlinecodes"), QString::number(expected.size()));
    }
    filter->clear();
    EXPECT_EQ(airlines(grid).size(), 7);
    EXPECT_EQ(text(*dialog, "txt_airlinecodes"), QStringLiteral("7"));
    EXPECT_TRUE(dialogs.records().empty());
}

TEST_F(ParkingDialog, FileThatIsNoDatabaseShowsTheDialogEmpty)
{
    const std::string garbage(4096, '\x5a');
    writeBytes(dir / "parkingspecs.db", garbage);
    codes.setText(QStringLiteral("KLM"));
    const auto dialog = open(dir / "parkingspecs.db");
    EXPECT_EQ(dialogs.records(), std::vector<DialogRecord> {LOAD_FAILED});
    EXPECT_TRUE(dialog->databaseOpened());
    EXPECT_EQ(dialog->MSHFlexGrid1()->model()->rowCount(), 0);
    EXPECT_EQ(text(*dialog, "txt_airlinecodes"), QString());
    // Each key of a filter then fails its query; the box names the routine, and the dialog stays.
    QTest::keyClicks(control<QLineEdit>(*dialog, "txt_FilterParkingCodes"), QStringLiteral("a"));
    ASSERT_EQ(dialogs.records().size(), 2u);
    EXPECT_EQ(dialogs.records()[1].kind, DialogKind::Critical);
    EXPECT_TRUE(contains(dialogs.records()[1].text, u"Procedure txt_FilterParkingCodes_Change\r\n"));
    EXPECT_TRUE(dialog->isVisible());
    dialog->close();
    EXPECT_EQ(readBytes(dir / "parkingspecs.db"), garbage);
    EXPECT_EQ(codes.text(), QStringLiteral("KLM"));
}

TEST_F(ParkingDialog, MissingFileIsNotCreated)
{
    frm_ParkingCode dialog(&codes, dialogs, QString::fromStdString((dir / "parkingspecs.db").string()));
    EXPECT_FALSE(dialog.databaseOpened());
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_TRUE(contains(dialogs.records()[0].text, u"Procedure Form_Load\r\nLine: 0\r\nFormular frm_ParkingCode"));
    EXPECT_FALSE(fs::exists(dir / "parkingspecs.db"));
}

TEST_F(ParkingDialog, ShippedDatabaseHasEveryRowOfItsTable)
{
    const fs::path shipped = fs::path(FLEETWRIGHT_PROGRAM_DIR) / "parkingspecs.db";
    if (!fs::exists(shipped))
        GTEST_SKIP() << "no parkingspecs.db beside the program";
    std::ifstream table(FLEETWRIGHT_PARKING_TABLE);
    int rows = -1; // the header line
    for (std::string line; std::getline(table, line);)
        ++rows;
    ASSERT_GT(rows, 0);

    const auto dialog = open(shipped);
    EXPECT_EQ(dialog->MSHFlexGrid1()->model()->rowCount(), rows);
    EXPECT_EQ(text(*dialog, "txt_airlinecodes"), QString::number(rows));
    auto *filter = control<QLineEdit>(*dialog, "txt_FilterParkingCodes");
    for (const QString &condition : {QStringLiteral("'"), QStringLiteral("%"), QStringLiteral("lufthansa")}) {
        filter->setText(condition);
        EXPECT_LT(dialog->MSHFlexGrid1()->model()->rowCount(), rows);
    }
    EXPECT_GT(dialog->MSHFlexGrid1()->model()->rowCount(), 0);
    EXPECT_TRUE(dialogs.records().empty());
}

using ParkingCodesButton = fleetwright::test::StartUp;

TEST_F(ParkingCodesButton, OpensTheDialogOverTheOpenRowOrSaysTheFileIsMissing)
{
    writeBytes(dir / "Corvane 737" / "aircraft.cfg", "[fltsim.0]\r\ntitle=Blue\r\natc_parking_codes=DLH\r\n");
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    EXPECT_FALSE(c.cmd_ParkingCodes->isEnabled());
    c.Dir1->setPath(QDir::toNativeSeparators(QString::fromStdString((dir / "Corvane 737").string())));
    ASSERT_TRUE(c.cmd_ParkingCodes->isEnabled());
    ASSERT_EQ(c.txt_atc_ParkingCodes->text(), QStringLiteral("DLH"));

    ParkingCodeController::setDatabaseFolder(QString::fromStdString(dir.path().string()));
    c.cmd_ParkingCodes->click();
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0],
              (DialogRecord {DialogKind::Critical, u"",
                             u"The file 'parkingspecs.db' is missing in your installation folder. Re-install "
                             u"Fleetwright or copy the file back to fix this issue."}));

    makeDatabase(dir / "parkingspecs.db");
    bool seen = false;
    QTimer::singleShot(0, [&] {
        auto *dialog = qobject_cast<frm_ParkingCode *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        seen = true;
        EXPECT_EQ(text(*dialog, "txt_parkingcodes"), QStringLiteral("1 of 5"));
        clickRow(dialog->MSHFlexGrid1(), 6);
        control<QPushButton>(*dialog, "CancelButton")->click();
    });
    c.cmd_ParkingCodes->click();
    ParkingCodeController::setDatabaseFolder({});
    EXPECT_TRUE(seen);
    // The box on the main form changed at once and keeps the change; the file is not written.
    EXPECT_EQ(c.txt_atc_ParkingCodes->text(), QStringLiteral("DLH,KLM"));
    EXPECT_EQ(readBytes(dir / "Corvane 737" / "aircraft.cfg"), "[fltsim.0]\r\ntitle=Blue\r\natc_parking_codes=DLH\r\n");
    EXPECT_EQ(dialogs.records().size(), 1u);
}
