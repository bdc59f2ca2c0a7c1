#include "platform/osversion.h"

#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <sys/utsname.h>

#include "platform/utf8.h"

namespace fleetwright::platform {

namespace {

std::optional<utsname> systemNames()
{
    utsname names {};
    if (uname(&names) != 0)
        return std::nullopt;
    return names;
}

// A value of os-release as a shell would read it: PRETTY_NAME="Debian GNU/Linux 12 (bookworm)".
std::string unquoted(std::string_view value)
{
    if (value.size() < 2 || (value.front() != '"' && value.front() != '\'') || value.back() != value.front())
        return std::string(value);
    const char quote = value.front();
    value = value.substr(1, value.size() - 2);
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (quote == '"' && value[i] == '\\' && i + 1 < value.size())
            ++i;
        text.push_back(value[i]);
    }
    return text;
}

// PRETTY_NAME of /etc/os-release, or of /usr/lib/os-release where the first is missing; empty when neither
// has one.
std::string prettyName()
{
    for (const char *path : {"/etc/os-release", "/usr/lib/os-release"}) {
        std::ifstream file(path);
        if (!file)
            continue;
        std::string line;
        while (std::getline(file, line)) {
            if (!line.empty() && line.back() == '\r')
                line.pop_back();
            constexpr std::string_view key = "PRETTY_NAME=";
            if (line.compare(0, key.size(), key) == 0)
                return unquoted(std::string_view(line).substr(key.size()));
        }
        return {};
    }
    return {};
}

// The leading numbers of a kernel release: "6.1.0-27-amd64" gives 6, 1 and 0; missing ones are 0.
void readRelease(std::string_view release, OsVersionRecord &record)
{
    std::uint32_t *parts[] = {&record.majorVersion, &record.minorVersion, &record.buildNumber};
    std::size_t at = 0;
    for (std::uint32_t *part : parts) {
        if (at >= release.size() || release[at] < '0' || release[at] > '9')
            return;
        std::uint32_t value = 0;
        while (at < release.size() && release[at] >= '0' && release[at] <= '9' && value < 100000000)
            value = value * 10 + static_cast<std::uint32_t>(release[at++] - '0');
        *part = value;
        if (at >= release.size() || release[at] != '.')
            return;
        ++at;
    }
}

// Seconds since 1970 at boot, from the kernel's own count ("btime 1718000000" in /proc/stat); 0 where the
// system has no such file.
std::int64_t bootTime()
{
    std::ifstream stat("/proc/stat");
    std::string word;
    while (stat >> word) {
        if (word == "btime") {
            std::int64_t seconds = 0;
            if (stat >> seconds)
                return seconds;
            return 0;
        }
    }
    return 0;
}

std::u16string localeName()
{
    for (const char *name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char *value = std::getenv(name);
        if (value != nullptr && *value != '\0')
            return fromUtf8(value);
    }
    return u"C";
}

} // namespace

OsVersionRecord ReadOsVersion()
{
    OsVersionRecord record;
    const std::optional<utsname> names = systemNames();
    if (names)
        readRelease(names->release, record);
    std::string name = prettyName();
    if (name.empty() && names)
        name = names->sysname;
    record.systemName = fromUtf8(name);
    record.languageName = localeName();
    record.bootTime = bootTime();
    return record;
}

bool Is64BitOS()
{
    const std::optional<utsname> names = systemNames();
    if (!names)
        return sizeof(void *) == 8;
    const std::string_view machine = names->machine;
    // x86_64, aarch64, ppc64le, riscv64, sparc64, mips64, loongarch64; IBM's z names its 64-bit kind s390x.
    return machine.find("64") != std::string_view::npos || machine == "s390x" || machine == "alpha";
}

} // namespace fleetwright::platform
