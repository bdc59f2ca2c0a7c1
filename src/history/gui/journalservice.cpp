#include "history/gui/journalservice.h"

#include <system_error>

#include "core/dialogs.h"
#include "core/runtimeerror.h"

namespace fleetwright {

namespace fs = std::filesystem;

JournalService::JournalService(fs::path location, QObject *parent)
    : QObject(parent)
    , m_location(std::move(location))
{
    setObjectName(QStringLiteral("JournalService"));
}

JournalService::~JournalService() = default;

Journal &JournalService::journal()
{
    if (!m_journal)
        m_journal = std::make_unique<Journal>(m_location);
    return *m_journal;
}

Journal *JournalService::existingJournal()
{
    if (m_journal)
        return m_journal.get();
    std::error_code error;
    if (!fs::is_directory(m_location, error))
        return nullptr;
    try {
        return &journal();
    } catch (const RuntimeError &) {
        // A journal that cannot be read offers nothing to undo; the next change says why, and stops.
        return nullptr;
    }
}

fs::path JournalService::folderKey(const fs::path &folder)
{
    std::error_code error;
    fs::path key = fs::absolute(folder, error);
    if (error)
        key = folder;
    key = key.lexically_normal();
    if (!key.has_filename() && key.has_relative_path())
        key = key.parent_path();
    return key;
}

fs::path JournalService::folderOf(const std::u16string &file)
{
    return folderKey(fs::path(file).parent_path());
}

JournalOutcome JournalService::act(Dialogs &dialogs, const Action &action)
{
    JournalResult result;
    try {
        result = action(journal(), false);
        if (result.outcome == JournalOutcome::ChangedOutside
            && dialogs.question(result.message + u"\n\nOverwrite the changes made outside?", u""))
            result = action(journal(), true);
    } catch (const RuntimeError &error) {
        result.outcome = JournalOutcome::Failed;
        result.message = error.description();
    }
    if (result.outcome == JournalOutcome::Failed)
        dialogs.critical(result.message, u"");
    emit changed();
    return result.outcome;
}

JournalService::Operation::Operation(JournalService &service, const fs::path &folder, std::u16string name)
    : m_service(service)
{
    m_operation.emplace(service.journal(), folderKey(folder), std::move(name));
}

JournalService::Operation::~Operation()
{
    m_operation.reset();
    emit m_service.changed();
}

} // namespace fleetwright
