#include "identity/openid/Failure.h"

#include <algorithm>

#include "identity/openid/Limits.h"

namespace Kestrany::Agent::OpenId {

const std::vector<FailureKind>& FailureKinds()
{
    static const std::vector<FailureKind> kinds = {
        {IdLoginCancelled, "The sign-in was cancelled", "Sign in again."},
        {IdLoginTimedOut, "Nobody finished the sign-in in time",
         "Sign in again, or set a longer \"signInSeconds\" in the configuration."},
        {IdNotStored, "The login could not be stored",
         "Check the rights and the free space of the agent's data folder."},
        {IdTextTooLong, "A text is longer than a host can fetch",
         "Have the provider issue a shorter token, for example with fewer claims or another audience."},
        {IdProviderConfigInvalid, "The configuration of the provider is wrong",
         "Correct the configuration file, then quit the server application."},
        {IdProviderUnreachable, "The provider cannot be reached",
         "Check the address of the issuer, the network connection and the proxy settings."},
        {IdTlsRefused, "The provider's TLS certificate was refused",
         "Check that the certificate is valid for this host name, has not expired, and that Windows trusts its root."},
        {IdDiscoveryMalformed, "The provider's discovery document is not usable",
         "Check that \"issuer\" names an OpenID Connect provider."},
        {IdDiscoveryOfOtherIssuer, "The discovery document belongs to another issuer",
         "Write \"issuer\" in the configuration exactly as the provider does."},
        {IdPkceNotOffered, "The provider does not offer PKCE with S256",
         "Enable it at the provider. If the provider supports it and only does not list it, set \"assumePkce\"."},
        {IdNoRedirectPort, "No port is free for the redirect from the browser",
         "Close the program that uses the port, or add ports to \"redirectPorts\" and to the registration."},
        {IdBrowserNotOpened, "The browser could not be opened",
         "Set a default browser, or open the address in the log by hand."},
        {IdSignInDenied, "The sign-in was denied", "Sign in again, with an account that may use this application."},
        {IdSignInFailedAtProvider, "The provider ended the sign-in with an error",
         "Check the client ID, the redirect address and the scope in the registration at the provider."},
        {IdStateWrong, "A redirect with a wrong state was ignored",
         "Sign in again, and finish in the browser window that opens last."},
        {IdRedirectOfOtherIssuer, "A redirect came from another issuer",
         "Do not sign in at this provider: somebody may be mixing up providers. Report it."},
        {IdRedirectMalformed, "The redirect from the browser is malformed",
         "Sign in again. If it happens again, report it to the provider."},
        {IdTokenEndpointError, "The token endpoint returned an error",
         "Check the client ID in the registration: it must be a public client with the authorization code flow."},
        {IdTokenReplyMalformed, "The reply of the token endpoint is malformed", "Report it to the provider."},
        {IdIdTokenRefused, "The ID token was refused", "Report it to the provider."},
        {IdSubjectDiffers, "The reply is about another user", "Sign in again. If it happens again, report it."},
        {IdGrantRefused, "The provider no longer accepts the login", "Sign in again."},
        {IdReplyTooLarge, "A reply of the provider is too large", "Check that \"issuer\" names the right provider."},
        {IdClockOff, "The clock of this machine differs from the provider's clock",
         "Set the clock, or set a larger \"clockToleranceSeconds\" in the configuration."},
        {IdProviderFailed, "The provider returned an unexpected reply", "Try again later."},
        {IdKeysMalformed, "The provider's key set is not usable", "Report it to the provider."},
        {IdUserInfoMalformed, "The reply of the userinfo endpoint is not usable", "Report it to the provider."},
        {IdDeviceGrantNotOffered, "The provider does not offer sign-in with another device",
         "Set \"signIn\" to \"browser\" in the configuration, or enable the device grant at the provider."},
        {IdDeviceReplyMalformed, "The reply of the device endpoint is malformed", "Report it to the provider."},
        {IdDeviceCodeExpired, "The code for the other device has expired", "Sign in again, with the new code."},
        {IdPushedRequestRefused, "The provider refused the pushed authorization request",
         "Check the client ID, the redirect address and the scope in the registration at the provider."},
        {IdLoginModeNotOffered, "The login mode is not offered", "Use the default login mode, or the browser's."},
    };
    return kinds;
}

std::string LogLine(const Failure& failure)
{
    const std::vector<FailureKind>& kinds = FailureKinds();
    const auto kind =
        std::find_if(kinds.begin(), kinds.end(), [&](const FailureKind& each) { return each.code == failure.code; });
    const bool isKnown = kind != kinds.end();
    std::string line = isKnown ? kind->summary : "Sign-in failed";
    line += " (" + std::to_string(static_cast<int>(failure.code)) + ")";
    if (!failure.expected.empty())
        line += ": expected " + failure.expected;
    if (!failure.came.empty())
        line += (failure.expected.empty() ? ": came " : "; came ") + failure.came;
    line += ".";
    return isKnown ? line + " " + kind->remedy : line;
}

std::string Shown(std::string_view text)
{
    std::string shown(text.substr(0, Limits::ShownText));
    std::replace_if(shown.begin(), shown.end(), [](char letter) { return letter < ' ' || letter > '~'; }, '?');
    return '"' + shown + (text.size() > shown.size() ? "\"..." : "\"");
}

std::string ShownWithout(std::string_view text, const std::vector<std::string_view>& secrets)
{
    std::string safe(text);
    for (const std::string_view secret : secrets)
    {
        if (secret.empty())
            continue;
        for (std::size_t found = safe.find(secret); found != std::string::npos; found = safe.find(secret, found + 1))
            safe.replace(found, secret.size(), "*");
    }
    return Shown(safe);
}

} // namespace Kestrany::Agent::OpenId
