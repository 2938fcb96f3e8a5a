// A host for tools and automation: shows the library's file locations, and starts, monitors and quits a server process.

#include <chrono>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>

#include <windows.h>

#include "orlindex/IdServicesAutomation.h"
#include "orlindex/IdServicesMgr.h"
#include "orlindex/SSOClientPrivate.h"
#include "orlindex/SSOServerManager.h"

using namespace Kestrany;
using namespace Kestrany::IdentityServices;

namespace {

constexpr std::chrono::milliseconds Limit{15000};

constexpr char HelpText[] = "tools_host: an example host of the private surface of Orlindex.dll\n"
                            "\n"
                            "Usage: tools_host [--help]\n"
                            "\n"
                            "Prints where the library finds its things, starts a server process, asks it, reads and\n"
                            "sets what tools may set, and quits all server processes. Exit code 0 when all of it\n"
                            "succeeded, 1 when a step failed, 2 for wrong arguments, 3 when the client plugin module\n"
                            "could not be loaded.\n";

std::string ToUtf8(const std::wstring& text)
{
    if (text.empty())
        return {};
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(size > 0 ? size : 0), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, narrow.data(), size, nullptr, nullptr);
    return narrow;
}

void Print(const char* what, const std::string& value)
{
    std::printf("%-24s %s\n", what, value.c_str());
}

bool Check(const char* step, bool succeeded)
{
    Print(step, succeeded ? "succeeded" : "FAILED");
    return succeeded;
}

bool Check(const char* step, IdErrorCode code)
{
    Print(step, code == IdSuccess ? "IdSuccess" : "code " + std::to_string(code));
    return code == IdSuccess;
}

/// Prints a text. Returns whether it is not empty.
bool Show(const char* what, const std::string& value)
{
    Print(what, value.empty() ? "(none)" : value);
    return !value.empty();
}

bool ShowLocations()
{
    const bool server = Show("server application", ToUtf8(SSOClientPrivate::GetSSOServerAppPath()));
    const bool plugin = Show("plugin module", ToUtf8(SSOClientPrivate::GetSSOClientPluginModule()));
    const bool config = Show("client config file", ToUtf8(SSOClientPrivate::GetSSOClientConfigFile()));
    const bool log = Show("log file", ToUtf8(SSOClientPrivate::GetLogFile()));
    const bool settings = Show("settings", ToUtf8(SSOClientPrivate::GetSettingsPath()));
    return server && plugin && config && log && settings;
}

bool StartServer()
{
    // If this host crashes, the server process still quits after 300 seconds.
    const char* const arguments[] = {"--quit-after", "300"};
    std::int64_t started = 0;
    std::int64_t running = 0;
    if (!Check("start server", SSOClientPrivate::StartSSOServerProcess(arguments, 2, Limit, started)) ||
        !Check("is it ready", SSOServerManager::IsSSOServerProcessReady()) ||
        !Check("is it running", SSOServerManager::IsSSOServerProcessRunning(running)))
        return false;
    Print("  process", std::to_string(running));
    return started == running;
}

bool PingServer()
{
    std::map<std::string, std::string> answers;
    if (!Check("ping server", SSOClientPrivate::Ping(answers)))
        return false;
    for (const auto& [name, value] : answers)
        Print(("  " + name).c_str(), value);
    return !answers.empty();
}

/// The plugin calls this while the server is frozen and does not reply. A tool would examine the server here.
int LookAndThaw(const char* request, int, char* answer, int capacity, void*)
{
    static constexpr char thaw[] = "thaw";
    Print("  while frozen", request);
    if (capacity < static_cast<int>(sizeof thaw))
        return 0;
    std::memcpy(answer, thaw, sizeof thaw);
    return static_cast<int>(std::strlen(thaw));
}

bool FreezeServer()
{
    return Check("freeze and thaw server", SSOClientPrivate::FreezeSSOServerProcess(LookAndThaw)) && PingServer();
}

bool ShowProduct()
{
    ProductConfig product;
    product.SetOAuth2ClientID("example-tools-host");
    product.SetOAuth2TokenScope("openid profile");
    product.SetProductLineName("Examples");
    product.SetProductReleaseId("1");
    product.SetProductBuildId("1.0.0");
    const Server server = IdServicesMgr::GetInstance()->GetServer();
    Print("server name", ToUtf8(SSOClientPrivate::ServerToServerName(server)));
    const std::string json = SSOClientPrivate::ToJsonString(server, &product);
    if (!Show("product as JSON", json))
        return false;

    Server serverRead = TALIX_SERVER_UNAVAILABLE;
    ProductConfig productRead;
    return Check("product from JSON", SSOClientPrivate::FromJsonString(&serverRead, &productRead, json)) &&
           Check("is it the same", serverRead == server && SSOClientPrivate::Equals(product, productRead));
}

bool EncryptText()
{
    const std::string encrypted = ToUtf8(SSOClientPrivate::Encrypt(L"a text for this user alone"));
    return Show("encrypted text", encrypted.substr(0, 32) + (encrypted.size() > 32 ? "..." : ""));
}

bool SetRetrySchedule()
{
    const StdUtil::RetrySchedule wanted{120'000, {{500, 2}, {5'000, 4}}};
    if (!Check("set retry schedule", SSOClientPrivate::SetOAuth2TokenRefreshRetrySchedule(wanted)))
        return false;
    const StdUtil::RetrySchedule schedule = SSOClientPrivate::GetActiveOAuth2TokenRefreshRetrySchedule();
    for (const StdUtil::RetryStep& step : schedule.steps)
        Print("  step", std::to_string(step.tries) + " tries, " + std::to_string(step.delay) + " ms before each");
    Print("  limit", std::to_string(schedule.limit) + " ms");
    return schedule.steps.size() == wanted.steps.size() && schedule.limit == wanted.limit;
}

bool SetFrozenServerTimeout()
{
    const std::chrono::seconds wanted{45};
    if (!Check("set frozen-server time", SSOClientPrivate::SetKillFrozenServerTimeout(wanted)))
        return false;
    const std::chrono::seconds timeout = SSOClientPrivate::GetKillFrozenServerTimeout();
    Print("  killed after", std::to_string(timeout.count()) + " s");
    return timeout == wanted;
}

bool OverrideConfiguration()
{
    CallConfig call;
    call.interval = 600;
    call.failInterval = 60;
    call.maxJitter = 5;
    call.url = "https://calls.example/";
    BackoffConfig backoff;
    backoff.initialInterval = 2;
    backoff.maxInterval = 120;
    backoff.multiplier = 2;
    backoff.maxRetries = 8;
    return Check("override calls", IdServicesAutomation::SetOverridingConfig(call, IdServicesAutomation::Call)) &&
           Check("override back-off",
                 IdServicesAutomation::SetOverridingConfig(backoff, IdServicesAutomation::Backoff));
}

bool QuitServers()
{
    return Check("quit all servers", SSOServerManager::QuitAllSSOServerProcesses(Limit)) &&
           Check("does none run", !SSOServerManager::IsSSOServerProcessRunning());
}

bool UseServer()
{
    const bool used = StartServer() && PingServer() && FreezeServer();
    // Quits the servers even if a step failed.
    return QuitServers() && used;
}

bool UseLibrary()
{
    const bool located = ShowLocations();
    const bool served = UseServer();
    const bool set = ShowProduct() && EncryptText() && SetRetrySchedule() && SetFrozenServerTimeout() &&
                     OverrideConfiguration() && Show("session state", SSOClientPrivate::GetSessionState());
    return located && served && set;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc > 1)
    {
        const bool help = argc == 2 && std::strcmp(argv[1], "--help") == 0;
        std::fputs(HelpText, help ? stdout : stderr);
        return help ? 0 : 2;
    }
    SetConsoleOutputCP(CP_UTF8);

    const IdErrorCode started = IdServicesMgr::Initialize();
    if (!Check("Initialize", started))
    {
        if (started != IdClientUnavailable)
            return 1;
        std::fflush(stdout);
        std::fputs(
            "\nThe library found no client plugin module that it may load; the errors above say why. It searched\n"
            "from where these point, which need no plugin:\n",
            stderr);
        Show("client config file", ToUtf8(SSOClientPrivate::GetSSOClientConfigFile()));
        Show("server application", ToUtf8(SSOClientPrivate::GetSSOServerAppPath()));
        Show("plugin module", ToUtf8(SSOClientPrivate::GetSSOClientPluginModule()));
        return 3;
    }
    const bool done = UseLibrary();
    const bool stopped = Check("Uninitialize", IdServicesMgr::Uninitialize());
    std::puts(done && stopped ? "All steps succeeded." : "A step failed; its result is above.");
    return done && stopped ? 0 : 1;
}
