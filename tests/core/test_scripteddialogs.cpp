#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/errorbox.h"
#include "core/runtimeerror.h"
#include "core/scripteddialogs.h"

using namespace fleetwright;

TEST(ScriptedDialogs, AnswersInOrderAndRecordsEveryBox)
{
    ScriptedDialogs dialogs;
    dialogs.pushAnswer(true);
    dialogs.pushButton(2);
    dialogs.pushFile(u"C:\\notes.txt");
    dialogs.pushFile(std::nullopt);
    dialogs.pushInput(u"");
    dialogs.pushInput(std::nullopt);
    dialogs.pushYesNoCancel(2);
    dialogs.pushSaveFile(u"C:\\new.txt");
    EXPECT_EQ(dialogs.pendingAnswers(), 8u);

    EXPECT_TRUE(dialogs.question(u"Are you sure?", u""));
    dialogs.information(u"Report written.", u"Validate");
    EXPECT_EQ(dialogs.threeButtonQuestion(u"Select FS-Version", u"Validate Aircraft", u"FS9", u"FSX", u"Cancel"), 2);
    EXPECT_EQ(dialogs.openFile(u"Open", u"Text Files (*.txt)|*.txt", u"C:\\"), u"C:\\notes.txt");
    EXPECT_EQ(dialogs.openFile(u"Open", u"All Files (*.*)|*.*", u""), std::nullopt);
    dialogs.critical(u"File is read-only.", u"");
    EXPECT_EQ(dialogs.inputBox(u"Enter the text to find.", u"Find Text", u"old"), u"");
    EXPECT_EQ(dialogs.inputBox(u"Enter the text to find.", u"Find Text", u""), std::nullopt);
    dialogs.plain(u"A runtime error has occured", u"");
    EXPECT_EQ(dialogs.yesNoCancel(u"You have changed this text. Do you want to save it?", u""), 2);
    EXPECT_EQ(dialogs.saveFile(u"Save File", u"All Files (*.*)|*.*", u""), u"C:\\new.txt");
    dialogs.exclamation(u"Search text was not found.", u"Find Text");
    EXPECT_EQ(dialogs.pendingAnswers(), 0u);

    const std::vector<DialogRecord> expected = {
        {DialogKind::Question, u"", u"Are you sure?"},
        {DialogKind::Information, u"Validate", u"Report written."},
        {DialogKind::ThreeButtonQuestion, u"Validate Aircraft", u"Select FS-Version", {u"FS9", u"FSX", u"Cancel"}},
        {DialogKind::OpenFile, u"Open", u"Text Files (*.txt)|*.txt", {u"C:\\"}},
        {DialogKind::OpenFile, u"Open", u"All Files (*.*)|*.*", {u""}},
        {DialogKind::Critical, u"", u"File is read-only."},
        {DialogKind::InputBox, u"Find Text", u"Enter the text to find.", {u"old"}},
        {DialogKind::InputBox, u"Find Text", u"Enter the text to find.", {u""}},
        {DialogKind::Plain, u"", u"A runtime error has occured"},
        {DialogKind::YesNoCancel, u"", u"You have changed this text. Do you want to save it?"},
        {DialogKind::SaveFile, u"Save File", u"All Files (*.*)|*.*", {u""}},
        {DialogKind::Exclamation, u"Find Text", u"Search text was not found."},
    };
    EXPECT_EQ(dialogs.records(), expected);
}

TEST(ScriptedDialogs, UnexpectedBoxFailsNamingItself)
{
    const struct
    {
        const char *name;
        bool scriptButton;
        std::string expectedMessage;
    } rows[] = {
        {"nothing scripted", false, "unexpected question \"Delete fltsim.3?\" titled \"Remove\": no answer scripted"},
        {"answer of another kind", true,
         "unexpected question \"Delete fltsim.3?\" titled \"Remove\": the next scripted answer is for a "
         "three-button question"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        ScriptedDialogs dialogs;
        if (row.scriptButton)
            dialogs.pushButton(1);
        try {
            dialogs.question(u"Delete fltsim.3?", u"Remove");
            ADD_FAILURE() << "answered without a scripted answer";
        } catch (const std::logic_error &error) {
            EXPECT_EQ(std::string(error.what()), row.expectedMessage);
        }
        ASSERT_EQ(dialogs.records().size(), 1u);
        EXPECT_EQ(dialogs.records()[0].text, u"Delete fltsim.3?");
        EXPECT_EQ(dialogs.pendingAnswers(), row.scriptButton ? 1u : 0u);
    }

    ScriptedDialogs dialogs;
    EXPECT_THROW(dialogs.threeButtonQuestion(u"?", u"", u"a", u"b", u"c"), std::logic_error);
    EXPECT_THROW(dialogs.openFile(u"Open", u"", u""), std::logic_error);
    EXPECT_THROW(dialogs.inputBox(u"Enter", u"", u""), std::logic_error);
}

TEST(NeverAskDialogs, AnswersWithoutAskingAndPassesMessagesOn)
{
    NeverAskDialogs collecting(true);
    collecting.setButton(3);
    EXPECT_TRUE(collecting.question(u"Are you sure?", u""));
    EXPECT_EQ(collecting.threeButtonQuestion(u"Which?", u"", u"a", u"b", u"c"), 3);
    EXPECT_EQ(collecting.openFile(u"Open", u"", u""), std::nullopt);
    EXPECT_EQ(collecting.inputBox(u"Enter", u"", u"default"), std::nullopt);
    collecting.critical(u"read-only", u"Fleetwright");
    ASSERT_EQ(collecting.messages().size(), 5u);
    EXPECT_EQ(collecting.messages()[4], (DialogRecord {DialogKind::Critical, u"Fleetwright", u"read-only"}));

    std::vector<DialogRecord> sunk;
    NeverAskDialogs sinking(false, [&](const DialogRecord &record) { sunk.push_back(record); });
    EXPECT_FALSE(sinking.question(u"Are you sure?", u""));
    EXPECT_EQ(sinking.threeButtonQuestion(u"Which?", u"", u"a", u"b", u"c"), 0);
    sinking.information(u"done", u"");
    EXPECT_TRUE(sinking.messages().empty());
    ASSERT_EQ(sunk.size(), 3u);
    EXPECT_EQ(sunk[2], (DialogRecord {DialogKind::Information, u"", u"done"}));
}

TEST(CommonErrorBox, NamesErrorRoutineAndForm)
{
    const RuntimeError copyFailed(53, u"File not found", u"MakeBackup");
    EXPECT_EQ(commonErrorText(copyFailed),
              u"A runtime error has occured\r\n"
              u"\r\n"
              u"Error number: 53\r\n"
              u"Error description: File not found\r\n"
              u"Procedure MakeBackup\r\n"
              u"Line: 0\r\n"
              u"Formular frm_Main");
    EXPECT_EQ(commonErrorText(RuntimeError(-2147217865, u"Table not found", u"Form_Load"), u"frm_ParkingCode"),
              u"A runtime error has occured\r\n\r\nError number: -2147217865\r\nError description: Table not found\r\n"
              u"Procedure Form_Load\r\nLine: 0\r\nFormular frm_ParkingCode");

    ScriptedDialogs dialogs;
    showCommonError(dialogs, copyFailed);
    const std::vector<DialogRecord> expected = {{DialogKind::Plain, u"", commonErrorText(copyFailed)}};
    EXPECT_EQ(dialogs.records(), expected);
}
