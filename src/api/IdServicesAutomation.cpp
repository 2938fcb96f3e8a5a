#include "orlindex/IdServicesAutomation.h"

#include "load/contract/ISSOClient.h"
#include "locate/Forwarding.h"
#include "orlindex/IdServicesMgr.h"

namespace Kestrany::IdentityServices {

IdErrorCode IdServicesAutomation::Login(const wchar_t* user, const wchar_t* secret, bool flag, const wchar_t* context)
{
    const IdServicesMgr* const manager = IdServicesMgr::GetInstance();
    if (!manager || !manager->d)
        return IdClientUnavailable;
    return Forward<&ISSOClient::AutomatedLogin>(IdClientUnavailable, user, secret, flag, context);
}

IdErrorCode IdServicesAutomation::SetOverridingConfig(BaseConfig& config, OverridingType type)
{
    const IdServicesMgr* const manager = IdServicesMgr::GetInstance();
    if (!manager || !manager->d)
        return IdClientUnavailable;
    // Obtained before the configuration is checked, so that the log always shows a missing client.
    ISSOClient* const client = ObtainInterface<ISSOClient>();
    switch (type)
    {
    case Call: {
        const CallConfig call = dynamic_cast<CallConfig&>(config);
        return client ? client->OverrideCallConfig(call.interval, call.failInterval, call.minJitter, call.maxJitter,
                                                   call.url.c_str())
                      : IdClientUnavailable;
    }
    case Backoff: {
        const auto& backoff = dynamic_cast<BackoffConfig&>(config);
        return client ? client->OverrideBackoffConfig(backoff.initialInterval, backoff.maxInterval, backoff.multiplier,
                                                      backoff.maxRetries, backoff.jitter)
                      : IdClientUnavailable;
    }
    }
    return IdClientUnavailable; // By contract the same for an unknown type.
}

} // namespace Kestrany::IdentityServices
