#include "support/gui/formresizer.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QAbstractButton>
#include <QComboBox>
#include <QFont>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QListView>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QTabWidget>

#include "folderview/gui/folderwidgets.h"

namespace fleetwright {

namespace {

enum class FontRule
{
    Keep,    // the control keeps its font
    Size,    // the new size
    ListBox, // "Courier New", bold, the new size
};

// A folder list is no list box, a drive list is a combo box.
FontRule fontRuleOf(const QWidget *control)
{
    if (qobject_cast<const QListView *>(control) && !qobject_cast<const DirListBox *>(control))
        return FontRule::ListBox;
    if (qobject_cast<const QLabel *>(control) || qobject_cast<const QAbstractButton *>(control)
        || qobject_cast<const QGroupBox *>(control) || qobject_cast<const QLineEdit *>(control)
        || qobject_cast<const QPlainTextEdit *>(control) || qobject_cast<const QComboBox *>(control))
        return FontRule::Size;
    return FontRule::Keep;
}

// Widgets that only hold other controls; their children are controls of the form as well.
bool isContainer(const QWidget *widget)
{
    const QMetaObject *type = widget->metaObject();
    return type == &QWidget::staticMetaObject || type == &QFrame::staticMetaObject
        || qobject_cast<const QGroupBox *>(widget);
}

void collectControls(const QWidget *parent, std::vector<QWidget *> &controls)
{
    for (QObject *child : parent->children()) {
        auto *widget = qobject_cast<QWidget *>(child);
        if (!widget || widget->isWindow())
            continue;
        controls.push_back(widget);
        if (auto *tabs = qobject_cast<QTabWidget *>(widget)) {
            for (int page = 0; page < tabs->count(); ++page) {
                controls.push_back(tabs->widget(page));
                collectControls(tabs->widget(page), controls);
            }
        } else if (isContainer(widget)) {
            collectControls(widget, controls);
        }
    }
}

std::int32_t twips(int pixels)
{
    return pixels * FormResizer::TWIPS_PER_PIXEL;
}

int pixels(std::int32_t twipValue)
{
    return twipValue / FormResizer::TWIPS_PER_PIXEL;
}

// The client area: a main window's own menu bar is not part of it, as a form's menu never was.
int innerHeight(const QWidget *form)
{
    int height = form->height();
    if (const auto *window = qobject_cast<const QMainWindow *>(form)) {
        if (const QWidget *bar = window->menuWidget(); bar && bar->isVisible())
            height -= bar->height();
    }
    return height;
}

// Points, rounded half to even as a number stored in a whole-number field always was; a font given in pixels is
// taken at the screen's resolution.
std::int32_t fontPoints(const QWidget *control)
{
    const QFont font = control->font();
    double points = font.pointSizeF();
    if (points <= 0 && font.pixelSize() > 0)
        points = font.pixelSize() * 72.0 / std::max(control->logicalDpiY(), 1);
    return static_cast<std::int32_t>(std::lrint(std::max(points, 0.0)));
}

std::optional<std::int32_t> percentOf(std::int32_t current, std::int32_t stored)
{
    if (stored == 0)
        return std::nullopt;
    const std::int64_t percent = static_cast<std::int64_t>(current) * 100 / stored;
    if (percent > std::numeric_limits<std::int32_t>::max() || percent < std::numeric_limits<std::int32_t>::min())
        return std::nullopt;
    return static_cast<std::int32_t>(percent);
}

} // namespace

std::optional<std::int32_t> FormResizer::scaled(std::int32_t stored, std::int32_t percent)
{
    const std::int64_t value = static_cast<std::int64_t>(stored) * percent / 100;
    if (value > std::numeric_limits<std::int32_t>::max() || value < std::numeric_limits<std::int32_t>::min())
        return std::nullopt;
    return static_cast<std::int32_t>(value);
}

std::vector<QWidget *> FormResizer::controlsOf(QWidget *form)
{
    std::vector<QWidget *> controls;
    collectControls(form, controls);
    return controls;
}

void FormResizer::ResizeForm(QWidget *form)
{
    if (ResizeBusy)
        return;
    ResizeBusy = true;
    if (FindForm(form) < 0)
        RegisterForm(form);
    // Setting a font sends events, and a handler of them may delete a control before its turn comes.
    std::vector<QPointer<QWidget>> controls;
    for (QWidget *control : controlsOf(form))
        controls.emplace_back(control);
    for (const QPointer<QWidget> &control : controls) {
        if (control)
            ResizeControl(control, form);
    }
    ResizeBusy = false;
}

int FormResizer::FindForm(const QWidget *form) const
{
    for (std::size_t i = 0; i < m_forms.size(); ++i) {
        if (m_forms[i].widget == form)
            return static_cast<int>(i);
    }
    return -1;
}

void FormResizer::RegisterForm(QWidget *form)
{
    // Records of forms that are gone can never be found again.
    std::erase_if(m_forms, [](const ResizeRecord &record) { return record.widget.isNull(); });
    std::erase_if(m_controls, [](const ResizeRecord &record) { return record.widget.isNull(); });

    ResizeRecord record;
    record.Name = form->objectName();
    const QRect outer = form->frameGeometry();
    record.Top = twips(outer.y());
    record.Left = twips(outer.x());
    record.Height = twips(outer.height());
    record.Width = twips(outer.width());
    record.ScaleHeight = twips(innerHeight(form));
    record.ScaleWidth = twips(form->width());
    record.widget = form;
    m_forms.push_back(record);

    for (QWidget *control : controlsOf(form)) {
        if (FindControl(control, record.Name) < 0)
            RegisterControl(control, record.Name);
    }
}

int FormResizer::FindControl(const QWidget *control, const QString &formName) const
{
    for (std::size_t i = 0; i < m_controls.size(); ++i) {
        if (m_controls[i].widget == control && m_controls[i].FormName == formName)
            return static_cast<int>(i);
    }
    return -1;
}

void FormResizer::RegisterControl(QWidget *control, const QString &formName)
{
    ResizeRecord record;
    record.Name = control->objectName();
    record.FormName = formName;
    const QRect place = control->geometry();
    record.Top = twips(place.y());
    record.Left = twips(place.x());
    if (record.Left < 0)
        record.Left += HIDDEN_PAGE_OFFSET;
    record.Height = twips(place.height());
    record.Width = twips(place.width());
    record.FontSize = fontPoints(control);
    record.widget = control;
    m_controls.push_back(record);
    // Qt's list boxes take any height already; there is no whole-rows setting to switch off.

    // A control that keeps its font must not take the scaled font of the frame around it: Qt hands a
    // container's font down to every child that has none of its own.
    if (fontRuleOf(control) == FontRule::Keep && !isContainer(control)) {
        QFont own = control->font();
        own.setResolveMask(QFont::AllPropertiesResolved);
        control->setFont(own);
    }
}

std::optional<std::int32_t> FormResizer::WidthPercent(const QWidget *form) const
{
    const int index = FindForm(form);
    if (index < 0)
        return std::nullopt;
    return percentOf(twips(form->width()), m_forms[static_cast<std::size_t>(index)].ScaleWidth);
}

std::optional<std::int32_t> FormResizer::HeightPercent(const QWidget *form) const
{
    const int index = FindForm(form);
    if (index < 0)
        return std::nullopt;
    return percentOf(twips(innerHeight(form)), m_forms[static_cast<std::size_t>(index)].ScaleHeight);
}

void FormResizer::ResizeControl(QWidget *control, const QWidget *form)
{
    const QString formName = form->objectName();
    int index = FindControl(control, formName);
    if (index < 0) {
        RegisterControl(control, formName);
        index = static_cast<int>(m_controls.size()) - 1;
    }
    const ResizeRecord &record = m_controls[static_cast<std::size_t>(index)];

    // A control that cannot be computed (a form registered with no inner size, a value out of range) is passed
    // over; the next one follows.
    const std::optional<std::int32_t> w = WidthPercent(form);
    const std::optional<std::int32_t> h = HeightPercent(form);
    if (!w || !h)
        return;
    std::optional<std::int32_t> left = scaled(record.Left, *w);
    const std::optional<std::int32_t> top = scaled(record.Top, *h);
    const std::optional<std::int32_t> width = scaled(record.Width, *w);
    const std::optional<std::int32_t> height = scaled(record.Height, *h);
    const std::optional<std::int32_t> fontSize = scaled(record.FontSize, *w);
    if (!left || !top || !width || !height || !fontSize)
        return;
    // Qt's tab widget hides the pages that are not showing rather than moving their controls 75000 twips to
    // the left, so on our forms a left below 0 is one that code chose, and it is kept below 0 here. A control
    // on a hidden page stays hidden because its page is, and its layout puts it in place once the page shows.
    if (twips(control->x()) < 0)
        *left -= HIDDEN_PAGE_OFFSET;

    const FontRule rule = fontRuleOf(control);
    if (rule != FontRule::Keep) {
        QFont font = control->font();
        // A size of 0 asks for the smallest font there is; Qt's smallest is 1 point.
        font.setPointSize(std::max(*fontSize, 1));
        if (rule == FontRule::ListBox) {
            font.setFamily(QStringLiteral("Courier New"));
            font.setBold(true);
        }
        if (font != control->font())
            control->setFont(font);
    }

    // Where the container has a layout, the layout places the control (or code that knows its neighbours: the
    // parking list drops down under its box); the computed place would only fight it.
    const QWidget *container = control->parentWidget();
    if (container == nullptr || container->layout() != nullptr)
        return;
    if (qobject_cast<QComboBox *>(control))
        control->setGeometry(pixels(*left), pixels(*top), pixels(*width), control->height());
    else
        control->setGeometry(pixels(*left), pixels(*top), pixels(*width), pixels(*height));
}

} // namespace fleetwright
