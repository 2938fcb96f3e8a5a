#include "identity/simulated/SessionAddress.h"

#include <string_view>

#include "identity/LoginService.h"

namespace Kestrany::Agent::Simulated {

namespace {

bool IsUnreserved(char character)
{
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
           (character >= '0' && character <= '9') || std::string_view("-._~").find(character) != std::string_view::npos;
}

std::string PercentEncode(const std::string& text)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string encoded;
    for (const char character : text)
    {
        if (IsUnreserved(character))
        {
            encoded += character;
            continue;
        }
        const auto byte = static_cast<unsigned char>(character);
        encoded += '%';
        encoded += digits[byte >> 4];
        encoded += digits[byte & 15];
    }
    return encoded;
}

} // namespace

std::string ServerOrigin(Server server)
{
    // The reserved domain "invalid" never resolves: no credentials reach a real site by mistake.
    return "https://" + ServerName(server) + ".simulator.invalid";
}

std::string SessionAddress(Server server, const std::string& target, std::uint16_t flag, const std::string& ticket)
{
    return ServerOrigin(server) + "/session?ticket=" + ticket + "&flag=" + std::to_string(flag) +
           "&target=" + PercentEncode(target);
}

} // namespace Kestrany::Agent::Simulated
