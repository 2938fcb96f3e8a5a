// Roots that the platform trusts, which all tests of this user share.

#include "TrustTest.h"
#include "support/UserRoots.h"

namespace OrlindexTest {

class MachineRoots : public TrustTest
{
protected:
    void SetUp() override
    {
        UserRoots().Remove(root); // Left by a test that was killed.
        site.Install("trusted");
    }

    void TearDown() override { UserRoots().Remove(root); }

    const std::string root = site.RootCertificate("trusted-root");
};

TEST_F(MachineRoots, AListedNameBelowARootThatThePlatformTrustsIsValid)
{
    UserRoots().Add(root);
    ExpectAccepted();
}

TEST_F(MachineRoots, AListedNameBelowARootThatNobodyTrustsIsNotTrusted)
{
    ExpectRefused(SaidNotTrusted);
}

} // namespace OrlindexTest
