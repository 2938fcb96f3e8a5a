#ifndef ORLINDEX_TYPES_H
#define ORLINDEX_TYPES_H

#include <cstdint>

namespace Kestrany::IdentityServices {

// Types that the host's classes and the contract of the client plugin module share.

/// Optional operations of the client plugin module. Values without a name here pass through to the plugin.
enum ApiFeature : std::int32_t
{
    ApiFeatureIdToken = 2,  ///< GetOAuth2IdToken.
    ApiFeatureLoginMode = 3 ///< SetLoginMode and GetLoginMode.
};

/// Asked by the plugin while a server process is frozen; the parameters have their meaning in the plugin. Sizes in
/// bytes.
using FreezeCallback = int (*)(const char* request, int requestSize, char* answer, int answerSize, void* context);

} // namespace Kestrany::IdentityServices

#endif
