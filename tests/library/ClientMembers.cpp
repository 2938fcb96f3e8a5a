#include "ClientMembers.h"

#include "support/PluginControl.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;

namespace {

using Manager = IdServicesMgr;
using Arguments = MemberArguments;

// No range is checked: values below 1000 and without a name pass too.
const std::vector<std::int64_t> statuses{1000, 1001, 3030, 999, 0, -7};
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
        {"GetProductConfig", 1, [](Manager& m, Arguments& a) { return m.GetProductConfig(AnyServer(11), a.config); },
         [](const Arguments& a) { return "11, " + Address(&a.config); }, statuses, 3005},
        {"SetProductConfig", 2, [](Manager& m, Arguments& a) { return m.SetProductConfig(AnyServer(-12), a.config); },
         [](const Arguments& a) { return "-12, " + Address(&a.config); }, statuses, 3005},
        {"GetUserInfo", 3, [](Manager& m, Arguments& a) { return m.GetUserInfo(&a.userInfo); },
         [](const Arguments& a) { return Address(&a.userInfo); }, statuses, 3004},
        {"GetSessionUri", 4,
         [](Manager& m, Arguments& a) { return m.GetSessionUri(L"https://a/\x00FC\x4E2D", 0xFEDC, a.text, 64); },
         [](const Arguments& a) { return "\"https://a/\xC3\xBC\xE4\xB8\xAD\", 65244, " + Address(a.text) + ", 64"; },
         statuses, 3004},
        {"IsOAuth2TokenAvailable", 5, [](Manager& m, Arguments&) { return m.IsOAuth2TokenAvailable(); }, None, booleans,
         false},
        {"GetOAuth2AccessToken", 6, [](Manager& m, Arguments& a) { return m.GetOAuth2AccessToken(a.text, 63, true); },
         [](const Arguments& a) { return Address(a.text) + ", 63, true"; }, statuses, 3005},
        {"GetOAuth2AccessToken without waiting", 6,
         [](Manager& m, Arguments& a) { return m.GetOAuth2AccessToken(a.text, 62, false); },
         [](const Arguments& a) { return Address(a.text) + ", 62, false"; }, statuses, 3005},
        {"IsLoggedIn", 7, [](Manager& m, Arguments&) { return m.IsLoggedIn(); }, None, booleans, false},
        {"GetOAuth2AccessTokenExpiryDate", 8,
         [](Manager& m, Arguments&) { return std::int64_t{m.GetOAuth2AccessTokenExpiryDate()}; }, None, times, 0},
        {"IsOAuth2TokenExpired", 9, [](Manager& m, Arguments&) { return m.IsOAuth2TokenExpired(); }, None, booleans,
         true},
        {"GetLoginExpiryDate", 10, [](Manager& m, Arguments&) { return std::int64_t{m.GetLoginExpiryDate()}; }, None,
         times, 0},
        {"IsLoginExpired", 11, [](Manager& m, Arguments&) { return m.IsLoginExpired(); }, None, booleans, false},
        {"IsLoginValid", 12, [](Manager& m, Arguments&) { return m.IsLoginValid(); }, None, booleans, false},
        {"RefreshOAuth2Token", 13, [](Manager& m, Arguments&) { return m.RefreshOAuth2Token(true); },
         [](const Arguments&) { return std::string("true"); }, statuses, 3005},
        {"GetServer", 14, [](Manager& m, Arguments&) { return m.GetServer(); }, None, enumerators, 0},
        {"SetServer", 15, [](Manager& m, Arguments&) { return m.SetServer(AnyServer(0x7654321)); },
         [](const Arguments&) { return std::string("124076833"); }, statuses, 3005},
        {"Logout", 16, [](Manager& m, Arguments& a) { return m.Logout(a.result, static_cast<talix_logout_flags>(77)); },
         [](const Arguments& a) { return Address(&a.result) + ", 77"; }, statuses, 3005},
        {"AddObserver", 17, [](Manager& m, Arguments& a) { return m.AddObserver(a.observer); },
         [](const Arguments& a) { return Address(a.observer); }, statuses, 3005, 1000},
        {"RemoveObserver", 18, [](Manager& m, Arguments& a) { return m.RemoveObserver(a.observer); },
         [](const Arguments& a) { return Address(a.observer); }, statuses, 3005, 1000},
        {"HasProxyInfo", 19, [](Manager& m, Arguments&) { return m.HasProxyInfo("proxy.example", 3128); },
         [](const Arguments&) { return std::string("\"proxy.example\", 3128"); }, statuses, 3005},
        {"HasProxyInfo of no host", 19, [](Manager& m, Arguments&) { return m.HasProxyInfo(nullptr, 0xFFFFFFFF); },
         [](const Arguments&) { return std::string("null, 4294967295"); }, statuses, 3005},
        {"GetProxyInfo", 20,
         [](Manager& m, Arguments& a) { return m.GetProxyInfo("other.example", 8080, &a.proxyInfo); },
         [](const Arguments& a) { return "\"other.example\", 8080, " + Address(&a.proxyInfo); }, statuses, 3005},
        {"SetProxyInfo", 21, [](Manager& m, Arguments& a) { return m.SetProxyInfo(&a.proxyInfo); },
         [](const Arguments& a) { return Address(&a.proxyInfo); }, statuses, 3005},
        {"ClearProxyInfo", 22, [](Manager& m, Arguments&) { return m.ClearProxyInfo(); }, None, statuses, 3005},
        {"GetProfileInfo", 23, [](Manager& m, Arguments& a) { return m.GetProfileInfo(a.profile, &a.profileSize); },
         [](const Arguments& a) { return Address(a.profile) + ", " + Address(&a.profileSize); }, statuses, 3005},
        {"GetEnvironment", 24, [](Manager& m, Arguments&) { return m.GetEnvironment(); }, None, enumerators, 0},
        {"DispatchEvent", 25, [](Manager& m, Arguments&) { return m.DispatchEvent(); }, None, statuses, 3005},
        {"HasEvent", 26, [](Manager& m, Arguments&) { return m.HasEvent(); }, None, booleans, false},
        {"Login", 28, [](Manager& m, Arguments& a) { return m.Login(a.result); },
         [](const Arguments& a) { return Address(&a.result); }, statuses, 3005},
        {"SetHostApplicationWindow", 30,
         [](Manager& m, Arguments&) {
             m.SetHostApplicationWindow(0xFEDCBA9876543210);
             return 0;
         },
         [](const Arguments&) { return std::string("-81985529216486896"); }, nothing, 0},
        {"ShowAccountSettings", 31, [](Manager& m, Arguments& a) { return m.ShowAccountSettings(a.result); },
         [](const Arguments& a) { return Address(&a.result); }, statuses, 3005},
        {"IsApiAvailable", 34, [](Manager& m, Arguments&) { return m.IsApiAvailable(static_cast<ApiFeature>(99)); },
         [](const Arguments&) { return std::string("99"); }, booleans, false},
        {"GetOAuth2IdToken", 35, [](Manager& m, Arguments& a) { return m.GetOAuth2IdToken(a.text, 61); },
         [](const Arguments& a) { return Address(a.text) + ", 61"; }, statuses, 3005},
        {"SetLoginMode", 36, [](Manager& m, Arguments&) { return m.SetLoginMode(static_cast<talix_login_mode>(-88)); },
         [](const Arguments&) { return std::string("-88"); }, statuses, 3005},
        {"GetLoginMode", 37, [](Manager& m, Arguments& a) { return m.GetLoginMode(a.mode); },
         [](const Arguments& a) { return Address(&a.mode); }, statuses, 3005},
    };
    return members;
}

} // namespace OrlindexTest
