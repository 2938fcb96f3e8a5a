#ifndef ORLINDEX_STRESS_EXPECTEDVERDICT_H
#define ORLINDEX_STRESS_EXPECTEDVERDICT_H

#include <filesystem>
#include <string>

namespace OrlindexTest {

/// What the library has to say of a module file.
struct ExpectedVerdict
{
    bool valid;
    std::string reason;   ///< The failure message up to the file's name; empty where it is valid.
    unsigned long answer; ///< The platform's.
};

/// Asks the platform about the file and reads its answer by a table that has nothing in common with the library's. The
/// pinned root is given as its DER form.
ExpectedVerdict VerdictOf(const std::filesystem::path& file, const std::string& pinnedRoot);

} // namespace OrlindexTest

#endif
