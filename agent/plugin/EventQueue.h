#ifndef AGENT_PLUGIN_EVENTQUEUE_H
#define AGENT_PLUGIN_EVENTQUEUE_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

#include "orlindex/IdErrorCode.h"
#include "orlindex/IdServicesConsts.h"

namespace Kestrany::Agent {

struct Event
{
    IdentityServices::IdServicesConsts::IdServicesEvent kind;
    std::int32_t status = ::IdSuccess;
    Server server = TALIX_SERVER_UNAVAILABLE; ///< Of ServerChanged alone.
};

/// Events in their order, until they are fetched. Any thread may call.
class EventQueue
{
public:
    void Push(const Event& event);
    std::optional<Event> Pop();
    std::size_t Size() const;
    void Clear();

private:
    mutable std::mutex mutex_;
    std::deque<Event> events_;
};

} // namespace Kestrany::Agent

#endif
