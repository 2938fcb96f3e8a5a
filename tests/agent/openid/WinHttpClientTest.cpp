// The HTTPS client against servers of https-tests.mjs, which starts this program.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include <windows.h>

#include <wincrypt.h>

#include "identity/Json.h"
#include "identity/openid/HttpHeaders.h"
#include "identity/openid/windows/WinHttpClient.h"
#include "platform/Base.h"
#include "support/Patience.h"

namespace Kestrany::Agent::OpenId {

namespace {

std::string Variable(const char* name)
{
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

struct StoreCloser
{
    void operator()(void* store) const { CertCloseStore(store, 0); }
};
using CertificateStore = std::unique_ptr<void, StoreCloser>;

CertificateStore OpenUsersRoots()
{
    return CertificateStore(CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"ROOT"));
}

/// While it exists, the user trusts the root certificate of the run.
class TrustedRoot
{
public:
    TrustedRoot() : file_(ReadFileContents(Widen(Variable("HTTPS_ROOT"))))
    {
        // Closed again at once: only then is it surely written.
        const CertificateStore store = OpenUsersRoots();
        if (!store || !file_.IsRead() ||
            !CertAddEncodedCertificateToStore(store.get(), X509_ASN_ENCODING, Bytes(), Size(),
                                              CERT_STORE_ADD_REPLACE_EXISTING, nullptr))
            throw std::runtime_error("the test's root certificate cannot be trusted");
    }
    ~TrustedRoot()
    {
        const CertificateStore store = OpenUsersRoots();
        const PCCERT_CONTEXT certificate = CertCreateCertificateContext(X509_ASN_ENCODING, Bytes(), Size());
        const PCCERT_CONTEXT found =
            CertFindCertificateInStore(store.get(), X509_ASN_ENCODING, 0, CERT_FIND_EXISTING, certificate, nullptr);
        if (found != nullptr)
            CertDeleteCertificateFromStore(found); // Frees it, too.
        CertFreeCertificateContext(certificate);
    }
    TrustedRoot(const TrustedRoot&) = delete;
    TrustedRoot& operator=(const TrustedRoot&) = delete;

private:
    const BYTE* Bytes() const { return reinterpret_cast<const BYTE*>(file_.bytes.data()); }
    DWORD Size() const { return static_cast<DWORD>(file_.bytes.size()); }

    const FileContents file_;
};

class WinHttpClientTest : public testing::Test
{
protected:
    static constexpr std::chrono::milliseconds Long = OrlindexTest::Patience;

    static std::string Address(const char* server, const std::string& path)
    {
        return "https://localhost:" + Variable(server) + path;
    }

    static HttpRequest RequestTo(const std::string& url, std::chrono::milliseconds limit = Long)
    {
        HttpRequest request;
        request.url = url;
        request.maxReply = 1024 * 1024;
        request.limit = limit;
        return request;
    }

    HttpReply Get(const std::string& path, std::chrono::milliseconds limit = Long)
    {
        return client.Send(RequestTo(Address("HTTPS_GOOD", path), limit));
    }

    /// What the server got.
    Json::Value Received(const HttpRequest& request)
    {
        const HttpReply reply = client.Send(request);
        EXPECT_EQ(reply.problem, HttpProblem::None) << reply.detail;
        return ReadJsonObject(std::string(reply.body.View())).value_or(Json::Value());
    }

    void ExpectProblem(const std::string& url, HttpProblem problem, std::chrono::milliseconds limit = Long)
    {
        const HttpReply reply = client.Send(RequestTo(url, limit));
        EXPECT_EQ(reply.problem, problem) << url << ": " << reply.detail;
        EXPECT_EQ(reply.status, 0);
        EXPECT_TRUE(reply.body.IsEmpty());
    }

    static ProxySettings Proxy(const char* variable, std::string userName = {}, std::string password = {})
    {
        return {"127.0.0.1", std::move(userName), std::move(password),
                static_cast<std::int32_t>(std::stoi(Variable(variable)))};
    }
    /// What the proxy was asked for since the last call: pairs of "target" and "user".
    Json::Value Proxied(const char* variable)
    {
        const Json::Value all =
            Received(RequestTo(Address("HTTPS_GOOD", "/proxied?" + Variable(variable))))["requests"];
        Json::Value added(Json::arrayValue);
        for (Json::ArrayIndex index = seen_; index < all.size(); ++index)
            added.append(all[index]);
        seen_ = all.size();
        return added;
    }

    WinHttpClient client;

private:
    Json::ArrayIndex seen_ = 0; ///< Of the one proxy that a test uses.
};

TEST_F(WinHttpClientTest, AReplyHasItsStatusItsHeadersAndItsBody)
{
    const HttpReply reply = Get("/json");
    EXPECT_EQ(reply.problem, HttpProblem::None) << reply.detail;
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(MediaType(reply.contentType), "application/json");
    EXPECT_EQ(reply.body.View(), "{\"ok\":true}");
    EXPECT_TRUE(ParseHttpDate(reply.date)) << reply.date;
    EXPECT_EQ(Get("/many").status, 429);
    EXPECT_EQ(Get("/many").retryAfter, "7");
    EXPECT_EQ(Get("/error").status, 500);
    EXPECT_EQ(Get("/missing").status, 404);
}

TEST_F(WinHttpClientTest, AFormIsPosted)
{
    HttpRequest request = RequestTo(Address("HTTPS_GOOD", "/request"));
    request.form = Secret("a=b&c=d%20e");
    const Json::Value received = Received(request);
    EXPECT_EQ(received["method"].asString(), "POST");
    EXPECT_EQ(received["body"].asString(), "a=b&c=d%20e");
    EXPECT_EQ(received["headers"]["content-type"].asString(), "application/x-www-form-urlencoded");
    EXPECT_EQ(received["headers"]["accept"].asString(), "application/json");
}

TEST_F(WinHttpClientTest, AnAddressIsSentAsItIsWritten)
{
    const std::string target = "/request?a=%2Fb+c&d=%C3%A4";
    EXPECT_EQ(Received(RequestTo(Address("HTTPS_GOOD", target)))["target"].asString(), target);
}

TEST_F(WinHttpClientTest, AnAccessTokenIsPresentedOnce)
{
    HttpRequest request = RequestTo(Address("HTTPS_GOOD", "/request"));
    request.bearer = Secret("token-1");
    EXPECT_EQ(Received(request)["headers"]["authorization"].asString(), "Bearer token-1");
    EXPECT_FALSE(Received(RequestTo(Address("HTTPS_GOOD", "/request")))["headers"].isMember("authorization"));
}

TEST_F(WinHttpClientTest, AConnectionIsKept)
{
    const HttpRequest request = RequestTo(Address("HTTPS_GOOD", "/request"));
    const Json::Value first = Received(request);
    EXPECT_EQ(Received(request)["port"], first["port"]);
}

TEST_F(WinHttpClientTest, AConnectionIsKeptAfterAReplyWithoutBody)
{
    const HttpRequest request = RequestTo(Address("HTTPS_GOOD", "/request"));
    const Json::Value first = Received(request);
    EXPECT_EQ(Get("/many").status, 429);
    EXPECT_EQ(Received(request)["port"], first["port"]);
}

TEST_F(WinHttpClientTest, NoCookieIsKept)
{
    EXPECT_EQ(Get("/cookie").status, 200);
    EXPECT_FALSE(Received(RequestTo(Address("HTTPS_GOOD", "/request")))["headers"].isMember("cookie"));
}

TEST_F(WinHttpClientTest, AProxyTunnelsRequests)
{
    WinHttpClient proxied(Proxy("HTTP_PROXY_OPEN"));
    const HttpReply reply = proxied.Send(RequestTo(Address("HTTPS_GOOD", "/json")));
    EXPECT_EQ(reply.status, 200) << reply.detail;
    const Json::Value requests = Proxied("HTTP_PROXY_OPEN");
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0]["target"].asString(), "localhost:" + Variable("HTTPS_GOOD"));
    EXPECT_EQ(requests[0]["user"].asString(), "");
}

TEST_F(WinHttpClientTest, TheHostsCredentialsArePresentedToTheProxyThatAsks)
{
    WinHttpClient proxied(Proxy("HTTP_PROXY_WITH_USERS", "name", "pass:word"));
    HttpRequest request = RequestTo("http://localhost:" + Variable("HTTP_PLAIN") + "/request");
    request.form = Secret("a=b");
    const HttpReply reply = proxied.Send(request);
    ASSERT_EQ(reply.status, 200) << reply.detail;
    EXPECT_EQ(ReadJsonObject(std::string(reply.body.View())).value_or(Json::Value())["body"].asString(), "a=b");
    const Json::Value requests = Proxied("HTTP_PROXY_WITH_USERS");
    ASSERT_FALSE(requests.empty());
    EXPECT_EQ(requests[0]["user"].asString(), "") << "they are for a proxy that asks";
    EXPECT_EQ(requests[requests.size() - 1]["user"].asString(), "name:pass:word");
}

TEST_F(WinHttpClientTest, AProxyThatRefusesIsNotAskedAgainAndAgain)
{
    (void)Proxied("HTTP_PROXY_WITH_USERS");
    WinHttpClient wrong(Proxy("HTTP_PROXY_WITH_USERS", "name", "other"));
    EXPECT_EQ(wrong.Send(RequestTo("http://localhost:" + Variable("HTTP_PLAIN") + "/json")).status, 407);
    // A platform may send the request once more before it presents them.
    EXPECT_LE(Proxied("HTTP_PROXY_WITH_USERS").size(), 3U);
    // Without the host's credentials, none are presented: not those of the Windows user either.
    WinHttpClient nameless(Proxy("HTTP_PROXY_WITH_USERS"));
    EXPECT_EQ(nameless.Send(RequestTo("http://localhost:" + Variable("HTTP_PLAIN") + "/json")).status, 407);
    const Json::Value requests = Proxied("HTTP_PROXY_WITH_USERS");
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0]["user"].asString(), "");
}

TEST_F(WinHttpClientTest, NothingIsSentThroughAProxyThatRefusesTheTunnel)
{
    for (const char* const name : {"", "name"})
    {
        WinHttpClient proxied(Proxy("HTTP_PROXY_WITH_USERS", name, "other"));
        const HttpReply reply = proxied.Send(RequestTo(Address("HTTPS_GOOD", "/json")));
        EXPECT_TRUE(reply.problem != HttpProblem::None || reply.status == 407) << reply.status;
    }
}

TEST_F(WinHttpClientTest, AProxyThatCannotBeReachedIsReported)
{
    WinHttpClient proxied(Proxy("TCP_CLOSED"));
    EXPECT_EQ(proxied.Send(RequestTo(Address("HTTPS_GOOD", "/json"))).problem, HttpProblem::NotConnected);
}

TEST_F(WinHttpClientTest, NoRedirectIsFollowed)
{
    const HttpReply reply = Get("/redirect");
    EXPECT_EQ(reply.status, 302);
    EXPECT_NE(reply.body.View(), "{\"ok\":true}");
}

TEST_F(WinHttpClientTest, TheUsersPasswordIsNotOffered)
{
    EXPECT_EQ(Get("/unauthorized").status, 401);
}

TEST_F(WinHttpClientTest, ACertificateThatIsNotTrustedIsRefused)
{
    ExpectProblem(Address("HTTPS_OTHER_HOST", "/json"), HttpProblem::TlsRefused);
    ExpectProblem(Address("HTTPS_EXPIRED", "/json"), HttpProblem::TlsRefused);
    ExpectProblem(Address("HTTPS_UNKNOWN_ROOT", "/json"), HttpProblem::TlsRefused);
    EXPECT_EQ(Get("/json").status, 200) << "the right one still works";
}

TEST_F(WinHttpClientTest, AServerWithoutTlsIsRefused)
{
    const HttpReply reply = client.Send(RequestTo(Address("HTTP_PLAIN", "/json")));
    EXPECT_NE(reply.problem, HttpProblem::None);
    EXPECT_EQ(client.Send(RequestTo("http://127.0.0.1:" + Variable("HTTP_PLAIN") + "/json")).status, 200);
}

TEST_F(WinHttpClientTest, AServerThatCannotBeReachedIsReported)
{
    ExpectProblem(Address("TCP_CLOSED", "/json"), HttpProblem::NotConnected);
    ExpectProblem("https://name.invalid/json", HttpProblem::NameNotResolved);
}

TEST_F(WinHttpClientTest, AnAnswerThatEndsEarlyIsNoReply)
{
    ExpectProblem(Address("HTTPS_GOOD", "/half"), HttpProblem::ConnectionLost);
    ExpectProblem(Address("HTTPS_GOOD", "/closed"), HttpProblem::ConnectionLost);
    const HttpReply reply = Get("/nonsense");
    EXPECT_NE(reply.problem, HttpProblem::None);
    EXPECT_TRUE(reply.body.IsEmpty());
    EXPECT_NE(client.Send(RequestTo(Address("TCP_CLOSING", "/json"))).problem, HttpProblem::None);
}

TEST_F(WinHttpClientTest, ALargeAnswerIsNotReadToItsEnd)
{
    ExpectProblem(Address("HTTPS_GOOD", "/large"), HttpProblem::ReplyTooLarge);
    ExpectProblem(Address("HTTPS_GOOD", "/endless"), HttpProblem::ReplyTooLarge);
    EXPECT_EQ(Get("/json").status, 200);
}

TEST_F(WinHttpClientTest, AnAnswerOfTheLargestSizeIsRead)
{
    HttpRequest request = RequestTo(Address("HTTPS_GOOD", "/large"));
    request.maxReply = 10 * 1024 * 1024;
    EXPECT_EQ(client.Send(request).body.Size(), request.maxReply);
    --request.maxReply;
    EXPECT_EQ(client.Send(request).problem, HttpProblem::ReplyTooLarge);
}

TEST_F(WinHttpClientTest, NoAnswerLastsBeyondTheLimit)
{
    constexpr std::chrono::seconds limit(2);
    for (const std::string& url :
         {Address("HTTPS_GOOD", "/stalled"), Address("HTTPS_GOOD", "/drip"), Address("TCP_SILENT", "/json")})
    {
        const auto start = std::chrono::steady_clock::now();
        ExpectProblem(url, HttpProblem::TimedOut, limit);
        const auto passed = std::chrono::steady_clock::now() - start;
        EXPECT_GE(passed, limit - std::chrono::milliseconds(100)) << url;
        EXPECT_LT(passed, Long) << url;
    }
}

} // namespace

} // namespace Kestrany::Agent::OpenId

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const Kestrany::Agent::OpenId::TrustedRoot root;
    return RUN_ALL_TESTS();
}
