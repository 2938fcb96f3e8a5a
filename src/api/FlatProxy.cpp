// Flat interface: proxy settings. Where the port is checked before the state of the library, and where after, differs
// from function to function and is part of the contract.

#include "api/FlatGuard.h"

using namespace Kestrany::IdentityServices;

namespace {

bool IsPort(int32_t port)
{
    return port >= 1 && port <= 65535;
}

/// Without a host any proxy is meant, and the port does not count.
bool NamesBadPort(const char* host, int32_t port)
{
    return host && *host && !IsPort(port);
}

} // namespace

talix_status_code TALIX_CALL talix_has_proxy_info(const char* host, int32_t port)
{
    if (!IsStarted())
        return IdNotInitialized;
    if (NamesBadPort(host, port))
        return IdInvalidProxyPort;
    return WithClient(IdClientUnavailable, [&](ISSOClient& client) {
        return Mapped(client.HasProxyInfo(host, static_cast<unsigned int>(port)));
    });
}

talix_status_code TALIX_CALL talix_get_proxy_info(talix_proxy_info* info, const char* host, int32_t port)
{
    if (!info)
        return IdInvalidProxyRecord;
    if (NamesBadPort(host, port))
        return IdInvalidProxyPort;
    return WithClient(IdClientUnavailable, [&](ISSOClient& client) {
        return Mapped(client.GetProxyInfo(host, static_cast<unsigned int>(port), info));
    });
}

talix_status_code TALIX_CALL talix_set_proxy_info(const talix_proxy_info* info)
{
    if (!info)
        return IdInvalidProxyRecord;
    if (!info->host || info->host_size == 0 || !*info->host)
        return IdInvalidProxyHost;
    if (!IsPort(info->port))
        return IdInvalidProxyPort;
    return WithClient(IdClientUnavailable, [&](ISSOClient& client) { return Mapped(client.SetProxyInfo(info)); });
}

talix_status_code TALIX_CALL talix_clear_proxy_info(void)
{
    return WithClient(IdClientUnavailable, [](ISSOClient& client) { return Mapped(client.ClearProxyInfo()); });
}
