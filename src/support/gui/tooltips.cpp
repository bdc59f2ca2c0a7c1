#include "tooltips.h"

#include <QApplication>
#include <QBuffer>
#include <QIcon>
#include <QMenu>
#include <QPixmap>
#include <QStyle>
#include <QTextDocument>
#include <QToolTip>
#include <QVariant>
#include <QWidget>

#include "core/dialogs.h"
#include "core/gui/qtdialogs.h"

namespace fleetwright {

namespace {

const QString BALLOON_STYLE =
    QStringLiteral("QToolTip { color: #000000; background-color: #FFE0C0; border: 1px solid #808080; padding: 2px; }");

// Frame, padding and the label's own margin around the text: what the balloon adds to the text's width.
constexpr int BALLOON_CHROME = 20;

// The icon travels inside the text, as a tooltip's rich text has no resources of its own.
const QString &informationIconSource()
{
    static const QString source = [] {
        const QPixmap pixmap = QApplication::style()->standardIcon(QStyle::SP_MessageBoxInformation).pixmap(16, 16);
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        pixmap.save(&buffer, "PNG");
        return QStringLiteral("data:image/png;base64,") + QString::fromLatin1(png.toBase64());
    }();
    return source;
}

QString balloonHtml(const QString &text, int width)
{
    QString body = text;
    body.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    body.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    const QString widthAttribute = width > 0 ? QStringLiteral(" width=\"%1\"").arg(width) : QString();
    return QStringLiteral("<qt><table cellspacing=\"0\" cellpadding=\"0\"%1><tr><td>"
                          "<p style=\"margin:0px\"><img src=\"%2\" width=\"16\" height=\"16\" align=\"middle\">"
                          "&nbsp;<b>Fleetwright:</b></p>"
                          "<p style=\"margin-top:4px; margin-bottom:0px; white-space:pre-wrap\">%3</p>"
                          "</td></tr></table></qt>")
        .arg(widthAttribute, informationIconSource(), body.toHtmlEscaped());
}

void addBalloonStyle(QWidget *form)
{
    const QString sheet = form->styleSheet();
    if (!sheet.contains(BALLOON_STYLE))
        form->setStyleSheet(sheet.isEmpty() ? BALLOON_STYLE : sheet + QLatin1Char('\n') + BALLOON_STYLE);
}

} // namespace

QString balloonToolTip(const QString &text)
{
    // Short texts keep their own width; longer ones wrap inside the limit.
    QTextDocument measure;
    measure.setDefaultFont(QToolTip::font());
    measure.setHtml(balloonHtml(text, 0));
    const int limit = TOOL_TIP_MAX_WIDTH - BALLOON_CHROME;
    return balloonHtml(text, measure.idealWidth() > limit ? limit : 0);
}

QString plainToolTip(const QWidget *widget)
{
    if (!widget)
        return {};
    const QVariant designed = widget->property(PLAIN_TOOL_TIP_PROPERTY);
    return designed.isValid() ? designed.toString() : widget->toolTip();
}

void SetUpToolTips(QWidget *form, bool on)
{
    if (!form)
        return;
    if (on)
        addBalloonStyle(form);
    const QList<QWidget *> controls = form->findChildren<QWidget *>();
    for (QWidget *control : controls) {
        if (qobject_cast<QMenu *>(control))
            continue;
        const QString text = plainToolTip(control);
        if (text.isEmpty())
            continue;
        if (on) {
            control->setProperty(PLAIN_TOOL_TIP_PROPERTY, text);
            control->setToolTip(balloonToolTip(text));
        } else {
            control->setProperty(PLAIN_TOOL_TIP_PROPERTY, QVariant());
            control->setToolTip(QString());
        }
    }
}

int AskWithLabels(Dialogs &dialogs, const std::u16string &title, const std::u16string &prompt,
                  const std::u16string &yesLabel, const std::u16string &noLabel)
{
    switch (dialogs.threeButtonQuestion(prompt, title, yesLabel, noLabel, u"Cancel")) {
    case 1:
        return 6;
    case 2:
        return 7;
    default:
        return 2;
    }
}

int AskWithLabels(QWidget *owner, const std::u16string &title, const std::u16string &prompt,
                  const std::u16string &yesLabel, const std::u16string &noLabel)
{
    QtDialogs dialogs(owner);
    return AskWithLabels(dialogs, title, prompt, yesLabel, noLabel);
}

} // namespace fleetwright
