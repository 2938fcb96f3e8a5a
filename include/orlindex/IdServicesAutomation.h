#ifndef ORLINDEX_IDSERVICESAUTOMATION_H
#define ORLINDEX_IDSERVICESAUTOMATION_H

#include <cstdint>

#include "IdErrorCode.h"
#include "OverridingConfig.h"

namespace Kestrany::IdentityServices {

/// Operations for hosts that run without a person in front of them: tests and automation.
class ORLINDEX_API IdServicesAutomation
{
public:
    /// Kind of an overriding configuration.
    enum OverridingType : std::int32_t
    {
        Call = 0,   ///< A CallConfig.
        Backoff = 1 ///< A BackoffConfig.
    };

    /// Signs a user in without asking anyone. The client plugin module's automated login (ISSOClient slot 27) gives the
    /// texts, which are UTF-16 with a terminating zero, and the flag their meaning; they are passed on unchanged.
    ///
    /// Answers the plugin's result; IdClientUnavailable before IdServicesMgr::Initialize, after the last
    /// IdServicesMgr::Uninitialize, or without a client interface. The plugin runs on the caller's thread.
    static IdErrorCode Login(const wchar_t* user, const wchar_t* secret, bool flag, const wchar_t* context);

    /// Overrides how the plugin calls its identity service (`Call`, ISSOClient slot 32) or backs off after failures
    /// (`Backoff`, slot 33). The values are unpacked and passed on unchanged; the library keeps none.
    ///
    /// Answers the plugin's result; IdClientUnavailable before IdServicesMgr::Initialize, after the last
    /// IdServicesMgr::Uninitialize, without a client interface, and for any other type. Raises std::bad_cast where
    /// `config` is not of the class that `type` names. The plugin runs on the caller's thread.
    static IdErrorCode SetOverridingConfig(BaseConfig& config, OverridingType type);
};

} // namespace Kestrany::IdentityServices

#endif
