#include "ExpectedVerdict.h"

#include <algorithm>
#include <map>
#include <vector>

#include <windows.h>

#include <softpub.h>
#include <wincrypt.h>
#include <wintrust.h>

namespace OrlindexTest {

namespace {

constexpr char Unknown[] = "Binary file: unknown error: ";
constexpr char NotFound[] = "Binary file: not found: ";
constexpr char Invalid[] = "Binary file: signature is invalid: ";
constexpr char NotTrusted[] = "Binary file: signature certificate not trusted: ";

const std::map<DWORD, const char*> Refusals = {
    {0x00000002, NotFound},   // the file is not there
    {0x800B0004, NotTrusted}, // the subject is not trusted
    {0x800B0100, Invalid},    // no signature
    {0x800B0111, NotTrusted}, // explicitly distrusted
    {0x80092026, NotTrusted}, // security settings
};

constexpr DWORD UntrustedRoot = 0x800B0109;

/// A verification by the test itself; the destructor closes it.
class Verification
{
public:
    explicit Verification(const std::filesystem::path& file) : path_(file.native())
    {
        file_.cbStruct = sizeof file_;
        file_.pcwszFilePath = path_.c_str();
        data_.cbStruct = sizeof data_;
        data_.dwUIChoice = WTD_UI_NONE;
        data_.dwUnionChoice = WTD_CHOICE_FILE;
        data_.pFile = &file_;
        data_.dwProvFlags = WTD_REVOCATION_CHECK_NONE;
        result_ = Call(WTD_STATEACTION_VERIFY);
    }
    ~Verification() { Call(WTD_STATEACTION_CLOSE); }
    Verification(const Verification&) = delete;
    Verification& operator=(const Verification&) = delete;

    DWORD Result() const { return result_; }

    /// The main signer's certificates, from its own to the root.
    std::vector<PCCERT_CONTEXT> Chain() const
    {
        std::vector<PCCERT_CONTEXT> chain;
        const CRYPT_PROVIDER_DATA* provider = WTHelperProvDataFromStateData(data_.hWVTStateData);
        if (provider == nullptr || provider->csSigners == 0)
            return chain;
        const CRYPT_PROVIDER_SGNR& signer = provider->pasSigners[0];
        for (DWORD i = 0; i < signer.csCertChain; ++i)
            chain.push_back(signer.pasCertChain[i].pCert);
        return chain;
    }

private:
    DWORD Call(DWORD stateAction)
    {
        GUID action = WINTRUST_ACTION_GENERIC_VERIFY_V2;
        data_.dwStateAction = stateAction;
        return static_cast<DWORD>(WinVerifyTrust(nullptr, &action, &data_));
    }

    std::wstring path_;
    WINTRUST_FILE_INFO file_ = {};
    WINTRUST_DATA data_ = {};
    DWORD result_ = 0;
};

std::string Encoded(PCCERT_CONTEXT certificate)
{
    return {reinterpret_cast<const char*>(certificate->pbCertEncoded), certificate->cbCertEncoded};
}

/// Compares the common name only: the signers of the corpus have nothing else in their names.
bool HasAcceptedName(PCCERT_CONTEXT certificate)
{
    char commonName[] = szOID_COMMON_NAME;
    wchar_t name[256] = {};
    CertGetNameStringW(certificate, CERT_NAME_ATTR_TYPE, 0, commonName, name, 256);
    const std::wstring text = name;
    return text == L"Kestrany, Inc." || text == L"Kestrany Asia Pte";
}

} // namespace

ExpectedVerdict VerdictOf(const std::filesystem::path& file, const std::string& pinnedRoot)
{
    const Verification verification(file);
    const DWORD result = verification.Result();
    const std::vector<PCCERT_CONTEXT> chain = verification.Chain();
    const auto refused = [result](const char* reason) { return ExpectedVerdict{false, reason, result}; };
    if (result == ERROR_SUCCESS || result == UntrustedRoot)
    {
        if (chain.empty())
            return refused(NotTrusted);
        if (result == UntrustedRoot && Encoded(chain.back()) != pinnedRoot)
            return refused(NotTrusted);
        return HasAcceptedName(chain.front()) ? ExpectedVerdict{true, "", result} : refused(NotTrusted);
    }
    const auto refusal = Refusals.find(result);
    return refused(refusal == Refusals.end() ? Unknown : refusal->second);
}

} // namespace OrlindexTest
