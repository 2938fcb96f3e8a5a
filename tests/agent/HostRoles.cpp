#include "HostRoles.h"

#include <map>

#include <windows.h>

#include "Environment.h"
#include "EventRecorder.h"
#include "Worker.h"
#include "load/contract/ISSOClient.h"
#include "load/contract/ISSOClientModule.h"
#include "load/contract/ISSOClientPrivate.h"
#include "load/contract/ISSOServerManager.h"
#include "platform/AtomicFile.h"
#include "platform/Base.h"
#include "support/Patience.h"

namespace Kestrany::Agent {

namespace {

using Arguments = std::vector<std::string>;

constexpr DWORD MeetingLimit = OrlindexTest::PatienceMilliseconds;

/// Signals the test that the host is ready, and waits until it may continue.
bool Meet(const std::string& meeting)
{
    const Handle arrived(OpenEventW(EVENT_MODIFY_STATE, FALSE, ArrivedEventName(meeting).c_str()));
    const Handle leave(OpenEventW(SYNCHRONIZE, FALSE, LeaveEventName(meeting).c_str()));
    return SetEvent(arrived.get()) && WaitForSingleObject(leave.get(), MeetingLimit) == WAIT_OBJECT_0;
}

IdentityServices::ISSOClientPrivate& Private()
{
    return *PluginFactory().GetSSOClientPrivate();
}

/// server IDENTITY: starts the server or finds it, and stays until it is told to leave.
bool UseServer(const std::string& meeting, const Arguments& arguments)
{
    static const char* const quitAfterAnHour[] = {"--quit-after", "3600"};
    IdentityServices::ISSOServerManager& servers = *PluginFactory().GetSSOServerManager();
    ConfigureServer(arguments.at(0));
    std::int64_t started = 0;
    std::int64_t running = 0;
    std::map<std::string, std::string> texts;
    return servers.StartSSOServerProcessWithArguments(quitAfterAnHour, 2, MeetingLimit, started) &&
           servers.IsSSOServerProcessRunning(running) && running == started && Private().Ping(texts) &&
           texts["processId"] == std::to_string(started) && Meet(meeting);
}

/// lock IDENTITY: holds the lock of the login's file until it is told to leave.
bool HoldLock(const std::string& meeting, const Arguments& arguments)
{
    PluginFactory().GetSSOServerManager()->SetServerIdentityName(arguments.at(0).c_str());
    Private().LockLoginStateFile();
    const bool met = Meet(meeting);
    Private().UnlockLoginStateFile();
    return met;
}

/// Starts the client as a host does, with a product of that name.
bool Begin(const std::string& clientId)
{
    PluginFactory().GetSSOClientModule()->Initialize(false);
    IdentityServices::ProductConfig product;
    product.SetOAuth2ClientID(clientId.c_str());
    product.SetOAuth2TokenScope("openid profile");
    return PluginFactory().GetSSOClient()->SetProductConfig(TALIX_SERVER_PRODUCTION, product) == ::IdSuccess;
}

/// login IDENTITY: signs the user in and ends, without signing out.
bool LogIn(const std::string&, const Arguments& arguments)
{
    PluginFactory().GetSSOServerManager()->SetServerIdentityName(arguments.at(0).c_str());
    int detail = -1;
    return Begin("other-host") && PluginFactory().GetSSOClient()->Login(detail) == ::IdSuccess && detail == 0;
}

/// watch CLIENT: stays until it is told to leave, and receives one event each of a login, of tokens and of a logout.
bool Watch(const std::string& meeting, const Arguments& arguments)
{
    IdentityServices::ISSOClient& client = *PluginFactory().GetSSOClient();
    EventRecorder observer;
    if (!Begin(arguments.at(0)) || client.AddObserver(&observer) != ::IdSuccess || client.IsLoggedIn())
        return false;
    if (!Meet(meeting))
        return false;
    // A response arrives after earlier events: no need to wait for them.
    const bool out = !client.IsLoggedIn();
    client.DispatchEvent();
    return out && observer.kinds == std::vector<std::string>{"LoggedIn", "TokenAvailable", "LoggedOut"};
}

/// tokens FILE: writes both tokens, one a line, and quits the server.
bool WriteTokens(const std::string&, const Arguments& arguments)
{
    IdentityServices::ISSOClient& client = *PluginFactory().GetSSOClient();
    int detail = -1;
    wchar_t access[4096] = L"";
    wchar_t id[4096] = L"";
    const bool done =
        Begin("verified-client") && client.Login(detail) == ::IdSuccess &&
        client.GetOAuth2AccessToken(access, 4096, true) == ::IdSuccess &&
        client.GetOAuth2IdToken(id, 4096) == ::IdSuccess &&
        ReplaceFileAtomically(WidenStrictly(arguments.at(0)).value(), Narrow(access) + "\n" + Narrow(id) + "\n");
    PluginFactory().GetSSOClientModule()->Uninitialize();
    return PluginFactory().GetSSOServerManager()->QuitSSOServerProcess(MeetingLimit) && done;
}

/// worker SEED: see Worker.h.
bool Work(const std::string& meeting, const Arguments& arguments)
{
    return Begin("worker-" + arguments.at(0)) &&
           RunWorker(meeting, static_cast<unsigned int>(std::stoul(arguments.at(0))));
}

} // namespace

std::wstring ArrivedEventName(const std::string& meeting)
{
    return L"Local\\" + std::wstring(meeting.begin(), meeting.end()) + L".Arrived";
}

std::wstring LeaveEventName(const std::string& meeting)
{
    return L"Local\\" + std::wstring(meeting.begin(), meeting.end()) + L".Leave";
}

int PlayHost(const Arguments& arguments)
{
    static const std::map<std::string, bool (*)(const std::string&, const Arguments&)> roles = {
        {"server", UseServer}, {"lock", HoldLock},      {"login", LogIn},
        {"watch", Watch},      {"tokens", WriteTokens}, {"worker", Work}};
    const Arguments own(arguments.begin() + 2, arguments.end());
    return roles.at(arguments.at(1))(arguments.at(0), own) ? 0 : 1;
}

} // namespace Kestrany::Agent
