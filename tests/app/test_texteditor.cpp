#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QTextCursor>
#include <QTimer>

#include <gtest/gtest.h>

#include "app/gui/textconvert.h"
#include "app/programstate.h"
#include "core/scripteddialogs.h"
#include "support/frm_texteditor.h"

using fleetwright::DialogKind;
using fleetwright::DialogRecord;
using fleetwright::programState;
using fleetwright::ScriptedDialogs;

namespace {

const std::u16string CHANGED = u"You have changed this text. Do you want to save it?";
const std::u16string FILTER = u"Text Files (*.txt)|*.txt|All Files (*.*)|*.*";

void writeFile(const QString &path, std::string_view bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes.data(), static_cast<qint64>(bytes.size()));
}

std::string readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll().toStdString();
}

void resetEditorState()
{
    fleetwright::ProgramState &state = programState();
    state.EditorMode = 0;
    state.EditorFile.clear();
    state.Fs9AirlinesPath.clear();
    state.FsxAirlinesPath.clear();
    state.Fs9Airlines.clear();
    state.FsxAirlines.clear();
}

void trigger(frm_TextEditor &editor, const char *name)
{
    QAction *action = editor.findChild<QAction *>(QString::fromLatin1(name));
    ASSERT_NE(action, nullptr) << name;
    action->trigger();
}

QPlainTextEdit *textBox(frm_TextEditor &editor)
{
    return editor.findChild<QPlainTextEdit *>(QStringLiteral("txtData"));
}

QString mruCaption(frm_TextEditor &editor, int index)
{
    QAction *entry = editor.findChild<QAction *>(QStringLiteral("mnuFileMRU_%1").arg(index));
    return entry && entry->isVisible() ? entry->text() : QString();
}

// Opens the editor on a file of its own, as mnuCFG and the validation report do.
struct OpenFile
{
    OpenFile(ScriptedDialogs &dialogs, const QString &path)
    {
        resetEditorState();
        programState().EditorMode = 3;
        programState().EditorFile = toU16String(path);
        editor = std::make_unique<frm_TextEditor>(dialogs);
        editor->show();
    }
    std::unique_ptr<frm_TextEditor> editor;
};

class TextEditorTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        resetEditorState();
    }
    void TearDown() override { resetEditorState(); }

    QString path(const QString &name) const { return m_dir.filePath(name); }

    QTemporaryDir m_dir;
    ScriptedDialogs dialogs;
};

} // namespace

TEST_F(TextEditorTest, OpensWhatTheModeNamesAndKeepsTheBytes)
{
    writeFile(path(QStringLiteral("fs9.cfg")), "[airline]\r\nFS9 One\r\n");
    writeFile(path(QStringLiteral("fsx.cfg")), "FSX One\r\n");
    programState().Fs9AirlinesPath = toU16String(path(QStringLiteral("fs9.cfg")));
    programState().FsxAirlinesPath = toU16String(path(QStringLiteral("fsx.cfg")));
    {
        programState().EditorMode = 1;
        frm_TextEditor fs9(dialogs);
        EXPECT_EQ(textBox(fs9)->toPlainText(), QStringLiteral("[airline]\nFS9 One\n"));
        EXPECT_EQ(fs9.windowTitle(), QStringLiteral("TextEditor"));
        EXPECT_EQ(textBox(fs9)->font().family(), QStringLiteral("Courier New"));
        programState().EditorMode = 2;
        frm_TextEditor fsx(dialogs);
        EXPECT_EQ(textBox(fsx)->toPlainText(), QStringLiteral("FSX One\n"));
        programState().EditorMode = 0;
        frm_TextEditor empty(dialogs);
        EXPECT_TRUE(textBox(empty)->toPlainText().isEmpty());
        EXPECT_TRUE(empty.fileName().empty());
    }

    // Windows-1252 both ways, every line end as it stood, no final break added or lost.
    std::string everyByte;
    for (int byte = 0; byte < 256; ++byte)
        everyByte += static_cast<char>(byte);
    struct Row
    {
        const char *name;
        std::string bytes;
    };
    const std::vector<Row> rows = {
        {"crlf",
         "title=Caf\xE9 \x80 \xA6\r\nno\xA0"
         "break\ttab\r\n\r\n"},
        {"lf only", "a\nb\n"},
        {"mixed", "a\r\nb\nc\rd\r\n\r\re"},
        {"no final break", "[fltsim.0]\r\ntitle=x"},
        {"empty", ""},
        {"every byte", everyByte},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const QString file = path(QStringLiteral("round.txt"));
        writeFile(file, row.bytes);
        OpenFile open(dialogs, file);
        trigger(*open.editor, "mnuFileSave");
        EXPECT_EQ(readFile(file), row.bytes);
    }
    EXPECT_TRUE(dialogs.records().empty());

    // A line added in the box gets the file's own line end.
    const QString lf = path(QStringLiteral("lf.txt"));
    writeFile(lf, "one\ntwo\n");
    OpenFile open(dialogs, lf);
    textBox(*open.editor)->moveCursor(QTextCursor::End);
    QTest::keyClicks(textBox(*open.editor), QStringLiteral("three"));
    QTest::keyClick(textBox(*open.editor), Qt::Key_Return);
    textBox(*open.editor)->insertPlainText(QStringLiteral("\u00E9"));
    trigger(*open.editor, "mnuFileSave");
    EXPECT_EQ(readFile(lf), "one\ntwo\nthree\n\xE9");
}

TEST_F(TextEditorTest, ChangedTextIsAskedForBeforeItIsDropped)
{
    const QString first = path(QStringLiteral("first.txt"));
    const QString second = path(QStringLiteral("second.txt"));
    writeFile(first, "first\r\n");
    writeFile(second, "second\r\n");
    OpenFile open(dialogs, first);
    frm_TextEditor &editor = *open.editor;
    QPlainTextEdit *box = textBox(editor);

    // Unchanged text goes without a question.
    dialogs.pushFile(toU16String(second));
    trigger(editor, "mnuFileOpen");
    EXPECT_EQ(box->toPlainText(), QStringLiteral("second\n"));
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records().at(0),
              (DialogRecord {DialogKind::OpenFile, u"Open File", FILTER, {toU16String(m_dir.path())}}));

    // Cancel keeps the text and the file it belongs to.
    QTest::keyClicks(box, QStringLiteral("edited "));
    dialogs.pushYesNoCancel(2);
    trigger(editor, "mnuFileOpen");
    EXPECT_EQ(dialogs.records().back(), (DialogRecord {DialogKind::YesNoCancel, {}, CHANGED}));
    EXPECT_EQ(box->toPlainText(), QStringLiteral("edited second\n"));
    EXPECT_EQ(editor.fileName(), toU16String(second));
    EXPECT_EQ(dialogs.pendingAnswers(), 0u);

    // No drops the change; the file on disk stays as it was.
    dialogs.pushYesNoCancel(7);
    dialogs.pushFile(toU16String(first));
    trigger(editor, "mnuFileOpen");
    EXPECT_EQ(box->toPlainText(), QStringLiteral("first\n"));
    EXPECT_EQ(readFile(second), "second\r\n");

    // Yes saves, then goes ahead.
    QTest::keyClicks(box, QStringLiteral("new "));
    dialogs.pushYesNoCancel(6);
    trigger(editor, "mnuFileNew");
    EXPECT_EQ(readFile(first), "new first\r\n");
    EXPECT_TRUE(box->toPlainText().isEmpty());
    EXPECT_TRUE(editor.fileName().empty());

    // Closing asks too; Cancel keeps the form open.
    QTest::keyClicks(box, QStringLiteral("unsaved"));
    dialogs.pushYesNoCancel(2);
    EXPECT_FALSE(editor.close());
    EXPECT_TRUE(editor.isVisible());
    EXPECT_EQ(dialogs.records().back().text, CHANGED);
    dialogs.pushYesNoCancel(7);
    EXPECT_TRUE(editor.close());
    EXPECT_FALSE(editor.isVisible());
    EXPECT_EQ(dialogs.pendingAnswers(), 0u);
}

TEST_F(TextEditorTest, SaveAsWithoutANameKeepsTheFile)
{
    const QString file = path(QStringLiteral("keep.txt"));
    writeFile(file, "keep\r\n");
    OpenFile open(dialogs, file);
    frm_TextEditor &editor = *open.editor;
    QTest::keyClicks(textBox(editor), QStringLiteral("x"));

    dialogs.pushSaveFile(std::nullopt);
    trigger(editor, "mnuFileSaveAs");
    EXPECT_EQ(dialogs.records().back().kind, DialogKind::SaveFile);
    EXPECT_EQ(dialogs.records().back().title, u"Save File");
    EXPECT_EQ(editor.fileName(), toU16String(file));
    EXPECT_EQ(readFile(file), "keep\r\n");
    EXPECT_TRUE(editor.isDirty());

    // A chosen name becomes the file that Save writes to from then on.
    const QString copy = path(QStringLiteral("copy.txt"));
    dialogs.pushSaveFile(toU16String(copy));
    trigger(editor, "mnuFileSaveAs");
    EXPECT_EQ(readFile(copy), "xkeep\r\n");
    QTest::keyClicks(textBox(editor), QStringLiteral("y"));
    trigger(editor, "mnuFileSave");
    EXPECT_EQ(readFile(copy), "xykeep\r\n");
    EXPECT_EQ(readFile(file), "keep\r\n");

    // A new text asks for its name; cancelling writes nothing and says nothing.
    trigger(editor, "mnuFileNew");
    QTest::keyClicks(textBox(editor), QStringLiteral("fresh"));
    const std::size_t shown = dialogs.records().size();
    dialogs.pushSaveFile(std::nullopt);
    trigger(editor, "mnuFileSave");
    EXPECT_EQ(dialogs.records().size(), shown + 1);
    EXPECT_TRUE(editor.fileName().empty());
    EXPECT_TRUE(editor.isDirty());
    const QString fresh = path(QStringLiteral("fresh.txt"));
    dialogs.pushSaveFile(toU16String(fresh));
    trigger(editor, "mnuFileSave");
    EXPECT_EQ(readFile(fresh), "fresh");
    EXPECT_FALSE(editor.isDirty());
}

TEST_F(TextEditorTest, RecentFilesHoldTheLastFourOpened)
{
    std::vector<QString> files;
    for (int i = 1; i <= 5; ++i) {
        files.push_back(path(QStringLiteral("f%1.txt").arg(i)));
        writeFile(files.back(), "file " + std::to_string(i));
    }
    resetEditorState();
    frm_TextEditor editor(dialogs);
    QAction *separator = editor.findChild<QAction *>(QStringLiteral("mnuFileMRU_0"));
    ASSERT_NE(separator, nullptr);
    EXPECT_FALSE(separator->isVisible());
    EXPECT_TRUE(mruCaption(editor, 1).isEmpty());

    for (const QString &file : files) {
        dialogs.pushFile(toU16String(file));
        trigger(editor, "mnuFileOpen");
    }
    EXPECT_TRUE(separator->isVisible());
    EXPECT_EQ(mruCaption(editor, 1), QStringLiteral("&1 ") + files[4]);
    EXPECT_EQ(mruCaption(editor, 2), QStringLiteral("&2 ") + files[3]);
    EXPECT_EQ(mruCaption(editor, 3), QStringLiteral("&3 ") + files[2]);
    EXPECT_EQ(mruCaption(editor, 4), QStringLiteral("&4 ") + files[1]);

    // An entry opens its file and leaves the order alone.
    trigger(editor, "mnuFileMRU_3");
    EXPECT_EQ(textBox(editor)->toPlainText(), QStringLiteral("file 3"));
    EXPECT_EQ(editor.fileName(), toU16String(files[2]));
    EXPECT_EQ(mruCaption(editor, 1), QStringLiteral("&1 ") + files[4]);

    // The same file again is a second entry.
    dialogs.pushFile(toU16String(files[4]));
    trigger(editor, "mnuFileOpen");
    EXPECT_EQ(mruCaption(editor, 1), QStringLiteral("&1 ") + files[4]);
    EXPECT_EQ(mruCaption(editor, 2), QStringLiteral("&2 ") + files[4]);
    EXPECT_EQ(mruCaption(editor, 4), QStringLiteral("&4 ") + files[2]);

    // A cancelled dialog changes nothing.
    dialogs.pushFile(std::nullopt);
    trigger(editor, "mnuFileOpen");
    EXPECT_EQ(mruCaption(editor, 2), QStringLiteral("&2 ") + files[4]);
    EXPECT_EQ(editor.fileName(), toU16String(files[4]));
}

TEST_F(TextEditorTest, AirlineListIsReadAgainOnClose)
{
    const QString fs9 = path(QStringLiteral("fs9_airlines.cfg"));
    const QString fsx = path(QStringLiteral("fsx_airlines.cfg"));
    writeFile(fs9, "Old\r\n");
    writeFile(fsx, "FSX\r\n");
    fleetwright::ProgramState &state = programState();
    state.Fs9AirlinesPath = toU16String(fs9);
    state.FsxAirlinesPath = toU16String(fsx);
    state.Fs9Airlines = {u"stale"};
    state.FsxAirlines = {u"FSX kept"};

    // Nothing changed in the box, but the file on disk did: the list follows the file.
    state.EditorMode = 1;
    {
        frm_TextEditor editor(dialogs);
        editor.show();
        writeFile(fs9, "Caf\xE9 Air\r\n[x]\r\nLast ");
        EXPECT_TRUE(editor.close());
    }
    EXPECT_EQ(state.Fs9Airlines, (std::vector<std::u16string> {u"Caf\u00E9 Air", u"[x]", u"Last "}));
    EXPECT_EQ(state.FsxAirlines, std::vector<std::u16string> {u"FSX kept"});
    EXPECT_EQ(state.EditorMode, 0);

    // An edit saved in the editor reaches the list, split at CR LF only.
    state.EditorMode = 2;
    {
        frm_TextEditor editor(dialogs);
        editor.show();
        QTest::keyClicks(textBox(editor), QStringLiteral("New"));
        QTest::keyClick(textBox(editor), Qt::Key_Return);
        trigger(editor, "mnuFileSave");
        trigger(editor, "mnuFileExit");
        EXPECT_FALSE(editor.isVisible());
    }
    EXPECT_EQ(state.FsxAirlines, (std::vector<std::u16string> {u"New", u"FSX", u""}));
    EXPECT_EQ(state.EditorMode, 0);

    // Another file leaves both lists alone.
    const QString other = path(QStringLiteral("aircraft.cfg"));
    writeFile(other, "[fltsim.0]\r\n");
    state.EditorMode = 3;
    state.EditorFile = toU16String(other);
    const std::vector<std::u16string> fs9Lines = state.Fs9Airlines;
    {
        frm_TextEditor editor(dialogs);
        editor.show();
        EXPECT_TRUE(editor.close());
    }
    EXPECT_EQ(state.Fs9Airlines, fs9Lines);
    EXPECT_EQ(state.EditorMode, 0);
    EXPECT_TRUE(dialogs.records().empty());
}

TEST_F(TextEditorTest, FindAndFindAgain)
{
    const QString file = path(QStringLiteral("find.txt"));
    writeFile(file, "Alpha beta\r\nALPHA gamma alpha");
    OpenFile open(dialogs, file);
    frm_TextEditor &editor = *open.editor;
    QPlainTextEdit *box = textBox(editor);
    const auto selection = [box] {
        const QTextCursor cursor = box->textCursor();
        return std::pair<int, int>(cursor.selectionStart(), cursor.selectionEnd());
    };

    // Case does not matter; each line break counts one character.
    dialogs.pushInput(u"alpha");
    trigger(editor, "mnuSearchFind");
    EXPECT_EQ(dialogs.records().back(),
              (DialogRecord {DialogKind::InputBox, u"Find Text", u"Enter the text to find.", {u""}}));
    EXPECT_EQ(selection(), std::pair(0, 5));
    trigger(editor, "mnuSearchFindAgain");
    EXPECT_EQ(selection(), std::pair(11, 16));
    trigger(editor, "mnuSearchFindAgain");
    EXPECT_EQ(selection(), std::pair(23, 28));
    // The end reached: the message has no title, and the search text is forgotten.
    const std::size_t before = dialogs.records().size();
    trigger(editor, "mnuSearchFindAgain");
    ASSERT_EQ(dialogs.records().size(), before + 1);
    EXPECT_EQ(dialogs.records().back(), (DialogRecord {DialogKind::Exclamation, {}, u"Search text was not found."}));

    // So Find Again asks first; a single letter is found at the same place again and again.
    dialogs.pushInput(u"G");
    trigger(editor, "mnuSearchFindAgain");
    EXPECT_EQ(dialogs.records().back().kind, DialogKind::InputBox);
    EXPECT_EQ(selection(), std::pair(17, 18));
    trigger(editor, "mnuSearchFindAgain");
    trigger(editor, "mnuSearchFindAgain");
    EXPECT_EQ(selection(), std::pair(17, 18));

    // A text that is not there, and a cancelled question.
    dialogs.pushInput(u"delta");
    trigger(editor, "mnuSearchFind");
    EXPECT_EQ(dialogs.records().back(),
              (DialogRecord {DialogKind::Exclamation, u"Find Text", u"Search text was not found."}));
    EXPECT_EQ(selection(), std::pair(17, 18));
    const std::size_t shown = dialogs.records().size();
    dialogs.pushInput(std::nullopt);
    trigger(editor, "mnuSearchFind");
    EXPECT_EQ(dialogs.records().size(), shown + 1);
    EXPECT_EQ(dialogs.pendingAnswers(), 0u);
    EXPECT_FALSE(editor.isDirty());
}

TEST_F(TextEditorTest, FileErrorsShowTheirNumber)
{
    const QString file = path(QStringLiteral("ok.txt"));
    writeFile(file, "ok");
    OpenFile open(dialogs, file);
    frm_TextEditor &editor = *open.editor;

    dialogs.pushFile(toU16String(path(QStringLiteral("missing.txt"))));
    trigger(editor, "mnuFileOpen");
    EXPECT_EQ(dialogs.records().back(), (DialogRecord {DialogKind::Plain, {}, u"ERROR: File not found. [Error #53]"}));
    EXPECT_EQ(textBox(editor)->toPlainText(), QStringLiteral("ok"));

    dialogs.pushSaveFile(toU16String(path(QStringLiteral("no/such/folder.txt"))));
    trigger(editor, "mnuFileSaveAs");
    EXPECT_EQ(dialogs.records().back(), (DialogRecord {DialogKind::Plain, {}, u"ERROR: Path not found. [Error #76]"}));

    // Read-only refuses even when the tests run as root.
    const QString locked = path(QStringLiteral("locked.txt"));
    writeFile(locked, "locked");
    QFile::setPermissions(locked, QFile::ReadOwner | QFile::ReadUser);
    dialogs.pushSaveFile(toU16String(locked));
    trigger(editor, "mnuFileSaveAs");
    EXPECT_EQ(dialogs.records().back(),
              (DialogRecord {DialogKind::Plain, {}, u"ERROR: Permission denied. [Error #70]"}));
    EXPECT_EQ(readFile(locked), "locked");

    // The file the caller named is missing: the form reports it and does not open.
    programState().EditorMode = 3;
    programState().EditorFile = toU16String(path(QStringLiteral("gone.log")));
    frm_TextEditor failed(dialogs);
    EXPECT_FALSE(failed.isLoaded());
    EXPECT_EQ(dialogs.records().back(),
              (DialogRecord {DialogKind::Critical,
                             {},
                             u"A runtime error has occured\r\n\r\nError number: 53\r\n"
                             u"Error description: File not found\r\nProcedure Form_Load\r\n"
                             u"Line: 0\r\nFormular frm_TextEditor"}));
}

TEST_F(TextEditorTest, EditMenuUsesTheClipboard)
{
    const QString file = path(QStringLiteral("clip.txt"));
    writeFile(file, "one\r\ntwo");
    OpenFile open(dialogs, file);
    frm_TextEditor &editor = *open.editor;
    QPlainTextEdit *box = textBox(editor);
    QClipboard *clipboard = QGuiApplication::clipboard();

    trigger(editor, "mnuSelectAll");
    trigger(editor, "mnuEditCopy");
    EXPECT_EQ(clipboard->text(), QStringLiteral("one\ntwo"));
    EXPECT_FALSE(editor.isDirty());

    trigger(editor, "mnuEditCut");
    EXPECT_TRUE(box->toPlainText().isEmpty());
    EXPECT_TRUE(editor.isDirty());

    clipboard->setText(QStringLiteral("a\r\nb"));
    trigger(editor, "mnuEditPaste");
    trigger(editor, "mnuEditPaste");
    trigger(editor, "mnuFileSave");
    EXPECT_EQ(readFile(file), "a\r\nba\r\nb");

    // Copy with nothing selected leaves an empty clipboard.
    box->moveCursor(QTextCursor::End);
    trigger(editor, "mnuEditCopy");
    EXPECT_TRUE(clipboard->text().isEmpty());
}

TEST_F(TextEditorTest, ShownModallyOneAtATime)
{
    const QString report = path(QStringLiteral("corvanecheck.log"));
    writeFile(report, "Report\r\n");
    programState().EditorMode = 3;
    programState().EditorFile = toU16String(report);

    QString shownText;
    int editorsOpen = 0;
    QTimer poll;
    poll.setInterval(10);
    QObject::connect(&poll, &QTimer::timeout, [&] {
        auto *editor = qobject_cast<frm_TextEditor *>(QApplication::activeModalWidget());
        if (!editor)
            return;
        poll.stop();
        shownText = textBox(*editor)->toPlainText();
        // A second call while the editor is open opens no second one.
        showTextEditor(nullptr, dialogs);
        for (QWidget *widget : QApplication::topLevelWidgets())
            editorsOpen += qobject_cast<frm_TextEditor *>(widget) && widget->isVisible() ? 1 : 0;
        // An editor the test failed to close still ends, so the run does not hang.
        QTimer::singleShot(5000, editor, [editor] { editor->done(0); });
        trigger(*editor, "mnuFileExit");
    });
    poll.start();
    showTextEditor(nullptr, dialogs);
    EXPECT_EQ(shownText, QStringLiteral("Report\n"));
    EXPECT_EQ(editorsOpen, 1);
    EXPECT_EQ(programState().EditorMode, 0);

    // A file that cannot be read is reported, and no editor opens.
    programState().EditorMode = 3;
    programState().EditorFile = toU16String(path(QStringLiteral("missing.log")));
    showTextEditor(nullptr, dialogs);
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records().back().kind, DialogKind::Critical);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(TextEditorTest, MenusInOrder)
{
    frm_TextEditor editor(dialogs);
    QMenuBar *menuBar = editor.findChild<QMenuBar *>();
    ASSERT_NE(menuBar, nullptr);
    QStringList shown;
    for (QAction *menu : menuBar->actions()) {
        shown << menu->text();
        for (QAction *entry : menu->menu()->actions()) {
            shown << entry->objectName() + QLatin1Char(' ')
                    + (entry->isSeparator() ? QStringLiteral("-") : entry->text())
                    + (entry->isVisible() ? QString() : QStringLiteral(" (hidden)"));
        }
    }
    const QStringList expected = {
        QStringLiteral("&File"),
        QStringLiteral("mnuFileNew &New"),
        QStringLiteral("mnuFileOpen &Open..."),
        QStringLiteral("mnuFileSave &Save"),
        QStringLiteral("mnuFileSaveAs Save &As..."),
        QStringLiteral("mnuFileMRU_0 - (hidden)"),
        QStringLiteral("mnuFileMRU_1  (hidden)"),
        QStringLiteral("mnuFileMRU_2  (hidden)"),
        QStringLiteral("mnuFileMRU_3  (hidden)"),
        QStringLiteral("mnuFileMRU_4  (hidden)"),
        QStringLiteral("mnuFileSep -"),
        QStringLiteral("mnuFileExit E&xit"),
        QStringLiteral("&Edit"),
        QStringLiteral("mnuSelectAll &Select All"),
        QStringLiteral("mnuEditCut Cu&t"),
        QStringLiteral("mnuEditCopy &Copy"),
        QStringLiteral("mnuEditPaste &Paste"),
        QStringLiteral("&Search"),
        QStringLiteral("mnuSearchFind &Find..."),
        QStringLiteral("mnuSearchFindAgain Find &Again"),
    };
    EXPECT_EQ(shown, expected);
}
