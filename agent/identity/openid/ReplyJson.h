#ifndef AGENT_IDENTITY_OPENID_REPLYJSON_H
#define AGENT_IDENTITY_OPENID_REPLYJSON_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <json/value.h>

#include "identity/openid/Failure.h"
#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// The object of a JSON text: UTF-8, no repeated members, not too deep, not too many values. nullopt for any other
/// text; `problem` says why.
std::optional<Json::Value> ParseObject(std::string_view text, std::string& problem);

/// The upper limit of the values in a JSON text, as ParseObject counts them.
std::size_t CountValues(std::string_view json);

/// A JSON text whose secret members never become texts of the parser, which would leave copies of them in memory.
class SecretObject
{
public:
    /// Takes the text members of these names out of the JSON text, at any depth, and parses the rest. The text is
    /// cleared. nullopt as with ParseObject.
    static std::optional<SecretObject> Parse(Secret json, const std::vector<std::string_view>& names,
                                             std::string& problem);

    const Json::Value& Root() const { return root_; }
    /// The secret of a text member of one of the names; empty for any other value. A second call returns an empty one.
    Secret Take(const Json::Value& member);

private:
    Json::Value root_;
    std::map<std::ptrdiff_t, Secret> secrets_; ///< By the offset of their quotation mark.
};

/// The member of an object; null for none.
const Json::Value& Member(const Json::Value& object, std::string_view name);

/// A text member. nullopt if it is missing, no text, empty, longer than `limit` bytes, or holds a control character.
std::optional<std::string> TextMember(const Json::Value& object, std::string_view name, std::size_t limit);

/// A list of texts. nullopt if it is missing or no list; other elements are passed over.
std::optional<std::vector<std::string>> TextsMember(const Json::Value& object, std::string_view name);

/// Whole seconds since 1970 of a number; a fraction is cut off. nullopt for anything else, and out of range.
std::optional<std::int64_t> SecondsMember(const Json::Value& object, std::string_view name);

/// Seconds as a number or as a text of digits, as some providers write them. nullopt for anything else.
std::optional<std::int64_t> LenientSecondsMember(const Json::Value& object, std::string_view name);

/// The failure of a request without a complete reply. nullopt if there is one.
std::optional<Failure> TransportFailure(const HttpReply& reply, const std::string& url);

/// How a reply that is not the expected one reads in a log line: its status and media type.
std::string DescribeReply(const HttpReply& reply);

} // namespace Kestrany::Agent::OpenId

#endif
