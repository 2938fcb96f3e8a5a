#include "signins/Requests.h"

#include "signins/Require.h"

namespace OrlindexBench {

namespace {

constexpr int Limit = 30'000; // Milliseconds.

/// A request for the address, with its connection.
struct Request
{
    InternetHandle connection;
    InternetHandle handle;
};

Request Open(HINTERNET session, const wchar_t* method, const std::wstring& url)
{
    wchar_t host[256] = {};
    wchar_t target[2048] = {};
    URL_COMPONENTS parts{};
    parts.dwStructSize = sizeof parts;
    parts.lpszHostName = host;
    parts.dwHostNameLength = 256;
    parts.lpszUrlPath = target;
    parts.dwUrlPathLength = 2048;
    Require(WinHttpCrackUrl(url.c_str(), 0, 0, &parts), "an address is not valid");
    Request request;
    request.connection.reset(WinHttpConnect(session, host, parts.nPort, 0));
    const DWORD flags = parts.nScheme == INTERNET_SCHEME_HTTPS ? WINHTTP_FLAG_SECURE : 0;
    const wchar_t* types[] = {L"application/json", nullptr};
    request.handle.reset(WinHttpOpenRequest(request.connection.get(), method, target, nullptr, WINHTTP_NO_REFERER,
                                            types, flags | WINHTTP_FLAG_ESCAPE_DISABLE));
    Require(request.handle != nullptr, "no request");
    return request;
}

/// Without a time-out for the response, a provider that stalls would be waited for without a limit.
void Configure(HINTERNET request)
{
    DWORD limit = Limit;
    DWORD disabled = WINHTTP_DISABLE_REDIRECTS | WINHTTP_DISABLE_COOKIES | WINHTTP_DISABLE_AUTHENTICATION;
    Require(WinHttpSetTimeouts(request, Limit, Limit, Limit, Limit) &&
                WinHttpSetOption(request, WINHTTP_OPTION_RECEIVE_RESPONSE_TIMEOUT, &limit, sizeof limit) &&
                WinHttpSetOption(request, WINHTTP_OPTION_DISABLE_FEATURE, &disabled, sizeof disabled),
            "an option is refused");
}

std::string ReadBody(HINTERNET request)
{
    DWORD status = 0;
    DWORD size = sizeof status;
    Require(WinHttpQueryHeaders(request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                                WINHTTP_HEADER_NAME_BY_INDEX, &status, &size, WINHTTP_NO_HEADER_INDEX) &&
                status == 200,
            "the provider refuses a request");
    std::string body;
    char block[16 * 1024];
    for (DWORD read = 0;; body.append(block, read))
    {
        Require(WinHttpReadData(request, block, sizeof block, &read), "a reply is not complete");
        if (read == 0)
            return body;
    }
}

} // namespace

Requests::Requests()
    : session_(WinHttpOpen(L"sign_in_floor", WINHTTP_ACCESS_TYPE_AUTOMATIC_PROXY, WINHTTP_NO_PROXY_NAME,
                           WINHTTP_NO_PROXY_BYPASS, 0))
{
    DWORD protocols = WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2;
    Require(session_ != nullptr &&
                WinHttpSetOption(session_.get(), WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols, sizeof protocols),
            "no HTTP session");
}

std::string Requests::Get(const std::string& url) const
{
    return Send(L"GET", url, nullptr);
}

std::string Requests::Post(const std::string& url, const std::string& form) const
{
    return Send(L"POST", url, &form);
}

std::string Requests::Send(const wchar_t* method, const std::string& url, const std::string* form) const
{
    const Request request = Open(session_.get(), method, std::wstring(url.begin(), url.end()));
    Configure(request.handle.get());
    const wchar_t* const type =
        form ? L"Content-Type: application/x-www-form-urlencoded" : WINHTTP_NO_ADDITIONAL_HEADERS;
    const auto size = static_cast<DWORD>(form ? form->size() : 0);
    void* const data = form ? const_cast<char*>(form->data()) : WINHTTP_NO_REQUEST_DATA;
    Require(WinHttpSendRequest(request.handle.get(), type, form ? static_cast<DWORD>(-1) : 0, data, size, size, 0) &&
                WinHttpReceiveResponse(request.handle.get(), nullptr),
            "the provider does not reply");
    return ReadBody(request.handle.get());
}

} // namespace OrlindexBench
