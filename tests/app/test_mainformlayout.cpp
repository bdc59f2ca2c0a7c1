#include <QAbstractButton>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QDir>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTabWidget>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include "app/gui/folderwidgets.h"
#include "app/gui/statusbarpanels.h"
#include "app/gui/textconvert.h"
#include "app/mainformlayout.h"
#include "platform/regional.h"
#include "common/tempdir.h"

namespace {

QString u16(const char16_t *text)
{
    return QString::fromUtf16(text);
}

QString captionOf(const QObject *control)
{
    if (auto *button = qobject_cast<const QAbstractButton *>(control))
        return button->text();
    if (auto *group = qobject_cast<const QGroupBox *>(control))
        return group->title();
    if (auto *label = qobject_cast<const QLabel *>(control))
        return label->text();
    return {};
}

class MainFormLayout : public testing::Test
{
protected:
    void SetUp() override { controls = buildMainForm(&form); }

    QMainWindow form;
    MainFormControls controls;
};

TEST_F(MainFormLayout, EveryNamedControlHasItsTypeCaptionAndTooltip)
{
    const QString exitTip3 = u16(u"vertical position (datum reference point)");
    struct Row
    {
        const char *name;
        const char *type;
        const char16_t *caption;
        const char16_t *tooltip;
    };
    const Row rows[] = {
        {"Drive1", "DriveListBox", u"", u"Select the hard disk"},
        {"Dir1", "DirListBox", u"",
         u"Select and change the current folder. Typing a folder name on the keyboard while this control has the "
         u"focus will move the selection (meaning if you type a 'w' in the folder list the first folder beginning "
         u"with a 'w' will be selected)."},
        {"cmd_DirUp", "QPushButton", u"Upwards",
         u"This button is only enabled when the currently selected folder is an aircraft folder. By clicking on this "
         u"button the folder view will move one level upwards, and the last folder will be automatically "
         u"pre-selected.  This way you don't have to scroll constantly in long folder lists."},
        {"opt_FS9", "QRadioButton", u"FS9", u"Select your '..\\\\<FS9-Dir>\\\\Aircraft' folder"},
        {"opt_FSX", "QRadioButton", u"FSX", u"Select your '..\\\\< FSX-Dir>\\\\SimObjects' folder"},
        {"combo_SimFolder", "QComboBox", u"",
         u"Lists all SimObjectPaths.x entries in your FSX.CFG. Select a path entry to quick jump to the respective "
         u"folder"},
        {"fraQuickNavigate", "QGroupBox", u"Quick navigate", u""},
        {"ListView1", "QTreeWidget", u"",
         u"This is the data grid view of the selected aircraft.cfg.  Right-click to see several options like sort, "
         u"delete etc."},
        {"SSTab1", "QTabWidget", u"", u""},
        {"StatusBar1", "StatusBarPanels", u"", u""},
        {"cmd_cfg_Update", "QPushButton", u"&1. Update",
         u"Update aircraft.cfg with new values for wing_span, exit.x, atc_model && atc_type"},
        {"cmd_Effect_Update", "QPushButton", u"&2. Update", u"Update the aircraft.cfg with chosen effect settings"},
        {"cmd_Associate", "QPushButton", u"&3. Update",
         u"Update the selected [fltsim.x] section with chosen texture, model and airfile"},
        {"combo_Texture", "QComboBox", u"", u"Lists all available textures in the current aircraft folder"},
        {"combo_Model", "QComboBox", u"", u"Lists all available models in the current aircraft folder"},
        {"combo_Airfile", "QComboBox", u"", u"Lists all available airfiles ('*.air') in the current aircraft folder"},
        {"txt_CurrentTexture", "QLineEdit", u"", u""},
        {"txt_CurrentModel", "QLineEdit", u"", u""},
        {"txt_CurrentAirfile", "QLineEdit", u"", u""},
        {"txt_Description", "QPlainTextEdit", u"", u""},
        {"fraAircraftType", "QGroupBox", u"Aircraft type (.air)", u""},
        {"opt_ac_Normal", "QRadioButton", u"Normal (0)",
         u"Set aircraft type to 'Normal' - the aircraft is visible in your FS9 aircraft selection menu"},
        {"opt_ac_Helicopter", "QRadioButton", u"Helicopter (1)",
         u"Set aircraft type to 'Helicopter' - the aircraft is visible in your FS9 aircraft selection menu"},
        {"opt_ac_AI", "QRadioButton", u"AI (2)",
         u"Set aircraft type to 'AI' - the aircraft is not visible in your FS9 aircraft selection menu"},
        {"opt_ac_Nok", "QRadioButton", u"n/a",
         u"There is no aircraft section (105) in your airfile ('*.air') - it is most likely an FSX aircraft"},
        {"lst_Airfile", "QListWidget", u"", u"List all airfiles ('*.air') in the selected aircraft folder"},
        {"txt_FSXVersion", "QLineEdit", u"", u"Shows if this is an FSX or an FS8/9 model [read-only]"},
        {"txt_FS9Radius", "QLineEdit", u"", u"Edit the model radius (FS8/FS9 only)"},
        {"txt_WingSpan_Org", "QLineEdit", u"", u"Current wing_span value from aircraft.cfg [read-only]."},
        {"txt_WingSpan_New", "QLineEdit", u"", u"Enter new wing_span value here"},
        {"txt_WingSpan_Org_C1", "QLineEdit", u"", u"Current wing_span value converted to meter [read-only]."},
        {"txt_WingSpan_New_C1", "QLineEdit", u"", u"New wing_span value converted to meter [read-only]."},
        {"txt_WingSpan_Org_C2", "QLineEdit", u"",
         u"Current wing_span value converted to meter && devided by two [read-only]."},
        {"txt_WingSpan_New_C2", "QLineEdit", u"",
         u"New wing_span value converted to meter && devided by two [read-only]."},
        {"txt_FSX_Spot_Org", "QLineEdit", u"",
         u"This is how big an FSX parking spot must be to host the aircraft  for the current wing_span value "
         u"[read-only]."},
        {"txt_FSX_Spot_New", "QLineEdit", u"",
         u"This is how big an FSX parking spot must be to host the aircraft if new wing_span value is applied"},
        {"chk_Exit_0", "QCheckBox", u"", u"All Exit.0 values defined, a jetway is possible [read-only]"},
        {"chk_Exit_1", "QCheckBox", u"", u"All Exit.1 values defined, a jetway is possible [read-only]"},
        {"chk_Exit_2", "QCheckBox", u"", u"All Exit.2 values defined, a jetway is possible [read-only]"},
        {"txt_Jetways", "QLineEdit", u"", u"Does the current configuration allow Jetways?"},
        {"lblSelections", "QLabel", u"",
         u"This represents the 'atc_parking_types=' entry in the current [fltsim.x] section"},
        {"picCombo", "QFrame", u"",
         u"This represents the 'atc_parking_types=' entry in the current [fltsim.x] section"},
        {"lstParking", "QListWidget", u"", u""},
        {"txt_atc_ParkingCodes", "QLineEdit", u"",
         u"This represents the 'atc_parking_codes=' entry in the current [fltsim.x] section"},
        {"cmdDropDown", "QToolButton", u"", u"Open pick-list to select  'parking types'"},
        {"cmd_ParkingCodes", "QPushButton", u"...", u"Select the parking codes from a list in an separate dialog"},
        {"txt_Title", "QLineEdit", u"", u""},
        {"txt_ui_CreatedBy", "QLineEdit", u"", u""},
        {"txt_ui_TypeRole", "QLineEdit", u"", u""},
        {"txt_ui_Manufacturer", "QLineEdit", u"", u""},
        {"txt_ui_Type", "QLineEdit", u"", u""},
        {"txt_ui_Variation", "QLineEdit", u"", u""},
        {"txt_atc_Id", "QLineEdit", u"", u""},
        {"txt_atc_Flight_Number", "QLineEdit", u"", u""},
        {"txt_atc_Airline", "QLineEdit", u"", u""},
        {"txt_atc_Model", "QLineEdit", u"", u""},
        {"chk_atc_heavy", "QCheckBox", u"atc_heavy", u""},
        {"txt_general_atc_model", "QLineEdit", u"", u""},
        {"txt_general_atc_type", "QLineEdit", u"", u""},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        auto *control = form.findChild<QWidget *>(QString::fromLatin1(row.name));
        ASSERT_NE(control, nullptr);
        EXPECT_TRUE(control->inherits(row.type)) << control->metaObject()->className();
        EXPECT_EQ(captionOf(control), u16(row.caption));
        EXPECT_EQ(control->toolTip(), u16(row.tooltip));
    }

    const struct
    {
        const char *key;
        const char *button;
    } updateAll[] = {
        {"atc_airline", "cmd_Update_all_atc_airline"},
        {"atc_heavy", "cmd_Update_all_atc_heavy"},
        {"atc_model", "cmd_Update_all_atc_model"},
        {"atc_parking_codes", "cmd_Update_all_atc_Parking_codes"},
        {"atc_parking_types", "cmd_Update_all_atc_Parking_types"},
        {"ui_createdby", "cmd_Update_all_ui_Createdby"},
        {"ui_manufacturer", "cmd_Update_all_ui_Manufacturer"},
        {"ui_typerole", "cmd_Update_all_ui_Typerole"},
        {"ui_type", "cmd_Update_all_ui_Type"},
    };
    for (const auto &row : updateAll) {
        SCOPED_TRACE(row.button);
        auto *button = form.findChild<QPushButton *>(QString::fromLatin1(row.button));
        ASSERT_NE(button, nullptr);
        EXPECT_EQ(button->toolTip(),
                  QStringLiteral("Update all '%1=' entries in this aircraft cfg with the current value")
                      .arg(QString::fromLatin1(row.key)));
    }

    const char16_t *effectTips[11] = {
        u"Assigned 'Wake' effect",
        u"Assigned 'Water' effect",
        u"Assigned 'Dirt' effect",
        u"Assigned 'Concrete' effect",
        u"Assigned 'Touchdown' effect",
        u"Assigned 'Contrail' effect",
        u"Assigned  'Startup' effect",
        u"Assigned 'Vaportail_l' effect",
        u"Assigned 'Vaportail_r' effect",
        u"Assigned 'L_wingtipvortice' effect",
        u"Assigned 'R_wingtipvortice' effect",
    };
    for (int k = 0; k < 11; ++k) {
        SCOPED_TRACE(k);
        auto *box = form.findChild<QLineEdit *>(QStringLiteral("txt_effects_%1").arg(k));
        ASSERT_NE(box, nullptr);
        EXPECT_EQ(box, controls.txt_effects[k]);
        EXPECT_EQ(box->toolTip(), u16(effectTips[k]));
        EXPECT_EQ(box->contextMenuPolicy(), Qt::CustomContextMenu);
        auto *check = form.findChild<QCheckBox *>(QStringLiteral("chk_Effect_%1").arg(k));
        ASSERT_NE(check, nullptr);
        EXPECT_EQ(check, controls.chk_Effect[k]);
    }

    const std::array<const std::array<QLineEdit *, 5> *, 3> exits {&controls.txt_Exit_0, &controls.txt_Exit_1,
                                                                   &controls.txt_Exit_2};
    const char16_t *exitTips[5] = {
        u"Exit.%1 open and close rate percent per second (where 1.0 is fully open)",
        u"Exit.%1 longitudinal position (datum reference point)",
        u"Exit.%1 lateral position (datum reference point)",
        u"Exit.%1 vertical position (datum reference point)",
        u"Exit.%1 type (0 = Main, 1 = Cargo, 2 = Emergency)",
    };
    for (int line = 0; line < 3; ++line) {
        for (int k = 0; k < 5; ++k) {
            SCOPED_TRACE(QStringLiteral("txt_Exit_%1_%2").arg(line).arg(k).toStdString());
            auto *box = form.findChild<QLineEdit *>(QStringLiteral("txt_Exit_%1_%2").arg(line).arg(k));
            ASSERT_NE(box, nullptr);
            EXPECT_EQ(box, (*exits[line])[k]);
            const QString expected =
                line == 1 && k == 3 ? QStringLiteral("Exit.1") + exitTip3 : u16(exitTips[k]).arg(line);
            EXPECT_EQ(box->toolTip(), expected);
        }
    }
}

TEST_F(MainFormLayout, DesignStateIsIdle)
{
    EXPECT_FALSE(controls.opt_FS9->isEnabled());
    EXPECT_FALSE(controls.opt_FSX->isEnabled());
    EXPECT_FALSE(controls.cmd_DirUp->isEnabled());
    EXPECT_TRUE(controls.lstParking->isHidden());
    EXPECT_EQ(controls.lstParking->selectionMode(), QAbstractItemView::MultiSelection);
    EXPECT_TRUE(controls.frm_RightClick.form->isHidden());
    EXPECT_EQ(controls.frm_RightClick.form->objectName(), QStringLiteral("frm_RightClick"));

    // Not resizable, and big enough for everything at the current font.
    EXPECT_EQ(form.minimumSize(), form.maximumSize());
    EXPECT_GE(form.width(), 1180);
    EXPECT_GE(form.height(), 760);
    EXPECT_TRUE(form.minimumSizeHint().width() <= form.width() && form.minimumSizeHint().height() <= form.height());

    // A text box that shows no open row is grey; the program tests for white to know a row is open.
    EXPECT_EQ(backColour(controls.txt_Title), colourFromBgr(0xE0E0E0));
    EXPECT_NE(backColour(controls.txt_Title), colourFromBgr(0xFFFFFF));
    setBackColour(controls.txt_Title, colourFromBgr(0xFFFFFF));
    EXPECT_EQ(backColour(controls.txt_Title), QColor(Qt::white));
    EXPECT_EQ(colourFromBgr(0x0000FF), QColor(Qt::red));
    EXPECT_EQ(colourFromBgr(0xC0FFFF), QColor(0xFF, 0xFF, 0xC0));

    EXPECT_EQ(controls.SSTab1->count(), 5);
    EXPECT_EQ(controls.SSTab1->currentIndex(), 0);
}

TEST_F(MainFormLayout, MenusInOrderWithSeparatorsAndToggles)
{
    struct Item
    {
        const char *name;
        const char16_t *caption; // empty: a separator
        bool checkable;
    };
    struct Menu
    {
        const char *name;
        const char16_t *caption;
        std::vector<Item> items;
    };
    const std::vector<Menu> menus = {
        {"mnuFile",
         u"&File",
         {{"mnuCFG", u"&Open CFG File", false}, {"mnuSep1", u"", false}, {"mnuQuit", u"&Quit", false}}},
        {"mnuSettings",
         u"&Settings",
         {{"mnuConfirm", u"&Confirm 'aircraft.cfg' Updates", true},
          {"mnuAutoBackup", u"&Auto Backup 'aircraft.cfg'", true},
          {"line1", u"", false},
          {"mnu_AutoUpdate", u"Auto &Update Check", true},
          {"mnuResizable", u"Program &Resizable", true},
          {"mnuRememberLastPath", u"Remember last aircraft folder", true},
          {"mnuToolTips", u"Show Toolt&ips (after next start)", true},
          {"mnuEditor", u"Use internal &Editor", true},
          {"line2", u"", false},
          {"mnuAnalyzeOptions", u"&Validation Report Options...", false},
          {"mnuDataGrid", u"Configure Data Grid &Columns...", false}}},
        {"mnuTools",
         u"&Tools",
         {{"mnuDelKeys", u"&Delete keys...", false},
          {"mnuRenumber", u"Renumber sections", false},
          {"mnuSortKeys", u"&Sort all [fltsim.x] keys", false},
          {"mnuValidate", u"&Validate aircraft", false},
          {"line3", u"", false},
          {"mnuvalidateAll", u"Vali&date all aircraft below...", false}}},
        {"mnuAbout",
         u"&Help",
         {{"mnu_Manual", u"Open &Manual...", false},
          {"mnuSep5", u"", false},
          {"Corvane", u"&Visit 'Corvane' web", false},
          {"mnu_AppUpdate", u"&Check for Update...", false},
          {"mnuSep2", u"", false},
          {"mnuAboutProg", u"A&bout Fleetwright...", false}}},
    };

    QMenuBar *bar = form.menuBar();
    const QList<QAction *> top = bar->actions();
    ASSERT_EQ(top.size(), static_cast<qsizetype>(menus.size()));
    for (std::size_t m = 0; m < menus.size(); ++m) {
        SCOPED_TRACE(menus[m].name);
        QMenu *menu = top[static_cast<qsizetype>(m)]->menu();
        ASSERT_NE(menu, nullptr);
        EXPECT_EQ(menu->objectName(), QString::fromLatin1(menus[m].name));
        EXPECT_EQ(menu->title(), u16(menus[m].caption));
        const QList<QAction *> actions = menu->actions();
        ASSERT_EQ(actions.size(), static_cast<qsizetype>(menus[m].items.size()));
        for (std::size_t i = 0; i < menus[m].items.size(); ++i) {
            const Item &item = menus[m].items[i];
            SCOPED_TRACE(item.name);
            QAction *action = actions[static_cast<qsizetype>(i)];
            EXPECT_EQ(action->objectName(), QString::fromLatin1(item.name));
            EXPECT_EQ(action->isSeparator(), u16(item.caption).isEmpty());
            EXPECT_EQ(action->text(), u16(item.caption));
            EXPECT_EQ(action->isCheckable(), item.checkable);
        }
    }
    EXPECT_EQ(controls.mnuCFG->objectName(), QStringLiteral("mnuCFG"));
    EXPECT_EQ(controls.Corvane->text(), QStringLiteral("&Visit 'Corvane' web"));

    // The hidden context menus, not part of the menu bar.
    const RightClickMenus &r = controls.frm_RightClick;
    EXPECT_EQ(r.mnuListView1->objectName(), QStringLiteral("mnuListView1"));
    const QList<QAction *> grid = r.mnuListView1->actions();
    ASSERT_EQ(grid.size(), 4);
    EXPECT_EQ(grid[0], r.mnuDelete);
    EXPECT_EQ(grid[0]->text(), QStringLiteral("Delete [fltsim.x]"));
    EXPECT_EQ(grid[1]->text(), QStringLiteral("Renumber sections"));
    EXPECT_EQ(grid[2]->text(), QStringLiteral("&Sort all [fltsim.x] keys"));
    EXPECT_EQ(grid[3]->text(), QStringLiteral("Resize columns to show all content"));
    EXPECT_EQ(grid[3]->objectName(), QStringLiteral("mnuResize"));
    EXPECT_NE(r.mnuRenumber, controls.mnuRenumber);
    EXPECT_EQ(r.mnuThisEffects->title(), QStringLiteral("Effects"));
    const QList<QAction *> effects = r.mnuThisEffects->actions();
    ASSERT_EQ(effects.size(), 3);
    EXPECT_EQ(effects[0]->objectName(), QStringLiteral("mnuEffectsDisable"));
    EXPECT_EQ(effects[0]->text(), QStringLiteral("Disable effect"));
    EXPECT_EQ(effects[1]->objectName(), QStringLiteral("mnuEffectsDefault"));
    EXPECT_EQ(effects[1]->text(), QStringLiteral("Set default effect"));
    EXPECT_EQ(effects[2]->objectName(), QStringLiteral("mnuEffectsSelect"));
    EXPECT_EQ(effects[2]->text(), QStringLiteral("Select effect file..."));
    for (QAction *action : bar->actions())
        EXPECT_NE(action->menu(), r.mnuListView1);
}

TEST_F(MainFormLayout, GridHasSeventeenColumnsCheckableRowsAndNoSorting)
{
    const QStringList headers = {
        QStringLiteral("fltsim.x"),
        QStringLiteral("title"),
        QStringLiteral("parking_type"),
        QStringLiteral("parking_code"),
        QStringLiteral("ui_createdby"),
        QStringLiteral("ui_typerole"),
        QStringLiteral("ui_manufacturer"),
        QStringLiteral("ui_type"),
        QStringLiteral("ui_variation"),
        QStringLiteral("model"),
        QStringLiteral("sim"),
        QStringLiteral("atc_id"),
        QStringLiteral("atc_flight_number"),
        QStringLiteral("atc_airline"),
        QStringLiteral("atc_heavy"),
        QStringLiteral("atc_model"),
        QStringLiteral("texture"),
    };
    QTreeWidget *grid = controls.ListView1;
    ASSERT_EQ(grid->columnCount(), 17);
    for (int column = 0; column < 17; ++column) {
        EXPECT_EQ(grid->headerItem()->text(column), headers[column]);
        // Each column starts at an eighth of the grid's width.
        EXPECT_NEAR(grid->columnWidth(column), grid->width() / 8, 2);
    }
    EXPECT_FALSE(grid->isSortingEnabled());
    EXPECT_FALSE(grid->header()->sectionsClickable());

    QTreeWidgetItem *second = addVariationRow(grid, QStringLiteral("FLTSIM.1"));
    QTreeWidgetItem *first = addVariationRow(grid, QStringLiteral("FLTSIM.0"));
    ASSERT_EQ(grid->topLevelItemCount(), 2);
    // Rows stay in the order they were added, and every row can carry a check mark.
    EXPECT_EQ(grid->topLevelItem(0), second);
    EXPECT_EQ(grid->topLevelItem(1), first);
    EXPECT_EQ(first->checkState(0), Qt::Unchecked);
    EXPECT_TRUE(first->flags() & Qt::ItemIsUserCheckable);
    first->setCheckState(0, Qt::Checked);
    EXPECT_EQ(first->checkState(0), Qt::Checked);

    // Width 0 hides a column.
    grid->setColumnWidth(5, 0);
    EXPECT_EQ(grid->columnWidth(5), 0);
}

TEST(StatusBarPanels, DesignTextsTagsAndPainting)
{
    StatusBarPanels bar;
    EXPECT_EQ(bar.objectName(), QStringLiteral("StatusBar1"));
    ASSERT_EQ(bar.panelCount(), 12);
    const struct
    {
        const char16_t *text;
        const char16_t *tag;
    } design[10] = {
        {u"FS9 :", u"Aircraft configuration status: green 'OK' = great, red 'NOK' = error"},
        {u"n/a", u"\"found\" if FS9 installation detected, else \"n/a\""},
        {u"FS9 ATC", u"Green background if FS9 airlines.cfg was found & loaded, else red. Double-click to edit file."},
        {u"FSX :", u""},
        {u"n/a", u"\"found\" if FSX installation detected, else \"n/a\""},
        {u"FSX ATC", u"Green background if FSX airlines.cfg was found & loaded, else red. Double-click to edit file."},
        {u"Aircraft :", u""},
        {u"AC Folder", u"Green background if current folder is an aircraft folder, else red"},
        {u"",
         u"Basic aircraft status. Checks only section and title uniqueness and model files availability. Green means "
         u"passed, red means error. NOTE: You still may have other errors in your configuration. Double-click here "
         u"for a detailed analysis."},
        {u"", u"Shows how many aircraft are defined in this folder & aircraft.cfg"},
    };
    for (int panel = 1; panel <= 10; ++panel) {
        SCOPED_TRACE(panel);
        EXPECT_EQ(bar.panelText(panel), u16(design[panel - 1].text));
        EXPECT_EQ(bar.panelTag(panel), u16(design[panel - 1].tag));
        EXPECT_FALSE(bar.panelColour(panel).isValid());
    }
    EXPECT_EQ(bar.panelTag(11), QStringLiteral("current date"));
    EXPECT_EQ(bar.panelTag(12), QStringLiteral("current time"));
    EXPECT_TRUE(bar.panelText(0).isEmpty());
    EXPECT_TRUE(bar.panelTag(13).isEmpty());

    // Date and time: the regional texts of now (or of the second before, at a tick).
    const std::int64_t now = QDateTime::currentSecsSinceEpoch();
    const QString date = bar.panelText(11);
    const QString time = bar.panelText(12);
    EXPECT_TRUE(date == toQString(fleetwright::platform::shortDateText(now))
                || date == toQString(fleetwright::platform::shortDateText(now - 1)));
    EXPECT_TRUE(time == toQString(fleetwright::platform::longTimeText(now))
                || time == toQString(fleetwright::platform::longTimeText(now - 1)));

    bar.paintPanel(9, QStringLiteral("AC Status: NOK"), StatusBarPanels::red());
    EXPECT_EQ(bar.panelText(9), QStringLiteral("AC Status: NOK"));
    EXPECT_EQ(bar.panelColour(9), StatusBarPanels::red());
    bar.paintPanel(9, QStringLiteral("AC Status: OK"), StatusBarPanels::green());
    EXPECT_EQ(bar.panelText(9), QStringLiteral("AC Status: OK"));
    EXPECT_EQ(bar.panelColour(9), StatusBarPanels::green());
    bar.setPanelText(2, QString());
    EXPECT_EQ(bar.panelText(2), QString());
    bar.paintPanel(2, QStringLiteral("found"), StatusBarPanels::green());
    bar.setPanelText(10, QStringLiteral("3 aircraft variations defined"));
    EXPECT_EQ(bar.panelText(10), QStringLiteral("3 aircraft variations defined"));
    EXPECT_FALSE(bar.panelColour(10).isValid());
    EXPECT_NE(StatusBarPanels::green(), StatusBarPanels::red());
    EXPECT_NE(StatusBarPanels::grey(), StatusBarPanels::red());

    // The painted picture shows white text on the colour.
    bar.resize(1100, 30);
    bar.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&bar));
    const QRect area = bar.panelRect(9);
    ASSERT_TRUE(area.isValid());
    const QImage image = bar.grab().toImage();
    const QColor corner = image.pixelColor(area.left() + 3, area.top() + 3);
    EXPECT_EQ(corner, StatusBarPanels::green());
    bool hasWhite = false;
    for (int x = area.left(); x <= area.right() && !hasWhite; ++x) {
        for (int y = area.top(); y <= area.bottom() && !hasWhite; ++y)
            hasWhite = image.pixelColor(x, y) == QColor(Qt::white);
    }
    EXPECT_TRUE(hasWhite);

    // Panels lie left to right without gaps that would hide one, and answer a double click by number.
    int lastRight = -1;
    for (int panel = 1; panel <= 12; ++panel) {
        SCOPED_TRACE(panel);
        const QRect rect = bar.panelRect(panel);
        EXPECT_GT(rect.left(), lastRight);
        lastRight = rect.right();
        EXPECT_EQ(bar.panelAt(rect.center()), panel);
    }
    EXPECT_EQ(bar.panelAt(QPoint(-5, 5)), 0);

    QSignalSpy clicks(&bar, &StatusBarPanels::panelDoubleClicked);
    QWidget *panel3 = bar.childAt(bar.panelRect(3).center());
    ASSERT_NE(panel3, nullptr);
    QTest::mouseDClick(panel3, Qt::LeftButton, {}, panel3->rect().center());
    ASSERT_EQ(clicks.size(), 1);
    EXPECT_EQ(clicks.at(0).at(0).toInt(), 3);

    // A bigger font makes the panels wider so the texts still fit.
    const int before = bar.panelRect(9).width();
    QFont font(QStringLiteral("Arial"), 10);
    font.setBold(true);
    font.setPointSize(font.pointSize() * 2);
    bar.setFont(font);
    bar.adjustSize();
    bar.resize(2000, bar.sizeHint().height());
    QTest::qWait(10);
    EXPECT_GT(bar.panelRect(9).width(), before);
}

TEST(DirListBox, ListsAncestorsThenSortedSubFoldersAndMovesOnlyWhenThePathChanges)
{
    fleetwright::test::TempDir temp;
    const auto root = temp / "Aircraft";
    for (const char *name : {"beta", "Alpha", "charlie", "Delta"})
        std::filesystem::create_directories(root / name / "inner");
    fleetwright::test::writeBytes(root / "aircraft.cfg", "[fltsim.0]\r\n");
    const QString rootText = QDir::toNativeSeparators(QString::fromStdU16String(root.u16string()));

    DirListBox dir;
    EXPECT_EQ(dir.objectName(), QStringLiteral("Dir1"));
    QSignalSpy changes(&dir, &DirListBox::Change);

    ASSERT_TRUE(dir.setPath(rootText));
    EXPECT_EQ(changes.size(), 1);
    EXPECT_EQ(dir.path(), rootText);
    ASSERT_EQ(dir.ListCount(), 4);
    const QString sep = QDir::separator();
    EXPECT_EQ(dir.List(0), rootText + sep + QStringLiteral("Alpha"));
    EXPECT_EQ(dir.List(1), rootText + sep + QStringLiteral("beta"));
    EXPECT_EQ(dir.List(2), rootText + sep + QStringLiteral("charlie"));
    EXPECT_EQ(dir.List(3), rootText + sep + QStringLiteral("Delta"));
    EXPECT_TRUE(dir.List(4).isEmpty());
    // -1 is the folder itself, -2 its parent, and so on up to the root, which keeps its separator.
    EXPECT_EQ(dir.ListIndex(), -1);
    EXPECT_EQ(dir.List(-1), rootText);
    EXPECT_EQ(dir.List(-2), QDir::toNativeSeparators(QString::fromStdU16String(temp.path().u16string())));
    const int depth = dir.count() - dir.ListCount();
    EXPECT_TRUE(dir.List(-depth).endsWith(sep));
    EXPECT_TRUE(dir.List(-depth - 1).isEmpty());
    // Ancestors first, then sub-folders: the rows show the names.
    EXPECT_EQ(dir.item(dir.count() - 4)->text(), QStringLiteral("Alpha"));
    EXPECT_EQ(dir.item(depth - 1)->text(), QStringLiteral("Aircraft"));

    // The same folder again, also with a trailing separator: no change.
    ASSERT_TRUE(dir.setPath(rootText + sep));
    EXPECT_EQ(changes.size(), 1);

    // Selecting an entry does not move the folder.
    dir.setListIndex(2);
    EXPECT_EQ(dir.ListIndex(), 2);
    EXPECT_EQ(dir.path(), rootText);
    EXPECT_EQ(changes.size(), 1);

    // A folder that is not there leaves everything as it was.
    EXPECT_FALSE(dir.setPath(rootText + sep + QStringLiteral("missing")));
    EXPECT_EQ(dir.path(), rootText);
    EXPECT_EQ(changes.size(), 1);
    EXPECT_FALSE(dir.setPath(rootText + sep + QStringLiteral("aircraft.cfg")));

    // A double click opens the entry, a relative path goes from the current folder.
    dir.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dir));
    QListWidgetItem *beta = dir.item(depth + 1);
    dir.scrollToItem(beta);
    const QRect betaRect = dir.visualItemRect(beta);
    QTest::mouseClick(dir.viewport(), Qt::LeftButton, {}, betaRect.center());
    EXPECT_EQ(changes.size(), 1);
    QTest::mouseDClick(dir.viewport(), Qt::LeftButton, {}, betaRect.center());
    EXPECT_EQ(changes.size(), 2);
    EXPECT_EQ(dir.path(), rootText + sep + QStringLiteral("beta"));
    EXPECT_EQ(dir.ListCount(), 1);
    EXPECT_EQ(dir.List(0), rootText + sep + QStringLiteral("beta") + sep + QStringLiteral("inner"));
    ASSERT_TRUE(dir.setPath(QStringLiteral("..")));
    EXPECT_EQ(dir.path(), rootText);
    EXPECT_EQ(changes.size(), 3);

    // A folder made meanwhile shows after a refresh.
    std::filesystem::create_directories(root / "echo");
    EXPECT_EQ(dir.ListCount(), 4);
    dir.refresh();
    EXPECT_EQ(dir.ListCount(), 5);
    EXPECT_EQ(dir.List(4), rootText + sep + QStringLiteral("echo"));
    EXPECT_EQ(changes.size(), 3);
}

TEST(DriveListBox, SelectsTheVolumeThatHoldsAFolder)
{
    fleetwright::test::TempDir temp;
    const QString folder = QDir::toNativeSeparators(QString::fromStdU16String(temp.path().u16string()));
    DriveListBox drives;
    EXPECT_EQ(drives.objectName(), QStringLiteral("Drive1"));
    ASSERT_GT(drives.count(), 0);
    ASSERT_TRUE(drives.setDrive(folder));
    const QString root = drives.rootPath();
    ASSERT_FALSE(root.isEmpty());
    EXPECT_TRUE(folder.startsWith(root, Qt::CaseInsensitive) || folder + QDir::separator() == root);
    EXPECT_FALSE(drives.drive().isEmpty());

    // Choosing the drive it already has is no change.
    QSignalSpy changes(&drives, &DriveListBox::Change);
    ASSERT_TRUE(drives.setDrive(folder));
    EXPECT_EQ(changes.size(), 0);
    ASSERT_TRUE(drives.setDrive(drives.drive()));
    EXPECT_EQ(drives.rootPath(), root);
    EXPECT_EQ(changes.size(), 0);
}

} // namespace
