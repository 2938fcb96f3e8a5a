#include "identity/openid/windows/WinHttpClient.h"

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

#include <winsock2.h>

#include "identity/openid/Url.h"
#include "platform/Base.h"
#include "platform/Deadline.h"

namespace Kestrany::Agent::OpenId {

namespace {

constexpr DWORD Block = 16 * 1024;
/// Of a scheme by which a proxy's user signs in; NTLM takes two.
constexpr int MaxSteps = 4;

/// A text of the request that holds a secret: cleared, unlike the copies that the system makes.
struct ClearedText
{
    std::wstring text;
    ~ClearedText() { ClearMemory(text.data(), text.size() * sizeof(wchar_t)); }
};

HttpProblem ProblemOf(DWORD error)
{
    switch (error)
    {
    case ERROR_WINHTTP_NAME_NOT_RESOLVED:
        return HttpProblem::NameNotResolved;
    case ERROR_WINHTTP_CANNOT_CONNECT:
    case WSAECONNREFUSED:
        return HttpProblem::NotConnected;
    case ERROR_WINHTTP_TIMEOUT:
    case WSAETIMEDOUT:
        return HttpProblem::TimedOut;
    case ERROR_WINHTTP_CONNECTION_ERROR:
    case ERROR_WINHTTP_INVALID_SERVER_RESPONSE:
    case ERROR_WINHTTP_RESEND_REQUEST:
    case WSAECONNRESET:
    case WSAECONNABORTED:
        return HttpProblem::ConnectionLost;
    case ERROR_WINHTTP_HEADER_SIZE_OVERFLOW:
    case ERROR_WINHTTP_HEADER_COUNT_EXCEEDED:
    case ERROR_WINHTTP_CHUNKED_ENCODING_HEADER_SIZE_OVERFLOW:
        return HttpProblem::ReplyTooLarge;
    case ERROR_WINHTTP_SECURE_FAILURE:
    case ERROR_WINHTTP_SECURE_CHANNEL_ERROR:
    case ERROR_WINHTTP_SECURE_CERT_CN_INVALID:
    case ERROR_WINHTTP_SECURE_CERT_DATE_INVALID:
    case ERROR_WINHTTP_SECURE_CERT_REVOKED:
    case ERROR_WINHTTP_SECURE_CERT_REV_FAILED:
    case ERROR_WINHTTP_SECURE_CERT_WRONG_USAGE:
    case ERROR_WINHTTP_SECURE_INVALID_CA:
    case ERROR_WINHTTP_SECURE_INVALID_CERT:
    case ERROR_WINHTTP_CLIENT_AUTH_CERT_NEEDED:
        return HttpProblem::TlsRefused;
    default:
        return HttpProblem::Failed;
    }
}

std::string DetailOf(DWORD error)
{
    // The texts of these errors are in the module of the HTTP client, not among the system's.
    return error >= WINHTTP_ERROR_BASE && error <= WINHTTP_ERROR_LAST ? "error " + std::to_string(error)
                                                                      : SystemMessage(error);
}

} // namespace

/// One request and its reply.
class WinHttpClient::Exchange
{
public:
    Exchange(const InternetHandle& session, const std::optional<ProxySettings>& proxy, const HttpRequest& request)
        : session_(session), proxy_(proxy), request_(request), deadline_(request.limit.count())
    {
    }

    HttpReply Perform()
    {
        HttpReply reply;
        if (!Open() || !Transmit() || !ReadHeaders(reply) || !ReadBody(reply))
        {
            reply = {};
            reply.problem = isTooLarge_ ? HttpProblem::ReplyTooLarge : Problem();
            reply.detail = isTooLarge_ ? std::string() : DetailOf(error_);
        }
        return reply;
    }

private:
    HttpProblem Problem() const
    {
        const HttpProblem problem = ProblemOf(error_);
        // A TLS handshake that stalls until the limit ends like one that is refused.
        return problem == HttpProblem::TlsRefused && deadline_.Left() == 0 ? HttpProblem::TimedOut : problem;
    }

    /// At least 1: a time-out of 0 would mean none.
    DWORD TimeOut() const { return std::max<DWORD>(deadline_.Left(), 1); }

    /// Stores the error of a call at once: later calls replace it.
    bool Check(bool hasSucceeded)
    {
        if (!hasSucceeded)
            error_ = GetLastError();
        return hasSucceeded;
    }
    bool Fail(DWORD error)
    {
        error_ = error;
        return false;
    }

    bool Open()
    {
        const std::optional<Url> url = ParseUrl(request_.url);
        if (!url)
            return Fail(ERROR_WINHTTP_INVALID_URL);
        connection_.reset(WinHttpConnect(session_.get(), Widen(url->host).c_str(), url->port, 0));
        if (!Check(connection_ != nullptr))
            return false;
        const std::wstring target =
            Widen((url->path.empty() ? "/" : url->path) + (url->query ? "?" + *url->query : ""));
        const std::wstring accept = Widen(request_.accept);
        const wchar_t* types[] = {accept.c_str(), nullptr};
        // The address is sent as it is written.
        const DWORD flags = WINHTTP_FLAG_ESCAPE_DISABLE | (url->isHttps ? WINHTTP_FLAG_SECURE : 0);
        handle_.reset(WinHttpOpenRequest(connection_.get(), request_.form ? L"POST" : L"GET", target.c_str(), nullptr,
                                         WINHTTP_NO_REFERER, types, flags));
        return Check(handle_ != nullptr) && Configure();
    }

    bool SetNumber(DWORD option, DWORD value)
    {
        return Check(WinHttpSetOption(handle_.get(), option, &value, sizeof value) != FALSE);
    }

    bool Configure()
    {
        // Without a time-out for the response, a stalled TLS handshake would wait for ever.
        const int limit = static_cast<int>(std::min<DWORD>(TimeOut(), 24 * 3600 * 1000));
        return Check(WinHttpSetTimeouts(handle_.get(), limit, limit, limit, limit) != FALSE) &&
               SetNumber(WINHTTP_OPTION_RECEIVE_RESPONSE_TIMEOUT, static_cast<DWORD>(limit)) &&
               SetNumber(WINHTTP_OPTION_DISABLE_FEATURE, WINHTTP_DISABLE_REDIRECTS | WINHTTP_DISABLE_COOKIES |
                                                             (SignsInAtProxy() ? 0 : WINHTTP_DISABLE_AUTHENTICATION)) &&
               // The Windows user's own credentials never go to the proxy or to a server.
               (!SignsInAtProxy() || SetNumber(WINHTTP_OPTION_AUTOLOGON_POLICY, WINHTTP_AUTOLOGON_SECURITY_LEVEL_HIGH));
    }

    bool SignsInAtProxy() const { return proxy_ && !proxy_->userName.empty(); }

    /// Presents the host's credentials to a proxy that has asked for them, by the best scheme that it offers. False
    /// without an error if it offers none.
    bool SetProxyCredentials()
    {
        DWORD offered = 0;
        DWORD first = 0;
        DWORD target = 0;
        if (!proxy_ || !WinHttpQueryAuthSchemes(handle_.get(), &offered, &first, &target) ||
            target != WINHTTP_AUTH_TARGET_PROXY)
            return false;
        for (const DWORD scheme : {WINHTTP_AUTH_SCHEME_NEGOTIATE, WINHTTP_AUTH_SCHEME_NTLM, WINHTTP_AUTH_SCHEME_DIGEST,
                                   WINHTTP_AUTH_SCHEME_BASIC})
        {
            if ((offered & scheme) == 0)
                continue;
            const ClearedText name{Widen(proxy_->userName)};
            const ClearedText password{Widen(proxy_->password)};
            return WinHttpSetCredentials(handle_.get(), WINHTTP_AUTH_TARGET_PROXY, scheme, name.text.c_str(),
                                         password.text.c_str(), nullptr) != FALSE;
        }
        return false;
    }

    bool AddHeader(const ClearedText& line)
    {
        return Check(WinHttpAddRequestHeaders(handle_.get(), line.text.c_str(), static_cast<DWORD>(line.text.size()),
                                              WINHTTP_ADDREQ_FLAG_ADD | WINHTTP_ADDREQ_FLAG_REPLACE) != FALSE);
    }

    bool Transmit()
    {
        if (request_.form && !AddHeader({L"Content-Type: application/x-www-form-urlencoded"}))
            return false;
        if (!request_.bearer.IsEmpty())
        {
            ClearedText line;
            line.text.reserve(request_.bearer.Size() + 32); // Does not grow: no copy is left behind.
            line.text = L"Authorization: Bearer ";
            for (const char letter : request_.bearer.View())
                line.text += static_cast<wchar_t>(static_cast<unsigned char>(letter));
            if (!AddHeader(line))
                return false;
        }
        if (!Send())
            return false;
        // Once: a proxy that asks again has refused the credentials, and its reply says so.
        return !SignsInAtProxy() || Status() != HTTP_STATUS_PROXY_AUTH_REQ || !SetProxyCredentials() || Send();
    }

    bool Send()
    {
        const std::string_view form = request_.form ? request_.form->View() : std::string_view();
        const auto size = static_cast<DWORD>(form.size());
        void* const data = size == 0 ? WINHTTP_NO_REQUEST_DATA : const_cast<char*>(form.data());
        for (int attempts = 0;; ++attempts)
        {
            if (Check(WinHttpSendRequest(handle_.get(), WINHTTP_NO_ADDITIONAL_HEADERS, 0, data, size, size, 0) !=
                      FALSE) &&
                Check(WinHttpReceiveResponse(handle_.get(), nullptr) != FALSE))
                return true;
            // A scheme of several steps asks for the request again.
            if (!SignsInAtProxy() || error_ != ERROR_WINHTTP_RESEND_REQUEST || attempts == MaxSteps)
                return false;
        }
    }

    /// Of the reply; 0 if it cannot be read.
    DWORD Status()
    {
        DWORD status = 0;
        DWORD size = sizeof status;
        const bool isRead =
            Check(WinHttpQueryHeaders(handle_.get(), WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                                      WINHTTP_HEADER_NAME_BY_INDEX, &status, &size, WINHTTP_NO_HEADER_INDEX) != FALSE);
        return isRead ? status : 0;
    }

    /// Empty if there is no such header, or if it is very long.
    std::string Header(DWORD which) const
    {
        wchar_t text[512];
        DWORD size = sizeof text;
        if (!WinHttpQueryHeaders(handle_.get(), which, WINHTTP_HEADER_NAME_BY_INDEX, text, &size,
                                 WINHTTP_NO_HEADER_INDEX))
            return {};
        return Narrow({text, size / sizeof(wchar_t)});
    }

    bool ReadHeaders(HttpReply& reply)
    {
        const DWORD status = Status();
        if (status == 0)
            return false;
        reply.status = static_cast<int>(status);
        reply.contentType = Header(WINHTTP_QUERY_CONTENT_TYPE);
        reply.retryAfter = Header(WINHTTP_QUERY_RETRY_AFTER);
        reply.date = Header(WINHTTP_QUERY_DATE);
        return true;
    }

    bool ReadBody(HttpReply& reply)
    {
        std::vector<char> block(Block);
        struct Clearing
        {
            std::vector<char>& bytes;
            ~Clearing() { ClearMemory(bytes.data(), bytes.size()); }
        } const clearing{block};
        for (;;)
        {
            // Bytes that come one by one must not add up beyond the limit.
            if (deadline_.Left() == 0)
                return Fail(ERROR_WINHTTP_TIMEOUT);
            DWORD available = 0;
            if (!SetNumber(WINHTTP_OPTION_RECEIVE_TIMEOUT, TimeOut()) ||
                !Check(WinHttpQueryDataAvailable(handle_.get(), &available) != FALSE))
                return false;
            DWORD read = 0;
            if (available == 0)
            {
                // A connection is only kept for the next request once a read has found the end.
                WinHttpReadData(handle_.get(), block.data(), 1, &read);
                return IsComplete(reply);
            }
            if (!Check(WinHttpReadData(handle_.get(), block.data(), std::min(available, Block), &read) != FALSE))
                return false;
            if (reply.body.Size() + read > request_.maxReply)
            {
                isTooLarge_ = true;
                return false;
            }
            reply.body.Append({block.data(), read});
        }
    }

    /// A connection that ends early looks like the end of the body: the length says whether it is.
    bool IsComplete(const HttpReply& reply)
    {
        DWORD length = 0;
        DWORD size = sizeof length;
        const bool hasLength =
            WinHttpQueryHeaders(handle_.get(), WINHTTP_QUERY_CONTENT_LENGTH | WINHTTP_QUERY_FLAG_NUMBER,
                                WINHTTP_HEADER_NAME_BY_INDEX, &length, &size, WINHTTP_NO_HEADER_INDEX);
        return !hasLength || reply.body.Size() >= length || Fail(ERROR_WINHTTP_CONNECTION_ERROR);
    }

    const InternetHandle& session_;
    const std::optional<ProxySettings>& proxy_;
    const HttpRequest& request_;
    const Deadline deadline_;
    InternetHandle connection_;
    InternetHandle handle_;
    DWORD error_ = ERROR_SUCCESS;
    bool isTooLarge_ = false;
};

WinHttpClient::WinHttpClient(std::optional<ProxySettings> proxy) : proxy_(std::move(proxy))
{
    const std::wstring address = proxy_ ? Widen(proxy_->host + ":" + std::to_string(proxy_->port)) : std::wstring();
    session_.reset(WinHttpOpen(L"Pellwick",
                               proxy_ ? WINHTTP_ACCESS_TYPE_NAMED_PROXY : WINHTTP_ACCESS_TYPE_AUTOMATIC_PROXY,
                               proxy_ ? address.c_str() : WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0));
    if (!session_)
        throw std::runtime_error("the system's HTTP client cannot be used: " + DetailOf(GetLastError()));
    DWORD protocols = WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2 | WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_3;
    if (WinHttpSetOption(session_.get(), WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols, sizeof protocols))
        return;
    // A system without TLS 1.3 refuses it.
    protocols = WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2;
    if (!WinHttpSetOption(session_.get(), WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols, sizeof protocols))
        throw std::runtime_error("the system's HTTP client refuses TLS 1.2: " + DetailOf(GetLastError()));
}

WinHttpClient::~WinHttpClient()
{
    if (proxy_)
        ClearText(proxy_->password);
}

HttpReply WinHttpClient::Send(const HttpRequest& request)
{
    return Exchange(session_, proxy_, request).Perform();
}

} // namespace Kestrany::Agent::OpenId
