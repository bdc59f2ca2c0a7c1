// Validation from the main form: the single report and the batch, each reaching the editor; the report options.

#include "startupfixture.h"
#include "support/gui/frm_texteditor.h"
#include "validation/gui/frm_analyzeoptions.h"
#include "validation/gui/frm_validateall.h"
#include "validation/gui/validationcontroller.h"

using namespace fleetwright;

namespace {

const QString ONE_SECTION = QStringLiteral("[fltsim.x] sections:               1");

class ValidationGui : public test::StartUp
{
protected:
    void SetUp() override
    {
        StartUp::SetUp();
        // The reports' temporary folder: TMPDIR off Windows; TMP, else TEMP, on Windows.
        for (const char *name : {"TMPDIR", "TMP", "TEMP"})
            setEnv(name, dir.path().string());
        for (const char *name : {"Alpha", "Bravo"})
            test::writeBytes(dir / "Aircraft" / name / "aircraft.cfg", "[fltsim.0]\r\ntitle=Corvane\r\nsim=c\r\n");
        std::filesystem::create_directories(dir / "Aircraft" / "Empty");
    }
    ValidationController &validation(frm_Main &form) { return *form.findChild<ValidationController *>(); }

    // Each report editor is closed as soon as it shows; shown keeps what the last one showed.
    QString shown;
    test::ModalDialogs<frm_TextEditor> reports {[this](frm_TextEditor &editor) {
        shown = editor.findChild<QPlainTextEdit *>()->toPlainText();
        editor.findChild<QAction *>(QStringLiteral("mnuFileExit"))->trigger();
    }};
};

} // namespace

TEST_F(ValidationGui, ReportOpensInTheEditorAfterTheSimulatorQuestion)
{
    test::writeBytes(dir / "FS9" / "Aircraft" / "airlines.cfg", "Alpha\r\n");
    test::writeBytes(dir / "FSX" / "airlines.cfg", "Alpha\r\n");
    setEnv("FLEETWRIGHT_FS9_DIR", (dir / "FS9").string());
    setEnv("FLEETWRIGHT_FSX_DIR", (dir / "FSX").string());
    settings.SaveSetting(u"Path", toU16String(test::nativeText(dir / "Aircraft" / "Empty")));
    frm_Main form(&dialogs);
    dialogs.pushButton(1);
    validation(form).mnuValidate_Click();
    EXPECT_EQ(dialogs.records().at(1).text, u"No aircraft.cfg file found in this folder. Exiting here...");
    form.controls().Dir1->setPath(test::nativeText(dir / "Aircraft" / "Alpha"));
    dialogs.pushButton(3);
    form.controls().mnuValidate->trigger();
    EXPECT_EQ(dialogs.records().at(2).kind, DialogKind::ThreeButtonQuestion);
    form.state().AnalyzeOptionList.assign(23, u"0");
    form.controls().mnuValidate->trigger();
    EXPECT_EQ(dialogs.records().at(3).kind, DialogKind::Information) << "all options off";
    EXPECT_EQ(reports.opened, 0) << "Cancel writes no report";
    form.state().AnalyzeOptionList.assign(23, u"1");
    dialogs.pushButton(1);
    emit form.controls().StatusBar1->panelDoubleClicked(9);
    EXPECT_EQ(reports.opened, 1);
    EXPECT_TRUE(shown.contains(ONE_SECTION)
                && shown.contains(QStringLiteral("atc_airlines compared against:     FS9")));
}

TEST_F(ValidationGui, BatchRunsEveryFolderAndReturns)
{
    settings.SaveSetting(u"Path", toU16String(test::nativeText(dir / "Aircraft")));
    frm_Main form(&dialogs);
    form.controls().mnuvalidateAll->trigger();
    frm_ValidateAll *batch = validation(form).validateAllForm();
    ASSERT_NE(batch, nullptr);
    batch->findChild<QPushButton *>(QStringLiteral("cmdStart"))->click();
    EXPECT_EQ(reports.opened, 1);
    EXPECT_EQ(shown.count(ONE_SECTION), 2);
    EXPECT_TRUE(shown.contains(QStringLiteral("No aircraft.cfg file found in folder ")
                               + test::nativeText(dir / "Aircraft" / "Empty")));
    EXPECT_EQ(QDir(form.controls().Dir1->path()), QDir(test::nativeText(dir / "Aircraft")));

    // Stop pressed while the first folder is reported ends the batch after it, and the form goes.
    batch->ProgressBar1()->setValue(0);
    QObject::connect(batch->ProgressBar1(), &QProgressBar::valueChanged,
                     [batch] { batch->findChild<QPushButton *>(QStringLiteral("cmdStop"))->click(); });
    batch->findChild<QPushButton *>(QStringLiteral("cmdStart"))->click();
    EXPECT_EQ(shown.count(ONE_SECTION), 1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(validation(form).validateAllForm(), nullptr);
    EXPECT_FALSE(form.state().BatchRunning);
    EXPECT_TRUE(dialogs.records().empty());
}

TEST_F(ValidationGui, ReportOptionsFormSavesOrLeavesTheOptions)
{
    frm_Main form(&dialogs);
    const auto openForm = [&form] {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        form.controls().mnuAnalyzeOptions->trigger();
        return form.findChild<ValidationController *>()->analyzeOptionsForm();
    };
    frm_AnalyzeOptions *options = openForm();
    EXPECT_FALSE(options->Check1(10)->isEnabled()) << "no simulator found";
    options->Check1(1)->setChecked(false);
    options->findChild<QPushButton *>(QStringLiteral("cmd_Save"))->click();
    std::vector<std::u16string> saved(23, u"1");
    saved[1] = saved[9] = saved[10] = saved[11] = u"0";
    EXPECT_EQ(settings.GetSetting(u"AnalyzeOptions"), joinList(saved));
    EXPECT_EQ(form.state().AnalyzeOptionList, saved);
    options = openForm();
    options->findChild<QPushButton *>(QStringLiteral("cmd_None"))->click();
    options->findChild<QPushButton *>(QStringLiteral("cmd_Close"))->click();
    EXPECT_EQ(settings.GetSetting(u"AnalyzeOptions"), joinList(saved));
}
