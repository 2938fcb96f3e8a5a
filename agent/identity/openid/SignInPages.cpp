#include "identity/openid/SignInPages.h"

#include <algorithm>
#include <utility>

#include "identity/Base64Url.h"

namespace Kestrany::Agent::OpenId {

namespace {

constexpr std::size_t PathBytes = 16; // Of randomness: no other program guesses the path.

/// Nothing from a request is in a page.
std::string Page(const char* title, const char* text)
{
    return std::string("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width\">\n<title>") +
           title +
           "</title>\n<style>body{font:1.1em/1.5 system-ui,sans-serif;max-width:36em;margin:4em auto;padding:0 1em}"
           "</style>\n</head>\n<body>\n<main>\n<h1>" +
           title + "</h1>\n<p>" + text + "</p>\n</main>\n</body>\n</html>\n";
}

} // namespace

void SignInPages::Expect(std::shared_ptr<const BrowserSignIn> signIn, RedirectExpectation expectation,
                         OnRedirect onRedirect)
{
    const std::lock_guard lock(mutex_);
    signIn_ = std::move(signIn);
    expectation_ = std::move(expectation);
    onRedirect_ = std::move(onRedirect);
    target_ = signIn_->address.Clone();
}

void SignInPages::SetTarget(Secret address)
{
    const std::lock_guard lock(mutex_);
    target_ = std::move(address);
}

void SignInPages::Close()
{
    const std::lock_guard lock(mutex_);
    Finish();
}

std::string SignInPages::NewPath()
{
    const std::lock_guard lock(mutex_);
    if (paths_.size() == MaxPaths)
        paths_.erase(paths_.begin());
    paths_.push_back("/go/" + RandomText(random_, PathBytes));
    return paths_.back();
}

bool SignInPages::IsFinished() const
{
    const std::lock_guard lock(mutex_);
    return isFinished_;
}

bool SignInPages::WasUsed() const
{
    const std::lock_guard lock(mutex_);
    return wasUsed_;
}

PageReply SignInPages::Reply(std::string_view method, std::string_view target)
{
    OnRedirect onRedirect;
    RedirectResult result;
    PageReply reply;
    {
        const std::lock_guard lock(mutex_);
        if (method == "GET" && target.substr(0, 4) == "/go/")
            return FollowPath(target);
        if (!onRedirect_)
            return isFinished_ ? PageReply{410, Page("This sign-in has ended", "You can close this page."), {}}
                               : PageReply{404, Page("Not found", "There is no such page."), {}};
        result = ReadRedirect(method, target, expectation_);
        reply = PageOf(result);
        if (result.kind == RedirectResult::Kind::OtherPath)
            return reply;
        onRedirect = onRedirect_;
        if (result.kind != RedirectResult::Kind::Ignored)
        {
            // The first redirect counts: no other one can replace its code.
            Finish();
            reply.isLast = true;
        }
    }
    onRedirect(std::move(result));
    return reply;
}

/// The lock is held.
void SignInPages::Finish()
{
    onRedirect_ = nullptr;
    isFinished_ = true;
    target_.Clear();
    paths_.clear();
}

/// The lock is held.
PageReply SignInPages::FollowPath(std::string_view target)
{
    const auto path = std::find_if(paths_.begin(), paths_.end(),
                                   [&](const std::string& each) { return AreEqualSecrets(each, target); });
    if (path == paths_.end() || target_.IsEmpty())
        return {410,
                Page("This address was used already", "Go back to the application to open the browser again. You "
                                                      "can close this page."),
                {}};
    paths_.erase(path);
    wasUsed_ = true;
    return {302, {}, target_.Clone()};
}

PageReply SignInPages::PageOf(const RedirectResult& result)
{
    switch (result.kind)
    {
    case RedirectResult::Kind::Code:
        return {200,
                Page("Almost done", "The browser's part of the sign-in is done. You can close this page and go back "
                                    "to the application."),
                {}};
    case RedirectResult::Kind::Failed:
        return {400,
                Page("You are not signed in", "The sign-in did not succeed. Go back to the application; its log says "
                                              "why. You can close this page."),
                {}};
    case RedirectResult::Kind::Ignored:
        return {400,
                Page("Not the sign-in that waits", "This page belongs to another sign-in, which has ended. Finish in "
                                                   "the page that opened last."),
                {}};
    case RedirectResult::Kind::OtherPath:
        break;
    }
    return {404, Page("Not found", "There is no such page."), {}};
}

} // namespace Kestrany::Agent::OpenId
