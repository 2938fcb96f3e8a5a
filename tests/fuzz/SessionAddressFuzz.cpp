// Addresses made of any text, which is percent-encoded in them.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "Require.h"
#include "identity/LoginService.h"
#include "identity/simulated/SessionAddress.h"

using namespace Kestrany::Agent;
using namespace Kestrany::Agent::Simulated;
using OrlindexTest::Require;

namespace {

constexpr char TargetKey[] = "&target=";

std::string PercentDecode(const std::string& encoded)
{
    std::string text;
    for (std::size_t at = 0; at < encoded.size(); ++at)
    {
        if (encoded[at] != '%')
        {
            text += encoded[at];
            continue;
        }
        Require(encoded.size() - at > 2, "an escape is whole");
        text += static_cast<char>(std::stoul(encoded.substr(at + 1, 2), nullptr, 16));
        at += 2;
    }
    return text;
}

bool IsAddressCharacter(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || std::string("-._~%").find(character) != std::string::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string target(data, data + size);
    const std::string address = SessionAddress(TALIX_SERVER_STAGING, target, 7, "ticket");
    Require(IsWebAddress(address), "it is a web address");
    const std::size_t key = address.find(TargetKey);
    Require(key != std::string::npos, "it names its target");
    const std::string encoded = address.substr(key + sizeof TargetKey - 1);
    for (const char character : encoded)
        Require(IsAddressCharacter(character), "only characters of an address stand in it");
    Require(PercentDecode(encoded) == target, "the target is inside, unchanged");
    IsWebAddress(target);
    return 0;
}
