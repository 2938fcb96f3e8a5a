#include "HostState.h"

#include <cstdio>
#include <ctime>
#include <iterator>

#include "Codes.h"
#include "Text.h"

namespace DesktopHost {

namespace {

std::wstring FailureText(const wchar_t* what, talix_status_code code)
{
    return std::wstring(what) + L"\r\nCode " + CodeText(code) + L": " + Meaning(code);
}

const wchar_t* FailedTask(Task task)
{
    switch (task)
    {
    case Task::SignIn:
        return L"The sign-in failed.";
    case Task::SignOut:
        return L"The sign-out failed.";
    default:
        return L"The token was not renewed.";
    }
}

std::wstring Status(const HostState& state)
{
    if (state.hasFailed)
        return L"Sign-in is not available";
    if (!state.running)
        return state.user.signedIn ? L"Signed in" : L"Not signed in";
    switch (*state.running)
    {
    case Task::SignIn:
        return state.isCancelling ? L"Cancelling the sign-in..." : L"Signing in...";
    case Task::SignOut:
        return L"Signing out...";
    case Task::Renew:
        return L"Renewing the token...";
    default:
        return L"Starting...";
    }
}

std::wstring TokenText(const UserState& user)
{
    if (!user.signedIn)
        return {};
    if (user.tokenExpiry == 0)
        return user.tokenExpired ? L"Expired" : L"Valid";
    const std::int64_t left = user.tokenExpiry - static_cast<std::int64_t>(std::time(nullptr));
    if (left <= 0)
        return L"Expired";
    wchar_t text[64] = L"";
    std::swprintf(text, std::size(text), L"Expires in %lld:%02lld:%02lld", static_cast<long long>(left / 3600),
                  static_cast<long long>(left / 60 % 60), static_cast<long long>(left % 60));
    return text;
}

} // namespace

std::wstring StartFailureText(talix_status_code code)
{
    std::wstring text = FailureText(L"Sign-in is not available.", code);
    if (code == IdRunningAsLocalSystem)
        return text + L"\r\nStart the program as the user who signs in.";
    // A second start in this process would fail at once.
    return text + L"\r\nTo find out why, run this command. Then start this program again.\r\n" + DoctorCommand();
}

std::wstring TaskFailureText(Task task, talix_status_code code)
{
    return FailureText(FailedTask(task), code);
}

Display ToDisplay(const HostState& state)
{
    Display display;
    display.status = Status(state);
    display.user = state.user.signedIn ? state.user.userName : L"";
    display.token = TokenText(state.user);
    display.message = state.message;
    display.isWaiting = state.running.has_value();
    // A Cancel that still runs would end the next login.
    const bool isReady = state.isStarted && !state.running && !state.isCancelBusy;
    display.canSignIn = isReady && !state.user.signedIn;
    display.canSignOut = isReady && state.user.signedIn;
    display.canRenew = display.canSignOut;
    display.canCancel = state.running == Task::SignIn;
    display.canCopy = state.hasFailed;
    return display;
}

} // namespace DesktopHost
