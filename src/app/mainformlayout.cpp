#include "mainformlayout.h"

#include <algorithm>

#include <QAbstractScrollArea>
#include <QEvent>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHeaderView>
#include <QLayout>
#include <QStyle>
#include <QStyleOption>

#include "ui_frm_main.h"
#include "ui_frm_rightclick.h"

namespace {

constexpr int GRID_COLUMNS = 17;
constexpr int FORM_WIDTH = 1180;
constexpr int FORM_HEIGHT = 760;

// Places the parking type list under its box each time it is shown, above everything else on the form.
class DropDownPlacer : public QObject
{
public:
    DropDownPlacer(QListWidget *list, QWidget *anchor)
        : QObject(list)
        , m_list(list)
        , m_anchor(anchor)
    {
        list->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == m_list && event->type() == QEvent::Show) {
            QWidget *host = m_list->parentWidget();
            const QPoint below = m_anchor->mapTo(host, QPoint(0, m_anchor->height()));
            const int rows = m_list->count();
            const int rowHeight = m_list->sizeHintForRow(0);
            const int height = std::max(rows, 1) * std::max(rowHeight, 1) + 2 * m_list->frameWidth() + 4;
            m_list->setGeometry(below.x(), below.y(), m_anchor->width(), height);
            m_list->raise();
        }
        return false;
    }

private:
    QListWidget *m_list;
    QWidget *m_anchor;
};

// The captions and layouts of the form never had names; uic has to give them one, the window does not keep it.
void dropMadeUpNames(QWidget *root)
{
    for (QLabel *label : root->findChildren<QLabel *>())
        if (label->objectName().startsWith(QStringLiteral("label")))
            label->setObjectName(QString());
    for (QLayout *layout : root->findChildren<QLayout *>())
        layout->setObjectName(QString());
}

RightClickMenus buildRightClickMenus(QMainWindow *form)
{
    RightClickMenus r;
    r.form = new QWidget(form);
    Ui::frm_RightClick ui;
    ui.setupUi(r.form);
    r.form->hide();
    r.mnuListView1 = ui.mnuListView1;
    r.mnuDelete = ui.mnuDelete;
    r.mnuRenumber = ui.mnuRenumber;
    r.mnuSortKeys = ui.mnuSortKeys;
    r.mnuResize = ui.mnuResize;
    r.mnuThisEffects = ui.mnuThisEffects;
    r.mnuEffectsDisable = ui.mnuEffectsDisable;
    r.mnuEffectsDefault = ui.mnuEffectsDefault;
    r.mnuEffectsSelect = ui.mnuEffectsSelect;
    return r;
}

MainFormControls controlsOf(const Ui::frm_Main &ui)
{
    MainFormControls m;
    m.menuBar = ui.menuBar;
    m.mnuFile = ui.mnuFile;
    m.mnuCFG = ui.mnuCFG;
    m.mnuSep1 = ui.mnuSep1;
    m.mnuQuit = ui.mnuQuit;
    m.mnuSettings = ui.mnuSettings;
    m.mnuConfirm = ui.mnuConfirm;
    m.mnuAutoBackup = ui.mnuAutoBackup;
    m.line1 = ui.line1;
    m.mnu_AutoUpdate = ui.mnu_AutoUpdate;
    m.mnuResizable = ui.mnuResizable;
    m.mnuRememberLastPath = ui.mnuRememberLastPath;
    m.mnuToolTips = ui.mnuToolTips;
    m.mnuEditor = ui.mnuEditor;
    m.line2 = ui.line2;
    m.mnuAnalyzeOptions = ui.mnuAnalyzeOptions;
    m.mnuDataGrid = ui.mnuDataGrid;
    m.mnuTools = ui.mnuTools;
    m.mnuDelKeys = ui.mnuDelKeys;
    m.mnuRenumber = ui.mnuRenumber;
    m.mnuSortKeys = ui.mnuSortKeys;
    m.mnuValidate = ui.mnuValidate;
    m.line3 = ui.line3;
    m.mnuvalidateAll = ui.mnuvalidateAll;
    m.mnuAbout = ui.mnuAbout;
    m.mnu_Manual = ui.mnu_Manual;
    m.mnuSep5 = ui.mnuSep5;
    m.Corvane = ui.Corvane;
    m.mnu_AppUpdate = ui.mnu_AppUpdate;
    m.mnuSep2 = ui.mnuSep2;
    m.mnuAboutProg = ui.mnuAboutProg;
    m.Drive1 = ui.Drive1;
    m.Dir1 = ui.Dir1;
    m.cmd_DirUp = ui.cmd_DirUp;
    m.fraQuickNavigate = ui.fraQuickNavigate;
    m.opt_FS9 = ui.opt_FS9;
    m.opt_FSX = ui.opt_FSX;
    m.combo_SimFolder = ui.combo_SimFolder;
    m.ListView1 = ui.ListView1;
    m.SSTab1 = ui.SSTab1;
    m.txt_Title = ui.txt_Title;
    m.txt_ui_CreatedBy = ui.txt_ui_CreatedBy;
    m.txt_ui_TypeRole = ui.txt_ui_TypeRole;
    m.txt_ui_Manufacturer = ui.txt_ui_Manufacturer;
    m.txt_ui_Type = ui.txt_ui_Type;
    m.txt_ui_Variation = ui.txt_ui_Variation;
    m.txt_FSXVersion = ui.txt_FSXVersion;
    m.txt_FS9Radius = ui.txt_FS9Radius;
    m.cmd_Update_all_ui_Createdby = ui.cmd_Update_all_ui_Createdby;
    m.cmd_Update_all_ui_Typerole = ui.cmd_Update_all_ui_Typerole;
    m.cmd_Update_all_ui_Manufacturer = ui.cmd_Update_all_ui_Manufacturer;
    m.cmd_Update_all_ui_Type = ui.cmd_Update_all_ui_Type;
    m.txt_atc_Id = ui.txt_atc_Id;
    m.txt_atc_Flight_Number = ui.txt_atc_Flight_Number;
    m.txt_atc_Airline = ui.txt_atc_Airline;
    m.txt_atc_Model = ui.txt_atc_Model;
    m.chk_atc_heavy = ui.chk_atc_heavy;
    m.picCombo = ui.picCombo;
    m.lblSelections = ui.lblSelections;
    m.cmdDropDown = ui.cmdDropDown;
    m.lstParking = ui.lstParking;
    m.txt_atc_ParkingCodes = ui.txt_atc_ParkingCodes;
    m.cmd_ParkingCodes = ui.cmd_ParkingCodes;
    m.cmd_Update_all_atc_airline = ui.cmd_Update_all_atc_airline;
    m.cmd_Update_all_atc_model = ui.cmd_Update_all_atc_model;
    m.cmd_Update_all_atc_heavy = ui.cmd_Update_all_atc_heavy;
    m.cmd_Update_all_atc_Parking_types = ui.cmd_Update_all_atc_Parking_types;
    m.cmd_Update_all_atc_Parking_codes = ui.cmd_Update_all_atc_Parking_codes;
    m.txt_general_atc_model = ui.txt_general_atc_model;
    m.txt_general_atc_type = ui.txt_general_atc_type;
    m.txt_WingSpan_Org = ui.txt_WingSpan_Org;
    m.txt_WingSpan_Org_C1 = ui.txt_WingSpan_Org_C1;
    m.txt_WingSpan_Org_C2 = ui.txt_WingSpan_Org_C2;
    m.txt_FSX_Spot_Org = ui.txt_FSX_Spot_Org;
    m.txt_WingSpan_New = ui.txt_WingSpan_New;
    m.txt_WingSpan_New_C1 = ui.txt_WingSpan_New_C1;
    m.txt_WingSpan_New_C2 = ui.txt_WingSpan_New_C2;
    m.txt_FSX_Spot_New = ui.txt_FSX_Spot_New;
    m.chk_Exit_0 = ui.chk_Exit_0;
    m.chk_Exit_1 = ui.chk_Exit_1;
    m.chk_Exit_2 = ui.chk_Exit_2;
    m.txt_Jetways = ui.txt_Jetways;
    m.txt_Description = ui.txt_Description;
    m.cmd_Effect_Update = ui.cmd_Effect_Update;
    m.txt_CurrentTexture = ui.txt_CurrentTexture;
    m.txt_CurrentModel = ui.txt_CurrentModel;
    m.txt_CurrentAirfile = ui.txt_CurrentAirfile;
    m.combo_Texture = ui.combo_Texture;
    m.combo_Model = ui.combo_Model;
    m.combo_Airfile = ui.combo_Airfile;
    m.cmd_Associate = ui.cmd_Associate;
    m.lst_Airfile = ui.lst_Airfile;
    m.fraAircraftType = ui.fraAircraftType;
    m.opt_ac_Normal = ui.opt_ac_Normal;
    m.opt_ac_Helicopter = ui.opt_ac_Helicopter;
    m.opt_ac_AI = ui.opt_ac_AI;
    m.opt_ac_Nok = ui.opt_ac_Nok;
    m.cmd_cfg_Update = ui.cmd_cfg_Update;
    m.StatusBar1 = ui.StatusBar1;
    m.txt_Exit_0 = {ui.txt_Exit_0_0, ui.txt_Exit_0_1, ui.txt_Exit_0_2, ui.txt_Exit_0_3, ui.txt_Exit_0_4};
    m.txt_Exit_1 = {ui.txt_Exit_1_0, ui.txt_Exit_1_1, ui.txt_Exit_1_2, ui.txt_Exit_1_3, ui.txt_Exit_1_4};
    m.txt_Exit_2 = {ui.txt_Exit_2_0, ui.txt_Exit_2_1, ui.txt_Exit_2_2, ui.txt_Exit_2_3, ui.txt_Exit_2_4};
    m.txt_effects = {ui.txt_effects_0, ui.txt_effects_1, ui.txt_effects_2, ui.txt_effects_3,
                     ui.txt_effects_4, ui.txt_effects_5, ui.txt_effects_6, ui.txt_effects_7,
                     ui.txt_effects_8, ui.txt_effects_9, ui.txt_effects_10};
    m.chk_Effect = {ui.chk_Effect_0, ui.chk_Effect_1, ui.chk_Effect_2, ui.chk_Effect_3,
                    ui.chk_Effect_4, ui.chk_Effect_5, ui.chk_Effect_6, ui.chk_Effect_7,
                    ui.chk_Effect_8, ui.chk_Effect_9, ui.chk_Effect_10};
    return m;
}

// The folder pane has always been as wide as it asks to be measured on its own, as a window: the style gives
// a window's layout wider margins than a child's.
int paneWidth(const QWidget *pane)
{
    QStyleOption asChild;
    asChild.initFrom(pane);
    QStyleOption asWindow = asChild;
    asWindow.state |= QStyle::State_Window;
    const QStyle *style = pane->style();
    const auto margins = [&](const QStyleOption &option) {
        return style->pixelMetric(QStyle::PM_LayoutLeftMargin, &option, pane)
            + style->pixelMetric(QStyle::PM_LayoutRightMargin, &option, pane);
    };
    return pane->sizeHint().width() + margins(asWindow) - margins(asChild);
}

// Sizes that follow the font and style in use, so the form cannot give them as numbers.
void sizeToFont(const Ui::frm_Main &ui)
{
    ui.fraFolder->setFixedWidth(std::max(250, paneWidth(ui.fraFolder)));
    ui.picCombo->setMinimumHeight(ui.txt_atc_Id->sizeHint().height());
    const QFontMetrics metrics = ui.cmd_ParkingCodes->fontMetrics();
    ui.cmd_ParkingCodes->setFixedWidth(metrics.horizontalAdvance(QStringLiteral("...")) + 2 * metrics.height());
    ui.txt_Jetways->setMinimumWidth(
        ui.txt_Jetways->fontMetrics().horizontalAdvance(QStringLiteral("Jetways possible: yes")) * 3 / 2);
    // The gap between the two columns of effects.
    if (auto *effects = qobject_cast<QGridLayout *>(ui.fraEffects->layout()))
        effects->setColumnMinimumWidth(3, QFontMetrics(ui.fraEffects->font()).height());
}

} // namespace

MainFormControls buildMainForm(QMainWindow *form)
{
    // The generated object holds only pointers to the widgets, which belong to the form.
    Ui::frm_Main ui;
    ui.setupUi(form);
    for (QMenu *menu : {ui.mnuFile, ui.mnuSettings, ui.mnuTools, ui.mnuAbout})
        menu->menuAction()->setObjectName(menu->objectName() + QStringLiteral("_action"));
    dropMadeUpNames(ui.centralWidget);

    // Rows stay in file order: a click on a header does nothing.
    ui.ListView1->header()->setSectionsClickable(false);
    ui.ListView1->header()->setSectionsMovable(false);

    ui.lstParking->hide();
    new DropDownPlacer(ui.lstParking, ui.picCombo);
    sizeToFont(ui);

    MainFormControls m = controlsOf(ui);
    m.frm_RightClick = buildRightClickMenus(form);

    // Fixed by design; the size grows only if the fonts need more room than the default.
    const QSize needed = form->minimumSizeHint().expandedTo(QSize(FORM_WIDTH, FORM_HEIGHT));
    form->setFixedSize(needed);
    if (QLayout *layout = form->layout())
        layout->activate();
    if (QLayout *layout = ui.centralWidget->layout())
        layout->activate();
    const int columnWidth = std::max(m.ListView1->viewport()->width(), m.ListView1->width()) / 8;
    for (int column = 0; column < GRID_COLUMNS; ++column)
        m.ListView1->setColumnWidth(column, columnWidth);
    return m;
}
