#include "Worker.h"

#include <utility>

namespace DesktopHost {

Worker::Worker() : thread_([this] { Run(); }) {}

void Worker::Add(std::function<void()> work)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        queue_.push_back(std::move(work));
    }
    changed_.notify_one();
}

void Worker::Finish()
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        ending_ = true;
    }
    changed_.notify_one();
    if (thread_.joinable())
        thread_.join();
}

void Worker::Run()
{
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;)
    {
        changed_.wait(lock, [this] { return ending_ || !queue_.empty(); });
        if (queue_.empty())
            return;
        const std::function<void()> work = std::move(queue_.front());
        queue_.pop_front();
        lock.unlock();
        work();
        lock.lock();
    }
}

} // namespace DesktopHost
