#include "Codes.h"

#include <algorithm>
#include <iterator>

namespace DesktopHost {

namespace {

struct Code
{
    std::int32_t code;
    const wchar_t* name; ///< Empty for a code of the plugin module.
    const wchar_t* meaning;
};

/// Of the sign-in agent.
constexpr std::int32_t LoginCancelled = 4019;

const Code Codes[] = {
    {IdSuccess, L"IdSuccess", L"It worked."},
    {IdNotInitialized, L"IdNotInitialized", L"The library is not started."},
    {IdFailed, L"IdFailed", L"The call failed. The log of the plugin module says why."},
    {IdClientUnavailable, L"IdClientUnavailable",
     L"The sign-in components were not found, or they are not signed by a trusted maker."},
    {IdInvalidClientId, L"IdInvalidClientId", L"The program has no client ID."},
    {IdBufferTooSmall, L"IdBufferTooSmall", L"A text is longer than the program expects."},
    {IdInvalidHostWindow, L"IdInvalidHostWindow", L"The program has no window."},
    {IdNotSupported, L"IdNotSupported", L"The library does not support this operation."},
    {IdRunningAsLocalSystem, L"IdRunningAsLocalSystem",
     L"The program runs under the local system account, where no user can sign in."},
    {IdInvalidVersionRecord, L"IdInvalidVersionRecord", L"The program passed no room for the versions."},
    {IdInvalidProxyRecord, L"IdInvalidProxyRecord", L"The program passed no proxy settings."},
    {IdInvalidProxyHost, L"IdInvalidProxyHost", L"The proxy settings name no host."},
    {IdInvalidProxyPort, L"IdInvalidProxyPort", L"The port of the proxy is outside 1 to 65535."},
    {IdInvalidProfileRecord, L"IdInvalidProfileRecord", L"The program passed no room for the profile."},
    {IdApiUnavailable, L"IdApiUnavailable", L"The installed plugin module does not offer this feature."},
    {IdServerQuitFailed, L"IdServerQuitFailed", L"Not all server processes ended in time."},
    // Results of the sign-in agent that a user can meet. Another plugin module may have others.
    {4001, L"", L"Nobody is signed in."},
    {4002, L"", L"The login has expired. Sign in again."},
    {4003, L"", L"The token has expired. Renew it."},
    {4004, L"", L"Another program refused the logout."},
    {4014, L"", L"The server application cannot be started or reached."},
    {4015, L"", L"The server application ended before it responded."},
    {4016, L"", L"The server application did not respond in time."},
    {4017, L"", L"The scenario file of the sign-in agent is wrong."},
    {4018, L"", L"The sign-in was refused."},
    {LoginCancelled, L"", L"The sign-in was cancelled."},
    {4020, L"", L"The sign-in was not completed in time."},
};

const Code* Find(std::int32_t code)
{
    const auto found =
        std::find_if(std::begin(Codes), std::end(Codes), [code](const Code& entry) { return entry.code == code; });
    return found == std::end(Codes) ? nullptr : found;
}

} // namespace

std::wstring CodeText(std::int32_t code)
{
    const Code* const entry = Find(code);
    std::wstring text = std::to_wstring(code);
    if (entry != nullptr && *entry->name != L'\0')
        text += std::wstring(L" (") + entry->name + L")";
    return text;
}

std::wstring Meaning(std::int32_t code)
{
    const Code* const entry = Find(code);
    return entry != nullptr ? entry->meaning : L"This is a result of the installed plugin module.";
}

std::wstring EventName(std::int32_t eventCode)
{
    switch (eventCode)
    {
    case TALIX_EVENT_LOGGED_IN:
        return L"Signed in";
    case TALIX_EVENT_LOGGED_OUT:
        return L"Signed out";
    case TALIX_EVENT_ACCOUNT_CREATED:
        return L"Account created";
    case TALIX_EVENT_TOKEN_REFRESHED:
        return L"Token renewed";
    case TALIX_EVENT_TOKEN_AVAILABLE:
        return L"Token available";
    case TALIX_EVENT_LOGIN_RESTORED:
        return L"Login restored";
    default:
        return L"Event " + std::to_wstring(eventCode);
    }
}

bool IsCancelled(talix_status_code code)
{
    return static_cast<std::int32_t>(code) == LoginCancelled;
}

} // namespace DesktopHost
