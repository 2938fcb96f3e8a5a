// Claims about a user: what a host gets of them.

#include <cstdint>
#include <string>

#include "OpenIdReplies.h"
#include "identity/Json.h"
#include "identity/openid/Limits.h"
#include "identity/openid/ReplyJson.h"
#include "identity/openid/UserInfo.h"

using namespace Kestrany::Agent;
using namespace Kestrany::Agent::OpenId;
using OrlindexTest::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto outcome =
        ParseUserInfo(OrlindexTest::ReplyOf(std::string(data, data + size)), "https://a.example/userinfo", "1");
    if (const Failure* const failure = FailureOf(outcome))
    {
        OrlindexTest::RequireGoodLine(*failure);
        return 0;
    }
    Json::Value idToken(Json::objectValue);
    idToken["sub"] = "1";
    idToken["name"] = "Ann";
    const Json::Value claims = UserClaims(idToken, ResultOf(outcome));
    const std::string text = WriteJson(claims);
    Require(text.size() <= Limits::ProfileBytes && claims.size() <= Limits::ProfileMembers, "claims fit a profile");
    std::string problem;
    Require(ParseObject(text, problem).has_value(), "claims that were written can be read");
    const Account account = AccountOf(claims);
    Require(account.userId == "1" && account.displayName == "Ann", "claims of the ID token stay");
    Require(account.userName.find('\0') == std::string::npos && account.email.find('\0') == std::string::npos,
            "attributes are texts of the contract");
    return 0;
}
