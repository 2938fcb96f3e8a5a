// A login outlives the process in which the user signed in: its file, restoring it, and access by others.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "Environment.h"
#include "OtherHost.h"
#include "identity/ResultCodes.h"
#include "load/contract/ISSOClient.h"
#include "load/contract/ISSOClientModule.h"
#include "load/contract/ISSOClientPrivate.h"
#include "load/contract/ISSOServerManager.h"
#include "platform/AtomicFile.h"
#include "platform/Base.h"
#include "platform/Folders.h"
#include "platform/LogFile.h"

namespace Kestrany::Agent {

namespace {

using namespace IdentityServices;

class PluginLoginStateTest : public testing::Test
{
protected:
    PluginLoginStateTest()
    {
        ProductConfig product;
        product.SetOAuth2ClientID("tests");
        client.SetProductConfig(TALIX_SERVER_PRODUCTION, product);
    }
    ~PluginLoginStateTest() override
    {
        LogOut();
        module.Uninitialize();
        DeleteFileW(file.c_str());
    }

    void LogIn()
    {
        int detail = -1;
        ASSERT_EQ(client.Login(detail), IdSuccess);
    }
    void LogOut()
    {
        int result = 0;
        client.Logout(result, TALIX_LOGOUT_FORCE);
        tool.ClearEventQueue();
    }
    /// Ends the login in this process and puts its file back, as if another process had stored it.
    void LogOutButKeepTheFile()
    {
        const FileContents contents = ReadFileContents(file);
        ASSERT_TRUE(contents.IsRead());
        LogOut();
        ASSERT_TRUE(ReplaceFileAtomically(file, contents.bytes));
    }
    std::wstring Token()
    {
        wchar_t buffer[4096] = L"";
        EXPECT_EQ(client.GetOAuth2AccessToken(buffer, 4096, false), IdSuccess);
        return buffer;
    }
    bool HasFile() const { return GetFileAttributesW(file.c_str()) != INVALID_FILE_ATTRIBUTES; }

    /// The last log line of the server process about this process's files.
    static std::string LastLogLine()
    {
        const std::string own = Narrow(SettingsFolder());
        std::ifstream log(DefaultLogFile().c_str());
        std::string last;
        for (std::string line; std::getline(log, line);)
        {
            if (line.find(own) != std::string::npos)
                last = line;
        }
        return last;
    }

    ISSOClient& client = *PluginFactory().GetSSOClient();
    ISSOClientModule& module = *PluginFactory().GetSSOClientModule();
    ISSOClientPrivate& tool = *PluginFactory().GetSSOClientPrivate();
    const std::wstring file = tool.GetLoginStateCacheFile(nullptr, TALIX_SERVER_PRODUCTION);
};

TEST_F(PluginLoginStateTest, TheFileIsCreatedByALoginAndDeletedByALogout)
{
    EXPECT_FALSE(HasFile());
    EXPECT_STREQ(tool.GetLoginStateCacheFileWithFlag(nullptr, TALIX_SERVER_PRODUCTION, true), L"");
    LogIn();
    EXPECT_TRUE(HasFile());
    EXPECT_EQ(tool.GetLoginStateCacheFileWithFlag(nullptr, TALIX_SERVER_PRODUCTION, true), file);
    LogOut();
    EXPECT_FALSE(HasFile());
}

TEST_F(PluginLoginStateTest, AnAutomatedLoginIsStored)
{
    ASSERT_EQ(client.AutomatedLogin(L"sam.example@simulator", L"simulator", false, nullptr), IdSuccess);
    EXPECT_TRUE(HasFile());
}

TEST_F(PluginLoginStateTest, TheFileIsEncrypted)
{
    LogIn();
    const std::string bytes = ReadFileContents(file).bytes;
    const std::wstring token = Token();
    for (const std::string& secret : {std::string(token.begin(), token.end()), std::string("eyJ"),
                                      std::string("accessToken"), std::string("userId")})
        EXPECT_EQ(bytes.find(secret), std::string::npos) << secret;
}

TEST_F(PluginLoginStateTest, ALoginIsRestoredWithItsTokensAndAnEvent)
{
    LogIn();
    const std::wstring token = Token();
    const std::uint32_t expiry = client.GetLoginExpiryDate();
    LogOutButKeepTheFile();
    ASSERT_TRUE(tool.LoadLoginFromCache(false));
    EXPECT_TRUE(client.IsLoginValid());
    EXPECT_EQ(Token(), token);
    EXPECT_EQ(client.GetLoginExpiryDate(), expiry);
    EXPECT_TRUE(client.HasEvent()) << "LoginRestored";
}

TEST_F(PluginLoginStateTest, ARefreshedTokenIsRestored)
{
    LogIn();
    ASSERT_EQ(client.RefreshOAuth2Token(false), IdSuccess);
    const std::wstring token = Token();
    LogOutButKeepTheFile();
    ASSERT_TRUE(tool.LoadLoginFromCache(false));
    EXPECT_EQ(Token(), token);
}

TEST_F(PluginLoginStateTest, ASignedInUserIsReplacedOnlyOnRequest)
{
    LogIn();
    const std::string kept = ReadFileContents(file).bytes;
    const std::wstring first = Token();
    client.RefreshOAuth2Token(false);
    ASSERT_TRUE(ReplaceFileAtomically(file, kept));
    EXPECT_FALSE(tool.LoadLoginFromCache(false));
    EXPECT_NE(Token(), first);
    EXPECT_TRUE(tool.LoadLoginFromCache(true));
    EXPECT_EQ(Token(), first);
}

TEST_F(PluginLoginStateTest, WithoutAFileNothingIsRestored)
{
    EXPECT_FALSE(tool.LoadLoginFromCache(false));
    EXPECT_FALSE(tool.LoadLoginFromCache(true));
    EXPECT_FALSE(client.IsLoggedIn());
    EXPECT_FALSE(client.HasEvent());
}

TEST_F(PluginLoginStateTest, ADamagedFileIsRefusedWithALogLine)
{
    LogIn();
    const std::string bytes = ReadFileContents(file).bytes;
    LogOut();
    std::string changed = bytes;
    changed.back() ^= 1;
    for (const std::string& damaged :
         {std::string(), std::string("{}"), changed, bytes.substr(0, bytes.size() / 2), std::string(100'000, 'x')})
    {
        ASSERT_TRUE(ReplaceFileAtomically(file, damaged));
        EXPECT_FALSE(tool.LoadLoginFromCache(false)) << damaged.size();
        EXPECT_FALSE(client.IsLoggedIn());
        EXPECT_NE(LastLogLine().find("Login state refused in "), std::string::npos) << LastLogLine();
    }
    ASSERT_TRUE(ReplaceFileAtomically(file, bytes));
    EXPECT_TRUE(tool.LoadLoginFromCache(false)) << "the file itself was good";
}

TEST_F(PluginLoginStateTest, AFileOfAnotherServerIsRefusedWithALogLine)
{
    LogIn();
    const std::string bytes = ReadFileContents(file).bytes;
    const std::wstring staging = tool.GetLoginStateCacheFile(nullptr, TALIX_SERVER_STAGING);
    ASSERT_TRUE(ReplaceFileAtomically(staging, bytes));
    client.SetServer(TALIX_SERVER_STAGING);
    EXPECT_FALSE(tool.LoadLoginFromCache(false));
    EXPECT_FALSE(client.IsLoggedIn());
    EXPECT_NE(LastLogLine().find(" at production"), std::string::npos) << LastLogLine();
    client.SetServer(TALIX_SERVER_PRODUCTION);
    DeleteFileW(staging.c_str());
}

TEST_F(PluginLoginStateTest, ALoginIsRestoredInTheNextProcess)
{
    const OtherHost other("login", {"Kestrany.TALIX.DefaultServer-v2"});
    ASSERT_EQ(other.ExitCode(), 0u);
    ASSERT_TRUE(HasFile());
    module.Initialize(false);
    EXPECT_TRUE(client.IsLoginValid());
    EXPECT_EQ(Token().rfind(L"eyJ", 0), 0u) << "a token";
    EXPECT_TRUE(client.HasEvent()) << "LoginRestored";
    LogOut();
    EXPECT_FALSE(HasFile()) << "the logout ends it for later processes";
}

TEST_F(PluginLoginStateTest, ALoginIsStoredForItsServerIdentityAlone)
{
    const OtherHost other("login", {OwnIdentity("OtherServer")});
    ASSERT_EQ(other.ExitCode(), 0u);
    module.Initialize(false);
    EXPECT_FALSE(client.IsLoggedIn());
}

} // namespace

} // namespace Kestrany::Agent
