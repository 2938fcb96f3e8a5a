#ifndef ORLINDEX_STRESS_LEDGER_H
#define ORLINDEX_STRESS_LEDGER_H

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

/// What the library acquired from the platform and has not given back: handles, keys, modules, memory of the platform,
/// critical sections, verification states. Exact where a count of the process's handles also holds the platform's own.
class Ledger
{
public:
    /// A thing counts as given back when the library says so, whatever the platform answers.
    void BeforeCall(const std::string& function, const WordArguments& arguments);
    void AfterCall(const std::string& function, const WordArguments& arguments, Word result);

    /// The functions by which things were acquired that are still held, each once a thing.
    std::vector<std::string> Held() const;

private:
    void Add(const char* acquiredBy, const char* releasedBy, Word thing);
    void Remove(const std::string& releasedBy, Word thing);

    using Key = std::pair<std::string, Word>; ///< The function that gives it back, and what it is given.

    mutable std::mutex mutex_;
    std::multimap<Key, std::string> held_;
};

} // namespace OrlindexTest

#endif
