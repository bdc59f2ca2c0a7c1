#include "validation/reportwriter.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <initializer_list>
#include <system_error>

#include "core/paths.h"
#include "core/runtimeerror.h"
#include "platform/codepage.h"
#include "platform/fileio.h"
#include "platform/filelookup.h"
#include "platform/regional.h"
#include "simfiles/binaryfile.h"
#include "validation/validationstate.h"
#include "version.h"

namespace fleetwright {

namespace fs = std::filesystem;

namespace {

std::u16string numberText(long long value)
{
    const std::string digits = std::to_string(value);
    return std::u16string(digits.begin(), digits.end());
}

void writeBytes(const fs::path &path, const std::string &bytes, bool append, const std::u16string &procedure)
{
    if (!append) {
        if (!platform::writeFileInPlace(path, bytes))
            throw RuntimeError::pathFileAccessError(procedure);
        return;
    }
    std::ofstream out(path, std::ios::binary | std::ios::app);
    if (!out)
        throw RuntimeError::pathFileAccessError(procedure);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out)
        throw RuntimeError::pathFileAccessError(procedure);
}

} // namespace

std::int64_t reportTimeSeconds()
{
    // Fixed when asked for, so that reports can be reproduced.
    if (const char *epoch = std::getenv("SOURCE_DATE_EPOCH"); epoch && *epoch) {
        const std::string text(epoch);
        if (std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }) && text.size() < 19)
            return std::stoll(text);
    }
    return static_cast<std::int64_t>(std::time(nullptr));
}

std::u16string reportHeaderStart()
{
    const std::int64_t now = reportTimeSeconds();
    return u"Fleetwright V." + numberText(VERSION_MAJOR) + u"." + numberText(VERSION_MINOR) + u"."
        + numberText(VERSION_REVISION) + u" - " + platform::shortDateText(now) + u" " + platform::longTimeText(now)
        + u" - ";
}

std::u16string reportStars(std::u16string_view header)
{
    return std::u16string(header.size(), u'*');
}

std::u16string reportRule(std::u16string_view header)
{
    // Half the length, a half rounded to the even number.
    std::size_t n = header.size() / 2;
    if (header.size() % 2 == 1 && n % 2 == 1)
        ++n;
    std::u16string rule;
    for (std::size_t i = 0; i < n; ++i)
        rule += u"-:";
    return rule;
}

void writeReportFile(const fs::path &path, const std::vector<std::u16string> &lines, const std::u16string &procedure)
{
    std::u16string text;
    for (const std::u16string &line : lines)
        text += line + u"\r\n";
    writeBytes(path, platform::toCodePage(text), false, procedure);
}

void appendReportBytes(const fs::path &path, const std::string &bytes, const std::u16string &procedure)
{
    writeBytes(path, bytes, true, procedure);
}

std::string readReportBytes(const fs::path &path)
{
    return platform::readWholeFile(path).bytes.value_or(std::string());
}

void FindEmptyFolders(const std::u16string &path, const std::u16string &EmptyFolderRoot,
                      std::u16string &EmptyFolderList, const std::function<void()> &yieldToEvents)
{
    const char16_t sep = nativeSeparator();
    struct Pending
    {
        std::u16string path;
        std::size_t depth;
    };
    std::u16string start = path;
    // A folder's own path carries no separator at its end, except a root.
    while (start.size() > 1 && start.back() == sep && !(start.size() == 3 && start[1] == u':'))
        start.pop_back();
    std::vector<Pending> pending {{start, 0}};
    struct Inside
    {
        fs::path resolved;
        fs::path canonical;
    };
    std::vector<Inside> inside;
    while (!pending.empty()) {
        const Pending item = std::move(pending.back());
        pending.pop_back();
        if (yieldToEvents) {
            yieldToEvents();
            // Whatever the events did, the disk may have changed since anything was looked at.
            platform::LookupSnapshot::forgetAll();
        }
        auto resolved = platform::FileLookup::resolve(item.path);
        if (!resolved || !platform::FileLookup::exists(item.path, platform::LookupKind::Folders))
            continue;
        inside.resize(item.depth);
        // After events anything may have moved: then every folder is looked at afresh.
        fs::path canonical = inside.empty() || yieldToEvents
            ? platform::canonicalOf(*resolved)
            : platform::canonicalBelow(inside.back().resolved, inside.back().canonical, *resolved);
        if (std::any_of(inside.begin(), inside.end(),
                        [&](const Inside &above) { return above.canonical == canonical; }))
            continue; // a link back into the walk
        if (!platform::FileLookup::canList(*resolved))
            continue; // unreadable: passed over as the walk ignores its errors
        inside.push_back({std::move(*resolved), std::move(canonical)});
        const std::u16string pattern = joinPath(item.path, u"*");
        const platform::FileLookup lookup(pattern, platform::LookupKind::Folders);
        const std::vector<std::u16string> &subfolders = lookup.names();
        if (!subfolders.empty()) {
            for (auto it = subfolders.rbegin(); it != subfolders.rend(); ++it)
                pending.push_back({joinPath(item.path, *it), item.depth + 1});
            continue;
        }
        if (!platform::FileLookup(pattern, platform::LookupKind::FilesAndFolders).names().empty())
            continue;
        const std::u16string below =
            item.path.size() > EmptyFolderRoot.size() ? item.path.substr(EmptyFolderRoot.size()) : u"";
        addRow(EmptyFolderList, u"..\\" + backslashSeparators(below));
    }
}

namespace {

constexpr std::size_t LabelWidth = 35;

class ReportBody
{
public:
    ReportBody(const RunState &state, std::vector<std::u16string> &lines, bool &errors)
        : m_state(state)
        , m_lines(lines)
        , m_errors(errors)
    {}

    bool on(int option) const { return optionValue(m_state, option) == 1; }
    double sum(std::initializer_list<int> options) const
    {
        double total = 0;
        for (int option : options)
            total += optionValue(m_state, option);
        return total;
    }
    void line(const std::u16string &text) { m_lines.push_back(text); }
    void error() { m_errors = true; }

    void count(const std::u16string &label, long long value) { line(label + numberText(value)); }

    // The label with the number of rows, then every row below it.
    std::size_t countedRows(const std::u16string &label, const std::u16string &list)
    {
        const std::vector<std::u16string> rows = splitRows(list);
        line(label + numberText(static_cast<long long>(rows.size())));
        for (const std::u16string &row : rows)
            line(std::u16string(LabelWidth, u' ') + row);
        return rows.size();
    }

    // The first row on the label line, every further one below it.
    std::size_t rowsOnLabel(const std::u16string &label, const std::u16string &list, const std::u16string &suffix = {})
    {
        const std::vector<std::u16string> rows = splitRows(list);
        line(label + (rows.empty() ? std::u16string() : rows.front()) + suffix);
        for (std::size_t i = 1; i < rows.size(); ++i)
            line(std::u16string(LabelWidth, u' ') + rows[i] + suffix);
        return rows.size();
    }

    std::size_t repeatedLabel(const std::u16string &label, const std::vector<std::u16string> &rows)
    {
        if (rows.empty())
            line(label + u"0");
        for (const std::u16string &row : rows)
            line(label + row);
        return rows.size();
    }

private:
    const RunState &m_state;
    std::vector<std::u16string> &m_lines;
    bool &m_errors;
};

} // namespace

std::vector<std::u16string> reportLines(const RunState &state, bool &reportHasErrors)
{
    reportHasErrors = false;
    const std::u16string header = reportHeaderStart() + u"Report for \"" + state.FolderPrefix + u"\" *";
    const std::u16string stars = reportStars(header);
    const std::u16string rule = reportRule(header);
    std::vector<std::u16string> lines {stars, header, stars, u""};
    ReportBody r(state, lines, reportHasErrors);

    if (r.on(0))
        r.line(u"[fltsim.x] sections:               " + numberText(static_cast<long long>(state.SectionTable.size()))
               + (state.OutOfSequence ? u"   ==> not in sequential order - consider renumbering" : u""));
    if (r.on(17)) {
        if (state.AnyTitleUndefined) {
            r.countedRows(u"[fltsim.x] title undefined:        ", state.TitlesUndefined);
            r.error();
        } else {
            r.line(u"[fltsim.x] title undefined:        0");
        }
    }
    if (r.on(1)) {
        if (state.AnyTitleDuplicate) {
            r.line(u"[fltsim.x] title unique:           failed");
            r.error();
            r.rowsOnLabel(u"[fltsim.x] title duplicate:        ", state.TitleDuplicates);
        } else {
            r.line(u"[fltsim.x] title unique:           passed");
        }
    }
    if (r.on(2)) {
        if (state.AnyMisnumbered) {
            r.line(u"[fltsim.x] sections numbering:     failed (duplicates will cause title unique errors above)");
            r.error();
            r.rowsOnLabel(u"[fltsim.x] sections misnumbered:   ", state.SectionsMisnumbered);
        } else {
            r.line(u"[fltsim.x] sections numbering:     passed");
        }
    }
    if (r.sum({0, 1, 2, 17}) > 0 && r.sum({3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 18, 19, 20, 21, 22}) > 1)
        r.line(rule);

    if (r.on(12))
        r.count(u"Textures found in folder:          ", state.TexturesFound);
    if (r.on(18)) {
        if (state.AnyTextureUndefined) {
            r.countedRows(u"Textures undefined in [fltsim.x]:  ", state.TexturesUndefined);
            r.error();
        } else {
            r.line(u"Textures undefined in [fltsim.x]:  0");
        }
    }
    if (r.on(15)) {
        const std::vector<std::u16string> missing = splitRows(state.TexturesMissing);
        if (!missing.empty() && missing.front() != u"0") {
            r.countedRows(u"Textures missing in folder:        ", state.TexturesMissing);
            r.error();
        } else {
            r.line(u"Textures missing in folder:        0");
        }
    }
    if (r.on(14) && r.rowsOnLabel(u"Textures unused in folder:         ", state.TexturesUnused, state.AliasingNote) > 1)
        r.error();
    if (r.on(16) && r.rowsOnLabel(u"Textures used more than once:      ", state.TexturesShared) > 1)
        r.error();
    if (r.on(13))
        r.line(u"Texture format:                    " + state.TextureMask);
    if (r.sum({12, 13, 14, 15, 16, 18}) > 0 && r.sum({3, 4, 5, 6, 7, 8, 9, 10, 11, 19, 20, 21, 22}) > 1)
        r.line(rule);

    if (r.on(6))
        r.count(u"Models found in folder:            ", state.ModelsFound);
    if (r.on(19)) {
        if (state.AnyModelUndefined) {
            r.countedRows(u"Models undefined in [fltsim.x]:    ", state.ModelsUndefined);
            r.error();
        } else {
            r.line(u"Models undefined in [fltsim.x]:    0");
        }
    }
    if (r.on(8) && r.rowsOnLabel(u"Models missing in folder:          ", state.ModelsMissing) > 1)
        r.error();
    if (r.on(7) && r.rowsOnLabel(u"Models unused in folder:           ", state.ModelsUnused) > 1)
        r.error();
    if (r.sum({6, 7, 8, 19}) > 0 && r.sum({3, 4, 5, 9, 10, 11, 20, 21, 22}) > 1)
        r.line(rule);

    if (r.on(3))
        r.count(u"Airfiles found in folder:          ", state.AirfilesFound);
    if (r.on(20)) {
        if (state.AnyAirfileUndefined) {
            r.countedRows(u"Airfiles undefined in [fltsim.x]:  ", state.AirfilesUndefined);
            r.error();
        } else {
            r.line(u"Airfiles undefined in [fltsim.x]:  0");
        }
    }
    if (r.on(5) && r.rowsOnLabel(u"Airfiles missing in folder:        ", state.AirfilesMissing) > 1)
        r.error();
    if (r.on(4) && r.rowsOnLabel(u"Airfiles unused in folder:         ", state.AirfilesUnused) > 1)
        r.error();
    if (r.sum({3, 4, 5, 20}) > 0 && r.sum({9, 10, 11, 21, 22}) > 1)
        r.line(rule);

    if (r.on(9) || r.on(10) || r.on(11))
        r.line(u"atc_airlines compared against:     " + std::u16string(state.UseFs9 ? u"FS9" : u"FSX"));
    if (r.on(9))
        r.count(u"atc_airlines found:                ", state.AirlinesFound);
    if (r.on(10)) {
        if (state.AnyAirlineProblem) {
            if (r.countedRows(u"atc_airlines undefined [fltsim.x]: ", state.AirlinesUndefined) > 0)
                r.error();
        } else {
            r.line(u"atc_airlines undefined [fltsim.x]: 0");
        }
    }
    if (r.on(11) && r.countedRows(u"atc_airlines unknown:              ", state.AirlinesUnknown) > 0)
        r.error();
    if ((r.on(9) || r.on(10) || optionValue(state, 11) > 0) && r.sum({21, 22}) > 1)
        r.line(rule);

    if (r.on(21) && r.repeatedLabel(u"Missing effect files:              ", state.EffectFiles) > 0)
        r.error();
    if (optionValue(state, 22) > 0)
        r.line(rule);
    if (r.on(22) && r.repeatedLabel(u"Empty folders found:               ", splitRows(state.EmptyFolderList)) > 0)
        r.error();

    lines.push_back(u"");
    lines.push_back(stars);
    return lines;
}

} // namespace fleetwright
