#pragma once

// Windows' wildcard rules for names: what FileLookup applies where the file system does not apply them itself.

#include <string>
#include <string_view>
#include <vector>

namespace fleetwright::platform {

// Windows' wildcard rules, compared without regard to case: "*" stands for any run of characters and "?" for
// one; "?" before a point or at the end of the name may also stand for nothing, a pattern point before "*",
// "?" or the pattern's end also matches the end of the name ("texture.*" matches "texture"), and "*" before a
// point does not reach past the name's last point, so "*." matches only names without a point.
bool matchesWildcard(std::u16string_view pattern, std::u16string_view name);

struct PatternItem;

// A pattern of matchesWildcard read once, for matching many names.
class WildcardPattern
{
public:
    explicit WildcardPattern(std::u16string_view pattern);
    ~WildcardPattern();
    bool matches(std::u16string_view name) const;

private:
    // Most patterns are "*", a plain name, "*" before a plain ending or a plain name before ".*": those need
    // no matcher.
    enum class Form
    {
        General,
        Any,
        Exact,
        Ending,
        NameAndAnyExtension,
    };

    std::vector<PatternItem> m_items;
    Form m_form = Form::General;
    std::u16string m_literal; // the plain name or ending, in upper case
    mutable std::vector<signed char> m_memo;
};

} // namespace fleetwright::platform
