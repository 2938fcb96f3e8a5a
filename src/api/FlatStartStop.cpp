// Flat interface: start, stop and the questions about state.

#include "api/FlatGuard.h"
#include "api/FlatState.h"
#include "api/LocalSystemAccount.h"

using namespace Kestrany::IdentityServices;

talix_status_code TALIX_CALL talix_init(void)
{
    if (RunsAsLocalSystem())
        return IdRunningAsLocalSystem;
    // The handle may be left from a start that the class interface stopped: it goes even if the plugin throws.
    const talix_status_code result = Guarded(IdFailed, [] { return Mapped(IdServicesMgr::Initialize()); });
    productConfigSlot.config = nullptr;
    return result;
}

talix_status_code TALIX_CALL talix_deinit(void)
{
    // The plugin's result decides, not what the host is told. A plugin that throws is stopped all the same: IdFailed
    // stands for its result, and is at least IdSuccess.
    const talix_status_code result = Guarded(IdFailed, [] { return IdServicesMgr::Uninitialize(); });
    if (result >= IdSuccess)
        ForgetEventCallbacks();
    productConfigSlot.config = nullptr;
    return Mapped(result);
}

talix_bool TALIX_CALL talix_get_boolean(int32_t key)
{
    // A token that nothing is known of counts as expired, as without client.
    const talix_bool failure = key == TALIX_KEY_TOKEN_EXPIRED;
    return Guarded(failure, [key]() -> talix_bool {
        if (key == TALIX_KEY_INITIALIZED)
            return IsStarted();
        const IdServicesMgr* manager = IdServicesMgr::GetInstance();
        if (!manager)
            return false; // By contract for the expired token, too, where a missing client returns true.
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
