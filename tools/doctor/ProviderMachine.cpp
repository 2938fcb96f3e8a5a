#include "ProviderMachine.h"

#include <algorithm>
#include <memory>

#include <winsock2.h>

#include <ws2tcpip.h>

#include "Texts.h"
#include "base/Text.h"

namespace Orlindex::Doctor {
namespace {

using Kestrany::IdentityServices::Narrow;
using Kestrany::IdentityServices::Widen;

constexpr std::size_t mostAddresses = 8;

/// Windows Sockets, as long as the object lives.
class Sockets
{
public:
    Sockets()
    {
        WSADATA data;
        error_ = WSAStartup(MAKEWORD(2, 2), &data);
    }
    Sockets(const Sockets&) = delete;
    Sockets& operator=(const Sockets&) = delete;
    ~Sockets()
    {
        if (error_ == 0)
            WSACleanup();
    }
    int Error() const { return error_; }

private:
    int error_;
};

class Socket
{
public:
    explicit Socket(int family) : handle_(socket(family, SOCK_STREAM, IPPROTO_TCP)) {}
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    ~Socket()
    {
        if (handle_ != INVALID_SOCKET)
            closesocket(handle_);
    }
    SOCKET Get() const { return handle_; }

private:
    SOCKET handle_;
};

struct AddressesCloser
{
    void operator()(ADDRINFOW* addresses) const { FreeAddrInfoW(addresses); }
};

std::string AddressText(const ADDRINFOW& address)
{
    wchar_t text[64] = L"";
    const int error =
        GetNameInfoW(address.ai_addr, static_cast<socklen_t>(address.ai_addrlen), text, 64, nullptr, 0, NI_NUMERICHOST);
    return error == 0 ? Narrow(text) : std::string();
}

/// Binds as the sign-in agent does: no other program may have the port at the same time.
int Bind(const sockaddr* address, int size)
{
    const Socket listener(address->sa_family);
    if (listener.Get() == INVALID_SOCKET)
        return WSAGetLastError();
    const BOOL exclusive = TRUE;
    setsockopt(listener.Get(), SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&exclusive),
               sizeof exclusive);
    return bind(listener.Get(), address, size) == 0 && listen(listener.Get(), 1) == 0 ? 0 : WSAGetLastError();
}

} // namespace

NameResolution ResolveName(const std::string& host)
{
    NameResolution result;
    const Sockets sockets;
    result.error = sockets.Error();
    if (result.error != 0)
        return result;
    const bool isBracketed = host.size() > 2 && host.front() == '[';
    const std::wstring name = Widen(isBracketed ? host.substr(1, host.size() - 2) : host);
    ADDRINFOW hints{};
    hints.ai_socktype = SOCK_STREAM;
    ADDRINFOW* found = nullptr;
    result.error = GetAddrInfoW(name.c_str(), nullptr, &hints, &found);
    const std::unique_ptr<ADDRINFOW, AddressesCloser> addresses(found);
    if (result.error != 0)
        return result;
    for (const ADDRINFOW* each = found; each != nullptr && result.addresses.size() < mostAddresses;
         each = each->ai_next)
    {
        std::string text = AddressText(*each);
        if (!text.empty() &&
            std::find(result.addresses.begin(), result.addresses.end(), text) == result.addresses.end())
            result.addresses.push_back(std::move(text));
    }
    return result;
}

int TryPort(const std::string& redirectHost, std::uint16_t port)
{
    const Sockets sockets;
    if (sockets.Error() != 0)
        return sockets.Error();
    if (redirectHost == "[::1]")
    {
        sockaddr_in6 address{};
        address.sin6_family = AF_INET6;
        address.sin6_addr = IN6ADDR_LOOPBACK_INIT;
        address.sin6_port = htons(port);
        return Bind(reinterpret_cast<const sockaddr*>(&address), sizeof address);
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return Bind(reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

std::string SystemTimeText(std::chrono::system_clock::time_point time)
{
    // FILETIME counts 100 ns since 1601.
    constexpr unsigned long long secondsFrom1601 = 11'644'473'600;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count();
    const unsigned long long ticks = (static_cast<unsigned long long>(seconds) + secondsFrom1601) * 10'000'000;
    return TimeText({static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)});
}

} // namespace Orlindex::Doctor
