// Start and stop of the library: how the users of the one manager object are counted.

#include <atomic>
#include <memory>
#include <mutex>

#include "api/StartCount.h"
#include "load/contract/ISSOClientModule.h"
#include "locate/SSOPathResolver.h"
#include "orlindex/IdServicesMgr.h"

namespace Kestrany::IdentityServices {

std::atomic<int> startCount = 0;

namespace {

std::atomic<IdServicesMgr*> instance = nullptr;

/// Some runtimes allocate what a mutex needs at its first lock.
std::mutex& MakeLockedOnce()
{
    auto* mutex = new std::mutex;
    const std::lock_guard<std::mutex> guard(*mutex);
    return *mutex;
}

/// Serialises the work of starting and stopping. Complete from the library's load on, so that no start lacks the memory
/// for it, and never destroyed: a thread may still stop the library while the process ends.
std::mutex& libraryMutex = MakeLockedOnce();

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

/// Counts before it takes the mutex: a second caller must not wait for the first one's load.
IdErrorCode IdServicesMgr::Initialize()
{
    if (++startCount > 1)
        return IdSuccess;
    std::unique_lock<std::mutex> guard(libraryMutex, std::defer_lock);
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
    manager->EnsureClientAfterInitialize();
    instance = created.release();
    return start.Complete();
}

IdErrorCode IdServicesMgr::Uninitialize()
{
    const std::lock_guard<std::mutex> guard(libraryMutex);
    if (startCount <= 0 || --startCount > 0)
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
