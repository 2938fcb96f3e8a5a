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

#include "Ledger.h"
#include "support/ImportPatch.h"

namespace OrlindexTest {

/// What a function answers when it is made to fail.
struct FailingAnswer
{
    Word result;
    DWORD lastError; ///< ERROR_SUCCESS leaves it as it is.
};

/// Stands before every function that the library imports: counts the calls, keeps books of what was acquired and
/// released, and makes chosen calls fail. One object may live at a time; the library is at rest while it is made.
///
/// One shape of function serves all of them: in the platform's 64-bit calling convention every argument that is no
/// floating-point number takes one word, and passing on more words than a function takes does no harm.
class ImportHooks
{
public:
    explicit ImportHooks(HMODULE module = LibraryModule());
    ~ImportHooks();
    ImportHooks(const ImportHooks&) = delete;
    ImportHooks& operator=(const ImportHooks&) = delete;

    static constexpr int AllLater = INT_MAX;

    /// Makes `count` calls from number `first` on fail; calls are counted from 1, over all of the functions together.
    void Fail(const std::vector<std::string>& functions, int first, FailingAnswer answer, int count = 1);
    /// Whether the call that is to fail was reached.
    bool Failed() const { return matched_ >= first_; }
    /// Calls of the functions that Fail named.
    int Matched() const { return matched_; }

    /// Names of the functions that were called, sorted.
    std::vector<std::string> Called() const;

    const Ledger& Books() const { return ledger_; }

    /// Of the functions behind the entries. Also called by the thunks alone.
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
    FailingAnswer answer_ = {};
    Ledger ledger_;
};

} // namespace OrlindexTest

#endif
