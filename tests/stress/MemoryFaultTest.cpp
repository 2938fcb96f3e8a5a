// Out of memory: each allocation of the library fails once, and all allocations from one on fail. The sweep covers
// start-up, forwarded calls, texts, events and the stop, each fault in a process of its own.

#include <cstring>
#include <filesystem>
#include <new>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "ImportHooks.h"
#include "LeakCheck.h"
#include "TestScale.h"
#include "orlindex/IObserver.h"
#include "orlindex/SSOClientPrivate.h"
#include "orlindex/talix.h"
#include "support/Child.h"
#include "support/HostTest.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;
using testing::AnyOf;
using testing::Contains;
using testing::Eq;
using testing::HasSubstr;
using testing::Not;

namespace {

const std::vector<std::string> Allocators = {"malloc", "calloc", "realloc"};
constexpr FailingResult NoMemory = {0, ERROR_NOT_ENOUGH_MEMORY};

constexpr wchar_t Token[] = L"a token with \u00DC and a length that no short text has";
constexpr wchar_t SessionAddress[] = L"https://address.invalid/?with=a+text+that+is+long+enough";

/// The end of a message that must not appear: every plugin here has all interfaces.
constexpr char InterfaceMissing[] = " returned null.";

int eventsReceived = 0;

void TALIX_CALL Receive(std::int32_t /*code*/, std::int32_t /*status*/, void* /*value*/)
{
    ++eventsReceived;
}

void WriteText(const CallArguments& arguments, std::size_t buffer, const wchar_t* text)
{
    std::wcscpy(arguments.Pointer<wchar_t>(buffer), text);
}

/// Which allocations fail: number `first` only, or all from it on.
struct MemoryFault
{
    bool onwards;
    int first;
};

std::string ToText(const MemoryFault& fault)
{
    return std::to_string(fault.onwards) + ' ' + std::to_string(fault.first);
}

MemoryFault ToMemoryFault(const std::string& text)
{
    MemoryFault fault{};
    std::istringstream(text) >> fault.onwards >> fault.first;
    return fault;
}

} // namespace

class MemoryFaultSweep : public HostTest
{
protected:
    static constexpr int Shares = 4;

    /// The parent part, for one share of the faults.
    void Sweep(const std::string& name, int share, int denseUpTo, int pointsAfter)
    {
        installation.Install();
        const ChildOutcome counting = RunChild(ToText({false, 0}));
        ASSERT_TRUE(counting.passed) << counting.output;
        const int allocations = std::stoi(counting.report);
        ASSERT_GT(allocations, 100);
        const int dense = LongForm() ? allocations : denseUpTo;
        const int stride = std::max(1, (allocations - dense) / pointsAfter);
        int points = 0;
        int index = 0;
        for (int first = 1; first <= allocations; first += first < dense ? 1 : stride)
        {
            if (index++ % Shares != share)
                continue;
            for (const bool onwards : {false, true})
            {
                if (onwards && !LongForm() && index % 5 != 0)
                    continue;
                const std::string fault = ToText({onwards, first});
                const ChildOutcome outcome = RunChild(fault);
                EXPECT_TRUE(outcome.passed) << "with the fault " << fault << ", exit code " << outcome.code << '\n'
                                            << outcome.output;
                EXPECT_THAT(outcome.output, Not(HasSubstr(InterfaceMissing))) << "with the fault " << fault;
                ++points;
            }
        }
        if (share == 0)
            PrintCount("allocations, " + name, allocations);
        PrintCount("memory fault points, " + name, points);
    }

    /// The child part: runs `use` with the fault.
    void Try(const std::string& input, const std::function<void()>& use)
    {
        PreparePlugin();
        const MemoryFault fault = ToMemoryFault(input);
        {
            ImportHooks hooks;
            ThrowOnce(hooks);
            hooks.Fail(Allocators, fault.first, NoMemory, fault.onwards ? ImportHooks::AllLater : 1);
            use();
            ReportToParent(std::to_string(hooks.Matched()));
            hooks.Fail({}, 0, NoMemory, 0);
        }
        ExpectLocksAreFree();
        ExpectAnotherStartBalances();
        ExpectNoPluginHalfConfigured();
    }

    /// Makes a start-up work without the client config file, which a fault may keep from being read.
    void InstallServerApplicationBesideHost()
    {
        installation.InstallServerApplication(installation.HostFolder());
        installation.WriteCompatibilityFile({CompatibilityEntry{Utf8(installation.PluginFile())}});
        std::filesystem::rename(installation.CompatibilityFile(),
                                installation.HostFolder() / installation.CompatibilityFile().filename());
    }

    /// The compiler's runtime allocates what a thread needs for exceptions with the first one, and ends the process if
    /// that fails. So the library throws its first exception before the sweep.
    static void ThrowOnce(ImportHooks& hooks)
    {
        hooks.Fail(Allocators, 1, NoMemory, 2);
        EXPECT_THROW(ProductConfig(), std::bad_alloc);
    }

private:
    void PreparePlugin()
    {
        PluginControl& plugin = plugin_.emplace(installation.PluginFile());
        plugin.OnCall(Client::GetOAuth2AccessToken,
                      [](const CallArguments& arguments) { WriteText(arguments, 0, Token); });
        plugin.OnCall(Client::GetSessionUri,
                      [](const CallArguments& arguments) { WriteText(arguments, 2, SessionAddress); });
        plugin.OnCall(Client::AddObserver,
                      [this](const CallArguments& arguments) { observer_ = arguments.Pointer<IObserver>(0); });
        plugin.OnCall(Client::DispatchEvent, [this](const CallArguments&) {
            if (observer_ != nullptr)
                observer_->OnLoggedIn(IdSuccess);
        });
        plugin.Return(Client::IsApiAvailable, 1);
        settingsPath_ = L"C:\\a path of the plugin's settings that is long enough";
        plugin.Return(Private::GetSettingsPath,
                      static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(settingsPath_.c_str())));
    }

    /// Each start of the plugin's module has its stop.
    void ExpectAnotherStartBalances()
    {
        const talix_status_code result = talix_init();
        EXPECT_THAT(result, AnyOf(IdSuccess, IdClientUnavailable));
        if (result == IdSuccess)
        {
            EXPECT_EQ(talix_deinit(), IdSuccess);
        }
        EXPECT_FALSE(IdServicesMgr::IsInitialized());
        EXPECT_EQ(plugin_->Calls(Module::Initialize).size(), plugin_->Calls(Module::Uninitialize).size());
    }

    /// A plugin that was used had got the identity names and the server application before.
    void ExpectNoPluginHalfConfigured()
    {
        for (const LogLine& line : plugin_->Log())
            EXPECT_THAT(line.text, Not(HasSubstr(InterfaceMissing)));
        const std::vector<std::string> configured = plugin_->Calls(ServerManager::Interface);
        for (const std::string& call : plugin_->Calls(ServerManager::ConfigureServerApp))
            EXPECT_THAT(call, HasSubstr("Pellwick.exe\""));
        if (!plugin_->Calls(Module::Interface).empty())
        {
            EXPECT_THAT(configured,
                        Contains(Call(ServerManager::SetProcessIdentityName, "\"Kestrany.TALIX.DefaultProcess-v2\"")));
            EXPECT_THAT(configured,
                        Contains(Call(ServerManager::SetServerIdentityName, "\"Kestrany.TALIX.DefaultServer-v2\"")));
        }
    }

    std::optional<PluginControl> plugin_;
    std::wstring settingsPath_;
    IObserver* observer_ = nullptr;
};

class MemoryFaults : public MemoryFaultSweep, public testing::WithParamInterface<int>
{
};

namespace {

void UseFlatTexts()
{
    char text[256] = "untouched";
    talix_buffer buffer{text, sizeof text};
    const talix_status_code token = talix_get_token(&buffer);
    EXPECT_THAT(token, AnyOf(IdSuccess, IdFailed));
    EXPECT_EQ(text, token == IdSuccess ? ToUtf8(Token) : "untouched");

    std::strcpy(text, "untouched");
    const talix_status_code address = talix_get_session_uri("https://host.invalid/a/path/that/is/long", 0, &buffer);
    EXPECT_THAT(address, AnyOf(IdSuccess, IdFailed));
    EXPECT_EQ(text, address == IdSuccess ? ToUtf8(SessionAddress) : "untouched");

    char server[64];
    char sdk[64];
    talix_versions versions{server, sizeof server, sdk, sizeof sdk};
    const talix_status_code version = talix_get_versions(&versions);
    EXPECT_THAT(version, AnyOf(IdSuccess, IdFailed));
    if (version == IdSuccess)
    {
        EXPECT_STREQ(sdk, "1.11.13.3");
    }
}

void UseFlatConfiguration()
{
    const talix_product_config config = talix_create_product_config("a client ID of some length", "openid profile");
    if (config == nullptr)
        return;
    talix_set_product_line_name(config, "a product line with a name of some length");
    EXPECT_EQ(talix_set_product_config(TALIX_SERVER_PRODUCTION, config), IdSuccess);
}

void UseFlatEvents()
{
    eventsReceived = 0;
    const talix_status_code added = talix_add_event_callback(&Receive, nullptr);
    EXPECT_THAT(added, AnyOf(IdSuccess, IdFailed));
    EXPECT_EQ(talix_dispatch_events(), IdSuccess);
    EXPECT_EQ(eventsReceived, added == IdSuccess ? 1 : 0);
    EXPECT_EQ(talix_remove_event_callback(&Receive), IdSuccess);
}

void UseFlatInterface()
{
    const talix_status_code started = talix_init();
    EXPECT_THAT(started, AnyOf(IdSuccess, IdClientUnavailable, IdFailed));
    EXPECT_EQ(started == IdSuccess, IdServicesMgr::IsInitialized());
    if (started != IdSuccess)
        return;
    EXPECT_EQ(talix_get_boolean(TALIX_KEY_INITIALIZED), 1);
    UseFlatTexts();
    UseFlatConfiguration();
    UseFlatEvents();
    EXPECT_EQ(talix_clear_proxy_info(), IdSuccess);
    EXPECT_EQ(talix_deinit(), IdSuccess);
}

/// Runs a step, which may only throw std::bad_alloc. Returns whether it reached its end.
template <typename Step>
bool Survives(Step&& step)
{
    try
    {
        step();
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

void UseClasses(const MemoryFault& fault)
{
    const bool located = Survives([]() { SSOClientPrivate::GetSSOServerAppPath(); });
    std::optional<IdErrorCode> started;
    Survives([&started]() { started = IdServicesMgr::Initialize(); });
    EXPECT_EQ(started == IdSuccess, IdServicesMgr::IsInitialized());
    if (!located && !fault.onwards)
    {
        EXPECT_EQ(started, IdSuccess) << "the client config file, which is read once, is not needed here";
    }
    if (started != IdSuccess)
    {
        EXPECT_THAT(started, AnyOf(Eq(std::nullopt), Eq(IdClientUnavailable)));
        return;
    }
    IdServicesMgr& services = *IdServicesMgr::GetInstance();
    Survives([]() {
        std::wstring text = L"%ExePath%\\a folder and a file with a long name.txt";
        EXPECT_TRUE(SSOClientPrivate::ExpandPathVariables(text));
        EXPECT_EQ(text.find(L'%'), std::wstring::npos);
    });
    Survives([]() {
        EXPECT_EQ(SSOClientPrivate::GetSettingsPath(), L"C:\\a path of the plugin's settings that is long enough");
    });
    Survives([]() { SSOClientPrivate::GetLogFile(); });
    Survives([&services]() {
        ProductConfig config;
        config.SetOAuth2ClientID("a client ID of some length");
        const ProductConfig copy(config);
        EXPECT_EQ(services.SetProductConfig(TALIX_SERVER_PRODUCTION, copy), IdSuccess);
        EXPECT_EQ(services.GetProductConfig(TALIX_SERVER_PRODUCTION, config), IdSuccess);
    });
    wchar_t token[128] = {};
    EXPECT_EQ(services.GetOAuth2AccessToken(token, 128, false), IdSuccess);
    EXPECT_STREQ(token, Token);
    EXPECT_EQ(services.DispatchEvent(), IdSuccess);
    EXPECT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
}

} // namespace

TEST_P(MemoryFaults, TheFlatInterfaceReturnsItsCodes)
{
    if (const auto input = ChildInput())
        return Try(*input, &UseFlatInterface);
    Sweep("flat interface", GetParam(), 150, 40);
}

TEST_P(MemoryFaults, TheClassesReturnTheirCodesOrThrowBadAlloc)
{
    if (const auto input = ChildInput())
        return Try(*input, [&input]() { UseClasses(ToMemoryFault(*input)); });
    InstallServerApplicationBesideHost();
    Sweep("classes", GetParam(), 20, 60);
}

using MemoryFaultWhileLoading = MemoryFaultSweep;

TEST_F(MemoryFaultWhileLoading, OutOfMemoryWhileAnExceptionIsLoggedThePluginIsNotHalfLoaded)
{
    installation.Install();
    PluginControl plugin(installation.PluginFile());
    ImportHooks hooks;
    ThrowOnce(hooks);
    hooks.Fail({}, 0, NoMemory, 0);
    plugin.OnCall(Factory::GetSSOClient, [&hooks](const CallArguments&) {
        hooks.Fail(Allocators, 1, NoMemory, ImportHooks::AllLater);
        throw std::runtime_error("a reason of some length, which is told where there is memory for it");
    });
    EXPECT_EQ(talix_init(), IdClientUnavailable);
    hooks.Fail({}, 0, NoMemory, 0);
    EXPECT_EQ(talix_init(), IdClientUnavailable);
    EXPECT_THAT(plugin.Calls(Module::Interface), testing::IsEmpty()) << "which the plugin had given before it threw";
}

INSTANTIATE_TEST_SUITE_P(Share, MemoryFaults, testing::Range(0, 4));

} // namespace OrlindexTest
