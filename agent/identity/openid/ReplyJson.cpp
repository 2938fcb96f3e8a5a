#include "identity/openid/ReplyJson.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include "base/Json.h"
#include "base/JsonNumbers.h"
#include "identity/Utf8.h"
#include "identity/openid/HttpHeaders.h"
#include "identity/openid/Limits.h"

namespace Kestrany::Agent::OpenId {

namespace {

constexpr char WhiteSpace[] = " \t\r\n";

/// The content of a JSON string in the text, without its quotation marks, and what follows it.
struct StringToken
{
    std::size_t begin; ///< After the quotation mark.
    std::size_t end;   ///< The closing quotation mark, or the end of a text that is cut off.
    bool hasEscape;
};

StringToken StringAt(std::string_view json, std::size_t quote)
{
    StringToken token{quote + 1, quote + 1, false};
    while (token.end < json.size() && json[token.end] != '"')
    {
        if (json[token.end] == '\\')
        {
            token.hasEscape = true;
            ++token.end;
        }
        ++token.end;
    }
    token.end = std::min(token.end, json.size());
    return token;
}

std::optional<unsigned int> HexNumber(std::string_view digits)
{
    unsigned int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
    if (digits.size() != 4 || error != std::errc() || end != digits.data() + digits.size())
        return std::nullopt;
    return number;
}

/// Decodes the content of a JSON string. nullopt if it is malformed, or has a character beyond ASCII: no secret has.
std::optional<Secret> DecodeSecret(std::string_view content)
{
    static constexpr std::string_view letters = "\"\\/bfnrt";
    static constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
    Secret decoded;
    decoded.Reserve(content.size());
    for (std::size_t index = 0; index < content.size(); ++index)
    {
        char letter = content[index];
        if (letter == '\\')
        {
            const char kind = ++index < content.size() ? content[index] : '\0';
            const std::size_t found = letters.find(kind);
            if (kind == 'u')
            {
                const std::optional<unsigned int> number =
                    HexNumber(content.substr(std::min(index + 1, content.size()), 4));
                if (!number || *number > 0x7F)
                    return std::nullopt;
                letter = static_cast<char>(*number);
                index += 4;
            }
            else if (found == std::string_view::npos)
                return std::nullopt;
            else
                letter = meanings[found];
        }
        // Also keeps control characters out of requests and files.
        if (letter < ' ' || letter > '~')
            return std::nullopt;
        decoded.Append({&letter, 1});
    }
    return decoded;
}

/// The size of a JSON text as the parser's work depends on it. Strings count as nothing.
struct JsonSize
{
    int depth = 0; ///< The deepest place.
    std::size_t values = 1;
    bool hasComment = false;
};

JsonSize Measure(std::string_view json)
{
    JsonSize size;
    int depth = 0;
    for (std::size_t index = 0; index < json.size(); ++index)
    {
        switch (json[index])
        {
        case '"':
            index = StringAt(json, index).end;
            break;
        case '{':
        case '[':
            size.depth = std::max(size.depth, ++depth);
            ++size.values;
            break;
        case '}':
        case ']':
            --depth;
            break;
        case ',':
            ++size.values;
            break;
        case '/':
            // The parser passes over comments in objects, and a quotation mark in one would hide what follows.
            size.hasComment = true;
            return size;
        default:
            break;
        }
    }
    return size;
}

bool HasControlCharacter(const std::string& text)
{
    return std::any_of(text.begin(), text.end(),
                       [](char letter) { return static_cast<unsigned char>(letter) < ' ' || letter == '\x7F'; });
}

} // namespace

std::size_t CountValues(std::string_view json)
{
    return Measure(json).values;
}

std::optional<Json::Value> ParseObject(std::string_view text, std::string& problem)
{
    using namespace IdentityServices;
    if (WellFormedSize(text) != text.size())
    {
        problem = "a text that is not UTF-8";
        return std::nullopt;
    }
    const JsonSize size = Measure(text);
    if (size.hasComment)
    {
        problem = "a text that is not JSON";
        return std::nullopt;
    }
    if (size.depth > Limits::JsonDepth || size.values > Limits::JsonValues)
    {
        problem = "JSON that is nested too deeply or has too many values";
        return std::nullopt;
    }
    std::optional<Json::Value> root = ParseJson(std::string(text), JsonSyntax::Strict).root;
    if (!root || !root->isObject())
    {
        problem = root ? "JSON that is no object" : text.empty() ? "an empty reply" : "a text that is not JSON";
        return std::nullopt;
    }
    return root;
}

std::optional<SecretObject> SecretObject::Parse(Secret json, const std::vector<std::string_view>& names,
                                                std::string& problem)
{
    SecretObject object;
    const std::string_view text = json.View();
    for (std::size_t quote = text.find('"'); quote < text.size();)
    {
        const StringToken key = StringAt(text, quote);
        const std::size_t colon = text.find_first_not_of(WhiteSpace, std::min(key.end + 1, text.size()));
        const bool isKey = colon != std::string_view::npos && text[colon] == ':';
        // The parser would decode it: a secret could hide behind it.
        if (isKey && key.hasEscape)
        {
            problem = "JSON with an escaped member name";
            return std::nullopt;
        }
        quote = text.find('"', std::min(key.end + 1, text.size()));
        const std::string_view name = text.substr(key.begin, key.end - key.begin);
        if (!isKey || std::find(names.begin(), names.end(), name) == names.end() ||
            text.find_first_not_of(WhiteSpace, colon + 1) != quote || quote == std::string_view::npos)
            continue;
        const StringToken value = StringAt(text, quote);
        std::optional<Secret> secret = DecodeSecret(text.substr(value.begin, value.end - value.begin));
        if (!secret)
        {
            problem = "JSON whose \"" + std::string(name) + "\" is not plain ASCII";
            return std::nullopt;
        }
        // The parser gets a text of the same length, so that all offsets stay.
        std::fill(json.Data() + value.begin, json.Data() + value.end, '*');
        object.secrets_.emplace(static_cast<std::ptrdiff_t>(quote), *std::move(secret));
        quote = text.find('"', std::min(value.end + 1, text.size()));
    }
    std::optional<Json::Value> root = ParseObject(text, problem);
    if (!root)
        return std::nullopt;
    object.root_ = *std::move(root);
    return object;
}

Secret SecretObject::Take(const Json::Value& member)
{
    const auto found = member.isString() ? secrets_.find(member.getOffsetStart()) : secrets_.end();
    return found == secrets_.end() ? Secret() : std::move(found->second);
}

const Json::Value& Member(const Json::Value& object, std::string_view name)
{
    return IdentityServices::MemberOf(object, name);
}

std::optional<std::string> TextMember(const Json::Value& object, std::string_view name, std::size_t limit)
{
    const Json::Value& member = Member(object, name);
    if (!member.isString())
        return std::nullopt;
    std::string text = member.asString();
    if (text.empty() || text.size() > limit || HasControlCharacter(text))
        return std::nullopt;
    return text;
}

std::optional<std::vector<std::string>> TextsMember(const Json::Value& object, std::string_view name)
{
    const Json::Value& member = Member(object, name);
    if (!member.isArray())
        return std::nullopt;
    std::vector<std::string> texts;
    for (const Json::Value& element : member)
    {
        if (element.isString())
            texts.push_back(element.asString());
    }
    return texts;
}

std::optional<std::int64_t> SecondsMember(const Json::Value& object, std::string_view name)
{
    const Json::Value& member = Member(object, name);
    if (!member.isNumeric() || member.isBool() || IdentityServices::IsNumberOutOfRange(member))
        return std::nullopt;
    const double seconds = std::floor(member.asDouble());
    if (!(seconds >= 0 && seconds <= static_cast<double>(Limits::LastSecond)))
        return std::nullopt;
    return static_cast<std::int64_t>(seconds);
}

std::optional<std::int64_t> LenientSecondsMember(const Json::Value& object, std::string_view name)
{
    const Json::Value& member = Member(object, name);
    if (!member.isString())
        return SecondsMember(object, name);
    const std::string digits = member.asString();
    std::int64_t seconds = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), seconds);
    if (digits.empty() || error != std::errc() || end != digits.data() + digits.size() || seconds < 0 ||
        seconds > Limits::LastSecond)
        return std::nullopt;
    return seconds;
}

std::optional<Failure> TransportFailure(const HttpReply& reply, const std::string& url)
{
    const std::string detail = reply.detail.empty() ? std::string() : " (" + reply.detail + ")";
    const auto failure = [&](IdErrorCode code, const char* came) {
        return Failure{code, "a reply from " + Shown(url), came + detail};
    };
    switch (reply.problem)
    {
    case HttpProblem::None:
        return std::nullopt;
    case HttpProblem::NameNotResolved:
        return failure(IdProviderUnreachable, "no address for the host name");
    case HttpProblem::NotConnected:
        return failure(IdProviderUnreachable, "no connection");
    case HttpProblem::TlsRefused:
        return failure(IdTlsRefused, "a TLS connection that is not trusted");
    case HttpProblem::TimedOut:
        return failure(IdProviderUnreachable, "no complete reply in time");
    case HttpProblem::ConnectionLost:
        return failure(IdProviderUnreachable, "the end of the connection");
    case HttpProblem::ReplyTooLarge:
        return failure(IdReplyTooLarge, "more bytes than are read");
    case HttpProblem::Failed:
        break;
    }
    return failure(IdProviderUnreachable, "an error of the system");
}

std::string DescribeReply(const HttpReply& reply)
{
    std::string text = "status " + std::to_string(reply.status);
    if (reply.status >= 300 && reply.status <= 399)
        return text + ", a redirect, which is not followed";
    const std::string type = MediaType(reply.contentType);
    return text + (type.empty() ? ", without a media type" : " with " + Shown(type));
}

} // namespace Kestrany::Agent::OpenId
