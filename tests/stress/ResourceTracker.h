#ifndef ORLINDEX_STRESS_RESOURCETRACKER_H
#define ORLINDEX_STRESS_RESOURCETRACKER_H

#include <array>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace OrlindexTest {

using Word = std::uintptr_t;
using WordArguments = std::array<Word, 12>;

/// Tracks what the library acquired from the platform and did not release: handles, keys, modules, memory of the
/// platform, critical sections, WinTrust sessions. A count of the process's handles would include the platform's own.
class ResourceTracker
{
public:
    /// A resource counts as released when the library releases it, even if the platform reports a failure.
    void BeforeCall(const std::string& function, const WordArguments& arguments);
    void AfterCall(const std::string& function, const WordArguments& arguments, Word result);

    /// The functions that acquired what is not released, once for each resource.
    std::vector<std::string> Held() const;

private:
    void Add(const char* acquiredBy, const char* releasedBy, Word thing);
    void Remove(const std::string& releasedBy, Word thing);

    using Key = std::pair<std::string, Word>; ///< The releasing function and its argument.

    mutable std::mutex mutex_;
    std::multimap<Key, std::string> held_;
};

} // namespace OrlindexTest

#endif
