#pragma once

#include <optional>
#include <string>

namespace fleetwright::platform {

// Hands files and addresses to other programs. The programs start on their own, with their arguments passed
// as a list, never through a command interpreter, and the caller does not wait for them.
class Shell
{
public:
    // Opens a file, folder or URL with the program the desktop associates with it (ShellExecute "open" on
    // Windows, xdg-open elsewhere). False when nothing could be started.
    static bool open(const std::u16string &fileOrUrl);

    // Opens a file in a plain text editor: notepad on Windows; elsewhere the command in $VISUAL or $EDITOR
    // (split at blanks, quotes kept together), else the desktop's default for text/plain, else xdg-open.
    // False when nothing could be started.
    static bool openInPlainEditor(const std::u16string &file);

    // The program that opens the document: its path on Windows; elsewhere the desktop entry that
    // xdg-mime names for the document's type ("org.gnome.Evince.desktop"). Nothing when there is none.
    static std::optional<std::u16string> findExecutable(const std::u16string &document);
};

} // namespace fleetwright::platform
