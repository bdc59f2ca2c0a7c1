#include <filesystem>

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QListWidget>
#include <QPushButton>
#include <QTimer>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include "app/frm_main.h"
#include "app/gui/folderwidgets.h"
#include "app/gui/textconvert.h"
#include "editing/frm_remove.h"
#include "platform/fileio.h"
#include "startupfixture.h"
#include "support/tooltips.h"

using fleetwright::DialogKind;
using fleetwright::DialogRecord;
using fleetwright::test::readBytes;
using fleetwright::test::writeBytes;
using KeyRemovalDialog = fleetwright::test::StartUp;
namespace fs = std::filesystem;

namespace {

const std::string AIRCRAFT = "[fltsim.0]\r\ntitle=Skyliner Red // first\r\nAtc_Id=CV-1\r\nui_type=Skyliner\r\n"
                             "[fltsim.1]\r\ntitle=Skyliner Blue\r\natc_id=CV-2 // reg\r\n"
                             "[general]\r\natc_id=KEEP\r\n";

const QString WIPE_QUESTION = QStringLiteral(
    "Are you absolutely sure that you wish to delete all marked keys in all sections in this aircraft.cfg?");

QStringList entries(const QListWidget *list)
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts;
}

int markedCount(const QListWidget *list)
{
    int marked = 0;
    for (int i = 0; i < list->count(); ++i)
        marked += list->item(i)->checkState() == Qt::Checked ? 1 : 0;
    return marked;
}

QPushButton *button(const frm_Remove &dialog, const char *name)
{
    return dialog.findChild<QPushButton *>(QString::fromLatin1(name));
}

void mark(QListWidget *list, const QString &key)
{
    list->findItems(key, Qt::MatchExactly).front()->setCheckState(Qt::Checked);
}

class Loaded : public KeyRemovalDialog
{
protected:
    void load(frm_Main &form)
    {
        aircraft = dir / "Skyliner";
        writeBytes(aircraft / "aircraft.cfg", AIRCRAFT);
        form.controls().Dir1->setPath(QDir::toNativeSeparators(QString::fromStdString(aircraft.string())));
        ASSERT_EQ(form.controls().ListView1->topLevelItemCount(), 2);
    }

    fs::path aircraft;
};

} // namespace

TEST_F(Loaded, MenuTakesTheBackupAndAClosedDialogWithoutADeleteDoesNotReload)
{
    frm_Main form(&dialogs);
    load(form);
    const MainFormControls &c = form.controls();
    EXPECT_EQ(c.mnuDelKeys->text(), QStringLiteral("&Delete keys..."));
    ASSERT_TRUE(c.mnuDelKeys->isEnabled());

    bool seen = false;
    QTimer::singleShot(0, [&] {
        auto *dialog = qobject_cast<frm_Remove *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        seen = true;
        EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Remove keys in all [fltsim.x] sections"));
        EXPECT_EQ(entries(dialog->List1()),
                  (QStringList {QStringLiteral("atc_id"), QStringLiteral("title"), QStringLiteral("ui_type")}));
        EXPECT_EQ(plainToolTip(dialog->List1()),
                  QStringLiteral("This list shows all unique keys found in the [fltsim.x] sections of this "
                                 "aircraft.cfg file"));
        EXPECT_EQ(button(*dialog, "cmd_Wipe")->text(), QStringLiteral("&Delete marked keys"));
        EXPECT_EQ(plainToolTip(button(*dialog, "cmd_Wipe")),
                  QStringLiteral("Delete selected keys in current aircraft.cfg"));
        EXPECT_EQ(button(*dialog, "cmd_All")->text(), QStringLiteral("Select &all"));
        EXPECT_EQ(button(*dialog, "cmd_None")->text(), QStringLiteral("Select &none"));
        // The grid is not reloaded behind the dialog, nor on closing it after no delete.
        writeBytes(aircraft / "aircraft.cfg", AIRCRAFT + "[fltsim.2]\r\ntitle=Added\r\n");
        dialog->close();
    });
    c.mnuDelKeys->trigger();
    EXPECT_TRUE(seen);
    EXPECT_EQ(readBytes(aircraft / "aircraft.corvane"), AIRCRAFT);
    EXPECT_EQ(c.ListView1->topLevelItemCount(), 2);
    EXPECT_TRUE(dialogs.records().empty());

    // A backup that stands is kept, and with backups off none is made.
    const auto openAndClose = [&c] {
        QTimer::singleShot(0, [] { QApplication::activeModalWidget()->close(); });
        c.mnuDelKeys->trigger();
    };
    writeBytes(aircraft / "aircraft.corvane", "older");
    openAndClose();
    EXPECT_EQ(readBytes(aircraft / "aircraft.corvane"), "older");
    fs::remove(aircraft / "aircraft.corvane");
    form.AutoBackupOn = false;
    openAndClose();
    EXPECT_FALSE(fs::exists(aircraft / "aircraft.corvane"));
}

TEST_F(Loaded, WipeAlwaysAsksDeletesInEveryVariationAndReloadsOnClosing)
{
    frm_Main form(&dialogs);
    load(form);
    form.ConfirmUpdates = false;
    frm_Remove dialog(form);
    dialog.show();
    EXPECT_FALSE(dialog.keysDeleted());
    QListWidget *list = dialog.List1();

    button(dialog, "cmd_All")->click();
    EXPECT_EQ(markedCount(list), 3);
    button(dialog, "cmd_None")->click();
    EXPECT_EQ(markedCount(list), 0);

    // No: nothing happens and the marks stay, even with the confirmation setting off.
    mark(list, QStringLiteral("atc_id"));
    dialogs.pushAnswer(false);
    button(dialog, "cmd_Wipe")->click();
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(dialogs.records()[0], (DialogRecord {DialogKind::Question, u"", toU16String(WIPE_QUESTION)}));
    EXPECT_EQ(readBytes(aircraft / "aircraft.cfg"), AIRCRAFT);
    EXPECT_EQ(markedCount(list), 1);
    EXPECT_FALSE(dialog.keysDeleted());

    // Yes: both spellings go from both variations, the count is of attempts, the list is refilled.
    mark(list, QStringLiteral("ui_type"));
    dialogs.pushAnswer(true);
    button(dialog, "cmd_Wipe")->click();
    ASSERT_EQ(dialogs.records().size(), 3u);
    EXPECT_EQ(
        dialogs.records()[2],
        (DialogRecord {DialogKind::Information, u"", u"A total of 4 keys have been deleted in the aircraft.cfg"}));
    EXPECT_EQ(readBytes(aircraft / "aircraft.cfg"),
              "[fltsim.0]\r\ntitle=Skyliner Red // first\r\n[fltsim.1]\r\ntitle=Skyliner Blue\r\n"
              "[general]\r\natc_id=KEEP\r\n");
    EXPECT_EQ(entries(list), QStringList {QStringLiteral("title")});
    EXPECT_EQ(markedCount(list), 0);
    EXPECT_TRUE(dialog.keysDeleted());

    // Nothing marked still asks and reports 0.
    dialogs.pushAnswer(true);
    button(dialog, "cmd_Wipe")->click();
    EXPECT_EQ(dialogs.records().back().text, u"A total of 0 keys have been deleted in the aircraft.cfg");

    // Deleting every key leaves the headers, so the rows are still there after the reload on closing.
    form.controls().ListView1->clear();
    button(dialog, "cmd_All")->click();
    dialogs.pushAnswer(true);
    button(dialog, "cmd_Wipe")->click();
    EXPECT_EQ(readBytes(aircraft / "aircraft.cfg"), "[fltsim.0]\r\n[fltsim.1]\r\n[general]\r\natc_id=KEEP\r\n");
    dialog.close();
    EXPECT_EQ(form.controls().ListView1->topLevelItemCount(), 2);
    EXPECT_EQ(dialogs.pendingAnswers(), 0u);
}

TEST_F(Loaded, AReadOnlyFileKeepsItsKeysWhileTheReportClaimsThem)
{
    frm_Main form(&dialogs);
    load(form);
    const fs::path file = aircraft / "aircraft.cfg";
    fs::permissions(file, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    frm_Remove dialog(form);
    mark(dialog.List1(), QStringLiteral("title"));
    dialogs.pushAnswer(true);
    button(dialog, "cmd_Wipe")->click();
    EXPECT_EQ(dialogs.records().back().text, u"A total of 2 keys have been deleted in the aircraft.cfg");
    EXPECT_EQ(readBytes(file), AIRCRAFT);
    EXPECT_EQ(entries(dialog.List1()).size(), 3);
    fleetwright::platform::clearReadOnly(file);
}
