#ifndef ORLINDEX_LOAD_SIGNATURE_WINTRUSTSESSION_H
#define ORLINDEX_LOAD_SIGNATURE_WINTRUSTSESSION_H

#include <string>
#include <type_traits>
#include <windows.h>

#include <softpub.h>
#include <wintrust.h>

namespace Kestrany::IdentityServices {

/// The platform reads a last field that older headers do not declare. It is added if it is missing.
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

/// One verification of one file's signature by the platform, and what the platform keeps about it. The destructor makes
/// the close call, also if nothing was verified.
class WinTrustSession
{
public:
    /// `path` must outlive the session.
    explicit WinTrustSession(const std::wstring& path);
    WinTrustSession(const WinTrustSession&) = delete;
    WinTrustSession& operator=(const WinTrustSession&) = delete;
    ~WinTrustSession();

    /// Returns the platform's result.
    LONG Verify();

    /// Null if the platform kept nothing.
    CRYPT_PROVIDER_DATA* ProviderData() const;

private:
    LONG Call(DWORD stateAction);

    WINTRUST_FILE_INFO file_ = {};
    TrustData data_ = {};
};

/// The signer at `index`, not a counter-signer; null if there is none.
CRYPT_PROVIDER_SGNR* SignerAt(CRYPT_PROVIDER_DATA* provider, DWORD index);

/// The certificate at `index` of a signer's chain; null if there is none. The checks pass the signer's index here, on
/// purpose: the contract asks for it. So the second signer counts by the second certificate of its chain, and a module
/// has to be signed by its accepted signer first.
CRYPT_PROVIDER_CERT* CertificateAt(CRYPT_PROVIDER_SGNR* signer, DWORD index);

} // namespace Kestrany::IdentityServices

#endif
