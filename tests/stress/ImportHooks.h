#ifndef ORLINDEX_STRESS_IMPORTHOOKS_H
#define ORLINDEX_STRESS_IMPORTHOOKS_H

#include <array>
#include <atomic>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "ResourceTracker.h"
#include "support/ImportPatch.h"

namespace OrlindexTest {

/// What a function returns when it is made to fail.
struct FailingResult
{
    Word result;
    DWORD lastError; ///< ERROR_SUCCESS leaves it as it is.
};

/// Replaces every function that the library imports: counts the calls, tracks what was acquired and released, and makes
/// chosen calls fail. One object may live at a time; no thread may be inside the library while it is made.
///
/// One signature fits all functions: in the platform's 64-bit calling convention every argument that is not a
/// floating-point number takes one word, and a function ignores further words.
class ImportHooks
{
public:
    explicit ImportHooks(HMODULE module = LibraryModule());
    ~ImportHooks();
    ImportHooks(const ImportHooks&) = delete;
    ImportHooks& operator=(const ImportHooks&) = delete;

    static constexpr int AllLater = INT_MAX;

    /// Makes `count` calls fail, from number `first` on. Calls are counted from 1, over all functions together.
    void Fail(const std::vector<std::string>& functions, int first, FailingResult result, int count = 1);
    /// Whether the first call that must fail was made.
    bool Failed() const { return matched_ >= first_; }
    /// The number of calls of the functions that were passed to Fail.
    int Matched() const { return matched_; }

    /// Names of the functions that were called, sorted.
    std::vector<std::string> Called() const;

    const ResourceTracker& Resources() const { return resources_; }

    /// Only for the functions in the import table.
    Word Call(std::size_t index, const WordArguments& arguments);

private:
    struct Import
    {
        std::string name;
        std::unique_ptr<ImportPatch> patch;
        AnyFunction original = nullptr;
        std::atomic<int> calls = 0;
        std::atomic<bool> fails = false;
    };

    bool MustFail(const Import& import);

    std::deque<Import> imports_; // A deque: the elements cannot move.
    std::atomic<int> matched_ = 0;
    int first_ = 0;
    int count_ = 0;
    FailingResult result_ = {};
    ResourceTracker resources_;
};

} // namespace OrlindexTest

#endif
