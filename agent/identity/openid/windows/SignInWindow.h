#ifndef AGENT_IDENTITY_OPENID_WINDOWS_SIGNINWINDOW_H
#define AGENT_IDENTITY_OPENID_WINDOWS_SIGNINWINDOW_H

#include <memory>
#include <vector>

#include "identity/openid/Services.h"
#include "platform/Base.h"

namespace Kestrany::Agent::OpenId {

/// A small window for each user who is expected, on a thread of its own: what happens, and buttons to open the browser
/// again, to copy the address, and to cancel; with another device, the address and the code, large. Its controls are
/// the system's, so that the keyboard, screen readers and high contrast work with it. It follows the screen's scaling.
class SignInWindows final : public Prompts
{
public:
    SignInWindows() = default;
    /// Waits a short time for the windows to close.
    ~SignInWindows() override;
    SignInWindows(const SignInWindows&) = delete;
    SignInWindows& operator=(const SignInWindows&) = delete;

    std::unique_ptr<Prompt> Show(PromptText text, PromptActions actions) override;

private:
    std::vector<Handle> threads_; ///< Of the windows that are open.
};

} // namespace Kestrany::Agent::OpenId

#endif
