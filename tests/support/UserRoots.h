#ifndef ORLINDEX_SUPPORT_USERROOTS_H
#define ORLINDEX_SUPPORT_USERROOTS_H

#include <stdexcept>
#include <string>

#include <windows.h>

#include <wincrypt.h>

namespace OrlindexTest {

/// The root certificates that this user trusts. All tests share them, so this is for suites whose name starts with
/// `Machine`. Other processes see a change when this object is destroyed.
class UserRoots
{
public:
    UserRoots()
        : store_(CertOpenStore(CERT_STORE_PROV_SYSTEM_REGISTRY_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"ROOT"))
    {
        if (store_ == nullptr)
            throw std::runtime_error("cannot open the user's root certificates");
    }

    ~UserRoots() { CertCloseStore(store_, 0); }
    UserRoots(const UserRoots&) = delete;
    UserRoots& operator=(const UserRoots&) = delete;

    void Add(const std::string& der) const
    {
        if (!CertAddEncodedCertificateToStore(store_, X509_ASN_ENCODING, Bytes(der), Size(der),
                                              CERT_STORE_ADD_REPLACE_EXISTING, nullptr))
            throw std::runtime_error("cannot add a root certificate");
    }

    void Remove(const std::string& der) const
    {
        const PCCERT_CONTEXT wanted = CertCreateCertificateContext(X509_ASN_ENCODING, Bytes(der), Size(der));
        const PCCERT_CONTEXT found =
            CertFindCertificateInStore(store_, X509_ASN_ENCODING, 0, CERT_FIND_EXISTING, wanted, nullptr);
        if (found != nullptr)
            CertDeleteCertificateFromStore(found); // Frees it too.
        CertFreeCertificateContext(wanted);
    }

private:
    static const BYTE* Bytes(const std::string& der) { return reinterpret_cast<const BYTE*>(der.data()); }
    static DWORD Size(const std::string& der) { return static_cast<DWORD>(der.size()); }

    HCERTSTORE store_;
};

} // namespace OrlindexTest

#endif
