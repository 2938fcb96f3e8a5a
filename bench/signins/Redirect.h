#ifndef ORLINDEX_BENCH_SIGNINS_REDIRECT_H
#define ORLINDEX_BENCH_SIGNINS_REDIRECT_H

#include <cstdint>
#include <map>
#include <string>

#include <winsock2.h>

namespace OrlindexBench {

/// Listens at a free port of 127.0.0.1 for the one redirect of a sign-in.
class RedirectSocket
{
public:
    RedirectSocket();
    ~RedirectSocket();
    RedirectSocket(const RedirectSocket&) = delete;
    RedirectSocket& operator=(const RedirectSocket&) = delete;

    /// The redirect URI.
    std::string Address() const { return "http://127.0.0.1:" + std::to_string(port_) + "/callback"; }
    /// Waits for the redirect, replies with a page, and returns the redirect's parameters.
    std::map<std::string, std::string> Await() const;

private:
    SOCKET socket_;
    std::uint16_t port_ = 0;
};

} // namespace OrlindexBench

#endif
