#include "support/gui/frm_about.h"

#include <QEvent>
#include <QFont>
#include <QLabel>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include "core/gui/textconvert.h"
#include "support/operatingsystem.h"
#include "ui_frm_about.h"
#include "version.h"

namespace fleetwright {

namespace {

constexpr int LOGO_SIZE = 64;

// The logo: a white aircraft seen from above on a blue tile.
QPixmap drawLogo()
{
    QPixmap logo(LOGO_SIZE, LOGO_SIZE);
    logo.fill(Qt::transparent);
    QPainter painter(&logo);
    painter.setRenderHint(QPainter::Antialiasing);

    QLinearGradient sky(0, 0, 0, LOGO_SIZE);
    sky.setColorAt(0, QColor(0x3A, 0x7B, 0xD5));
    sky.setColorAt(1, QColor(0x1B, 0x3F, 0x7A));
    painter.setPen(Qt::NoPen);
    painter.setBrush(sky);
    painter.drawRoundedRect(QRectF(1, 1, LOGO_SIZE - 2, LOGO_SIZE - 2), 10, 10);

    QPainterPath aircraft;
    aircraft.addRoundedRect(QRectF(29, 8, 6, 48), 3, 3);                                          // fuselage
    aircraft.addPolygon(QPolygonF({{32, 24}, {8, 38}, {8, 42}, {32, 34}, {56, 42}, {56, 38}}));   // wings
    aircraft.addPolygon(QPolygonF({{32, 48}, {22, 56}, {22, 58}, {32, 55}, {42, 58}, {42, 56}})); // tail
    aircraft.setFillRule(Qt::WindingFill);
    painter.setBrush(Qt::white);
    painter.drawPath(aircraft);
    return logo;
}

} // namespace

frm_About::frm_About(QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::frm_About>())
{
    m_ui->setupUi(this);
    m_ui->imgLogo->setPixmap(drawLogo());
    // Twice the size of the font the platform gives, which a .ui cannot say.
    QFont title = m_ui->lblProductName->font();
    title.setPointSizeF(title.pointSizeF() * 2);
    m_ui->lblProductName->setFont(title);
    // A click anywhere closes the box, and the labels cover most of it.
    m_ui->Frame1->installEventFilter(this);
    for (QLabel *label : m_ui->Frame1->findChildren<QLabel *>())
        label->installEventFilter(this);
    Form_Load();
}

frm_About::~frm_About() = default;

void frm_About::Form_Load()
{
    m_ui->lblVERSION->setText(
        QStringLiteral("Version %1.%2.%3").arg(VERSION_MAJOR).arg(VERSION_MINOR).arg(VERSION_REVISION));
    const OperatingSystem system;
    m_ui->lblPlatform->setText(toQString(aboutPlatformText(system)));
    m_ui->lblThirdParty->setText(QStringLiteral("Built with Qt %1 (GNU LGPL 3.0). Licences of all parts: "
                                                "LICENSE.txt and THIRD-PARTY-NOTICES.txt, shipped with the program.")
                                     .arg(QString::fromLatin1(qVersion())));
}

bool frm_About::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonRelease && static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton) {
        accept();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void frm_About::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        accept();
    else
        QDialog::mouseReleaseEvent(event);
}

} // namespace fleetwright
