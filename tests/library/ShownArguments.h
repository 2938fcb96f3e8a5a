#ifndef ORLINDEX_LIBRARY_SHOWNARGUMENTS_H
#define ORLINDEX_LIBRARY_SHOWNARGUMENTS_H

#include <string>

#include <gmock/gmock.h>

namespace OrlindexTest {

// The expected arguments of an operation in tables: a function from the caller's arguments to a matcher for the
// plugin's journal. These are for arguments that do not depend on the caller's.

/// Exactly these arguments.
inline auto Exactly(const std::string& shown)
{
    return [shown](const auto& /*arguments*/) -> testing::Matcher<std::string> { return testing::Eq(shown); };
}

/// These arguments, where `@` matches any address.
inline auto Like(const std::string& shown)
{
    std::string pattern;
    for (const char character : shown)
        pattern += character == '@' ? "@\\d+" : std::string(1, character);
    return [pattern](const auto& /*arguments*/) -> testing::Matcher<std::string> {
        return testing::MatchesRegex(pattern);
    };
}

} // namespace OrlindexTest

#endif
