// Start and stop of the library: how the users of the one manager object are counted.

#include <atomic>
#include <mutex>

#include "load/contract/ISSOClientModule.h"
#include "locate/SSOPathResolver.h"
#include "orlindex/IdServicesMgr.h"

namespace Kestrany::IdentityServices {
namespace {

std::atomic<int> referenceCount = 0;
std::atomic<IdServicesMgr*> instance = nullptr;

/// Serialises the work of starting and stopping. Never destroyed: a thread may still stop the library while the process
/// ends.
std::mutex& LibraryMutex()
{
    static std::mutex& mutex = *new std::mutex;
    return mutex;
}

/// Takes back one count unless the start that it stands for is complete.
class CountedStart
{
public:
    CountedStart() : count_(++referenceCount) {}
    CountedStart(const CountedStart&) = delete;
    CountedStart& operator=(const CountedStart&) = delete;
    ~CountedStart()
    {
        if (!complete_)
            --referenceCount;
    }

    bool IsFirst() const { return count_ <= 1; }
    IdErrorCode Complete()
    {
        complete_ = true;
        return IdSuccess;
    }

private:
    int count_;
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
    CountedStart start;
    if (!start.IsFirst())
        return start.Complete();
    const std::lock_guard<std::mutex> guard(LibraryMutex());
    if (instance)
        return start.Complete();

    SSOPathResolver* manager = SSOPathResolver::GetInstance();
    ISSOClientModule* clientModule = manager->GetSSOClientModule();
    if (!clientModule)
        return IdClientUnavailable;
    clientModule->Initialize(false);
    manager->EnsureClientAfterInitialize();
    instance = new IdServicesMgr;
    return start.Complete();
}

IdErrorCode IdServicesMgr::Uninitialize()
{
    const std::lock_guard<std::mutex> guard(LibraryMutex());
    if (referenceCount == 0 || --referenceCount > 0)
        return IdSuccess;
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
    return referenceCount > 0;
}

} // namespace Kestrany::IdentityServices
