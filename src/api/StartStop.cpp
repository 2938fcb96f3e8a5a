// Start and stop of the library: the start count and the IdServicesMgr object.

#include <atomic>
#include <memory>
#include <mutex>
#include <system_error>
#include <windows.h>

#include "api/IdServicesMgrPrivate.h"
#include "load/contract/ISSOClientModule.h"
#include "locate/SSOPathResolver.h"
#include "orlindex/IdServicesMgr.h"

namespace Kestrany::IdentityServices {

std::atomic<int> startCount = 0;

namespace {

std::atomic<IdServicesMgr*> instance = nullptr;

/// Not recursive. A thread that holds it may lock it again, in a callback that the plugin makes while it starts or
/// stops: that throws the standard library's deadlock error, because std::mutex of some runtimes would wait forever.
class LibraryMutex
{
public:
    void lock()
    {
        if (owner_ == GetCurrentThreadId())
            throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
        mutex_.lock();
        owner_ = GetCurrentThreadId();
    }

    void unlock()
    {
        owner_ = 0;
        mutex_.unlock();
    }

private:
    std::mutex mutex_;
    std::atomic<DWORD> owner_ = 0; ///< No thread has the ID 0.
};

using LibraryGuard = std::unique_lock<LibraryMutex>;

/// Locks the mutex once, because some runtimes allocate its memory at the first lock.
LibraryMutex& CreateLockedOnce()
{
    auto* mutex = new LibraryMutex;
    const LibraryGuard guard(*mutex);
    return *mutex;
}

/// Serializes starts and stops. It is complete when the library is loaded, so that no start fails for an allocation
/// failure in it. Never destroyed: a thread may still stop the library while the process ends.
LibraryMutex& libraryMutex = CreateLockedOnce();

/// Decrements the start count again unless the start completes.
class StartCountGuard
{
public:
    StartCountGuard() = default;
    StartCountGuard(const StartCountGuard&) = delete;
    StartCountGuard& operator=(const StartCountGuard&) = delete;
    ~StartCountGuard()
    {
        if (!complete_)
            --startCount;
    }

    IdErrorCode Complete()
    {
        complete_ = true;
        return IdSuccess;
    }

private:
    bool complete_ = false;
};

/// Stops the plugin and discards all stored locations, even if the plugin throws: a later start begins anew. By
/// contract it obtains the module interface as any call does, which may load a plugin that was never loaded, and
/// discards nothing if there is none.
void ReleasePlugin()
{
    struct ForgetOnExit
    {
        ~ForgetOnExit() { SSOPathResolver::Forget(); }
    };

    ISSOClientModule* clientModule = SSOPathResolver::GetInstance()->GetSSOClientModule();
    if (!clientModule)
        return;
    const ForgetOnExit forget;
    clientModule->Uninitialize();
}

} // namespace

/// Increments the count before it locks the mutex: a second caller must not wait for the first one's load. By contract
/// the second caller succeeds even if the first one has not created the instance yet.
IdErrorCode IdServicesMgr::Initialize()
{
    if (++startCount > 1)
        return IdSuccess;
    LibraryGuard guard(libraryMutex, std::defer_lock);
    StartCountGuard start; // Decrements before the mutex is released, or a waiting stop would decrement below 0.
    guard.lock();
    if (instance) // not covered: A start would have to run between the count and the mutex of another one.
        // not covered: A start would have to run between the count and the mutex of another one.
        return start.Complete();

    SSOPathResolver* manager = SSOPathResolver::GetInstance();
    ISSOClientModule* clientModule = manager->GetSSOClientModule();
    if (!clientModule)
        return IdClientUnavailable;
    struct Destroyer
    {
        void operator()(IdServicesMgr* created) const { delete created; }
    };
    // Created before the plugin starts: a start that fails because the system is out of memory must not leave the
    // plugin started.
    std::unique_ptr<IdServicesMgr, Destroyer> created(new IdServicesMgr);
    clientModule->Initialize(false);
    manager->EnsureClientAfterInitialize(); // By contract a null client is no failure: members return their fallbacks.
    instance = created.release();
    return start.Complete();
}

IdErrorCode IdServicesMgr::Uninitialize()
{
    const LibraryGuard guard(libraryMutex);
    if (startCount <= 0)
        return IdSuccess;
    if (--startCount > 0)
        return IdSuccess;
    // Do not store 0 here: another thread may increment the count at any time, and its start would be lost.
    delete instance.exchange(nullptr);
    ReleasePlugin();
    return IdSuccess;
}

IdServicesMgr* IdServicesMgr::GetInstance()
{
    return instance;
}

bool IdServicesMgr::IsInitialized()
{
    return IsStarted();
}

} // namespace Kestrany::IdentityServices
