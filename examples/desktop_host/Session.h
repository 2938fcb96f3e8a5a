// The program's use of Orlindex.dll. Calls that may block run on worker threads; their outcomes come back to the thread
// of the window.
#ifndef DESKTOP_HOST_SESSION_H
#define DESKTOP_HOST_SESSION_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <windows.h>

#include "Worker.h"
#include "orlindex/talix.h"

namespace DesktopHost {

enum class Task
{
    Start,   ///< Start the library and identify the product.
    SignIn,  ///< Sign the user in; may take minutes.
    SignOut, ///< Sign the user out.
    Renew,   ///< Get a new access token.
    Read,    ///< Read who is signed in.
    Cancel,  ///< End a running SignIn.
};

/// Who is signed in, as the library said last.
struct UserState
{
    bool signedIn = false;
    std::wstring userName;
    std::int64_t tokenExpiry = 0; ///< Seconds since 1970 UTC; 0 if it is not known.
    bool tokenExpired = false;
};

struct Outcome
{
    Task task = Task::Read;
    talix_status_code code = IdSuccess;
    UserState state; ///< As it is after the task, except for Cancel and a failed Start.
};

struct Event
{
    std::int32_t code = 0;
    std::int32_t status = 0;
};

/// All members are called on the thread of the window.
class Session
{
public:
    /// `message` is posted to the window when outcomes can be taken.
    Session(HWND window, UINT message);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    /// Waits for the tasks that still run, and stops the library.
    ~Session();

    void Begin(Task task);

    /// The outcomes since the last call, in their order.
    std::vector<Outcome> TakeOutcomes();

    /// Whether every task that began has an outcome that was taken.
    bool IsIdle() const { return unfinished_ == 0; }

    /// Receives events from now on. Requires a successful Start.
    void ListenTo(std::function<void(const Event&)> receiver);

    /// Delivers waiting events to the receiver. A timer of the window calls it.
    void DispatchEvents();

private:
    static void TALIX_CALL OnEvent(std::int32_t eventCode, std::int32_t status, void* session);

    Outcome Perform(Task task);
    talix_status_code StartLibrary();
    void Report(const Outcome& outcome);

    const HWND window_;
    const UINT message_;
    std::function<void(const Event&)> receiver_;
    std::atomic<bool> started_{false}; ///< talix_init succeeded: talix_deinit is due.
    int unfinished_ = 0;
    std::mutex mutex_;
    std::vector<Outcome> outcomes_; ///< Guarded by the mutex.
    // The calls wait for the server application, a login also for the user. A login that waits ends if another thread
    // signs out, so Cancel has a thread of its own.
    Worker worker_;
    Worker canceller_;
};

} // namespace DesktopHost

#endif
