// Undo, Redo and the history from the main window: every writing command of the window is journaled under
// the name the menu shows, Undo gives the folder back byte for byte and Redo the state after it.
#include <functional>
#include <map>

#include "common/aircraftfolder.h"
#include "common/airfilebuilder.h"
#include "editing/gui/frm_remove.h"
#include "history/gui/filediff.h"
#include "history/gui/frm_history.h"
#include "history/gui/journalservice.h"
#include "startupfixture.h"
#include "support/gui/frm_texteditor.h"

using namespace fleetwright;
using test::readBytes;
using History = test::StartUp;

namespace {

namespace fs = std::filesystem;

const std::string SKYLINER = test::crlf("[fltsim.0]\ntitle=Skyliner Blue\nsim=skyliner\nmodel=\ntexture=\nui_type=Jet\n"
                                        "[fltsim.2]\ntitle=Skyliner Red\nsim=skyliner\nmodel=\ntexture=\nui_type=Jet\n"
                                        "[fltsim.3]\ntitle=Skyliner Gold\nsim=skyliner\nmodel=\ntexture=\nui_type=Jet\n"
                                        "[effects]\nwater=fx_spray\n"
                                        "[general]\natc_type=SKY\n");

// Every file below a folder with its bytes: what "the folder as it was" means.
std::map<std::string, std::string> folderFiles(const fs::path &folder)
{
    std::map<std::string, std::string> files;
    for (const auto &entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file())
            files[entry.path().lexically_relative(folder).generic_string()] = readBytes(entry.path());
    }
    return files;
}

void writeSkyliner(const fs::path &folder)
{
    test::writeBytes(folder / "aircraft.cfg", SKYLINER);
    test::writeBytes(folder / "model" / "model.cfg", "[models]\r\nnormal=skyliner\r\n");
    test::writeBytes(folder / "model" / "skyliner.mdl", test::modelBytes("MDL9"));
    test::writeBytes(folder / "skyliner.air", test::AirFileBuilder().aircraft(1).bytes());
    fs::create_directories(folder / "texture.Red");
}

QString menuText(const QAction *item)
{
    return item->isEnabled() ? item->text() : QStringLiteral("(off) ") + item->text();
}

} // namespace

TEST_F(History, EveryWriteOfTheWindowIsUndoneAndRedoneByteForByte)
{
    // The validation report's place: TMPDIR off Windows; TMP, else TEMP, on Windows.
    for (const char *name : {"TMPDIR", "TMP", "TEMP"})
        setEnv(name, (dir / "temp").string());
    std::filesystem::create_directories(dir / "temp");
    frm_Main form(&dialogs);
    const Ui::frm_Main &c = form.controls();
    form.state().ConfirmUpdates = false;
    form.state().AutoBackupOn = true; // the backup the operation creates goes again with Undo
    form.state().InternalEditorOn = true;

    struct Row
    {
        const char *name;
        std::function<void()> run;
    };
    const std::vector<Row> rows = {
        {"Renumber", [&] { c.mnuRenumber->trigger(); }},
        {"Sort keys", [&] { c.mnuSortKeys->trigger(); }},
        {"Delete 2 sections",
         [&] {
             for (const int row : {0, 1})
                 c.ListView1->topLevelItem(row)->setCheckState(0, Qt::Checked);
             form.rightClickMenus().mnuDelete->trigger();
         }},
        {"Update [fltsim.2]",
         [&] {
             openRow(form, 1);
             c.txt_Title->setText(QStringLiteral("Skyliner Green"));
             c.txt_FS9Radius->setText(QStringLiteral("50")); // the model file is part of the operation
             c.cmd_cfg_Update->click();
         }},
        {"Update all ui_type",
         [&] {
             c.txt_ui_Type->setText(QStringLiteral("Prop"));
             c.cmd_Update_all_ui_Type->click();
         }},
        {"Effects",
         [&] {
             c.txt_Description->setPlainText(QStringLiteral("blue one"));
             c.cmd_Effect_Update->click();
         }},
        {"Associate",
         [&] {
             c.combo_Texture->setCurrentIndex(c.combo_Texture->findText(QStringLiteral("Red")));
             c.cmd_Associate->click();
         }},
        {"Air type", [&] { c.opt_ac_AI->click(); }},
        {"Remove keys",
         [&] {
             test::ModalDialogs<frm_Remove> removal([&](frm_Remove &dialog) {
                 dialog.List1()
                     ->findItems(QStringLiteral("ui_type"), Qt::MatchExactly)
                     .front()
                     ->setCheckState(Qt::Checked);
                 dialogs.pushAnswer(true);
                 dialog.findChild<QPushButton *>(QStringLiteral("cmd_Wipe"))->click();
                 dialog.close();
             });
             c.mnuDelKeys->trigger();
         }},
        {"Validate: removed byte order marks",
         [&] {
             form.state().AnalyzeOptionList.assign(23, u"1");
             test::ModalDialogs<frm_TextEditor> report(
                 [&](frm_TextEditor &open) { open.findChild<QAction *>(QStringLiteral("mnuFileExit"))->trigger(); });
             c.mnuValidate->trigger();
         }},
        {"Edit aircraft.cfg",
         [&] {
             test::ModalDialogs<frm_TextEditor> editor([&](frm_TextEditor &open) {
                 open.findChild<QPlainTextEdit *>()->appendPlainText(QStringLiteral("[fltsim.9]"));
                 open.findChild<QAction *>(QStringLiteral("mnuFileSave"))->trigger();
                 open.findChild<QAction *>(QStringLiteral("mnuFileExit"))->trigger();
             });
             c.mnuCFG->trigger();
         }},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const fs::path folder = dir / "Aircraft" / row.name;
        writeSkyliner(folder);
        test::writeBytes(folder / "model" / "model.cfg", "\xEF\xBB\xBF[models]\r\nnormal=skyliner\r\n");
        c.Dir1->setPath(test::nativeText(folder));
        EXPECT_EQ(menuText(c.mnuUndo), QStringLiteral("(off) &Undo"));
        const auto before = folderFiles(folder);

        row.run();
        EXPECT_EQ(dialogs.pendingAnswers(), 0u);
        const auto after = folderFiles(folder);
        ASSERT_NE(after, before) << "the operation changed nothing";
        EXPECT_EQ(menuText(c.mnuUndo), QStringLiteral("&Undo ") + QString::fromUtf8(row.name));
        EXPECT_EQ(menuText(c.mnuRedo), QStringLiteral("(off) &Redo"));

        c.mnuUndo->trigger();
        EXPECT_EQ(folderFiles(folder), before);
        EXPECT_EQ(c.ListView1->topLevelItemCount(), 3) << "the folder is read again";
        EXPECT_EQ(menuText(c.mnuUndo), QStringLiteral("(off) &Undo"));
        EXPECT_EQ(menuText(c.mnuRedo), QStringLiteral("&Redo ") + QString::fromUtf8(row.name));

        c.mnuRedo->trigger();
        EXPECT_EQ(folderFiles(folder), after);
        EXPECT_EQ(menuText(c.mnuUndo), QStringLiteral("&Undo ") + QString::fromUtf8(row.name));
    }
}

TEST_F(History, UndoAsksBeforeItOverwritesAChangeMadeOutside)
{
    frm_Main form(&dialogs);
    const Ui::frm_Main &c = form.controls();
    form.state().ConfirmUpdates = false;
    const fs::path aircraft = openAircraft(form, SKYLINER);
    c.mnuRenumber->trigger();
    const std::string outside = SKYLINER + "[fltsim.4]\r\n";
    test::writeBytes(aircraft / "aircraft.cfg", outside);

    dialogs.pushAnswer(false);
    c.mnuUndo->trigger();
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_NE(dialogs.records()[0].text.find(u"changed outside"), std::u16string::npos);
    EXPECT_NE(dialogs.records()[0].text.find(u"aircraft.cfg"), std::u16string::npos);
    EXPECT_EQ(readBytes(aircraft / "aircraft.cfg"), outside) << "No leaves the file alone";
    EXPECT_EQ(menuText(c.mnuUndo), QStringLiteral("&Undo Renumber"));

    dialogs.pushAnswer(true);
    c.mnuUndo->trigger();
    EXPECT_EQ(readBytes(aircraft / "aircraft.cfg"), SKYLINER);
    EXPECT_EQ(c.ListView1->topLevelItemCount(), 3);
}

TEST_F(History, TheDialogListsTheFolderNewestFirstWithItsChangesAndRestores)
{
    frm_Main form(&dialogs);
    const Ui::frm_Main &c = form.controls();
    form.state().ConfirmUpdates = false;
    form.state().AutoBackupOn = false;
    const fs::path aircraft = openAircraft(form, SKYLINER);
    openRow(form, 0);
    c.txt_ui_Type->setText(QStringLiteral("Prop"));
    c.cmd_Update_all_ui_Type->click();
    const std::string updated = readBytes(aircraft / "aircraft.cfg");
    c.mnuSortKeys->trigger();
    openRow(form, 2);

    int shown = 0;
    test::ModalDialogs<frm_History> history([&](frm_History &dialog) {
        ++shown;
        auto *operations = dialog.findChild<QTreeWidget *>(QStringLiteral("lvwOperations"));
        auto *files = dialog.findChild<QListWidget *>(QStringLiteral("lstFiles"));
        auto *diff = dialog.findChild<QPlainTextEdit *>(QStringLiteral("txtDiff"));
        ASSERT_EQ(operations->topLevelItemCount(), 2);
        EXPECT_EQ(operations->topLevelItem(0)->text(1), QStringLiteral("Sort keys"));
        EXPECT_EQ(operations->topLevelItem(1)->text(1), QStringLiteral("Update all ui_type"));
        EXPECT_EQ(operations->topLevelItem(1)->text(2), QStringLiteral("aircraft.cfg"));

        operations->setCurrentItem(operations->topLevelItem(1));
        EXPECT_EQ(files->count(), 1);
        const QString text = diff->toPlainText();
        EXPECT_TRUE(text.startsWith(QStringLiteral("--- aircraft.cfg (before)\n+++ aircraft.cfg (after)\n@@ ")));
        EXPECT_EQ(text.count(QStringLiteral("\n-ui_type=Jet\n+ui_type=Prop\n")), 3) << text.toStdString();

        dialog.findChild<QPushButton *>(QStringLiteral("cmdRestore"))->click();
        EXPECT_EQ(readBytes(aircraft / "aircraft.cfg"), SKYLINER);
        EXPECT_EQ(c.txt_ui_Type->text(), QStringLiteral("Jet")) << "the window read the folder again";
        EXPECT_EQ(c.ListView1->currentItem(), c.ListView1->topLevelItem(2)) << "and kept the open row";
        ASSERT_EQ(operations->topLevelItemCount(), 2);
        EXPECT_EQ(operations->topLevelItem(1)->text(1), QStringLiteral("Update all ui_type (undone)"));
        EXPECT_FALSE(dialog.findChild<QPushButton *>(QStringLiteral("cmdRestore"))->isEnabled());
        dialog.close();
    });
    c.mnuHistory->trigger();
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(menuText(c.mnuRedo), QStringLiteral("&Redo Update all ui_type"));
    c.mnuRedo->trigger();
    EXPECT_EQ(readBytes(aircraft / "aircraft.cfg"), updated);
    EXPECT_EQ(dialogs.records().size(), 1u) << "only the sort's report: a restore asks nothing of its own";
}

TEST(FileDiff, UnifiedDiffOfTextAndBinaryFiles)
{
    const std::string lines = "a\r\nb\r\nc\r\nd\r\ne\r\nf\r\ng\r\nh\r\ni\r\nj\r\n";
    struct Case
    {
        const char *name;
        std::optional<std::string> before;
        std::optional<std::string> after;
        std::u16string expected; // after the two header lines
    };
    const std::vector<Case> cases = {
        {"identical", lines, lines, u""},
        {"one line with its context", lines, "a\r\nb\r\nc\r\nd\r\nE\r\nf\r\ng\r\nh\r\ni\r\nj\r\n",
         u"@@ -2,7 +2,7 @@\n b\n c\n d\n-e\n+E\n f\n g\n h\n"},
        {"two changes far apart are two hunks", lines, "A\r\nb\r\nc\r\nd\r\ne\r\nf\r\ng\r\nh\r\ni\r\nJ\r\n",
         u"@@ -1,4 +1,4 @@\n-a\n+A\n b\n c\n d\n@@ -7,4 +7,4 @@\n g\n h\n i\n-j\n+J\n"},
        {"inserted and removed", "a\nb\nc\n", "a\nx\nc\nd\n", u"@@ -1,3 +1,4 @@\n a\n-b\n+x\n c\n+d\n"},
        {"a changed line end is a change", "a\r\nb\r\n", "a\r\nb\n", u"@@ -1,2 +1,2 @@\n a\n-b\n+b\n"},
        {"no line end at the end", "a\n", "a\nb", u"@@ -1,1 +1,2 @@\n a\n+b\n\\ No newline at end of file\n"},
        {"a new file", std::nullopt, "x\r\n", u"@@ -0,0 +1,1 @@\n+x\n"},
        {"UTF-16 is read as text", std::string("\xFF\xFEk\0=\0\xE9\0\r\0\n\0", 12),
         std::string("\xFF\xFEk\0=\0\x01\x01\r\0\n\0", 12), u"@@ -1,1 +1,1 @@\n-k=\u00E9\n+k=\u0101\n"},
        {"Windows-1252", "\x80\r\n", "\x9C\r\n", u"@@ -1,1 +1,1 @@\n-\u20AC\n+\u0153\n"},
        {"binary", std::string("MDL\0\x07", 5), std::string("MDL\0\x32\x01", 6),
         u"Binary file: 5 bytes before, 6 bytes after\n  at 0x00000004: 07 -> 32\n  at 0x00000005: -- -> 01\n"},
    };
    for (const Case &row : cases) {
        SCOPED_TRACE(row.name);
        const std::u16string header =
            std::u16string(u"--- f (") + (row.before ? u"before" : u"did not exist") + u")\n+++ f (after)\n";
        EXPECT_EQ(unifiedDiff(row.before, row.after, u"f"), header + row.expected);
    }
}

TEST_F(History, WithoutAJournalNothingIsWrittenAndTheUserIsTold)
{
    test::writeBytes(dir / "not-a-folder", "x");
    setEnv("FLEETWRIGHT_HISTORY", (dir / "not-a-folder").string());
    frm_Main form(&dialogs);
    const Ui::frm_Main &c = form.controls();
    form.state().ConfirmUpdates = false;
    writeSkyliner(dir / "Skyliner");
    c.Dir1->setPath(test::nativeText(dir / "Skyliner"));
    const auto before = folderFiles(dir / "Skyliner");
    c.mnuRenumber->trigger();
    c.opt_ac_AI->click();
    EXPECT_EQ(folderFiles(dir / "Skyliner"), before);
    ASSERT_EQ(dialogs.records().size(), 2u);
    for (const DialogRecord &record : dialogs.records())
        EXPECT_NE(record.text.find(u"journal"), std::u16string::npos) << toQString(record.text).toStdString();
    EXPECT_TRUE(c.opt_ac_Helicopter->isChecked()) << "the option buttons show the file as it stayed";
    EXPECT_EQ(menuText(c.mnuUndo), QStringLiteral("(off) &Undo"));
}

TEST_F(History, ComingBackToTheWindowShowsWhatTheCheckerJournaledMeanwhile)
{
    frm_Main form(&dialogs);
    const fs::path aircraft = openAircraft(form, SKYLINER);
    EXPECT_EQ(menuText(form.controls().mnuUndo), QStringLiteral("(off) &Undo"));
    {
        Journal checker(Journal::defaultLocation());
        const JournalOperation operation(checker, JournalService::folderKey(aircraft), u"Sort keys");
        journalBeforeChange(aircraft / "aircraft.cfg");
        test::writeBytes(aircraft / "aircraft.cfg", "[fltsim.0]\r\n");
    }
    QEvent activation(QEvent::WindowActivate);
    QApplication::sendEvent(&form, &activation);
    EXPECT_EQ(menuText(form.controls().mnuUndo), QStringLiteral("&Undo Sort keys"));
    form.controls().mnuUndo->trigger();
    EXPECT_EQ(readBytes(aircraft / "aircraft.cfg"), SKYLINER);
}
