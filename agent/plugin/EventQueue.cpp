#include "plugin/EventQueue.h"

namespace Kestrany::Agent {

void EventQueue::Push(const Event& event)
{
    const std::lock_guard lock(mutex_);
    events_.push_back(event);
}

std::optional<Event> EventQueue::Pop()
{
    const std::lock_guard lock(mutex_);
    if (events_.empty())
        return std::nullopt;
    const Event event = events_.front();
    events_.pop_front();
    return event;
}

std::size_t EventQueue::Size() const
{
    const std::lock_guard lock(mutex_);
    return events_.size();
}

void EventQueue::Clear()
{
    const std::lock_guard lock(mutex_);
    events_.clear();
}

} // namespace Kestrany::Agent
