// The listener for the browser, with requests over real sockets.

#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <winsock2.h>

#include "identity/openid/windows/LoopbackServer.h"
#include "identity/openid/windows/WinHttpClient.h"
#include "support/Patience.h"

namespace Kestrany::Agent::OpenId {

namespace {

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
                return PageReply{200, "<p>page", {}};
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

TEST_F(LoopbackServerTest, NoOtherProgramSharesThePort)
{
    const std::unique_ptr<LoopbackListener> listener = Listen("127.0.0.1");
    ASSERT_TRUE(listener) << problem;
    EXPECT_FALSE(CanBeShared(PortOf(listener)));
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
