// The installer's registry key as a source of the server application's folder.

#include "support/MachineKey.h"
#include "support/HostTest.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;

/// The contents of the installer's registry key.
class MachineKeyLocation : public HostTest
{
protected:
    /// Starts the library with a server application in each of these folders; returns the folder that it used.
    std::filesystem::path TakenFolder(const std::vector<std::filesystem::path>& folders,
                                      const std::string& clientConfig)
    {
        installation.WriteClientConfig(clientConfig);
        for (const auto& folder : folders)
        {
            installation.InstallServerApplication(folder);
            installation.CopyPlugin("good", folder / "PellwickClient.dll");
            std::filesystem::copy_file(installation.CompatibilityFile(),
                                       folder / installation.CompatibilityFile().filename(),
                                       std::filesystem::copy_options::skip_existing);
        }
        if (IdServicesMgr::Initialize() != IdSuccess)
            return {};
        for (const auto& folder : folders)
            if (IsLoaded(folder / "PellwickClient.dll"))
                return folder;
        return {};
    }

    void SetUp() override
    {
        installation.WriteCompatibilityFile({CompatibilityEntry{"%SSOServerAppPath%\\PellwickClient.dll"}});
    }

    MachineKey key;
};

TEST_F(MachineKeyLocation, TheHighestVersionIsTakenByNumber)
{
    const auto lower = installation.MakeFolder("lower");
    const auto higher = installation.MakeFolder("higher");
    key.AddVersion(L"1.9.0", lower.native());
    key.AddVersion(L"1.10.0", higher.native());
    EXPECT_EQ(TakenFolder({lower, higher}, "{}"), higher);
}

TEST_F(MachineKeyLocation, TheHostsCopyWinsOverTheRegistrys)
{
    const auto admin = installation.MakeFolder("admin");
    key.SetLocation(admin.native());
    EXPECT_EQ(TakenFolder({installation.HostFolder(), admin}, "{}"), installation.HostFolder());
}

TEST_F(MachineKeyLocation, WithSupportForBothTheRegistrysCopyWins)
{
    const auto admin = installation.MakeFolder("admin");
    key.AddVersion(L"1.11.0", admin.native());
    EXPECT_EQ(TakenFolder({installation.HostFolder(), admin}, R"({"ssoServer": {"supportBothLocalAndAdmin": true}})"),
              admin);
}

TEST_F(MachineKeyLocation, WithoutVersionsTheKeysOwnLocationIsTaken)
{
    const auto admin = installation.MakeFolder("admin");
    key.AddVersion(L"3.0.0");
    key.SetLocation(admin.native());
    EXPECT_EQ(TakenFolder({admin}, "{}"), admin);
}

} // namespace OrlindexTest
