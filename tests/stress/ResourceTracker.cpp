#include "ResourceTracker.h"

#include <algorithm>
#include <iterator>

#include <windows.h>

#include <softpub.h>
#include <wintrust.h>

namespace OrlindexTest {

namespace {

enum Outcome
{
    NonZeroIsSuccess,
    ZeroIsSuccess,
    AnyIsSuccess,
    HandleIsSuccess
};

constexpr int Returned = -1; ///< The resource is the function's result.

/// How a resource is acquired and released. It is always the first argument of the releasing function.
struct Rule
{
    const char* acquiredBy;
    Outcome outcome;
    int place; ///< Index of the argument that points to the resource, or Returned.
    const char* releasedBy;
};

constexpr Rule Rules[] = {
    {"AllocateAndInitializeSid", NonZeroIsSuccess, 10, "FreeSid"},
    {"CreateFileW", HandleIsSuccess, Returned, "CloseHandle"},
    {"CryptAcquireContextA", NonZeroIsSuccess, 0, "CryptReleaseContext"},
    {"FormatMessageW", NonZeroIsSuccess, 4, "LocalFree"},
    {"LoadLibraryExW", NonZeroIsSuccess, Returned, "FreeLibrary"},
    {"LoadLibraryW", NonZeroIsSuccess, Returned, "FreeLibrary"},
    {"OpenProcess", NonZeroIsSuccess, Returned, "CloseHandle"},
    {"RegOpenKeyExW", ZeroIsSuccess, 4, "RegCloseKey"},
    {"SHGetKnownFolderPath", ZeroIsSuccess, 3, "CoTaskMemFree"},
};

constexpr char EnterSection[] = "EnterCriticalSection";
constexpr char TrySection[] = "TryEnterCriticalSection";
constexpr char LeaveSection[] = "LeaveCriticalSection";
constexpr char VerifyTrust[] = "WinVerifyTrust";

bool Succeeded(Outcome outcome, Word result)
{
    switch (outcome)
    {
    case NonZeroIsSuccess:
        return result != 0;
    case ZeroIsSuccess:
        return static_cast<std::uint32_t>(result) == 0;
    case HandleIsSuccess:
        return reinterpret_cast<HANDLE>(result) != INVALID_HANDLE_VALUE;
    case AnyIsSuccess:
        return true;
    }
    return false;
}

/// Restores the caller's last error on destruction.
class LastErrorKept
{
public:
    LastErrorKept() = default;
    LastErrorKept(const LastErrorKept&) = delete;
    LastErrorKept& operator=(const LastErrorKept&) = delete;
    ~LastErrorKept() { SetLastError(error_); }

private:
    DWORD error_ = GetLastError();
};

} // namespace

void ResourceTracker::BeforeCall(const std::string& function, const WordArguments& arguments)
{
    const LastErrorKept kept;
    if (function == VerifyTrust)
    {
        const auto& data = *reinterpret_cast<const WINTRUST_DATA*>(arguments[2]);
        if (data.dwStateAction == WTD_STATEACTION_CLOSE)
            Remove(VerifyTrust, reinterpret_cast<Word>(data.hWVTStateData));
        return;
    }
    if (function == LeaveSection ||
        std::any_of(std::begin(Rules), std::end(Rules), [&](const Rule& rule) { return function == rule.releasedBy; }))
        Remove(function, arguments[0]);
}

void ResourceTracker::AfterCall(const std::string& function, const WordArguments& arguments, Word result)
{
    const LastErrorKept kept;
    if (function == VerifyTrust)
    {
        const auto& data = *reinterpret_cast<const WINTRUST_DATA*>(arguments[2]);
        if (data.dwStateAction == WTD_STATEACTION_VERIFY && data.hWVTStateData != nullptr)
            Add(VerifyTrust, VerifyTrust, reinterpret_cast<Word>(data.hWVTStateData));
        return;
    }
    if (function == EnterSection || (function == TrySection && static_cast<BOOL>(result)))
    {
        Add(EnterSection, LeaveSection, arguments[0]);
        return;
    }
    for (const Rule& rule : Rules)
    {
        if (function != rule.acquiredBy || !Succeeded(rule.outcome, result))
            continue;
        if (rule.place == Returned)
            Add(rule.acquiredBy, rule.releasedBy, result);
        else
            Add(rule.acquiredBy, rule.releasedBy, *reinterpret_cast<const Word*>(arguments[rule.place]));
    }
}

std::vector<std::string> ResourceTracker::Held() const
{
    const std::lock_guard<std::mutex> guard(mutex_);
    std::vector<std::string> functions;
    for (const auto& [key, acquiredBy] : held_)
        functions.push_back(acquiredBy);
    std::sort(functions.begin(), functions.end());
    return functions;
}

void ResourceTracker::Add(const char* acquiredBy, const char* releasedBy, Word thing)
{
    const std::lock_guard<std::mutex> guard(mutex_);
    held_.emplace(Key(releasedBy, thing), acquiredBy);
}

void ResourceTracker::Remove(const std::string& releasedBy, Word thing)
{
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto found = held_.find(Key(releasedBy, thing));
    if (found != held_.end())
        held_.erase(found);
}

} // namespace OrlindexTest
