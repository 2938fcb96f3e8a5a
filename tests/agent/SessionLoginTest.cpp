// A session's login from one process to the next, and the session's state as JSON.

#include <gtest/gtest.h>

#include "TestSession.h"
#include "identity/Json.h"

namespace Kestrany::Agent {

using namespace Simulated;

namespace {

using namespace std::chrono_literals;

class SessionLoginTest : public testing::Test, protected TestSession
{
protected:
    /// A login that an earlier process stored.
    LoginRecord Record()
    {
        const TokenSigner signer = Parts().signer;
        return {"2",
                now + 1h,
                {{"tests",
                  "",
                  {WriteJwt(signer, "at+jwt", Json::objectValue), now + 10min},
                  {WriteJwt(signer, "JWT", Json::objectValue), now + 20min}}}};
    }
    void Keep(const LoginRecord& record) { storage.records[TALIX_SERVER_PRODUCTION] = record; }

    std::string UserName() const
    {
        Account account;
        session.GetAccount(account);
        return account.userName;
    }
};

TEST_F(SessionLoginTest, WithoutALoginNothingIsStored)
{
    EXPECT_FALSE(storage.records[TALIX_SERVER_PRODUCTION]);
    LogIn();
    EXPECT_TRUE(storage.records[TALIX_SERVER_PRODUCTION]);
    EXPECT_FALSE(storage.records[TALIX_SERVER_STAGING]) << "each server has its own";
    session.Logout();
    EXPECT_FALSE(storage.records[TALIX_SERVER_PRODUCTION]);
}

TEST_F(SessionLoginTest, ALoginOfOneSessionIsRestoredInAnother)
{
    LogIn();
    std::string token;
    session.GetAccessToken(token, false);

    TestSession next;
    next.storage.records = storage.records;
    next.logins.RestoreAll();
    EXPECT_TRUE(next.session.IsLoginValid());
    EXPECT_EQ(next.session.LoginExpiry(), session.LoginExpiry());
    EXPECT_EQ(next.session.TokenExpiry(), session.TokenExpiry());
    std::string nextToken;
    EXPECT_EQ(next.session.GetAccessToken(nextToken, false), IdSuccess);
    EXPECT_EQ(nextToken, token);
}

TEST_F(SessionLoginTest, OnlyARequestedRestoreQueuesAnEvent)
{
    Keep(Record());
    logins.RestoreAll();
    EXPECT_EQ(events.Size(), 0u);
    ASSERT_EQ(session.Restore(true), IdSuccess);
    ASSERT_EQ(events.Size(), 1u);
    EXPECT_EQ(events.Pop()->kind, IdentityServices::IdServicesConsts::LoginRestored);
}

TEST_F(SessionLoginTest, ASignedInUserIsReplacedOnlyOnRequest)
{
    LogIn();
    Keep(Record());
    EXPECT_EQ(session.Restore(false), IdAlreadyLoggedIn);
    EXPECT_EQ(UserName(), "ann");
    EXPECT_EQ(session.Restore(true), IdSuccess);
    EXPECT_EQ(UserName(), "bob");
}

TEST_F(SessionLoginTest, ALoginThatIsNotValidIsNotRestored)
{
    LoginRecord stranger = Record();
    stranger.userId = "3";
    Keep(stranger);
    EXPECT_EQ(session.Restore(false), IdCredentialsRefused);
    EXPECT_EQ(storage.refusal, "its user is not known");
    LoginRecord expired = Record();
    expired.expiry = now;
    Keep(expired);
    EXPECT_EQ(session.Restore(false), IdLoginExpired);
    EXPECT_EQ(storage.refusal, "the login has expired");
    EXPECT_EQ(logins.Restore({static_cast<Server>(3), {}, {}}, false), IdUnknownServer);
    EXPECT_FALSE(session.IsLoggedIn());
}

TEST_F(SessionLoginTest, TheStateDescribesTheSession)
{
    EXPECT_EQ(session.StateJson(),
              R"({"events":0,"login":"none","product":true,"server":"production","token":"none","user":""})");
    Keep(Record());
    session.Restore(false);
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

} // namespace Kestrany::Agent
