#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <QObject>

#include "history/journal.h"

namespace fleetwright {

class Dialogs;

// The program's one journal as the main window's units use it. It is opened on first use, so a program that
// never changes a file makes no journal folder; changed() tells the Edit menu when an operation has closed or
// the journal has undone, redone or restored one.
class JournalService : public QObject
{
    Q_OBJECT

public:
    explicit JournalService(std::filesystem::path location, QObject *parent = nullptr);
    ~JournalService() override;

    const std::filesystem::path &location() const { return m_location; }
    // Opens the journal when it is not open yet; throws RuntimeError when its folder cannot be made or read.
    Journal &journal();
    // The journal if it is open or has a folder already; nothing when not a single change was journaled yet.
    Journal *existingJournal();

    // How the journal knows a folder: absolute and lexically normal, without a trailing separator, so that a
    // folder reached by two spellings is one.
    static std::filesystem::path folderKey(const std::filesystem::path &folder);

    // One user operation on a folder: every change the engine's writers make while it lives belongs to it.
    // Opening throws RuntimeError when the journal cannot be opened, before anything is written.
    class Operation
    {
    public:
        Operation(JournalService &service, const std::filesystem::path &folder, std::u16string name);
        ~Operation();
        Operation(const Operation &) = delete;
        Operation &operator=(const Operation &) = delete;

    private:
        JournalService &m_service;
        std::optional<JournalOperation> m_operation;
    };

    // The folder of a file the operation writes: the aircraft folder of an aircraft.cfg.
    static std::filesystem::path folderOf(const std::u16string &file);

    // An undo, redo or restore: action(journal, force). When files were changed outside since the journaled
    // change, the user is told which and asked before they are overwritten; a failure is shown. Returns the
    // last outcome; Done and Failed changed files, so the folder is to be read again.
    using Action = std::function<JournalResult(Journal &journal, bool force)>;
    JournalOutcome act(Dialogs &dialogs, const Action &action);

signals:
    void changed();

private:
    std::filesystem::path m_location;
    std::unique_ptr<Journal> m_journal;
};

} // namespace fleetwright
