#include "core/gui/backcolour.h"

#include <QAbstractScrollArea>
#include <QLineEdit>
#include <QWidget>

namespace fleetwright {

namespace {

QPalette::ColorRole backRole(const QWidget *widget)
{
    if (qobject_cast<const QLineEdit *>(widget) || qobject_cast<const QAbstractScrollArea *>(widget))
        return QPalette::Base;
    return QPalette::Window;
}

} // namespace

void setBackColour(QWidget *widget, const QColor &colour)
{
    QPalette palette = widget->palette();
    const QPalette::ColorRole role = backRole(widget);
    palette.setColor(role, colour);
    widget->setPalette(palette);
    if (role == QPalette::Window)
        widget->setAutoFillBackground(true);
}

QColor backColour(const QWidget *widget)
{
    return widget->palette().color(backRole(widget));
}

QColor colourFromBgr(unsigned int bgr)
{
    return QColor(static_cast<int>(bgr & 0xFF), static_cast<int>((bgr >> 8) & 0xFF),
                  static_cast<int>((bgr >> 16) & 0xFF));
}

} // namespace fleetwright
