#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace fleetwright {

// Every box and dialog the engine shows goes through this interface: the GUI shows Qt boxes, the checker
// answers without asking (NeverAskDialogs), tests answer from a script (ScriptedDialogs). All calls are
// modal: they return when the user has answered.
//
// An empty title shows the program's name, as a message box without a title of its own does.
class Dialogs
{
public:
    virtual ~Dialogs() = default;

    // Yes and No buttons with the question symbol; true for Yes.
    virtual bool question(const std::u16string &text, const std::u16string &title) = 0;
    // Yes and No buttons with the critical symbol and No as the default: a question before a step that cannot
    // be undone. Dialogs that draw no symbols ask it as a question.
    virtual bool criticalQuestion(const std::u16string &text, const std::u16string &title)
    {
        return question(text, title);
    }
    // OK button with the information symbol: reports.
    virtual void information(const std::u16string &text, const std::u16string &title) = 0;
    // OK button with the critical symbol: write failures and refusals.
    virtual void critical(const std::u16string &text, const std::u16string &title) = 0;
    // OK button and no symbol: the common error box.
    virtual void plain(const std::u16string &text, const std::u16string &title) = 0;
    // OK button with the exclamation symbol: warnings such as a search that found nothing.
    virtual void exclamation(const std::u16string &text, const std::u16string &title) = 0;
    // Yes, No and Cancel with the exclamation symbol, answered with the platform's codes: 6 Yes, 7 No,
    // 2 Cancel (also for a box closed without a button).
    virtual int yesNoCancel(const std::u16string &text, const std::u16string &title) = 0;
    // Three buttons carrying the caller's labels, with the question symbol. 1, 2 or 3 for the button
    // pressed, 0 when the box was closed without one.
    virtual int threeButtonQuestion(const std::u16string &text, const std::u16string &title,
                                    const std::u16string &first, const std::u16string &second,
                                    const std::u16string &third) = 0;
    // A file to open, chosen under title in initialFolder. filter is "Text Files (*.txt)|*.txt|All Files
    // (*.*)|*.*": pairs of a description and its patterns. Nothing when the user cancels.
    virtual std::optional<std::u16string> openFile(const std::u16string &title, const std::u16string &filter,
                                                   const std::u16string &initialFolder) = 0;
    // A file to save to, chosen as openFile chooses one; the dialog itself asks before replacing a file.
    virtual std::optional<std::u16string> saveFile(const std::u16string &title, const std::u16string &filter,
                                                   const std::u16string &initialFolder) = 0;
    // A line of text, offered with defaultText. Nothing when the user cancels; an empty text is an answer.
    virtual std::optional<std::u16string> inputBox(const std::u16string &prompt, const std::u16string &title,
                                                   const std::u16string &defaultText) = 0;
};

enum class DialogKind
{
    Question,
    Information,
    Critical,
    Plain,
    ThreeButtonQuestion,
    OpenFile,
    InputBox,
    Exclamation,
    YesNoCancel,
    SaveFile,
};

// One box as it was shown. text is the message or prompt (the filter for openFile); details holds the
// three labels of a three-button question, the initial folder of openFile, the default of inputBox.
struct DialogRecord
{
    DialogKind kind;
    std::u16string title;
    std::u16string text;
    std::vector<std::u16string> details = {};

    bool operator==(const DialogRecord &) const = default;
};

// For the command-line checker, where nobody can answer: every question gets the configured answer, a file
// or input request is cancelled, and each box goes to the sink, or is kept in messages() when there is none.
class NeverAskDialogs : public Dialogs
{
public:
    using Sink = std::function<void(const DialogRecord &)>;

    explicit NeverAskDialogs(bool answer = false, Sink sink = {})
        : m_answer(answer)
        , m_sink(std::move(sink))
    {}

    // The button that a three-button question gets; 0 (closed) unless set. A Yes/No/Cancel box gets Cancel.
    void setButton(int button) { m_button = button; }
    const std::vector<DialogRecord> &messages() const { return m_messages; }

    bool question(const std::u16string &text, const std::u16string &title) override
    {
        deliver({DialogKind::Question, title, text});
        return m_answer;
    }
    void information(const std::u16string &text, const std::u16string &title) override
    {
        deliver({DialogKind::Information, title, text});
    }
    void critical(const std::u16string &text, const std::u16string &title) override
    {
        deliver({DialogKind::Critical, title, text});
    }
    void plain(const std::u16string &text, const std::u16string &title) override
    {
        deliver({DialogKind::Plain, title, text});
    }
    void exclamation(const std::u16string &text, const std::u16string &title) override
    {
        deliver({DialogKind::Exclamation, title, text});
    }
    int yesNoCancel(const std::u16string &text, const std::u16string &title) override
    {
        deliver({DialogKind::YesNoCancel, title, text});
        return 2;
    }
    int threeButtonQuestion(const std::u16string &text, const std::u16string &title, const std::u16string &first,
                            const std::u16string &second, const std::u16string &third) override
    {
        deliver({DialogKind::ThreeButtonQuestion, title, text, {first, second, third}});
        return m_button;
    }
    std::optional<std::u16string> openFile(const std::u16string &title, const std::u16string &filter,
                                           const std::u16string &initialFolder) override
    {
        deliver({DialogKind::OpenFile, title, filter, {initialFolder}});
        return std::nullopt;
    }
    std::optional<std::u16string> saveFile(const std::u16string &title, const std::u16string &filter,
                                           const std::u16string &initialFolder) override
    {
        deliver({DialogKind::SaveFile, title, filter, {initialFolder}});
        return std::nullopt;
    }
    std::optional<std::u16string> inputBox(const std::u16string &prompt, const std::u16string &title,
                                           const std::u16string &defaultText) override
    {
        deliver({DialogKind::InputBox, title, prompt, {defaultText}});
        return std::nullopt;
    }

private:
    void deliver(DialogRecord record)
    {
        if (m_sink)
            m_sink(record);
        else
            m_messages.push_back(std::move(record));
    }

    bool m_answer;
    int m_button = 0;
    Sink m_sink;
    std::vector<DialogRecord> m_messages;
};

} // namespace fleetwright
