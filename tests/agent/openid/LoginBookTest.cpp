#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "TestStore.h"
#include "identity/openid/LoginBook.h"

namespace Kestrany::Agent::OpenId {

namespace {

class LoginBookTest : public testing::Test
{
protected:
    static ClientLogin Login(const std::string& clientId, std::size_t size = 10)
    {
        ClientLogin login;
        login.clientId = clientId;
        login.scope = "openid";
        login.subject = "user-1";
        login.accessToken = Secret(std::string(size, 'a'));
        login.refreshToken = Secret("refresh-1");
        return login;
    }
    static LoginKey Key(const std::string& clientId) { return {TALIX_SERVER_PRODUCTION, clientId, "openid"}; }
    std::string RefreshToken(const std::string& clientId) const
    {
        std::string token;
        book.Read(Key(clientId), [&](const ClientLogin& login) { token = login.refreshToken.View(); });
        return token;
    }

    const std::shared_ptr<TestStore> store = std::make_shared<TestStore>();
    std::string log;
    LoginBook book{"server",
                   {{TALIX_SERVER_PRODUCTION, "https://login.example.com"}},
                   store,
                   [this](TALIXLog::LogLevel, const std::string& line) { log += line; }};
};

TEST_F(LoginBookTest, AChangeThatIsNotStoredDoesNotTakeEffect)
{
    ASSERT_TRUE(book.Put(TALIX_SERVER_PRODUCTION, Login("one")));
    const auto number = *book.NumberOf(Key("one"));
    store->works = false;
    EXPECT_FALSE(book.Put(TALIX_SERVER_PRODUCTION, Login("two")));
    EXPECT_FALSE(book.Has(Key("two")));
    EXPECT_TRUE(book.Has(Key("one")));
    EXPECT_FALSE(book.Change(Key("one"), number, [](ClientLogin& login) { login.refreshToken = Secret("other"); }));
    EXPECT_EQ(RefreshToken("one"), "refresh-1");
    EXPECT_FALSE(book.RemoveAll(TALIX_SERVER_PRODUCTION));
    EXPECT_TRUE(book.Has(Key("one")));
}

TEST_F(LoginBookTest, ANewRefreshTokenIsNotLostIfItIsNotStored)
{
    ASSERT_TRUE(book.Put(TALIX_SERVER_PRODUCTION, Login("one")));
    const auto number = *book.NumberOf(Key("one"));
    store->works = false;
    EXPECT_FALSE(book.KeepRefreshToken(Key("one"), number, Secret("refresh-2")));
    EXPECT_EQ(RefreshToken("one"), "refresh-2");
    EXPECT_FALSE(book.StoreAgain(TALIX_SERVER_PRODUCTION));
    store->works = true;
    EXPECT_TRUE(book.StoreAgain(TALIX_SERVER_PRODUCTION));
    EXPECT_NE(store->Text().find("refresh-2"), std::string::npos);
}

TEST_F(LoginBookTest, ALaterLoginOfTheProductHasAnotherNumber)
{
    ASSERT_TRUE(book.Put(TALIX_SERVER_PRODUCTION, Login("one")));
    const auto number = *book.NumberOf(Key("one"));
    ASSERT_TRUE(book.Put(TALIX_SERVER_PRODUCTION, Login("one")));
    EXPECT_FALSE(book.KeepRefreshToken(Key("one"), number, Secret("of the earlier one")));
    EXPECT_FALSE(book.Change(Key("one"), number, [](ClientLogin& login) { login.refreshToken.Clear(); }));
    EXPECT_FALSE(book.Remove(Key("one"), number));
    EXPECT_EQ(RefreshToken("one"), "refresh-1");
}

TEST_F(LoginBookTest, TheOldestLoginsMakeRoomSoThatTheStoreCanBeReadAgain)
{
    for (std::size_t count = 0; count < LoginBook::MaxClients + 1; ++count)
        ASSERT_TRUE(book.Put(TALIX_SERVER_PRODUCTION, Login("client-" + std::to_string(count))));
    EXPECT_EQ(book.Keys(TALIX_SERVER_PRODUCTION).size(), LoginBook::MaxClients);
    EXPECT_FALSE(book.Has(Key("client-0")));
    ASSERT_TRUE(book.Put(TALIX_SERVER_PRODUCTION, Login("large", LoginBook::MaxStored - 100'000)));
    EXPECT_TRUE(book.Has(Key("large")));
    EXPECT_FALSE(book.Has(Key("client-1")));
    EXPECT_LE(store->Text().size(), LoginBook::MaxStored);
}

TEST_F(LoginBookTest, LoginsAreReadAgainUnlessTheyAreNotUsable)
{
    ASSERT_TRUE(book.Put(TALIX_SERVER_PRODUCTION, Login("one")));
    ASSERT_TRUE(book.Put(TALIX_SERVER_PRODUCTION, Login("two")));
    book.Load(TALIX_SERVER_PRODUCTION, [](const ClientLogin& login) { return login.clientId == "two"; });
    EXPECT_FALSE(book.Has(Key("one")));
    EXPECT_TRUE(book.Has(Key("two")));
    store->SetText(TALIX_SERVER_PRODUCTION, "damaged");
    book.Load(TALIX_SERVER_PRODUCTION, [](const ClientLogin&) { return true; });
    EXPECT_FALSE(book.HasAny(TALIX_SERVER_PRODUCTION));
    EXPECT_NE(log.find("The stored login at production is refused: it holds no login"), std::string::npos) << log;
}

TEST_F(LoginBookTest, AServerThatIsNotConfiguredHasNoLogins)
{
    EXPECT_FALSE(book.Put(TALIX_SERVER_STAGING, Login("one")));
    EXPECT_FALSE(book.HasAny(TALIX_SERVER_STAGING));
    const auto removed = book.RemoveAll(TALIX_SERVER_STAGING);
    ASSERT_TRUE(removed);
    EXPECT_TRUE(removed->empty());
}

} // namespace

} // namespace Kestrany::Agent::OpenId
