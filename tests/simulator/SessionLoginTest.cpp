// A session's login as it goes from one process to the next, and the session's state as a text.

#include <gtest/gtest.h>

#include "TestSession.h"
#include "session/Json.h"

namespace Kestrany::Simulator {

namespace {

using namespace std::chrono_literals;

class SessionLoginTest : public testing::Test, protected TestSession
{
protected:
    LoginRecord Record() const { return {"2", now + 1h, {"access-2", now + 10min}, {"id-2", now + 20min}}; }

    std::string UserName() const
    {
        Account account;
        session.GetAccount(account);
        return account.userName;
    }
};

TEST_F(SessionLoginTest, WithoutALoginThereIsNothingToKeep)
{
    EXPECT_FALSE(session.GetLogin(TALIX_SERVER_PRODUCTION));
    EXPECT_FALSE(session.GetLogin(static_cast<Server>(3)));
}

TEST_F(SessionLoginTest, ALoginOfOneSessionGoesOnInAnother)
{
    LogIn();
    std::string token;
    session.GetAccessToken(token, false);
    const std::optional<LoginRecord> record = session.GetLogin(TALIX_SERVER_PRODUCTION);
    ASSERT_TRUE(record);
    EXPECT_FALSE(session.GetLogin(TALIX_SERVER_STAGING)) << "each server has its own";

    TestSession next;
    ASSERT_EQ(next.session.Restore(TALIX_SERVER_PRODUCTION, *record, false), IdSuccess);
    EXPECT_TRUE(next.session.IsLoginValid());
    EXPECT_EQ(next.session.LoginExpiry(), session.LoginExpiry());
    EXPECT_EQ(next.session.TokenExpiry(), session.TokenExpiry());
    std::string nextToken;
    EXPECT_EQ(next.session.GetAccessToken(nextToken, false), IdSuccess);
    EXPECT_EQ(nextToken, token);
}

TEST_F(SessionLoginTest, RestoringQueuesNoEventUntilTheLoginIsResumed)
{
    ASSERT_EQ(session.Restore(TALIX_SERVER_PRODUCTION, Record(), false), IdSuccess);
    EXPECT_EQ(events.Size(), 0u);
    session.Resume();
    ASSERT_EQ(events.Size(), 1u);
    EXPECT_EQ(events.Pop()->kind, IdentityServices::IdServicesConsts::LoginRestored);
}

TEST_F(SessionLoginTest, SomebodyWhoIsSignedInIsReplacedOnlyWhenTold)
{
    LogIn();
    EXPECT_EQ(session.Restore(TALIX_SERVER_PRODUCTION, Record(), false), IdAlreadyLoggedIn);
    EXPECT_EQ(UserName(), "ann");
    EXPECT_EQ(session.Restore(TALIX_SERVER_PRODUCTION, Record(), true), IdSuccess);
    EXPECT_EQ(UserName(), "bob");
}

TEST_F(SessionLoginTest, ALoginThatCannotGoOnIsRefused)
{
    LoginRecord stranger = Record();
    stranger.userId = "3";
    EXPECT_EQ(session.Restore(TALIX_SERVER_PRODUCTION, stranger, false), IdCredentialsRefused);
    LoginRecord expired = Record();
    expired.expiry = now;
    EXPECT_EQ(session.Restore(TALIX_SERVER_PRODUCTION, expired, false), IdLoginExpired);
    EXPECT_EQ(session.Restore(static_cast<Server>(3), Record(), false), IdUnknownServer);
    EXPECT_FALSE(session.IsLoggedIn());
}

TEST_F(SessionLoginTest, TheStateSaysWhatHolds)
{
    EXPECT_EQ(session.StateJson(),
              R"({"events":0,"login":"none","product":true,"server":"production","token":"none","user":""})");
    session.Restore(TALIX_SERVER_PRODUCTION, Record(), false);
    session.Resume();
    EXPECT_EQ(session.StateJson(),
              R"({"events":1,"login":"valid","product":true,"server":"production","token":"valid","user":"bob"})");
    now += 10min;
    EXPECT_EQ((*ReadJsonObject(session.StateJson()))["token"].asString(), "expired");
    now += 50min;
    EXPECT_EQ((*ReadJsonObject(session.StateJson()))["login"].asString(), "expired");
    session.SetServer(TALIX_SERVER_STAGING);
    EXPECT_EQ(session.StateJson(),
              R"({"events":2,"login":"none","product":false,"server":"staging","token":"none","user":""})");
}

} // namespace

} // namespace Kestrany::Simulator
