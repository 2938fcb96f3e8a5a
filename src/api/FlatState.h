#ifndef ORLINDEX_API_FLATSTATE_H
#define ORLINDEX_API_FLATSTATE_H

#include "orlindex/ProductConfig.h"
#include "orlindex/talix.h"

/// What a product configuration handle points at.
struct talix_product_config_slot
{
    /// The manager's; null until talix_create_product_config, and again after every talix_init and talix_deinit.
    Kestrany::IdentityServices::ProductConfig* config;
};

namespace Kestrany::IdentityServices {

/// One a process, as flat hosts see the library; without protection against use by several threads.
extern talix_product_config_slot productConfigSlot;

/// Forgets all callbacks, and that the adapter was added to the plugin.
void ForgetEventCallbacks();

} // namespace Kestrany::IdentityServices

#endif
