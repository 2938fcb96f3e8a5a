// Buffers that held a secret are cleared before they are freed: this program looks into every block that it frees.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>
#include <string_view>

#include <malloc.h>

#include "identity/openid/DeviceGrant.h"
#include "identity/openid/RedirectRequest.h"
#include "identity/openid/SignOut.h"
#include "identity/openid/StoredLogin.h"
#include "identity/openid/TokenReply.h"
#include "identity/openid/Url.h"

namespace {

// Too long to be within an object.
constexpr char SecretText[] = "secret-0123456789-abcdefghijklmnopqrstuvwxyz-0123456789";
constexpr std::string_view TheSecret(SecretText);

std::atomic<bool> isWatching{false};
std::atomic<int> found{0};

void Free(void* block) noexcept
{
    if (block != nullptr && isWatching)
    {
        const std::string_view bytes(static_cast<const char*>(block), malloc_usable_size(block));
        // Without an allocation of its own.
        if (std::search(bytes.begin(), bytes.end(), TheSecret.begin(), TheSecret.end()) != bytes.end())
            ++found;
    }
    std::free(block);
}

} // namespace

void* operator new(std::size_t size)
{
    // With zeros: what was freed by others does not count.
    if (void* const block = std::calloc(1, size == 0 ? 1 : size))
        return block;
    throw std::bad_alloc();
}

// A sanitizer's own operators for arrays would not call the others.
void* operator new[](std::size_t size)
{
    return operator new(size);
}

void operator delete(void* block) noexcept
{
    Free(block);
}

void operator delete[](void* block) noexcept
{
    Free(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    Free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    Free(block);
}

namespace Kestrany::Agent::OpenId {

namespace {

/// How many blocks with the secret a function frees.
template <class Function>
int FreedBy(const Function& function)
{
    found = 0;
    isWatching = true;
    function();
    isWatching = false;
    return found;
}

/// Without a block of its own that is freed: texts of the test live in static buffers.
std::string_view WithSecret(std::string_view before, std::string_view after)
{
    static char text[4096];
    char* end = std::copy(before.begin(), before.end(), text);
    end = std::copy(TheSecret.begin(), TheSecret.end(), end);
    end = std::copy(after.begin(), after.end(), end);
    return {text, static_cast<std::size_t>(end - text)};
}

HttpReply ReplyWith(std::string_view body, int status = 200)
{
    HttpReply reply;
    reply.status = status;
    reply.contentType = "application/json";
    reply.body = Secret(body);
    return reply;
}

TEST(ClearedBuffersTest, AnOrdinaryTextIsFound)
{
    EXPECT_EQ(FreedBy([] { (void)std::string(TheSecret); }), 1) << "the test sees what is not cleared";
}

TEST(ClearedBuffersTest, AFormIsClearedWhileItGrows)
{
    EXPECT_EQ(FreedBy([] {
                  const Secret form = RevocationForm("client", Secret(TheSecret), "refresh_token");
                  const Secret address = WithQuery("https://login.example.com/logout", form);
              }),
              0);
}

TEST(ClearedBuffersTest, ARedirectIsClearedWhateverBecomesOfIt)
{
    const RedirectExpectation expectation{"/callback", "state-1", "https://login.example.com", false};
    for (const char* const after : {"&state=state-1", "&state=other", "&state=state-1&error=a", "&state=state-1&code=b",
                                    "&malformed=%", "%zz", "&a=%FF", "%FF", "&a=1&b=2"})
    {
        const std::string_view target = WithSecret("/callback?code=", after);
        EXPECT_EQ(FreedBy([&] { (void)ReadRedirect("GET", target, expectation); }), 0) << after;
    }
}

TEST(ClearedBuffersTest, ARedirectWithTooManyParametersIsCleared)
{
    std::string many;
    for (int count = 0; count < 100; ++count)
        many += "&a";
    const std::string_view target = WithSecret("/callback?code=", many);
    const RedirectExpectation expectation{"/callback", "state-1", "https://login.example.com", false};
    EXPECT_EQ(FreedBy([&] { EXPECT_TRUE(ReadRedirect("GET", target, expectation).code.IsEmpty()); }), 0);
}

TEST(ClearedBuffersTest, ARepliesTokensAreCleared)
{
    for (const char* const name : {"access_token", "id_token", "refresh_token"})
    {
        for (const char* const after : {R"(","token_type":"Bearer"})", R"(","error":"invalid_grant"})", R"("])"})
        {
            const std::string before = std::string(R"({"access_token":"a",")") + name + R"(":")";
            const std::string_view body = WithSecret(before, after);
            EXPECT_EQ(FreedBy([&] { (void)ParseTokenReply(ReplyWith(body), "https://login.example.com/token", {}); }),
                      0)
                << name << after;
        }
    }
    const std::string_view device = WithSecret(R"({"device_code":")", R"(","user_code":"A"})");
    EXPECT_EQ(FreedBy([&] { (void)ParseDeviceReply(ReplyWith(device), "https://login.example.com/device", false); }),
              0);
}

TEST(ClearedBuffersTest, AStoredLoginIsCleared)
{
    const StoredLoginOrigin origin{"server", TALIX_SERVER_PRODUCTION, "https://login.example.com"};
    EXPECT_EQ(FreedBy([&] {
                  StoredLogin login;
                  ClientLogin& client = login.clients.emplace_back();
                  client.clientId = "client";
                  client.subject = "user-1";
                  client.accessToken = Secret(TheSecret);
                  client.idToken = Secret(TheSecret);
                  client.refreshToken = Secret(TheSecret);
                  std::string problem;
                  EXPECT_TRUE(ReadStoredLogin(WriteStoredLogin(login, origin), origin, problem)) << problem;
              }),
              0);
}

} // namespace

} // namespace Kestrany::Agent::OpenId
