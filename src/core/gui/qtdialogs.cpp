#include "qtdialogs.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QInputDialog>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QStringList>

#include "core/gui/textconvert.h"

namespace fleetwright {

namespace {

// A question whose buttons all answer something: leaving it by Escape or the window's close button must not
// count as one of them, and QMessageBox would click its escape button for both.
class ThreeButtonBox : public QMessageBox
{
public:
    using QMessageBox::QMessageBox;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
            reject();
            return;
        }
        QMessageBox::keyPressEvent(event);
    }
    void closeEvent(QCloseEvent *event) override { QDialog::closeEvent(event); }
};

struct FilterPair
{
    QString description;
    QString patterns;
};

QList<FilterPair> filterPairs(const std::u16string &filter)
{
    const QStringList parts = toQString(filter).split(QLatin1Char('|'));
    QList<FilterPair> pairs;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2)
        pairs.append({parts.at(i), parts.at(i + 1)});
    return pairs;
}

} // namespace

QString boxTitle(const std::u16string &title)
{
    return title.empty() ? QStringLiteral("Fleetwright") : toQString(title);
}

QString qtFileFilter(const std::u16string &filter)
{
    QStringList entries;
    for (const FilterPair &pair : filterPairs(filter)) {
        const QString patterns = QString(pair.patterns).replace(QLatin1Char(';'), QLatin1Char(' ')).trimmed();
        const QString own = QLatin1Char('(') + patterns + QLatin1Char(')');
        if (pair.description.trimmed().endsWith(own))
            entries.append(pair.description);
        else
            entries.append(pair.description + QLatin1String(" ") + own);
    }
    return entries.join(QLatin1String(";;"));
}

QString defaultSuffix(const std::u16string &filter)
{
    const QList<FilterPair> pairs = filterPairs(filter);
    if (pairs.isEmpty())
        return {};
    const QString first = pairs.first().patterns.section(QLatin1Char(';'), 0, 0).trimmed();
    if (!first.startsWith(QLatin1String("*.")))
        return {};
    const QString suffix = first.mid(2);
    if (suffix.isEmpty() || suffix.contains(QLatin1Char('*')) || suffix.contains(QLatin1Char('?')))
        return {};
    return suffix;
}

QtDialogs::QtDialogs(QWidget *parent)
    : m_parent(parent)
{}

QWidget *QtDialogs::owner() const
{
    return m_parent ? m_parent.data() : QApplication::activeWindow();
}

void QtDialogs::message(QMessageBox::Icon icon, const std::u16string &text, const std::u16string &title)
{
    QMessageBox box(icon, boxTitle(title), toQString(text), QMessageBox::Ok, owner());
    box.exec();
}

bool QtDialogs::question(const std::u16string &text, const std::u16string &title)
{
    QMessageBox box(QMessageBox::Question, boxTitle(title), toQString(text), QMessageBox::Yes | QMessageBox::No,
                    owner());
    box.setDefaultButton(QMessageBox::Yes);
    return box.exec() == QMessageBox::Yes;
}

bool QtDialogs::criticalQuestion(const std::u16string &text, const std::u16string &title)
{
    QMessageBox box(QMessageBox::Critical, boxTitle(title), toQString(text), QMessageBox::Yes | QMessageBox::No,
                    owner());
    box.setDefaultButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

void QtDialogs::information(const std::u16string &text, const std::u16string &title)
{
    message(QMessageBox::Information, text, title);
}

void QtDialogs::critical(const std::u16string &text, const std::u16string &title)
{
    message(QMessageBox::Critical, text, title);
}

void QtDialogs::plain(const std::u16string &text, const std::u16string &title)
{
    message(QMessageBox::NoIcon, text, title);
}

void QtDialogs::exclamation(const std::u16string &text, const std::u16string &title)
{
    message(QMessageBox::Warning, text, title);
}

int QtDialogs::yesNoCancel(const std::u16string &text, const std::u16string &title)
{
    QMessageBox box(QMessageBox::Warning, boxTitle(title), toQString(text),
                    QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, owner());
    box.setDefaultButton(QMessageBox::Yes);
    switch (box.exec()) {
    case QMessageBox::Yes:
        return 6;
    case QMessageBox::No:
        return 7;
    default:
        return 2;
    }
}

int QtDialogs::threeButtonQuestion(const std::u16string &text, const std::u16string &title, const std::u16string &first,
                                   const std::u16string &second, const std::u16string &third)
{
    ThreeButtonBox box(QMessageBox::Question, boxTitle(title), toQString(text), QMessageBox::NoButton, owner());
    QPushButton *buttons[] = {
        box.addButton(toQString(first), QMessageBox::YesRole),
        box.addButton(toQString(second), QMessageBox::NoRole),
        box.addButton(toQString(third), QMessageBox::RejectRole),
    };
    box.setDefaultButton(buttons[0]);
    box.exec();
    for (int i = 0; i < 3; ++i) {
        if (box.clickedButton() == buttons[i])
            return i + 1;
    }
    return 0;
}

std::optional<std::u16string> QtDialogs::fileDialog(bool save, const std::u16string &title,
                                                    const std::u16string &filter, const std::u16string &initialFolder)
{
    QFileDialog dialog(owner(), boxTitle(title), toQString(initialFolder), qtFileFilter(filter));
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    dialog.setDefaultSuffix(defaultSuffix(filter));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return toU16String(QDir::toNativeSeparators(dialog.selectedFiles().constFirst()));
}

std::optional<std::u16string> QtDialogs::openFile(const std::u16string &title, const std::u16string &filter,
                                                  const std::u16string &initialFolder)
{
    return fileDialog(false, title, filter, initialFolder);
}

std::optional<std::u16string> QtDialogs::saveFile(const std::u16string &title, const std::u16string &filter,
                                                  const std::u16string &initialFolder)
{
    return fileDialog(true, title, filter, initialFolder);
}

std::optional<std::u16string> QtDialogs::inputBox(const std::u16string &prompt, const std::u16string &title,
                                                  const std::u16string &defaultText)
{
    bool ok = false;
    const QString text = QInputDialog::getText(owner(), boxTitle(title), toQString(prompt), QLineEdit::Normal,
                                               toQString(defaultText), &ok);
    if (!ok)
        return std::nullopt;
    return toU16String(text);
}

} // namespace fleetwright
