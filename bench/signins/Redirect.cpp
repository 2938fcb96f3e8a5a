#include "signins/Redirect.h"

#include <cstdlib>
#include <sstream>
#include <string_view>

#include "signins/Require.h"

namespace OrlindexBench {

namespace {

constexpr std::size_t MaxRequest = 64 * 1024;

std::string ReadRequest(SOCKET browser)
{
    std::string request;
    char block[8192];
    while (request.find("\r\n\r\n") == std::string::npos)
    {
        const int size = recv(browser, block, sizeof block, 0);
        Require(size > 0 && request.size() < MaxRequest, "the browser sent no redirect");
        request.append(block, static_cast<std::size_t>(size));
    }
    return request;
}

void SendPage(SOCKET browser)
{
    const std::string_view page = "<!DOCTYPE html>\n<title>Almost done</title>\n<p>You can close this page.</p>\n";
    const std::string reply = "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Type: text/html; charset=utf-8\r\n"
                              "Content-Length: " +
                              std::to_string(page.size()) + "\r\n\r\n" + std::string(page);
    Require(send(browser, reply.data(), static_cast<int>(reply.size()), 0) == static_cast<int>(reply.size()),
            "the browser took no reply");
    shutdown(browser, SD_SEND);
}

std::string Unescape(std::string_view text)
{
    std::string plain;
    for (std::size_t index = 0; index < text.size(); ++index)
    {
        if (text[index] == '%' && index + 2 < text.size())
        {
            plain += static_cast<char>(std::strtol(std::string(text.substr(index + 1, 2)).c_str(), nullptr, 16));
            index += 2;
        }
        else
            plain += text[index] == '+' ? ' ' : text[index];
    }
    return plain;
}

std::map<std::string, std::string> ParametersOf(const std::string& request)
{
    const std::string start = "GET /callback?";
    Require(request.compare(0, start.size(), start) == 0, "another address was requested");
    std::istringstream query(request.substr(start.size(), request.find(' ', start.size()) - start.size()));
    std::map<std::string, std::string> parameters;
    for (std::string pair; std::getline(query, pair, '&');)
    {
        const std::size_t end = pair.find('=');
        Require(end != std::string::npos, "a parameter has no value");
        parameters[Unescape(pair.substr(0, end))] = Unescape(pair.substr(end + 1));
    }
    return parameters;
}

} // namespace

RedirectSocket::RedirectSocket() : socket_(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP))
{
    const BOOL exclusive = TRUE;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof address;
    Require(socket_ != INVALID_SOCKET &&
                setsockopt(socket_, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&exclusive),
                           sizeof exclusive) == 0 &&
                bind(socket_, reinterpret_cast<const sockaddr*>(&address), size) == 0 && listen(socket_, 16) == 0 &&
                getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size) == 0,
            "no port for the redirect");
    port_ = ntohs(address.sin_port);
}

RedirectSocket::~RedirectSocket()
{
    closesocket(socket_);
}

std::map<std::string, std::string> RedirectSocket::Await() const
{
    const SOCKET browser = accept(socket_, nullptr, nullptr);
    Require(browser != INVALID_SOCKET, "no browser came");
    const std::string request = ReadRequest(browser);
    SendPage(browser);
    closesocket(browser);
    return ParametersOf(request);
}

} // namespace OrlindexBench
