#ifndef ORLINDEX_LIBRARY_TRUSTDOUBLES_H
#define ORLINDEX_LIBRARY_TRUSTDOUBLES_H

#include <windows.h>

#include <shlwapi.h>
#include <softpub.h>
#include <wincrypt.h>
#include <wintrust.h>

#include "support/ImportPatch.h"

namespace OrlindexTest {

// The platform's functions that decide over a file's signature.

struct WinVerifyTrustImport
{
    static constexpr char Name[] = "WinVerifyTrust";
    using Type = LONG(HWND, GUID*, LPVOID);
};

struct ProviderDataImport
{
    static constexpr char Name[] = "WTHelperProvDataFromStateData";
    using Type = CRYPT_PROVIDER_DATA*(HANDLE);
};

struct SignerImport
{
    static constexpr char Name[] = "WTHelperGetProvSignerFromChain";
    using Type = CRYPT_PROVIDER_SGNR*(CRYPT_PROVIDER_DATA*, DWORD, BOOL, DWORD);
};

struct CertificateImport
{
    static constexpr char Name[] = "WTHelperGetProvCertFromChain";
    using Type = CRYPT_PROVIDER_CERT*(CRYPT_PROVIDER_SGNR*, DWORD);
};

struct CertificateNameImport
{
    static constexpr char Name[] = "CertGetNameStringA";
    using Type = DWORD(PCCERT_CONTEXT, DWORD, DWORD, void*, LPSTR, DWORD);
};

struct WideCertificateNameImport
{
    static constexpr char Name[] = "CertGetNameStringW";
    using Type = DWORD(PCCERT_CONTEXT, DWORD, DWORD, void*, LPWSTR, DWORD);
};

struct HashCertificateImport
{
    static constexpr char Name[] = "CryptHashCertificate2";
    using Type = BOOL(LPCWSTR, DWORD, void*, const BYTE*, DWORD, BYTE*, DWORD*);
};

struct PathFileExistsImport
{
    static constexpr char Name[] = "PathFileExistsW";
    using Type = BOOL(LPCWSTR);
};

using WinVerifyTrustDouble = ImportDouble<WinVerifyTrustImport>;
using ProviderDataDouble = ImportDouble<ProviderDataImport>;
using SignerDouble = ImportDouble<SignerImport>;
using CertificateDouble = ImportDouble<CertificateImport>;
using CertificateNameDouble = ImportDouble<CertificateNameImport>;
using WideCertificateNameDouble = ImportDouble<WideCertificateNameImport>;
using HashCertificateDouble = ImportDouble<HashCertificateImport>;
using PathFileExistsDouble = ImportDouble<PathFileExistsImport>;

} // namespace OrlindexTest

#endif
