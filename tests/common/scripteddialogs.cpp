#include "common/scripteddialogs.h"

#include <stdexcept>
#include <utility>

#include "platform/utf8.h"

namespace fleetwright {

void ScriptedDialogs::pushAnswer(bool yes)
{
    m_answers.push_back({DialogKind::Question, yes, 0, std::nullopt});
}

void ScriptedDialogs::pushButton(int button)
{
    m_answers.push_back({DialogKind::ThreeButtonQuestion, false, button, std::nullopt});
}

void ScriptedDialogs::pushYesNoCancel(int answer)
{
    m_answers.push_back({DialogKind::YesNoCancel, false, answer, std::nullopt});
}

void ScriptedDialogs::pushSaveFile(std::optional<std::u16string> file)
{
    m_answers.push_back({DialogKind::SaveFile, false, 0, std::move(file)});
}

void ScriptedDialogs::pushFile(std::optional<std::u16string> file)
{
    m_answers.push_back({DialogKind::OpenFile, false, 0, std::move(file)});
}

void ScriptedDialogs::pushInput(std::optional<std::u16string> text)
{
    m_answers.push_back({DialogKind::InputBox, false, 0, std::move(text)});
}

ScriptedDialogs::Answer ScriptedDialogs::take(DialogRecord record)
{
    m_records.push_back(std::move(record));
    const DialogRecord &shown = m_records.back();
    if (m_answers.empty() || m_answers.front().kind != shown.kind) {
        std::string message = std::string("unexpected ") + dialogKindName(shown.kind) + " \""
            + platform::toUtf8(shown.text) + "\" titled \"" + platform::toUtf8(shown.title) + "\"";
        if (m_answers.empty()) {
            message += ": no answer scripted";
        } else {
            message += ": the next scripted answer is for a ";
            message += dialogKindName(m_answers.front().kind);
        }
        throw std::logic_error(message);
    }
    Answer answer = std::move(m_answers.front());
    m_answers.pop_front();
    return answer;
}

bool ScriptedDialogs::question(const std::u16string &text, const std::u16string &title)
{
    return take({DialogKind::Question, title, text}).yes;
}

void ScriptedDialogs::information(const std::u16string &text, const std::u16string &title)
{
    m_records.push_back({DialogKind::Information, title, text});
}

void ScriptedDialogs::critical(const std::u16string &text, const std::u16string &title)
{
    m_records.push_back({DialogKind::Critical, title, text});
}

void ScriptedDialogs::plain(const std::u16string &text, const std::u16string &title)
{
    m_records.push_back({DialogKind::Plain, title, text});
}

void ScriptedDialogs::exclamation(const std::u16string &text, const std::u16string &title)
{
    m_records.push_back({DialogKind::Exclamation, title, text});
}

int ScriptedDialogs::yesNoCancel(const std::u16string &text, const std::u16string &title)
{
    return take({DialogKind::YesNoCancel, title, text}).button;
}

int ScriptedDialogs::threeButtonQuestion(const std::u16string &text, const std::u16string &title,
                                         const std::u16string &first, const std::u16string &second,
                                         const std::u16string &third)
{
    return take({DialogKind::ThreeButtonQuestion, title, text, {first, second, third}}).button;
}

std::optional<std::u16string> ScriptedDialogs::openFile(const std::u16string &title, const std::u16string &filter,
                                                        const std::u16string &initialFolder)
{
    return take({DialogKind::OpenFile, title, filter, {initialFolder}}).text;
}

std::optional<std::u16string> ScriptedDialogs::saveFile(const std::u16string &title, const std::u16string &filter,
                                                        const std::u16string &initialFolder)
{
    return take({DialogKind::SaveFile, title, filter, {initialFolder}}).text;
}

std::optional<std::u16string> ScriptedDialogs::inputBox(const std::u16string &prompt, const std::u16string &title,
                                                        const std::u16string &defaultText)
{
    return take({DialogKind::InputBox, title, prompt, {defaultText}}).text;
}

const char *dialogKindName(DialogKind kind)
{
    switch (kind) {
    case DialogKind::Question:
        return "question";
    case DialogKind::Information:
        return "information box";
    case DialogKind::Critical:
        return "critical box";
    case DialogKind::Plain:
        return "plain box";
    case DialogKind::ThreeButtonQuestion:
        return "three-button question";
    case DialogKind::OpenFile:
        return "open-file dialog";
    case DialogKind::InputBox:
        return "input box";
    case DialogKind::Exclamation:
        return "exclamation box";
    case DialogKind::YesNoCancel:
        return "yes/no/cancel question";
    case DialogKind::SaveFile:
        return "save-file dialog";
    }
    return "box";
}

} // namespace fleetwright
