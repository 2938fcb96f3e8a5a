// The names of the plugin contract that compilers decorate: the factory, and the members of ProductConfig that plugins
// call by name. CheckContractNames.cmake compares what a compiler makes of them with what the sources contain.

#include "load/contract/ISSOClientFactory.h"
#include "load/contract/ProductConfigLayout.h"

Kestrany::IdentityServices::ISSOClientFactory* GetSSOClientFactory()
{
    return nullptr;
}

namespace Kestrany::IdentityServices {

IdErrorCode ProductConfig::SetOAuth2ClientID(const char* /*text*/)
{
    return IdSuccess;
}

void ProductConfig::SetOAuth2TokenScope(const char* /*text*/) {}

void ProductConfig::SetProductLineName(const char* /*text*/) {}

void ProductConfig::SetProductReleaseId(const char* /*text*/) {}

void ProductConfig::SetProductBuildId(const char* /*text*/) {}

extern const ProductTextSetterNames names[] = {SetOAuth2ClientIDNames, SetOAuth2TokenScopeNames,
                                               SetProductLineNameNames, SetProductReleaseIdNames,
                                               SetProductBuildIdNames};

} // namespace Kestrany::IdentityServices
