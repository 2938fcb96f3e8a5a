#ifndef ORLINDEX_LIBRARY_FLATTEST_H
#define ORLINDEX_LIBRARY_FLATTEST_H

#include "orlindex/talix.h"
#include "support/HostTest.h"

namespace OrlindexTest {

/// A test with the library initialized through the flat interface, every feature of the plugin available, and the
/// journal empty.
class FlatTest : public HostTest
{
protected:
    void SetUp() override
    {
        InstallPlugin();
        Start();
    }

    void Start()
    {
        Plugin().Return(Client::IsApiAvailable, 1);
        ASSERT_EQ(talix_init(), IdSuccess);
        Plugin().ClearJournal();
    }
};

/// The same with a plugin that has neither a client nor a server-process interface.
class FlatWithoutClient : public FlatTest
{
protected:
    void SetUp() override
    {
        InstallPlugin();
        Plugin().Return(Factory::GetSSOClient, 0);
        Plugin().Return(Factory::GetSSOServerManager, 0);
        Start();
    }
};

/// A test with the library loaded, but not initialized.
class FlatNotInitialized : public HostTest
{
};

} // namespace OrlindexTest

#endif
