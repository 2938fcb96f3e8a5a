// Flat interface: login, server, user and events at the plugin.

#include "api/NoThrow.h"
#include "load/contract/ISSOServerManager.h"

using namespace Kestrany::IdentityServices;

namespace {

/// A negative size counts as very large, by contract.
bool IsWanted(const char* buffer, int32_t size)
{
    return buffer && size != 0;
}

bool WantsAnything(const talix_user_info& info)
{
    return IsWanted(info.user_id, info.user_id_size) || IsWanted(info.user_name, info.user_name_size) ||
           IsWanted(info.first_name, info.first_name_size) || IsWanted(info.last_name, info.last_name_size) ||
           IsWanted(info.email, info.email_size) || IsWanted(info.display_name, info.display_name_size);
}

} // namespace

talix_status_code TALIX_CALL talix_set_login_mode(talix_login_mode mode)
{
    // A missing client is a missing feature here, where other functions return IdClientUnavailable.
    return WithClient(IdApiUnavailable, [&](ISSOClient& client) {
        return client.IsApiAvailable(ApiFeatureLoginMode) ? client.SetLoginMode(mode) : IdApiUnavailable;
    });
}

talix_status_code TALIX_CALL talix_login(void)
{
    return WithClient(IdClientUnavailable, [](ISSOClient& client) {
        int detail = 0;
        return NormalizeStatus(client.Login(detail));
    });
}

talix_status_code TALIX_CALL talix_logout(talix_logout_flags flags)
{
    return WithClient(IdClientUnavailable, [flags](ISSOClient& client) {
        int detail = 0;
        return NormalizeStatus(client.Logout(detail, flags));
    });
}

talix_status_code TALIX_CALL talix_set_server(Server server)
{
    return WithClient(IdClientUnavailable,
                      [&](ISSOClient& client) { return NormalizeStatus(client.SetServer(server)); });
}

TALIXEnvironment TALIX_CALL talix_get_environment(void)
{
    return NoThrow(TALIX_ENVIRONMENT_UNAVAILABLE, [] {
        if (!IsStarted())
            return TALIX_ENVIRONMENT_UNAVAILABLE;
        ISSOClient* client = ObtainInterface<ISSOClient>();
        return client ? client->GetEnvironment() : TALIX_ENVIRONMENT_NONE;
    });
}

Server TALIX_CALL talix_get_server(void)
{
    return NoThrow(TALIX_SERVER_UNAVAILABLE, [] {
        if (!IsStarted())
            return TALIX_SERVER_UNAVAILABLE;
        ISSOClient* client = ObtainInterface<ISSOClient>();
        return client ? client->GetServer() : static_cast<Server>(0);
    });
}

talix_status_code TALIX_CALL talix_get_user_info(talix_user_info* info)
{
    if (!info || !WantsAnything(*info))
        return IdFailed;
    // Here, and for the session address, a missing client is IdFailed; elsewhere it is IdClientUnavailable.
    return WithClient(IdFailed, [&](ISSOClient& client) { return NormalizeStatus(client.GetUserInfo(info)); });
}

talix_status_code TALIX_CALL talix_get_profile_info(talix_buffer* profile)
{
    if (!profile)
        return IdInvalidProfileRecord;
    // This function alone needs the instance, too: it is missing while another thread's first start is under way.
    if (!IdServicesMgr::GetInstance())
        return IdNotInitialized;
    return WithClient(IdClientUnavailable,
                      [&](ISSOClient& client) { return client.GetProfileInfo(profile->buffer, &profile->size); });
}

talix_status_code TALIX_CALL talix_set_host(void* window)
{
    if (!window)
        return IdInvalidHostWindow;
    // Succeeds without client, too, by contract: the window is only offered.
    return WithClient(IdSuccess, [&](ISSOClient& client) {
        client.SetHostApplicationWindow(reinterpret_cast<std::uintptr_t>(window));
        return IdSuccess;
    });
}

talix_status_code TALIX_CALL talix_set_process_id(int) // By contract not supported, in any state of the library.
{
    return IdNotSupported;
}

talix_status_code TALIX_CALL talix_dispatch_events(void)
{
    return WithClient(IdClientUnavailable, [](ISSOClient& client) { return client.DispatchEvent(); });
}

talix_status_code TALIX_CALL talix_quit_server_process(int milliseconds)
{
    return NoThrow(IdFailed, [&] {
        if (!IsStarted())
            return IdNotInitialized;
        ISSOServerManager* serverManager = ObtainInterface<ISSOServerManager>();
        return serverManager && serverManager->QuitAllSSOServerProcesses(milliseconds) ? IdSuccess : IdServerQuitFailed;
    });
}
