// Every flat function in every state of the library, and with every kind of result of the plugin.

#include <algorithm>
#include <limits>
#include <set>
#include <stdexcept>

#include "FlatFunctions.h"
#include "FlatTest.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

using testing::AllOf;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

namespace {

/// Calls every function and compares its result; nothing may be written to its arguments.
void ExpectEach(std::int64_t FlatFunction::* result, FlatArguments& arguments)
{
    for (const FlatFunction& function : FlatFunctions())
    {
        SCOPED_TRACE(function.name);
        const std::string before = arguments.Bytes();
        EXPECT_EQ(function.call(arguments), function.*result);
        EXPECT_TRUE(arguments.Bytes() == before) << "something was written";
    }
}

std::vector<std::int64_t> PluginResults(ResultRule rule)
{
    if (rule == ResultRule::YesOrNo || rule == ResultRule::Quit)
        return {0, 1};
    constexpr std::int64_t lowest = (std::numeric_limits<std::int32_t>::min)();
    constexpr std::int64_t highest = (std::numeric_limits<std::int32_t>::max)();
    return {IdSuccess, 1001, 3030, 999, 500, 1, 0, -1, lowest, highest};
}

std::int64_t Expected(const FlatFunction& function, std::int64_t pluginResult)
{
    switch (function.rule)
    {
    case ResultRule::Mapped:
        return pluginResult < IdSuccess ? std::int64_t{IdFailed} : pluginResult;
    case ResultRule::Quit:
        return pluginResult != 0 ? IdSuccess : IdServerQuitFailed;
    case ResultRule::Fixed:
        return IdSuccess;
    default:
        return pluginResult;
    }
}

/// Arguments with a product configuration, and the library as the function needs it.
class PreparedCall
{
public:
    PreparedCall(const FlatFunction& function, PluginControl& plugin)
    {
        arguments.config = talix_create_product_config("client", "scope");
        function.prepare(arguments);
        plugin.ClearJournal();
    }

    FlatArguments arguments;
};

} // namespace

using FlatStates = FlatTest;

TEST(FlatTable, ItHoldsAllFunctionsOfTheFlatInterface)
{
    std::set<std::string> names{"talix_init", "talix_deinit"};
    for (const FlatFunction& function : FlatFunctions())
        names.insert(function.name);
    EXPECT_THAT(names, SizeIs(32));
    for (const std::string& name : names)
        EXPECT_NE(GetProcAddress(LibraryModule(), name.c_str()), nullptr) << name;
}

TEST_F(FlatNotInitialized, EveryFunctionBeforeInitReturnsItsFallbackAndLoadsNothing)
{
    installation.Install();
    FlatArguments arguments;
    ExpectEach(&FlatFunction::notInitialized, arguments);
    EXPECT_FALSE(IsLoaded(installation.PluginFile()));
}

TEST_F(FlatNotInitialized, EveryFunctionAfterAnInitWithoutPluginReturnsTheSameAsBeforeInit)
{
    EXPECT_EQ(talix_init(), IdClientUnavailable);
    FlatArguments arguments;
    ExpectEach(&FlatFunction::notInitialized, arguments);
    EXPECT_EQ(talix_deinit(), IdSuccess);
}

TEST_F(FlatStates, EveryFunctionAfterTheLastDeinitReturnsTheSameAsBeforeInitAndReachesNothing)
{
    FlatArguments arguments;
    arguments.config = talix_create_product_config("client", "scope");
    ASSERT_NE(arguments.config, nullptr);
    ASSERT_EQ(talix_deinit(), IdSuccess);
    Plugin().ClearJournal();
    ExpectEach(&FlatFunction::notInitialized, arguments);
    EXPECT_THAT(Plugin().Calls(), IsEmpty());
}

TEST_F(FlatWithoutClient, EveryFunctionReturnsItsFallback)
{
    for (const FlatFunction& function : FlatFunctions())
    {
        SCOPED_TRACE(function.name);
        PreparedCall prepared(function, Plugin());
        EXPECT_EQ(function.call(prepared.arguments), function.withoutClient);
        EXPECT_THAT(Plugin().Calls(), IsEmpty());
    }
}

TEST_F(FlatWithoutClient, NoFunctionButTheAccessTokensWritesAnything)
{
    for (const FlatFunction& function : FlatFunctions())
    {
        SCOPED_TRACE(function.name);
        PreparedCall prepared(function, Plugin());
        const std::string before = prepared.arguments.Bytes();
        function.call(prepared.arguments);
        if (function.operation && FullName(*function.operation) == FullName(Client::GetOAuth2AccessToken))
        {
            EXPECT_STREQ(prepared.arguments.text, "");
            prepared.arguments.text[0] = 'u';
        }
        EXPECT_TRUE(prepared.arguments.Bytes() == before) << "something was written";
    }
}

TEST_F(FlatStates, EveryFunctionReachesItsSlotWithItsArgumentsAndNoOther)
{
    for (const FlatFunction& function : FlatFunctions())
    {
        SCOPED_TRACE(function.name);
        PreparedCall prepared(function, Plugin());
        function.call(prepared.arguments);
        std::vector<std::string> calls = Plugin().Calls();
        if (function.feature != 0)
        {
            ASSERT_THAT(calls, SizeIs(2));
            EXPECT_EQ(calls.front(), Call(Client::IsApiAvailable, std::to_string(function.feature)));
            calls.erase(calls.begin());
        }
        ASSERT_THAT(calls, SizeIs(function.operation ? 1 : 0));
        if (!function.operation)
            continue;
        EXPECT_THAT(calls.front(), AllOf(StartsWith(FullName(*function.operation) + '('), EndsWith(")")));
        EXPECT_THAT(ArgumentsOf(calls.front()), function.arguments(prepared.arguments));
    }
}

TEST_F(FlatStates, EveryFunctionPassesThePluginsResultOnOrMapsIt)
{
    // Among them: 999 reaches a mapping function and comes out as IdFailed, 1001 passes unchanged.
    for (const FlatFunction& function : FlatFunctions())
    {
        if (!function.operation)
            continue;
        for (const std::int64_t pluginResult : PluginResults(function.rule))
        {
            SCOPED_TRACE(function.name + (" with " + std::to_string(pluginResult)));
            PreparedCall prepared(function, Plugin());
            Plugin().Return(*function.operation, pluginResult);
            EXPECT_EQ(function.call(prepared.arguments), Expected(function, pluginResult));
        }
    }
}

TEST_F(FlatStates, NoExceptionOfThePluginReachesTheHost)
{
    for (const FlatFunction& function : FlatFunctions())
    {
        if (!function.operation)
            continue;
        SCOPED_TRACE(function.name);
        PreparedCall prepared(function, Plugin());
        int thrown = 0;
        Plugin().OnCall(*function.operation, [&thrown](const CallArguments&) {
            ++thrown;
            throw std::runtime_error("from the plugin");
        });
        EXPECT_EQ(function.call(prepared.arguments), function.thrown);
        EXPECT_EQ(thrown, 1);
        Plugin().OnCall(*function.operation, [](const CallArguments&) {});
    }
    EXPECT_EQ(talix_login(), IdSuccess) << "the library goes on";
}

TEST_F(FlatStates, NoExceptionOfTheFeatureQuestionReachesTheHost)
{
    Plugin().OnCall(Client::IsApiAvailable, [](const CallArguments&) { throw 1; });
    FlatArguments arguments;
    EXPECT_EQ(talix_get_id_token(&arguments.buffer), IdFailed);
    EXPECT_EQ(talix_set_login_mode(TALIX_LOGIN_MODE_DEFAULT), IdFailed);
}

TEST_F(FlatStates, WithoutMemoryForTheConversionOfItsArgumentATextFunctionFails)
{
    // The small blocks that an exception needs can still be allocated.
    constexpr std::size_t length = 4000;
    const std::string address(length, 'x');
    FlatArguments arguments;
    using Double = MallocDouble;
    int refused = 0;
    const Double littleMemory([&refused](std::size_t size) {
        if (size < length)
            return Double::Original(size);
        ++refused;
        return static_cast<void*>(nullptr);
    });
    EXPECT_EQ(talix_get_session_uri(address.c_str(), 0, &arguments.buffer), IdFailed);
    EXPECT_EQ(refused, 1);
    EXPECT_STREQ(arguments.text, "untouched");
    EXPECT_THAT(Plugin().Calls(Client::Interface), IsEmpty());
}

TEST_F(FlatStates, ATokenArrivesWithoutMemory)
{
    Plugin().OnCall(Client::GetOAuth2AccessToken,
                    [](const CallArguments& call) { call.Pointer<wchar_t>(0)[0] = L'x'; });
    FlatArguments arguments;
    const MallocDouble noMemory([](std::size_t) { return static_cast<void*>(nullptr); });
    EXPECT_EQ(talix_get_token(&arguments.buffer), IdSuccess);
    EXPECT_STREQ(arguments.text, "x");
}

} // namespace OrlindexTest
