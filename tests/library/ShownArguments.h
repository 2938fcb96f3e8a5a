#ifndef ORLINDEX_LIBRARY_SHOWNARGUMENTS_H
#define ORLINDEX_LIBRARY_SHOWNARGUMENTS_H

#include <string>

#include <gmock/gmock.h>

namespace OrlindexTest {

// What tables say of an operation's arguments: a function from the caller's arguments to a matcher of what the plugin's
// journal shows. These are for arguments that do not depend on the caller's.

/// The arguments as they stand.
inline auto Exactly(std::string shown)
{
    return [shown](const auto& /*arguments*/) -> testing::Matcher<std::string> { return testing::Eq(shown); };
}

/// `@` stands for some address.
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
