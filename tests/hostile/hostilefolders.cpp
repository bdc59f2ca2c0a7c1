#include "hostilefolders.h"

#include <cstdio>
#include <cstdlib>
#include <random>
#include <set>
#include <system_error>

#include "common/aircraftfolder.h"
#include "common/airfilebuilder.h"
#include "common/tempdir.h"
#include "platform/codepage.h"
#include "platform/utf8.h"

namespace fleetwright::test {

namespace fs = std::filesystem;

namespace {

std::string record(std::int32_t type, std::int32_t size, const std::string &payload = {})
{
    return AirFileBuilder().record(type, size, payload).bytes();
}

const std::string HEADER = record(1, 4, "DR10");

// Two variations on the default model and two textures, with effects, general data and a wing span.
const std::string ORDINARY =
    crlf("[fltsim.0]\ntitle=Hostile One\nsim=hostile\nmodel=\ntexture=\natc_airline=KLM\n"
         "[fltsim.1]\ntitle=Hostile Two\nsim=hostile\nmodel=\ntexture=red\n"
         "[effects]\nwake=fx_wake, 1\n[general]\natc_type=HOSTILE\n"
         "[airplane_geometry]\nwing_span=35.8\n[exits]\nexit.0=0.4, 12, -3, 4, 0  //Door 1L\n");

void writeAircraft(const fs::path &folder, const std::string &cfg)
{
    writeBytes(folder / "model" / "model.cfg", crlf("[models]\nnormal=hostile\n"));
    writeBytes(folder / "model" / "hostile.mdl", modelBytes("MDL9"));
    writeBytes(folder / "texture" / "skin.bmp", "bmp");
    writeBytes(folder / "texture.red" / "skin.bmp", "bmp");
    writeBytes(folder / "hostile.air", AirFileBuilder().raw(HEADER).aircraft(0).bytes());
    if (!cfg.empty() || !fs::exists(folder / "aircraft.cfg"))
        writeBytes(folder / "aircraft.cfg", cfg);
}

// The ordinary file with a description of letters beyond the code page's, as UTF-16 text.
std::string utf16(bool bigEndian, bool mark)
{
    std::u16string text = platform::fromCodePage(ORDINARY);
    text.insert(text.find(u"\r\n"), u"\r\ndescription=\u03A9 and \u65E5\u672C");
    if (mark)
        text.insert(text.begin(), u'\xFEFF');
    std::string bytes;
    for (const char16_t ch : text)
        bytes +=
            bigEndian ? std::string {char(ch >> 8), char(ch & 0xFF)} : std::string {char(ch & 0xFF), char(ch >> 8)};
    return bytes;
}

std::string utf8(bool mark)
{
    std::string text = ORDINARY;
    text.insert(text.find("\r\n"), "\r\ndescription=" + platform::toUtf8(u"\u03A9 and \u65E5\u672C \u00DC"));
    return (mark ? "\xEF\xBB\xBF" : "") + text;
}

std::string lineEnds(const std::string &end)
{
    std::string text;
    for (const char ch : ORDINARY)
        text += ch == '\r' ? "" : ch == '\n' ? end : std::string(1, ch);
    return text;
}

std::string garbage()
{
    std::mt19937 random(20261123);
    std::string bytes(64 * 1024, '\0');
    for (char &ch : bytes)
        ch = static_cast<char>(random() & 0xFF);
    return bytes;
}

std::string repeated(const std::string &text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

std::string sections()
{
    std::string text;
    for (int i = 0; i < 100000; ++i)
        text += "[fltsim." + std::to_string(i) + "]\r\ntitle=Variation " + std::to_string(i) + "\r\nsim=hostile\r\n";
    return text;
}

std::string replaced(std::string text, const std::string &from, const std::string &to)
{
    return text.replace(text.find(from), from.size(), to);
}

using Make = std::function<void(const fs::path &)>;

Make cfg(std::function<std::string()> text)
{
    return [text](const fs::path &f) { writeAircraft(f, text()); };
}

// The ordinary aircraft, then the files given (bytes), then what more is done.
Make with(std::vector<std::pair<fs::path, std::string>> files, std::function<void(const fs::path &)> more = {})
{
    return [files, more](const fs::path &f) {
        writeAircraft(f, ORDINARY);
        for (const auto &[name, bytes] : files)
            writeBytes(f / name, bytes);
        if (more)
            more(f);
    };
}

std::vector<HostileCase> makeCases()
{
    using namespace std::string_literals;
    const std::string climb = repeated("..\\", 40);
    return {
        {"Ordinary", cfg([] { return ORDINARY; })},
        {"BinaryGarbageCfg", cfg(garbage)},
        {"EmptyCfg", [](const fs::path &f) { writeAircraft(f, ""); }},
        {"TwentyMegabyteLine", cfg([] {
             return replaced(ORDINARY, "title=Hostile One",
                             "description=" + std::string(20 << 20, 'x') + "\r\ntitle=Hostile One");
         })},
        {"HundredThousandSections", cfg(sections)},
        {"HeadersWithoutBracket", cfg([] {
             return crlf("[fltsim.0\ntitle=Broken\nsim=hostile\n[fltsim.1]\ntitle=Whole\nmodel=\n[general\n"
                         "atc_type=x\n[\n]\n[[fltsim.2]\ntitle=[x\n");
         })},
        {"NulBytes", cfg([] {
             return "[fltsim.0]\r\nti\0tle=a\0b\r\nsim=host\0ile\r\nmodel=\r\n[flt\0sim.1]\r\ntitle=\0\r\n"
                    "[fltsim.2\0]\r\ntex\0ture=red\r\n\0\0\0\r\n[\0]\r\n=\0\r\n"s;
         })},
        {"Utf16LittleEndianWithMark", cfg([] { return utf16(false, true); })},
        {"Utf16BigEndianWithMark", cfg([] { return utf16(true, true); })},
        {"Utf16WithoutMark", cfg([] { return utf16(false, false); })},
        {"Utf8WithMark", cfg([] { return utf8(true); })},
        {"Utf8WithoutMark", cfg([] { return utf8(false); })},
        {"LoneCrLineEnds", cfg([] { return lineEnds("\r"); })},
        {"LfLineEnds", cfg([] { return lineEnds("\n"); })},
        // The aircraft record's type field cut short; in cut.air its size field; short.air is 2 bytes.
        {"AirTruncatedHeader",
         with({{"hostile.air", HEADER + "\x05\x01\x00"s},
               {"cut.air", HEADER + "\x05\x01\x00\x00\x08"s},
               {"short.air", "\x05\x01"}})},
        // -8 comes back to its own header; -100 leaves the file below offset 0.
        {"AirNegativeSizes",
         with({{"hostile.air", HEADER + record(2, -8)},
               {"behind.air", HEADER + record(2, -100)},
               {"circle.air", record(1, 8, "abcdefgh") + record(3, -32)}})},
        // The next offset leaves the 32-bit range; in far.air it lies far behind the end.
        {"AirHugeSizes",
         with({{"hostile.air", AirFileBuilder().raw(HEADER).record(2, 0x7FFFFFFF, "").aircraft(1).bytes()},
               {"far.air", AirFileBuilder().record(1, 0x7FFFFFF0, "DR10").aircraft(1).bytes()}})},
        {"Mdl5Bytes", with({{"model/hostile.mdl", "MDL9x"}})},
        {"TextureCfg2Bytes",
         with({{"texture.red/texture.cfg", "[f"}}, [](const fs::path &f) { fs::remove(f / "texture.red/skin.bmp"); })},
        {"FallbackWithoutDotDot",
         with(
             {{"aircraft.cfg", ORDINARY + crlf("[fltsim.2]\ntitle=Hostile Three\nsim=hostile\nmodel=\ntexture=deep\n")},
              {"texture.red/texture.cfg", crlf("[fltsim]\nfallback.1=texture\n")},
              {"texture.deep/texture.cfg", crlf("[fltsim]\nfallback.1=" + climb + "texture\n")}},
             [](const fs::path &f) { fs::remove(f / "texture.red/skin.bmp"); })},
        {"AliasOutsideLibrary",
         with({{"aircraft.cfg",
                replaced(replaced(ORDINARY, "model=\r\ntexture=red", "model=alias\r\ntexture=red"), "model=\r\n",
                         "model=rooted\r\n")},
               {"model.alias/model.cfg", crlf("[fltsim]\nalias=" + repeated("..\\", 8) + "elsewhere\\model\n")},
               {"model.rooted/model.cfg", crlf("[fltsim]\nalias=C:\\Windows\\System32\n")}})},
        {"TextureTxtFile",
         with({{"texture.txt", "painted by hand"}, {"texture.cfg", crlf("[fltsim]\nfallback.1=..\\texture\n")}})},
        {"ReadOnlyCfg",
         with({},
              [](const fs::path &f) {
                  fs::permissions(f / "aircraft.cfg",
                                  fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                                  fs::perm_options::remove);
              })},
        {"FolderNamedAircraftCfg",
         [](const fs::path &f) {
             writeBytes(f / "aircraft.cfg" / "aircraft.cfg", ORDINARY);
             writeAircraft(f, "");
         }},
        {"Nesting200Deep",
         with({{fs::path("texture") / repeated("d/", 200) / "skin.bmp", "bmp"}},
              [](const fs::path &f) { fs::create_directories(f / "texture" / repeated("d/", 201)); }),
         false, true},
        {"SymbolicLinkLoop",
         with({},
              [](const fs::path &f) {
                  fs::create_directory_symlink("..", f / "texture.red" / "up");
                  fs::create_directory_symlink(".", f / "model" / "self");
                  fs::create_directories(f / "empty");
                  fs::create_directory_symlink("..", f / "empty" / "back");
              }),
         true},
        // The code page lacks these letters: the file holds "?" where the folders' names have them.
        {"NamesOutsideCodePage",
         with({{"aircraft.cfg",
                replaced(replaced(ORDINARY, "texture=red", platform::toCodePage(u"texture=\u65E5\u672C")), "model=\r\n",
                         platform::toCodePage(u"model=\u03A9\r\n"))},
               {fs::path(u"texture.\u65E5\u672C") / "skin.bmp", "bmp"},
               {fs::path(u"model.\u03A9") / "model.cfg", crlf("[models]\nnormal=hostile\n")},
               {fs::path(u"\u03A9mega.air"), AirFileBuilder().aircraft(2).bytes()}},
              [](const fs::path &f) { fs::create_directories(f / fs::path(u"\u0416")); })},
    };
}

std::string hashOf(std::string_view bytes)
{
    std::uint64_t hash = 14695981039346656037ull;
    for (const char ch : bytes)
        hash = (hash ^ static_cast<unsigned char>(ch)) * 1099511628211ull;
    return std::to_string(bytes.size()) + ":" + std::to_string(hash);
}

} // namespace

const std::vector<HostileCase> &hostileCases()
{
    static const std::vector<HostileCase> cases = makeCases();
    return cases;
}

fs::path copyCase(const std::string &name, const fs::path &target)
{
    // Made when first asked for: CTest runs each test in a program of its own.
    static TempDir made;
    static std::set<std::string> done;
    const fs::path original = made / "library" / name;
    for (const HostileCase &hostile : hostileCases())
        if (hostile.name == name && done.insert(name).second)
            hostile.make(original);
    const fs::path copy = target / "library" / name;
    fs::create_directories(copy.parent_path());
    fs::copy(original, copy, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    return copy;
}

FolderState folderState(const fs::path &folder)
{
    FolderState state;
    std::error_code error;
    for (auto it = fs::recursive_directory_iterator(folder, error); !error && it != fs::end(it); it.increment(error)) {
        std::error_code ignored;
        const std::string key = fs::relative(it->path(), folder, ignored).generic_string();
        const fs::file_status status = fs::symlink_status(it->path(), ignored);
        if (fs::is_symlink(status))
            state[key] = "link " + fs::read_symlink(it->path(), ignored).generic_string();
        else if (fs::is_directory(status))
            state[key] = "folder";
        else
            state[key] = ((status.permissions() & fs::perms::owner_write) != fs::perms::none ? "file " : "read-only ")
                + hashOf(readBytes(it->path()));
    }
    return state;
}

std::vector<std::string> changedEntries(const FolderState &before, const FolderState &after)
{
    std::vector<std::string> changed;
    for (const auto &[path, state] : before)
        if (!after.contains(path) || after.at(path) != state)
            changed.push_back(path);
    for (const auto &[path, state] : after)
        if (!before.contains(path))
            changed.push_back(path);
    return changed;
}

HangGuard::HangGuard(std::string operation, std::chrono::seconds limit)
{
    m_thread = std::thread([this, operation = std::move(operation), limit] {
        std::unique_lock lock(m_mutex);
        if (m_done.wait_for(lock, limit, [this] { return m_finished; }))
            return;
        std::fprintf(stderr, "HANG: %s is still running after %lld seconds\n", operation.c_str(),
                     static_cast<long long>(limit.count()));
        std::abort();
    });
}

HangGuard::~HangGuard()
{
    {
        const std::lock_guard lock(m_mutex);
        m_finished = true;
    }
    m_done.notify_one();
    m_thread.join();
}

} // namespace fleetwright::test
