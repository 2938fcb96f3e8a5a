#ifndef ORLINDEX_API_IDSERVICESMGRPRIVATE_H
#define ORLINDEX_API_IDSERVICESMGRPRIVATE_H

#include <atomic>
#include <list>

#include "orlindex/IdServicesMgr.h"

namespace Kestrany::IdentityServices {

struct IdServicesMgrPrivate
{
    ProductConfig fallbackConfig;    ///< Always empty; GetProductConfig assigns it without client.
    ProductConfig productConfig;     ///< Filled by the flat interface.
    bool flags[6] = {};              ///< Not used; part of the layout.
    std::list<IObserver*> observers; ///< Always empty, because the plugin stores the observers; part of the layout.
};

/// The start count: how many starts are not yet matched by a stop.
extern std::atomic<int> startCount;

/// Inline form of IdServicesMgr::IsInitialized, for the flat functions.
inline bool IsStarted()
{
    return startCount > 0;
}

} // namespace Kestrany::IdentityServices

#endif
