#pragma once

#include <QColor>

class QWidget;

namespace fleetwright {

// The back colour of a text box, check box or label as the program's colours mean it (grey: no open row,
// white: open, pale yellow: not in edit). Kept in the widget's palette (Base for text boxes, Window otherwise).
void setBackColour(QWidget *widget, const QColor &colour);
QColor backColour(const QWidget *widget);

// A colour written as 0xBBGGRR, blue in the high byte, as the program's colour values are given.
QColor colourFromBgr(unsigned int bgr);

} // namespace fleetwright
