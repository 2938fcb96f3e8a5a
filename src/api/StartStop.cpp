// Start and stop of the library: how the users of the one manager object are counted.

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

/// Not recursive. The thread that holds it may ask again, from a callback that the plugin calls while it starts or
/// stops: that raises the system error of a mutex for it. Some runtimes' own mutex would wait for ever.
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

/// Some runtimes allocate what a mutex needs at its first lock.
LibraryMutex& MakeLockedOnce()
{
    auto* mutex = new LibraryMutex;
    const LibraryGuard guard(*mutex);
    return *mutex;
}

/// Serialises the work of starting and stopping. Complete from the library's load on, so that no start lacks the memory
/// for it, and never destroyed: a thread may still stop the library while the process ends.
LibraryMutex& libraryMutex = MakeLockedOnce();

/// Takes back the count of a start that does not come to its end.
class CountOfStart
{
public:
    CountOfStart() = default;
    CountOfStart(const CountOfStart&) = delete;
    CountOfStart& operator=(const CountOfStart&) = delete;
    ~CountOfStart()
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

/// Ends the plugin's work and forgets where everything was found, even if the plugin throws: a later start begins anew.
/// By contract it asks for the module as a call does, which may load a plugin that was never loaded, and forgets
/// nothing where there is none.
void ReleasePlugin()
{
    struct Forgetting
    {
        ~Forgetting() { SSOPathResolver::Forget(); }
    };

    ISSOClientModule* clientModule = SSOPathResolver::GetInstance()->GetSSOClientModule();
    if (!clientModule)
        return;
    const Forgetting afterwards;
    clientModule->Uninitialize();
}

} // namespace

/// Counts before it takes the mutex: a second caller must not wait for the first one's load. By contract it succeeds
/// without a look at the instance, which the first one may not have made yet.
IdErrorCode IdServicesMgr::Initialize()
{
    if (++startCount > 1)
        return IdSuccess;
    LibraryGuard guard(libraryMutex, std::defer_lock);
    CountOfStart start; // Taken back before the mutex is released, or a stop that waits for it would count below 0.
    guard.lock();
    if (instance)
        return start.Complete();

    SSOPathResolver* manager = SSOPathResolver::GetInstance();
    ISSOClientModule* clientModule = manager->GetSSOClientModule();
    if (!clientModule)
        return IdClientUnavailable;
    struct Destroyer
    {
        void operator()(IdServicesMgr* created) const { delete created; }
    };
    // Made before the plugin begins its work: a start that fails for want of memory must not leave it begun.
    std::unique_ptr<IdServicesMgr, Destroyer> created(new IdServicesMgr);
    clientModule->Initialize(false);
    manager->EnsureClientAfterInitialize(); // By contract a null client fails no start: members return their fallbacks.
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
    // The count is 0 now and stays so until another start counts; storing 0 at the end would lose that one.
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
