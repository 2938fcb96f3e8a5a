#ifndef ORLINDEX_BENCH_SIGNINS_REQUESTS_H
#define ORLINDEX_BENCH_SIGNINS_REQUESTS_H

#include <memory>
#include <string>

#include <windows.h>

#include <winhttp.h>

namespace OrlindexBench {

struct InternetCloser
{
    void operator()(void* handle) const { WinHttpCloseHandle(handle); }
};
using InternetHandle = std::unique_ptr<void, InternetCloser>;

/// Requests to the provider over WinHTTP, in one session. Throws unless the reply is a success.
class Requests
{
public:
    Requests();
    std::string Get(const std::string& url) const;
    std::string Post(const std::string& url, const std::string& form) const;

private:
    std::string Send(const wchar_t* method, const std::string& url, const std::string* form) const;

    InternetHandle session_;
};

} // namespace OrlindexBench

#endif
