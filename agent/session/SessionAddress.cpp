#include "session/SessionAddress.h"

#include <cstring>
#include <string_view>

#include "session/ServerNames.h"

namespace Kestrany::Agent {

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

bool HasHostAfter(const std::string& address, const char* scheme)
{
    const std::size_t length = std::strlen(scheme);
    return address.compare(0, length, scheme) == 0 && address.size() > length && address[length] != '/';
}

} // namespace

std::string ServerOrigin(Server server)
{
    // The reserved domain "invalid" never resolves: nobody signs in anywhere by mistake.
    return "https://" + ServerName(server) + ".simulator.invalid";
}

bool IsWebAddress(const std::string& address)
{
    return HasHostAfter(address, "https://") || HasHostAfter(address, "http://");
}

std::string SessionAddress(Server server, const std::string& target, std::uint16_t flag, const std::string& ticket)
{
    return ServerOrigin(server) + "/session?ticket=" + ticket + "&flag=" + std::to_string(flag) +
           "&target=" + PercentEncode(target);
}

} // namespace Kestrany::Agent
