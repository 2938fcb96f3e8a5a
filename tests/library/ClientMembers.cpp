#include "ClientMembers.h"

#include "support/PluginControl.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;

namespace {

using Manager = IdServicesMgr;
using Arguments = MemberArguments;

// The library checks no range: values below IdSuccess and values without a name pass too.
const std::vector<std::int64_t> statuses{IdSuccess, 1001, 3030, 999, 0, -7};
const std::vector<std::int64_t> booleans{1, 0};
const std::vector<std::int64_t> times{1, 0x7FFFFFFF, 0xFFFFFFFF, 0};
const std::vector<std::int64_t> enumerators{7, 0, -1, 0x12345678};
const std::vector<std::int64_t> nothing{0};

std::string None(const Arguments& /*arguments*/)
{
    return {};
}

Server AnyServer(int value)
{
    return static_cast<Server>(value);
}

} // namespace

const std::vector<ClientMember>& ClientMembers()
{
    static const std::vector<ClientMember> members{
        {"GetProductConfig", Client::GetProductConfig,
         [](Manager& m, Arguments& a) { return m.GetProductConfig(AnyServer(11), a.config); },
         [](const Arguments& a) { return "11, " + Address(&a.config); }, statuses, IdClientUnavailable},
        {"SetProductConfig", Client::SetProductConfig,
         [](Manager& m, Arguments& a) { return m.SetProductConfig(AnyServer(-12), a.config); },
         [](const Arguments& a) { return "-12, " + Address(&a.config); }, statuses, IdClientUnavailable},
        {"GetUserInfo", Client::GetUserInfo, [](Manager& m, Arguments& a) { return m.GetUserInfo(&a.userInfo); },
         [](const Arguments& a) { return Address(&a.userInfo); }, statuses, IdFailed},
        {"GetSessionUri", Client::GetSessionUri,
         [](Manager& m, Arguments& a) { return m.GetSessionUri(L"https://a/\x00FC\x4E2D", 0xFEDC, a.text, 64); },
         [](const Arguments& a) { return "\"https://a/\xC3\xBC\xE4\xB8\xAD\", 65244, " + Address(a.text) + ", 64"; },
         statuses, IdFailed},
        {"IsOAuth2TokenAvailable", Client::IsOAuth2TokenAvailable,
         [](Manager& m, Arguments&) { return m.IsOAuth2TokenAvailable(); }, None, booleans, false},
        {"GetOAuth2AccessToken", Client::GetOAuth2AccessToken,
         [](Manager& m, Arguments& a) { return m.GetOAuth2AccessToken(a.text, 63, true); },
         [](const Arguments& a) { return Address(a.text) + ", 63, true"; }, statuses, IdClientUnavailable},
        {"GetOAuth2AccessToken without waiting", Client::GetOAuth2AccessToken,
         [](Manager& m, Arguments& a) { return m.GetOAuth2AccessToken(a.text, 62, false); },
         [](const Arguments& a) { return Address(a.text) + ", 62, false"; }, statuses, IdClientUnavailable},
        {"IsLoggedIn", Client::IsLoggedIn, [](Manager& m, Arguments&) { return m.IsLoggedIn(); }, None, booleans,
         false},
        {"GetOAuth2AccessTokenExpiryDate", Client::GetOAuth2AccessTokenExpiryDate,
         [](Manager& m, Arguments&) { return std::int64_t{m.GetOAuth2AccessTokenExpiryDate()}; }, None, times, 0},
        {"IsOAuth2TokenExpired", Client::IsOAuth2TokenExpired,
         [](Manager& m, Arguments&) { return m.IsOAuth2TokenExpired(); }, None, booleans, true},
        {"GetLoginExpiryDate", Client::GetLoginExpiryDate,
         [](Manager& m, Arguments&) { return std::int64_t{m.GetLoginExpiryDate()}; }, None, times, 0},
        {"IsLoginExpired", Client::IsLoginExpired, [](Manager& m, Arguments&) { return m.IsLoginExpired(); }, None,
         booleans, false},
        {"IsLoginValid", Client::IsLoginValid, [](Manager& m, Arguments&) { return m.IsLoginValid(); }, None, booleans,
         false},
        {"RefreshOAuth2Token", Client::RefreshOAuth2Token,
         [](Manager& m, Arguments&) { return m.RefreshOAuth2Token(true); },
         [](const Arguments&) { return std::string("true"); }, statuses, IdClientUnavailable},
        {"GetServer", Client::GetServer, [](Manager& m, Arguments&) { return m.GetServer(); }, None, enumerators, 0},
        {"SetServer", Client::SetServer, [](Manager& m, Arguments&) { return m.SetServer(AnyServer(0x7654321)); },
         [](const Arguments&) { return std::string("124076833"); }, statuses, IdClientUnavailable},
        {"Logout", Client::Logout,
         [](Manager& m, Arguments& a) { return m.Logout(a.result, static_cast<talix_logout_flags>(77)); },
         [](const Arguments& a) { return Address(&a.result) + ", 77"; }, statuses, IdClientUnavailable},
        {"AddObserver", Client::AddObserver, [](Manager& m, Arguments& a) { return m.AddObserver(a.observer); },
         [](const Arguments& a) { return Address(a.observer); }, statuses, IdClientUnavailable, IdSuccess},
        {"RemoveObserver", Client::RemoveObserver,
         [](Manager& m, Arguments& a) { return m.RemoveObserver(a.observer); },
         [](const Arguments& a) { return Address(a.observer); }, statuses, IdClientUnavailable, IdSuccess},
        {"HasProxyInfo", Client::HasProxyInfo,
         [](Manager& m, Arguments&) { return m.HasProxyInfo("proxy.example", 3128); },
         [](const Arguments&) { return std::string("\"proxy.example\", 3128"); }, statuses, IdClientUnavailable},
        {"HasProxyInfo of no host", Client::HasProxyInfo,
         [](Manager& m, Arguments&) { return m.HasProxyInfo(nullptr, 0xFFFFFFFF); },
         [](const Arguments&) { return std::string("null, 4294967295"); }, statuses, IdClientUnavailable},
        {"GetProxyInfo", Client::GetProxyInfo,
         [](Manager& m, Arguments& a) { return m.GetProxyInfo("other.example", 8080, &a.proxyInfo); },
         [](const Arguments& a) { return "\"other.example\", 8080, " + Address(&a.proxyInfo); }, statuses,
         IdClientUnavailable},
        {"SetProxyInfo", Client::SetProxyInfo, [](Manager& m, Arguments& a) { return m.SetProxyInfo(&a.proxyInfo); },
         [](const Arguments& a) { return Address(&a.proxyInfo); }, statuses, IdClientUnavailable},
        {"ClearProxyInfo", Client::ClearProxyInfo, [](Manager& m, Arguments&) { return m.ClearProxyInfo(); }, None,
         statuses, IdClientUnavailable},
        {"GetProfileInfo", Client::GetProfileInfo,
         [](Manager& m, Arguments& a) { return m.GetProfileInfo(a.profile, &a.profileSize); },
         [](const Arguments& a) { return Address(a.profile) + ", " + Address(&a.profileSize); }, statuses,
         IdClientUnavailable},
        {"GetEnvironment", Client::GetEnvironment, [](Manager& m, Arguments&) { return m.GetEnvironment(); }, None,
         enumerators, 0},
        {"DispatchEvent", Client::DispatchEvent, [](Manager& m, Arguments&) { return m.DispatchEvent(); }, None,
         statuses, IdClientUnavailable},
        {"HasEvent", Client::HasEvent, [](Manager& m, Arguments&) { return m.HasEvent(); }, None, booleans, false},
        {"Login", Client::Login, [](Manager& m, Arguments& a) { return m.Login(a.result); },
         [](const Arguments& a) { return Address(&a.result); }, statuses, IdClientUnavailable},
        {"SetHostApplicationWindow", Client::SetHostApplicationWindow,
         [](Manager& m, Arguments&) {
             m.SetHostApplicationWindow(0xFEDCBA9876543210);
             return 0;
         },
         [](const Arguments&) { return std::string("-81985529216486896"); }, nothing, 0},
        {"ShowAccountSettings", Client::ShowAccountSettings,
         [](Manager& m, Arguments& a) { return m.ShowAccountSettings(a.result); },
         [](const Arguments& a) { return Address(&a.result); }, statuses, IdClientUnavailable},
        {"IsApiAvailable", Client::IsApiAvailable,
         [](Manager& m, Arguments&) { return m.IsApiAvailable(static_cast<ApiFeature>(99)); },
         [](const Arguments&) { return std::string("99"); }, booleans, false},
        {"GetOAuth2IdToken", Client::GetOAuth2IdToken,
         [](Manager& m, Arguments& a) { return m.GetOAuth2IdToken(a.text, 61); },
         [](const Arguments& a) { return Address(a.text) + ", 61"; }, statuses, IdClientUnavailable},
        {"SetLoginMode", Client::SetLoginMode,
         [](Manager& m, Arguments&) { return m.SetLoginMode(static_cast<talix_login_mode>(-88)); },
         [](const Arguments&) { return std::string("-88"); }, statuses, IdClientUnavailable},
        {"GetLoginMode", Client::GetLoginMode, [](Manager& m, Arguments& a) { return m.GetLoginMode(a.mode); },
         [](const Arguments& a) { return Address(&a.mode); }, statuses, IdClientUnavailable},
    };
    return members;
}

} // namespace OrlindexTest
