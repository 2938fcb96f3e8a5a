// Stored logins of providers: what another process finds in the file.

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>
#include <vector>

#include "identity/LoginFile.h"
#include "identity/openid/windows/ProtectedLoginStore.h"
#include "identity/simulated/LoginFiles.h"
#include "platform/AtomicFile.h"

namespace Kestrany::Agent::OpenId {

namespace {

constexpr Server Production = TALIX_SERVER_PRODUCTION;

class ProtectedLoginStoreTest : public testing::Test
{
protected:
    /// A folder of this process: the agent reads the variable once.
    static void SetUpTestSuite()
    {
        folder = std::filesystem::temp_directory_path() / ("openid-store." + std::to_string(GetCurrentProcessId()));
        ASSERT_TRUE(SetEnvironmentVariableW(L"PELLWICK_SIMULATOR_DATA", folder.c_str()));
    }
    static void TearDownTestSuite() { std::filesystem::remove_all(folder); }

    ProtectedLoginStoreTest() { store = Open(); }

    std::unique_ptr<ProtectedLoginStore> Open()
    {
        return ProtectedLoginStore::Open(
            identity, [this](TALIXLog::LogLevel, const std::string& text) { lines.push_back(text); });
    }
    std::wstring File() const { return LoginFile(identity, Production); }

    static inline std::filesystem::path folder;
    const std::string identity = "OpenIdStore." + std::to_string(GetCurrentProcessId());
    std::vector<std::string> lines;
    std::unique_ptr<ProtectedLoginStore> store;
};

TEST_F(ProtectedLoginStoreTest, ATextIsKeptEncrypted)
{
    const Secret text("refresh-token-1");
    ASSERT_TRUE(store);
    ASSERT_TRUE(store->Save(Production, &text));
    const FileContents contents = ReadFileContents(File());
    ASSERT_TRUE(contents.IsRead());
    EXPECT_EQ(contents.bytes.find("refresh-token"), std::string::npos);
    store.reset();
    store = Open();
    const std::optional<Secret> loaded = store->Load(Production);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->View(), "refresh-token-1");
    EXPECT_FALSE(store->Load(TALIX_SERVER_STAGING));
    EXPECT_TRUE(lines.empty()) << lines.front();
}

TEST_F(ProtectedLoginStoreTest, ATextIsRemoved)
{
    const Secret text("a");
    ASSERT_TRUE(store->Save(Production, &text));
    EXPECT_TRUE(store->Save(Production, nullptr));
    EXPECT_FALSE(store->Load(Production));
    EXPECT_FALSE(std::filesystem::exists(File()));
    EXPECT_TRUE(store->Save(Production, nullptr)) << "there is none already";
}

TEST_F(ProtectedLoginStoreTest, ADamagedFileIsRefused)
{
    ASSERT_TRUE(ReplaceFileAtomically(File(), "not encrypted"));
    EXPECT_FALSE(store->Load(Production));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines.front().find("it is damaged"), std::string::npos) << lines.front();
}

TEST_F(ProtectedLoginStoreTest, ALoginOfASimulatedUserIsRefusedAndTheOtherWayRound)
{
    const Secret text("a");
    ASSERT_TRUE(store->Save(Production, &text));
    store.reset();
    auto simulated = Simulated::LoginFiles::Open(identity, [](TALIXLog::LogLevel, const std::string&) {});
    ASSERT_TRUE(simulated);
    EXPECT_FALSE(simulated->Load(Production));
    Simulated::LoginRecord record;
    record.userId = "1";
    ASSERT_TRUE(simulated->Save(Production, record));
    simulated.reset();
    store = Open();
    EXPECT_FALSE(store->Load(Production));
}

TEST_F(ProtectedLoginStoreTest, OneProcessAtATimeKeepsTheLogins)
{
    // The mutex belongs to a thread: within a process another thread stands for another process.
    std::unique_ptr<ProtectedLoginStore> other;
    std::thread([&] { other = Open(); }).join();
    EXPECT_FALSE(other);
    EXPECT_FALSE(ProtectedLoginStore::Open("a\\b", [](TALIXLog::LogLevel, const std::string&) {}));
}

} // namespace

} // namespace Kestrany::Agent::OpenId
