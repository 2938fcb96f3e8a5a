// Flat interface: product configuration.

#include "api/FlatGuard.h"
#include "api/FlatState.h"

using namespace Kestrany::IdentityServices;

namespace Kestrany::IdentityServices {

talix_product_config_slot productConfigSlot = {nullptr};

namespace {

/// Does not ask whether the library is initialized: every handle is empty then.
template <auto Setter>
void SetProductText(talix_product_config handle, const char* text)
{
    Guarded(false, [&] {
        if (handle && handle->config)
            (handle->config->*Setter)(text);
        return true;
    });
}

} // namespace
} // namespace Kestrany::IdentityServices

talix_product_config TALIX_CALL talix_create_product_config(const char* client_id, const char* scope)
{
    return Guarded(talix_product_config{nullptr}, [&]() -> talix_product_config {
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
    return Guarded(IdFailed, [&] {
        if (!IsStarted())
            return IdNotInitialized;
        // Read before the client is asked for, without a check: by contract a null or empty handle is the caller's
        // fault.
        const ProductConfig* const config = handle->config;
        ISSOClient* client = ObtainInterface<ISSOClient>();
        return client ? client->SetProductConfig(server, *config) : IdClientUnavailable;
    });
}
