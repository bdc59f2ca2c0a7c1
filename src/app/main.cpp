#include <QApplication>

#include "frm_main.h"

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    fleetwright::frm_Main window;
    window.show();
    return app.exec();
}
