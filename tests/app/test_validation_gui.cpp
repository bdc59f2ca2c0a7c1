#include <chrono>
#include <filesystem>
#include <thread>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include "app/frm_main.h"
#include "app/gui/folderwidgets.h"
#include "app/gui/statusbarpanels.h"
#include "app/gui/textconvert.h"
#include "app/programstate.h"
#include "app/startupsettings.h"
#include "startupfixture.h"
#include "support/frm_texteditor.h"
#include "support/tooltips.h"
#include "validation/frm_analyzeoptions.h"
#include "validation/frm_main_validation.h"
#include "validation/frm_validateall.h"

using fleetwright::DialogKind;
using fleetwright::DialogRecord;
using fleetwright::programState;
using fleetwright::test::writeBytes;

namespace {

constexpr char ONE_VARIATION[] = "[fltsim.0]\r\ntitle=Corvane 737\r\nsim=c737\r\nmodel=\r\ntexture=\r\n";
const std::u16string ALL_OFF_TEXT = u"You have disabled all analysis reporting options. Exiting here....";

QString nativeText(const std::filesystem::path &path)
{
    return QDir::toNativeSeparators(QString::fromStdString(path.string()));
}

std::u16string options(const char *digits)
{
    std::u16string text;
    for (const char *digit = digits; *digit; ++digit) {
        if (!text.empty())
            text += u'\u00A6';
        text += static_cast<char16_t>(*digit);
    }
    return text;
}

// Closes each report editor as soon as it shows, keeping what it showed: the editor is modal, and a test
// that waited for the user would never end.
class ReportWatch
{
public:
    ReportWatch()
    {
        m_poll.setInterval(10);
        QObject::connect(&m_poll, &QTimer::timeout, [this] {
            auto *editor = qobject_cast<frm_TextEditor *>(QApplication::activeModalWidget());
            if (!editor)
                return;
            ++opened;
            shown = editor->findChild<QPlainTextEdit *>(QStringLiteral("txtData"))->toPlainText();
            editor->findChild<QAction *>(QStringLiteral("mnuFileExit"))->trigger();
        });
        m_poll.start();
    }

    int opened = 0;
    QString shown;

private:
    QTimer m_poll;
};

void click(QWidget *form, const char *button)
{
    auto *target = form->findChild<QPushButton *>(QString::fromLatin1(button));
    ASSERT_NE(target, nullptr) << button;
    target->click();
}

void deleteClosedForms()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// Stands in for the plain editor while it lives, copying the file it is given to opened.log in folder. Off
// Windows that editor is $VISUAL, here a script. On Windows it is notepad.exe, which is looked for in the
// current folder before the system's: the test program itself, under that name, does the copy there.
class PlainEditorStandIn
{
public:
    PlainEditorStandIn(const std::filesystem::path &folder, fleetwright::test::ScopedEnvironment &env)
        : m_folder(std::filesystem::current_path())
    {
#ifdef _WIN32
        (void)env;
        const std::filesystem::path self = QCoreApplication::applicationFilePath().toStdWString();
        std::error_code linked;
        std::filesystem::create_hard_link(self, folder / "notepad.exe", linked);
        if (linked)
            std::filesystem::copy_file(self, folder / "notepad.exe");
        std::filesystem::current_path(folder);
#else
        const auto editor = folder / "editor.sh";
        writeBytes(editor, "#!/bin/sh\ncp \"$1\" \"" + (folder / "opened.log").string() + "\"\n");
        std::filesystem::permissions(editor, std::filesystem::perms::owner_all);
        env.set("VISUAL", fleetwright::test::bytesOf(editor));
#endif
    }
    ~PlainEditorStandIn()
    {
        std::filesystem::current_path(m_folder);
    }
    PlainEditorStandIn(const PlainEditorStandIn &) = delete;
    PlainEditorStandIn &operator=(const PlainEditorStandIn &) = delete;

private:
    std::filesystem::path m_folder;
};

class ValidationGui : public fleetwright::test::StartUp
{
protected:
    void SetUp() override
    {
        StartUp::SetUp();
        std::filesystem::create_directories(dir / "tmp");
        // The reports' temporary folder: TMPDIR off Windows; TMP, else TEMP, on Windows.
        for (const char *name : {"TMPDIR", "TMP", "TEMP"})
            env.set(name, fleetwright::test::bytesOf(dir / "tmp"));
    }

    void startIn(const std::filesystem::path &folder)
    {
        std::filesystem::create_directories(folder);
        settings.SaveSetting(u"Path", toU16String(nativeText(folder)));
    }

    std::filesystem::path singleReport() const { return dir / "tmp" / "corvanecheck.log"; }

    static ValidationController &validation(frm_Main &form)
    {
        auto *controller = form.findChild<ValidationController *>();
        EXPECT_NE(controller, nullptr);
        return *controller;
    }
};

} // namespace

TEST_F(ValidationGui, ReportOptionsLoadSaveAndCancel)
{
    frm_Main form(&dialogs);
    ValidationController &controller = validation(form);
    settings.SaveSetting(u"AnalyzeOptions", options("01111111111111111111111"));
    programState().AnalyzeOptionList.assign(23, u"0");

    form.controls().mnuAnalyzeOptions->trigger();
    frm_AnalyzeOptions *options1 = controller.analyzeOptionsForm();
    ASSERT_NE(options1, nullptr);
    EXPECT_TRUE(options1->isVisible());
    EXPECT_FALSE(options1->isModal());
    EXPECT_EQ(options1->windowTitle(), QStringLiteral("Analyzis Report Options"));
    EXPECT_EQ(options1->Check1(10)->text(), QStringLiteral("atc_airlines  defined in [fltsim.x]"));
    EXPECT_EQ(plainToolTip(options1->Check1(10)),
              QStringLiteral("report shows count of [fltsim.x] sections without an ATC_Airline "));
    EXPECT_EQ(plainToolTip(options1->Check1(20)), plainToolTip(options1->Check1(16)));
    EXPECT_EQ(options1->findChild<QPushButton *>(QStringLiteral("cmd_Save"))->text(), QStringLiteral("&Save && Close"));
    // Opening reads the stored options into memory; the airline options need a simulator to be shown.
    EXPECT_EQ(programState().AnalyzeOptionList, fleetwright::splitList(options("01111111111111111111111")));
    EXPECT_FALSE(options1->Check1(0)->isChecked());
    EXPECT_TRUE(options1->Check1(1)->isChecked());
    for (const int option : {9, 10, 11}) {
        EXPECT_FALSE(options1->Check1(option)->isChecked()) << option;
        EXPECT_FALSE(options1->Check1(option)->isEnabled()) << option;
    }
    // The menu again brings the same form up.
    form.controls().mnuAnalyzeOptions->trigger();
    EXPECT_EQ(controller.analyzeOptionsForm(), options1);

    // "Select All" checks the disabled boxes too, and they are saved as on.
    click(options1, "cmd_All");
    click(options1, "cmd_Save");
    deleteClosedForms();
    EXPECT_EQ(controller.analyzeOptionsForm(), nullptr);
    EXPECT_EQ(settings.GetSetting(u"AnalyzeOptions"), options("11111111111111111111111"));
    EXPECT_EQ(programState().AnalyzeOptionList, std::vector<std::u16string>(23, u"1"));

    // Cancel keeps what was stored.
    form.controls().mnuAnalyzeOptions->trigger();
    click(controller.analyzeOptionsForm(), "cmd_None");
    click(controller.analyzeOptionsForm(), "cmd_Close");
    deleteClosedForms();
    EXPECT_EQ(settings.GetSetting(u"AnalyzeOptions"), options("11111111111111111111111"));

    // With a simulator the airline boxes show the stored value.
    programState().Fs9Found = true;
    settings.SaveSetting(u"AnalyzeOptions", options("11111111101111111111111"));
    form.controls().mnuAnalyzeOptions->trigger();
    EXPECT_TRUE(controller.analyzeOptionsForm()->Check1(9)->isEnabled());
    EXPECT_TRUE(controller.analyzeOptionsForm()->Check1(8)->isChecked());
    EXPECT_FALSE(controller.analyzeOptionsForm()->Check1(9)->isChecked());
    click(controller.analyzeOptionsForm(), "cmd_None");
    click(controller.analyzeOptionsForm(), "cmd_Save");
    deleteClosedForms();
    EXPECT_EQ(settings.GetSetting(u"AnalyzeOptions"), options("00000000000000000000000"));

    // An empty stored text: every box that can be is checked, and that is stored.
    programState().Fs9Found = false;
    settings.SaveSetting(u"AnalyzeOptions", u"");
    form.controls().mnuAnalyzeOptions->trigger();
    EXPECT_TRUE(controller.analyzeOptionsForm()->Check1(0)->isChecked());
    EXPECT_EQ(settings.GetSetting(u"AnalyzeOptions"), options("11111111100011111111111"));
    click(controller.analyzeOptionsForm(), "cmd_Close");
    deleteClosedForms();
    EXPECT_TRUE(dialogs.records().empty());
}

TEST_F(ValidationGui, ValidateRefusesWithItsBoxesAndWritesNoReport)
{
    startIn(dir / "Aircraft" / "Empty");
    writeBytes(dir / "Aircraft" / "NoVariation" / "aircraft.cfg", "[general]\r\natc_type=Corvane\r\n");
    writeBytes(dir / "Aircraft" / "Alpha" / "aircraft.cfg", ONE_VARIATION);
    frm_Main form(&dialogs);
    ValidationController &controller = validation(form);
    const MainFormControls &c = form.controls();
    ReportWatch watch;

    controller.mnuValidate_Click();
    ASSERT_EQ(dialogs.records().size(), 1u);
    EXPECT_EQ(
        dialogs.records()[0],
        (DialogRecord {DialogKind::Critical, u"", u"No aircraft.cfg file found in this folder. Exiting here..."}));

    c.Dir1->setPath(nativeText(dir / "Aircraft" / "NoVariation"));
    const std::size_t before = dialogs.records().size();
    controller.mnuValidate_Click();
    ASSERT_EQ(dialogs.records().size(), before + 1);
    EXPECT_EQ(
        dialogs.records().back(),
        (DialogRecord {DialogKind::Critical, u"",
                       u"An aircraft.cfg file without any [fltsim.x] section found in folder . Exiting here..."}));

    // All options off: the information box, whatever the folder holds.
    c.Dir1->setPath(nativeText(dir / "Aircraft" / "Alpha"));
    programState().AnalyzeOptionList.assign(23, u"0");
    const std::size_t loaded = dialogs.records().size();
    c.mnuValidate->trigger();
    ASSERT_EQ(dialogs.records().size(), loaded + 1);
    EXPECT_EQ(dialogs.records().back().kind, DialogKind::Information);
    EXPECT_EQ(dialogs.records().back().text, ALL_OFF_TEXT);

    EXPECT_FALSE(std::filesystem::exists(singleReport()));
    EXPECT_EQ(watch.opened, 0);
}

TEST_F(ValidationGui, ReportOpensInTheEditorTheSettingNames)
{
    startIn(dir / "Aircraft" / "Alpha");
    writeBytes(dir / "Aircraft" / "Alpha" / "aircraft.cfg", ONE_VARIATION);
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    ASSERT_EQ(c.ListView1->topLevelItemCount(), 1);
    ASSERT_TRUE(c.mnuValidate->isEnabled());
    const std::size_t loaded = dialogs.records().size();

    {
        ReportWatch watch;
        c.mnuValidate->trigger();
        EXPECT_EQ(watch.opened, 1);
        EXPECT_TRUE(watch.shown.contains(QStringLiteral("[fltsim.x] sections:               1")));
        EXPECT_TRUE(watch.shown.startsWith(QStringLiteral("*")));
    }
    EXPECT_EQ(programState().EditorFile, toU16String(nativeText(singleReport())));
    EXPECT_TRUE(std::filesystem::exists(singleReport()));

    // The aircraft status panel validates a folder with variations too.
    std::filesystem::remove(singleReport());
    {
        ReportWatch watch;
        emit c.StatusBar1->panelDoubleClicked(9);
        EXPECT_EQ(watch.opened, 1);
        EXPECT_TRUE(std::filesystem::exists(singleReport()));
    }
    EXPECT_EQ(validation(form).validateAllForm(), nullptr);

    // Without the internal editor the plain editor gets the file.
    const auto opened = dir / "opened.log";
    const PlainEditorStandIn editor(dir.path(), env);
    programState().InternalEditorOn = false;
    ReportWatch watch;
    c.mnuValidate->trigger();
    for (int wait = 0; wait < 500 && !std::filesystem::exists(opened); ++wait)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(fleetwright::test::readBytes(opened), fleetwright::test::readBytes(singleReport()));
    EXPECT_EQ(watch.opened, 0);
    EXPECT_EQ(dialogs.records().size(), loaded);
}

TEST_F(ValidationGui, BothSimulatorsAskWhichAirlinesToUse)
{
    installFs9(true);
    installFsx(true);
    startIn(dir / "Aircraft" / "Alpha");
    writeBytes(dir / "Aircraft" / "Alpha" / "aircraft.cfg", ONE_VARIATION);
    frm_Main form(&dialogs);
    ASSERT_TRUE(programState().Fs9Found && programState().FsxFound);
    const std::size_t loaded = dialogs.records().size();
    ReportWatch watch;

    dialogs.pushButton(3);
    form.controls().mnuValidate->trigger();
    ASSERT_EQ(dialogs.records().size(), loaded + 1);
    EXPECT_EQ(dialogs.records().back(),
              (DialogRecord {DialogKind::ThreeButtonQuestion,
                             u"Validate Aircraft: Select FS-Version for ATC/Effects Analysis",
                             u"Select which flightsim version should be used...",
                             {u"FS9", u"FSX", u"Cancel"}}));
    EXPECT_FALSE(std::filesystem::exists(singleReport()));
    EXPECT_EQ(watch.opened, 0);

    dialogs.pushButton(1);
    form.controls().mnuValidate->trigger();
    EXPECT_EQ(watch.opened, 1);
    EXPECT_TRUE(watch.shown.contains(QStringLiteral("atc_airlines compared against:     FS9")));
}

TEST_F(ValidationGui, BatchFormTakesTheRootAndTheSimulatorChoice)
{
    startIn(dir / "Aircraft");
    frm_Main form(&dialogs);
    ValidationController &controller = validation(form);

    struct Row
    {
        bool fs9, fsx;
        bool fs9Enabled, fsxEnabled, fs9Selected, fsxSelected, frameEnabled;
    };
    const Row rows[] = {
        {true, false, true, false, true, false, true},
        {false, true, false, true, false, true, true},
        {false, false, false, false, false, false, false},
        {true, true, true, true, false, true, true},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(testing::Message() << "FS9 " << row.fs9 << " FSX " << row.fsx);
        programState().Fs9Found = row.fs9;
        programState().FsxFound = row.fsx;
        // No variations here: the status panel opens the batch form.
        emit form.controls().StatusBar1->panelDoubleClicked(9);
        frm_ValidateAll *batch = controller.validateAllForm();
        ASSERT_NE(batch, nullptr);
        EXPECT_TRUE(batch->isVisible());
        EXPECT_FALSE(batch->isModal());
        EXPECT_EQ(batch->OptATC(0)->isEnabled(), row.fs9Enabled);
        EXPECT_EQ(batch->OptATC(1)->isEnabled(), row.fsxEnabled);
        EXPECT_EQ(batch->OptATC(0)->isChecked(), row.fs9Selected);
        EXPECT_EQ(batch->OptATC(1)->isChecked(), row.fsxSelected);
        EXPECT_EQ(batch->findChild<QWidget *>(QStringLiteral("Frame1"))->isEnabled(), row.frameEnabled);
        EXPECT_TRUE(batch->OptRep(0)->isChecked());
        EXPECT_EQ(batch->findChild<QLineEdit *>(QStringLiteral("txtFolder"))->text(), nativeText(dir / "Aircraft"));
        EXPECT_EQ(plainToolTip(batch->OptATC(1)), QStringLiteral("Choose FS9 airlines.cfg"));
        // The menu brings the open form up rather than a second one.
        form.controls().mnuvalidateAll->trigger();
        EXPECT_EQ(controller.validateAllForm(), batch);
        click(batch, "cmdStop");
        deleteClosedForms();
        EXPECT_EQ(controller.validateAllForm(), nullptr);
    }
    EXPECT_TRUE(dialogs.records().empty());
}

TEST_F(ValidationGui, BatchRunsEveryFolderAndReturns)
{
    const auto root = dir / "Aircraft";
    startIn(root);
    writeBytes(root / "Alpha" / "aircraft.cfg", ONE_VARIATION);
    std::filesystem::create_directories(root / "Bravo");
    writeBytes(root / "Charlie" / "aircraft.cfg", ONE_VARIATION);
    frm_Main form(&dialogs);
    ValidationController &controller = validation(form);
    const MainFormControls &c = form.controls();

    c.mnuvalidateAll->trigger();
    frm_ValidateAll *batch = controller.validateAllForm();
    ASSERT_NE(batch, nullptr);
    std::vector<QString> foldersSeen;
    QObject::connect(c.Dir1, &DirListBox::Change, [&] { foldersSeen.push_back(c.Dir1->path()); });
    ReportWatch watch;
    click(batch, "cmdStart");

    EXPECT_EQ(watch.opened, 1);
    EXPECT_TRUE(watch.shown.contains(QStringLiteral("Validate all aircraft below folder : ") + nativeText(root)
                                     + QStringLiteral("\" (full report) *")));
    EXPECT_TRUE(
        watch.shown.contains(QStringLiteral("No aircraft.cfg file found in folder ") + nativeText(root / "Bravo")));
    EXPECT_EQ(watch.shown.count(QStringLiteral("[fltsim.x] sections:               1")), 2);
    EXPECT_EQ(programState().EditorFile, toU16String(nativeText(dir / "tmp" / "corvanecheckall.log")));
    // Each folder went through the main form, which is back where the batch started.
    EXPECT_EQ(foldersSeen,
              (std::vector<QString> {nativeText(root / "Alpha"), nativeText(root / "Bravo"),
                                     nativeText(root / "Charlie"), nativeText(root)}));
    EXPECT_FALSE(programState().BatchRunning);
    // Three folders give the bar a maximum of 1; the later values lie past it.
    EXPECT_EQ(batch->ProgressBar1()->maximum(), 1);
    EXPECT_EQ(batch->ProgressBar1()->value(), 1);
    EXPECT_TRUE(batch->isVisible());
    EXPECT_TRUE(dialogs.records().empty());
}

TEST_F(ValidationGui, BatchStopEndsAfterTheCurrentFolder)
{
    const auto root = dir / "Aircraft";
    startIn(root);
    writeBytes(root / "Alpha" / "aircraft.cfg", ONE_VARIATION);
    writeBytes(root / "Bravo" / "aircraft.cfg", ONE_VARIATION);
    writeBytes(root / "Charlie" / "aircraft.cfg", ONE_VARIATION);
    frm_Main form(&dialogs);
    ValidationController &controller = validation(form);

    form.controls().mnuvalidateAll->trigger();
    frm_ValidateAll *batch = controller.validateAllForm();
    ASSERT_NE(batch, nullptr);
    // "Exit" pressed while the first folder is reported.
    QObject::connect(batch->ProgressBar1(), &QProgressBar::valueChanged, [batch](int value) {
        if (value == 1)
            click(batch, "cmdStop");
    });
    ReportWatch watch;
    click(batch, "cmdStart");

    EXPECT_EQ(watch.opened, 1);
    EXPECT_EQ(watch.shown.count(QStringLiteral("[fltsim.x] sections:               1")), 1);
    EXPECT_TRUE(watch.shown.contains(nativeText(root / "Alpha").toLower()));
    EXPECT_FALSE(watch.shown.contains(nativeText(root / "Bravo").toLower()));
    EXPECT_EQ(QDir(form.controls().Dir1->path()), QDir(nativeText(root)));
    EXPECT_FALSE(programState().BatchRunning);
    // The form went once the batch had ended.
    deleteClosedForms();
    EXPECT_EQ(controller.validateAllForm(), nullptr);
}

TEST_F(ValidationGui, RunTimeErrorsEndTheRunWithTheCommonErrorText)
{
    const auto root = dir / "Aircraft";
    startIn(root / "Alpha");
    writeBytes(root / "Alpha" / "aircraft.cfg", ONE_VARIATION);
    frm_Main form(&dialogs);
    const MainFormControls &c = form.controls();
    const std::size_t loaded = dialogs.records().size();
    ReportWatch watch;

    // A report that cannot be written ends the run.
    programState().TempFolder = toU16String(nativeText(dir / "gone")) + u"/";
    c.mnuValidate->trigger();
    ASSERT_EQ(dialogs.records().size(), loaded + 1);
    EXPECT_EQ(dialogs.records().back().kind, DialogKind::Critical);
    EXPECT_TRUE(dialogs.records().back().text.starts_with(u"A runtime error has occured\r\n\r\nError number: 75\r\n"));
    EXPECT_TRUE(dialogs.records().back().text.ends_with(u"Formular frm_Main"));

    // From the status panel the common box names the start-up routine.
    emit c.StatusBar1->panelDoubleClicked(9);
    ASSERT_EQ(dialogs.records().size(), loaded + 2);
    EXPECT_EQ(dialogs.records().back().kind, DialogKind::Plain);
    EXPECT_NE(dialogs.records().back().text.find(u"\r\nProcedure Form_Load\r\n"), std::u16string::npos);

    // A root that went away after the batch form opened: the batch does not start.
    programState().TempFolder = toU16String(nativeText(dir / "tmp")) + u"/";
    std::filesystem::create_directories(root / "Gone");
    c.Dir1->setPath(nativeText(root / "Gone"));
    c.mnuvalidateAll->trigger();
    frm_ValidateAll *batch = validation(form).validateAllForm();
    ASSERT_NE(batch, nullptr);
    c.Dir1->setPath(nativeText(root));
    std::filesystem::remove(root / "Gone");
    const std::size_t before = dialogs.records().size();
    click(batch, "cmdStart");
    ASSERT_EQ(dialogs.records().size(), before + 1);
    EXPECT_EQ(dialogs.records().back().kind, DialogKind::Critical);
    EXPECT_NE(dialogs.records().back().text.find(u"Error number: 76\r\n"), std::u16string::npos);
    EXPECT_FALSE(programState().BatchRunning);
    EXPECT_EQ(watch.opened, 0);
}
