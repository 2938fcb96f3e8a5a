#include "base/Versions.h"

#include <algorithm>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/split.hpp>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <optional>

namespace Kestrany::IdentityServices {
namespace {

std::optional<std::int64_t> LeadingNumber(const std::string& part)
{
    char* end = nullptr;
    errno = 0;
    const long long number = std::strtoll(part.c_str(), &end, 10);
    if (end == part.c_str() || errno == ERANGE)
        return std::nullopt;
    return number;
}

/// Returns 0 if a part is not a number, or is out of range: the text comparison decides then.
int CompareAsNumbers(const std::string& a, const std::string& b)
{
    const auto left = LeadingNumber(a);
    const auto right = LeadingNumber(b);
    if (!left || !right || *left == *right)
        return 0;
    return *left < *right ? -1 : 1;
}

/// Independent of the host's locale.
unsigned char LowerAscii(char c)
{
    return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
}

int CompareAsText(const std::string& a, const std::string& b)
{
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i)
    {
        const unsigned char left = LowerAscii(a[i]);
        const unsigned char right = LowerAscii(b[i]);
        if (left != right)
            return left < right ? -1 : 1;
    }
    if (a.size() == b.size())
        return 0;
    return a.size() < b.size() ? -1 : 1;
}

} // namespace

VersionParts SplitVersion(const std::string& text)
{
    VersionParts parts;
    if (!text.empty())
        boost::algorithm::split(parts, text, boost::algorithm::is_any_of("."));
    return parts;
}

std::string JoinVersion(const VersionParts& parts)
{
    return boost::algorithm::join(parts, ".");
}

int CompareVersions(const VersionParts& a, const VersionParts& b, int limit)
{
    static const std::string missing;
    const std::size_t all = std::max(a.size(), b.size());
    const std::size_t count = limit > 0 ? std::min(all, static_cast<std::size_t>(limit)) : all;
    for (std::size_t i = 0; i < count; ++i)
    {
        const std::string& left = i < a.size() ? a[i] : missing;
        const std::string& right = i < b.size() ? b[i] : missing;
        if (const int order = CompareAsNumbers(left, right))
            return order;
        // Required even if the numbers are equal: 01 is before 1, 1 before 1a, and a missing part before 0.
        if (const int order = CompareAsText(left, right))
            return order;
    }
    return 0;
}

} // namespace Kestrany::IdentityServices
