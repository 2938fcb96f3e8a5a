#include "locate/PathVariables.h"

namespace Kestrany::IdentityServices {
namespace {

/// The search for the end of a reference stops at a percent sign, or at a line terminator, which no reference spans.
constexpr wchar_t referenceStops[] = L"%\n\r\u2028\u2029";

struct Reference
{
    std::size_t begin;
    std::size_t end; ///< After the closing percent sign.
};

/// The first match of the pattern "%.*?%" at or after `from`, by one pass over the text: a regular expression engine
/// would recurse once a character and overflow the stack on a long text.
bool FindReference(const std::wstring& text, std::size_t from, Reference& reference)
{
    std::size_t begin = text.find(L'%', from);
    while (begin != std::wstring::npos)
    {
        const std::size_t stop = text.find_first_of(referenceStops, begin + 1);
        if (stop == std::wstring::npos)
            return false;
        if (text[stop] == L'%')
        {
            reference = {begin, stop + 1};
            return true;
        }
        begin = text.find(L'%', stop + 1);
    }
    return false;
}

} // namespace

std::int32_t ExpandPathVariables(std::wstring& text, const VariableLookup& lookup)
{
    std::int32_t matches = 0;
    std::wstring output;
    std::size_t copied = 0;
    for (Reference reference{}; FindReference(text, copied, reference); copied = reference.end)
    {
        output.append(text, copied, reference.begin - copied);
        const std::wstring match = text.substr(reference.begin, reference.end - reference.begin);
        std::wstring value;
        output += lookup(match.substr(1, match.size() - 2), value) ? value : match;
        ++matches;
    }
    if (matches > 0)
        text = output.append(text, copied);
    return matches;
}

bool BeginsWithPathVariable(const std::wstring& text)
{
    Reference reference{};
    return !text.empty() && text.front() == L'%' && FindReference(text, 0, reference) && reference.begin == 0;
}

void ExpandPathVariables(std::vector<std::wstring>& texts, const VariableLookup& lookup)
{
    for (std::wstring& text : texts)
        ExpandPathVariables(text, lookup);
}

} // namespace Kestrany::IdentityServices
