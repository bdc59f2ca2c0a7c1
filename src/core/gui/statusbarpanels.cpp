#include "statusbarpanels.h"

#include <functional>

#include <QDateTime>
#include <QEvent>
#include <QFrame>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>

#include "core/gui/textconvert.h"
#include "platform/regional.h"

namespace fleetwright {

// One panel: a sunken field with a text, or a painted picture of a text on a coloured ground.
class StatusPanel : public QFrame
{
public:
    StatusPanel(const QString &text, const QString &widthSample, bool shrinks, QWidget *parent)
        : QFrame(parent)
        , m_text(text)
        , m_widthSample(widthSample)
        , m_shrinks(shrinks)
    {
        setFrameStyle(QFrame::Panel | QFrame::Sunken);
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    }

    QString text() const { return m_text; }
    QColor colour() const { return m_colour; }

    void setText(const QString &text)
    {
        m_text = text;
        m_colour = QColor();
        updateGeometry();
        update();
    }

    void paint(const QString &text, const QColor &background)
    {
        m_text = text;
        m_colour = background;
        updateGeometry();
        update();
    }

    QSize sizeHint() const override
    {
        const QFontMetrics metrics(font());
        const int textWidth = std::max(metrics.horizontalAdvance(m_text), metrics.horizontalAdvance(m_widthSample));
        const int padding = metrics.horizontalAdvance(QLatin1Char('0'));
        return {textWidth + padding + 2 * frameWidth(), metrics.height() + 4 + 2 * frameWidth()};
    }
    // The stretching panel gives way when the bar is short of room; the others keep their text whole.
    QSize minimumSizeHint() const override
    {
        QSize size = sizeHint();
        if (m_shrinks)
            size.setWidth(QFontMetrics(font()).horizontalAdvance(QLatin1Char('0')) * 4 + 2 * frameWidth());
        return size;
    }

    std::function<void()> doubleClicked;

protected:
    void paintEvent(QPaintEvent *event) override
    {
        QFrame::paintEvent(event);
        QPainter painter(this);
        const QRect area = contentsRect();
        if (m_colour.isValid()) {
            painter.fillRect(area, m_colour);
            painter.setPen(Qt::white);
            painter.drawText(area, Qt::AlignCenter, m_text);
        } else {
            painter.setPen(palette().color(QPalette::WindowText));
            const int indent = QFontMetrics(font()).horizontalAdvance(QLatin1Char('0')) / 2;
            const QRect inner = area.adjusted(indent, 0, -indent, 0);
            painter.drawText(inner, Qt::AlignLeft | Qt::AlignVCenter,
                             QFontMetrics(font()).elidedText(m_text, Qt::ElideRight, inner.width()));
        }
    }

    void mouseDoubleClickEvent(QMouseEvent *event) override
    {
        if (event->button() == Qt::LeftButton && doubleClicked)
            doubleClicked();
        QFrame::mouseDoubleClickEvent(event);
    }

private:
    QString m_text;
    QString m_widthSample;
    bool m_shrinks = false;
    QColor m_colour;
};

namespace {

struct PanelDesign
{
    const char16_t *text;
    const char16_t *widthSample;
    const char16_t *tag;
};

// Panel 1's tag speaks of the aircraft status although the panel is the FS9 label: that is what it has always
// shown. Panels 2 and 5 carry their quotes in the tag text itself.
const PanelDesign DESIGN[StatusBarPanels::PANEL_COUNT] = {
    {u"FS9 :", u"", u"Aircraft configuration status: green 'OK' = great, red 'NOK' = error"},
    {u"n/a", u"found", u"\"found\" if FS9 installation detected, else \"n/a\""},
    {u"FS9 ATC", u"FS9 ATC",
     u"Green background if FS9 airlines.cfg was found & loaded, else red. Double-click to edit file."},
    {u"FSX :", u"", u""},
    {u"n/a", u"found", u"\"found\" if FSX installation detected, else \"n/a\""},
    {u"FSX ATC", u"FSX ATC",
     u"Green background if FSX airlines.cfg was found & loaded, else red. Double-click to edit file."},
    {u"Aircraft :", u"", u""},
    {u"AC Folder", u"AC Folder", u"Green background if current folder is an aircraft folder, else red"},
    {u"", u"AC Status: NOK",
     u"Basic aircraft status. Checks only section and title uniqueness and model files availability. Green means "
     u"passed, red means error. NOTE: You still may have other errors in your configuration. Double-click here for "
     u"a detailed analysis."},
    {u"", u"000 aircraft variations defined", u"Shows how many aircraft are defined in this folder & aircraft.cfg"},
    {u"", u"00.00.0000", u"current date"},
    {u"", u"00:00:00", u"current time"},
};

constexpr int VARIATIONS_PANEL = 10;
constexpr int DATE_PANEL = 11;
constexpr int TIME_PANEL = 12;

} // namespace

StatusBarPanels::StatusBarPanels(QWidget *parent)
    : QStatusBar(parent)
{
    setObjectName(QStringLiteral("StatusBar1"));
    setSizeGripEnabled(false);
    // Panels are permanent widgets, so that no status tip can hide them.
    for (int panel = 1; panel <= PANEL_COUNT; ++panel) {
        const PanelDesign &design = DESIGN[panel - 1];
        auto *widget = new StatusPanel(QString::fromUtf16(design.text), QString::fromUtf16(design.widthSample),
                                       panel == VARIATIONS_PANEL, this);
        widget->setObjectName(QStringLiteral("StatusBar1_Panel%1").arg(panel));
        widget->setToolTip(QString::fromUtf16(design.tag));
        widget->doubleClicked = [this, panel] { emit panelDoubleClicked(panel); };
        addPermanentWidget(widget, panel == VARIATIONS_PANEL ? 1 : 0);
        m_panels.push_back(widget);
    }
    m_clock = new QTimer(this);
    m_clock->setInterval(1000);
    connect(m_clock, &QTimer::timeout, this, &StatusBarPanels::refreshClock);
    m_clock->start();
    refreshClock();
}

StatusBarPanels::~StatusBarPanels() = default;

QColor StatusBarPanels::green()
{
    return QColor(0x00, 0x80, 0x00);
}

QColor StatusBarPanels::red()
{
    return QColor(0x80, 0x00, 0x00);
}

QColor StatusBarPanels::grey()
{
    return QColor(0x80, 0x80, 0x80);
}

StatusPanel *StatusBarPanels::panelWidget(int panel) const
{
    if (panel < 1 || panel > PANEL_COUNT)
        return nullptr;
    return m_panels[static_cast<std::size_t>(panel - 1)];
}

void StatusBarPanels::setPanelText(int panel, const QString &text)
{
    if (StatusPanel *widget = panelWidget(panel))
        widget->setText(text);
}

void StatusBarPanels::paintPanel(int panel, const QString &text, const QColor &background)
{
    if (StatusPanel *widget = panelWidget(panel))
        widget->paint(text, background);
}

QString StatusBarPanels::panelText(int panel) const
{
    const StatusPanel *widget = panelWidget(panel);
    return widget ? widget->text() : QString();
}

QColor StatusBarPanels::panelColour(int panel) const
{
    const StatusPanel *widget = panelWidget(panel);
    return widget ? widget->colour() : QColor();
}

QString StatusBarPanels::panelTag(int panel) const
{
    if (panel < 1 || panel > PANEL_COUNT)
        return {};
    return QString::fromUtf16(DESIGN[panel - 1].tag);
}

int StatusBarPanels::panelAt(const QPoint &pos) const
{
    for (int panel = 1; panel <= PANEL_COUNT; ++panel) {
        const QRect area = panelRect(panel);
        if (area.left() <= pos.x() && area.left() + area.width() > pos.x())
            return panel;
    }
    return 0;
}

QRect StatusBarPanels::panelRect(int panel) const
{
    const StatusPanel *widget = panelWidget(panel);
    return widget && widget->isVisibleTo(this) ? widget->geometry() : QRect();
}

void StatusBarPanels::changeEvent(QEvent *event)
{
    QStatusBar::changeEvent(event);
    // A new font (the bar is set to a bold one at start) changes every panel's width.
    if (event->type() == QEvent::FontChange) {
        for (StatusPanel *widget : m_panels)
            widget->updateGeometry();
    }
}

void StatusBarPanels::refreshClock()
{
    const std::int64_t now = QDateTime::currentSecsSinceEpoch();
    const QString date = toQString(platform::shortDateText(now));
    const QString time = toQString(platform::longTimeText(now));
    if (panelText(DATE_PANEL) != date)
        setPanelText(DATE_PANEL, date);
    if (panelText(TIME_PANEL) != time)
        setPanelText(TIME_PANEL, time);
}

} // namespace fleetwright
