// The text editor: the bytes of a file survive it, changes are asked for, and the airline lists follow it.

#include "startupfixture.h"
#include "support/gui/frm_texteditor.h"

using namespace fleetwright;

namespace {

class TextEditor : public test::StartUp
{
protected:
    std::u16string file(const char *name, const std::string &bytes)
    {
        test::writeBytes(dir / name, bytes);
        return toU16String(test::nativeText(dir / name));
    }
    std::unique_ptr<frm_TextEditor> open(const std::u16string &name,
                                         TextEditorSubject::Kind kind = TextEditorSubject::Kind::File)
    {
        return std::make_unique<frm_TextEditor>(dialogs, state, TextEditorSubject {kind, name});
    }
    static void trigger(frm_TextEditor &editor, const char *name)
    {
        editor.findChild<QAction *>(QString::fromLatin1(name))->trigger();
    }
    static QPlainTextEdit *box(frm_TextEditor &editor) { return editor.findChild<QPlainTextEdit *>(); }

    ProgramState state;
};

} // namespace

TEST_F(TextEditor, SavingKeepsTheBytesAndTheFilesLineEnds)
{
    std::string everyByte = "a\r\nb\nc\rd\r\n\r\re";
    for (int byte = 0; byte < 256; ++byte)
        everyByte += static_cast<char>(byte);
    trigger(*open(file("round.txt", everyByte)), "mnuFileSave");
    EXPECT_EQ(test::readBytes(dir / "round.txt"), everyByte);
    // A line added in the box gets the file's own line end; text goes back to the code page.
    const auto editor = open(file("lf.txt", "one\ntwo\n"));
    box(*editor)->moveCursor(QTextCursor::End);
    QTest::keyClicks(box(*editor), QStringLiteral("three"));
    QTest::keyClick(box(*editor), Qt::Key_Return);
    box(*editor)->insertPlainText(QStringLiteral("\u00E9"));
    trigger(*editor, "mnuFileSave");
    EXPECT_EQ(test::readBytes(dir / "lf.txt"), "one\ntwo\nthree\n\xE9");
}

TEST_F(TextEditor, ChangedTextIsAskedForAndOpenedFilesHeadTheRecentFiles)
{
    const std::u16string first = file("first.txt", "first\r\n");
    const auto editor = open(file("second.txt", "second\r\n"));
    QTest::keyClicks(box(*editor), QStringLiteral("edited "));
    dialogs.pushYesNoCancel(2);
    trigger(*editor, "mnuFileOpen");
    EXPECT_EQ(box(*editor)->toPlainText(), QStringLiteral("edited second\n")) << "Cancel keeps the text";
    dialogs.pushYesNoCancel(7);
    dialogs.pushFile(first);
    trigger(*editor, "mnuFileOpen");
    EXPECT_EQ(box(*editor)->toPlainText(), QStringLiteral("first\n"));
    EXPECT_EQ(test::readBytes(dir / "second.txt"), "second\r\n") << "No drops the change";
    QTest::keyClicks(box(*editor), QStringLiteral("new "));
    dialogs.pushYesNoCancel(6);
    dialogs.pushFile(file("third.txt", "third"));
    trigger(*editor, "mnuFileOpen");
    EXPECT_EQ(test::readBytes(dir / "first.txt"), "new first\r\n") << "Yes saves, then goes ahead";
    EXPECT_EQ(editor->findChild<QAction *>(QStringLiteral("mnuFileMRU_1"))->text(),
              QStringLiteral("&1 ") + test::nativeText(dir / "third.txt"));
    trigger(*editor, "mnuFileMRU_2");
    EXPECT_EQ(box(*editor)->toPlainText(), QStringLiteral("new first\n"));

    // A new text asks for its name on saving. Closing asks too.
    trigger(*editor, "mnuFileNew");
    QTest::keyClicks(box(*editor), QStringLiteral("fresh"));
    dialogs.pushSaveFile(toU16String(test::nativeText(dir / "fresh.txt")));
    trigger(*editor, "mnuFileSave");
    EXPECT_EQ(test::readBytes(dir / "fresh.txt"), "fresh");
    QTest::keyClicks(box(*editor), QStringLiteral("!"));
    dialogs.pushYesNoCancel(2);
    EXPECT_FALSE(editor->close());
    EXPECT_EQ(dialogs.pendingAnswers(), 0u);
}

TEST_F(TextEditor, AirlineListIsReadAgainOnClose)
{
    state.Fs9AirlinesPath = file("fs9.cfg", "Old\r\n");
    {
        const auto editor = open(u"", TextEditorSubject::Kind::Fs9Airlines);
        test::writeBytes(dir / "fs9.cfg", "Caf\xE9 Air\r\n[x]\r\nLast ");
        EXPECT_TRUE(editor->close());
    }
    EXPECT_EQ(state.Fs9Airlines, (std::vector<std::u16string> {u"Caf\u00E9 Air", u"[x]", u"Last "}));
    EXPECT_TRUE(state.FsxAirlines.empty());
}

TEST_F(TextEditor, FindSelectsEachNextOccurrenceWhateverItsCase)
{
    const auto editor = open(file("find.txt", "Alpha beta\r\nALPHA alpha"));
    const auto selected = [&editor] { return box(*editor)->textCursor().selectionStart(); };
    dialogs.pushInput(u"alpha");
    trigger(*editor, "mnuSearchFind");
    EXPECT_EQ(selected(), 0);
    trigger(*editor, "mnuSearchFindAgain");
    EXPECT_EQ(selected(), 11) << "a line break counts one character";
    trigger(*editor, "mnuSearchFindAgain");
    EXPECT_EQ(selected(), 17);
    trigger(*editor, "mnuSearchFindAgain");
    EXPECT_EQ(dialogs.records().back().text, u"Search text was not found.");
}

TEST_F(TextEditor, OnlyOneEditorAtATime)
{
    const TextEditorSubject report {TextEditorSubject::Kind::File, file("report.log", "Report\r\n")};
    test::ModalDialogs<frm_TextEditor> editors([&](frm_TextEditor &editor) {
        QTimer::singleShot(0, &editor, [&] {
            if (editors.opened == 1)
                showTextEditor(nullptr, dialogs, state, report); // brings the open one up
            trigger(editor, "mnuFileExit");
        });
    });
    showTextEditor(nullptr, dialogs, state, report);
    EXPECT_EQ(editors.opened, 1);
}
