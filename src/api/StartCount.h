#ifndef ORLINDEX_API_STARTCOUNT_H
#define ORLINDEX_API_STARTCOUNT_H

#include <atomic>

namespace Kestrany::IdentityServices {

/// Starts that no stop has met yet.
extern std::atomic<int> startCount;

/// IdServicesMgr::IsInitialized, which every flat function asks, without a call.
inline bool IsStarted()
{
    return startCount > 0;
}

} // namespace Kestrany::IdentityServices

#endif
