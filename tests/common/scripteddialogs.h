#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "core/dialogs.h"

namespace fleetwright {

// The Dialogs of tests: a test scripts the answers in the order the boxes are to come, runs the code, and
// asserts on records(), the boxes shown in order with their titles and texts.
//
//     ScriptedDialogs dialogs;
//     dialogs.pushAnswer(false);                 // "Are you sure?" -> No
//     update(dialogs);
//     EXPECT_EQ(dialogs.records().at(0).text, u"Are you sure?");
//
// Messages (information, critical, plain) need no answer. A box that asks while the next scripted answer is
// missing or of another kind is a failure of the test: it is recorded, and std::logic_error is thrown naming
// the box and its text, so the test sees it instead of a made-up answer.
class ScriptedDialogs : public Dialogs
{
public:
    void pushAnswer(bool yes);
    // 1, 2 or 3 for a button, 0 for a box closed without one.
    void pushButton(int button);
    // 6 Yes, 7 No or 2 Cancel for a Yes/No/Cancel box.
    void pushYesNoCancel(int answer);
    // A chosen file, or nothing for Cancel.
    void pushFile(std::optional<std::u16string> file);
    // A file chosen to save to, or nothing for Cancel.
    void pushSaveFile(std::optional<std::u16string> file);
    // An entered text, or nothing for Cancel.
    void pushInput(std::optional<std::u16string> text);

    const std::vector<DialogRecord> &records() const { return m_records; }
    // Answers scripted but not yet asked for.
    std::size_t pendingAnswers() const { return m_answers.size(); }

    bool question(const std::u16string &text, const std::u16string &title) override;
    void information(const std::u16string &text, const std::u16string &title) override;
    void critical(const std::u16string &text, const std::u16string &title) override;
    void plain(const std::u16string &text, const std::u16string &title) override;
    void exclamation(const std::u16string &text, const std::u16string &title) override;
    int yesNoCancel(const std::u16string &text, const std::u16string &title) override;
    int threeButtonQuestion(const std::u16string &text, const std::u16string &title, const std::u16string &first,
                            const std::u16string &second, const std::u16string &third) override;
    std::optional<std::u16string> openFile(const std::u16string &title, const std::u16string &filter,
                                           const std::u16string &initialFolder) override;
    std::optional<std::u16string> saveFile(const std::u16string &title, const std::u16string &filter,
                                           const std::u16string &initialFolder) override;
    std::optional<std::u16string> inputBox(const std::u16string &prompt, const std::u16string &title,
                                           const std::u16string &defaultText) override;

private:
    struct Answer
    {
        DialogKind kind;
        bool yes = false;
        int button = 0;
        std::optional<std::u16string> text;
    };

    Answer take(DialogRecord record);

    std::deque<Answer> m_answers;
    std::vector<DialogRecord> m_records;
};

// "question", "three-button question", ...: the kind of a box in words, for failure messages.
const char *dialogKindName(DialogKind kind);

} // namespace fleetwright
