// Roots that the platform trusts. All tests of this user share them.

#include "TrustTest.h"
#include "support/UserRoots.h"

namespace OrlindexTest {

class MachineRoots : public TrustTest
{
protected:
    void SetUp() override
    {
        UserRoots().Remove(root); // A test that was killed may have left it.
        installation.Install("trusted");
    }

    void TearDown() override { UserRoots().Remove(root); }

    const std::string root = installation.RootCertificate("trusted-root");
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
