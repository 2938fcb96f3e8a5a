#include "identity/openid/UserInfo.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "identity/Json.h"
#include "identity/Utf8.h"
#include "identity/openid/HttpHeaders.h"
#include "identity/openid/Limits.h"
#include "identity/openid/ReplyJson.h"

namespace Kestrany::Agent::OpenId {

namespace {

/// Claims about the token or the session, which say nothing about the user.
constexpr std::string_view TokenClaims[] = {"iss",     "aud",    "azp",    "exp",       "iat", "nbf", "jti", "nonce",
                                            "at_hash", "c_hash", "s_hash", "auth_time", "acr", "amr", "sid"};

bool IsAboutToken(const std::string& name)
{
    return std::find(std::begin(TokenClaims), std::end(TokenClaims), name) != std::end(TokenClaims);
}

/// The first claim that is a text and not empty.
std::string FirstText(const Json::Value& claims, std::initializer_list<const char*> names)
{
    for (const char* const name : names)
    {
        // A host gets these as zero-terminated texts.
        if (std::optional<std::string> text = TextMember(claims, name, Limits::Address))
            return *std::move(text);
    }
    return {};
}

/// Collects claims as long as they fit a profile.
class ClaimCollection
{
public:
    /// Adds the claims that are not there yet.
    void Add(const Json::Value& further)
    {
        for (const std::string& name : further.isObject() ? further.getMemberNames() : Json::Value::Members())
        {
            if (!IsAboutToken(name) && !claims_.isMember(name) && !HasNumberOutOfRange(further[name]))
                AddIfItFits(name, further[name]);
        }
    }
    Json::Value Take() { return std::move(claims_); }

private:
    void AddIfItFits(const std::string& name, const Json::Value& value)
    {
        const std::string text = WriteJson(value);
        // A lone surrogate escape becomes ill-formed UTF-8. The stored login could not be read at the next start.
        if (WellFormedSize(name) != name.size() || WellFormedSize(text) != text.size())
            return;
        const std::size_t size = size_ + WriteJson(name).size() + text.size() + 2;
        const std::size_t values = values_ + CountValues(text);
        if (size > Limits::ProfileBytes || values > Limits::JsonValues || claims_.size() == Limits::ProfileMembers)
            return;
        size_ = size;
        values_ = values;
        claims_[name] = value;
    }

    Json::Value claims_{Json::objectValue};
    std::size_t size_ = 2;
    std::size_t values_ = 1;
};

} // namespace

Outcome<Json::Value> ParseUserInfo(const HttpReply& reply, const std::string& url, const std::string& subject)
{
    if (std::optional<Failure> failure = TransportFailure(reply, url))
        return *std::move(failure);
    const std::string expected = "status 200 with claims as JSON from " + Shown(url);
    if (reply.status == 429 || reply.status >= 500)
        return Failure{IdProviderFailed, expected, DescribeReply(reply)};
    if (reply.status != 200 || MediaType(reply.contentType) != "application/json")
        return Failure{IdUserInfoMalformed, expected, DescribeReply(reply)};
    std::string problem;
    std::optional<Json::Value> claims = ParseObject(reply.body.View(), problem);
    if (!claims)
        return Failure{IdUserInfoMalformed, expected, problem};
    const Json::Value& sub = Member(*claims, "sub");
    if (!sub.isString())
        return Failure{IdUserInfoMalformed, "\"sub\" from " + Shown(url), sub.isNull() ? "none" : "another value"};
    if (sub != subject)
        return Failure{IdSubjectDiffers, "claims about the user who signed in", "\"sub\" of another user"};
    return *std::move(claims);
}

Json::Value UserClaims(const Json::Value& idToken, const Json::Value& userInfo)
{
    ClaimCollection claims;
    claims.Add(idToken);
    claims.Add(userInfo);
    return claims.Take();
}

Account AccountOf(const Json::Value& claims)
{
    Account account;
    account.userId = FirstText(claims, {"sub"});
    account.userName = FirstText(claims, {"preferred_username", "email", "sub"});
    account.firstName = FirstText(claims, {"given_name"});
    account.lastName = FirstText(claims, {"family_name"});
    account.email = FirstText(claims, {"email"});
    account.displayName = FirstText(claims, {"name", "preferred_username", "email"});
    account.profile = claims;
    return account;
}

} // namespace Kestrany::Agent::OpenId
