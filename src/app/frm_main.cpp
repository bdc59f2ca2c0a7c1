#include "frm_main.h"

#include "gui/textconvert.h"
#include "support/windowtitle.h"
#include "ui_frm_main.h"

frm_Main::frm_Main(QWidget *parent)
    : QMainWindow(parent)
    , m_ui(std::make_unique<Ui::frm_Main>())
{
    m_ui->setupUi(this);
    // The designer's caption is the start of the title; the version and the maker's line follow it.
    setWindowTitle(toQString(fleetwright::windowTitle(toU16String(windowTitle()))));

    connect(m_ui->mnuQuit, &QAction::triggered, this, &frm_Main::mnuQuit_Click);
}

frm_Main::~frm_Main() = default;

// Every edit has been written when it was made and every setting when it changed: nothing to ask or save.
void frm_Main::mnuQuit_Click()
{
    close();
}
