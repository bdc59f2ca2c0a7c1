#include "history/gui/filediff.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <vector>

#include "platform/codepage.h"

namespace fleetwright {

namespace {

// Beyond this many differences the middle of the files is shown as removed and added whole: the search's
// memory grows with the square of the differences.
constexpr int MAX_DIFFERENCES = 2000;
// A binary file lists its first differing bytes only.
constexpr std::size_t MAX_BYTES_LISTED = 16;

enum class EditKind
{
    Same,
    Removed,
    Added,
};

struct Edit
{
    EditKind kind;
    std::size_t line; // in the old file for Same and Removed, in the new one for Added
};

std::vector<std::u16string_view> splitKeepingEnds(std::u16string_view text)
{
    std::vector<std::u16string_view> lines;
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'\n' || (text[i] == u'\r' && (i + 1 == text.size() || text[i + 1] != u'\n'))) {
            lines.push_back(text.substr(start, i + 1 - start));
            start = i + 1;
        }
    }
    if (start < text.size())
        lines.push_back(text.substr(start));
    return lines;
}

// The shortest edit script between a and b (Myers), as Same, Removed and Added steps in file order.
std::vector<Edit> editScript(const std::vector<std::u16string_view> &a, const std::vector<std::u16string_view> &b)
{
    std::size_t head = 0;
    while (head < a.size() && head < b.size() && a[head] == b[head])
        ++head;
    std::size_t tail = 0;
    while (tail < a.size() - head && tail < b.size() - head && a[a.size() - 1 - tail] == b[b.size() - 1 - tail])
        ++tail;
    const int n = static_cast<int>(a.size() - head - tail);
    const int m = static_cast<int>(b.size() - head - tail);
    const auto same = [&](int x, int y) {
        return a[head + static_cast<std::size_t>(x)] == b[head + static_cast<std::size_t>(y)];
    };

    std::vector<Edit> middle; // built backwards
    const int limit = std::min(n + m, MAX_DIFFERENCES);
    std::vector<int> v(static_cast<std::size_t>(2 * limit + 3), 0);
    const int offset = limit + 1;
    std::vector<std::vector<int>> trace;
    int found = -1;
    for (int d = 0; d <= limit && found < 0; ++d) {
        std::vector<int> &round = trace.emplace_back(static_cast<std::size_t>(2 * d + 1));
        for (int k = -d; k <= d; k += 2) {
            int x = (k == -d || (k != d && v[offset + k - 1] < v[offset + k + 1])) ? v[offset + k + 1]
                                                                                   : v[offset + k - 1] + 1;
            int y = x - k;
            while (x < n && y < m && same(x, y)) {
                ++x;
                ++y;
            }
            v[offset + k] = x;
            round[static_cast<std::size_t>(k + d)] = x;
            if (x >= n && y >= m) {
                found = d;
                break;
            }
        }
    }

    if (found < 0) {
        for (int y = m - 1; y >= 0; --y)
            middle.push_back({EditKind::Added, head + static_cast<std::size_t>(y)});
        for (int x = n - 1; x >= 0; --x)
            middle.push_back({EditKind::Removed, head + static_cast<std::size_t>(x)});
    } else {
        int x = n;
        int y = m;
        for (int d = found; d > 0; --d) {
            const std::vector<int> &previous = trace[static_cast<std::size_t>(d - 1)];
            const auto at = [&](int k) { return previous[static_cast<std::size_t>(k + d - 1)]; };
            const int k = x - y;
            const bool down = k == -d || (k != d && at(k - 1) < at(k + 1));
            const int previousK = down ? k + 1 : k - 1;
            const int previousX = at(previousK);
            const int previousY = previousX - previousK;
            while (x > previousX && y > previousY) {
                --x;
                --y;
                middle.push_back({EditKind::Same, head + static_cast<std::size_t>(x)});
            }
            if (down)
                middle.push_back({EditKind::Added, head + static_cast<std::size_t>(previousY)});
            else
                middle.push_back({EditKind::Removed, head + static_cast<std::size_t>(previousX)});
            x = previousX;
            y = previousY;
        }
        while (x > 0 && y > 0) {
            --x;
            --y;
            middle.push_back({EditKind::Same, head + static_cast<std::size_t>(x)});
        }
    }

    std::vector<Edit> script;
    script.reserve(head + middle.size() + tail);
    for (std::size_t i = 0; i < head; ++i)
        script.push_back({EditKind::Same, i});
    script.insert(script.end(), middle.rbegin(), middle.rend());
    for (std::size_t i = a.size() - tail; i < a.size(); ++i)
        script.push_back({EditKind::Same, i});
    return script;
}

std::u16string number(std::size_t value)
{
    const std::string digits = std::to_string(value);
    return std::u16string(digits.begin(), digits.end());
}

// "-12,3" or "+0,0": the start of a range counts from 1, an empty range names the line before it.
std::u16string range(char16_t sign, std::size_t start, std::size_t count)
{
    return std::u16string(1, sign) + number(count == 0 ? start : start + 1) + u"," + number(count);
}

void appendLine(std::u16string &out, char16_t sign, std::u16string_view line)
{
    out += sign;
    std::u16string_view text = line;
    while (!text.empty() && (text.back() == u'\n' || text.back() == u'\r'))
        text.remove_suffix(1);
    out += text;
    out += u'\n';
    if (text.size() == line.size())
        out += u"\\ No newline at end of file\n";
}

bool hasUtf16Mark(std::string_view bytes)
{
    return bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
}

bool isBinary(std::string_view bytes)
{
    return !hasUtf16Mark(bytes) && bytes.find('\0') != std::string_view::npos;
}

std::u16string hexByte(unsigned char byte)
{
    constexpr char16_t DIGITS[] = u"0123456789ABCDEF";
    return {DIGITS[byte >> 4], DIGITS[byte & 0xF]};
}

std::u16string binaryDifference(std::string_view before, std::string_view after)
{
    std::u16string out =
        u"Binary file: " + number(before.size()) + u" bytes before, " + number(after.size()) + u" bytes after\n";
    std::size_t listed = 0;
    std::size_t differing = 0;
    for (std::size_t i = 0; i < std::max(before.size(), after.size()); ++i) {
        const bool inBefore = i < before.size();
        const bool inAfter = i < after.size();
        if (inBefore && inAfter && before[i] == after[i])
            continue;
        ++differing;
        if (listed++ >= MAX_BYTES_LISTED)
            continue;
        std::u16string offset;
        for (int shift = 24; shift >= 0; shift -= 8)
            offset += hexByte(static_cast<unsigned char>(i >> shift));
        out += u"  at 0x" + offset + u": " + (inBefore ? hexByte(static_cast<unsigned char>(before[i])) : u"--")
            + u" -> " + (inAfter ? hexByte(static_cast<unsigned char>(after[i])) : u"--") + u"\n";
    }
    if (listed > MAX_BYTES_LISTED)
        out += u"  ... " + number(differing - MAX_BYTES_LISTED) + u" more\n";
    return out;
}

} // namespace

std::u16string decodeFileText(std::string_view bytes)
{
    if (hasUtf16Mark(bytes)) {
        const bool bigEndian = bytes[0] == '\xFE';
        std::u16string text;
        text.reserve(bytes.size() / 2);
        for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
            const auto first = static_cast<unsigned char>(bytes[i]);
            const auto second = static_cast<unsigned char>(bytes[i + 1]);
            text += static_cast<char16_t>(bigEndian ? (first << 8 | second) : (second << 8 | first));
        }
        return text;
    }
    return platform::fromCodePage(bytes);
}

std::u16string unifiedDiff(const std::optional<std::string> &before, const std::optional<std::string> &after,
                           const std::u16string &name, int context)
{
    std::u16string out = u"--- " + name + (before ? u" (before)" : u" (did not exist)") + u"\n+++ " + name
        + (after ? u" (after)" : u" (removed)") + u"\n";
    const std::string_view oldBytes = before ? std::string_view(*before) : std::string_view();
    const std::string_view newBytes = after ? std::string_view(*after) : std::string_view();
    if (isBinary(oldBytes) || isBinary(newBytes)) {
        if (oldBytes != newBytes)
            out += binaryDifference(oldBytes, newBytes);
        return out;
    }

    const std::u16string oldText = decodeFileText(oldBytes);
    const std::u16string newText = decodeFileText(newBytes);
    const std::vector<std::u16string_view> a = splitKeepingEnds(oldText);
    const std::vector<std::u16string_view> b = splitKeepingEnds(newText);
    const std::vector<Edit> script = editScript(a, b);

    // Where each step stands in the old and the new file.
    std::vector<std::size_t> oldAt(script.size() + 1, 0);
    std::vector<std::size_t> newAt(script.size() + 1, 0);
    for (std::size_t i = 0; i < script.size(); ++i) {
        oldAt[i + 1] = oldAt[i] + (script[i].kind != EditKind::Added ? 1 : 0);
        newAt[i + 1] = newAt[i] + (script[i].kind != EditKind::Removed ? 1 : 0);
    }
    const auto spread = static_cast<std::size_t>(std::max(context, 0));
    std::size_t i = 0;
    while (i < script.size()) {
        while (i < script.size() && script[i].kind == EditKind::Same)
            ++i;
        if (i == script.size())
            break;
        const std::size_t first = i >= spread ? i - spread : 0;
        // The hunk runs on while the next change is no more than two contexts away.
        std::size_t last = i;
        for (std::size_t j = i; j < script.size(); ++j) {
            if (script[j].kind != EditKind::Same)
                last = j;
            else if (j - last > 2 * spread)
                break;
        }
        const std::size_t end = std::min(script.size(), last + 1 + spread);
        out += u"@@ " + range(u'-', oldAt[first], oldAt[end] - oldAt[first]) + u" "
            + range(u'+', newAt[first], newAt[end] - newAt[first]) + u" @@\n";
        for (std::size_t j = first; j < end; ++j) {
            const Edit &step = script[j];
            if (step.kind == EditKind::Same)
                appendLine(out, u' ', a[step.line]);
            else if (step.kind == EditKind::Removed)
                appendLine(out, u'-', a[step.line]);
            else
                appendLine(out, u'+', b[step.line]);
        }
        i = end;
    }
    return out;
}

} // namespace fleetwright
