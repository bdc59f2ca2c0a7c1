#pragma once

#include <QMessageBox>
#include <QPointer>
#include <QString>
#include <QWidget>

#include "core/dialogs.h"

namespace fleetwright {

// The boxes and file dialogs of the GUI: modal Qt dialogs over the given widget (or the active window when
// there is none), so the engine's questions look like the rest of the program.
class QtDialogs : public Dialogs
{
public:
    explicit QtDialogs(QWidget *parent = nullptr);

    QWidget *parent() const { return m_parent; }
    void setParent(QWidget *parent) { m_parent = parent; }

    bool question(const std::u16string &text, const std::u16string &title) override;
    bool criticalQuestion(const std::u16string &text, const std::u16string &title) override;
    void information(const std::u16string &text, const std::u16string &title) override;
    void critical(const std::u16string &text, const std::u16string &title) override;
    void plain(const std::u16string &text, const std::u16string &title) override;
    void exclamation(const std::u16string &text, const std::u16string &title) override;
    int yesNoCancel(const std::u16string &text, const std::u16string &title) override;
    // The third button is a button like the others; Escape and the window's close button give 0.
    int threeButtonQuestion(const std::u16string &text, const std::u16string &title, const std::u16string &first,
                            const std::u16string &second, const std::u16string &third) override;
    // Both file dialogs add the first filter's extension to a name typed without one ("*.txt" gives
    // ".txt"), and start with the first filter chosen.
    std::optional<std::u16string> openFile(const std::u16string &title, const std::u16string &filter,
                                           const std::u16string &initialFolder) override;
    std::optional<std::u16string> saveFile(const std::u16string &title, const std::u16string &filter,
                                           const std::u16string &initialFolder) override;
    std::optional<std::u16string> inputBox(const std::u16string &prompt, const std::u16string &title,
                                           const std::u16string &defaultText) override;

private:
    QWidget *owner() const;
    void message(QMessageBox::Icon icon, const std::u16string &text, const std::u16string &title);
    std::optional<std::u16string> fileDialog(bool save, const std::u16string &title, const std::u16string &filter,
                                             const std::u16string &initialFolder);

    QPointer<QWidget> m_parent;
};

// The title a box shows: the program's name when the caller gives none.
QString boxTitle(const std::u16string &title);

// "Text Files (*.txt)|*.txt|All Files (*.*)|*.*" in Qt's form, "Text Files (*.txt);;All Files (*.*)".
// A description that does not end in its own patterns gets them appended in brackets, since Qt takes the
// patterns from there; ";" between patterns becomes a blank. A lone trailing description without patterns
// is dropped.
QString qtFileFilter(const std::u16string &filter);

// The extension that a name typed without one gets: "txt" for a first filter of "*.txt", nothing for "*.*".
QString defaultSuffix(const std::u16string &filter);

} // namespace fleetwright
