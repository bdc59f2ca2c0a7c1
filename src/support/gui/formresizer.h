#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <QPointer>
#include <QString>

class QWidget;

namespace fleetwright {

// One record of the resizing tables. A form record holds the form's outer place and size and its inner size;
// a control record the control's place and size inside its container and its font size. All as they were at
// the first resize, in twips (15 to the pixel).
struct ResizeRecord
{
    QString Name;
    std::int32_t Index = -1; // our control arrays carry the index in their names, so it stays -1
    QString FormName;        // control records only
    std::int32_t Top = 0;
    std::int32_t Left = 0;
    std::int32_t Height = 0;
    std::int32_t Width = 0;
    std::int32_t ScaleHeight = 0; // form records only: inner height
    std::int32_t ScaleWidth = 0;  // form records only: inner width
    std::int32_t FontSize = 0;    // control records only: points, rounded
    QPointer<QWidget> widget;     // what the record stands for; names need not be unique in Qt
};

// Scales a form's controls and fonts with the form's size. The first resize of a form copies the form and every
// control into the tables; each later one computes every control from those first values, so that rounding
// never adds up. Widths, lefts and font sizes follow the width percentage, tops and heights the height
// percentage, all with integer division.
//
// Fonts: list boxes get "Courier New" bold; labels, buttons, option buttons, check boxes, frames (group
// boxes), text boxes, combo boxes and drive lists get the new size; any other control keeps the font it had.
// Places: a control in a container without a layout gets the new place and size (combo boxes and drive lists
// keep their own height); where the container has a layout, the layout places its controls.
class FormResizer
{
public:
    static constexpr std::int32_t TWIPS_PER_PIXEL = 15;
    // How far to the left a tab page that is not showing keeps its controls.
    static constexpr std::int32_t HIDDEN_PAGE_OFFSET = 75000;

    // The entry point for a form's resize. Ignored while a resize runs (ResizeBusy).
    void ResizeForm(QWidget *form);

    // Index of the form's record, or -1.
    int FindForm(const QWidget *form) const;
    // Records the form and every control that has no record yet.
    void RegisterForm(QWidget *form);
    // Index of the control's record under the form name, or -1.
    int FindControl(const QWidget *control, const QString &formName) const;
    void RegisterControl(QWidget *control, const QString &formName);

    // The form's inner width (height) now, in percent of its inner width (height) at registration; nothing when
    // the form has no record or was registered with no inner size.
    std::optional<std::int32_t> WidthPercent(const QWidget *form) const;
    std::optional<std::int32_t> HeightPercent(const QWidget *form) const;

    // Places one control and sets its font from its record, registering it first if it has none.
    void ResizeControl(QWidget *control, const QWidget *form);

    const std::vector<ResizeRecord> &formRecords() const { return m_forms; }
    const std::vector<ResizeRecord> &controlRecords() const { return m_controls; }

    // The controls of a form in the order the form holds them: its widgets and those inside its containers (plain
    // widgets, frames, group boxes, tab pages), not the inner parts of a control, nor other windows.
    static std::vector<QWidget *> controlsOf(QWidget *form);

    // stored × percent / 100 with integer division; nothing when it leaves the 32-bit range.
    static std::optional<std::int32_t> scaled(std::int32_t stored, std::int32_t percent);

private:
    std::vector<ResizeRecord> m_forms;
    std::vector<ResizeRecord> m_controls;
    bool ResizeBusy = false;
};

} // namespace fleetwright
