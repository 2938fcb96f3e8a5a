// Flat interface: tokens and the session address.

#include "api/NoThrow.h"
#include "api/TextOut.h"

using namespace Kestrany::IdentityServices;

namespace {

using TokenText = PluginText<4096>;
using AddressText = PluginText<2048>;

/// Has the plugin write a token, and copies it out whatever the result: a caller that overlooks a failure, a throwing
/// plugin's too, sees an empty text. By contract a buffer that is too small replaces the plugin's failure code.
template <class Write>
talix_status_code CopyTokenOut(talix_buffer& token, Write&& write)
{
    TokenText text;
    const talix_status_code result =
        NoThrow(IdFailed, [&] { return NormalizeStatus(write(text.Data(), TokenText::Capacity)); });
    return CopyTextOut(text, token, result);
}

talix_status_code GetAccessToken(talix_buffer* token, bool wait)
{
    return NoThrow(IdFailed, [&] {
        if (!token)
            return IdFailed;
        if (!IsStarted())
            return IdNotInitialized;
        return CopyTokenOut(*token, [wait](wchar_t* buffer, int capacity) {
            ISSOClient* client = ObtainInterface<ISSOClient>();
            return client ? client->GetOAuth2AccessToken(buffer, capacity, wait) : IdClientUnavailable;
        });
    });
}

} // namespace

talix_status_code TALIX_CALL talix_get_token(talix_buffer* token)
{
    return GetAccessToken(token, false);
}

talix_status_code TALIX_CALL talix_get_token_blocking(talix_buffer* token)
{
    return GetAccessToken(token, true);
}

talix_status_code TALIX_CALL talix_get_id_token(talix_buffer* token)
{
    if (!token)
        return IdFailed;
    return WithClient(IdApiUnavailable, [&](ISSOClient& client) {
        if (!client.IsApiAvailable(ApiFeatureIdToken))
            return IdApiUnavailable;
        return CopyTokenOut(*token,
                            [&](wchar_t* buffer, int capacity) { return client.GetOAuth2IdToken(buffer, capacity); });
    });
}

talix_status_code TALIX_CALL talix_refresh_token(void)
{
    return WithClient(IdClientUnavailable, [](ISSOClient& client) { return client.RefreshOAuth2Token(false); });
}

talix_status_code TALIX_CALL talix_get_session_uri(const char* uri, uint16_t flag, talix_buffer* out)
{
    if (!uri || !out || !out->buffer || out->size == 0)
        return IdFailed;
    // Unlike a token, the address is copied out only on success, and a missing client is IdFailed.
    return WithClient(IdFailed, [&](ISSOClient& client) {
        AddressText text;
        const IdErrorCode result =
            NormalizeStatus(client.GetSessionUri(Widen(uri).c_str(), flag, text.Data(), AddressText::Capacity));
        return result == IdSuccess ? CopyTextOut(text, *out, IdSuccess) : result;
    });
}
