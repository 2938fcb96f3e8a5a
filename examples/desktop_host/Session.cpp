#include "Session.h"

#include <utility>

#include "Text.h"
#include "TokenExpiry.h"

namespace DesktopHost {

namespace {

constexpr std::int32_t NameSize = 1024;

UserState ReadState()
{
    UserState state;
    state.signedIn = talix_get_boolean(TALIX_KEY_LOGGED_IN) != 0;
    if (!state.signedIn)
        return state;

    char name[NameSize] = "";
    talix_user_info info{}; // Attributes that stay null are not filled.
    info.display_name = name;
    info.display_name_size = NameSize;
    if (talix_get_user_info(&info) == IdSuccess)
        state.userName = FromUtf8(name);
    state.tokenExpiry = TokenExpiry();
    state.tokenExpired = talix_get_boolean(TALIX_KEY_TOKEN_EXPIRED) != 0;
    return state;
}

} // namespace

Session::Session(HWND window, UINT message) : window_(window), message_(message) {}

Session::~Session()
{
    // Nothing may be inside the library when it stops. The window waits for its tasks before it is destroyed, so this
    // seldom waits.
    canceller_.Finish();
    worker_.Finish();
    if (!started_)
        return;
    if (receiver_)
        talix_remove_event_callback(&Session::OnEvent);
    talix_deinit();
}

void Session::Begin(Task task)
{
    ++unfinished_;
    (task == Task::Cancel ? canceller_ : worker_).Add([this, task] { Report(Perform(task)); });
}

std::vector<Outcome> Session::TakeOutcomes()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    unfinished_ -= static_cast<int>(outcomes_.size());
    return std::exchange(outcomes_, {});
}

void Session::ListenTo(std::function<void(const Event&)> receiver)
{
    receiver_ = std::move(receiver);
    talix_add_event_callback(&Session::OnEvent, this);
}

void Session::DispatchEvents()
{
    talix_dispatch_events();
}

void TALIX_CALL Session::OnEvent(std::int32_t eventCode, std::int32_t status, void* session)
{
    // Must not throw: the exception would pass through the plugin module.
    try
    {
        static_cast<Session*>(session)->receiver_({eventCode, status});
    }
    catch (...)
    {
    }
}

Outcome Session::Perform(Task task)
{
    Outcome outcome;
    outcome.task = task;
    switch (task)
    {
    case Task::Start:
        outcome.code = StartLibrary();
        break;
    case Task::SignIn:
        outcome.code = talix_login();
        break;
    case Task::SignOut:
        outcome.code = talix_logout(TALIX_LOGOUT_DEFAULT);
        break;
    case Task::Renew:
        outcome.code = talix_refresh_token();
        break;
    case Task::Cancel:
        // A logout ends a login that waits. If the login has just succeeded, it ends that login, as the user wished.
        outcome.code = talix_logout(TALIX_LOGOUT_FORCE);
        return outcome;
    case Task::Read:
        break;
    }
    if (started_)
        outcome.state = ReadState();
    return outcome;
}

talix_status_code Session::StartLibrary()
{
    talix_status_code code = talix_init();
    if (code != IdSuccess)
        return code;
    started_ = true;
    const talix_product_config product = talix_create_product_config("example-desktop-host", "openid profile");
    if (product == nullptr)
        return IdFailed;
    talix_set_product_line_name(product, "Examples");
    talix_set_product_release_id(product, "1");
    talix_set_product_build_id(product, "1.0.0");
    code = talix_set_product_config(talix_get_server(), product);
    // The plugin's own windows belong to this one.
    return code == IdSuccess ? talix_set_host(window_) : code;
}

void Session::Report(const Outcome& outcome)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        outcomes_.push_back(outcome);
    }
    PostMessageW(window_, message_, 0, 0);
}

} // namespace DesktopHost
