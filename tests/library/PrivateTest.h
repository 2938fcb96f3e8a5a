#ifndef ORLINDEX_LIBRARY_PRIVATETEST_H
#define ORLINDEX_LIBRARY_PRIVATETEST_H

#include "PrivateMembers.h"
#include "orlindex/SSOClientPrivate.h"
#include "support/HostTest.h"

namespace OrlindexTest {

/// A test with the plugin loaded and the journal empty. The library is not initialized: the private interface loads the
/// plugin with the first call that needs it.
class PrivateTest : public HostTest
{
protected:
    void SetUp() override
    {
        InstallPlugin();
        Load();
    }

    void Load()
    {
        Kestrany::IdentityServices::SSOClientPrivate::ClearEventQueue();
        Plugin().ClearJournal();
    }
};

} // namespace OrlindexTest

#endif
