#ifndef ORLINDEX_API_NOTHROW_H
#define ORLINDEX_API_NOTHROW_H

#include "api/IdServicesMgrPrivate.h"
#include "load/contract/ISSOClient.h"
#include "locate/Forwarding.h"
#include "orlindex/talix.h"

namespace Kestrany::IdentityServices {

/// Runs `step`, and returns `failure` if it throws. No exception may reach a host that is written in C, neither the
/// plugin's nor one for an allocation failure.
template <class Result, class Step>
Result NoThrow(Result failure, Step&& step) noexcept
{
    try
    {
        return step();
    }
    catch (...)
    {
        return failure;
    }
}

/// Maps a value below 1000 to IdFailed. The flat functions differ on purpose: the contract says which ones normalize
/// the plugin's result and which return it unchanged.
inline talix_status_code NormalizeStatus(talix_status_code result)
{
    return result < IdSuccess ? IdFailed : result;
}

/// The common form of the flat functions: checks that the library is initialized, obtains the client and calls it.
template <class Call>
talix_status_code WithClient(talix_status_code withoutClient, Call&& call) noexcept
{
    return NoThrow(IdFailed, [&] {
        if (!IsStarted())
            return IdNotInitialized;
        ISSOClient* client = ObtainInterface<ISSOClient>();
        return client ? call(*client) : withoutClient;
    });
}

} // namespace Kestrany::IdentityServices

#endif
