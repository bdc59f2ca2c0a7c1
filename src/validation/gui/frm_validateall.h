#pragma once

#include <array>
#include <atomic>
#include <string>

#include <QDialog>

class QCloseEvent;
class QGroupBox;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QRadioButton;
class frm_Main;

// Validates every aircraft folder directly below a root and joins the reports into "corvanecheckall.log".
// The batch drives the main form: each folder is loaded in it as the user would load it, then validated.
// The form is not modal, so the main form stays usable behind it while the batch yields between folders.
class frm_ValidateAll : public QDialog
{
    Q_OBJECT

public:
    explicit frm_ValidateAll(frm_Main &form);

    // The root folder, taken from the folder browser when the form opened.
    const std::u16string &batchRoot() const { return BatchRoot; }
    bool isRunning() const { return m_runs > 0; }

    QRadioButton *OptRep(int index) const { return m_optRep.at(index); }
    QRadioButton *OptATC(int index) const { return m_optATC.at(index); }
    QProgressBar *ProgressBar1() const { return m_progressBar1; }

public slots:
    void cmdStart_Click();
    // Closes the form; a batch under way ends after the folder it is at.
    void cmdStop_Click();
    // Escape, like Exit, lets a batch under way end after its folder.
    void reject() override;

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void Form_Load();
    void showProgress(std::size_t done, std::size_t count);

    frm_Main &m_form;
    QLineEdit *m_txtFolder = nullptr;
    QGroupBox *m_frame1 = nullptr;
    std::array<QRadioButton *, 2> m_optRep {};
    std::array<QRadioButton *, 2> m_optATC {};
    QProgressBar *m_progressBar1 = nullptr;

    std::u16string BatchRoot;
    std::u16string BatchStartFolder;
    // Batches under way: a Start while one runs starts another inside it, as nothing locks the form.
    int m_runs = 0;
    std::atomic<bool> m_stopRequested = false;
};
