#ifndef AGENT_IDENTITY_OPENID_SIGNINPAGES_H
#define AGENT_IDENTITY_OPENID_SIGNINPAGES_H

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "identity/openid/Provider.h"
#include "identity/openid/RedirectRequest.h"
#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// What the loopback listener of one sign-in, or of one sign-out, replies. Any thread may call.
///
/// The browser is opened with a short path that redirects to the long address, once: long addresses do not arrive
/// whole everywhere, and a command line is no place for them.
class SignInPages
{
public:
    /// Short paths that have not been used; the oldest one makes room for another.
    static constexpr std::size_t MaxPaths = 16;

    /// Receives every request that concerns the sign-in, except those to other paths.
    using OnRedirect = std::function<void(RedirectResult result)>;

    explicit SignInPages(RandomSource random) : random_(std::move(random)) {}
    ~SignInPages() = default;
    SignInPages(const SignInPages&) = delete;
    SignInPages& operator=(const SignInPages&) = delete;

    /// Waits for the redirect of a sign-in; the short paths lead to its address.
    void Expect(std::shared_ptr<const BrowserSignIn> signIn, RedirectExpectation expectation, OnRedirect onRedirect);
    /// The short paths lead to this address.
    void SetTarget(Secret address);

    /// Receives nothing any more.
    void Close();

    /// A new short path.
    std::string NewPath();
    /// Whether a redirect has come that counts, or Close was called.
    bool IsFinished() const;
    /// Whether a short path was used.
    bool WasUsed() const;
    PageReply Reply(std::string_view method, std::string_view target);

private:
    PageReply FollowPath(std::string_view target);
    static PageReply PageOf(const RedirectResult& result);
    void Finish();

    const RandomSource random_;
    mutable std::mutex mutex_;
    std::shared_ptr<const BrowserSignIn> signIn_; ///< Holds the texts of the expectation.
    RedirectExpectation expectation_;
    OnRedirect onRedirect_; ///< Empty while no redirect is expected, and after the one that counts.
    bool isFinished_ = false;
    bool wasUsed_ = false;
    Secret target_;
    std::vector<std::string> paths_;
};

} // namespace Kestrany::Agent::OpenId

#endif
