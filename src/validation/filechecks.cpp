// Textures, models and airfiles of the sections held against the aircraft folder.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <system_error>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "core/arraysearch.h"
#include "core/clsinifile.h"
#include "core/paths.h"
#include "core/runtimeerror.h"
#include "core/vbtext.h"
#include "platform/filelookup.h"
#include "simfiles/airfile.h"
#include "simfiles/binaryfile.h"
#include "validation/validationstate.h"

namespace fleetwright {

namespace {

namespace fs = std::filesystem;
using platform::FileLookup;
using platform::LookupKind;

constexpr std::u16string_view AliasingNoteText = u" (fallback.x aliasing used in configuration, maybe valid)";

bool PatternHasMatch(const std::u16string &pattern)
{
    if (pattern.empty())
        return false;
    return !FileLookup(pattern, LookupKind::Files).names().empty();
}

std::u16string matchFlag(const std::u16string &pattern)
{
    return PatternHasMatch(pattern) ? u"-1" : u"0";
}

bool holdsPictures(const std::u16string &folder)
{
    return PatternHasMatch(joinPath(folder, u"*.bmp")) || PatternHasMatch(joinPath(folder, u"*.dds"));
}

// The texture.cfg and model.cfg reads of a run: the sections of an aircraft share a handful of such files and
// ask the same of them, so within one lookup snapshot, which stands for a tree that does not change, each file
// is read once. A file that ReadByteArray rewrote is read again: the rewrite may leave another mark behind.
// File, section and key of a read, compared as views: a read that is known is found without copies.
using ConfigReadView =
    std::tuple<std::basic_string_view<fs::path::value_type>, std::u16string_view, std::u16string_view>;
struct ConfigReadLess
{
    using is_transparent = void;
    template<typename Key> static ConfigReadView view(const Key &key)
    {
        return ConfigReadView(std::get<0>(key), std::get<1>(key), std::get<2>(key));
    }
    template<typename A, typename B> bool operator()(const A &a, const B &b) const { return view(a) < view(b); }
};

struct ConfigReads
{
    std::uint64_t generation = 0;
    std::set<fs::path::string_type> withoutMark; // ReadByteArray found nothing to rewrite
    std::map<std::tuple<fs::path::string_type, std::u16string, std::u16string>, std::u16string, ConfigReadLess> values;
};

ConfigReads *configReads()
{
    thread_local ConfigReads reads;
    const std::uint64_t generation = platform::LookupSnapshot::generation();
    if (generation == 0)
        return nullptr;
    if (reads.generation != generation)
        reads = ConfigReads {generation, {}, {}};
    return &reads;
}

// One profile read with the 250-character buffer of the texture.cfg and model.cfg reads.
std::u16string ReadProfileValue(const std::u16string &section, const std::u16string &key, const fs::path &file)
{
    ConfigReads *reads = configReads();
    if (reads) {
        const auto known = reads->values.find(ConfigReadView(file.native(), section, key));
        if (known != reads->values.end())
            return known->second;
    }
    clsIniFile ini;
    ini.setPath(file.u16string());
    ini.setSection(section);
    ini.setKey(key);
    std::u16string value = ini.Value();
    if (value.size() > 249)
        value.resize(249);
    if (reads)
        reads->values.emplace(std::tuple(file.native(), section, key), value);
    return value;
}

// Reads a profile value of a file that first goes through ReadByteArray.
std::u16string readConfigValue(const fs::path &file, const std::u16string &section, const std::u16string &key)
{
    ConfigReads *reads = configReads();
    if (!reads || !reads->withoutMark.contains(file.native())) {
        std::vector<std::uint8_t> bytes;
        try {
            ReadByteArray(file.u16string(), bytes);
        } catch (RuntimeError &error) {
            // ReadByteArray has no handler: its error ends the run in the routine that called it.
            if (error.procedure().empty())
                error.setProcedure(std::u16string(ProcedureName));
            throw;
        }
        const bool rewritten = bytes.size() >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF;
        if (reads && rewritten)
            std::erase_if(reads->values, [&](const auto &entry) { return std::get<0>(entry.first) == file.native(); });
        else if (reads)
            reads->withoutMark.insert(file.native());
    }
    return ReadProfileValue(section, key, file);
}

std::size_t CountOccurrences(std::u16string_view text, std::u16string_view delimiter)
{
    if (delimiter.empty())
        return 0;
    std::size_t count = 0;
    for (std::size_t at = text.find(delimiter); at != std::u16string_view::npos;
         at = text.find(delimiter, at + delimiter.size()))
        ++count;
    return count;
}

// Position from 1 of the n-th delimiter; 0 for n of 0 (or less), -1 when there are fewer.
long long FindNthOccurrence(long long n, std::u16string_view text, std::u16string_view delimiter)
{
    if (n <= 0)
        return 0;
    std::size_t at = std::u16string_view::npos;
    std::size_t from = 0;
    for (long long i = 0; i < n; ++i) {
        at = delimiter.empty() ? std::u16string_view::npos : text.find(delimiter, from);
        if (at == std::u16string_view::npos)
            return -1;
        from = at + delimiter.size();
    }
    return static_cast<long long>(at) + 1;
}

std::u16string withoutAll(std::u16string text, std::u16string_view part)
{
    for (std::size_t at = text.find(part); at != std::u16string::npos; at = text.find(part, at))
        text.erase(at, part.size());
    return text;
}

// normal= of a model folder's Model.cfg, as a present or missing .mdl file.
int modelFileState(const std::u16string &folder, std::u16string normal)
{
    normal = StripComment(normal);
    if (LCase(std::u16string_view(normal).substr(normal.size() >= 3 ? normal.size() - 3 : 0)) != u"mdl")
        normal += u".mdl";
    return FileLookup::findFile(joinPath(folder, nativeSeparators(normal))) ? StatePresent : StateMissing;
}

FileLookup subfolderNames(const std::u16string &folder, const std::u16string &procedure)
{
    if (!FileLookup::exists(folder, LookupKind::Folders))
        throw RuntimeError::pathNotFound(procedure);
    if (!FileLookup::canList(folder))
        throw RuntimeError::permissionDenied(procedure);
    return FileLookup(joinPath(folder, u"*"), LookupKind::Folders);
}

// AnalyzeTextureFolder and AnalyzeModelFolder: every folder below folder, parent before child, as the pair
// "¦" + path + "¦" + whether it holds a file of mask. A link back into a folder of the walk would make the
// path grow until it failed; that failure comes at once.
void analyzeFolder(const std::u16string &folder, const std::u16string &mask, std::u16string &FolderScanText,
                   const std::u16string &procedure, std::pair<fs::path, fs::path> &aircraftFolder)
{
    struct Pending
    {
        std::u16string path;
        std::size_t depth;
    };
    struct Inside
    {
        fs::path resolved;
        fs::path canonical;
    };
    std::vector<Pending> pending;
    auto pushChildren = [&](const std::u16string &parent, std::size_t depth) {
        const FileLookup subfolders = subfolderNames(parent, procedure);
        const std::vector<std::u16string> &names = subfolders.names();
        for (auto it = names.rbegin(); it != names.rend(); ++it)
            pending.push_back({joinPath(parent, *it), depth});
    };
    pushChildren(folder, 1); // fails first when folder is no folder
    const fs::path top = *FileLookup::resolve(folder);
    // The folders of a scan share their parent: its canonical form is found once.
    if (aircraftFolder.first != top.parent_path())
        aircraftFolder = {top.parent_path(), platform::canonicalOf(top.parent_path())};
    std::vector<Inside> inside {{top, platform::canonicalBelow(aircraftFolder.first, aircraftFolder.second, top)}};
    while (!pending.empty()) {
        const Pending item = std::move(pending.back());
        pending.pop_back();
        inside.resize(item.depth);
        // A listed folder that its own path does not reach ("skin." is looked up as "skin") fails as the
        // folder object fails on it.
        std::optional<fs::path> found = FileLookup::resolve(item.path);
        if (!found)
            throw RuntimeError::pathNotFound(procedure);
        fs::path &resolved = *found;
        fs::path canonical = platform::canonicalBelow(inside.back().resolved, inside.back().canonical, resolved);
        if (std::any_of(inside.begin(), inside.end(),
                        [&](const Inside &above) { return above.canonical == canonical; }))
            throw RuntimeError::pathNotFound(procedure);
        FolderScanText += ListSeparator + item.path + ListSeparator + matchFlag(joinPath(item.path, mask));
        inside.push_back({std::move(resolved), std::move(canonical)});
        pushChildren(item.path, item.depth + 1);
    }
}

// The scan of the folders named like base.* and everything below them. The last pair is the aircraft folder
// itself, which the wildcard's end adds.
std::vector<std::pair<std::u16string, std::u16string>> folderScan(const RunState &state, const std::u16string &base,
                                                                  const std::u16string &mask,
                                                                  const std::u16string &procedure)
{
    FileLookup lookup(state.FolderPrefix + base + u".*", LookupKind::FilesAndFolders);
    std::u16string name = lookup.next().value_or(std::u16string());
    auto pair = [&](const std::u16string &n) {
        return state.FolderPrefix + n + ListSeparator + matchFlag(joinPath(state.FolderPrefix + n, mask));
    };
    std::u16string FolderScanText = pair(name);
    std::pair<fs::path, fs::path> aircraftFolder;
    while (!name.empty()) {
        analyzeFolder(state.FolderPrefix + name, mask, FolderScanText, procedure, aircraftFolder);
        name = lookup.next().value_or(std::u16string());
        FolderScanText += ListSeparator + pair(name);
    }
    const std::vector<std::u16string> FolderScanList = splitRows(FolderScanText);
    std::vector<std::pair<std::u16string, std::u16string>> pairs;
    for (std::size_t i = 0; i + 1 < FolderScanList.size(); i += 2)
        pairs.emplace_back(FolderScanList[i], FolderScanList[i + 1]);
    return pairs;
}

// The folder a record uses, as the scan names it relative to the aircraft folder.
std::u16string usedFolderName(const std::u16string &base, const std::optional<std::u16string> &field)
{
    if (!field || field->empty() || field->front() == u'\\')
        return base + field.value_or(std::u16string());
    return base + u"." + *field;
}

void unusedFolders(RunState &state, const std::u16string &base, const std::u16string &mask,
                   const std::u16string &procedure, std::optional<std::u16string> SectionRecord::*field,
                   std::int16_t &found, std::u16string &unused)
{
    found = 0;
    const auto pairs = folderScan(state, base, mask, procedure);
    // Every folder is held against every section: the sections' names are made once.
    std::unordered_set<std::u16string> usedNames;
    for (const SectionRecord &r : state.SectionTable)
        usedNames.insert(LCase(usedFolderName(base, r.*field)));
    for (std::size_t p = 0; p + 1 < pairs.size(); ++p) {
        const std::u16string &path = pairs[p].first;
        const std::u16string R =
            LCase(backslashSeparators(path.substr(std::min(path.size(), state.FolderPrefix.size()))));
        if (usedNames.contains(R)) {
            increment(found);
        } else if (pairs[p].second == u"-1") {
            addRow(unused, u"..\\" + R);
            increment(found);
        }
    }
    zeroWhenEmpty(unused);
}

} // namespace

void textureState(RunState &state, SectionRecord &record)
{
    if (!record.texture) {
        record.textureState = StateUndefined;
        state.AnyTextureUndefined = true;
        return;
    }
    // A blank field ends T in "texture.", which the lookup reads as the folder "texture".
    const std::u16string T = state.FolderPrefix + u"texture." + nativeSeparators(*record.texture);
    record.textureState = StateMissing;
    if (!FileLookup::exists(T, LookupKind::FilesAndFolders))
        return;
    if (holdsPictures(T)) {
        record.textureState = StatePresent;
        return;
    }
    const auto config = FileLookup::findFile(joinPath(T, u"texture.cfg"));
    if (!config)
        return;
    state.AliasingNote = std::u16string(AliasingNoteText);
    std::u16string V = readConfigValue(*config, u"fltsim", u"fallback.1");
    if (V.empty())
        return;
    V = StripComment(V);
    std::replace(V.begin(), V.end(), u'/', u'\\');
    // Each "..\" climbs one level from T.
    const long long n = static_cast<long long>(CountOccurrences(T, std::u16string(1, nativeSeparator())));
    const long long m = static_cast<long long>(CountOccurrences(V, u"..\\"));
    const long long keep = FindNthOccurrence(n + 1 - m, T, std::u16string(1, nativeSeparator()));
    if (keep < 0)
        throw RuntimeError::invalidProcedureCall(std::u16string(ProcedureName));
    const std::u16string F = T.substr(0, static_cast<std::size_t>(keep)) + nativeSeparators(withoutAll(V, u"..\\"));
    record.textureState = holdsPictures(F) ? StatePresent : StateMissing;
}

void airfileState(RunState &state, SectionRecord &record)
{
    if (!record.sim) {
        record.airfileState = StateUndefined;
        state.AnyAirfileUndefined = true;
        return;
    }
    const std::u16string A = state.FolderPrefix + nativeSeparators(*record.sim) + u".air";
    record.airfileState = FileLookup::findFile(A) ? StatePresent : StateMissing;
}

void modelState(RunState &state, SectionRecord &record)
{
    if (!record.model) {
        record.modelState = StateUndefined;
        state.AnyModelUndefined = true;
        return;
    }
    const std::u16string M = record.model->empty() ? state.FolderPrefix + u"model"
                                                   : state.FolderPrefix + u"model." + nativeSeparators(*record.model);
    record.modelState = StateMissing;
    if (!FileLookup::exists(M, LookupKind::FilesAndFolders))
        return;
    const auto config = FileLookup::findFile(joinPath(M, u"Model.cfg"));
    if (!config)
        return;
    const std::u16string normal = readConfigValue(*config, u"models", u"normal");
    if (!normal.empty()) {
        record.modelState = modelFileState(M, normal);
        return;
    }
    std::u16string L = ReadProfileValue(u"fltsim", u"alias", *config);
    if (L.empty())
        return;
    // An alias is relative to the folder that holds the aircraft folders.
    L = nativeSeparators(StripComment(L));
    if (L.empty() || L.front() != nativeSeparator())
        L.insert(L.begin(), nativeSeparator());
    std::u16string above = state.FolderPrefix.substr(0, state.FolderPrefix.empty() ? 0 : state.FolderPrefix.size() - 1);
    const std::size_t last = above.rfind(nativeSeparator());
    above.resize(last == std::u16string::npos ? 0 : last);
    const std::u16string B = above + L;
    const auto aliasConfig = FileLookup::findFile(joinPath(B, u"Model.cfg"));
    if (!aliasConfig)
        return;
    const std::u16string aliasNormal = readConfigValue(*aliasConfig, u"models", u"normal");
    if (aliasNormal.empty())
        return;
    record.modelState = modelFileState(B, aliasNormal);
}

void sharedTexturesPass(RunState &state)
{
    std::unordered_map<std::u16string_view, std::size_t> textureCount;
    for (const SectionRecord &record : state.SectionTable)
        ++textureCount[record.texture ? std::u16string_view(*record.texture) : std::u16string_view()];
    for (const SectionRecord &record : state.SectionTable) {
        const std::u16string texture = record.texture.value_or(std::u16string());
        // The same seen text as the titles: a texture inside any title or earlier texture is not looked at.
        if (!state.SeenText.empty() && state.SeenTextSearch.contains(state.SeenText, texture))
            continue;
        addRow(state.SeenText, texture);
        if (textureCount[texture] < 2)
            continue;
        std::vector<std::u16string> group;
        for (const SectionRecord &other : state.SectionTable)
            if (other.texture ? *other.texture == texture : texture.empty())
                group.push_back(u"\"" + texture + u"\" --> " + other.sectionName);
        if (group.size() >= 2)
            for (const std::u16string &row : group)
                addRow(state.TexturesShared, row);
    }
    zeroWhenEmpty(state.TexturesShared);
}

void textureChecks(RunState &state, const std::u16string &textureFormatText)
{
    state.TextureMask = textureFormatText == u"FSX" ? u"*.dds" : u"*.bmp";
    unusedFolders(state, u"texture", state.TextureMask, u"AnalyzeTextureFolder", &SectionRecord::texture,
                  state.TexturesFound, state.TexturesUnused);
    for (const SectionRecord &record : state.SectionTable) {
        if (record.textureState == StateMissing)
            addRow(state.TexturesMissing,
                   record.sectionName + u" -->  ..\\texture." + record.texture.value_or(std::u16string()));
        if (state.AnyTextureUndefined && record.textureState == StateUndefined)
            addRow(state.TexturesUndefined, record.sectionName + u" --> no 'texture=' entry");
    }
    zeroWhenEmpty(state.TexturesMissing);
}

void modelChecks(RunState &state)
{
    unusedFolders(state, u"model", u"*.mdl", u"AnalyzeModelFolder", &SectionRecord::model, state.ModelsFound,
                  state.ModelsUnused);
    for (const SectionRecord &record : state.SectionTable) {
        if (record.modelState == StateMissing)
            addRow(state.ModelsMissing,
                   record.sectionName + u" -->  ..\\Model." + record.model.value_or(std::u16string()));
        if (state.AnyModelUndefined && record.modelState == StateUndefined)
            addRow(state.ModelsUndefined, record.sectionName + u" --> no 'model=' entry");
    }
    zeroWhenEmpty(state.ModelsMissing);
}

void airfileChecks(RunState &state)
{
    state.AirfilesFound = 0;
    const FileLookup lookup(state.FolderPrefix + u"*.air", LookupKind::Files);
    for (const std::u16string &name : lookup.names()) {
        const std::u16string lowerName = LCase(name);
        const bool used =
            std::any_of(state.SectionTable.begin(), state.SectionTable.end(), [&](const SectionRecord &r) {
                return LCase(r.sim.value_or(std::u16string()) + u".air") == lowerName;
            });
        if (!used)
            addRow(state.AirfilesUnused, u"..\\" + lowerName);
        increment(state.AirfilesFound);
    }
    zeroWhenEmpty(state.AirfilesUnused);
    for (const SectionRecord &record : state.SectionTable) {
        if (record.airfileState == StateMissing)
            addRow(state.AirfilesMissing,
                   record.sectionName + u" -->  ..\\" + LCase(record.sim.value_or(std::u16string()) + u".air"));
        if (state.AnyAirfileUndefined && record.airfileState == StateUndefined)
            addRow(state.AirfilesUndefined, record.sectionName + u" --> no 'sim=' entry");
    }
    zeroWhenEmpty(state.AirfilesMissing);
}

} // namespace fleetwright
