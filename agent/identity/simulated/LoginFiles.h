#ifndef AGENT_IDENTITY_SIMULATED_LOGINFILES_H
#define AGENT_IDENTITY_SIMULATED_LOGINFILES_H

#include <memory>
#include <string>

#include "identity/ProtectedLogins.h"
#include "identity/simulated/Logins.h"

namespace Kestrany::Agent::Simulated {

/// Keeps the logins of one identity in files that only the user can read on this machine. One process at a time may.
class LoginFiles final : public LoginStorage
{
public:
    /// Null for an invalid identity, and while another process keeps its logins.
    static std::unique_ptr<LoginFiles> Open(const std::string& identity, LogSink log);

    bool Save(Server server, const std::optional<LoginRecord>& record) override;
    std::optional<LoginRecord> Load(Server server) override;
    void Refuse(Server server, const std::string& reason) override;

private:
    explicit LoginFiles(std::unique_ptr<ProtectedLogins> files) : files_(std::move(files)) {}

    const std::unique_ptr<ProtectedLogins> files_;
};

} // namespace Kestrany::Agent::Simulated

#endif
