#ifndef ORLINDEX_LOAD_TRUSTSTATE_H
#define ORLINDEX_LOAD_TRUSTSTATE_H

#include <string>
#include <type_traits>
#include <windows.h>

#include <softpub.h>
#include <wintrust.h>

namespace Kestrany::IdentityServices {

/// The platform reads a last field that older headers do not declare. It is added where it is missing.
template <class Platform, class = void>
struct WithSignatureSettings : Platform
{
    void* pSignatureSettings;
};

template <class Platform>
struct WithSignatureSettings<Platform, std::void_t<decltype(Platform::pSignatureSettings)>> : Platform
{
};

using TrustData = WithSignatureSettings<WINTRUST_DATA>;

/// The platform's verification of one file's signature, and what it found. The platform's state is freed with the
/// object, also where no verification was made.
class TrustState
{
public:
    /// `path` must outlive the object.
    explicit TrustState(const std::wstring& path);
    TrustState(const TrustState&) = delete;
    TrustState& operator=(const TrustState&) = delete;
    ~TrustState();

    /// Answers the platform's result.
    LONG Verify();

    /// Null where the platform kept nothing.
    CRYPT_PROVIDER_DATA* ProviderData() const;

private:
    LONG Call(DWORD stateAction);

    WINTRUST_FILE_INFO file_ = {};
    TrustData data_ = {};
};

/// The signer at `index`, not a counter-signer; null where there is none.
CRYPT_PROVIDER_SGNR* SignerAt(CRYPT_PROVIDER_DATA* provider, DWORD index);

/// The certificate at `index` of a signer's chain; null where there is none. The checks pass the signer's index here,
/// on purpose: the contract asks for it. So the second signer counts by the second certificate of its chain, and a
/// module has to be signed by its accepted signer first.
CRYPT_PROVIDER_CERT* CertificateAt(CRYPT_PROVIDER_SGNR* signer, DWORD index);

/// What the platform reports about a signer's chain (CERT_TRUST_...) beside a root that it does not trust and a
/// revocation that nobody asked for. 0 if it kept no chain. For people alone: no check depends on it.
DWORD OtherChainFaults(const CRYPT_PROVIDER_SGNR& signer);

} // namespace Kestrany::IdentityServices

#endif
