#ifndef ORLINDEX_TESTS_AGENT_OPENID_TESTSTORE_H
#define ORLINDEX_TESTS_AGENT_OPENID_TESTSTORE_H

#include <atomic>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "identity/openid/StoredLogin.h"

namespace Kestrany::Agent::OpenId {

/// What is on disk. Any thread may call.
class TestStore final : public LoginStore
{
public:
    bool Save(Server server, const Secret* text) override
    {
        const std::lock_guard lock(mutex_);
        if (!works)
            return false;
        if (text == nullptr)
            texts_.erase(server);
        else
            texts_[server] = std::string(text->View());
        return true;
    }
    std::optional<Secret> Load(Server server) override
    {
        const std::lock_guard lock(mutex_);
        const auto found = texts_.find(server);
        return found == texts_.end() ? std::nullopt : std::optional(Secret(found->second));
    }
    std::string Text()
    {
        const std::lock_guard lock(mutex_);
        return texts_.empty() ? std::string() : texts_.begin()->second;
    }
    /// Replaces what is on disk.
    void SetText(Server server, const std::string& text)
    {
        const std::lock_guard lock(mutex_);
        texts_[server] = text;
    }

    std::atomic<bool> works{true};

private:
    std::mutex mutex_;
    std::map<Server, std::string> texts_;
};

} // namespace Kestrany::Agent::OpenId

#endif
