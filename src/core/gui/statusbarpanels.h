#pragma once

#include <vector>

#include <QColor>
#include <QStatusBar>
#include <QString>

class QTimer;

namespace fleetwright {

class StatusPanel;

// The main window's status bar: twelve panels, numbered from 1. A panel shows either its text or a painted
// picture (a coloured field with its text in white, centred). Panels 11 and 12 show the current date and time.
// Each panel's tag is its tooltip text.
class StatusBarPanels : public QStatusBar
{
    Q_OBJECT

public:
    static constexpr int PANEL_COUNT = 12;

    explicit StatusBarPanels(QWidget *parent = nullptr);
    ~StatusBarPanels() override;

    // The colours that the status panels use; the colour carries the meaning.
    static QColor green();
    static QColor red();
    static QColor grey();

    int panelCount() const { return PANEL_COUNT; }

    // Text only: any painted picture of the panel goes.
    void setPanelText(int panel, const QString &text);
    // The picture: `background` filled, `text` in white in the middle, in the bar's font.
    void paintPanel(int panel, const QString &text, const QColor &background);
    // What the panel shows: its text, or the text of its picture.
    QString panelText(int panel) const;
    // The picture's background; an invalid colour when the panel shows plain text.
    QColor panelColour(int panel) const;
    QString panelTag(int panel) const;

    // The panel under `pos` (the bar's coordinates), or 0.
    int panelAt(const QPoint &pos) const;
    // The panel's rectangle in the bar's coordinates.
    QRect panelRect(int panel) const;

signals:
    void panelDoubleClicked(int panel);

protected:
    void changeEvent(QEvent *event) override;

private:
    StatusPanel *panelWidget(int panel) const;
    void refreshClock();

    std::vector<StatusPanel *> m_panels;
    QTimer *m_clock = nullptr;
};

} // namespace fleetwright
