#ifndef ORLINDEX_PRODUCTCONFIG_H
#define ORLINDEX_PRODUCTCONFIG_H

#include "IdErrorCode.h"

namespace Kestrany::IdentityServices {

struct ProductConfigPrivate;

/// What the identity service is told of the host's product: its OAuth2 client ID and token scope, and three texts that
/// identify the product. A host fills one and hands it to IdServicesMgr::SetProductConfig.
///
/// Texts are opaque bytes with a terminating zero; UTF-8 by convention. Lengths and sizes are counts of bytes.
/// An entry that was set once is never empty again: setters ignore a null text, and so does copying from an object
/// whose entry was never set. Setters and copying raise std::bad_alloc when the heap is exhausted. One object may be
/// read by several threads; a change needs the caller's own exclusion.
class ORLINDEX_API ProductConfig
{
public:
    ProductConfig();
    /// Takes over every entry of `other` that was set.
    ProductConfig(const ProductConfig& other);
    /// Takes over every entry of `other` that was set; the others keep their texts.
    ProductConfig& operator=(const ProductConfig& other);
    virtual ~ProductConfig();

    /// Sets the OAuth2 client ID. Answers IdSuccess; IdInvalidClientId for a null text, with the entry unchanged.
    IdErrorCode SetOAuth2ClientID(const char* text);
    /// Sets the OAuth2 scope that tokens are asked for. A null text changes nothing.
    void SetOAuth2TokenScope(const char* text);
    /// Sets the name of the product line. A null text changes nothing.
    void SetProductLineName(const char* text);
    /// Sets the identifier of the product's release. A null text changes nothing.
    void SetProductReleaseId(const char* text);
    /// Sets the identifier of the product's build. A null text changes nothing.
    void SetProductBuildId(const char* text);

    /// Copies an entry with its terminating zero into `buffer` of `size` bytes. Answers the length of the text without
    /// its zero; 0, with `buffer` untouched, for a null buffer, a size of 0 or an entry that was never set.
    ///
    /// `size` must be greater than the length. A text that does not fit is an invalid argument of the runtime's bounded
    /// copy: the buffer is emptied and the runtime's invalid-parameter handler is called, which ends the process unless
    /// the host installed its own.
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
