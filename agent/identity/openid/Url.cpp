#include "identity/openid/Url.h"

#include <algorithm>
#include <charconv>

#include "identity/Utf8.h"
#include "identity/openid/Limits.h"

namespace Kestrany::Agent::OpenId {

namespace {

constexpr std::string_view HexDigits = "0123456789ABCDEF";

bool IsDigit(char letter)
{
    return letter >= '0' && letter <= '9';
}

bool IsAlphanumeric(char letter)
{
    return IsDigit(letter) || (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
}

bool IsOneOf(char letter, std::string_view letters)
{
    return letters.find(letter) != std::string_view::npos;
}

std::optional<unsigned int> HexValue(char letter)
{
    if (IsDigit(letter))
        return static_cast<unsigned int>(letter - '0');
    if (letter >= 'a' && letter <= 'f')
        return static_cast<unsigned int>(letter - 'a' + 10);
    if (letter >= 'A' && letter <= 'F')
        return static_cast<unsigned int>(letter - 'A' + 10);
    return std::nullopt;
}

bool AreEqualLetters(std::string_view left, std::string_view lowerCase)
{
    return std::equal(left.begin(), left.end(), lowerCase.begin(), lowerCase.end(), [](char one, char other) {
        return (one >= 'A' && one <= 'Z' ? static_cast<char>(one - 'A' + 'a') : one) == other;
    });
}

bool IsHost(std::string_view host)
{
    if (host.size() > 2 && host.front() == '[' && host.back() == ']')
        return std::all_of(host.begin() + 1, host.end() - 1,
                           [](char letter) { return HexValue(letter) || letter == ':' || letter == '.'; });
    return !host.empty() && host.size() <= 253 && host.front() != '.' &&
           std::all_of(host.begin(), host.end(),
                       [](char letter) { return IsAlphanumeric(letter) || IsOneOf(letter, "-._"); });
}

bool IsPathOrQuery(std::string_view text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char letter) { return IsAlphanumeric(letter) || IsOneOf(letter, "-._~!$&'()*+,;=:@/?%"); });
}

/// Splits "host:port". False for a port out of range.
bool TakeAuthority(std::string_view authority, Url& url)
{
    const std::size_t bracket = authority.rfind(']');
    const std::size_t colon = authority.find(':', bracket == std::string_view::npos ? 0 : bracket);
    url.host = authority.substr(0, colon);
    url.port = url.isHttps ? 443 : 80;
    if (colon != std::string_view::npos)
    {
        const std::string_view digits = authority.substr(colon + 1);
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), url.port);
        if (error != std::errc() || end != digits.data() + digits.size() || url.port == 0)
            return false;
    }
    return IsHost(url.host);
}

/// False for a malformed text. The buffer does not grow, so no copy of a secret is left behind.
bool DecodeForm(std::string_view text, std::string& decoded)
{
    decoded.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index)
    {
        if (text[index] != '%')
        {
            decoded += text[index] == '+' ? ' ' : text[index];
            continue;
        }
        const std::optional<unsigned int> high = index + 2 < text.size() ? HexValue(text[index + 1]) : std::nullopt;
        const std::optional<unsigned int> low = high ? HexValue(text[index + 2]) : std::nullopt;
        if (!low)
            return false;
        decoded += static_cast<char>(*high << 4 | *low);
        index += 2;
    }
    return WellFormedSize(decoded) == decoded.size();
}

void Clear(std::vector<Parameter>& parameters)
{
    for (auto& [name, value] : parameters)
    {
        ClearText(name);
        ClearText(value);
    }
    parameters.clear();
}

void AppendEncoded(Secret& form, std::string_view text)
{
    for (const char letter : text)
    {
        if (IsAlphanumeric(letter) || IsOneOf(letter, "-._~"))
        {
            form.Append({&letter, 1});
            continue;
        }
        const auto byte = static_cast<unsigned char>(letter);
        const char escape[] = {'%', HexDigits[byte >> 4], HexDigits[byte & 15u]};
        form.Append({escape, sizeof escape});
    }
}

} // namespace

std::optional<Url> ParseUrl(std::string_view text)
{
    constexpr std::string_view https = "https://";
    constexpr std::string_view http = "http://";
    if (text.size() > Limits::Address)
        return std::nullopt;
    Url url;
    url.isHttps = AreEqualLetters(text.substr(0, https.size()), https);
    if (!url.isHttps && !AreEqualLetters(text.substr(0, http.size()), http))
        return std::nullopt;
    text.remove_prefix(url.isHttps ? https.size() : http.size());
    const std::size_t authorityEnd = std::min(text.find_first_of("/?#"), text.size());
    if (!TakeAuthority(text.substr(0, authorityEnd), url))
        return std::nullopt;
    const std::string_view rest = text.substr(authorityEnd);
    if (!IsPathOrQuery(rest))
        return std::nullopt;
    const std::size_t question = rest.find('?');
    url.path = rest.substr(0, question);
    if (question != std::string_view::npos)
        url.query = rest.substr(question + 1);
    return url;
}

bool IsLoopbackHost(std::string_view host)
{
    return host == "127.0.0.1" || host == "[::1]" || AreEqualLetters(host, "localhost");
}

bool IsTrustworthy(const Url& url, bool allowInsecureLoopback)
{
    return url.isHttps || (allowInsecureLoopback && IsLoopbackHost(url.host));
}

bool AllowsInsecureEndpoints(std::string_view issuer, bool allowInsecureLoopback)
{
    const std::optional<Url> url = ParseUrl(issuer);
    return url && !url->isHttps && IsTrustworthy(*url, allowInsecureLoopback);
}

void AppendParameter(Secret& form, std::string_view name, std::string_view value)
{
    if (!form.IsEmpty())
        form.Append("&");
    AppendEncoded(form, name);
    form.Append("=");
    AppendEncoded(form, value);
}

Secret WithQuery(std::string_view url, const Secret& form)
{
    Secret address(url);
    const std::size_t question = url.find('?');
    if (question == std::string_view::npos)
        address.Append("?");
    else if (question + 1 != url.size())
        address.Append("&");
    address.Append(form.View());
    return address;
}

std::optional<std::vector<Parameter>> ParseForm(std::string_view text)
{
    std::vector<Parameter> parameters;
    while (!text.empty())
    {
        const std::size_t end = std::min(text.find('&'), text.size());
        const std::string_view one = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (one.empty())
            continue;
        const std::size_t equals = std::min(one.find('='), one.size());
        auto& [name, value] = parameters.emplace_back();
        if (!DecodeForm(one.substr(0, equals), name) ||
            !DecodeForm(one.substr(std::min(equals + 1, one.size())), value) || parameters.size() > Limits::Parameters)
        {
            Clear(parameters); // A code can be among them.
            return std::nullopt;
        }
    }
    return parameters;
}

} // namespace Kestrany::Agent::OpenId
