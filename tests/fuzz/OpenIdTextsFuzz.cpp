// Small texts of HTTP and of addresses: times, waits, media types, addresses, forms, base64url.

#include <cstdint>
#include <string>

#include "Require.h"
#include "identity/Base64Url.h"
#include "identity/openid/HttpHeaders.h"
#include "identity/openid/Limits.h"
#include "identity/openid/Url.h"

using namespace Kestrany::Agent;
using namespace Kestrany::Agent::OpenId;
using OrlindexTest::Require;

namespace {

void RequireTimes(const std::string& text)
{
    const TimePoint now{std::chrono::seconds(1'700'000'000)};
    if (const auto time = ParseHttpDate(text))
        Require(time->time_since_epoch().count() >= 0, "a time is not before 1970");
    if (const auto wait = ParseRetryAfter(text, now))
        Require(wait->count() >= 0 && wait->count() <= 366 * 24 * 3600, "a wait is in its range");
    Require(MediaType(text).find(';') == std::string::npos, "a media type has no parameters");
}

void RequireAddress(const std::string& text)
{
    const auto url = ParseUrl(text);
    if (!url)
        return;
    Require(text.find_first_of("#\\ \"<>") == std::string::npos, "an address has no fragment and no blank");
    Require(url->host.find('@') == std::string::npos, "an address has no user name");
    Require(!url->host.empty() && url->port != 0, "an address has a host and a port");
    const std::string again = std::string(url->isHttps ? "https://" : "http://") + url->host + ":" +
                              std::to_string(url->port) + url->path + (url->query ? "?" + *url->query : "");
    // Its port may make it a little longer.
    if (again.size() > Limits::Address)
        return;
    const auto parsed = ParseUrl(again);
    Require(parsed && parsed->host == url->host && parsed->port == url->port && parsed->path == url->path &&
                parsed->query == url->query,
            "the parts of an address make it up");
}

void RequireForm(const std::string& text)
{
    const auto form = ParseForm(text);
    if (!form)
        return;
    Secret written;
    for (const auto& [name, value] : *form)
        AppendParameter(written, name, value);
    const auto again = ParseForm(written.View());
    Require(again && *again == *form, "a form that was written can be read");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(data, data + size);
    RequireTimes(text);
    RequireAddress(text);
    RequireForm(text);
    if (const auto bytes = FromBase64Url(text))
        Require(Base64Url(*bytes) == text, "each value has one text");
    Require(FromBase64Url(Base64Url(text)) == text, "bytes are kept by encoding and decoding");
    return 0;
}
