#pragma once

#include <array>
#include <cstdint>
#include <string>

#include <QDialog>

class QAction;
class QCloseEvent;
class QKeyEvent;
class QPlainTextEdit;

namespace fleetwright {
class Dialogs;
}

// The program's own plain-text editor. What it opens comes from programState(): EditorMode 1 and 2 the
// airlines.cfg of FS9 and FSX, 3 EditorFile, 0 nothing. Files are Windows-1252 and keep their line ends:
// a file opened and saved unchanged keeps its bytes. After mode 1 or 2 the airline list of that simulator
// is read in again when the editor closes, whether the text was changed or not.
//
// Boxes and file dialogs go through the Dialogs given, which must outlive the form.
class frm_TextEditor : public QDialog
{
    Q_OBJECT

public:
    explicit frm_TextEditor(fleetwright::Dialogs &dialogs, QWidget *parent = nullptr);
    ~frm_TextEditor() override;

    // False when the file of EditorMode could not be read: the failure has been shown, and the form is
    // not to be shown.
    bool isLoaded() const { return m_loaded; }
    // The file that Save writes to; empty for a new text.
    const std::u16string &fileName() const { return FileName; }
    bool isDirty() const { return Dirty; }

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
    void buildMenus();
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

    fleetwright::Dialogs &m_dialogs;
    QPlainTextEdit *txtData = nullptr;
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

// Shows the editor for what programState().EditorMode names, modal over parent, and returns when it has
// closed. One editor at a time: while one is open, a second call only brings it to the front.
void showTextEditor(QWidget *parent, fleetwright::Dialogs &dialogs);

namespace fleetwright {

struct ProgramState;

// What the editor is to open: one of the simulators' airlines.cfg, or the file at `file`.
struct TextEditorSubject
{
    enum class Kind
    {
        Fs9Airlines,
        FsxAirlines,
        File
    } kind;
    std::u16string file;
};

// showTextEditor for subject; state is where the editor reads the airlines.cfg paths and writes the lists
// back when it closes.
void showTextEditor(QWidget *parent, Dialogs &dialogs, ProgramState &state, const TextEditorSubject &subject);

} // namespace fleetwright
