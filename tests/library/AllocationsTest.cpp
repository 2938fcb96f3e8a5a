// The allocations of forwarded calls: the tests count them at the library's imports of the C runtime.

#include <algorithm>
#include <cstddef>

#include "ClientMembers.h"
#include "FlatFunctions.h"
#include "FlatTest.h"
#include "orlindex/SSOClientPrivate.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;

namespace {

/// Counts the allocations of the library alone while the object lives.
class Allocations
{
public:
    int Count() const { return count_; }

private:
    int count_ = 0;
    MallocDouble malloc_{[this](std::size_t size) {
        ++count_;
        return MallocDouble::Original(size);
    }};
    DoubleIfImported<CallocDouble> calloc_{[this](std::size_t number, std::size_t size) {
        ++count_;
        return CallocDouble::Original(number, size);
    }};
    DoubleIfImported<ReallocDouble> realloc_{[this](void* memory, std::size_t size) {
        ++count_;
        return ReallocDouble::Original(memory, size);
    }};
};

/// Makes every allocation of the library alone fail while the object lives.
class NoMemory
{
    MallocDouble malloc_{[](std::size_t) { return nullptr; }};
    DoubleIfImported<CallocDouble> calloc_{[](std::size_t, std::size_t) { return nullptr; }};
    DoubleIfImported<ReallocDouble> realloc_{[](void*, std::size_t) { return nullptr; }};
};

template <class Call>
int AllocationsOf(const Call& call)
{
    const Allocations allocations;
    call();
    return allocations.Count();
}

/// Whether the function forwards one call and creates no text or object for it.
bool IsPlainForward(const FlatFunction& function)
{
    const std::string name = function.name;
    return function.operation && name != "talix_get_session_uri" && name != "talix_add_event_callback" &&
           name != "talix_remove_event_callback";
}

/// Calls `check` for each function that only forwards, with arguments for it.
template <class Check>
void ForEachPlainForward(const Check& check)
{
    int calls = 0;
    for (const FlatFunction& function : FlatFunctions())
    {
        if (!IsPlainForward(function))
            continue;
        SCOPED_TRACE(function.name);
        FlatArguments arguments;
        arguments.config = talix_create_product_config("client", "scope");
        function.prepare(arguments);
        check(function, arguments);
        ++calls;
    }
    EXPECT_GT(calls, 20);
}

} // namespace

class AllocationsOfMembers : public StartedTest
{
};

class AllocationsOfFunctions : public FlatTest
{
protected:
    void SetUp() override
    {
        FlatTest::SetUp();
        const auto writeText = [](std::size_t argument) {
            return [argument](const CallArguments& call) {
                wchar_t* const target = call.Pointer<wchar_t>(argument);
                std::fill_n(target, length, L'a');
                target[length] = L'\0';
            };
        };
        Plugin().OnCall(Client::GetSessionUri, writeText(2));
        Plugin().OnCall(Client::GetOAuth2AccessToken, writeText(0));
        Plugin().OnCall(Client::GetOAuth2IdToken, writeText(0));
    }

    static constexpr std::size_t length = 2047; ///< The longest address.
    char text[4096] = {};
    talix_buffer buffer{text, sizeof text};
};

TEST_F(AllocationsOfMembers, AreCounted)
{
    EXPECT_GT(AllocationsOf([] { SSOClientPrivate::GetSSOServerAppPath(); }), 0);
}

TEST_F(AllocationsOfMembers, NoForwardedMemberAllocates)
{
    for (const ClientMember& member : ClientMembers())
    {
        SCOPED_TRACE(member.name);
        MemberArguments arguments;
        EXPECT_EQ(AllocationsOf([&] { member.call(*manager, arguments); }), 0);
    }
    EXPECT_THAT(Plugin().Calls(Client::Interface), testing::SizeIs(ClientMembers().size()));
}

TEST_F(AllocationsOfFunctions, NoForwardedFunctionAllocates)
{
    ForEachPlainForward([this](const FlatFunction& function, FlatArguments& arguments) {
        Plugin().ClearJournal();
        EXPECT_EQ(AllocationsOf([&] { function.call(arguments); }), 0);
        EXPECT_FALSE(Plugin().Calls().empty());
    });
}

TEST_F(AllocationsOfFunctions, ALongTokenIsCopiedOutWithoutAllocation)
{
    EXPECT_EQ(AllocationsOf([&] { EXPECT_EQ(talix_get_token(&buffer), IdSuccess); }), 0);
    EXPECT_EQ(AllocationsOf([&] { EXPECT_EQ(talix_get_id_token(&buffer), IdSuccess); }), 0);
    EXPECT_EQ(std::string(text).size(), length);
}

TEST_F(AllocationsOfFunctions, AnEventIsDeliveredWithoutAllocation)
{
    IObserver* observer = nullptr;
    Plugin().OnCall(Client::AddObserver, [&](const CallArguments& call) { observer = call.Pointer<IObserver>(0); });
    Plugin().OnCall(Client::DispatchEvent, [&](const CallArguments&) {
        observer->OnLoggedIn(IdSuccess);
        observer->OnLoginRestored();
    });
    const auto count = [](std::int32_t, std::int32_t, void* calls) { ++*static_cast<int*>(calls); };
    int calls = 0;
    ASSERT_EQ(talix_add_event_callback(count, &calls), IdSuccess);
    ASSERT_EQ(talix_add_event_callback([](std::int32_t, std::int32_t, void*) {}, nullptr), IdSuccess);
    EXPECT_EQ(AllocationsOf([] { EXPECT_EQ(talix_dispatch_events(), IdSuccess); }), 0);
    EXPECT_EQ(calls, 2);
}

TEST_F(AllocationsOfFunctions, ACallbackRemovesItselfWithoutMemory)
{
    IObserver* observer = nullptr;
    Plugin().OnCall(Client::AddObserver, [&](const CallArguments& call) { observer = call.Pointer<IObserver>(0); });
    Plugin().OnCall(Client::DispatchEvent, [&](const CallArguments&) {
        observer->OnLoggedIn(IdSuccess);
        observer->OnLoggedOut(IdSuccess);
    });
    static int calls = 0;
    static talix_event_callback removing = nullptr;
    calls = 0;
    removing = [](std::int32_t, std::int32_t, void*) {
        ++calls;
        EXPECT_EQ(talix_remove_event_callback(removing), IdSuccess);
    };
    ASSERT_EQ(talix_add_event_callback(removing, nullptr), IdSuccess);
    {
        const NoMemory noMemory;
        EXPECT_EQ(talix_dispatch_events(), IdSuccess);
    }
    EXPECT_EQ(calls, 1);
}

TEST_F(AllocationsOfFunctions, ASessionAddressAllocatesAtMostTwice)
{
    EXPECT_LE(AllocationsOf(
                  [&] { EXPECT_EQ(talix_get_session_uri("https://a.long.address.invalid/", 0, &buffer), IdSuccess); }),
              2);
    EXPECT_EQ(std::string(text).size(), length);
}

class AllocationsWithoutPlugin : public HostTest
{
};

TEST_F(AllocationsWithoutPlugin, AFallbackAfterTheFirstAllocatesNothing)
{
    installation.InstallWithoutPlugin();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdClientUnavailable);
    SSOClientPrivate::LoadLoginFromCache(false);
    EXPECT_EQ(AllocationsOf([] { SSOClientPrivate::LoadLoginFromCache(false); }), 0);
}

using AllocationsWithoutInterface = FlatWithoutClient;

TEST_F(AllocationsWithoutInterface, NoFallbackAllocates)
{
    ForEachPlainForward([](const FlatFunction& function, FlatArguments& arguments) {
        std::int64_t result = -1;
        EXPECT_EQ(AllocationsOf([&] { result = function.call(arguments); }), 0);
        EXPECT_EQ(result, function.withoutClient);
    });
}

TEST_F(AllocationsWithoutInterface, WithoutMemoryTheFallbacksAndTheirMessagesStay)
{
    int window = 0;
    {
        const NoMemory noMemory;
        EXPECT_EQ(talix_login(), IdClientUnavailable);
        EXPECT_EQ(talix_set_host(&window), IdSuccess);
        EXPECT_EQ(talix_get_server(), 0);
        EXPECT_FALSE(IdServicesMgr::GetInstance()->IsLoggedIn());
    }
    const LogLine reason{Error, "Failed to obtain ISSOClient. ISSOClientFactory::GetSSOClient returned null."};
    EXPECT_THAT(Plugin().Log(), testing::ElementsAre(reason, reason, reason, reason));
}

class AllocationsWithoutLogger : public HostTest
{
};

TEST_F(AllocationsWithoutLogger, AFallbackForAMissingInterfaceAfterTheFirstAllocatesNothing)
{
    InstallPlugin();
    Plugin().Return(Factory::GetLoggerSource, 0);
    Plugin().Return(Factory::GetSSOClient, 0);
    ASSERT_EQ(talix_init(), IdSuccess);
    EXPECT_EQ(talix_login(), IdClientUnavailable);
    const NoMemory noMemory;
    EXPECT_EQ(talix_login(), IdClientUnavailable);
    EXPECT_FALSE(IdServicesMgr::GetInstance()->IsLoggedIn());
}

} // namespace OrlindexTest
