#ifndef ORLINDEX_API_IDSERVICESMGRPRIVATE_H
#define ORLINDEX_API_IDSERVICESMGRPRIVATE_H

#include <atomic>
#include <list>

#include "orlindex/IdServicesMgr.h"

namespace Kestrany::IdentityServices {

struct IdServicesMgrPrivate
{
    ProductConfig fallbackConfig;    ///< Stays empty; what GetProductConfig assigns without client.
    ProductConfig productConfig;     ///< Filled by the flat interface.
    bool flags[6] = {};              ///< Not read by any member; part of the layout.
    std::list<IObserver*> observers; ///< Stays empty: observers are handed to the plugin. Part of the layout.
};

/// Starts that no stop has met yet.
extern std::atomic<int> startCount;

/// IdServicesMgr::IsInitialized, which every flat function asks, without a call.
inline bool IsStarted()
{
    return startCount > 0;
}

} // namespace Kestrany::IdentityServices

#endif
