#ifndef ORLINDEX_STRESS_EXPECTEDVERDICT_H
#define ORLINDEX_STRESS_EXPECTEDVERDICT_H

#include <filesystem>
#include <string>

namespace OrlindexTest {

/// What the library must find out about a module file.
struct ExpectedVerdict
{
    bool valid;
    std::string reason; ///< The failure message up to the file's name; empty if it is valid.
    unsigned long platformResult;
};

/// Verifies the file by the platform and maps the result by a table that is independent of the library's. `pinnedRoot`
/// is in DER form.
ExpectedVerdict VerdictOf(const std::filesystem::path& file, const std::string& pinnedRoot);

} // namespace OrlindexTest

#endif
