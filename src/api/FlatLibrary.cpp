// Flat interface: start and stop, the library's state and versions.

#include "api/FlatState.h"
#include "api/NoThrow.h"
#include "api/TextOut.h"
#include "base/Platform.h"
#include "base/Product.h"
#include "locate/Registry.h"

using namespace Kestrany::IdentityServices;

talix_status_code TALIX_CALL talix_init(void)
{
    if (RunsAsLocalSystem())
        return IdRunningAsLocalSystem;
    // The handle may be left from a start that IdServicesMgr::Uninitialize stopped: empty it even if the plugin throws.
    const talix_status_code result = NoThrow(IdFailed, [] { return NormalizeStatus(IdServicesMgr::Initialize()); });
    productConfigSlot.config = nullptr;
    return result;
}

talix_status_code TALIX_CALL talix_deinit(void)
{
    // Checks the result before it is normalized. If the plugin throws, the library has stopped nevertheless: the result
    // is then IdFailed, which is not below IdSuccess.
    const talix_status_code result = NoThrow(IdFailed, [] { return IdServicesMgr::Uninitialize(); });
    // not covered: The result is never below it: the manager returns IdSuccess, and an exception becomes IdFailed.
    if (result >= IdSuccess)
        ForgetEventCallbacks();
    productConfigSlot.config = nullptr;
    return NormalizeStatus(result);
}

talix_bool TALIX_CALL talix_get_boolean(int32_t key)
{
    // An unknown token counts as expired, as it does without client.
    const talix_bool failure = key == TALIX_KEY_TOKEN_EXPIRED;
    return NoThrow(failure, [key]() -> talix_bool {
        if (key == TALIX_KEY_INITIALIZED)
            return IsStarted();
        const IdServicesMgr* manager = IdServicesMgr::GetInstance();
        if (!manager)
            return false; // By contract also for the expired token, although a missing client returns true.
        switch (key)
        {
        case TALIX_KEY_LOGGED_IN:
            return manager->IsLoggedIn();
        case TALIX_KEY_LOGIN_VALID:
            return manager->IsLoginValid();
        case TALIX_KEY_TOKEN_EXPIRED:
            return manager->IsOAuth2TokenExpired();
        default:
            return false;
        }
    });
}

talix_status_code TALIX_CALL talix_get_versions(talix_versions* versions)
{
    return NoThrow(IdFailed, [&] {
        if (!versions) // By contract not a failure: there is nothing to write.
            return IdSuccess;
        const bool server = versions->server_version && versions->server_version_size != 0;
        const bool sdk = versions->sdk_version && versions->sdk_version_size != 0;
        if (!server && !sdk)
            return IdInvalidVersionRecord;

        const std::string serverVersion = GetLatestRegistryLocation(ServerApplicationKey).version;
        // By contract both are copied without a check of their sizes, even if only one is usable: the runtime's copy
        // rejects a target that is null or too small. If both use the same buffer, it keeps the second text.
        BoundedCopy(versions->server_version, CallerCapacity(versions->server_version_size), serverVersion.c_str());
        BoundedCopy(versions->sdk_version, CallerCapacity(versions->sdk_version_size), ProductVersion);
        return IdSuccess;
    });
}
