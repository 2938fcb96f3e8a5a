// The request target that a browser, or anybody else, sends to the loopback listener.

#include <algorithm>
#include <cstdint>
#include <string>

#include "OpenIdReplies.h"
#include "identity/openid/RedirectRequest.h"

using namespace Kestrany::Agent;
using namespace Kestrany::Agent::OpenId;
using OrlindexTest::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using Kind = RedirectResult::Kind;
    const std::string target(data, data + size);
    const RedirectResult result = ReadRedirect("GET", target, {"/callback", "state-1", "https://a.example", false});
    Require((result.kind == Kind::Code) == !result.code.IsEmpty(), "there is a code exactly where it is said");
    if (result.kind == Kind::Code || result.kind == Kind::OtherPath)
    {
        const std::string_view code = result.code.View();
        Require(std::all_of(code.begin(), code.end(), [](char letter) { return letter >= ' ' && letter <= '~'; }),
                "a code is printable");
        return 0;
    }
    OrlindexTest::RequireGoodLine(result.failure);
    Require(ReadRedirect("GET", target, {"/callback", "state-2", "https://a.example", false}).kind != Kind::Failed ||
                target.find('2') != std::string::npos || target.find('%') != std::string::npos,
            "only a request with the state ends a sign-in");
    return 0;
}
