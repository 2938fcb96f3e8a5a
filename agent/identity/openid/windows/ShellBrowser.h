#ifndef AGENT_IDENTITY_OPENID_WINDOWS_SHELLBROWSER_H
#define AGENT_IDENTITY_OPENID_WINDOWS_SHELLBROWSER_H

#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// The user's default browser.
class ShellBrowser final : public Browser
{
public:
    bool Open(const std::string& address) override;
};

} // namespace Kestrany::Agent::OpenId

#endif
