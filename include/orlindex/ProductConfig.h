#ifndef ORLINDEX_PRODUCTCONFIG_H
#define ORLINDEX_PRODUCTCONFIG_H

#include "IdErrorCode.h"

namespace Kestrany::IdentityServices {

struct ProductConfigPrivate;

/// Describes the host's product to the identity service: its OAuth2 client ID and token scope, and three texts that
/// identify the product. A host fills an object and passes it to IdServicesMgr::SetProductConfig.
///
/// Texts are opaque bytes with a terminating zero; UTF-8 by convention. Lengths and sizes are in bytes. An entry that
/// was set stays set: setters ignore a null text, and copying ignores the entries that the source never set. Setters
/// and copying throw std::bad_alloc if the system is out of memory. Several threads may read one object; the caller
/// must serialize changes.
class ORLINDEX_API ProductConfig
{
public:
    ProductConfig();
    /// Copies every entry of `other` that was set.
    ProductConfig(const ProductConfig& other);
    /// Copies every entry of `other` that was set; the other entries keep their texts.
    ProductConfig& operator=(const ProductConfig& other);
    virtual ~ProductConfig();

    /// Sets the OAuth2 client ID. Returns IdSuccess; IdInvalidClientId for a null text, with the entry unchanged.
    IdErrorCode SetOAuth2ClientID(const char* text);
    /// Sets the OAuth2 scope that is requested with tokens. A null text changes nothing.
    void SetOAuth2TokenScope(const char* text);
    /// Sets the name of the product line. A null text changes nothing.
    void SetProductLineName(const char* text);
    /// Sets the identifier of the product's release. A null text changes nothing.
    void SetProductReleaseId(const char* text);
    /// Sets the identifier of the product's build. A null text changes nothing.
    void SetProductBuildId(const char* text);

    /// Copies an entry with its terminating zero into `buffer` of `size` bytes. Returns the length of the text without
    /// its zero; 0, with `buffer` unchanged, for a null buffer, a size of 0 or an entry that was never set.
    ///
    /// `size` must be greater than the length. A text that does not fit is an invalid argument of the runtime's bounded
    /// copy: the runtime empties the buffer and calls its invalid-parameter handler, which ends the process unless the
    /// host installed its own.
    int GetOAuth2ClientID(char* buffer, int size) const;
    /// See GetOAuth2ClientID.
    int GetOAuth2AccessTokenScope(char* buffer, int size) const;
    /// See GetOAuth2ClientID.
    int GetProductLineName(char* buffer, int size) const;
    /// See GetOAuth2ClientID.
    int GetProductReleaseId(char* buffer, int size) const;
    /// See GetOAuth2ClientID.
    int GetProductBuildId(char* buffer, int size) const;

private:
    ProductConfigPrivate* d;
};

} // namespace Kestrany::IdentityServices

#endif
