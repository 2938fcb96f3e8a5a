#ifndef AGENT_IDENTITY_OPENID_WORKERS_H
#define AGENT_IDENTITY_OPENID_WORKERS_H

#include <chrono>
#include <functional>
#include <memory>

namespace Kestrany::Agent::OpenId {

/// Threads for what waits: requests to a provider, and calls of the system that may be slow. Their results go back to
/// the one thread that owns the logins, as completions.
class Workers
{
public:
    /// Tasks that run at once; further ones wait for their turn.
    static constexpr std::size_t MaxThreads = 16;

    /// A task that was begun.
    class Task
    {
    public:
        virtual ~Task() = default;
        /// Ends its pauses at once. A request goes on until its limit; nobody waits for it.
        virtual void Cancel() = 0;
    };

    /// `wake`: called on any thread when there is a completion, at times after Shutdown; it must not call back.
    explicit Workers(std::function<void()> wake);
    /// Does not wait for tasks: their threads own what they use.
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    /// Performs the work on a thread of its own. It must not throw.
    std::shared_ptr<Task> Run(std::function<void()> work);
    /// Leaves a completion to the owner's thread. Any thread may call. Dropped after Shutdown.
    void Post(std::function<void()> completion);
    /// On the owner's thread: performs the completions, in the order in which they were posted.
    void RunCompletions();

    /// Within a task: waits. False if the task is cancelled. Elsewhere it waits without an end by cancelling.
    static bool Pause(std::chrono::milliseconds time);

    /// Cancels all tasks and waits until they end, at most for `limit`. True if none is left. Nothing is begun from now
    /// on, and completions are dropped.
    bool Shutdown(std::chrono::milliseconds limit);

private:
    class State;
    const std::shared_ptr<State> state_;
};

} // namespace Kestrany::Agent::OpenId

#endif
