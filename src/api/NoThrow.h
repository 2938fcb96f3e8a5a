#ifndef ORLINDEX_API_NOTHROW_H
#define ORLINDEX_API_NOTHROW_H

#include "api/IdServicesMgrPrivate.h"
#include "load/contract/ISSOClient.h"
#include "locate/Forwarding.h"
#include "orlindex/talix.h"

namespace Kestrany::IdentityServices {

/// Runs a flat function. No exception may reach a host that is written in C: not the plugin's, and not one for want of
/// memory.
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

/// Values below 1000 are no verdicts; hosts see them as a failure. Which functions map, and which pass the plugin's
/// value on as it is, differs between functions that look alike and is part of the contract.
inline talix_status_code NormalizeStatus(talix_status_code result)
{
    return result < IdSuccess ? IdFailed : result;
}

/// The shape of most flat functions: the library must be initialized and the client there.
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
