// The state that all tests share: the registry, and the roots that the user trusts. The prefix Machine makes these
// tests run alone.

#include <stdexcept>

#include "DoctorTest.h"
#include "support/MachineKey.h"

#include <windows.h>

#include <wincrypt.h>

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

class MachineDoctor : public DoctorTest
{
protected:
    /// Installs everything without a client config file, so that only the registry leads to the server application.
    void InstallRegistered() const
    {
        installation.Install();
        fs::remove(installation.ClientConfigFile());
    }

    MachineKey key;
};

TEST_F(MachineDoctor, TheHighestRegisteredVersionIsChosen)
{
    InstallRegistered();
    key.AddVersion(L"1.9.0", L"C:\\old");
    key.AddVersion(L"1.10.0", installation.ServerFolder().native());
    key.AddVersion(L"2.0");
    const DoctorReport report = ExpectStart();
    EXPECT_THAT(report.Results("registry"),
                testing::UnorderedElementsAre("version 1.9.0: location", "version 1.10.0: location",
                                              "version 2.0: no-location", "location: chosen"));
    EXPECT_EQ(report.Find("registry", "location")["value"], Utf8(installation.ServerFolder()));
    EXPECT_EQ(report.Find("registry", "location")["source"],
              "HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrany\\Pellwick\\1.10.0, value Location, 64-bit view");
    EXPECT_EQ(report.Find("server-application", "registry")["result"], "found");
}

TEST_F(MachineDoctor, TheKeysOwnLocationIsChosenIfNoVersionHasOne)
{
    InstallRegistered();
    key.SetLocation(installation.ServerFolder().native());
    EXPECT_THAT(ExpectStart().Results("registry"), ElementsAre("key: location", "location: chosen"));
}

TEST_F(MachineDoctor, WithSupportBothLocalAndAdminTheRegistryComesFirst)
{
    installation.Install();
    installation.WriteClientConfig(R"({"ssoServer": {"supportBothLocalAndAdmin": true}})");
    key.SetLocation(installation.ServerFolder().native());
    EXPECT_EQ(ExpectStart().Find("client-config", "supportBothLocalAndAdmin")["value"], "true");
    key.AddVersion(L"1.0", installation.ServerFolder().native());
    EXPECT_THAT(ExpectStart().Results("server-application"),
                ElementsAre("registry: found", "library's folder: not-searched", "host's folder: not-searched",
                            "server application: found"));
}

TEST_F(MachineDoctor, ARegisteredFolderWithoutServerApplicationIsReported)
{
    key.AddVersion(L"1.0", L"C:\\gone");
    EXPECT_THAT(ExpectFailure(ExitCode::ServerApplicationNotFound, "server-application", "\"C:\\gone\"").Remedy(),
                HasSubstr("HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrany\\Pellwick"));
}

TEST_F(MachineDoctor, AKeyWithoutLocationIsReported)
{
    ExpectFailure(ExitCode::RegistryUnusable, "registry", "neither it nor a version below it has a value Location");
}

TEST_F(MachineDoctor, ALocationThatIsNotATextIsReported)
{
    const DWORD number = 7;
    key.SetLocation(REG_DWORD, &number, sizeof number);
    const DoctorReport report = ExpectFailure(ExitCode::RegistryUnusable, "registry", "its value Location is no text");
    EXPECT_EQ(report.Find("registry", "key")["result"], "unusable");
}

TEST_F(MachineDoctor, ATooLongLocationOfAVersionIsReported)
{
    key.AddVersion(L"1.0", std::wstring(3000, L'x'));
    const DoctorReport report = ExpectFailure(ExitCode::RegistryUnusable, "registry", "Location is too long");
    EXPECT_THAT(report.Cause(), HasSubstr("Pellwick\\1.0"));
}

TEST_F(MachineDoctor, AnEmptyLocationIsReported)
{
    key.SetLocation(L"");
    ExpectFailure(ExitCode::RegistryUnusable, "registry", "its value Location is empty");
}

/// Adds the root of some signers to the user's trusted roots.
class MachineDoctorRoots : public DoctorTest
{
protected:
    void SetUp() override
    {
        Store store;
        store.Remove(root);
        store.Add(root);
    }
    void TearDown() override { Store().Remove(root); }

    const std::string root = installation.RootCertificate("trusted-root");

private:
    class Store
    {
    public:
        Store()
            : store_(CertOpenStore(CERT_STORE_PROV_SYSTEM_REGISTRY_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"ROOT"))
        {
            if (!store_)
                throw std::runtime_error("cannot open the user's root certificates");
        }
        ~Store() { CertCloseStore(store_, 0); }
        Store(const Store&) = delete;
        Store& operator=(const Store&) = delete;

        void Add(const std::string& der) const
        {
            if (!CertAddEncodedCertificateToStore(store_, X509_ASN_ENCODING, Bytes(der), static_cast<DWORD>(der.size()),
                                                  CERT_STORE_ADD_REPLACE_EXISTING, nullptr))
                throw std::runtime_error("cannot add a root certificate");
        }

        void Remove(const std::string& der) const
        {
            const PCCERT_CONTEXT wanted =
                CertCreateCertificateContext(X509_ASN_ENCODING, Bytes(der), static_cast<DWORD>(der.size()));
            if (const PCCERT_CONTEXT found =
                    CertFindCertificateInStore(store_, X509_ASN_ENCODING, 0, CERT_FIND_EXISTING, wanted, nullptr))
                CertDeleteCertificateFromStore(found);
            CertFreeCertificateContext(wanted);
        }

    private:
        static const BYTE* Bytes(const std::string& der) { return reinterpret_cast<const BYTE*>(der.data()); }

        HCERTSTORE store_;
    };
};

TEST_F(MachineDoctorRoots, ARootThatTheSystemTrustsIsReported)
{
    installation.Install("trusted");
    EXPECT_EQ(ExpectStart().Find("signature", "root")["result"], "system-trusted");
}

TEST_F(MachineDoctorRoots, AnExpiredCertificateIsReported)
{
    installation.Install("expired");
    ExpectFailure(ExitCode::CertificateExpired, "signature", "is not valid at this machine's time");
}

} // namespace OrlindexTest
