// The listener for the browser, with requests over real sockets.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <winsock2.h>
#include <ws2tcpip.h>

#include "identity/openid/windows/LoopbackServer.h"
#include "identity/openid/windows/WinHttpClient.h"
#include "support/Patience.h"

namespace Kestrany::Agent::OpenId {

namespace {

/// A connection without a client that would write the request. The listener has started Winsock.
class RawConnection
{
public:
    RawConnection(const char* address, std::uint16_t port) : socket_(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP))
    {
        sockaddr_in target{};
        target.sin_family = AF_INET;
        target.sin_port = htons(port);
        inet_pton(AF_INET, address, &target.sin_addr);
        const DWORD limit = OrlindexTest::PatienceMilliseconds;
        setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&limit), sizeof limit);
        isConnected_ = connect(socket_, reinterpret_cast<const sockaddr*>(&target), sizeof target) == 0;
    }
    ~RawConnection() { closesocket(socket_); }
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;

    bool IsConnected() const { return isConnected_; }
    void Send(const std::string& text) const { send(socket_, text.data(), static_cast<int>(text.size()), 0); }
    /// What comes until the server closes the connection.
    std::string ReadToEnd() const
    {
        std::string text;
        char block[4096];
        for (int size = 0; (size = recv(socket_, block, sizeof block, 0)) > 0;)
            text.append(block, static_cast<std::size_t>(size));
        return WSAGetLastError() == WSAETIMEDOUT ? "no end: " + text : text;
    }

private:
    const SOCKET socket_;
    bool isConnected_ = false;
};

class LoopbackServerTest : public testing::Test
{
protected:
    std::unique_ptr<LoopbackListener> Listen(const std::string& host, const std::vector<std::uint16_t>& ports = {})
    {
        return server.Listen(
            host, ports,
            [this](std::string_view method, std::string_view target) {
                const std::lock_guard lock(mutex_);
                requests_.push_back(std::string(method) + " " + std::string(target));
                return PageReply{200, "<p>page", {}, target == "/last"};
            },
            problem);
    }
    HttpReply Get(const std::string& address)
    {
        HttpRequest request;
        request.url = address;
        request.maxReply = 1000;
        request.limit = OrlindexTest::Patience;
        return client.Send(request);
    }
    std::vector<std::string> Requests()
    {
        const std::lock_guard lock(mutex_);
        return requests_;
    }
    static std::uint16_t PortOf(const std::unique_ptr<LoopbackListener>& listener)
    {
        return static_cast<std::uint16_t>(listener->Port());
    }
    /// Whether another program could bind the port, if it asked for sharing.
    static bool CanBeShared(std::uint16_t port)
    {
        const SOCKET other = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        const BOOL shared = TRUE;
        setsockopt(other, SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&shared), sizeof shared);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const bool isBound = bind(other, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
        closesocket(other);
        return isBound;
    }

    LoopbackServer server;
    WinHttpClient client;
    std::string problem;

private:
    std::mutex mutex_;
    std::vector<std::string> requests_;
};

TEST_F(LoopbackServerTest, RequestsReachTheHandler)
{
    const std::unique_ptr<LoopbackListener> listener = Listen("127.0.0.1");
    ASSERT_TRUE(listener) << problem;
    const HttpReply reply = Get("http://127.0.0.1:" + std::to_string(listener->Port()) + "/callback?a=b");
    EXPECT_EQ(reply.status, 200) << reply.detail;
    EXPECT_EQ(reply.body.View(), "<p>page");
    EXPECT_EQ(Requests(), std::vector<std::string>{"GET /callback?a=b"});
}

TEST_F(LoopbackServerTest, TheFirstFreePortOfTheListIsUsed)
{
    const std::unique_ptr<LoopbackListener> first = Listen("127.0.0.1");
    const std::unique_ptr<LoopbackListener> other = Listen("127.0.0.1");
    ASSERT_TRUE(first && other) << problem;
    const std::uint16_t taken = PortOf(first);
    const std::uint16_t free = PortOf(other);
    EXPECT_EQ(Listen("127.0.0.1", {taken, free}), nullptr);
    EXPECT_NE(problem.find("port " + std::to_string(taken) + ": error 10048"), std::string::npos) << problem;
    EXPECT_NE(problem.find("port " + std::to_string(free)), std::string::npos) << problem;
    EXPECT_EQ(Listen("localhost", {taken}), nullptr) << "its two addresses have one port";
}

TEST_F(LoopbackServerTest, APortIsFreeAgainAfterItsListener)
{
    std::unique_ptr<LoopbackListener> listener = Listen("127.0.0.1");
    ASSERT_TRUE(listener) << problem;
    const std::uint16_t port = PortOf(listener);
    listener.reset();
    // The port is closed on the server's thread, soon.
    for (int tries = 0; tries < 1000 && !listener; ++tries)
    {
        listener = Listen("127.0.0.1", {port});
        Sleep(1);
    }
    EXPECT_TRUE(listener) << problem;
}

TEST_F(LoopbackServerTest, APortIsFreeAgainOnceTheBrowserHasTheLastReply)
{
    const std::unique_ptr<LoopbackListener> listener = Listen("localhost");
    ASSERT_TRUE(listener) << problem;
    const std::uint16_t port = PortOf(listener);
    const std::string address = "http://localhost:" + std::to_string(port);
    EXPECT_EQ(Get(address + "/first").status, 200);
    EXPECT_EQ(Get(address + "/last").body.View(), "<p>page");
    std::unique_ptr<LoopbackListener> next;
    // The port is closed on the server's thread, soon.
    for (int tries = 0; tries < 1000 && !next; ++tries)
    {
        next = Listen("localhost", {port});
        Sleep(1);
    }
    EXPECT_TRUE(next) << problem;
}

TEST_F(LoopbackServerTest, NoOtherProgramSharesThePort)
{
    const std::unique_ptr<LoopbackListener> listener = Listen("127.0.0.1");
    ASSERT_TRUE(listener) << problem;
    EXPECT_FALSE(CanBeShared(PortOf(listener)));
}

TEST_F(LoopbackServerTest, NoOtherAddressOfTheMachineIsListenedAt)
{
    for (const char* const host : {"127.0.0.1", "localhost"})
    {
        const std::unique_ptr<LoopbackListener> listener = Listen(host);
        ASSERT_TRUE(listener) << problem;
        EXPECT_TRUE(RawConnection("127.0.0.1", PortOf(listener)).IsConnected());
        // Also this machine, but another address: a listener at all addresses would accept it.
        EXPECT_FALSE(RawConnection("127.0.0.2", PortOf(listener)).IsConnected()) << host;
    }
}

TEST_F(LoopbackServerTest, NothingKeepsOrPassesOnWhatTheAddressHolds)
{
    const std::unique_ptr<LoopbackListener> listener = Listen("127.0.0.1");
    ASSERT_TRUE(listener) << problem;
    const RawConnection browser("127.0.0.1", PortOf(listener));
    browser.Send("GET /callback?code=a HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    const std::string reply = browser.ReadToEnd();
    EXPECT_EQ(reply.rfind("HTTP/1.1 200 OK\r\n", 0), 0U) << reply;
    for (const char* const line : {"Cache-Control: no-store", "Referrer-Policy: no-referrer", "Connection: close",
                                   "X-Content-Type-Options: nosniff", "Content-Security-Policy: default-src 'none'"})
        EXPECT_NE(reply.find("\r\n" + std::string(line)), std::string::npos) << line << " in: " << reply;
}

TEST_F(LoopbackServerTest, TheOldestIdleConnectionMakesRoomForTheBrowser)
{
    const std::unique_ptr<LoopbackListener> listener = Listen("127.0.0.1");
    ASSERT_TRUE(listener) << problem;
    // An idle connection also ends by itself, after 15 seconds: a machine that is busy for so long gets another try.
    bool isClosedAtOnce = false;
    for (int tries = 0; tries < 3 && !isClosedAtOnce; ++tries)
    {
        const auto start = std::chrono::steady_clock::now();
        std::vector<std::unique_ptr<RawConnection>> idle;
        for (int count = 0; count < 17; ++count)
            idle.push_back(std::make_unique<RawConnection>("127.0.0.1", PortOf(listener)));
        EXPECT_EQ(idle.front()->ReadToEnd(), "");
        isClosedAtOnce = std::chrono::steady_clock::now() - start < std::chrono::seconds(14);
    }
    EXPECT_TRUE(isClosedAtOnce);
    EXPECT_EQ(Get("http://127.0.0.1:" + std::to_string(listener->Port()) + "/").status, 200);
}

TEST_F(LoopbackServerTest, WhatIsNoRequestDoesNotReachTheHandler)
{
    const std::unique_ptr<LoopbackListener> listener = Listen("127.0.0.1");
    ASSERT_TRUE(listener) << problem;
    for (const std::string& text :
         {std::string("this is not HTTP\r\n\r\n"), "GET /callback?" + std::string(100'000, 'a') + " HTTP/1.1\r\n\r\n",
          std::string("POST /callback HTTP/1.1\r\nContent-Length: 5\r\n\r\nabcde")})
    {
        const RawConnection browser("127.0.0.1", PortOf(listener));
        browser.Send(text);
        EXPECT_EQ(browser.ReadToEnd().rfind("HTTP/1.1 400 Bad Request\r\n", 0), 0U) << text.substr(0, 40);
    }
    EXPECT_TRUE(Requests().empty());
}

TEST_F(LoopbackServerTest, TheAddressOfIpv6IsReached)
{
    const std::unique_ptr<LoopbackListener> listener = Listen("[::1]");
    if (!listener && problem.find("error 10049") != std::string::npos)
        GTEST_SKIP() << "this machine has no IPv6: " << problem;
    ASSERT_TRUE(listener) << problem;
    EXPECT_EQ(Get("http://[::1]:" + std::to_string(listener->Port()) + "/").status, 200);
    EXPECT_FALSE(RawConnection("127.0.0.1", PortOf(listener)).IsConnected()) << "only that one";
}

TEST_F(LoopbackServerTest, LocalhostIsReachedAtBothAddresses)
{
    const std::unique_ptr<LoopbackListener> listener = Listen("localhost");
    ASSERT_TRUE(listener) << problem;
    EXPECT_EQ(Get("http://127.0.0.1:" + std::to_string(listener->Port()) + "/").status, 200);
    EXPECT_EQ(Get("http://localhost:" + std::to_string(listener->Port()) + "/").status, 200);
}

} // namespace

} // namespace Kestrany::Agent::OpenId
