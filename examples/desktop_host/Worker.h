// A thread that runs work items one after the other, for calls that block.
#ifndef DESKTOP_HOST_WORKER_H
#define DESKTOP_HOST_WORKER_H

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace DesktopHost {

class Worker
{
public:
    Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker() { Finish(); }

    /// Returns at once; the work runs after the work that was added before.
    void Add(std::function<void()> work);

    /// Waits until all work is done, and ends the thread.
    void Finish();

private:
    void Run();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> queue_;
    bool ending_ = false;
    std::thread thread_; // last: it uses the others
};

} // namespace DesktopHost

#endif
