#include <gtest/gtest.h>

#include "plugin/ProxyStore.h"

namespace Kestrany::Agent {

namespace {

TEST(ProxyStoreTest, HostsMatchCaseInsensitivelyAndPortsExactly)
{
    ProxyStore store;
    EXPECT_EQ(store.Store({"Proxy.Example", "user", "secret", 8080}), IdSuccess);
    const auto found = store.Find("pROXY.example", 8080);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->host, "Proxy.Example");
    EXPECT_EQ(found->userName, "user");
    EXPECT_EQ(found->password, "secret");
    EXPECT_FALSE(store.Find("proxy.example", 8081));
    EXPECT_FALSE(store.Find("proxy.exampl", 8080));
}

TEST(ProxyStoreTest, StoringAgainReplaces)
{
    ProxyStore store;
    store.Store({"proxy", "first", "", 1});
    store.Store({"PROXY", "second", "", 1});
    EXPECT_EQ(store.Find("proxy", 1)->userName, "second");
    store.Clear();
    EXPECT_FALSE(store.Find("proxy", 1));
}

TEST(ProxyStoreTest, AnEmptyHostFindsTheLatestSettings)
{
    ProxyStore store;
    EXPECT_FALSE(store.Find("", 0));
    store.Store({"a", "", "", 1});
    store.Store({"b", "", "", 2});
    store.Store({"a", "", "", 1});
    EXPECT_EQ(store.Find("", 0)->host, "a");
}

TEST(ProxyStoreTest, HostAndPortAreChecked)
{
    ProxyStore store;
    EXPECT_EQ(store.Store({"", "", "", 80}), IdInvalidProxyHost);
    EXPECT_EQ(store.Store({"a", "", "", 0}), IdInvalidProxyPort);
    EXPECT_EQ(store.Store({"a", "", "", 65536}), IdInvalidProxyPort);
    EXPECT_EQ(store.Store({"a", "", "", -1}), IdInvalidProxyPort);
    EXPECT_EQ(store.Store({"a", "", "", 65535}), IdSuccess);
}

} // namespace

} // namespace Kestrany::Agent
