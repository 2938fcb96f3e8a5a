#include "load/signature/WinTrustSession.h"

namespace Kestrany::IdentityServices {

#if defined(_WIN64)
static_assert(sizeof(WINTRUST_FILE_INFO) == 32, "the platform's file description");
static_assert(sizeof(TrustData) == 88, "the platform's trust data, signature settings included");
#endif

WinTrustSession::WinTrustSession(const std::wstring& path)
{
    file_.cbStruct = sizeof file_;
    file_.pcwszFilePath = path.c_str();
    data_.cbStruct = sizeof data_;
    data_.dwUIChoice = WTD_UI_NONE;
    data_.fdwRevocationChecks = WTD_REVOKE_NONE; // On purpose: revocation is not checked at all.
    data_.dwUnionChoice = WTD_CHOICE_FILE;
    data_.pFile = &file_;
    data_.dwProvFlags = WTD_REVOCATION_CHECK_NONE;
}

WinTrustSession::~WinTrustSession()
{
    Call(WTD_STATEACTION_CLOSE);
}

LONG WinTrustSession::Verify()
{
    return Call(WTD_STATEACTION_VERIFY);
}

LONG WinTrustSession::Call(DWORD stateAction)
{
    GUID action = WINTRUST_ACTION_GENERIC_VERIFY_V2;
    data_.dwStateAction = stateAction;
    return WinVerifyTrust(nullptr, &action, &data_);
}

CRYPT_PROVIDER_DATA* WinTrustSession::ProviderData() const
{
    return WTHelperProvDataFromStateData(data_.hWVTStateData);
}

CRYPT_PROVIDER_SGNR* SignerAt(CRYPT_PROVIDER_DATA* provider, DWORD index)
{
    return WTHelperGetProvSignerFromChain(provider, index, FALSE, 0);
}

CRYPT_PROVIDER_CERT* CertificateAt(CRYPT_PROVIDER_SGNR* signer, DWORD index)
{
    return WTHelperGetProvCertFromChain(signer, index);
}

} // namespace Kestrany::IdentityServices
