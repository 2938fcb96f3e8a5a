#ifndef AGENT_IDENTITY_OPENID_WINDOWS_WINHTTPCLIENT_H
#define AGENT_IDENTITY_OPENID_WINDOWS_WINHTTPCLIENT_H

#include <memory>
#include <optional>

#include <windows.h>

#include <winhttp.h>

#include "identity/LoginService.h"
#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// Requests by the system's HTTP client: with the system's proxy settings and its trusted roots. Certificates are
/// always verified, and nothing can turn that off. Connections are kept for later requests.
///
/// A request waits, at most as long as its limit and a little more. It cannot be cancelled: closing its handle does not
/// always end it. Whoever does not want to wait leaves it to a thread, and does not wait for that thread.
class WinHttpClient final : public Http
{
public:
    /// nullopt for the system's proxy settings. Throws std::runtime_error if the system refuses.
    explicit WinHttpClient(std::optional<ProxySettings> proxy = std::nullopt);
    ~WinHttpClient() override;
    WinHttpClient(const WinHttpClient&) = delete;
    WinHttpClient& operator=(const WinHttpClient&) = delete;

    HttpReply Send(const HttpRequest& request) override;

private:
    struct Closer
    {
        void operator()(void* handle) const { WinHttpCloseHandle(handle); }
    };
    using InternetHandle = std::unique_ptr<void, Closer>;

    class Exchange;

    std::optional<ProxySettings> proxy_;
    InternetHandle session_;
};

} // namespace Kestrany::Agent::OpenId

#endif
