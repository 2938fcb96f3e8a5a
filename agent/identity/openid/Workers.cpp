#include "identity/openid/Workers.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <iterator>
#include <list>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace Kestrany::Agent::OpenId {

namespace {

class RunningTask final : public Workers::Task
{
public:
    explicit RunningTask(std::function<void()> work) : work_(std::move(work)) {}

    void Perform()
    {
        current = this;
        work_();
        current = nullptr;
        work_ = nullptr; // What it owns ends here, not with whoever keeps the task.
    }
    void Cancel() override
    {
        const std::lock_guard lock(mutex_);
        isCancelled_ = true;
        changed_.notify_all();
    }
    bool Pause(std::chrono::milliseconds time)
    {
        std::unique_lock lock(mutex_);
        return !changed_.wait_for(lock, time, [this] { return isCancelled_; });
    }

    static thread_local RunningTask* current; ///< Of this thread; null outside of tasks.

private:
    std::function<void()> work_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isCancelled_ = false;
};

thread_local RunningTask* RunningTask::current = nullptr;

} // namespace

/// What the threads share. It lives as long as the last of them.
class Workers::State : public std::enable_shared_from_this<State>
{
public:
    explicit State(std::function<void()> wake) : wake_(std::move(wake)) {}

    std::shared_ptr<Task> Run(std::function<void()> work)
    {
        auto task = std::make_shared<RunningTask>(std::move(work));
        {
            const std::lock_guard lock(mutex_);
            if (isShutDown_)
                return task;
            waiting_.push_back(task);
            // Each waiting task has an idle thread to take it, or gets a new one.
            if (waiting_.size() > idle_ && threads_ < MaxThreads)
                Start();
        }
        changed_.notify_one(); // Only idle threads wait, because nothing has been shut down.
        return task;
    }

    void Post(std::function<void()> completion)
    {
        {
            const std::lock_guard lock(mutex_);
            if (isShutDown_)
                return;
            completions_.push_back(std::move(completion));
        }
        wake_(); // Without the lock, which the thread that wakes needs.
    }

    std::deque<std::function<void()>> TakeCompletions()
    {
        const std::lock_guard lock(mutex_);
        return std::exchange(completions_, {});
    }

    bool Shutdown(std::chrono::milliseconds limit)
    {
        std::deque<std::function<void()>> dropped; // Destroyed without the lock: they may own anything.
        std::unique_lock lock(mutex_);
        isShutDown_ = true;
        dropped.swap(completions_);
        waiting_.clear();
        for (const std::shared_ptr<RunningTask>& task : running_)
            task->Cancel();
        changed_.notify_all();
        return changed_.wait_for(lock, limit, [this] { return threads_ == 0; });
    }

private:
    /// The lock is held.
    void Start()
    {
        handles_.emplace_back();
        const auto own = std::prev(handles_.end());
        try
        {
            *own = std::thread([self = shared_from_this(), own] { self->Serve(own); });
        }
        catch (...)
        {
            handles_.erase(own);
            throw;
        }
        ++threads_;
    }

    void Serve(std::list<std::thread>::iterator own)
    {
        std::unique_lock lock(mutex_);
        for (;;)
        {
            ++idle_;
            changed_.wait(lock, [this] { return isShutDown_ || !waiting_.empty(); });
            --idle_;
            if (isShutDown_)
                break;
            std::shared_ptr<RunningTask> task = std::move(waiting_.front());
            waiting_.pop_front();
            running_.push_back(task);
            lock.unlock();
            task->Perform();
            lock.lock();
            running_.erase(std::find(running_.begin(), running_.end(), task));
        }
        // A thread detaches itself: mingw-w64's runtime loses a thread that another one detaches before it runs.
        own->detach();
        handles_.erase(own);
        --threads_;
        changed_.notify_all();
    }

    const std::function<void()> wake_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isShutDown_ = false;
    std::size_t threads_ = 0;
    std::list<std::thread> handles_;
    std::size_t idle_ = 0;
    std::deque<std::shared_ptr<RunningTask>> waiting_;
    std::vector<std::shared_ptr<RunningTask>> running_;
    std::deque<std::function<void()>> completions_;
};

Workers::Workers(std::function<void()> wake) : state_(std::make_shared<State>(std::move(wake))) {}

Workers::~Workers()
{
    Shutdown(std::chrono::milliseconds(0));
}

std::shared_ptr<Workers::Task> Workers::Run(std::function<void()> work)
{
    return state_->Run(std::move(work));
}

void Workers::Post(std::function<void()> completion)
{
    state_->Post(std::move(completion));
}

void Workers::RunCompletions()
{
    for (const std::function<void()>& completion : state_->TakeCompletions())
        completion();
}

bool Workers::Pause(std::chrono::milliseconds time)
{
    if (RunningTask::current != nullptr)
        return RunningTask::current->Pause(time);
    std::this_thread::sleep_for(time);
    return true;
}

bool Workers::Shutdown(std::chrono::milliseconds limit)
{
    return state_->Shutdown(limit);
}

} // namespace Kestrany::Agent::OpenId
