#ifndef ORLINDEX_API_IDSERVICESMGRPRIVATE_H
#define ORLINDEX_API_IDSERVICESMGRPRIVATE_H

#include <list>

#include "orlindex/IdServicesMgr.h"

namespace Kestrany::IdentityServices {

struct IdServicesMgrPrivate
{
    ProductConfig fallbackConfig;    ///< Stays empty; what GetProductConfig copies out without client.
    ProductConfig productConfig;     ///< Filled by the flat interface.
    bool flags[6] = {};              ///< Kept for the layout.
    std::list<IObserver*> observers; ///< Kept for the layout: observers are the plugin's.
};

} // namespace Kestrany::IdentityServices

#endif
