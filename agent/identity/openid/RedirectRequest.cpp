#include "identity/openid/RedirectRequest.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "identity/openid/Limits.h"
#include "identity/openid/Url.h"

namespace Kestrany::Agent::OpenId {

namespace {

using Kind = RedirectResult::Kind;

/// The parameters of one request; clears them, because one can be a code.
class RedirectParameters
{
public:
    explicit RedirectParameters(std::vector<Parameter> parameters) : parameters_(std::move(parameters)) {}
    RedirectParameters(const RedirectParameters&) = delete;
    RedirectParameters& operator=(const RedirectParameters&) = delete;
    ~RedirectParameters()
    {
        for (auto& [name, value] : parameters_)
        {
            ClearText(name);
            ClearText(value);
        }
    }

    /// The value; empty if the parameter is missing.
    std::string_view Find(std::string_view name) const
    {
        const auto found = std::find_if(parameters_.begin(), parameters_.end(),
                                        [&](const Parameter& each) { return each.first == name; });
        return found == parameters_.end() ? std::string_view() : std::string_view(found->second);
    }
    /// RFC 6749: no parameter may be there twice.
    bool HasRepeated() const
    {
        return std::any_of(parameters_.begin(), parameters_.end(), [&](const Parameter& one) {
            return std::count_if(parameters_.begin(), parameters_.end(),
                                 [&](const Parameter& other) { return other.first == one.first; }) > 1;
        });
    }

private:
    std::vector<Parameter> parameters_;
};

RedirectResult Ignored(IdErrorCode code, std::string expected, std::string came)
{
    return {Kind::Ignored, {code, std::move(expected), std::move(came)}, {}};
}

RedirectResult Failed(IdErrorCode code, std::string expected, std::string came)
{
    return {Kind::Failed, {code, std::move(expected), std::move(came)}, {}};
}

bool IsPrintable(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char letter) { return letter >= ' ' && letter <= '~'; });
}

RedirectResult ErrorResult(std::string_view error, std::string_view description)
{
    const IdErrorCode code = error == "access_denied" ? IdSignInDenied : IdSignInFailedAtProvider;
    return Failed(code, "a code from the provider",
                  "the error " + Shown(error) + (description.empty() ? "" : " with the text " + Shown(description)));
}

} // namespace

RedirectResult ReadRedirect(std::string_view method, std::string_view target, const RedirectExpectation& expectation)
{
    const std::size_t question = std::min(target.find('?'), target.size());
    if (target.substr(0, question) != expectation.path)
        return {};
    if (method != "GET")
        return Ignored(IdRedirectMalformed, "the method GET", Shown(method));
    if (target.size() > Limits::RedirectTarget)
        return Ignored(IdRedirectMalformed,
                       "a redirect of at most " + std::to_string(Limits::RedirectTarget) + " bytes",
                       std::to_string(target.size()) + " bytes");
    std::optional<std::vector<Parameter>> form = ParseForm(target.substr(std::min(question + 1, target.size())));
    if (!form)
        return Ignored(IdRedirectMalformed, "a redirect with parameters", "a malformed text");
    const RedirectParameters parameters(*std::move(form));
    // First of all: without the state, anybody on this machine or any web page can have sent it.
    const std::string_view state = parameters.Find("state");
    if (state.empty() || !AreEqualSecrets(state, expectation.state))
        return Ignored(IdStateWrong, "the state of the sign-in that waits", state.empty() ? "none" : "another state");
    if (parameters.HasRepeated())
        return Failed(IdRedirectMalformed, "each parameter once", "a repeated parameter");
    const std::string_view issuer = parameters.Find("iss");
    if (issuer.empty() ? expectation.requiresIssuer : issuer != expectation.issuer)
        return Failed(IdRedirectOfOtherIssuer, "\"iss\" " + Shown(expectation.issuer),
                      issuer.empty() ? std::string("none") : Shown(issuer));
    const std::string_view code = parameters.Find("code");
    const std::string_view error = parameters.Find("error");
    if (code.empty() == error.empty())
        return Failed(IdRedirectMalformed, "either a code or an error", code.empty() ? "neither" : "both");
    if (!error.empty())
        return ErrorResult(error, parameters.Find("error_description"));
    if (code.size() > Limits::Token || !IsPrintable(code))
        return Failed(IdRedirectMalformed, "a code of printable characters", "another text");
    return {Kind::Code, {}, Secret(code)};
}

} // namespace Kestrany::Agent::OpenId
