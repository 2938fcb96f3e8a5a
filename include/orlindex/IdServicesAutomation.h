#ifndef ORLINDEX_IDSERVICESAUTOMATION_H
#define ORLINDEX_IDSERVICESAUTOMATION_H

#include <cstdint>

#include "IdErrorCode.h"
#include "OverridingConfig.h"

namespace Kestrany::IdentityServices {

/// Operations for hosts that run unattended: tests and automation.
class ORLINDEX_API IdServicesAutomation
{
public:
    /// Kind of an overriding configuration.
    enum OverridingType : std::int32_t
    {
        Call = 0,   ///< A CallConfig.
        Backoff = 1 ///< A BackoffConfig.
    };

    /// Signs a user in without user interaction (ISSOClient slot 27). The texts are UTF-16 with a terminating zero. The
    /// plugin defines the meaning of all arguments; they are passed on unchanged.
    ///
    /// Returns the plugin's result; IdClientUnavailable before IdServicesMgr::Initialize, after the last
    /// IdServicesMgr::Uninitialize, or without a client interface. The plugin runs on the caller's thread.
    static IdErrorCode Login(const wchar_t* user, const wchar_t* secret, bool flag, const wchar_t* context);

    /// Overrides how the plugin calls its identity service (`Call`, ISSOClient slot 32) or how it backs off after
    /// failures (`Backoff`, slot 33). The plugin receives the fields of `config` unchanged; the library does not store
    /// them.
    ///
    /// Returns the plugin's result; IdClientUnavailable before IdServicesMgr::Initialize, after the last
    /// IdServicesMgr::Uninitialize, without a client interface, and for any other type. Throws std::bad_cast if
    /// `config` is not of the class that `type` names. The plugin runs on the caller's thread.
    static IdErrorCode SetOverridingConfig(BaseConfig& config, OverridingType type);
};

} // namespace Kestrany::IdentityServices

#endif
