#ifndef AGENT_TESTS_EVENTRECORDER_H
#define AGENT_TESTS_EVENTRECORDER_H

#include <string>
#include <vector>

#include "orlindex/IObserver.h"

namespace Kestrany::Agent {

/// Records the events.
class EventRecorder final : public IdentityServices::IObserver
{
public:
    void OnLoggedIn(const std::int32_t&) override { kinds.emplace_back("LoggedIn"); }
    void OnLoggedOut(const std::int32_t&) override { kinds.emplace_back("LoggedOut"); }
    void OnAccountCreated(const std::int32_t&) override { kinds.emplace_back("AccountCreated"); }
    void OnTokenRefreshed(const std::int32_t&) override { kinds.emplace_back("TokenRefreshed"); }
    void OnTokenAvailable(const std::int32_t&) override { kinds.emplace_back("TokenAvailable"); }
    void OnServerChanged(const Server&) override { kinds.emplace_back("ServerChanged"); }
    bool OnAboutToLogout() override { return true; }
    void OnLoginRestored() override { kinds.emplace_back("LoginRestored"); }
    void OnOtherEvent(const IdentityServices::IdServicesConsts::IdServicesEvent&) override
    {
        kinds.emplace_back("Other");
    }

    std::vector<std::string> kinds;
};

} // namespace Kestrany::Agent

#endif
