#include "hostilefolders.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <system_error>

#include "platform/codepage.h"
#include "platform/utf8.h"
#include "common/tempdir.h"

namespace fleetwright::test {

namespace fs = std::filesystem;

namespace {

std::string int32(std::int32_t value)
{
    const auto bits = static_cast<std::uint32_t>(value);
    return {static_cast<char>(bits & 0xFF), static_cast<char>((bits >> 8) & 0xFF),
            static_cast<char>((bits >> 16) & 0xFF), static_cast<char>(bits >> 24)};
}

std::string record(std::int32_t type, std::int32_t size, const std::string &payload)
{
    return int32(type) + int32(size) + payload;
}

std::string aircraftRecord(std::int32_t type)
{
    return record(0x105, 8, int32(type) + std::string("\x10\x20\x30\x40", 4));
}

std::string modelFile(std::string_view tag)
{
    std::string bytes(40, '\0');
    bytes.replace(8, 4, tag);
    bytes[28] = 42;
    return bytes;
}

// Two variations on the default model and two textures, with effects, general data and a wing span.
const char *const AIRCRAFT_TEXT = "[fltsim.0]\n"
                                  "title=Hostile One\n"
                                  "sim=hostile\n"
                                  "model=\n"
                                  "texture=\n"
                                  "atc_airline=KLM\n"
                                  "[fltsim.1]\n"
                                  "title=Hostile Two\n"
                                  "sim=hostile\n"
                                  "model=\n"
                                  "texture=red\n"
                                  "[effects]\n"
                                  "wake=fx_wake, 1\n"
                                  "[general]\n"
                                  "atc_type=HOSTILE\n"
                                  "[airplane_geometry]\n"
                                  "wing_span=35.8\n"
                                  "[exits]\n"
                                  "exit.0=0.4, 12, -3, 4, 0  //Door 1L\n";

// What stands beside aircraft.cfg in an ordinary folder.
void writeSurroundings(const fs::path &folder)
{
    writeBytes(folder / "model" / "model.cfg", crlf("[models]\nnormal=hostile\n"));
    writeBytes(folder / "model" / "hostile.mdl", modelFile("MDL9"));
    writeBytes(folder / "texture" / "skin.bmp", "bmp");
    writeBytes(folder / "texture.red" / "skin.bmp", "bmp");
    writeBytes(folder / "hostile.air", record(1, 4, "DR10") + aircraftRecord(0));
}

void writeAircraft(const fs::path &folder, const std::string &cfg)
{
    writeSurroundings(folder);
    writeBytes(folder / "aircraft.cfg", cfg);
}

std::string ordinary()
{
    return crlf(AIRCRAFT_TEXT);
}

// The ordinary file with a non-ASCII title, as UTF-16 text.
std::string utf16(bool bigEndian, bool mark)
{
    std::u16string text = platform::fromCodePage(crlf(AIRCRAFT_TEXT));
    text.insert(text.find(u"\r\n"), u"\r\ndescription=\u03A9 and \u65E5\u672C");
    if (mark)
        text.insert(text.begin(), u'\xFEFF');
    std::string bytes;
    for (const char16_t ch : text) {
        const char high = static_cast<char>(ch >> 8);
        const char low = static_cast<char>(ch & 0xFF);
        bytes += bigEndian ? std::string {high, low} : std::string {low, high};
    }
    return bytes;
}

std::string utf8(bool mark)
{
    std::string text = crlf(AIRCRAFT_TEXT);
    text.insert(text.find("\r\n"), "\r\ndescription=" + platform::toUtf8(u"\u03A9 and \u65E5\u672C \u00DC"));
    return (mark ? "\xEF\xBB\xBF" : "") + text;
}

std::string lineEnds(const char *end)
{
    std::string text;
    for (const char *ch = AIRCRAFT_TEXT; *ch; ++ch)
        text += *ch == '\n' ? std::string(end) : std::string(1, *ch);
    return text;
}

std::string garbage(std::size_t size)
{
    std::mt19937 random(20261123);
    std::string bytes(size, '\0');
    for (char &ch : bytes)
        ch = static_cast<char>(random() & 0xFF);
    return bytes;
}

std::string hundredThousandSections()
{
    std::string text;
    text.reserve(100000 * 48);
    for (int i = 0; i < 100000; ++i)
        text += "[fltsim." + std::to_string(i) + "]\r\ntitle=Variation " + std::to_string(i) + "\r\nsim=hostile\r\n";
    return text;
}

std::string twentyMegabyteLine()
{
    std::string text = ordinary();
    const std::string line = "description=" + std::string(20 * 1024 * 1024, 'x') + "\r\n";
    text.insert(text.find("title=Hostile One"), line);
    return text;
}

void makeCases(std::vector<HostileCase> &cases)
{
    auto add = [&cases](std::string name, std::function<void(const fs::path &)> make) {
        cases.push_back({std::move(name), std::move(make)});
    };
    add("Ordinary", [](const fs::path &f) { writeAircraft(f, ordinary()); });
    add("BinaryGarbageCfg", [](const fs::path &f) { writeAircraft(f, garbage(64 * 1024)); });
    add("EmptyCfg", [](const fs::path &f) { writeAircraft(f, ""); });
    add("TwentyMegabyteLine", [](const fs::path &f) { writeAircraft(f, twentyMegabyteLine()); });
    add("HundredThousandSections", [](const fs::path &f) { writeAircraft(f, hundredThousandSections()); });
    add("HeadersWithoutBracket", [](const fs::path &f) {
        writeAircraft(f,
                      crlf("[fltsim.0\ntitle=Broken\nsim=hostile\n[fltsim.1]\ntitle=Whole\nmodel=\n[general\n"
                           "atc_type=x\n[\n]\n[[fltsim.2]\ntitle=[x\n"));
    });
    add("NulBytes", [](const fs::path &f) {
        using namespace std::string_literals;
        writeAircraft(f,
                      "[fltsim.0]\r\nti\0tle=a\0b\r\nsim=host\0ile\r\nmodel=\r\n[flt\0sim.1]\r\ntitle=\0\r\n"
                      "[fltsim.2\0]\r\ntex\0ture=red\r\n\0\0\0\r\n[\0]\r\n=\0\r\n"s);
    });
    add("Utf16LittleEndianWithMark", [](const fs::path &f) { writeAircraft(f, utf16(false, true)); });
    add("Utf16BigEndianWithMark", [](const fs::path &f) { writeAircraft(f, utf16(true, true)); });
    add("Utf16WithoutMark", [](const fs::path &f) { writeAircraft(f, utf16(false, false)); });
    add("Utf8WithMark", [](const fs::path &f) { writeAircraft(f, utf8(true)); });
    add("Utf8WithoutMark", [](const fs::path &f) { writeAircraft(f, utf8(false)); });
    add("LoneCrLineEnds", [](const fs::path &f) { writeAircraft(f, lineEnds("\r")); });
    add("LfLineEnds", [](const fs::path &f) { writeAircraft(f, lineEnds("\n")); });
    add("AirTruncatedHeader", [](const fs::path &f) {
        writeAircraft(f, ordinary());
        // The aircraft record's type field is cut short; in cut.air only its size field is.
        writeBytes(f / "hostile.air", record(1, 4, "DR10") + std::string("\x05\x01\x00", 3));
        writeBytes(f / "cut.air", record(1, 4, "DR10") + std::string("\x05\x01\x00\x00\x08", 5));
        writeBytes(f / "short.air", std::string("\x05\x01", 2));
    });
    add("AirNegativeSizes", [](const fs::path &f) {
        writeAircraft(f, ordinary());
        // -8 comes back to its own header; -100 leaves the file below offset 0.
        writeBytes(f / "hostile.air", record(1, 4, "DR10") + record(2, -8, ""));
        writeBytes(f / "behind.air", record(1, 4, "DR10") + record(2, -100, ""));
        writeBytes(f / "circle.air", record(1, 8, "abcdefgh") + record(3, -32, ""));
    });
    add("AirHugeSizes", [](const fs::path &f) {
        writeAircraft(f, ordinary());
        // The next offset leaves the 32-bit range; in far.air it lies far behind the end.
        writeBytes(f / "hostile.air", record(1, 4, "DR10") + record(2, 0x7FFFFFFF, "") + aircraftRecord(1));
        writeBytes(f / "far.air", record(1, 0x7FFFFFF0, "DR10") + aircraftRecord(1));
    });
    add("Mdl5Bytes", [](const fs::path &f) {
        writeAircraft(f, ordinary());
        writeBytes(f / "model" / "hostile.mdl", "MDL9x");
    });
    add("TextureCfg2Bytes", [](const fs::path &f) {
        writeAircraft(f, ordinary());
        fs::remove(f / "texture.red" / "skin.bmp");
        writeBytes(f / "texture.red" / "texture.cfg", "[f");
    });
    add("FallbackWithoutDotDot", [](const fs::path &f) {
        writeAircraft(f, ordinary() + crlf("[fltsim.2]\ntitle=Hostile Three\nsim=hostile\nmodel=\ntexture=deep\n"));
        fs::remove(f / "texture.red" / "skin.bmp");
        writeBytes(f / "texture.red" / "texture.cfg", crlf("[fltsim]\nfallback.1=texture\n"));
        std::string climb;
        for (int i = 0; i < 40; ++i)
            climb += "..\\";
        writeBytes(f / "texture.deep" / "texture.cfg", crlf("[fltsim]\nfallback.1=" + climb + "texture\n"));
    });
    add("AliasOutsideLibrary", [](const fs::path &f) {
        std::string text = ordinary();
        text.replace(text.find("model=\r\ntexture=red"), 6, "model=alias");
        text.replace(text.find("model=\r\n"), 6, "model=rooted");
        writeAircraft(f, text);
        writeBytes(f / "model.alias" / "model.cfg",
                   crlf("[fltsim]\nalias=..\\..\\..\\..\\..\\..\\..\\..\\elsewhere\\model\n"));
        writeBytes(f / "model.rooted" / "model.cfg", crlf("[fltsim]\nalias=C:\\Windows\\System32\n"));
    });
    add("TextureTxtFile", [](const fs::path &f) {
        writeAircraft(f, ordinary());
        writeBytes(f / "texture.txt", "painted by hand");
        writeBytes(f / "texture.cfg", crlf("[fltsim]\nfallback.1=..\\texture\n"));
    });
    add("ReadOnlyCfg", [](const fs::path &f) {
        writeAircraft(f, ordinary());
        fs::permissions(f / "aircraft.cfg", fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                        fs::perm_options::remove);
    });
    add("FolderNamedAircraftCfg", [](const fs::path &f) {
        writeSurroundings(f);
        writeBytes(f / "aircraft.cfg" / "aircraft.cfg", ordinary());
    });
    cases.push_back({"Nesting200Deep",
                     [](const fs::path &f) {
                         writeAircraft(f, ordinary());
                         fs::path deep = f / "texture";
                         for (int i = 0; i < 200; ++i)
                             deep /= "d";
                         writeBytes(deep / "skin.bmp", "bmp");
                         fs::create_directories(deep / "d");
                     },
                     false, true});
    cases.push_back({"SymbolicLinkLoop",
                     [](const fs::path &f) {
                         writeAircraft(f, ordinary());
                         fs::create_directory_symlink("..", f / "texture.red" / "up");
                         fs::create_directory_symlink(".", f / "model" / "self");
                         fs::create_directories(f / "empty");
                         fs::create_directory_symlink("..", f / "empty" / "back");
                     },
                     true, false});
    add("NamesOutsideCodePage", [](const fs::path &f) {
        std::string text = ordinary();
        // The code page has no such letters: the file holds "?" where the folders' names have them.
        text.replace(text.find("texture=red"), 11, platform::toCodePage(u"texture=\u65E5\u672C"));
        text.replace(text.find("model=\r\n"), 6, platform::toCodePage(u"model=\u03A9"));
        writeAircraft(f, text);
        writeBytes(f / fs::path(u"texture.\u65E5\u672C") / "skin.bmp", "bmp");
        writeBytes(f / fs::path(u"model.\u03A9") / "model.cfg", crlf("[models]\nnormal=hostile\n"));
        writeBytes(f / fs::path(u"\u03A9mega.air"), aircraftRecord(2));
        fs::create_directories(f / fs::path(u"\u0416"));
    });
}

std::string hashOf(std::string_view bytes)
{
    std::uint64_t hash = 14695981039346656037ull;
    for (const char ch : bytes) {
        hash ^= static_cast<unsigned char>(ch);
        hash *= 1099511628211ull;
    }
    return std::to_string(bytes.size()) + ":" + std::to_string(hash);
}

} // namespace

const std::vector<HostileCase> &hostileCases()
{
    static const std::vector<HostileCase> cases = [] {
        std::vector<HostileCase> list;
        makeCases(list);
        return list;
    }();
    return cases;
}

const fs::path &hostileLibrary()
{
    static TempDir folder;
    static const fs::path library = folder / "library";
    return library;
}

fs::path copyCase(const std::string &name, const fs::path &target)
{
    // Each case is made once per test program, when a test first asks for it: CTest runs every test in a
    // program of its own, and the 20 MB line need not be written for the tests of the other cases.
    static std::set<std::string> made;
    const fs::path original = hostileLibrary() / name;
    if (!made.contains(name)) {
        for (const HostileCase &hostile : hostileCases()) {
            if (hostile.name == name)
                hostile.make(original);
        }
        made.insert(name);
    }
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
        if (fs::is_symlink(status)) {
            state[key] = "link " + fs::read_symlink(it->path(), ignored).generic_string();
        } else if (fs::is_directory(status)) {
            state[key] = "folder";
        } else {
            const bool writable = (status.permissions() & fs::perms::owner_write) != fs::perms::none;
            state[key] = (writable ? "file " : "read-only file ") + hashOf(readBytes(it->path()));
        }
    }
    return state;
}

std::vector<std::string> changedEntries(const FolderState &before, const FolderState &after)
{
    std::vector<std::string> changed;
    for (const auto &[path, state] : before) {
        const auto now = after.find(path);
        if (now == after.end() || now->second != state)
            changed.push_back(path);
    }
    for (const auto &[path, state] : after) {
        if (!before.contains(path))
            changed.push_back(path);
    }
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
        std::fflush(stderr);
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
