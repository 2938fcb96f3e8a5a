// A complete host in C++: signs the user in, reads what a host usually reads, and signs the user out.

#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>

#include <windows.h>

#include "orlindex/IdServicesMgr.h"

using namespace Kestrany::IdentityServices;

namespace {

constexpr char HelpText[] = "cpp_host: an example host of Orlindex.dll\n"
                            "\n"
                            "Usage: cpp_host [--help]\n"
                            "\n"
                            "Signs the user in, prints user, access token, expiry and a session address, and signs\n"
                            "the user out. Exit code 0 when all of it succeeded, 1 when a step failed, 2 for wrong\n"
                            "arguments, 3 when the client plugin module could not be loaded.\n";

constexpr char PluginMissingText[] =
    "\n"
    "The library runs, but found no client plugin module that it may load. Errors are printed\n"
    "above; look there for the first one, and check in this order:\n"
    "  1. Pellwick.exe is installed: the registry key HKLM\\SOFTWARE\\Kestrany\\Pellwick names its\n"
    "     directory, or Orlindex.config beside this program does (\"searchPaths\").\n"
    "  2. TALIXVersionCompatibility.config lies beside Pellwick.exe and lists a module for this\n"
    "     version of Orlindex.dll.\n"
    "  3. The module is there and signed by a signer that this build of Orlindex.dll trusts.\n";

std::string NameOf(int code)
{
    switch (code)
    {
    case IdSuccess:
        return "IdSuccess";
    case IdFailed:
        return "IdFailed";
    case IdClientUnavailable:
        return "IdClientUnavailable";
    case IdInvalidClientId:
        return "IdInvalidClientId";
    case IdBufferTooSmall:
        return "IdBufferTooSmall";
    default:
        return "code " + std::to_string(code);
    }
}

std::string ToUtf8(const wchar_t* text)
{
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string narrow(size > 0 ? static_cast<std::size_t>(size) : 1, '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow.data(), size, nullptr, nullptr);
    narrow.pop_back(); // the terminating zero
    return narrow;
}

void Print(const char* what, const std::string& value)
{
    std::printf("%-20s %s\n", what, value.c_str());
}

bool Check(const char* step, IdErrorCode code)
{
    Print(step, NameOf(code));
    return code == IdSuccess;
}

/// Receives identity events. The plugin calls it on the thread that dispatches events, so it needs no lock.
class PrintingObserver final : public IObserver
{
public:
    void OnLoggedIn(const std::int32_t& status) override { Print("  event", "logged in, " + NameOf(status)); }
    void OnLoggedOut(const std::int32_t& status) override { Print("  event", "logged out, " + NameOf(status)); }
    void OnAccountCreated(const std::int32_t& status) override
    {
        Print("  event", "account created, " + NameOf(status));
    }
    void OnTokenRefreshed(const std::int32_t& status) override
    {
        Print("  event", "token refreshed, " + NameOf(status));
    }
    void OnTokenAvailable(const std::int32_t& status) override
    {
        Print("  event", "token available, " + NameOf(status));
    }
    void OnServerChanged(const Server& server) override { Print("  event", "server " + std::to_string(server)); }
    bool OnAboutToLogout() override
    {
        Print("  question", "may the user be logged out? yes");
        return true;
    }
    void OnLoginRestored() override { Print("  event", "login restored"); }
    void OnOtherEvent(const IdServicesConsts::IdServicesEvent& event) override
    {
        Print("  event", "number " + std::to_string(event));
    }
};

/// A host with a message loop calls this regularly, on its own thread.
bool DispatchEvents(IdServicesMgr& manager)
{
    while (manager.HasEvent())
    {
        if (!Check("DispatchEvent", manager.DispatchEvent()))
            return false;
    }
    return true;
}

bool SetProduct(IdServicesMgr& manager)
{
    ProductConfig product;
    product.SetOAuth2ClientID("example-cpp-host");
    product.SetOAuth2TokenScope("openid profile");
    product.SetProductLineName("Examples");
    product.SetProductReleaseId("1");
    product.SetProductBuildId("1.0.0");
    return Check("SetProductConfig", manager.SetProductConfig(manager.GetServer(), product));
}

bool PrintUser(IdServicesMgr& manager)
{
    char name[256] = "";
    char email[256] = "";
    talix_user_info info{};
    info.display_name = name;
    info.display_name_size = sizeof name;
    info.email = email;
    info.email_size = sizeof email;
    if (!Check("GetUserInfo", manager.GetUserInfo(&info)))
        return false;
    Print("  user", std::string(name) + " <" + email + ">");
    return true;
}

bool PrintToken(IdServicesMgr& manager)
{
    wchar_t buffer[4096] = L"";
    if (!Check("GetOAuth2AccessToken", manager.GetOAuth2AccessToken(buffer, 4096, true)))
        return false;
    // Anyone who has the whole token can act as the user: never print or log a whole token.
    const std::string token = ToUtf8(buffer);
    Print("  token", token.substr(0, 24) + "... (" + std::to_string(token.size()) + " characters)");
    return true;
}

bool PrintExpiry(IdServicesMgr& manager)
{
    const std::time_t expiry = manager.GetOAuth2AccessTokenExpiryDate();
    const std::tm* utc = std::gmtime(&expiry);
    char text[64] = "";
    if (utc == nullptr || std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", utc) == 0)
        return false;
    const double left = std::difftime(expiry, std::time(nullptr));
    Print("  expires", std::string(text) + ", " + std::to_string(static_cast<long>(left)) + " seconds left");
    return left > 0;
}

bool PrintSessionAddress(IdServicesMgr& manager)
{
    wchar_t buffer[2048] = L"";
    if (!Check("GetSessionUri", manager.GetSessionUri(L"https://shop.example/account", 0, buffer, 2048)))
        return false;
    const std::string address = ToUtf8(buffer);
    Print("  address", address.substr(0, 60) + (address.size() > 60 ? "..." : ""));
    return true;
}

bool LogIn(IdServicesMgr& manager)
{
    int detail = 0;
    return Check("Login", manager.Login(detail)) && DispatchEvents(manager) && manager.IsLoginValid();
}

bool LogOut(IdServicesMgr& manager)
{
    int detail = 0;
    return Check("Logout", manager.Logout(detail, TALIX_LOGOUT_DEFAULT)) && DispatchEvents(manager) &&
           !manager.IsLoggedIn();
}

bool UseLibrary(IdServicesMgr& manager)
{
    PrintingObserver observer;
    if (!SetProduct(manager) || !Check("AddObserver", manager.AddObserver(&observer)))
        return false;
    const bool done = LogIn(manager) && PrintUser(manager) && PrintToken(manager) && PrintExpiry(manager) &&
                      PrintSessionAddress(manager) && LogOut(manager);
    // The plugin uses the observer until it is removed.
    return Check("RemoveObserver", manager.RemoveObserver(&observer)) && done;
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
    Print("Initialize", NameOf(started));
    if (started == IdClientUnavailable)
    {
        std::fflush(stdout);
        std::fputs(PluginMissingText, stderr);
        return 3;
    }
    if (started != IdSuccess)
        return 1;

    const bool done = UseLibrary(*IdServicesMgr::GetInstance());
    const bool stopped = Check("Uninitialize", IdServicesMgr::Uninitialize());
    std::puts(done && stopped ? "All steps succeeded." : "A step failed; its result is above.");
    return done && stopped ? 0 : 1;
}
