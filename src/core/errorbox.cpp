#include "core/errorbox.h"

#include <string>

namespace fleetwright {

std::u16string commonErrorText(const RuntimeError &error, const std::u16string &form)
{
    // CR LF: a box shows it as one break, and the text stays byte-identical when the
    // checker writes it out or a test compares it.
    const std::u16string newLine = u"\r\n";
    std::u16string text = u"A runtime error has occured" + newLine;
    text += newLine;
    const std::string number = std::to_string(error.number());
    text += u"Error number: " + std::u16string(number.begin(), number.end()) + newLine;
    text += u"Error description: " + error.description() + newLine;
    text += u"Procedure " + error.procedure() + newLine;
    text += u"Line: 0" + newLine;
    text += u"Formular " + form;
    return text;
}

void showCommonError(Dialogs &dialogs, const RuntimeError &error, const std::u16string &form)
{
    dialogs.plain(commonErrorText(error, form), {});
}

} // namespace fleetwright
