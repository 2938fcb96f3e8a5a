#ifndef AGENT_IDENTITY_OPENID_WINDOWS_PROTECTEDLOGINSTORE_H
#define AGENT_IDENTITY_OPENID_WINDOWS_PROTECTEDLOGINSTORE_H

#include <memory>
#include <string>

#include "identity/ProtectedLogins.h"
#include "identity/openid/StoredLogin.h"

namespace Kestrany::Agent::OpenId {

/// Keeps the logins of one identity, encrypted for the user on this machine. One process at a time may: it is the one
/// owner of their refresh tokens.
class ProtectedLoginStore final : public LoginStore
{
public:
    /// Null for an invalid identity, and while another process keeps its logins.
    static std::unique_ptr<ProtectedLoginStore> Open(const std::string& identity, LogSink log);

    bool Save(Server server, const Secret* text) override;
    std::optional<Secret> Load(Server server) override;

private:
    explicit ProtectedLoginStore(std::unique_ptr<ProtectedLogins> files) : files_(std::move(files)) {}

    const std::unique_ptr<ProtectedLogins> files_;
};

} // namespace Kestrany::Agent::OpenId

#endif
