#pragma once

#include <string>

#include <QString>

class QWidget;

namespace fleetwright {

class Dialogs;

// Balloon tooltips: a bold "Fleetwright:" title beside the information icon, black text on light orange
// (0xC0E0FF with blue in the high byte, #FFE0C0), never wider than 250 pixels.

// The dynamic property that keeps a control's tooltip text as it was designed, while its toolTip() holds the
// balloon's rich text.
inline constexpr char PLAIN_TOOL_TIP_PROPERTY[] = "plainToolTip";
inline constexpr int TOOL_TIP_MAX_WIDTH = 250;

// Called from each form's set-up. With on, every control of form that carries a tooltip text shows it as a
// balloon, and the form gets the balloon's colours; calling it again changes nothing. Without on, every
// control's tooltip is emptied, so none shows at all. Menu entries are not controls and keep theirs.
void SetUpToolTips(QWidget *form, bool on);

// One text as balloon rich text, for places that set tips themselves (a status bar panel's tip). The colours
// come from the form's style, so the widget must stand on a form that SetUpToolTips has set up with on.
QString balloonToolTip(const QString &text);

// A control's tooltip text without the balloon: the designed text, or its plain toolTip() when it has none.
QString plainToolTip(const QWidget *widget);

// A question with Yes, No and Cancel whose first two buttons carry yesLabel and noLabel, and the question
// icon: 6 for the first button, 7 for the second, 2 for Cancel and for a box closed without a button. The
// strings are shown as they are.
int AskWithLabels(QWidget *owner, const std::u16string &title, const std::u16string &prompt,
                  const std::u16string &yesLabel, const std::u16string &noLabel);
// The same through the given dialogs, so that tests answer it from their script (as a three-button
// question labelled yesLabel, noLabel, "Cancel").
int AskWithLabels(Dialogs &dialogs, const std::u16string &title, const std::u16string &prompt,
                  const std::u16string &yesLabel, const std::u16string &noLabel);

} // namespace fleetwright
