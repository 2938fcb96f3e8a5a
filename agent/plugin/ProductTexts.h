#ifndef AGENT_PLUGIN_PRODUCTTEXTS_H
#define AGENT_PLUGIN_PRODUCTTEXTS_H

#include "identity/ResultCodes.h"
#include "orlindex/ProductConfig.h"
#include "plugin/ProductSettings.h"

namespace Kestrany::Agent {

/// Reads the host's object as it is; texts that were never set are empty.
ProductSettings ReadTexts(const IdentityServices::ProductConfig& config);
/// Reads the host's object. IdInvalidText when one of its texts is not UTF-8.
IdErrorCode ReadProduct(const IdentityServices::ProductConfig& config, ProductSettings& product);
/// Fills the host's object; texts that were never set stay as they are there.
void WriteProduct(const ProductSettings& product, IdentityServices::ProductConfig& config);
/// Makes the host's object say `product` and nothing else; texts that were never set become empty there.
void ReplaceProduct(const ProductSettings& product, IdentityServices::ProductConfig& config);

} // namespace Kestrany::Agent

#endif
