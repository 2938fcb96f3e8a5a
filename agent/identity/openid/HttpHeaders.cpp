#include "identity/openid/HttpHeaders.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>

namespace Kestrany::Agent::OpenId {

namespace {

constexpr std::string_view Months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

/// A whole text of digits; nullopt for anything else.
std::optional<std::int64_t> Number(std::string_view digits)
{
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (digits.empty() || error != std::errc() || end != digits.data() + digits.size() || digits.front() == '-')
        return std::nullopt;
    return number;
}

/// Days from 1970-01-01 to a day of the Gregorian calendar. Years begin in March here: the leap day is then the last.
std::int64_t DaysSince1970(std::int64_t year, std::int64_t month, std::int64_t day)
{
    const std::int64_t years = month > 2 ? year : year - 1;
    const std::int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const std::int64_t days = years * 365 + years / 4 - years / 100 + years / 400 + dayOfYear;
    return days - 719'468; // From 0000-03-01 to 1970-01-01.
}

} // namespace

std::optional<TimePoint> ParseHttpDate(std::string_view text)
{
    //                                0    5  8   12   17 20 23
    constexpr std::string_view form = "Sun, 06 Nov 1994 08:49:37 GMT";
    const auto isPunctuation = [&](std::size_t index) {
        return form[index] == ' ' || form[index] == ',' || form[index] == ':' || index >= form.size() - 3;
    };
    if (text.size() != form.size())
        return std::nullopt;
    for (std::size_t index = 0; index < form.size(); ++index)
    {
        if (isPunctuation(index) && text[index] != form[index])
            return std::nullopt;
    }
    const auto day = Number(text.substr(5, 2));
    const auto* const month = std::find(std::begin(Months), std::end(Months), text.substr(8, 3));
    const auto year = Number(text.substr(12, 4));
    const auto hour = Number(text.substr(17, 2));
    const auto minute = Number(text.substr(20, 2));
    const auto second = Number(text.substr(23, 2));
    if (!day || month == std::end(Months) || !year || !hour || !minute || !second)
        return std::nullopt;
    // The second 60 is a leap second.
    if (*day < 1 || *day > 31 || *year < 1970 || *hour > 23 || *minute > 59 || *second > 60)
        return std::nullopt;
    const std::int64_t days = DaysSince1970(*year, month - std::begin(Months) + 1, *day);
    // Within the years 1970 to 2262, which the clock can count.
    constexpr std::int64_t lastYear = 2200;
    if (*year > lastYear)
        return std::nullopt;
    return TimePoint(std::chrono::seconds(((days * 24 + *hour) * 60 + *minute) * 60 + *second));
}

std::optional<std::chrono::seconds> ParseRetryAfter(std::string_view text, TimePoint now)
{
    constexpr std::int64_t longest = 366 * 24 * 3600;
    if (const std::optional<std::int64_t> seconds = Number(text))
        return std::chrono::seconds(std::min(*seconds, longest));
    const std::optional<TimePoint> time = ParseHttpDate(text);
    if (!time)
        return std::nullopt;
    const auto wait = std::chrono::ceil<std::chrono::seconds>(*time - now);
    return std::clamp(wait, std::chrono::seconds(0), std::chrono::seconds(longest));
}

std::string MediaType(std::string_view contentType)
{
    std::string_view type = contentType.substr(0, contentType.find(';'));
    while (!type.empty() && (type.back() == ' ' || type.back() == '\t'))
        type.remove_suffix(1);
    while (!type.empty() && (type.front() == ' ' || type.front() == '\t'))
        type.remove_prefix(1);
    std::string lower(type);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return lower;
}

} // namespace Kestrany::Agent::OpenId
