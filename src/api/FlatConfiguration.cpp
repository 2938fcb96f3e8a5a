// Flat interface: product configuration and proxies.

#include "api/FlatState.h"
#include "api/NoThrow.h"

using namespace Kestrany::IdentityServices;

namespace Kestrany::IdentityServices {

talix_product_config_slot productConfigSlot = {nullptr};

namespace {

/// Does not ask whether the library is initialized: every handle is empty then.
template <auto Setter>
void SetProductText(talix_product_config handle, const char* text)
{
    NoThrow(false, [&] {
        if (handle && handle->config)
            (handle->config->*Setter)(text);
        return true;
    });
}

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
} // namespace Kestrany::IdentityServices

talix_product_config TALIX_CALL talix_create_product_config(const char* client_id, const char* scope)
{
    return NoThrow(talix_product_config{nullptr}, [&]() -> talix_product_config {
        IdServicesMgr* manager = IdServicesMgr::GetInstance();
        if (!IsStarted() || !manager)
            return nullptr;
        productConfigSlot.config = manager->GetProductConfigObj();
        productConfigSlot.config->SetOAuth2ClientID(client_id); // A null text is refused there and is no failure here.
        productConfigSlot.config->SetOAuth2TokenScope(scope);
        return &productConfigSlot;
    });
}

void TALIX_CALL talix_set_product_line_name(talix_product_config handle, const char* text)
{
    SetProductText<&ProductConfig::SetProductLineName>(handle, text);
}

void TALIX_CALL talix_set_product_release_id(talix_product_config handle, const char* text)
{
    SetProductText<&ProductConfig::SetProductReleaseId>(handle, text);
}

void TALIX_CALL talix_set_product_build_id(talix_product_config handle, const char* text)
{
    SetProductText<&ProductConfig::SetProductBuildId>(handle, text);
}

talix_status_code TALIX_CALL talix_set_product_config(Server server, talix_product_config handle)
{
    return NoThrow(IdFailed, [&] {
        if (!IsStarted())
            return IdNotInitialized;
        // Read before the client is asked for, without a check: by contract a null or empty handle is the caller's
        // fault.
        const ProductConfig* const config = handle->config;
        ISSOClient* client = ObtainInterface<ISSOClient>();
        return client ? client->SetProductConfig(server, *config) : IdClientUnavailable;
    });
}

// Where the port is checked before the state of the library, and where after, differs from function to function and is
// part of the contract.

talix_status_code TALIX_CALL talix_has_proxy_info(const char* host, int32_t port)
{
    if (!IsStarted())
        return IdNotInitialized;
    if (NamesBadPort(host, port))
        return IdInvalidProxyPort;
    return WithClient(IdClientUnavailable, [&](ISSOClient& client) {
        return NormalizeStatus(client.HasProxyInfo(host, static_cast<unsigned int>(port)));
    });
}

talix_status_code TALIX_CALL talix_get_proxy_info(talix_proxy_info* info, const char* host, int32_t port)
{
    if (!info)
        return IdInvalidProxyRecord;
    if (NamesBadPort(host, port))
        return IdInvalidProxyPort;
    return WithClient(IdClientUnavailable, [&](ISSOClient& client) {
        return NormalizeStatus(client.GetProxyInfo(host, static_cast<unsigned int>(port), info));
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
    return WithClient(IdClientUnavailable,
                      [&](ISSOClient& client) { return NormalizeStatus(client.SetProxyInfo(info)); });
}

talix_status_code TALIX_CALL talix_clear_proxy_info(void)
{
    return WithClient(IdClientUnavailable, [](ISSOClient& client) { return NormalizeStatus(client.ClearProxyInfo()); });
}
