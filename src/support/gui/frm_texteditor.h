#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include <QDialog>

class QAction;
class QCloseEvent;
class QKeyEvent;

namespace Ui {
class frm_TextEditor;
}

namespace fleetwright {

class Dialogs;
class JournalService;
struct ProgramState;

// What the editor opens: the airlines.cfg of FS9 or FSX, whose paths start-up keeps, or the file named.
struct TextEditorSubject
{
    enum class Kind
    {
        Fs9Airlines,
        FsxAirlines,
        File,
    } kind;
    std::u16string file; // Kind::File only
};

// The program's own plain-text editor. Files are Windows-1252 and keep their line ends: a file opened and saved
// unchanged keeps its bytes. After an airlines.cfg the airline list of that simulator is read into the program
// state again when the editor closes, whether the text was changed or not.
//
// Boxes and file dialogs go through the Dialogs given; it and the state must outlive the form.
class frm_TextEditor : public QDialog
{
    Q_OBJECT

public:
    frm_TextEditor(Dialogs &dialogs, ProgramState &state, const TextEditorSubject &subject, QWidget *parent = nullptr);
    ~frm_TextEditor() override;

    // False when the file of the subject could not be read: the failure has been shown, and the form is
    // not to be shown.
    bool isLoaded() const { return m_loaded; }
    // The file that Save writes to; empty for a new text.
    const std::u16string &fileName() const { return FileName; }
    bool isDirty() const { return Dirty; }
    // With a journal each save is an operation of the saved file's folder, "Edit aircraft.cfg", and a save
    // that the journal cannot keep the old bytes of does not happen. Without one saves are not journaled.
    void setHistory(JournalService *history) { m_history = history; }

public slots:
    // Closing by any road asks about unsaved text first.
    void reject() override;

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private slots:
    void mnuFileNew_Click();
    void mnuFileOpen_Click();
    void mnuFileSave_Click();
    void mnuFileSaveAs_Click();
    void mnuFileMRU_Click(int index);
    void mnuFileExit_Click();
    void mnuSelectAll_Click();
    void mnuEditCut_Click();
    void mnuEditCopy_Click();
    void mnuEditPaste_Click();
    void mnuSearchFind_Click();
    void mnuSearchFindAgain_Click();
    void txtData_Change();

private:
    void connectMenus();
    bool Form_Load();
    bool Form_QueryUnload();
    void Form_Unload();

    bool dataSafe();
    void loadText();
    void loadShowingErrors();
    void saveText();
    void addRecentFile(const std::u16string &path);
    bool selectMatch(int from);
    std::u16string initialFolder() const;
    QString selectedText() const;
    QString fileText() const;

    std::unique_ptr<Ui::frm_TextEditor> m_ui;
    Dialogs &m_dialogs;
    ProgramState &m_state;
    const TextEditorSubject m_subject;
    JournalService *m_history = nullptr;
    // mnuFileMRU(0) is the separator above the recent files, 1 to 4 the files.
    std::array<QAction *, 5> mnuFileMRU {};
    // The line end that lines added in the box get: the file's first one, CR LF when it has none.
    int m_newLineEnd = 0;
    bool m_loaded = true;
    bool m_unloaded = false;

    std::u16string FileName;
    bool Dirty = false;
    std::int16_t MruCount = 0;
    std::u16string SearchText;
};

// Shows the editor for subject, modal over parent, and returns when it has closed. One editor at a time: while
// one is open, a second call only brings it to the front. Its saves go into history when one is given.
void showTextEditor(QWidget *parent, Dialogs &dialogs, ProgramState &state, const TextEditorSubject &subject,
                    JournalService *history = nullptr);

} // namespace fleetwright
