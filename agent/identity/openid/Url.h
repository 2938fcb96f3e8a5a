#ifndef AGENT_IDENTITY_OPENID_URL_H
#define AGENT_IDENTITY_OPENID_URL_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "identity/openid/Secret.h"

namespace Kestrany::Agent::OpenId {

/// An absolute http or https address.
struct Url
{
    bool isHttps = false;
    std::string host; ///< As written; an IPv6 address with its brackets.
    std::uint16_t port = 0;
    std::string path; ///< Begins with "/", or empty.
    std::optional<std::string> query;
};

/// Parses an address. nullopt for any other scheme, a user name, a fragment, a character that an address cannot hold,
/// and a text that is too long.
std::optional<Url> ParseUrl(std::string_view text);

/// Whether this host is always this machine: 127.0.0.1, [::1] or localhost.
bool IsLoopbackHost(std::string_view host);

/// Whether requests may be sent there: over https, or, only if allowed, over http to this machine.
bool IsTrustworthy(const Url& url, bool allowInsecureLoopback);

/// Whether the endpoints of an issuer may be http addresses of this machine: only if that is allowed, and the issuer is
/// one itself.
bool AllowsInsecureEndpoints(std::string_view issuer, bool allowInsecureLoopback);

/// A name with its value.
using Parameter = std::pair<std::string, std::string>;

/// Appends "name=value", form-encoded, and "&" before it if `form` is not empty.
void AppendParameter(Secret& form, std::string_view name, std::string_view value);

/// The address with further parameters, which are form-encoded.
Secret WithQuery(std::string_view url, const Secret& form);

/// Parses a form-encoded text, in its order. nullopt if an escape is malformed or a text not UTF-8, or if there are too
/// many parameters.
std::optional<std::vector<Parameter>> ParseForm(std::string_view text);

} // namespace Kestrany::Agent::OpenId

#endif
