#ifndef ORLINDEX_SUPPORT_PATHVARIABLEPATTERN_H
#define ORLINDEX_SUPPORT_PATHVARIABLEPATTERN_H

#include <cstdint>
#include <regex>
#include <string>
#include <vector>

#include "locate/PathVariables.h"

namespace OrlindexTest {

// The regular expression that defines a reference to a path variable. Unit tests and the fuzzer compare the product
// with it.

struct Expansion
{
    std::wstring text;
    std::int32_t matches = 0;
    std::vector<std::wstring> names; ///< In the order in which they were looked up.

    bool operator==(const Expansion& other) const
    {
        return text == other.text && matches == other.matches && names == other.names;
    }
};

/// Expands by the standard library's regular expressions. They are right, but recurse for each character: only for
/// texts of some hundred characters.
inline Expansion ExpandByPattern(const std::wstring& text, const Kestrany::IdentityServices::VariableLookup& lookup)
{
    // "%.*?%", with the line terminators of ECMAScript written out: of these four, the standard libraries' "." knows
    // two or all.
    static const std::wregex pattern(L"%[^\n\r\u2028\u2029]*?%");
    Expansion expansion;
    auto copied = text.begin();
    for (std::wsregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match)
    {
        expansion.text.append(copied, (*match)[0].first);
        const std::wstring reference = match->str();
        expansion.names.push_back(reference.substr(1, reference.size() - 2));
        std::wstring value;
        expansion.text += lookup(expansion.names.back(), value) ? value : reference;
        copied = (*match)[0].second;
        ++expansion.matches;
    }
    expansion.text.append(copied, text.end());
    return expansion;
}

} // namespace OrlindexTest

#endif
