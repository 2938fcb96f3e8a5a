#include "identity/Suggestion.h"

#include <algorithm>
#include <numeric>

namespace Kestrany::Agent {

namespace {

/// How many letters have to be changed, inserted or deleted.
std::size_t Distance(const std::string& left, const std::string& right)
{
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < left.size(); ++i)
    {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < right.size(); ++j)
        {
            const std::size_t changed = diagonal + (left[i] == right[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

} // namespace

std::string Suggestion(const std::string& text, const std::vector<std::string>& candidates)
{
    std::string suggestion;
    std::size_t best = 4; // A larger distance is another word.
    for (const std::string& candidate : candidates)
    {
        if (text.size() > 2 * candidate.size())
            continue; // Also keeps the work small if a file holds a very long text.
        const std::size_t distance = Distance(text, candidate);
        if (distance < best && distance < candidate.size())
        {
            best = distance;
            suggestion = candidate;
        }
    }
    return suggestion;
}

std::string Enumerated(const std::vector<std::string>& texts)
{
    std::string list;
    for (const std::string& text : texts)
        list += (list.empty() ? "\"" : ", \"") + text + "\"";
    return list;
}

} // namespace Kestrany::Agent
