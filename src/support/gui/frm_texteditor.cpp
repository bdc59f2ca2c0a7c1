#include "support/gui/frm_texteditor.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <QAction>
#include <QClipboard>
#include <QCloseEvent>
#include <QFont>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QLayout>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include "core/dialogs.h"
#include "core/errorbox.h"
#include "core/gui/textconvert.h"
#include "core/runtimeerror.h"
#include "environment/programstate.h"
#include "environment/simulatorenvironment.h"
#include "history/gui/journalservice.h"
#include "platform/codepage.h"
#include "platform/fileio.h"
#include "ui_frm_texteditor.h"

namespace fs = std::filesystem;

namespace fleetwright {

namespace {

const std::u16string TEXT_FILTER = u"Text Files (*.txt)|*.txt|All Files (*.*)|*.*";
const std::u16string FIND_TITLE = u"Find Text";
const std::u16string NOT_FOUND = u"Search text was not found.";
const std::u16string FORM_NAME = u"frm_TextEditor";

// Each line of the box remembers, as its block's user state, the line end that followed it in the file, so
// that a file saved unchanged keeps its bytes, mixed line ends included. Lines without a state (added in
// the box, or the last line) get the file's usual one.
constexpr int CR_LF = 0;
constexpr int LF = 1;
constexpr int CR = 2;

QString lineEndText(int lineEnd)
{
    switch (lineEnd) {
    case LF:
        return QStringLiteral("\n");
    case CR:
        return QStringLiteral("\r");
    default:
        return QStringLiteral("\r\n");
    }
}

// The run-time error that opening a text stream on path for writing met with.
RuntimeError writeError(const fs::path &path)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status))
        return RuntimeError(75, u"Path/File access error");
    if (!fs::exists(status)) {
        const fs::path folder = path.parent_path();
        if (!folder.empty() && !fs::is_directory(folder, error))
            return RuntimeError(76, u"Path not found");
    }
    return RuntimeError(70, u"Permission denied");
}

std::string readText(const std::u16string &fileName)
{
    const fs::path path(fileName);
    platform::WholeFile read = platform::readWholeFile(path);
    if (!read.bytes)
        throw RuntimeError::readFailure(read.failure);
    return std::move(*read.bytes);
}

// The lines of an airlines.cfg as start-up keeps them.
std::vector<std::u16string> airlineLines(const std::string &bytes)
{
    return splitAtCrLf(platform::fromCodePage(bytes));
}

void showRuntimeFailure(Dialogs &dialogs, RuntimeError error, const std::u16string &procedure)
{
    error.setProcedure(procedure);
    dialogs.critical(commonErrorText(error, FORM_NAME), {});
}

void showFileError(Dialogs &dialogs, const RuntimeError &error)
{
    const std::string number = std::to_string(error.number());
    dialogs.plain(
        u"ERROR: " + error.description() + u". [Error #" + std::u16string(number.begin(), number.end()) + u"]", {});
}

} // namespace

frm_TextEditor::frm_TextEditor(Dialogs &dialogs, ProgramState &state, const TextEditorSubject &subject, QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::frm_TextEditor>())
    , m_dialogs(dialogs)
    , m_state(state)
    , m_subject(subject)
{
    m_ui->setupUi(this);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setWindowFlag(Qt::WindowMinMaxButtonsHint, true);
    // A .ui font has no style hint: where Courier New is missing, a fixed-pitch font stands in.
    QFont font = m_ui->txtData->font();
    font.setStyleHint(QFont::TypeWriter);
    m_ui->txtData->setFont(font);
    // Only code hands a dialog's layout its menu bar. uic makes the bar before the box; raised, it follows the box
    // among the form's children again.
    layout()->setMenuBar(m_ui->menuBar);
    m_ui->menuBar->raise();
    mnuFileMRU = {m_ui->mnuFileMRU_0, m_ui->mnuFileMRU_1, m_ui->mnuFileMRU_2, m_ui->mnuFileMRU_3, m_ui->mnuFileMRU_4};
    connectMenus();

    connect(m_ui->txtData, &QPlainTextEdit::textChanged, this, &frm_TextEditor::txtData_Change);
    m_loaded = Form_Load();
}

frm_TextEditor::~frm_TextEditor() = default;

// The platform's standard keys are no fixed key sequences, so they are set here rather than in the form.
void frm_TextEditor::connectMenus()
{
    const auto item = [this](QAction *action, QKeySequence::StandardKey keys, void (frm_TextEditor::*slot)()) {
        if (keys != QKeySequence::UnknownKey)
            action->setShortcut(keys);
        connect(action, &QAction::triggered, this, slot);
    };
    item(m_ui->mnuFileNew, QKeySequence::New, &frm_TextEditor::mnuFileNew_Click);
    item(m_ui->mnuFileOpen, QKeySequence::Open, &frm_TextEditor::mnuFileOpen_Click);
    item(m_ui->mnuFileSave, QKeySequence::Save, &frm_TextEditor::mnuFileSave_Click);
    item(m_ui->mnuFileSaveAs, QKeySequence::SaveAs, &frm_TextEditor::mnuFileSaveAs_Click);
    for (int index = 1; index <= 4; ++index)
        connect(mnuFileMRU[index], &QAction::triggered, this, [this, index] { mnuFileMRU_Click(index); });
    item(m_ui->mnuFileExit, QKeySequence::UnknownKey, &frm_TextEditor::mnuFileExit_Click);
    item(m_ui->mnuSelectAll, QKeySequence::SelectAll, &frm_TextEditor::mnuSelectAll_Click);
    item(m_ui->mnuEditCut, QKeySequence::Cut, &frm_TextEditor::mnuEditCut_Click);
    item(m_ui->mnuEditCopy, QKeySequence::Copy, &frm_TextEditor::mnuEditCopy_Click);
    item(m_ui->mnuEditPaste, QKeySequence::Paste, &frm_TextEditor::mnuEditPaste_Click);
    item(m_ui->mnuSearchFind, QKeySequence::Find, &frm_TextEditor::mnuSearchFind_Click);
    item(m_ui->mnuSearchFindAgain, QKeySequence::UnknownKey, &frm_TextEditor::mnuSearchFindAgain_Click);
}

// A file that cannot be read here stops the form from loading; the caller shows nothing then.
bool frm_TextEditor::Form_Load()
{
    switch (m_subject.kind) {
    case TextEditorSubject::Kind::Fs9Airlines:
        FileName = m_state.Fs9AirlinesPath;
        break;
    case TextEditorSubject::Kind::FsxAirlines:
        FileName = m_state.FsxAirlinesPath;
        break;
    case TextEditorSubject::Kind::File:
        FileName = m_subject.file;
        break;
    }
    try {
        loadText();
    } catch (const RuntimeError &error) {
        showRuntimeFailure(m_dialogs, error, u"Form_Load");
        return false;
    }
    Dirty = false;
    return true;
}

bool frm_TextEditor::Form_QueryUnload()
{
    return dataSafe();
}

// The program searches its airline lists in memory, so an edited airlines.cfg must be read in again; it is
// read even when nothing was changed.
void frm_TextEditor::Form_Unload()
{
    if (m_subject.kind == TextEditorSubject::Kind::File)
        return;
    const bool fs9 = m_subject.kind == TextEditorSubject::Kind::Fs9Airlines;
    try {
        std::vector<std::u16string> lines =
            airlineLines(readText(fs9 ? m_state.Fs9AirlinesPath : m_state.FsxAirlinesPath));
        (fs9 ? m_state.Fs9Airlines : m_state.FsxAirlines) = std::move(lines);
    } catch (const RuntimeError &error) {
        showRuntimeFailure(m_dialogs, error, u"Form_Unload");
    }
}

void frm_TextEditor::reject()
{
    close();
}

void frm_TextEditor::closeEvent(QCloseEvent *event)
{
    if (m_unloaded) {
        event->accept();
        return;
    }
    if (!Form_QueryUnload()) {
        event->ignore();
        return;
    }
    m_unloaded = true;
    Form_Unload();
    event->accept();
    QDialog::done(QDialog::Rejected);
}

// Escape belongs to the text, not to the window: the editor closes only from its menu or its frame.
void frm_TextEditor::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

bool frm_TextEditor::dataSafe()
{
    if (!Dirty)
        return true;
    switch (m_dialogs.yesNoCancel(u"You have changed this text. Do you want to save it?", {})) {
    case 6:
        // Goes ahead even when the save was cancelled or failed: the text is dropped then.
        saveText();
        return true;
    case 7:
        Dirty = false;
        return true;
    default:
        return false;
    }
}

void frm_TextEditor::loadText()
{
    const std::u16string text = platform::fromCodePage(readText(FileName));

    QString lines;
    lines.reserve(static_cast<qsizetype>(text.size()));
    std::vector<int> lineEnds;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t ch = text[i];
        if (ch == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') {
            lineEnds.push_back(CR_LF);
            ++i;
        } else if (ch == u'\r') {
            lineEnds.push_back(CR);
        } else if (ch == u'\n') {
            lineEnds.push_back(LF);
        } else {
            lines.append(QChar(ch));
            continue;
        }
        lines.append(QLatin1Char('\n'));
    }

    m_ui->txtData->setPlainText(lines);
    std::size_t line = 0;
    for (QTextBlock block = m_ui->txtData->document()->begin(); block.isValid(); block = block.next(), ++line)
        block.setUserState(line < lineEnds.size() ? lineEnds[line] : -1);
    m_newLineEnd = lineEnds.empty() ? CR_LF : lineEnds.front();
    Dirty = false;
}

void frm_TextEditor::loadShowingErrors()
{
    try {
        loadText();
    } catch (const RuntimeError &error) {
        showFileError(m_dialogs, error);
    }
}

QString frm_TextEditor::fileText() const
{
    QString text;
    for (QTextBlock block = m_ui->txtData->document()->begin(); block.isValid(); block = block.next()) {
        // block.text() keeps no-break spaces, which the document's plain text turns into blanks.
        QString line = block.text();
        line.replace(QChar::LineSeparator, lineEndText(m_newLineEnd));
        text += line;
        if (block.next().isValid()) {
            const int state = block.userState();
            text += lineEndText(state >= CR_LF && state <= CR ? state : m_newLineEnd);
        }
    }
    return text;
}

void frm_TextEditor::saveText()
{
    if (FileName.empty()) {
        const std::optional<std::u16string> chosen = m_dialogs.saveFile(u"Save File", TEXT_FILTER, initialFolder());
        if (!chosen || chosen->empty())
            return;
        FileName = *chosen;
    }
    const fs::path path(FileName);
    std::optional<JournalService::Operation> operation;
    if (m_history) {
        try {
            operation.emplace(*m_history, path.parent_path(), u"Edit " + path.filename().u16string());
            journalBeforeChange(path);
        } catch (const RuntimeError &error) {
            showFileError(m_dialogs, error);
            return;
        }
    }
    if (!platform::replaceFileAtomically(path, platform::toCodePage(toU16String(fileText())))) {
        showFileError(m_dialogs, writeError(path));
        return;
    }
    Dirty = false;
}

std::u16string frm_TextEditor::initialFolder() const
{
    if (FileName.empty())
        return {};
    return fs::path(FileName).parent_path().u16string();
}

// No test for a path already in the list: opening one file twice gives two entries.
void frm_TextEditor::addRecentFile(const std::u16string &path)
{
    mnuFileMRU[0]->setVisible(true);
    if (MruCount < 4) {
        ++MruCount;
        mnuFileMRU[MruCount]->setVisible(true);
    }
    for (int index = MruCount; index >= 2; --index)
        mnuFileMRU[index]->setText(QStringLiteral("&%1 ").arg(index) + mnuFileMRU[index - 1]->text().mid(3));
    mnuFileMRU[1]->setText(QStringLiteral("&1 ") + toQString(path));
    mnuFileMRU[1]->setVisible(true);
}

void frm_TextEditor::mnuFileNew_Click()
{
    if (!dataSafe())
        return;
    FileName.clear();
    m_ui->txtData->clear();
    m_newLineEnd = CR_LF;
    Dirty = false;
}

void frm_TextEditor::mnuFileOpen_Click()
{
    if (!dataSafe())
        return;
    const std::optional<std::u16string> chosen = m_dialogs.openFile(u"Open File", TEXT_FILTER, initialFolder());
    if (!chosen || chosen->empty())
        return;
    FileName = *chosen;
    addRecentFile(FileName);
    loadShowingErrors();
}

void frm_TextEditor::mnuFileSave_Click()
{
    saveText();
}

void frm_TextEditor::mnuFileSaveAs_Click()
{
    const std::u16string kept = FileName;
    FileName.clear();
    saveText();
    if (FileName.empty())
        FileName = kept;
}

// The list is not reordered by a click.
void frm_TextEditor::mnuFileMRU_Click(int index)
{
    if (!dataSafe())
        return;
    FileName = toU16String(mnuFileMRU[index]->text().mid(3));
    loadShowingErrors();
}

void frm_TextEditor::mnuFileExit_Click()
{
    close();
}

void frm_TextEditor::mnuSelectAll_Click()
{
    m_ui->txtData->selectAll();
}

QString frm_TextEditor::selectedText() const
{
    QString text = m_ui->txtData->textCursor().selectedText();
    text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    text.replace(QChar::LineSeparator, QLatin1Char('\n'));
    return text;
}

void frm_TextEditor::mnuEditCut_Click()
{
    mnuEditCopy_Click();
    m_ui->txtData->textCursor().removeSelectedText();
}

void frm_TextEditor::mnuEditCopy_Click()
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    clipboard->clear();
    clipboard->setText(selectedText());
}

void frm_TextEditor::mnuEditPaste_Click()
{
    QTextCursor cursor = m_ui->txtData->textCursor();
    cursor.insertText(QGuiApplication::clipboard()->text());
    m_ui->txtData->setTextCursor(cursor);
}

bool frm_TextEditor::selectMatch(int from)
{
    // The raw text counts one character for each line break, as the box's positions do.
    const QString text = m_ui->txtData->document()->toRawText();
    const QString wanted = toQString(SearchText);
    const qsizetype at = text.indexOf(wanted, std::max(from, 0), Qt::CaseInsensitive);
    if (at < 0)
        return false;
    QTextCursor cursor(m_ui->txtData->document());
    cursor.setPosition(static_cast<int>(at));
    cursor.setPosition(static_cast<int>(at + wanted.size()), QTextCursor::KeepAnchor);
    m_ui->txtData->setTextCursor(cursor);
    return true;
}

void frm_TextEditor::mnuSearchFind_Click()
{
    SearchText = m_dialogs.inputBox(u"Enter the text to find.", FIND_TITLE, {}).value_or(std::u16string());
    if (SearchText.empty())
        return;
    if (!selectMatch(0)) {
        SearchText.clear();
        m_dialogs.exclamation(NOT_FOUND, FIND_TITLE);
    }
}

// The search starts at selection start + length counted from 1, which is the last selected character and
// not the one behind it: a single letter is found at the same place again. Kept as users know it.
void frm_TextEditor::mnuSearchFindAgain_Click()
{
    if (SearchText.empty())
        mnuSearchFind_Click();
    // Nothing to look for when that search was cancelled, left empty or failed (and said so already).
    if (SearchText.empty())
        return;
    const QTextCursor cursor = m_ui->txtData->textCursor();
    const int from = cursor.selectionStart() + (cursor.selectionEnd() - cursor.selectionStart()) - 1;
    if (!selectMatch(from)) {
        SearchText.clear();
        m_dialogs.exclamation(NOT_FOUND, {});
    }
}

void frm_TextEditor::txtData_Change()
{
    Dirty = true;
}

void showTextEditor(QWidget *parent, Dialogs &dialogs, ProgramState &state, const TextEditorSubject &subject,
                    JournalService *history)
{
    static QPointer<frm_TextEditor> open;
    if (open) {
        open->raise();
        open->activateWindow();
        return;
    }
    frm_TextEditor editor(dialogs, state, subject, parent);
    if (!editor.isLoaded())
        return;
    editor.setHistory(history);
    open = &editor;
    editor.exec();
}

} // namespace fleetwright
