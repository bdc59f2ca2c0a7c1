#include "history/journalfixture.h"

#include "platform/fileio.h"

namespace fleetwright::test {

FolderSnapshot snapshot(const std::filesystem::path &folder)
{
    FolderSnapshot files;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file())
            continue;
        files[entry.path().lexically_relative(folder).generic_string()] = {readBytes(entry.path()),
                                                                           platform::isReadOnly(entry.path())};
    }
    return files;
}

void perform(Journal &journal, const std::filesystem::path &folder, const std::u16string &name,
             const std::vector<Change> &changes)
{
    const JournalOperation operation(journal, folder, name);
    for (const Change &change : changes) {
        const std::filesystem::path path = folder / change.file;
        journalBeforeChange(path);
        if (change.makeWritable)
            platform::clearReadOnly(path);
        if (change.bytes)
            platform::replaceFileAtomically(path, *change.bytes); // a read-only file refuses, as it should
        else
            std::filesystem::remove(path);
    }
}

} // namespace fleetwright::test
