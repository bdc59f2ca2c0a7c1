#include <string>
#include <windows.h>
// shellapi.h builds on the types that windows.h declares.
#include <shellapi.h>

#include "platform/shell.h"

namespace fleetwright::platform {

namespace {

std::wstring wide(const std::u16string &text)
{
    return std::wstring(text.begin(), text.end());
}

// One argument as the C run time of the started program splits its command line back.
std::wstring quoted(const std::wstring &argument)
{
    if (!argument.empty() && argument.find_first_of(L" \t\n\v\"") == std::wstring::npos)
        return argument;
    std::wstring out = L"\"";
    for (std::size_t i = 0;; ++i) {
        std::size_t backslashes = 0;
        while (i < argument.size() && argument[i] == L'\\') {
            ++backslashes;
            ++i;
        }
        if (i == argument.size()) {
            out.append(backslashes * 2, L'\\');
            break;
        }
        if (argument[i] == L'"')
            out.append(backslashes * 2 + 1, L'\\');
        else
            out.append(backslashes, L'\\');
        out.push_back(argument[i]);
    }
    out.push_back(L'"');
    return out;
}

} // namespace

bool Shell::open(const std::u16string &fileOrUrl)
{
    if (fileOrUrl.empty())
        return false;
    const HINSTANCE result = ShellExecuteW(nullptr, L"open", wide(fileOrUrl).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    // Values up to 32 are error codes, as the function has returned them since 16-bit Windows.
    return reinterpret_cast<INT_PTR>(result) > 32;
}

bool Shell::openInPlainEditor(const std::u16string &file)
{
    std::wstring commandLine = L"notepad.exe " + quoted(wide(file));
    STARTUPINFOW startup {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process {};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
        return false;
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return true;
}

std::optional<std::u16string> Shell::findExecutable(const std::u16string &document)
{
    wchar_t buffer[MAX_PATH] = {};
    const HINSTANCE result = FindExecutableW(wide(document).c_str(), nullptr, buffer);
    if (reinterpret_cast<INT_PTR>(result) <= 32 || buffer[0] == L'\0')
        return std::nullopt;
    return std::u16string(buffer, buffer + wcslen(buffer));
}

} // namespace fleetwright::platform
