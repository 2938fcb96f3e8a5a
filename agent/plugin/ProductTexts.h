#ifndef AGENT_PLUGIN_PRODUCTTEXTS_H
#define AGENT_PLUGIN_PRODUCTTEXTS_H

#include "identity/ResultCodes.h"
#include "orlindex/ProductConfig.h"
#include "plugin/ProductSettings.h"

namespace Kestrany::Agent {

/// Reads the host's object as it is; texts that were never set are empty.
ProductSettings ReadTexts(const IdentityServices::ProductConfig& config);
/// Reads the host's object. IdInvalidText if one of its texts is not UTF-8.
IdErrorCode ReadProduct(const IdentityServices::ProductConfig& config, ProductSettings& product);
/// Writes the texts that are set to the host's object; its other texts stay.
void WriteProduct(const ProductSettings& product, IdentityServices::ProductConfig& config);
/// Writes all texts to the host's object; those that were never set become empty.
void ReplaceProduct(const ProductSettings& product, IdentityServices::ProductConfig& config);

} // namespace Kestrany::Agent

#endif
