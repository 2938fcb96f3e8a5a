// Comparing versions of any bytes: properties of every pair, and that sorting by it is safe.

#include <algorithm>
#include <cstdint>
#include <limits>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ByteReader.h"
#include "Require.h"
#include "base/Versions.h"

using namespace Kestrany::IdentityServices;
using OrlindexTest::ByteReader;
using OrlindexTest::Require;

namespace {

using Versions = std::vector<VersionParts>;

/// The signed 64-bit decimal at the start of a part, digit by digit.
std::optional<std::int64_t> LeadingDecimal(const std::string& part)
{
    constexpr std::uint64_t most = static_cast<std::uint64_t>((std::numeric_limits<std::int64_t>::max)());
    std::size_t at = (std::min)(part.find_first_not_of(" \t\n\v\f\r"), part.size());
    const bool negative = at < part.size() && part[at] == '-';
    at += at < part.size() && (part[at] == '-' || part[at] == '+') ? 1u : 0u;
    const std::uint64_t limit = most + (negative ? 1 : 0);
    const std::size_t begin = at;
    std::uint64_t value = 0;
    for (; at < part.size() && part[at] >= '0' && part[at] <= '9'; ++at)
    {
        const auto digit = static_cast<std::uint64_t>(part[at] - '0');
        if (value > (limit - digit) / 10)
            return std::nullopt;
        value = value * 10 + digit;
    }
    if (at == begin)
        return std::nullopt;
    return negative ? static_cast<std::int64_t>(~value + 1) : static_cast<std::int64_t>(value);
}

int ComparePart(const std::string& a, const std::string& b)
{
    const auto left = LeadingDecimal(a);
    const auto right = LeadingDecimal(b);
    if (left && right && *left != *right)
        return *left < *right ? -1 : 1;
    std::string foldedLeft = a;
    std::string foldedRight = b;
    for (std::string* text : {&foldedLeft, &foldedRight})
        std::transform(text->begin(), text->end(), text->begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    const int order = foldedLeft.compare(foldedRight); // By unsigned bytes.
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

int CompareByParts(const VersionParts& a, const VersionParts& b, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        if (const int order = ComparePart(i < a.size() ? a[i] : "", i < b.size() ? b[i] : ""))
            return order;
    return 0;
}

void RequireComparison(const VersionParts& a, const VersionParts& b)
{
    const std::size_t all = (std::max)(a.size(), b.size());
    Require(CompareVersions(a, a) == 0, "a version equals itself");
    for (const int limit : {-1, 0, 1, 2, 3, (std::numeric_limits<int>::min)(), (std::numeric_limits<int>::max)()})
    {
        const std::size_t count = limit > 0 ? (std::min)(all, static_cast<std::size_t>(limit)) : all;
        Require(CompareVersions(a, b, limit) == CompareByParts(a, b, count), "the order is that of the parts");
        Require(CompareVersions(b, a, limit) == -CompareVersions(a, b, limit), "swapped versions swap the result");
    }
}

/// It is no order for some versions. Sorting by it still gives some sequence, and breaks no memory.
void RequireSafeOrderings(const Versions& versions)
{
    const auto isLess = [](const VersionParts& a, const VersionParts& b) { return CompareVersions(a, b) < 0; };
    std::list<VersionParts> sorted(versions.begin(), versions.end());
    sorted.sort(isLess);
    Require(std::is_permutation(sorted.begin(), sorted.end(), versions.begin()), "sorting loses nothing");
    std::map<VersionParts, std::size_t, decltype(isLess)> places(isLess);
    for (std::size_t place = 0; place < versions.size(); ++place)
        places[versions[place]] = place;
    Require(places.size() <= versions.size() && (versions.empty() || !places.empty()), "a map keeps some of them");
    while (!places.empty())
        places.erase(places.begin());
}

Versions SplitLines(const std::string& text)
{
    Versions versions;
    for (std::size_t begin = 0; begin <= text.size() && versions.size() < 24;)
    {
        const std::size_t end = (std::min)(text.find('\n', begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        versions.push_back(SplitVersion(line));
        Require(JoinVersion(versions.back()) == line, "joining undoes splitting");
        Require(versions.back().size() ==
                    (line.empty() ? 0 : static_cast<std::size_t>(std::count(line.begin(), line.end(), '.')) + 1),
                "there is a part more than points");
        begin = end + 1;
    }
    return versions;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Versions versions = SplitLines(ByteReader(data, size).Rest());
    for (const VersionParts& a : versions)
        for (const VersionParts& b : versions)
            RequireComparison(a, b);
    RequireSafeOrderings(versions);
    return 0;
}
