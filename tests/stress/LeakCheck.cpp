#include "LeakCheck.h"

#include <future>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "orlindex/IdServicesMgr.h"
#include "orlindex/SSOClientPrivate.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;

bool EndsInTime(const std::function<void()>& task, std::chrono::seconds limit)
{
    auto ended = std::make_shared<std::promise<void>>();
    std::future<void> end = ended->get_future();
    std::thread thread([task, ended]() {
        task();
        ended->set_value();
    });
    if (end.wait_for(limit) != std::future_status::ready)
    {
        thread.detach();
        return false;
    }
    thread.join(); // A thread that is about to end still owns handles, and enters the library once more.
    return true;
}

void ExpectLocksAreFree()
{
    const auto useEveryLock = []() {
        const bool counted = IdServicesMgr::Initialize() == IdSuccess;
        SSOClientPrivate().GetSettingsPath();
        if (counted)
            IdServicesMgr::Uninitialize();
    };
    ASSERT_TRUE(EndsInTime(useEveryLock)) << "a lock of the library is still held";
}

} // namespace OrlindexTest
