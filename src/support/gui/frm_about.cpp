#include "support/gui/frm_about.h"

#include <QAction>
#include <QEvent>
#include <QFont>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QVBoxLayout>

#include "app/frm_main.h"
#include "core/gui/textconvert.h"
#include "support/operatingsystem.h"
#include "version.h"

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

QLabel *label(QWidget *parent, const QString &name)
{
    auto *result = new QLabel(parent);
    result->setObjectName(name);
    return result;
}

} // namespace

frm_About::frm_About(QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frm_About"));
    setWindowTitle(QStringLiteral("About Fleetwright"));
    buildForm();
    Form_Load();
}

void frm_About::buildForm()
{
    Frame1 = new QFrame(this);
    Frame1->setObjectName(QStringLiteral("Frame1"));
    Frame1->setFrameShape(QFrame::Box);
    Frame1->setFrameShadow(QFrame::Sunken);

    imgLogo = label(Frame1, QStringLiteral("imgLogo"));
    imgLogo->setPixmap(drawLogo());
    imgLogo->setAlignment(Qt::AlignTop | Qt::AlignHCenter);

    lblProductName = label(Frame1, QStringLiteral("lblProductName"));
    lblProductName->setText(QStringLiteral("Fleetwright"));
    QFont title = lblProductName->font();
    title.setPointSizeF(title.pointSizeF() * 2);
    title.setBold(true);
    lblProductName->setFont(title);

    lblVERSION = label(Frame1, QStringLiteral("lblVERSION"));
    lblPlatform = label(Frame1, QStringLiteral("lblPlatform"));
    lblCopyright = label(Frame1, QStringLiteral("lblCopyright"));
    lblCopyright->setText(QStringLiteral("Copyright \u00A9 2026 Corvane Tools. Free software under the GNU "
                                         "General Public License, version 3 or later."));
    lblDataLicence = label(Frame1, QStringLiteral("lblDataLicence"));
    lblDataLicence->setText(QStringLiteral("Airline data: OpenFlights (Open Database License)"));
    lblThirdParty = label(Frame1, QStringLiteral("lblThirdParty"));
    lblThirdParty->setText(QStringLiteral("Built with Qt %1 (GNU LGPL 3.0). Licences of all parts: "
                                          "LICENSE.txt and THIRD-PARTY-NOTICES.txt, shipped with the program.")
                               .arg(QString::fromLatin1(qVersion())));
    lblThirdParty->setWordWrap(true);

    auto *grid = new QGridLayout(Frame1);
    grid->setHorizontalSpacing(16);
    grid->addWidget(imgLogo, 0, 0, 7, 1);
    grid->addWidget(lblProductName, 0, 1);
    grid->addWidget(lblVERSION, 1, 1);
    grid->addWidget(lblPlatform, 2, 1);
    grid->setRowMinimumHeight(3, 12);
    grid->addWidget(lblCopyright, 4, 1);
    grid->addWidget(lblDataLicence, 5, 1);
    grid->addWidget(lblThirdParty, 6, 1);
    grid->setColumnStretch(1, 1);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(Frame1);
    setMinimumWidth(420);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    for (QWidget *control :
         {static_cast<QWidget *>(Frame1), static_cast<QWidget *>(imgLogo), static_cast<QWidget *>(lblProductName),
          static_cast<QWidget *>(lblVERSION), static_cast<QWidget *>(lblPlatform), static_cast<QWidget *>(lblCopyright),
          static_cast<QWidget *>(lblDataLicence), static_cast<QWidget *>(lblThirdParty)})
        control->installEventFilter(this);
}

void frm_About::Form_Load()
{
    lblVERSION->setText(QStringLiteral("Version %1.%2.%3")
                            .arg(fleetwright::VERSION_MAJOR)
                            .arg(fleetwright::VERSION_MINOR)
                            .arg(fleetwright::VERSION_REVISION));
    const fleetwright::OperatingSystem system;
    lblPlatform->setText(toQString(fleetwright::aboutPlatformText(system)));
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

AboutController::AboutController(frm_Main &form)
    : QObject(&form)
    , m_form(form)
{
    setObjectName(QStringLiteral("AboutController"));
    connect(form.controls().mnuAboutProg, &QAction::triggered, this, &AboutController::mnuAboutProg_Click);
}

void AboutController::mnuAboutProg_Click()
{
    frm_About about(&m_form);
    about.exec();
}
