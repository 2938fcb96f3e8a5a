#ifndef ORLINDEX_API_FLATSTATE_H
#define ORLINDEX_API_FLATSTATE_H

#include "orlindex/ProductConfig.h"
#include "orlindex/talix.h"

/// The target of a product configuration handle.
struct talix_product_config_slot
{
    /// Belongs to the IdServicesMgr object. Null until talix_create_product_config, and again after every talix_init
    /// and talix_deinit.
    Kestrany::IdentityServices::ProductConfig* config;
};

namespace Kestrany::IdentityServices {

/// One per process. Not synchronized.
extern talix_product_config_slot productConfigSlot;

/// Removes all callbacks, and marks the observer as not registered with the plugin.
void ForgetEventCallbacks();

} // namespace Kestrany::IdentityServices

#endif
