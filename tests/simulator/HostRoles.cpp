#include "HostRoles.h"

#include <map>

#include <windows.h>

#include "Environment.h"
#include "load/contract/ISSOClient.h"
#include "load/contract/ISSOClientModule.h"
#include "load/contract/ISSOClientPrivate.h"
#include "load/contract/ISSOServerManager.h"
#include "platform/Handle.h"

namespace Kestrany::Simulator {

namespace {

using Arguments = std::vector<std::string>;

constexpr DWORD MeetingLimit = 30'000;

/// Tells the test that the host is where it should be, and waits until it may go on.
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
    static const char* const quitAfterAMinute[] = {"--quit-after", "60"};
    IdentityServices::ISSOServerManager& servers = *PluginFactory().GetSSOServerManager();
    ConfigureServer(arguments.at(0));
    std::int64_t started = 0;
    std::int64_t running = 0;
    std::map<std::string, std::string> answers;
    return servers.StartSSOServerProcessWithArguments(quitAfterAMinute, 2, 20'000, started) &&
           servers.IsSSOServerProcessRunning(running) && running == started && Private().Ping(answers) &&
           answers["processId"] == std::to_string(started) && Meet(meeting);
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

/// login IDENTITY: signs the user in and ends, without signing out.
bool LogIn(const std::string&, const Arguments& arguments)
{
    PluginFactory().GetSSOServerManager()->SetServerIdentityName(arguments.at(0).c_str());
    PluginFactory().GetSSOClientModule()->Initialize(false);
    IdentityServices::ProductConfig product;
    product.SetOAuth2ClientID("other-host");
    IdentityServices::ISSOClient& client = *PluginFactory().GetSSOClient();
    int detail = -1;
    return client.SetProductConfig(TALIX_SERVER_PRODUCTION, product) == ::IdSuccess &&
           client.Login(detail) == ::IdSuccess && detail == 0;
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
        {"server", UseServer}, {"lock", HoldLock}, {"login", LogIn}};
    const Arguments own(arguments.begin() + 2, arguments.end());
    return roles.at(arguments.at(1))(arguments.at(0), own) ? 0 : 1;
}

} // namespace Kestrany::Simulator
